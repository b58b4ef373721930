#pragma once

#include <iosfwd>

class Method;

// Turns a Method into bytes and back.
// Owner: the framework. Thread: any; a codec keeps no state between calls.
class MessageCodec {
 public:
  // Writes the whole Method.
  virtual void encode(Method& method, std::iostream& stream) = 0;

  // Reads one whole Method, to the end of the stream. False when the bytes are not one.
  virtual bool decode(std::iostream& stream, Method& method) = 0;

 protected:
  ~MessageCodec() = default;
};
