// baseline_small SOCKET DATABASE: a minimal host. Opens SQLite, loads eleven rows, creates an expat
// parser, listens, and sends back what a client sends.
#include <expat.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Listener.h"
#include "Sqlite.h"

namespace {

constexpr std::size_t kRows = 11;

using bench::Database;
using bench::Statement;

std::vector<std::string> rowsOf(const Database& database) {
  const Statement statement = bench::prepare(database, "SELECT value FROM settings");
  std::vector<std::string> rows;
  while (sqlite3_step(statement.get()) == SQLITE_ROW) {
    const void* const bytes = sqlite3_column_blob(statement.get(), 0);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0));
    rows.emplace_back(static_cast<const char*>(bytes), size);
  }
  return rows;
}

void reply(int client) {
  std::array<char, 4096> bytes;
  for (;;) {
    const ssize_t got = recv(client, bytes.data(), bytes.size(), 0);
    if (got <= 0) return;
    send(client, bytes.data(), static_cast<std::size_t>(got), MSG_NOSIGNAL);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    const Database database = bench::openDatabase(argv[2], SQLITE_OPEN_READWRITE);
    const auto rows = rowsOf(database);
    if (rows.size() != kRows) throw std::runtime_error("there should be eleven rows");
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                         XML_ParserFree);
    const bench::Listener listener(argv[1]);
    for (;;) reply(listener.accept());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "baseline_small: %s\n", error.what());
    return 1;
  }
}
