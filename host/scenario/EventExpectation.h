#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Method.h"

namespace host {

class ScenarioDevice;
class WordReader;

// Expectations about the events that the scenario's observer received. The event that is found, and
// those before it, are skipped: later expectations do not see them.
[[nodiscard]] std::function<void(ScenarioDevice&)> expectEvent(WordReader& words);
[[nodiscard]] std::function<void(ScenarioDevice&)> expectNextEvent(WordReader& words);
[[nodiscard]] std::function<void(ScenarioDevice&)> expectNoEvent(WordReader& words);

// `wait event NAME [NAME=VALUE ...] within DURATION`: lets time pass until the event has come.
[[nodiscard]] std::function<void(ScenarioDevice&)> waitForEvent(WordReader& words);

// "NAME NAME=VALUE ..."
[[nodiscard]] std::string eventText(const Method& event);

// Throws ScenarioFailure when `method` lacks one of the NAME=VALUE words. what: for its text.
void requireParameters(const std::string& what, std::span<const std::string> wanted,
                       const Method& method);

// For failure texts: the last few of many, or "none".
[[nodiscard]] std::string listed(const std::vector<std::string>& texts);

}  // namespace host
