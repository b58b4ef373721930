#include "verbs/CheckedRequest.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/PrintableText.h"
#include "verbs/KnownCall.h"
#include "verbs/KnownNames.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"
#include "verbs/VerbWords.h"

namespace host {
namespace {

// After 2037 the service refuses the date.
constexpr const char* kForms =
    "`2026-03-08T06:59:50Z`, `2026-03-08T06:59:50+00:00` or `local 2026-03-08 01:59:50`, in the "
    "years 1970-2037";

void checkCall(const Json& request) {
  const auto words = request.at("arguments").get<std::vector<std::string>>();
  const KnownCall call = knownCall(request.at("method"), words);
  requireRequestOnly(call, "leave it out");
  requireComplete(call);
}

[[noreturn]] void failTime(const std::string& text, const char* kind, const std::string& right) {
  throw UsageError("set time: " + quotedText(text) + " is not " + kind + "; write " + right);
}

void checkTime(Json& request) {
  if (request.contains("local")) {
    const std::string local = request["local"];
    if (!parseLocal(local)) failTime(local, "a local time", kForms);
    return;
  }
  const std::string value = request.at("value");
  const auto instant = parseInstant(value);
  if (!instant) failTime(value, "an instant", parseLocal(value) ? "`local` before it" : kForms);
  request["value"] = longInstantText(*instant);
}

}  // namespace

Json checkedRequest(Json request) {
  requireKnownKey(request);
  if (request.contains("method")) checkCall(request);
  if (request.at("verb") == "set" && request.at("key") == kTimeKey) checkTime(request);
  return request;
}

}  // namespace host
