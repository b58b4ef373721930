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

class FrameTap;

// One client as the framework knows it: address, codec, outbox, open control requests, and its
// observer proxy in the service. Owner: shared by its connection and its unanswered requests.
// Thread: the loop's, except sendMethod, outbox, proxy and constants.
class Peer final : public ProxyRequest, public std::enable_shared_from_this<Peer> {
 public:
  // socket, wake: see Outbox. tap: may be null.
  Peer(std::string address, int socket, std::function<void()> wake,
       std::shared_ptr<FrameTap> tap = nullptr);
  ~Peer();
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  [[nodiscard]] const std::string& address() const { return m_address; }

  // The process that connected, as the kernel knew it at that time: "uid 1000, pid 4711".
  [[nodiscard]] const std::string& origin() const { return m_origin; }

  // REQUIRES: called before the first call, not later. timed: events carry their time.
  void setCodec(std::string name, MessageCodec& codec, bool timed = false);
  [[nodiscard]] const std::string& codecName() const { return m_codecName; }
  [[nodiscard]] MessageCodec& codec() const { return *m_codec; }

  [[nodiscard]] Outbox& outbox() { return m_outbox; }

  // Shows a frame to the tap, then sends it by the outbox. Thread: any.
  bool send(const Frame& frame);

  // Shows a frame of this client to the tap.
  void showReceived(const Frame& frame) { show(frame, true); }

  // Sends an event to the client; the plug-in's proxy calls it. False when the client has
  // disconnected or does not read.
  bool sendMethod(Method& method) override;

  // The proxy of this client, created when needed. Null when it cannot be created, and for a
  // disconnected client that never had one.
  [[nodiscard]] Proxy* proxy(const std::function<Proxy*()>& make);
  [[nodiscard]] bool hasProxy() const;
  void freeProxy();

  // Opens the channel for the answers to a control request. While it exists, the connection of a
  // client that has only shut down its sending side stays open.
  [[nodiscard]] std::shared_ptr<ControlChannel> openChannel(std::uint32_t id);
  [[nodiscard]] bool hasOpenChannels() const { return m_openChannels != 0; }

  // Whether the client's next frame may be handled: within the limits (ClientLimits.h), and not
  // delayed by a request (ControlChannel::holdNext).
  [[nodiscard]] bool mayHandleNext() const;

  // While paused, the end of each request wakes the loop.
  void setPaused(bool paused) { m_paused = paused; }

  // Answers all open requests except streams. JSON text.
  void answerAll(std::string_view json);

  // How often the client is registered as an observer. The loop's.
  std::size_t registrations = 0;

  // The client has disconnected or sends no more: it gets no events, and its open channels are
  // notified. REQUIRES: called once.
  void disconnect();

 private:
  class Channel;

  void show(const Frame& frame, bool fromClient);

  const std::string m_address;
  const std::string m_origin;
  std::string m_codecName;
  MessageCodec* m_codec = nullptr;
  bool m_timed = false;
  Outbox m_outbox;
  const std::shared_ptr<FrameTap> m_tap;  // requests may keep a peer longer than its server
  std::atomic<bool> m_disconnected = false;
  std::atomic<std::size_t> m_openChannels = 0;
  std::atomic<std::size_t> m_holds = 0;  // channels that delay the client's next frame
  std::atomic<bool> m_paused = false;
  std::vector<std::weak_ptr<Channel>> m_channels;  // the loop's
  mutable Mutex m_proxyMutex;
  std::unique_ptr<Proxy> m_proxy CLOCK_GUARDED_BY(m_proxyMutex);
};

}  // namespace host
