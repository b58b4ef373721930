#include "integration/RestartableHost.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <regex>

#include "remote/RemoteClient.h"

namespace integration {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(30);
constexpr std::chrono::seconds kForAnAnswer(5);
constexpr std::chrono::milliseconds kBetweenLooks(1);

}  // namespace

RestartableHost::RestartableHost(std::string program, Words options)
    : m_words{
          std::move(program), "--plugin",      CLOCK_PLUGIN,      "--state", state(), "--socket",
          socket(),           "--device-root", m_folder / "root", "--speed", "0"} {
  m_words.insert(m_words.end(), options.begin(), options.end());
}

RestartableHost::~RestartableHost() = default;

void RestartableHost::launch() {
  m_program.reset();
  m_program = std::make_unique<Program>(m_folder.path(), "clockhost", m_words);
}

// It can be connected to before it is known whether it will start.
bool RestartableHost::answers() {
  const auto deadline = Clock::now() + kLimit;
  while (Clock::now() < deadline) {
    try {
      Method method("getTime", Method::call);
      if (connect()->call(method, kForAnAnswer)) return true;
    } catch (const host::Error&) {
      if (m_program->ends(kBetweenLooks)) return false;
    }
  }
  return false;
}

Outcome RestartableHost::end(int signal, std::chrono::seconds limit) {
  m_program->signal(signal);
  return m_program->wait(limit);
}

std::unique_ptr<host::RemoteClient> RestartableHost::connect() const {
  return std::make_unique<host::RemoteClient>(socket());
}

std::unique_ptr<host::RemoteClient> RestartableHost::connectControl() const {
  return std::make_unique<host::RemoteClient>(controlSocket());
}

std::filesystem::path RestartableHost::pipe() const {
  return m_folder / "root/tmp/votk/ipc/ntpclient";
}

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

bool isWholeScript(const std::string& content) {
  static const std::regex form("#!/bin/sh\n\nexport TZ=[-A-Z0-9:.,/]*\n\n");
  return std::regex_match(content, form);
}

}  // namespace integration
