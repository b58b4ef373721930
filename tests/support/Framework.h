#pragma once

#include <cstddef>
#include <functional>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "FrameworkContext.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "MessageCodec.h"
#include "Method.h"
#include "Proxy.h"
#include "support/MethodText.h"

namespace support {

// Encodes messages as text (MethodText.h), each after a mark that tells the codecs of a test apart.
class TextCodec final : public MessageCodec {
 public:
  explicit TextCodec(std::string mark = "") : m_mark(std::move(mark)) {}

  void encode(Method& method, std::iostream& stream) override {
    stream << m_mark + textOf(method);
    if (replyEnd) stream << *replyEnd;
    if (readsItsReplies) stream.ignore(std::numeric_limits<std::streamsize>::max());
  }
  bool decode(std::iostream& stream, Method& method) override {
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    if (afterReading) afterReading(bytes, stream);
    return bytes.rfind(m_mark, 0) == 0 && methodOf(bytes.substr(m_mark.size()), method);
  }

  // Called in decode, with all bytes of the message.
  std::function<void(const std::string& bytes, std::iostream&)> afterReading;
  // Printed by encode behind the message.
  std::optional<int> replyEnd;
  // Whether encode reads what it has written, as a codec may that counts its bytes.
  bool readsItsReplies = false;

 private:
  const std::string m_mark;
};

// The framework as an invoker sees it: codecs by their names, and the same proxy for every caller.
// Owner: the test. Thread: any while keepsCalls is false.
class Framework final : public FrameworkContext {
 public:
  MessageCodec* getCodec(const std::string& name) override {
    if (keepsCalls) codecsAsked.push_back(name);
    const auto found = codecs.find(name);
    return found != codecs.end() ? found->second : nullptr;
  }
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override {
    if (keepsCalls) proxiesAsked.push_back(interfaceName + " at " + address);
    return proxy;
  }

  TextCodec text;
  std::map<std::string, MessageCodec*> codecs{{"text", &text}};
  Proxy* proxy = nullptr;
  bool keepsCalls = true;
  std::vector<std::string> codecsAsked;
  std::vector<std::string> proxiesAsked;
};

// The result of one request.
struct Outcome {
  std::vector<std::string> replies;
  bool deleted = false;
};

// The response handed to an invoker; its outcome outlives it.
class Response final : public InvokerResponse {
 public:
  explicit Response(Outcome& outcome, std::string codec = "text", std::string address = "peer 5")
      : m_outcome(outcome), m_codec(std::move(codec)), m_address(std::move(address)) {}
  ~Response() override { m_outcome.deleted = true; }

  const char* getCodecName() override { return m_codec.c_str(); }
  const char* getReplyAddress() override { return m_address.c_str(); }
  void sendReply(const char* data, int length) override {
    m_outcome.replies.emplace_back(data, static_cast<std::size_t>(length));
  }

 private:
  Outcome& m_outcome;
  const std::string m_codec;
  const std::string m_address;
};

// Has the invoker handle one message of a peer.
inline Outcome request(Invoker& invoker, Executable* service, const std::string& message,
                       const std::string& codec = "text", const std::string& address = "peer 5") {
  Outcome outcome;
  invoker.handleMessage(service, message.data(), static_cast<int>(message.size()),
                        new Response(outcome, codec, address));
  return outcome;
}

}  // namespace support
