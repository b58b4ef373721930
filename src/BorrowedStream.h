#pragma once

#include <memory>
#include <sstream>

// Empties a stream and resets every state that a codec may have changed.
void startOver(std::stringstream& stream);

// A string stream for the time in which a request is handled. Creating one costs more than decoding
// and answering a usual message, so one stream is kept and lent again. While it is lent, others are
// created. Thread: any; objects may be nested.
class BorrowedStream {
 public:
  BorrowedStream();
  ~BorrowedStream();
  BorrowedStream(const BorrowedStream&) = delete;
  BorrowedStream& operator=(const BorrowedStream&) = delete;

  std::stringstream& operator*() { return *m_stream; }

 private:
  std::unique_ptr<std::stringstream> m_stream;
};
