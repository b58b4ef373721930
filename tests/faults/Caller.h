#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Method.h"
#include "integration/RestartableHost.h"
#include "remote/RemoteClient.h"

namespace faults {

// A client that connects again when it was dropped. A dropped connection is no failure, but a
// request without an answer is. Owner: a test. Thread: one at a time.
class Caller {
 public:
  static constexpr std::chrono::seconds kLimit{20};

  explicit Caller(const integration::RestartableHost& host) : m_host(host) {}

  // The reply to a request, or nothing when the connection was lost.
  [[nodiscard]] std::optional<std::string> control(const std::string& json);
  [[nodiscard]] std::optional<Method> call(const std::string& name);

  // Sets or reads a management value. Whether it was accepted; nothing when the connection was
  // lost.
  [[nodiscard]] std::optional<bool> set(const std::string& key, const std::string& value);
  [[nodiscard]] std::optional<std::string> get(const std::string& key);

  // The next event; nothing when none came within the limit or the connection was lost.
  [[nodiscard]] std::optional<Method> nextEvent(std::chrono::milliseconds limit);

  // Whether the connection for calls and events exists.
  [[nodiscard]] bool connected() const { return m_client != nullptr; }

  // How many requests had no answer within the limit while the connection stayed open.
  [[nodiscard]] int leftWaiting() const { return m_leftWaiting; }

 private:
  using Line = std::unique_ptr<host::RemoteClient>;

  template <class Request>
  auto ask(Line& line, Line (integration::RestartableHost::*connect)() const, Request request)
      -> decltype(request(std::declval<host::RemoteClient&>()));

  const integration::RestartableHost& m_host;
  Line m_client;   // for calls and events
  Line m_control;  // for control requests
  int m_leftWaiting = 0;
};

}  // namespace faults
