#pragma once

#include <cstddef>
#include <functional>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "FrameworkContext.h"
#include "InvokerResponse.h"
#include "MessageCodec.h"
#include "Method.h"
#include "Proxy.h"
#include "unit/MethodText.h"

namespace unit {

// Messages as in MethodText.h, after a mark of the codec's own. Keeps the bytes it has decoded.
class TextCodec final : public MessageCodec {
 public:
  explicit TextCodec(std::string mark = "") : m_mark(std::move(mark)) {}

  void encode(Method& method, std::iostream& stream) override {
    stream << m_mark + textOf(method);
    if (m_last) stream << *m_last;
  }
  bool decode(std::iostream& stream, Method& method) override {
    m_decoded.assign(std::istreambuf_iterator<char>(stream), {});
    if (m_leave) m_leave(stream);
    if (m_decoded.rfind(m_mark, 0) != 0) return false;
    return methodOf(m_decoded.substr(m_mark.size()), method);
  }
  [[nodiscard]] const std::string& decoded() const { return m_decoded; }

  // What decode does to the stream at last, and a number that encode prints at last.
  void leaveStream(std::function<void(std::iostream&)> leave) { m_leave = std::move(leave); }
  void endReplyWith(int number) { m_last = number; }

 private:
  const std::string m_mark;
  std::function<void(std::iostream&)> m_leave;
  std::optional<int> m_last;
  std::string m_decoded;
};

// The framework as an invoker sees it: two codecs, "text" and "marked", and one proxy at most.
class Framework final : public FrameworkContext {
 public:
  MessageCodec* getCodec(const std::string& name) override {
    m_codecsAsked.push_back(name);
    if (name == "text") return &text;
    return name == "marked" ? &marked : nullptr;
  }
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override {
    m_proxiesAsked.push_back(interfaceName + " at " + address);
    return proxy;
  }
  [[nodiscard]] const std::vector<std::string>& codecsAsked() const { return m_codecsAsked; }
  [[nodiscard]] const std::vector<std::string>& proxiesAsked() const { return m_proxiesAsked; }

  TextCodec text;
  TextCodec marked{"marked "};
  Proxy* proxy = nullptr;

 private:
  std::vector<std::string> m_codecsAsked;
  std::vector<std::string> m_proxiesAsked;
};

// What became of one request.
struct Outcome {
  std::vector<std::string> replies;
  bool deleted = false;
};

// The response handed to an invoker; its outcome outlives it.
class Response : public InvokerResponse {
 public:
  Response(Outcome& outcome, std::string codec, std::string address = "peer 5")
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

}  // namespace unit
