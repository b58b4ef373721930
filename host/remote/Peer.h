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

// One client as the framework knows it: address, codec, outbox, and its observer proxy in the
// service. Owner: shared by its connection and its unanswered requests. Thread: the loop's, except
// sendMethod, outbox, proxy and constants.
class Peer final : public ProxyRequest, public std::enable_shared_from_this<Peer> {
 public:
  Peer(std::string address, int socket, std::function<void()> attention);
  ~Peer();
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  [[nodiscard]] const std::string& address() const { return m_address; }

  // The process that connected, as the kernel knew it at that time: "uid 1000, pid 4711".
  [[nodiscard]] const std::string& origin() const { return m_origin; }

  // REQUIRES: called before the first call, not later.
  void setCodec(std::string name, MessageCodec& codec);
  [[nodiscard]] const std::string& codecName() const { return m_codecName; }
  [[nodiscard]] MessageCodec& codec() const { return *m_codec; }

  [[nodiscard]] Outbox& outbox() { return m_outbox; }

  // Sends an event to the client. False when it has disconnected or does not read.
  bool sendMethod(Method& method) override;

  // The proxy of this client, created when needed. Null when it cannot be created, and for a
  // disconnected client that never had one.
  [[nodiscard]] Proxy* proxy(const std::function<Proxy*()>& make);
  [[nodiscard]] bool hasProxy() const;
  void freeProxy();

  // Opens the channel for the answers to a control request.
  [[nodiscard]] std::shared_ptr<ControlChannel> openLine(std::uint32_t id);
  [[nodiscard]] bool hasOpenLines() const { return m_openLines != 0; }

  // Whether the client's next frame may be handled: within the bounds (ClientBounds.h), and not
  // delayed by a request (holdNext).
  [[nodiscard]] bool mayGoOn() const;

  // While held, the end of each request calls `attention`.
  void setHeld(bool held) { m_held = held; }

  // Answers all open requests except streams. JSON text.
  void answerAll(std::string_view json);

  // How often the client is registered as an observer. The loop's.
  std::size_t registrations = 0;

  // The client sends no more and gets no events; notifies its open lines. REQUIRES: called once.
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
  std::atomic<std::size_t> m_holds = 0;  // lines that delay the client's next frame
  std::atomic<bool> m_held = false;
  std::vector<std::weak_ptr<ControlLine>> m_lines;  // the loop's
  mutable Mutex m_proxyMutex;
  std::unique_ptr<Proxy> m_proxy CLOCK_GUARDED_BY(m_proxyMutex);
};

}  // namespace host
