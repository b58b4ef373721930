// baseline_small SOCKET DATABASE: a minimal host. Opens SQLite, loads eleven rows, creates an expat
// parser, listens, and sends back what a client sends.
#include <expat.h>
#include <sqlite3.h>
#include <sys/socket.h>

#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Listener.h"

namespace {

constexpr std::size_t kRows = 11;

struct Close {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

Database open(const char* file) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(file, &database, SQLITE_OPEN_READWRITE, nullptr);
  Database opened(database);
  if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(database));
  return opened;
}

std::vector<std::string> rowsOf(const Database& database) {
  sqlite3_stmt* prepared = nullptr;
  sqlite3_prepare_v2(database.get(), "SELECT value FROM settings", -1, &prepared, nullptr);
  const Statement statement(prepared);
  std::vector<std::string> rows;
  while (sqlite3_step(prepared) == SQLITE_ROW) {
    const void* const bytes = sqlite3_column_blob(prepared, 0);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(prepared, 0));
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
    const Database database = open(argv[2]);
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
