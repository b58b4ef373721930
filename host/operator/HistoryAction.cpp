#include <nlohmann/json.hpp>

#include "operator/Controller.h"
#include "operator/HostActions.h"
#include "runtime/Device.h"
#include "services/History.h"
#include "verbs/TimeText.h"
#include "verbs/VerbWords.h"

namespace host {

static_assert(History::kKept == kMostRows);

void actOnHistory(Controller& controller, const Json& request, const Channel& channel) {
  const std::int64_t most =
      request.contains("count") ? numberMember(request, "count", 1, kMostRows) : kMostRows;
  std::vector<Json> rows;
  for (const Change& change : controller.device().history().list(static_cast<std::size_t>(most))) {
    rows.push_back({{"time", instantText(change.time)},
                    {"what", change.what},
                    {"cause", change.cause},
                    {"who", change.who},
                    {"from", change.from},
                    {"to", change.to}});
  }
  answer(channel, {{"ok", true}, {"changes", newestThatFit(rows)}});
}

}  // namespace host
