#include "apps/Command.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <thread>

#include "apps/ClockCtlOptions.h"
#include "apps/Explanation.h"
#include "apps/Recording.h"
#include "apps/Session.h"
#include "apps/TimeLimit.h"
#include "apps/Watching.h"
#include "base/PrintableText.h"
#include "verbs/CallWords.h"
#include "verbs/CatalogueAnswers.h"
#include "verbs/CheckedRequest.h"
#include "verbs/DidYouMean.h"
#include "verbs/JsonText.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/MethodJson.h"
#include "verbs/NamedRows.h"
#include "verbs/OffsetPlot.h"
#include "verbs/ReadJson.h"
#include "verbs/TimeText.h"
#include "verbs/UsageError.h"
#include "verbs/Verb.h"

namespace host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kCallLimit = std::chrono::seconds(2);
constexpr milliseconds kControlLimit = std::chrono::seconds(5);  // may wait 1 s for a name server
constexpr milliseconds kMoveLimit = std::chrono::seconds(60);    // advancing a year takes a while
constexpr milliseconds kHostLimit = std::chrono::seconds(30);    // of `wait-host` alone
constexpr milliseconds kRefresh = std::chrono::seconds(1);       // of `status --watch`
constexpr const char* kMoreCome = "more events come until then; only the first 1000 are listed";

// The host refused a request, or did not answer it.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The likely reason why the host has not replied to a request that it received.
std::string likelyReason(const RemoteClient& client, bool moves) {
  if (std::string stopped = whyStopped(client); !stopped.empty()) return stopped;
  if (moves) return "the clock stops where it is; `clockctl clock` shows the time";
  return "the host is busy; it has the request, and may still do it";
}

// Refuses a command of a file after which no other one would be carried out.
void requireEnd(const Verb& verb, const Json& request, const ClockCtlOptions& options) {
  using Route = Verb::Route;
  const bool waits = verb.route == Route::watch || verb.route == Route::record;
  const bool isLimited = request.value("count", 0) > 0 || request.value("for", std::int64_t{0}) > 0;
  const bool follows = verb.route == Route::stream || request.value("follow", false) ||
                       request.value("watch", false);
  const std::string name(verb.name);
  if (waits && !isLimited) throw UsageError(name + " would not end here; write --count or --for");
  if (follows && !options.timeout) {
    throw UsageError(name + " would not end here; `clockctl --timeout SECONDS` ends it");
  }
}

// A verb with its arguments, carried out by a host.
class Command {
 public:
  Command(const ClockCtlOptions& options, std::span<const std::string> words, Session& session,
          std::ostream& out, std::ostream& err)
      : m_options(options),
        m_verb(verbOf(words)),
        m_request(requestOf(m_verb, words)),
        m_session(session),
        m_out(out),
        m_err(err) {
    if (!options.file.empty()) requireEnd(m_verb, m_request, options);
    if (!options.raw) m_request = checkedRequest(std::move(m_request));
  }

  void run() {
    switch (m_verb.route) {
      case Verb::Route::call:
        return call();
      case Verb::Route::watch:
        return thenDisconnect(&Command::watch);
      case Verb::Route::host:
        return waitForHost();
      case Verb::Route::control:
        if (m_request.value("follow", false)) return thenDisconnect(&Command::follow);
        return m_request.value("watch", false) ? repeat() : control();
      case Verb::Route::record:
        return thenDisconnect(&Command::recordSteps);
      case Verb::Route::stream:
        return thenDisconnect(&Command::follow);
      case Verb::Route::catalogue:
        return print(catalogueAnswer(m_request));
    }
  }

 private:
  // What the host still sends for this command must not reach a later one.
  void thenDisconnect(void (Command::*carryOut)()) {
    (this->*carryOut)();
    m_session.disconnect();
  }

  RemoteClient& client() const { return m_session.client(m_verb.route); }

  milliseconds limit() const { return m_options.timeout.value_or(replyLimit(m_verb, m_request)); }

  void print(const Json& answer) {
    if (!m_options.json) return m_verb.print(answer, m_out);
    m_out << jsonLine(answer) << std::endl;
  }

  [[noreturn]] void noReply(const std::string& hint = "") const {
    throw Refusal("no reply within " + secondsText(limit()) + "; " +
                  (hint.empty() ? likelyReason(client(), takesTime(m_verb, m_request)) : hint));
  }

  void call() {
    const std::string name = m_request["method"];
    Method method = callOf(name, m_request["arguments"].get<std::vector<std::string>>());
    const MethodRow* const known = rowNamed(remoteMethods(), name);
    if (known != nullptr && !known->replies()) return post(method);
    const auto reply = client().call(method, limit());
    if (!reply) {
      noReply(known != nullptr
                  ? ""
                  : "no method " + quotedText(name) + suggestion(name, namesOf(remoteMethods())));
    }
    Json answer = {{"method", reply->getName()}, {"reply", parametersJson(*reply)}};
    const Json result = answer["reply"].value(name + "Return", Json());
    if (result == Json(false)) explain(answer, lastLineOf(m_session, client().lastCall(), limit()));
    print(answer);
  }

  // Tells why the call was refused, if the service said so.
  void explain(Json& answer, const std::string& line) {
    const std::string method = answer["method"];
    if (!line.empty()) tell(answer, "reason", line, errorLine(method + " refused", line));
  }

