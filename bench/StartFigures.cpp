// From the start of the program to its first reply, and the memory that it then holds.
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "Alternate.h"
#include "BlockingClient.h"
#include "HostProgram.h"
#include "Measure.h"
#include "Sqlite.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kStarts = 9;
constexpr std::chrono::milliseconds kSecurityCheckTime{
    100};  // the host checks its security log meanwhile

// Copies of the programs, all eleven settings of a telephone, saved for the host, and the same rows
// for the baseline. Copies, because the time of a start depends on how a file lies in the page
// cache: a file that the linker has just written lies there in single pages.
class Installation {
 public:
  Installation() {
    for (const char* const file : {CLOCKHOST, CLOCK_PLUGIN, BENCH_BASELINES "/baseline_small"}) {
      fs::copy_file(file, copyOf(file));
    }
    saveAll();
    copyRows();
  }

  [[nodiscard]] HostProgram host() const {
    return HostProgram({"--plugin", copyOf(CLOCK_PLUGIN), "--state", m_disk / "state"}, {},
                       copyOf(CLOCKHOST));
  }
  [[nodiscard]] BaselineProgram small() const { return {"small", rows(), m_disk.path()}; }

 private:
  [[nodiscard]] fs::path copyOf(const fs::path& file) const { return m_disk / file.filename(); }
  [[nodiscard]] std::string rows() const { return m_disk / "rows.db"; }

  void saveAll() const {
    const HostProgram program = host();
    const BlockingClient control(program.controlSocket());
    for (const char* const setting :
         {R"("date-format","value":"1")", R"("time-format","value":"1")",
          R"("sntp-addr","value":"127.0.0.1")", R"("ntp-secret","value":"secret")",
          R"("sntp-tz-offset","value":"-5")", R"("daylight-save","value":"true")",
          R"("daylight-save-minutes","value":"60")", R"("time-source","value":"0")",
          R"("daylight-save-zone-id","value":"12")", R"("auto-daylight-save","value":"true")"}) {
      control.control(std::string(R"({"verb":"set","key":)") + setting + '}');
    }
    BlockingClient(program.socket()).ask(callOf("setFallbackTime"));
  }

  void copyRows() const {
    const std::string sql = "ATTACH '" + (m_disk / "state/settings.db").string() +
                            "' AS saved; CREATE TABLE settings(value TEXT);"
                            "INSERT INTO settings SELECT value FROM saved.settings";
    execute(openDatabase(rows()), sql);
  }

  const support::TemporaryFolder m_disk{diskFolder()};
};

template <class Program>
void awaitReply(const Program& program) {
  BlockingClient(program.socket()).ask(callOf("getTime"));
}

// The program ends after the time was taken.
template <class Start>
double millisecondsToReply(Start start) {
  const auto begin = std::chrono::steady_clock::now();
  const auto program = start();
  awaitReply(program);
  return Milliseconds(std::chrono::steady_clock::now() - begin).count();
}

// KiB of memory that only this process has and that it has written to.
double privateDirty(pid_t process) {
  std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
  for (std::string word; rollup >> word;) {
    if (double kibibytes = 0; word == "Private_Dirty:" && rollup >> kibibytes) return kibibytes;
  }
  throw std::runtime_error("the kernel does not report the memory of a process");
}

template <class Start>
double memoryAfter(Start start) {
  const auto program = start();
  awaitReply(program);
  std::this_thread::sleep_for(kSecurityCheckTime);
  ::sync();
  return privateDirty(program.program().id());
}

}  // namespace

Sample measureStart() {
  const Installation installed;
  return alternately(
      kStarts, [&] { return millisecondsToReply([&] { return installed.host(); }); },
      [&] { return millisecondsToReply([&] { return installed.small(); }); });
}

Sample measureMemory() {
  const Installation installed;
  return alternately(
      1, [&] { return memoryAfter([&] { return installed.host(); }); },
      [&] { return memoryAfter([&] { return installed.small(); }); });
}

}  // namespace bench
