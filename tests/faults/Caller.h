#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Method.h"
#include "integration/RestartableHost.h"
#include "remote/RemoteClient.h"

namespace faults {

// A client that expects to lose its connections: it connects again for its next request. What it
// does not expect is to be left waiting. Owner: a test. Thread: one at a time.
class Caller {
 public:
  static constexpr std::chrono::seconds kLimit{5};

  explicit Caller(const integration::RestartableHost& host) : m_host(host) {}

  // The reply to a control request as it came; nothing when the connection was lost instead.
  [[nodiscard]] std::optional<std::string> control(const std::string& json);
  [[nodiscard]] std::optional<Method> call(const std::string& name);

  // A management value set, as the host answers it: true, false, or nothing.
  [[nodiscard]] std::optional<bool> set(const std::string& key, const std::string& value);
  [[nodiscard]] std::optional<std::string> get(const std::string& key);

  // The next event within the limit; nothing when none came or the connection was lost.
  [[nodiscard]] std::optional<Method> nextEvent(std::chrono::milliseconds limit);

  // For calls and events.
  [[nodiscard]] bool connected() const { return m_client != nullptr; }

  // How often a request had neither an answer nor an end of the connection.
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
