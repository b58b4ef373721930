#include "verbs/MethodCatalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "verbs/CallWords.h"
#include "verbs/NamedRows.h"

namespace host {
namespace {

TEST(RemoteMethodTable, HasTwentyThreeUniqueMethods) {
  const auto names = namesOf(remoteMethods());
  EXPECT_EQ(names.size(), 23U);
  EXPECT_EQ(std::set(names.begin(), names.end()).size(), 23U);
  for (const std::string_view name : names) EXPECT_EQ(rowNamed(remoteMethods(), name)->name, name);
  EXPECT_EQ(rowNamed(remoteMethods(), "GetTime"), nullptr);
  EXPECT_EQ(rowNamed(remoteMethods(), ""), nullptr);
}

// "`setTimeHours`, `setTimeMinutes` int": a type once, after all names of that type.
std::string parameterCell(std::span<const MethodParameter> parameters, const std::string& none) {
  constexpr std::array<const char*, 3> kTypes = {" int", " string", " bool"};  // as in Type
  if (parameters.empty()) return none;
  std::string cell;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const bool last = i + 1 == parameters.size() || parameters[i + 1].type != parameters[i].type;
    cell += (i == 0 ? "`" : ", `") + std::string(parameters[i].name) + '`';
    if (last) cell += kTypes.at(static_cast<std::size_t>(parameters[i].type));
  }
  return cell;
}

// The rows of the table below the heading.
std::vector<std::string> documentedRows(const std::string& heading) {
  std::filesystem::path page(MANAGEMENT_KEYS_DOCUMENT);
  std::ifstream document(page.replace_filename("remote-protocol.md"));
  std::vector<std::string> rows;
  bool below = false;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## ")) below = line == "## " + heading;
    if (below && line.starts_with("| `")) rows.push_back(line);
  }
  return rows;
}

// "`setTimeHours` 0-23; `setTimeMinutes` 0-59"
std::string valuesCell(const MethodParameters& parameters) {
  std::string cell;
  for (const MethodParameter& each : parameters) {
    cell.append(cell.empty() ? "`" : "; `").append(each.name).append("` ").append(each.values);
  }
  return cell.empty() ? "–" : cell;
}

TEST(RemoteMethodTable, HasTypeValuesAndAnExampleOfEachRequestParameter) {
  const auto check = [](const MethodRow& row) {
    EXPECT_NE(row.meaning, "") << row.name;
    for (const MethodParameter& each : row.request) {
      EXPECT_NE(each.values, "") << each.name;
      EXPECT_NE(each.example, "") << each.name;
      const Parameter sent =
          parseArgument(std::string(each.name) + '=' + std::string(each.example));
      EXPECT_EQ(sent.getType() == Parameter::integer, typeName(each.type) == "int") << each.name;
    }
  };
  std::for_each(remoteMethods().begin(), remoteMethods().end(), check);
  std::for_each(remoteEvents().begin(), remoteEvents().end(), check);
}

TEST(RemoteProtocolPage, SaysWhatEachMethodDoesAndTakes) {
  const auto rows = documentedRows("What the methods do");
  ASSERT_EQ(rows.size(), remoteMethods().size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const MethodRow& method = remoteMethods()[i];
    EXPECT_EQ(rows[i], "| `" + std::string(method.name) + "` | " + std::string(method.meaning) +
                           " | " + valuesCell(method.request) + " |");
  }
}

TEST(RemoteProtocolPage, HasTheMethodsInTheirOrder) {
  const auto rows = documentedRows("Methods");
  ASSERT_EQ(rows.size(), remoteMethods().size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const MethodRow& method = remoteMethods()[i];
    const std::string row = "| `" + std::string(method.name) + "` | " +
                            parameterCell(method.request, "–") + " | " +
                            parameterCell(method.reply, "no reply") + " |";
    EXPECT_EQ(rows[i].substr(0, row.size()), row);
  }
}

TEST(RemoteProtocolPage, HasTheEventsInTheirOrder) {
  const auto rows = documentedRows("Events");
  ASSERT_EQ(rows.size(), remoteEvents().size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const MethodRow& event = remoteEvents()[i];
    const std::string row =
        "| `" + std::string(event.name) + "` | " + parameterCell(event.request, "");
    EXPECT_EQ(rows[i].substr(0, row.size()), row);
    EXPECT_TRUE(rows[i].ends_with(" | " + std::string(event.meaning) + " |")) << rows[i];
  }
}

}  // namespace
}  // namespace host
