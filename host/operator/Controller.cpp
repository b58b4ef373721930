#include "operator/Controller.h"

#include <condition_variable>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/Mutex.h"
#include "framework/ApplicationLog.h"
#include "operator/HostActions.h"
#include "operator/LogRing.h"
#include "runtime/Device.h"
#include "verbs/ReadJson.h"

namespace host {
namespace {

// Keeps the reply for a caller in this process, and takes no items.
class WaitingChannel : public ControlChannel {
 public:
  bool reply(std::string_view json) override {
    const MutexLock lock(m_mutex);
    if (m_reply) return false;
    m_reply.emplace(json);
    m_replied.notify_all();
    return true;
  }

  bool item(std::string_view) override { return false; }
  void onGone(std::function<void()> gone) override { gone(); }

  std::string wait() {
    MutexLock lock(m_mutex);
    m_replied.wait(lock.native(), [this]() CLOCK_REQUIRES(m_mutex) { return m_reply.has_value(); });
    return *m_reply;
  }

 private:
  Mutex m_mutex;
  std::condition_variable m_replied;
  std::optional<std::string> m_reply CLOCK_GUARDED_BY(m_mutex);
};

// Answers an exception as a refusal.
template <typename Step>
void guarded(const Channel& channel, Step step) try {
  step();
} catch (const std::exception& error) {
  answerRefusal(channel, error.what());
}

}  // namespace

Controller::Controller(Device& device, HostFacts facts)
    : m_device(device),
      m_facts(std::move(facts)),
      m_log(std::make_shared<LogRing>()),
      m_moves(device.clock(), m_facts.later,
              [this](const Channel& channel, const std::string& note) {
                answerClock(*this, channel, note);
              }) {
  ApplicationLog::instance().addSink(m_log);
}

Controller::~Controller() {
  ApplicationLog::instance().removeSink(m_log);
}

void Controller::handle(ControlRequest request) {
  guarded(request.channel, [&] { carryOut(*this, readRequest(request.text), request.channel); });
}

Json Controller::perform(const Json& request) {
  const auto channel = std::make_shared<WaitingChannel>();
  guarded(channel, [&] { carryOut(*this, request, channel); });
  return Json::parse(channel->wait());
}

}  // namespace host
