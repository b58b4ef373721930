#include "verbs/CatalogueAnswers.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "verbs/KeyCatalogue.h"
#include "verbs/KnownNames.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/VerbPrinters.h"

namespace host {
namespace {

std::string exampleOf(const MethodRow& row) {
  std::string words(row.name);
  for (const MethodParameter& each : row.request) {
    words.append(" ").append(each.name).append("=").append(each.example);
  }
  return words;
}

Json requestJson(const MethodParameters& parameters) {
  Json rows = Json::array();
  for (const MethodParameter& each : parameters) {
    rows.push_back({{"name", each.name},
                    {"type", typeName(each.type)},
                    {"values", each.values},
                    {"example", each.example}});
  }
  return rows;
}

Json replyJson(const MethodParameters& parameters) {
  Json rows = Json::array();
  for (const MethodParameter& each : parameters) {
    rows.push_back({{"name", each.name}, {"type", typeName(each.type)}});
  }
  return rows;
}

Json methodJson(const MethodRow& row) {
  return {{"method", row.name},
          {"meaning", row.meaning},
          {"request", requestJson(row.request)},
          {"reply", row.replies() ? replyJson(row.reply) : Json(nullptr)},
          {"example", "clockctl call " + exampleOf(row)}};
}

Json eventJson(const MethodRow& row) {
  return {{"event", row.name},
          {"when", row.meaning},
          {"parameters", requestJson(row.request)},
          {"example", exampleOf(row)}};
}

template <typename Row>
Json listOf(const char* name, std::span<const MethodRow> rows, Row json) {
  Json list = Json::array();
  for (const MethodRow& row : rows) list.push_back(json(row));
  return {{name, list}};
}

void printNames(const Json& rows, const char* name, const char* meaning, std::ostream& out) {
  for (const Json& row : rows) {
    out << padded(memberText(row, name), 23) << memberText(row, meaning) << '\n';
  }
}

// "title        NAME TYPE: VALUES", and the further parameters below it.
void printParameters(const Json& row, const char* name, std::ostream& out) {
  const char* title = name;
  for (const Json& each : row.value(name, Json::array())) {
    const std::string values = memberText(each, "values");
    out << padded(title, 13) << memberText(each, "name") << ' ' << memberText(each, "type")
        << (values.empty() ? "" : ": " + values) << '\n';
    title = "";
  }
}

void printMember(const Json& row, const char* name, std::ostream& out) {
  out << padded(name, 13) << memberText(row, name) << '\n';
}

}  // namespace

Json catalogueAnswer(const Json& request) {
  const bool events = request.at("verb") == "events";
  if (!request.contains("name")) {
    return events ? listOf("events", remoteEvents(), eventJson)
                  : listOf("methods", remoteMethods(), methodJson);
  }
  const std::string name = request["name"];
  return events ? eventJson(requireEvent(name)) : methodJson(requireMethod(name));
}

Json catalogueJson(const ManagementKey& key) {
  const std::string name(key.name);
  if (!key.settable) return {{"meaning", key.meaning}, {"example", "clockctl get " + name}};
  return {{"meaning", key.meaning},
          {"values", key.values},
          {"effect", key.effect},
          {"example", "clockctl set " + name + ' ' + std::string(key.example)}};
}

void printMethods(const Json& answer, std::ostream& out) {
  if (answer.contains("methods")) return printNames(answer["methods"], "method", "meaning", out);
  printMember(answer, "method", out);
  printMember(answer, "meaning", out);
  printParameters(answer, "request", out);
  printParameters(answer, "reply", out);
  printMember(answer, "example", out);
}

void printEvents(const Json& answer, std::ostream& out) {
  if (answer.contains("events")) return printNames(answer["events"], "event", "when", out);
  printMember(answer, "event", out);
  printMember(answer, "when", out);
  printParameters(answer, "parameters", out);
  printMember(answer, "example", out);
}

}  // namespace host
