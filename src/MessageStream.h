#pragma once

#include <array>
#include <cstddef>
#include <iostream>
#include <memory>
#include <streambuf>
#include <string>
#include <vector>

// Bytes that can be written and read, as std::stringbuf has them; the usual message needs no heap.
// Owner: its stream.
class MessageBytes : public std::streambuf {
 public:
  MessageBytes();

  [[nodiscard]] const char* data() const { return eback(); }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(end() - eback()); }
  void clear();

 protected:
  int_type underflow() override;
  int_type overflow(int_type byte) override;
  std::streamsize showmanyc() override;
  pos_type seekoff(off_type offset, std::ios_base::seekdir from,
                   std::ios_base::openmode which) override;
  pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

 private:
  [[nodiscard]] char* end() const { return pptr() > egptr() ? pptr() : egptr(); }
  void showWritten() { setg(eback(), gptr(), end()); }
  void putAt(std::ptrdiff_t position);
  void grow();

  std::array<char, 256> m_usual;
  std::vector<char> m_long;  // in use once a message has outgrown the other
};

// The stream that codecs read a request from and then write its reply to. It behaves as a
// std::stringstream. Owner: the handling of one request. Thread: one at a time.
class MessageStream : public std::iostream {
 public:
  MessageStream();

  // Empty and as new, whatever a codec has done to it.
  void startOver();

  [[nodiscard]] const char* data() const { return m_bytes.data(); }
  [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
  [[nodiscard]] std::string text() const { return {data(), size()}; }

 private:
  MessageBytes m_bytes;
};

// A stream for as long as a request is handled. Making one costs more than all else that is done
// with a usual message, so that the one given back last serves again; while it is lent, others are
// made. Thread: any, also inside one another.
class BorrowedStream {
 public:
  BorrowedStream();
  ~BorrowedStream();
  BorrowedStream(const BorrowedStream&) = delete;
  BorrowedStream& operator=(const BorrowedStream&) = delete;

  MessageStream& operator*() { return *m_stream; }

 private:
  std::unique_ptr<MessageStream> m_stream;
};
