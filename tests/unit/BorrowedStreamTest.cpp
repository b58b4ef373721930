#include "BorrowedStream.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <locale>
#include <memory>
#include <string>
#include <thread>

namespace {

using std::ios_base;

class Grouped : public std::numpunct<char> {
  std::string do_grouping() const override { return "\3"; }
};

// Changes everything that a codec could change.
void spoil(std::stringstream& stream, std::ostream& other) {
  stream << std::hex << std::boolalpha << std::string(1000, 'x');
  stream.precision(2);
  stream.width(9);
  stream.fill('*');
  stream.tie(&other);
  stream.imbue(std::locale(std::locale::classic(), new Grouped));
  stream.unsetf(ios_base::skipws);
  stream.exceptions(ios_base::badbit);
  std::iostream& anyStream = stream;
  anyStream.rdbuf(other.rdbuf());
  stream.setstate(ios_base::failbit);
}

std::string stateOf(std::stringstream& stream) {
  const bool good = stream.good();
  stream << 12345 << true << ' ' << 0.123456789 << ' ';
  stream.width(4);
  stream << 1;
  return std::to_string(stream.exceptions()) + (good ? " good" : " failed") +
         (stream.tie() != nullptr ? " tied" : " alone") +
         ((stream.flags() & ios_base::skipws) != 0 ? " skips" : " reads") + " blanks, " +
         stream.getloc().name() + ": " + stream.str();
}

std::string stateOfANewStream() {
  std::stringstream stream;
  return stateOf(stream);
}

TEST(BorrowedStream, ReadsWhatWasWrittenAfterStartingOver) {
  std::stringstream stream("first");
  stream.seekg(0, ios_base::end);
  startOver(stream);
  stream << "second";
  std::string word;
  stream >> word;
  EXPECT_EQ(word, "second");
}

// How many bytes a stream can take without another allocation.
class Capacity : public std::stringbuf {
 public:
  static std::ptrdiff_t of(const std::stringstream& stream) {
    const std::streambuf& bytes = *stream.rdbuf();
    return (bytes.*(&Capacity::epptr))() - (bytes.*(&Capacity::pbase))();
  }
};

TEST(BorrowedStream, KeepsTheMemoryOfAUsualMessageAndFreesThatOfALongOne) {
  std::stringstream stream;
  stream << std::string(4096, 'x');
  startOver(stream);
  EXPECT_GE(Capacity::of(stream), 4096);
  stream << std::string(4097, 'x');
  startOver(stream);
  EXPECT_LT(Capacity::of(stream), 4096);
}

TEST(BorrowedStream, IsLentAgainInTheStateOfANewStream) {
  const std::stringstream* first = nullptr;
  std::ostringstream other;
  {
    BorrowedStream stream;
    first = &*stream;
    spoil(*stream, other);
  }
  const auto another = std::make_unique<std::stringstream>();  // takes any memory just freed
  BorrowedStream stream;
  EXPECT_EQ(&*stream, first);
  EXPECT_EQ(stateOf(*stream), stateOfANewStream());
  EXPECT_EQ(other.str(), "");
}

TEST(BorrowedStream, NestedStreamsAreDistinct) {
  BorrowedStream outer;
  *outer << "outer";
  {
    BorrowedStream inner;
    EXPECT_NE(&*inner, &*outer);
    *inner << "inner";
  }
  EXPECT_EQ((*outer).str(), "outer");
}

TEST(BorrowedStream, IsNeverSharedByThreads) {
  const auto use = [](char letter) {
    for (int i = 0; i < 1000; ++i) {
      BorrowedStream stream;
      *stream << std::string(20, letter);
      ASSERT_EQ((*stream).str(), std::string(20, letter));
    }
  };
  std::thread a(use, 'a');
  std::thread b(use, 'b');
  a.join();
  b.join();
}

}  // namespace
