#include "operator/HostActions.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "remote/ControlChannel.h"
#include "remote/Frame.h"
#include "verbs/DidYouMean.h"
#include "verbs/NamedRows.h"
#include "verbs/VerbTable.h"

namespace host {
namespace {

struct HostActionRow {
  std::string_view name;    // of the verb
  std::string_view action;  // empty: the verb has none
  HostAction* carryOut;
};

constexpr HostActionRow kHostActions[] = {
    {"get", "", actOnGet},
    {"set", "", actOnSet},
    {"reset", "", actOnReset},
    {"keys", "", actOnKeys},
    {"clock", "show", actOnClockShow},
    {"clock", "speed", actOnClockSpeed},
    {"clock", "pause", actOnClockPause},
    {"clock", "advance", actOnClockAdvance},
    {"clock", "next", actOnClockNext},
    {"clock", "jump", actOnClockJump},
    {"clock", "to", actOnClockTo},
    {"inject", "jack", actOnInjectJack},
    {"inject", "network", actOnInjectNetwork},
    {"inject", "dhcp", actOnInjectDhcp},
    {"inject", "mobility", actOnInjectMobility},
    {"inject", "user-data", actOnInjectUserData},
    {"inject", "value", actOnInjectValue},
    {"status", "", actOnStatus},
    {"history", "", actOnHistory},
    {"upcoming", "", actOnUpcoming},
    {"log", "", actOnLog},
    {"log-level", "", actOnLogLevel},
    {"security-log", "", actOnSecurityLog},
    {"monitor", "", actOnMonitor},
};

constexpr bool matchesVerbTable() {
  const HostActionRow* row = std::begin(kHostActions);
  const HostActionRow* const end = std::end(kHostActions);
  for (const Verb& verb : kVerbs) {
    if (verb.route != Verb::Route::control && verb.route != Verb::Route::stream) continue;
    for (std::size_t i = 0; i < std::max<std::size_t>(verb.actions.size(), 1); ++i, ++row) {
      const std::string_view action = verb.actions.empty() ? "" : verb.actions[i].name;
      if (row == end || row->name != verb.name || row->action != action) return false;
    }
  }
  return row == end;
}
static_assert(matchesVerbTable(),
              "a row for each verb and action that the host answers, in VerbTable.h's order");

// Bytes: well below the limit of a reply, and of what may wait for a slow client.
constexpr std::size_t kRoomForRows = 512 * 1024;

constexpr std::size_t kLongestError = 1000;  // bytes

// How many of the rows fit into a reply, counted from the first.
template <typename Row>
std::ptrdiff_t fitting(Row first, Row last) {
  std::size_t room = kRoomForRows;
  for (Row row = first; row != last; ++row) {
    const std::size_t size = jsonText(*row).size();
    if (size > room) return row - first;
    room -= size;
  }
  return last - first;
}

std::string tooLong(std::size_t size) {
  return "the answer has " + std::to_string(size) + " bytes; a reply holds at most " +
         std::to_string(kMaxPayload);
}

}  // namespace

void carryOut(Controller& controller, const Json& request, const Channel& channel) {
  const std::string name = textMember(request, "verb");
  const HostActionRow* const first = rowNamed(kHostActions, name);
  if (first == nullptr) {
    throw Error("unknown verb " + quotedText(name) + suggestion(name, namesOf(kHostActions)));
  }
  if (first->action.empty()) return first->carryOut(controller, request, channel);
  const std::string action = textMember(request, findVerb(name)->actionMember);
  for (const HostActionRow& row : kHostActions) {
    if (row.name == name && row.action == action) return row.carryOut(controller, request, channel);
  }
  throw Error(name == "inject" ? quotedText(action) + " cannot be injected"
                               : "the " + name + " has no action " + quotedText(action));
}

std::string jsonText(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json newestThatFit(const std::vector<Json>& rows) {
  return std::vector<Json>(rows.end() - fitting(rows.rbegin(), rows.rend()), rows.end());
}

Json oldestThatFit(const std::vector<Json>& rows) {
  return std::vector<Json>(rows.begin(), rows.begin() + fitting(rows.begin(), rows.end()));
}

void answer(const Channel& channel, const Json& reply) {
  const std::string text = jsonText(reply);
  if (text.size() > kMaxPayload) return answerRefusal(channel, tooLong(text.size()));
  static_cast<void>(channel->reply(text));  // false: the client is gone
}

void answerDone(const Channel& channel) {
  static_cast<void>(channel->reply(R"({"ok":true})"));  // false: the client is gone
}

void answerRefusal(const Channel& channel, const std::string& error) {
  answer(channel, {{"ok", false}, {"error", escapedLine(clippedText(error, kLongestError))}});
}

std::string textMember(const Json& request, const char* name) {
  const auto member = request.find(name);
  if (member == request.end() || !member->is_string()) {
    throw Error("the request needs a string member \"" + std::string(name) + '"');
  }
  return member->get<std::string>();
}

std::int64_t numberMember(const Json& request, const char* name, std::int64_t least,
                          std::int64_t most) {
  const auto member = request.find(name);
  const bool number = member != request.end() && member->is_number_integer();
  const bool tooLarge = number && member->is_number_unsigned() &&
                        member->get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX);
  if (!number || tooLarge || *member < least || *member > most) {
    throw Error("the request needs a member \"" + std::string(name) + "\" that is a number, " +
                std::to_string(least) + " to " + std::to_string(most));
  }
  return member->get<std::int64_t>();
}

}  // namespace host
