// From the start of the program to its first reply, and the memory it then holds.
#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "HostProgram.h"
#include "Line.h"
#include "Measure.h"
#include "Telephone.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::size_t kStarts = 31;

// A telephone's saved settings, all eleven of them, and the same rows for the floor.
class SavedSettings {
 public:
  SavedSettings() {
    saveAll();
    copyRows();
  }
  [[nodiscard]] std::filesystem::path state() const { return m_disk / "state"; }
  [[nodiscard]] std::filesystem::path rows() const { return m_disk / "rows.db"; }

 private:
  void saveAll() const {
    Telephone telephone(m_disk.path());
    for (const auto& [key, value] : std::initializer_list<std::pair<const char*, const char*>>{
             {"date-format", "1"},
             {"time-format", "1"},
             {"sntp-addr", "127.0.0.1"},
             {"ntp-secret", "secret"},
             {"sntp-tz-offset", "-5"},
             {"daylight-save", "true"},
             {"daylight-save-minutes", "60"},
             {"time-source", "0"},
             {"daylight-save-zone-id", "12"},
             {"auto-daylight-save", "true"}}) {
      telephone.set(key, value);
    }
    static_cast<void>(telephone.service().setFallbackTime());
  }

  void copyRows() const {
    const std::string sql = "ATTACH '" + (state() / "settings.db").string() +
                            "' AS saved; CREATE TABLE settings(value TEXT);"
                            "INSERT INTO settings SELECT value FROM saved.settings";
    sqlite3* database = nullptr;
    sqlite3_open(rows().c_str(), &database);
    const int code = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
    const std::string words = sqlite3_errmsg(database);
    sqlite3_close(database);
    if (code != SQLITE_OK) throw std::runtime_error("saved settings: " + words);
  }

  Folder m_disk{Folder::Place::disk};
};

// A program that runs, once it has replied.
template <class Program>
Line firstReply(const Program& program, const FolderWatch& watch) {
  Line line(program.socket(), watch);
  line.send(callOf("getTime"));
  static_cast<void>(line.takeFrame());
  return line;
}

template <class Start>
double millisecondsTo(const FolderWatch& watch, Start start) {
  watch.forget();  // what earlier programs have made
  const auto begin = Clock::now();
  const auto program = start();
  const Line line = firstReply(program, watch);
  return Milliseconds(Clock::now() - begin).count();
}

// KiB of memory that only this process has and that was written to.
double privateDirty(pid_t process) {
  std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
  for (std::string word; rollup >> word;) {
    if (double kibibytes = 0; word == "Private_Dirty:" && rollup >> kibibytes) return kibibytes;
  }
  throw std::runtime_error("the system does not tell the memory of a process");
}

template <class Start>
double memoryAfter(const FolderWatch& watch, Start start) {
  const auto program = start();
  const Line line = firstReply(program, watch);
  ::sync();
  return privateDirty(program.process());
}

}  // namespace

void measureStart(Findings& findings) {
  const Folder sockets;
  const FolderWatch watch(sockets.path());
  const SavedSettings saved;
  findings["start-up"] = ratioOf(Rounds::alternate(
      [&] { return millisecondsTo(watch, [&] { return HostProgram(sockets, saved.state()); }); },
      [&] {
        return millisecondsTo(watch,
                              [&] { return FloorProgram(sockets, "small", {saved.rows()}); });
      },
      kStarts));
}

void measureMemory(Findings& findings) {
  const Folder sockets;
  const FolderWatch watch(sockets.path());
  const SavedSettings saved;
  findings["memory"] = differenceOf(Rounds::alternate(
      [&] { return memoryAfter(watch, [&] { return HostProgram(sockets, saved.state()); }); },
      [&] {
        return memoryAfter(watch, [&] { return FloorProgram(sockets, "small", {saved.rows()}); });
      },
      Rounds::kLeast));
}

// Of another build, whose size this program is told.
void measureArmSize(Findings&) {
  throw std::runtime_error("the size of the plug-in for ARM is not told; ./dev bench does");
}

}  // namespace bench