  // text: a member of the answer with --json. line: else on standard error.
  void tell(Json& answer, const char* member, const std::string& text, const std::string& line) {
    if (!m_options.json) m_err << line;
    answer[member] = text;
  }

  // A one-way call is done when the host has handled it.
  void post(Method& method) {
    client().post(method);
    const std::uint32_t call = client().lastCall();
    if (!client().barrier(limit())) noReply();
    m_session.disconnect();  // nothing can be sent after a barrier
    Json answer = {{"method", method.getName()}, {"reply", nullptr}};
    const std::string line = lastLineOf(m_session, call, limit());
    if (saysRefused(line)) explain(answer, line);
    if (m_options.json) print(answer);
  }

  void watch() {
    if (!observeEvents(client(), limit())) noReply();
    m_err << "ready" << std::endl;  // for scripts: no later event is missed
    watchEvents(m_request, client(), [this](const Json& event) {
      print(event);
      return m_out.good();
    });
  }

  void recordSteps() {
    record(
        m_request, client(), m_options.socket, limit(),
        [this](const Json& summary) { print(summary); }, m_err);
  }

  void waitForHost() {
    const milliseconds usual = m_options.waitHost.value_or(kHostLimit);
    m_session.waitForHost(milliseconds(m_request.value("for", std::int64_t{usual.count()})));
    print({{"ok", true}});
  }

  // Long lists come in pages. Each must end with a later record, or there might be no last one.
  void control() {
    const std::string plot = m_request.value("plot", std::string());
    if (m_request.contains("plot")) m_request["plot"] = true;
    Json answer = ask();
    if (m_request.contains("plot")) writePlot(plot, answer);
    for (std::int64_t last = 0; answer.contains("after");) {
      const auto after = answer["after"].get<std::int64_t>();
      if (after <= last) throw Refusal("the host's pages do not advance");
      m_request["after"] = last = after;
      answer = joined(std::move(answer), ask());
    }
    if (m_verb.name == "set") tellOtherValue(answer);
    print(answer);
    if (answer.contains("more") && !m_options.json) m_err << errorLine("note", kMoreCome);
  }

  void tellOtherValue(Json& answer) {
    const auto now = otherValue(client(), m_request, answer, limit());
    if (!now) return;
    const std::string key = m_request["key"];
    tell(answer, "value", *now, errorLine("note", key + " is now " + quotedText(*now)));
  }

  static void writePlot(const std::string& path, const Json& answer) {
    std::ofstream file(path, std::ios::binary);
    file << offsetPlot(answer);
    if (file.flush()) return;
    throw Refusal("the plot " + quotedText(path) +
                  " cannot be written; name a file in a folder that you may write to");
  }

  // The answer every second, on a terminal in the place of the one before; without end, or for the
  // time that was asked for.
  void repeat() {
    const TimeLimit whole(m_options.timeout);
    m_request.erase("watch");
    const bool replaces = !m_options.json && ::isatty(STDOUT_FILENO) == 1;
    do {
      const Json answer = ask();
      if (replaces) m_out << "\033[H\033[2J";
      print(answer);
      if (!replaces && !m_options.json) m_out << '\n';
      if (!m_out.flush()) return;
      std::this_thread::sleep_for(std::min(kRefresh, whole.left()));
    } while (!whole.over());
  }

  Json ask() {
    const auto text = client().control(m_request.dump(), limit());
    if (!text) noReply();
    return checked(*text);
  }

  // The later page, with the records of the earlier one before its own.
  static Json joined(Json earlier, Json later) {
    Json records = std::move(earlier["records"]);
    for (Json& record : later["records"]) records.push_back(std::move(record));
    later["records"] = std::move(records);
    return later;
  }

  // Without end, or for the time that was asked for.
  void follow() {
    const TimeLimit whole(m_options.timeout);
    const std::uint32_t id = client().startControl(m_request.dump());
    while (m_out && !whole.over()) {
      const auto item = client().nextAnswer(id, whole.left());
      if (!item) continue;
      if (item->last) return static_cast<void>(checked(item->json));
      const Json answer = objectIn(item->json);
      print(answer);
      if (answer.contains("begin")) m_err << "ready" << std::endl;  // no later frame is missed
    }
    if (m_out && !whyStopped(client()).empty()) noReply();
  }

  static Json objectIn(const std::string& text) {
    Json answer = readJson(text);
    if (!answer.is_object()) throw Refusal("the host's answer is not a JSON object");
    return answer;
  }

  static Json checked(const std::string& text) {
    Json answer = objectIn(text);
    if (!answer.value("ok", false)) throw Refusal(answer.value("error", std::string("refused")));
    return answer;
  }

  const ClockCtlOptions& m_options;
  const Verb& m_verb;
  Json m_request;
  Session& m_session;
  std::ostream& m_out;
  std::ostream& m_err;
};

}  // namespace

milliseconds replyLimit(const Verb& verb, const Json& request) {
  if (verb.route == Verb::Route::call || verb.route == Verb::Route::watch) return kCallLimit;
  return takesTime(verb, request) ? kMoveLimit : kControlLimit;
}

void carryOut(const ClockCtlOptions& options, std::span<const std::string> words, Session& session,
              std::ostream& out, std::ostream& err) {
  Command(options, words, session, out, err).run();
}

}  // namespace host
