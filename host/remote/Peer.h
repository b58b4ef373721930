#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ProxyRequest.h"
#include "base/Mutex.h"
#include "remote/ControlChannel.h"
#include "remote/Outbox.h"

class MessageCodec;
class Proxy;

namespace host {

class ControlLine;

// One client as the framework knows it: an address, a codec, a way to send, and the observer proxy
// that stands for it in the service. Owner: shared by its connection and the requests that are
// still to be answered. Thread: the loop's, except sendMethod, outbox, proxy and what is constant.
class Peer final : public ProxyRequest, public std::enable_shared_from_this<Peer> {
 public:
  Peer(std::string address, int socket, std::function<void()> attention);
  ~Peer();
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  [[nodiscard]] const std::string& address() const { return m_address; }

  // The process that connected, as the kernel knew it then: "uid 1000, pid 4711".
  [[nodiscard]] const std::string& origin() const { return m_origin; }

  // Chosen before the first call, and not changed later.
  void setCodec(std::string name, MessageCodec& codec);
  [[nodiscard]] const std::string& codecName() const { return m_codecName; }
  [[nodiscard]] MessageCodec& codec() const { return *m_codec; }

  [[nodiscard]] Outbox& outbox() { return m_outbox; }

  // An event for the client. False when it has hung up or does not read.
  bool sendMethod(Method& method) override;

  // The proxy towards this client, made when there is none yet. Null when it cannot be made, and
  // for a client that has hung up without ever having had one.
  [[nodiscard]] Proxy* proxy(const std::function<Proxy*()>& make);
  [[nodiscard]] bool hasProxy() const;
  void freeProxy();

  // A control request's way back.
  [[nodiscard]] std::shared_ptr<ControlChannel> openLine(std::uint32_t id);
  [[nodiscard]] bool hasOpenLines() const { return m_openLines != 0; }

  // Whether the client's next frame may be handled: it has its bounds (ClientBounds.h), and a
  // request may hold it up.
  [[nodiscard]] bool mayGoOn() const;

  // While held, each end of a request asks for attention.
  void setHeld(bool held) { m_held = held; }

  // Answers what is not answered yet, but for streams. JSON text.
  void answerAll(std::string_view json);

  // How often the client is registered as an observer. The loop's alone.
  std::size_t registrations = 0;

  // The client says no more and hears no events; open lines are told. Once.
  void hangUp();
  [[nodiscard]] bool gone() const { return m_gone; }

 private:
  friend class ControlLine;

  const std::string m_address;
  const std::string m_origin;
  std::string m_codecName;
  MessageCodec* m_codec = nullptr;
  Outbox m_outbox;
  std::atomic<bool> m_gone = false;
  std::atomic<std::size_t> m_openLines = 0;
  std::atomic<std::size_t> m_holds = 0;  // of which so many hold up what comes next
  std::atomic<bool> m_held = false;
  std::vector<std::weak_ptr<ControlLine>> m_lines;  // the loop's alone
  mutable Mutex m_proxyMutex;
  std::unique_ptr<Proxy> m_proxy CLOCK_GUARDED_BY(m_proxyMutex);
};

}  // namespace host
