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

// The member is one of these texts. Clients may send anything.
inline bool isAmong(const Json& object, const char* member,
                    std::initializer_list<const char*> texts) {
  const Json value = object.is_object() ? object.value(member, Json()) : Json();
  return std::any_of(texts.begin(), texts.end(), [&](const char* each) { return value == each; });
}

inline bool isMove(const Json& request) {
  return isAmong(request, "verb", {"clock"}) &&
         isAmong(request, "action", {"advance", "next", "to"});
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
  return isAmong(request, "verb", {"set"}) ? isAmong(request, "key", names)
                                           : isAmong(entry, "method", names);
}

// It may take effect on the management thread, after the request came.
inline bool isManagement(const Json& request) {
  return isAmong(request, "verb", {"set", "reset", "inject"});
}

// It leaves the settings and the time as they are.
inline bool onlyReads(const Json& request) {
  if (isAmong(request, "verb", {"clock"}))
    return isAmong(request, "action", {"show", "speed", "pause"});
  return !isManagement(request);
}

inline bool isSame(const Json& request, const Json& reply) {
  return request.at("peer") == reply.at("peer") && request.at("id") == reply.at("id");
}

}  // namespace host
