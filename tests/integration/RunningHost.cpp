#include "integration/RunningHost.h"

#include <stdexcept>

namespace integration {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(30);
constexpr int kNoHost = 3;

}  // namespace

RunningHost::RunningHost(const Words& options, Words ctlOptions)
    : m_ctlOptions(std::move(ctlOptions)) {
  Words words = {CLOCKHOST,          "--plugin", CLOCK_PLUGIN, "--state",
                 m_folder / "state", "--socket", socket(),     "--device-root",
                 m_folder / "root",  "--speed",  "0"};
  words.insert(words.end(), options.begin(), options.end());
  m_host = std::make_unique<Program>(m_folder.path(), "clockhost", words);
  const auto deadline = Clock::now() + kLimit;
  while (ctl({"clock"}).status == kNoHost) {
    if (Clock::now() > deadline) throw std::runtime_error("no host: " + m_host->err());
  }
}

Outcome RunningHost::ctl(const Words& words) {
  return startCtl(words)->wait();
}

std::unique_ptr<Program> RunningHost::startCtl(const Words& words) {
  return std::make_unique<Program>(m_folder.path(), "clockctl" + std::to_string(++m_runs),
                                   ctlWords(words));
}

bool RunningHost::waitFor(const Words& words, const std::string& text) {
  const auto deadline = Clock::now() + kLimit;
  while (ctl(words).out.find(text) == std::string::npos) {
    if (Clock::now() > deadline) return false;
  }
  return true;
}

Words RunningHost::ctlWords(const Words& words) const {
  Words all = {CLOCKCTL, "--socket", socket()};
  all.insert(all.end(), m_ctlOptions.begin(), m_ctlOptions.end());
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

}  // namespace integration
