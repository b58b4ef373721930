// The stream of messages does what a std::stringstream does: both are put through the same.

#include "MessageStream.h"

#include <gtest/gtest.h>

#include <functional>
#include <locale>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using std::ios_base;

struct Step {
  const char* name;
  std::function<void(std::iostream&, std::string&)> take;  // notes down what comes of it
};

template <class Value>
void note(std::string& seen, const Value& value) {
  std::ostringstream text;
  text << value << ';';
  seen += text.str();
}

void noteState(std::string& seen, std::iostream& stream) {
  note(seen, stream.rdstate());
}

Step write(const std::string& bytes) {
  return {"write", [bytes](std::iostream& stream, std::string&) {
            stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
          }};
}

Step read(std::size_t size) {
  return {"read", [size](std::iostream& stream, std::string& seen) {
            std::string bytes(size, '?');
            stream.read(bytes.data(), static_cast<std::streamsize>(size));
            note(seen, bytes);
            note(seen, stream.gcount());
          }};
}

Step seekRead(std::streamoff offset, ios_base::seekdir from) {
  return {"seekg", [=](std::iostream& stream, std::string& seen) {
            stream.seekg(offset, from);
            note(seen, stream.tellg());
          }};
}

Step seekWrite(std::streamoff offset, ios_base::seekdir from) {
  return {"seekp", [=](std::iostream& stream, std::string& seen) {
            stream.seekp(offset, from);
            note(seen, stream.tellp());
          }};
}

Step seekTo(std::streamoff position, ios_base::openmode which) {
  return {"seek to", [=](std::iostream& stream, std::string& seen) {
            note(seen, stream.rdbuf()->pubseekpos(position, which));
          }};
}

Step seekBoth(std::streamoff offset, ios_base::seekdir from) {
  return {"seek both", [=](std::iostream& stream, std::string& seen) {
            note(seen, stream.rdbuf()->pubseekoff(offset, from, ios_base::in | ios_base::out));
          }};
}

Step seekNeither() {
  return {"seek neither", [](std::iostream& stream, std::string& seen) {
            note(seen, stream.rdbuf()->pubseekoff(0, ios_base::beg, ios_base::openmode{}));
          }};
}

Step back() {
  return {"unget", [](std::iostream& stream, std::string&) { stream.unget(); }};
}

Step available() {
  return {"in_avail",
          [](std::iostream& stream, std::string& seen) { note(seen, stream.rdbuf()->in_avail()); }};
}

Step number() {
  return {"number", [](std::iostream& stream, std::string& seen) {
            int value = -1;
            stream >> value;
            note(seen, value);
          }};
}

Step clearState() {
  return {"clear", [](std::iostream& stream, std::string&) { stream.clear(); }};
}

std::string bytes(std::size_t size) {
  std::string text;
  while (text.size() < size) text += static_cast<char>(text.size() * 7 % 256);
  return text;
}

