#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "framework/ApplicationLog.h"
#include "operator/ClockMoveQueue.h"
#include "remote/ControlChannel.h"
#include "verbs/Json.h"

namespace host {

class Device;
class FrameTap;
class LogFollowers;

// What `status` shows in addition to the state of the device.
struct HostFacts {
  std::function<std::size_t()> clients;  // connected now; may be empty
  std::string socket;                    // empty: none
  std::string version;                   // of host and plug-in, as built
  std::string plugin{};                  // the file
  ClockMoveQueue::Later later{};         // see ClockMoveQueue
  FrameTap* tap = nullptr;               // of the clients' frames; outlives the controller
};

// Handles control requests for one device: {"verb": NAME, ...} -> {"ok": true, ...} or
// {"ok": false, "error": ONE LINE}. Management requests run on the management thread and are
// answered later, all others on the framework thread. Owner: main, or a scenario; destroyed before
// the device. Thread: the framework's. Failure: each request is answered; nothing is thrown.
class Controller {
 public:
  Controller(Device& device, HostFacts facts);
  ~Controller();
  Controller(const Controller&) = delete;
  Controller& operator=(const Controller&) = delete;

  // For RemoteServer: `[&](ControlRequest r) { controller.handle(std::move(r)); }`.
  void handle(ControlRequest request);

  // Handles one request and waits for its answer. REQUIRES: HostFacts without `later`, for
  // moves of the clock.
  [[nodiscard]] Json perform(const Json& request);

  [[nodiscard]] Device& device() { return m_device; }
  [[nodiscard]] const HostFacts& facts() const { return m_facts; }
  [[nodiscard]] const std::shared_ptr<LogFollowers>& logFollowers() const { return m_logFollowers; }
  [[nodiscard]] ClockMoveQueue& moves() { return m_moves; }

 private:
  Device& m_device;
  HostFacts m_facts;
  const LogKeeper m_logKeeper;
  const std::shared_ptr<LogFollowers> m_logFollowers;  // shared with the application log
  ClockMoveQueue m_moves;
};

}  // namespace host
