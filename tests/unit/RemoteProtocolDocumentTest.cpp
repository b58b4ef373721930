// The methods in docs/reference/remote-protocol.md are those of the plug-in: RemoteMethodsTest
// sends each row of remoteProtocol() to the plug-in's table, and here the document must have these
// rows.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "unit/RemoteProtocol.h"

namespace {

using unit::Lines;
using unit::Missing;
using unit::RemoteRow;

struct DocumentedParameter {
  std::string name;
  std::string type;
  std::string value;
};

// "in int setTimeHours=7"
DocumentedParameter documented(const std::string& line) {
  std::istringstream words(line);
  std::string direction, type, assigned;
  words >> direction >> type >> assigned;
  const std::size_t equals = assigned.find('=');
  return {"`" + assigned.substr(0, equals) + "`", type, assigned.substr(equals + 1)};
}

// "`setTimeHours`, `setTimeMinutes` int": a type once, behind all names that have it.
std::string parameterCell(const Lines& lines, const std::string& whenEmpty) {
  if (lines.empty()) return whenEmpty;
  std::string cell;
  std::string type = documented(lines.front()).type;
  for (const std::string& line : lines) {
    const DocumentedParameter parameter = documented(line);
    if (parameter.type != type) cell += " " + type;
    cell += (cell.empty() ? "" : ", ") + parameter.name;
    type = parameter.type;
  }
  return cell + " " + type;
}

std::string missingCell(const RemoteRow& row) {
  if (row.missing == Missing::impossible) return "";
  if (row.missing == Missing::noReply) return " nothing happens";
  if (row.missing == Missing::emptyReply) return " reply without parameters";
  const DocumentedParameter reply = documented(row.missingReply);
  return " " + reply.name + " " + (reply.value.empty() ? "empty" : reply.value);
}

Lines documentedMethods() {
  std::ifstream document(REMOTE_PROTOCOL_DOCUMENT);
  Lines rows;
  for (std::string line; std::getline(document, line) && line != "## Events";)
    if (line.rfind("| `", 0) == 0) rows.push_back(line);
  return rows;
}

TEST(RemoteProtocolDocument, HasTheMethodsOfThePlugInInTheirOrder) {
  Lines rows;
  for (const RemoteRow& row : unit::remoteProtocol())
    rows.push_back("| `" + row.name + "` | " + parameterCell(row.request, "–") + " | " +
                   parameterCell(row.reply, "none, ever") + " |" + missingCell(row) + " |");
  EXPECT_EQ(documentedMethods(), rows);
}

}  // namespace
