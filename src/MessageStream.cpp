#include "MessageStream.h"

#include <algorithm>
#include <atomic>
#include <locale>

namespace {

// The stream that nobody uses, empty; it goes with the plug-in.
class Spare {
 public:
  ~Spare() { delete exchange(nullptr); }
  MessageStream* exchange(MessageStream* stream) { return m_stream.exchange(stream); }

 private:
  std::atomic<MessageStream*> m_stream{nullptr};
};

Spare spare;

}  // namespace

MessageBytes::MessageBytes() {
  clear();
}

void MessageBytes::clear() {
  std::vector<char>().swap(m_long);
  setg(m_usual.data(), m_usual.data(), m_usual.data());
  setp(m_usual.data(), m_usual.data() + m_usual.size());
}

MessageBytes::int_type MessageBytes::underflow() {
  showWritten();
  return gptr() < egptr() ? traits_type::to_int_type(*gptr()) : traits_type::eof();
}

MessageBytes::int_type MessageBytes::overflow(int_type byte) {
  if (traits_type::eq_int_type(byte, traits_type::eof())) return traits_type::not_eof(byte);
  if (pptr() == epptr()) grow();
  return sputc(traits_type::to_char_type(byte));
}

std::streamsize MessageBytes::showmanyc() {
  showWritten();
  return egptr() - gptr();
}

MessageBytes::pos_type MessageBytes::seekoff(off_type offset, std::ios_base::seekdir from,
                                             std::ios_base::openmode which) {
  const bool reading = (which & std::ios_base::in) != 0;
  const bool writing = (which & std::ios_base::out) != 0;
  const pos_type nowhere(off_type(-1));
  if (!reading && !writing) return nowhere;
  showWritten();
  off_type position = offset;
  if (from == std::ios_base::end) position += egptr() - eback();
  if (from == std::ios_base::cur) {
    if (reading && writing) return nowhere;  // of the two
    position += reading ? gptr() - eback() : pptr() - pbase();
  }
  if (position < 0 || position > egptr() - eback()) return nowhere;
  if (reading) setg(eback(), eback() + position, egptr());
  if (writing) putAt(static_cast<std::ptrdiff_t>(position));
  return position;
}

MessageBytes::pos_type MessageBytes::seekpos(pos_type position, std::ios_base::openmode which) {
  return seekoff(position, std::ios_base::beg, which);
}

void MessageBytes::putAt(std::ptrdiff_t position) {
  setp(pbase(), epptr());
  pbump(static_cast<int>(position));
}

void MessageBytes::grow() {
  const std::ptrdiff_t read = gptr() - eback();
  const std::ptrdiff_t written = pptr() - pbase();
  const std::size_t held = size();
  std::vector<char> longer(2 * held);
  std::copy(eback(), end(), longer.begin());
  setg(longer.data(), longer.data() + read, longer.data() + held);
  setp(longer.data(), longer.data() + longer.size());
  putAt(written);
  m_long.swap(longer);
}

MessageStream::MessageStream() : std::iostream(nullptr) {
  rdbuf(&m_bytes);
}

void MessageStream::startOver() {
  m_bytes.clear();
  exceptions(goodbit);
  rdbuf(&m_bytes);
  clear();
  flags(skipws | dec);
  precision(6);
  width(0);
  fill(' ');
  tie(nullptr);
  if (getloc() != std::locale()) imbue(std::locale());
}

BorrowedStream::BorrowedStream() : m_stream(spare.exchange(nullptr)) {
  if (m_stream == nullptr) m_stream = std::make_unique<MessageStream>();
}

BorrowedStream::~BorrowedStream() {
  m_stream->startOver();
  m_stream.reset(spare.exchange(m_stream.release()));
}