const std::vector<std::vector<Step>> kRows = {
    {},
    {write("call"), read(4), read(1)},
    {write(std::string("a\0b", 3)), read(3)},
    {write(""), read(1)},
    {write("first"), read(2), write("second"), read(9)},
    {read(1), clearState(), write("late"), read(4)},
    {write("12 x"), number(), number(), clearState(), read(1)},
    {write("ab"), back(), clearState(), read(1), back(), read(2)},
    {write("abc"), read(3), write("def"), available()},
    {available(), write("abc"), read(1), available(), read(3), available()},
    {write("abcdef"), seekRead(2, ios_base::beg), read(1), seekRead(1, ios_base::cur), read(2)},
    {write("abcdef"), seekRead(-2, ios_base::end), read(2), seekRead(0, ios_base::end), read(1)},
    {write("abc"), seekRead(3, ios_base::beg), seekRead(4, ios_base::beg)},
    {write("abc"), seekRead(-1, ios_base::beg), clearState(), read(3)},
    {write("length:"), seekWrite(0, ios_base::beg), write("L"), read(7)},
    {write("abcdef"), seekWrite(-1, ios_base::end), write("FG"), read(7)},
    {write("abc"), seekWrite(-4, ios_base::cur), clearState(), write("d"), read(4)},
    {write("abcdef"), seekWrite(1, ios_base::beg), available(), read(6)},
    {write("abc"), seekBoth(1, ios_base::beg), write("X"), read(2)},
    {write("abc"), seekBoth(0, ios_base::cur), seekBoth(-1, ios_base::end), read(1)},
    {write("abc"), seekNeither(), read(3)},
    {write("abcdef"), seekTo(4, ios_base::in), read(1), seekTo(7, ios_base::in), read(1)},
    {write("abcdef"), seekTo(2, ios_base::out), write("CD"), read(6)},
    {write(bytes(256)), read(256), read(1)},
    {write(bytes(257)), read(257)},
    {write(bytes(200)), read(100), write(bytes(200)), read(300)},
    {write(bytes(300)), seekWrite(10, ios_base::beg), write(bytes(600)), read(610), read(1)},
    {write(bytes(100'000)), seekRead(99'990, ios_base::beg), read(10)},
};

template <class Stream>
std::string outcomeOf(Stream& stream, const std::vector<Step>& steps,
                      const std::function<std::string()>& whole) {
  std::string seen;
  for (const Step& step : steps) {
    step.take(stream, seen);
    noteState(seen, stream);
  }
  return seen + " text " + whole();
}

std::string describe(const std::vector<Step>& steps) {
  std::string text;
  for (const Step& step : steps) text += std::string(step.name) + ", ";
  return text;
}

std::string expected(const std::vector<Step>& steps) {
  std::stringstream model;
  return outcomeOf(model, steps, [&] { return model.str(); });
}

TEST(MessageStream, DoesWhatAStringStreamDoes) {
  for (const auto& steps : kRows) {
    MessageStream stream;
    EXPECT_EQ(outcomeOf(stream, steps, [&] { return stream.text(); }), expected(steps))
        << describe(steps);
  }
}

TEST(MessageStream, DoesTheSameAfterStartingOver) {
  MessageStream stream;
  for (const auto& steps : kRows) {
    stream.startOver();
    EXPECT_EQ(outcomeOf(stream, steps, [&] { return stream.text(); }), expected(steps))
        << describe(steps);
  }
}

// What a stream never asks of its bytes, but a codec may.
template <class Bytes>
class OpenBytes : public Bytes {
 public:
  std::string overflown() {
    std::string seen;
    this->sputn("abc", 3);
    this->pubseekoff(1, ios_base::beg, ios_base::out);
    for (const int byte : {std::char_traits<char>::eof(), int{'x'}})
      note(seen, std::char_traits<char>::eq_int_type(this->overflow(byte), -1));
    std::string text(4, '?');
    note(seen, this->sgetn(text.data(), 4));
    return seen + text;
  }
};

TEST(MessageStream, TakesAByteThatNeedNotOverflow) {
  OpenBytes<MessageBytes> bytes;
  OpenBytes<std::stringbuf> model;
  EXPECT_EQ(bytes.overflown(), model.overflown());
}

TEST(MessageStream, DataIsTheText) {
  MessageStream stream;
  for (const std::size_t size : {0U, 1U, 256U, 257U, 5000U}) {
    stream.startOver();
    stream << bytes(size);
    EXPECT_EQ(std::string(stream.data(), stream.size()), bytes(size));
    EXPECT_EQ(stream.text(), bytes(size));
  }
}

class Grouped : public std::numpunct<char> {
  std::string do_grouping() const override { return "\3"; }
};

void spoil(std::iostream& stream, std::ostream& other) {
  stream << std::hex << std::boolalpha;
  stream.precision(2);
  stream.width(9);
  stream.fill('*');
  stream.tie(&other);
  stream.imbue(std::locale(std::locale::classic(), new Grouped));
  stream.unsetf(ios_base::skipws);
  stream.exceptions(ios_base::badbit);
  stream.rdbuf(other.rdbuf());
}

std::string formatted(std::iostream& stream) {
  stream << 12345 << true << ' ' << 0.123456789 << ' ';
  stream.width(4);
  stream << 1;
  return std::to_string(stream.exceptions()) + (stream.tie() != nullptr ? " tied" : " alone") +
         ((stream.flags() & ios_base::skipws) != 0 ? " skips" : " reads") + " blanks";
}

TEST(MessageStream, StartsOverAsNew) {
  std::stringstream model;
  MessageStream stream;
  spoil(stream, model);
  stream.setstate(ios_base::failbit);
  stream.startOver();
  EXPECT_EQ(formatted(stream), formatted(model));
  EXPECT_EQ(stream.text(), model.str());
  EXPECT_EQ(stream.getloc(), model.getloc());
  EXPECT_EQ(stream.rdstate(), model.rdstate());
}

TEST(BorrowedStream, IsGivenBackAndServesAgain) {
  const MessageStream* first = nullptr;
  {
    BorrowedStream stream;
    first = &*stream;
  }
  BorrowedStream stream;
  EXPECT_EQ(&*stream, first);
}

TEST(BorrowedStream, IsEmptyAndAsNewWhateverItWasUsedFor) {
  std::ostringstream other;
  {
    BorrowedStream stream;
    *stream << bytes(1000);
    spoil(*stream, other);
    (*stream).setstate(ios_base::failbit);
  }
  BorrowedStream stream;
  std::stringstream model;
  EXPECT_EQ((*stream).size(), 0U);
  EXPECT_EQ(formatted(*stream), formatted(model));
  EXPECT_EQ((*stream).text(), model.str());
}

TEST(BorrowedStream, InsideAnotherIsAnother) {
  BorrowedStream outer;
  *outer << "outer";
  {
    BorrowedStream inner;
    EXPECT_NE(&*inner, &*outer);
    *inner << "inner";
  }
  EXPECT_EQ((*outer).text(), "outer");
}

TEST(BorrowedStream, OfEachThreadIsItsOwn) {
  const auto use = [](char letter) {
    for (int i = 0; i < 1000; ++i) {
      BorrowedStream stream;
      *stream << std::string(20, letter);
      ASSERT_EQ((*stream).text(), std::string(20, letter));
    }
  };
  std::thread a(use, 'a');
  std::thread b(use, 'b');
  a.join();
  b.join();
}

}  // namespace
