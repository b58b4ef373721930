#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Method.h"
#include "integration/RestartableHost.h"
#include "remote/RemoteClient.h"

namespace integration {

// What people and programs do, by a fixed seed: two clients, of which one controls.
class RandomUser {
 public:
  RandomUser(const RestartableHost& host, unsigned seed)
      : m_random(seed), m_calls(host.connect()), m_control(host.connectControl()) {}

  void step() {
    switch (below(8)) {
      case 0:
        return call("getTimeInts", {});
      case 1:
        return call("setTime", {{"setTimeHours", below(26)},
                                {"setTimeMinutes", below(60)},
                                {"setTimeSeconds", below(60)}});
      case 2:
        return call("setDate", {{"setDateDay", 1 + below(31)},
                                {"setDateMonth", 1 + below(12)},
                                {"setDateYear", 2000 + below(45)}});
      case 3:
        return call("getDate", {});
      case 4:
        return set();
      case 5:
        return control({{"verb", "get"}, {"key", below(2) == 0 ? "time" : "ntp-secret"}});
      case 6:
        return control({{"verb", "inject"}, {"what", "dhcp"}, {"value", std::to_string(below(9))}});
      default:
        return move();
    }
  }

  void control(const nlohmann::json& request) {
    ASSERT_TRUE(m_control->control(request.dump(), std::chrono::seconds(30)));
  }

 private:
  int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

  void call(const char* name, const std::vector<std::pair<const char*, int>>& arguments) {
    Method method(name, Method::call);
    for (const auto& [parameter, value] : arguments) {
      method.addIntParameter(parameter, value, Parameter::in);
    }
    ASSERT_TRUE(m_calls->call(method, std::chrono::seconds(30)));
  }

  void set() {
    const std::pair<const char*, std::vector<const char*>> sets[] = {
        {"sntp-tz-offset", {"-5", "5.5", "0", "x", ""}},
        {"daylight-save", {"true", "false", "maybe"}},
        {"auto-daylight-save", {"true", "false"}},
        {"daylight-save-zone-id", {"12", "3", "15"}},
        {"time-format", {"0", "1"}},
        {"simple-time", {"07:30", "???"}},
        {"ntp-secret", {"a \"b\" \\ #c", "\xC3\xBC", "two\nlines", ""}},
    };
    const auto& [key, values] = sets[below(std::size(sets))];
    const auto value = static_cast<std::size_t>(below(static_cast<int>(values.size())));
    control({{"verb", "set"}, {"key", key}, {"value", values[value]}});
  }

  void move() {
    const nlohmann::json moves[] = {
        {{"action", "advance"}, {"seconds", below(7200)}},
        {{"action", "next"}},
        {{"action", "jump"}, {"seconds", 1'700'000'000 + below(100'000'000)}},
        {{"action", "to"}, {"landmark", "hour"}}};
    nlohmann::json request = moves[below(std::size(moves))];
    request["verb"] = "clock";
    control(request);
  }

  std::mt19937 m_random;
  std::unique_ptr<host::RemoteClient> m_calls;
  std::unique_ptr<host::RemoteClient> m_control;
};

}  // namespace integration
