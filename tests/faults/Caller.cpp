#include "faults/Caller.h"

#include <nlohmann/json.hpp>

namespace faults {
namespace {

using nlohmann::json;

}  // namespace

template <class Request>
auto Caller::ask(Line& line, Line (integration::RestartableHost::*connect)() const, Request request)
    -> decltype(request(std::declval<host::RemoteClient&>())) {
  try {
    if (!line) line = (m_host.*connect)();
    auto answer = request(*line);
    if (!answer) ++m_leftWaiting;
    return answer;
  } catch (const host::Error&) {
    line.reset();
    return std::nullopt;
  }
}

std::optional<std::string> Caller::control(const std::string& request) {
  return ask(m_control, &integration::RestartableHost::connectControl,
             [&](host::RemoteClient& client) { return client.control(request, kLimit); });
}

std::optional<Method> Caller::call(const std::string& name) {
  Method method(name.c_str(), Method::call);
  return ask(m_client, &integration::RestartableHost::connect,
             [&](host::RemoteClient& client) { return client.call(method, kLimit); });
}

std::optional<bool> Caller::set(const std::string& key, const std::string& value) {
  const auto reply = control(json{{"verb", "set"}, {"key", key}, {"value", value}}.dump());
  if (!reply) return std::nullopt;
  return json::parse(*reply).at("ok").get<bool>();
}

std::optional<std::string> Caller::get(const std::string& key) {
  const auto reply = control(json{{"verb", "get"}, {"key", key}}.dump());
  if (!reply) return std::nullopt;
  const json answer = json::parse(*reply);
  if (!answer.at("ok").get<bool>()) return std::nullopt;
  return answer.at("value").get<std::string>();
}

std::optional<Method> Caller::nextEvent(std::chrono::milliseconds limit) {
  try {
    if (m_client) return m_client->nextEvent(limit);
  } catch (const host::Error&) {
    m_client.reset();
  }
  return std::nullopt;
}

}  // namespace faults
