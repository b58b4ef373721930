#pragma once

#include <functional>

namespace host {

class ScenarioDevice;
class WordReader;

// Steps that call a method of the service. Each reads METHOD [NAME=VALUE ...]; unknown names are
// refused. Request parameters are sent; the others must be in the reply. Failure: UsageError.

// `call`: request parameters only. A reply that reports false ("setDateReturn") fails the line.
[[nodiscard]] std::function<void(ScenarioDevice&)> callStep(WordReader& words);

// `expect call`: also compares the reply. A reply that reports false fails the line, unless the
// line names the parameter that is false.
[[nodiscard]] std::function<void(ScenarioDevice&)> expectCall(WordReader& words);

// `expect false call`: the reply reports false. Request parameters may be missing or of another
// type, here and below.
[[nodiscard]] std::function<void(ScenarioDevice&)> expectFalseCall(WordReader& words);

// `expect refused call`: there is no reply, or one without parameters.
[[nodiscard]] std::function<void(ScenarioDevice&)> expectNoReply(WordReader& words);

}  // namespace host
