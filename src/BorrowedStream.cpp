#include "BorrowedStream.h"

#include <atomic>

namespace {

// In bytes. The memory of a longer message is freed; that of a usual one is kept for the next.
constexpr std::streamoff kLongestKept = 4096;

// The kept stream while it is not lent, empty. Deleted when the plug-in is unloaded.
class Spare {
 public:
  ~Spare() { delete exchange(nullptr); }
  std::stringstream* exchange(std::stringstream* stream) { return m_stream.exchange(stream); }

 private:
  std::atomic<std::stringstream*> m_stream{nullptr};
};

Spare g_spare;

}  // namespace

void startOver(std::stringstream& stream) {
  std::ios& state = stream;
  state.exceptions(std::ios::goodbit);
  state.rdbuf(stream.rdbuf());  // its own buffer; also clears the error state
  state.flags(std::ios::skipws | std::ios::dec);
  state.precision(6);
  state.width(0);
  state.fill(' ');
  state.tie(nullptr);
  if (state.getloc() != std::locale()) state.imbue(std::locale());
  if (stream.rdbuf()->pubseekoff(0, std::ios::end, std::ios::out) > kLongestKept) {
    *stream.rdbuf() = std::stringbuf();
  } else {
    stream.str(std::string());
  }
}

BorrowedStream::BorrowedStream() : m_stream(g_spare.exchange(nullptr)) {
  if (m_stream == nullptr) m_stream = std::make_unique<std::stringstream>();
}

BorrowedStream::~BorrowedStream() {
  startOver(*m_stream);
  m_stream.reset(g_spare.exchange(m_stream.release()));
}
