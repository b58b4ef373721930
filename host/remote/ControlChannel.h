#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace host {

// The way back to the client of one control request. Owner: whoever still has something to answer;
// dropping the last reference ends the request: unanswered, it is refused. Thread: any, also in
// parallel; no operation blocks, calls back or logs, so that a log sink may use it. Failure: false,
// for good, when the client is gone or did not read.
class ControlChannel {
 public:
  virtual ~ControlChannel() = default;

  // The one reply: JSON text of at most kMaxPayload bytes. False also for more, and for a second
  // one.
  virtual bool reply(std::string_view json) = 0;

  // One of any number of items ahead of the reply: JSON text.
  virtual bool item(std::string_view json) = 0;

  // `gone` is called once on the framework thread when the client has hung up, at once when it
  // already has; never after the channel is gone. At most one is kept. REQUIRES: framework thread.
  virtual void onGone(std::function<void()> gone) = 0;

  // False when nobody hears an answer any more: the client is gone, or has been answered. What was
  // not begun for it then need not be.
  [[nodiscard]] virtual bool wanted() const { return true; }

  // The client's next frames wait until the channel is gone, so that they find what this request
  // takes its time for. REQUIRES: framework thread, before the handler returns.
  virtual void holdNext() {}

  // Who asks, for an OriginScope around what is done about it. Constant. Empty: this process.
  [[nodiscard]] virtual const std::string& origin() const {
    static const std::string self;
    return self;
  }

 protected:
  ControlChannel() = default;
  ControlChannel(const ControlChannel&) = delete;
  ControlChannel& operator=(const ControlChannel&) = delete;
};

// A request as it came: text that claims to be JSON.
struct ControlRequest {
  std::string text;
  std::shared_ptr<ControlChannel> channel;
};

// Called on the framework thread; answers now or later. Must not block.
using ControlHandler = std::function<void(ControlRequest)>;

}  // namespace host
