#include "operator/Controller.h"

#include <future>
#include <nlohmann/json.hpp>

#include "operator/HostActions.h"
#include "operator/LogFollowers.h"
#include "runtime/Device.h"
#include "verbs/ReadJson.h"

namespace host {
namespace {

// Keeps the reply for a caller in this process, and takes no items.
class WaitingChannel : public ControlChannel {
 public:
  bool reply(std::string_view json) override try {
    m_reply.set_value(std::string(json));
    return true;
  } catch (const std::future_error&) {
    return false;  // it already has a reply
  }

  bool item(std::string_view) override { return false; }
  void onGone(std::function<void()> gone) override { gone(); }

  std::string wait() { return m_reply.get_future().get(); }

 private:
  std::promise<std::string> m_reply;
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
      m_logFollowers(std::make_shared<LogFollowers>()),
      m_moves(device.clock(), m_facts.later,
              [this](const Channel& channel, const std::string& note) {
                answerClock(*this, channel, note);
              }) {
  ApplicationLog::instance().addSink(m_logFollowers);
}

Controller::~Controller() {
  ApplicationLog::instance().removeSink(m_logFollowers);
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
