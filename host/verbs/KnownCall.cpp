#include "verbs/KnownCall.h"

#include <algorithm>
#include <set>
#include <utility>

#include "base/PrintableText.h"
#include "verbs/CallWords.h"
#include "verbs/DidYouMean.h"
#include "verbs/KnownNames.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

// " (usage: setTimeInt setTime=INT)"
std::string usageOf(const MethodRow& row) {
  std::string usage(row.name);
  for (const MethodParameter& each : row.request) {
    const bool isText = each.type == MethodParameter::Type::text;
    usage.append(" ").append(each.name).append(isText ? "=TEXT" : "=INT");
  }
  return " (usage: " + usage + ')';
}

void requireType(const MethodParameter& wanted, const Parameter& given) {
  const bool isInt = given.getType() == Parameter::integer;
  if (isInt == (wanted.type == MethodParameter::Type::integer)) return;
  const std::string name(wanted.name);
  throw UsageError(isInt ? name + " is a string; write " + name + ":string=" + valueText(given)
                         : name + " is an int, not " + quotedText(valueText(given)));
}

}  // namespace

void requireParameter(const MethodRow& row, const std::string& name) {
  std::vector<std::string_view> names = namesOf(row.request);
  for (const MethodParameter& each : row.reply) names.push_back(each.name);
  if (std::find(names.begin(), names.end(), name) != names.end()) return;
  throw UsageError(quotedText(name) + " is not a parameter of " + std::string(row.name) +
                   suggestion(name, names, usageOf(row)));
}

KnownCall knownCall(const std::string& method, std::span<const std::string> words) {
  const MethodRow& row = requireMethod(method);
  std::vector<std::string> sent;
  std::vector<std::string> ofReply;
  std::set<std::string> names;
  for (const std::string& word : words) {
    const std::string name = parseArgument(word).getName();
    requireParameter(row, name);
    if (!names.insert(name).second) throw UsageError(name + " is given twice; give it once");
    (rowNamed(row.request, name) != nullptr ? sent : ofReply).push_back(word);
  }
  return {&row, callOf(method, sent), std::move(ofReply)};
}

void requireRequestOnly(const KnownCall& call, const std::string& instead) {
  if (call.ofReply.empty()) return;
  throw UsageError(quotedText(parseArgument(call.ofReply.front()).getName()) +
                   " is in the reply; " + instead);
}

void requireComplete(const KnownCall& call) {
  const auto& given = call.request.getParameters();
  for (const MethodParameter& wanted : call.method->request) {
    const auto found = std::find_if(given.begin(), given.end(), [&](const Parameter& each) {
      return each.getName() == wanted.name;
    });
    if (found == given.end()) {
      throw UsageError("the parameter " + std::string(wanted.name) + " is missing" +
                       usageOf(*call.method));
    }
    requireType(wanted, *found);
  }
}

}  // namespace host
