#pragma once

// Sends the reply of one request to its caller.
// Owner: the invoker that receives it, which deletes it. Thread: the request's.
class InvokerResponse {
 public:
  virtual ~InvokerResponse();

  // The name of the request's codec, null-terminated; valid as long as the object.
  virtual const char* getCodecName() = 0;

  // Names the calling peer, null-terminated; valid as long as the object.
  virtual const char* getReplyAddress() = 0;

  // Sends the encoded reply; the bytes are copied. Called at most once.
  virtual void sendReply(const char* data, int length) = 0;
};
