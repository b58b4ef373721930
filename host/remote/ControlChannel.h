#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace host {

// Answers one control request. Owner: shared by all code that may still answer; releasing the last
// reference ends the request, with a refusal if it has no reply. Thread: any, also in parallel; no
// operation blocks, calls back or logs, so that a log sink may use it. Failure: false from then on
// when the client has disconnected or did not read.
class ControlChannel {
 public:
  virtual ~ControlChannel() = default;

  // The reply: JSON text of at most kMaxPayload bytes. False also for a longer text or a second
  // reply.
  virtual bool reply(std::string_view json) = 0;

  // One of any number of items before the reply: JSON text.
  virtual bool item(std::string_view json) = 0;

  // Calls `gone` once on the framework thread when the client disconnects, at once if it already
  // has; never after the channel's end. Keeps one callback. REQUIRES: framework thread.
  virtual void onGone(std::function<void()> gone) = 0;

  // False when the client has disconnected or got its reply: work for it need not begin.
  [[nodiscard]] virtual bool wanted() const { return true; }

  // False while the client has many unread answers: further items might get it dropped.
  [[nodiscard]] virtual bool hasRoom() const { return true; }

  // Delays the client's next frames until the channel's end, so that they see the result of this
  // request. REQUIRES: framework thread, before the handler returns.
  virtual void holdNext() {}

  // The process that sent the request, for an OriginScope around its execution. Constant. Empty:
  // this process.
  [[nodiscard]] virtual const std::string& origin() const {
    static const std::string self;
    return self;
  }

 protected:
  ControlChannel() = default;
  ControlChannel(const ControlChannel&) = delete;
  ControlChannel& operator=(const ControlChannel&) = delete;
};

// A request as received; its text may not be valid JSON.
struct ControlRequest {
  std::string text;
  std::shared_ptr<ControlChannel> channel;
};

// Called on the framework thread; answers now or later. Must not block.
using ControlHandler = std::function<void(ControlRequest)>;

}  // namespace host
