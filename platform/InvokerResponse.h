#pragma once

// One request's way back to its caller.
// Owner: the invoker it is handed to, which deletes it. Thread: the one of the request.
class InvokerResponse {
 public:
  virtual ~InvokerResponse();

  // The name of the request's codec, null-terminated; valid as long as the object.
  virtual const char* getCodecName() = 0;

  // Names the calling peer, null-terminated; valid as long as the object.
  virtual const char* getReplyAddress() = 0;

  // Hands back the encoded reply; the bytes are copied. At most once.
  virtual void sendReply(const char* data, int length) = 0;
};
