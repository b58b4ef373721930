#pragma once

#include <memory>
#include <sstream>

// Empties a stream and makes it as new, whatever a codec has done to it.
void startOver(std::stringstream& stream);

// A string stream for as long as a request is handled. Making one costs more than decoding and
// answering a usual message, so the one that was returned last is lent again. While it is lent,
// others are made. Thread: any, also inside one another.
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
