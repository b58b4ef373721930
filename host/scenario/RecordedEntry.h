#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>

#include "verbs/Json.h"
#include "verbs/TimeText.h"

// What an entry of a monitor says. Pure; thread: any. Failure: Json::exception for one of another
// shape.
namespace host {

inline bool isMove(const Json& request) {
  const std::string action = request.value("action", "");
  return request.value("verb", "") == "clock" &&
         (action == "advance" || action == "next" || action == "to");
}

inline std::int64_t numberOf(const Json& entry, const char* name) {
  return entry.at(name).get<std::int64_t>();
}

inline std::int64_t offsetOf(const Json& entry) {
  return numberOf(entry, "wall") - numberOf(entry, "uptime");
}

inline double speedOf(const Json& entry) {
  const std::string text = entry.at("speed");
  return text == "paused" ? 0 : parseSpeed(text).value_or(1);
}

// When the request took effect, at the latest when it came.
inline std::int64_t effectOf(const Json& request, const Json& reply) {
  for (const Json* const entry : {&reply, &request}) {
    if (entry->contains("acted")) return numberOf(*entry, "acted");
  }
  return numberOf(request, "uptime");
}

// A call of such a method, or a set of such a key.
inline bool isOneOf(const Json& entry, std::initializer_list<const char*> names) {
  const Json request = entry.value("json", Json());
  const bool set = request.is_object() && request.value("verb", Json()) == "set";
  const Json name = set ? request.value("key", Json()) : entry.value("method", Json());
  return std::any_of(names.begin(), names.end(), [&](const char* each) { return name == each; });
}

// It may take effect on the management thread, after the request came.
inline bool isManagement(const Json& request) {
  const std::string verb = request.value("verb", "");
  return verb == "set" || verb == "reset" || verb == "inject";
}

inline bool isSame(const Json& request, const Json& reply) {
  return request.at("peer") == reply.at("peer") && request.at("id") == reply.at("id");
}

}  // namespace host
