#include "integration/RestartableHost.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <regex>
#include <stdexcept>

#include "base/Descriptor.h"
#include "remote/RemoteClient.h"
#include "support/Becomes.h"

namespace integration {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLimit(30);
constexpr std::chrono::seconds kAnswerLimit(5);
constexpr std::chrono::milliseconds kRetryInterval(1);

}  // namespace

RestartableHost::RestartableHost(std::string program, const Words& options)
    : m_words{
          std::move(program), "--plugin",      CLOCK_PLUGIN,      "--state", state(), "--socket",
          socket(),           "--device-root", m_folder / "root", "--speed", "0"} {
  m_words = words(options);
  std::signal(SIGPIPE, SIG_IGN);  // report() writes to a host that may just have ended
}

RestartableHost::~RestartableHost() = default;

Words RestartableHost::words(const Words& more) const {
  Words all = m_words;
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

void RestartableHost::launch(const Words& command) {
  m_program.reset();
  m_program = std::make_unique<Program>(m_folder.path(), "clockhost", command);
}

void RestartableHost::start(const Words& more) {
  launch(words(more));
  if (!answers()) throw std::runtime_error("no host: " + m_program->err());
}

// A host accepts connections before it knows whether it can start, so it must answer a call.
bool RestartableHost::answers() {
  const auto deadline = Clock::now() + kLimit;
  while (Clock::now() < deadline) {
    try {
      Method method("getTime", Method::call);
      if (connect()->call(method, kAnswerLimit)) return true;
    } catch (const host::Error&) {
      if (m_program->ends(kRetryInterval)) return false;
    }
  }
  return false;
}

Outcome RestartableHost::end(int signal, std::chrono::seconds limit) {
  m_program->signal(signal);
  return m_program->wait(limit);
}

Outcome RestartableHost::startAnother(const Words& more) const {
  return Program(m_folder.path(), "another", words(more)).wait();
}

Outcome RestartableHost::ctl(const Words& words) {
  return startCtl(words)->wait();
}

std::unique_ptr<Program> RestartableHost::startCtl(const Words& words) {
  return std::make_unique<Program>(m_folder.path(), "clockctl" + std::to_string(++m_runs),
                                   ctlWords(words));
}

Words RestartableHost::ctlWords(const Words& words) const {
  Words all = {CLOCKCTL, "--socket", socket()};
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

bool RestartableHost::waitFor(const Words& words, const std::string& text) {
  return support::becomesTrue([&] { return ctl(words).out.find(text) != std::string::npos; },
                              kLimit);
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

bool RestartableHost::report(std::uint32_t secondsSinceEpoch) const {
  const host::Descriptor writer(::open(pipe().c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
  return writer.valid() && ::write(writer.get(), &secondsSinceEpoch, sizeof secondsSinceEpoch) ==
                               static_cast<ssize_t>(sizeof secondsSinceEpoch);
}

bool isWholeScript(const std::string& content) {
  static const std::regex form("#!/bin/sh\n\nexport TZ=[-A-Z0-9:.,/]*\n\n");
  return std::regex_match(content, form);
}

}  // namespace integration
