// Sends each line as a control request to a telephone with the shipped plug-in. Each request gets
// one answer: a JSON object that fits a frame. An error text is one line.

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "clock/VirtualClock.h"
#include "fuzz/Property.h"
#include "interpose/DeviceRoot.h"
#include "operator/Controller.h"
#include "remote/Frame.h"
#include "runtime/Device.h"
#include "runtime/Plugin.h"
#include "services/ManagementThread.h"
#include "services/MemoryDataAccess.h"
#include "support/Framework.h"

namespace {

using fuzz::hold;
using host::Json;

constexpr std::size_t kMostRequests = 16;
constexpr double kLongAdvance = 86400;  // seconds of virtual time; longer ones are too slow to try
constexpr double kLongestAdvance = 36525 * kLongAdvance;  // the host must refuse a longer one

// A client that reads everything. Thread: any.
class ReadingClient final : public host::ControlChannel {
 public:
  bool reply(std::string_view json) override {
    const std::lock_guard lock(m_mutex);
    m_replies.emplace_back(json);
    return json.size() <= host::kMaxPayload;
  }
  bool item(std::string_view json) override {
    const std::lock_guard lock(m_mutex);
    m_items.emplace_back(json);
    return true;
  }
  void onGone(std::function<void()> gone) override { m_gone = std::move(gone); }

  void disconnect() {
    if (m_gone) m_gone();
  }
  [[nodiscard]] std::vector<std::string> replies() const {
    const std::lock_guard lock(m_mutex);
    return m_replies;
  }
  [[nodiscard]] std::vector<std::string> items() const {
    const std::lock_guard lock(m_mutex);
    return m_items;
  }

 private:
  mutable std::mutex m_mutex;  // guards the replies and items
  std::vector<std::string> m_replies;
  std::vector<std::string> m_items;
  std::function<void()> m_gone;
};

host::Plugin& plugin() {
  static host::Plugin loaded(CLOCK_PLUGIN);
  return loaded;
}

host::DeviceOptions optionsWith(host::MemoryDataAccess& store) {
  host::DeviceOptions options;
  options.state = "state";
  options.store = &store;
  options.securityLogInMemory = true;
  return options;
}

class Host {
 public:
  Host() {
    host::setDeviceRoot("root");
    host::setProcessClock(&m_clock);
    m_device.start(m_framework);
  }
  ~Host() {
    m_device.stop();
    host::setProcessClock(nullptr);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  void ask(const std::string& request) {
    const auto client = std::make_shared<ReadingClient>();
    m_controller.handle({request, client});
    // A task may post another one.
    for (int round = 0; round < 2; ++round) m_device.managementThread().run([] {});
    holdAnswer(*client, request);
    client->disconnect();
  }

 private:
  void holdAnswer(const ReadingClient& client, const std::string& request);

  support::Framework m_framework;  // gets no remote calls
  host::MemoryDataAccess m_store;
  host::VirtualClock m_clock;
  host::Device m_device{m_clock, plugin(), optionsWith(m_store)};
  host::Controller m_controller{m_device, {}};
};

Json objectOf(const std::string& text) {
  Json json = Json::parse(text, nullptr, false);
  hold(json.is_object(), "an answer is a JSON object", text);
  hold(text.size() <= host::kMaxPayload, "an answer fits a frame", text);
  return json;
}

void Host::holdAnswer(const ReadingClient& client, const std::string& request) {
  for (const std::string& item : client.items()) objectOf(item);
  const std::vector<std::string> replies = client.replies();
  if (replies.empty() && !client.items().empty()) return;  // log --follow
  hold(replies.size() == 1, "a request is answered once", request);
  const Json answer = objectOf(replies.front());
  hold(answer.contains("ok") && answer["ok"].is_boolean(), "an answer has a boolean \"ok\"",
       request);
  if (answer["ok"] == true) return;
  const std::string error = answer.value("error", std::string());
  hold(fuzz::isShortLine(error), "a refusal is one line", error);
}

// True for an advance by more than a day, and for a move to a landmark, which may be years ahead.
bool takesLong(const std::string& request) {
  const Json json = Json::parse(request, nullptr, false);
  const auto seconds = json.is_object() ? json.find("seconds") : json.end();
  if (!json.is_object()) return false;
  if (seconds != json.end() && seconds->is_number() && json.contains("action") &&
      json["action"] == "advance") {
    return seconds->get<double>() > kLongAdvance && seconds->get<double>() <= kLongestAdvance;
  }
  return json.contains("landmark");
}

}  // namespace

void fuzz::property(std::string_view input) {
  Host host;
  Reader lines(input);
  for (std::size_t asked = 0; asked < kMostRequests && !lines.atEnd(); ++asked) {
    const std::string request = expanded(lines.line());
    if (request.size() <= host::kMaxPayload && !takesLong(request)) host.ask(request);
  }
  host.ask(R"({"verb":"status"})");
}
