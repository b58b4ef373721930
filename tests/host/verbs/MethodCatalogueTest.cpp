#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

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
  }
}

}  // namespace
}  // namespace host
