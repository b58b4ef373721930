#include "apps/ClockCtl.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <thread>

#include "apps/ClockCtlOptions.h"
#include "apps/Recording.h"
#include "apps/Session.h"
#include "apps/TimeLimit.h"
#include "apps/Watching.h"
#include "base/PrintableText.h"
#include "remote/PeerProcess.h"
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

constexpr milliseconds kRefresh = std::chrono::seconds(1);  // of `status --watch`

enum Status : int { done = 0, refused = 1, usage = 2, noHost = 3 };

// The host refused a request, or did not answer it.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The likely reason why the host has not replied to a request that it received.
std::string likelyReason(const RemoteClient& client, bool moves) {
  if (const auto stopped = stoppedProcessAt(client.descriptor())) {
    return "the host is stopped; `kill -CONT " + std::to_string(*stopped) + "` resumes it";
  }
  if (moves) return "the clock stops where it is; `clockctl clock` shows the time";
  return "the host is busy; it has the request, and may still do it";
}

// A verb with its arguments, carried out by a host.
class Command {
 public:
  Command(const ClockCtlOptions& options, Session& session, std::ostream& out, std::ostream& err)
      : m_options(options),
        m_verb(verbOf(options.verb)),
        m_request(requestOf(m_verb, options.verb)),
        m_session(session),
        m_out(out),
        m_err(err) {
    if (!options.raw) m_request = checkedRequest(std::move(m_request));
  }

  void run() {
    switch (m_verb.route) {
      case Verb::Route::call:
        return call();
      case Verb::Route::watch:
        return watch();
      case Verb::Route::host:
        return waitForHost();
      case Verb::Route::control:
        if (m_request.value("follow", false)) return follow();
        return m_request.value("watch", false) ? repeat() : control();
      case Verb::Route::record:
        return record(
            m_request, client(), m_options.socket, limit(),
            [this](const Json& summary) { print(summary); }, m_err);
      case Verb::Route::stream:
        return follow();
      case Verb::Route::catalogue:
        return print(catalogueAnswer(m_request));
    }
  }

 private:
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
    print({{"method", reply->getName()}, {"reply", parametersJson(*reply)}});
  }

  // A one-way call is done when the host has handled it.
  void post(Method& method) {
    client().post(method);
    if (!client().barrier(limit())) noReply();
    if (m_options.json) print({{"method", method.getName()}, {"reply", nullptr}});
  }

  void watch() {
    if (!observeEvents(client(), limit())) noReply();
    m_err << "ready" << std::endl;  // for scripts: no later event is missed
    watchEvents(m_request, client(), [this](const Json& event) {
      print(event);
      return m_out.good();
    });
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
    print(answer);
  }

  static void writePlot(const std::string& path, const Json& answer) {
    std::ofstream file(path, std::ios::binary);
    file << offsetPlot(answer);
    if (file.flush()) return;
    throw Refusal("the plot " + quotedText(path) +
                  " cannot be written; name a file in a folder that you may write to");
  }

  // The answer every second, on a terminal in the place of the one before.
  void repeat() {
    m_request.erase("watch");
    const bool replaces = !m_options.json && ::isatty(STDOUT_FILENO) == 1;
    for (;;) {
      const Json answer = ask();
      if (replaces) m_out << "\033[H\033[2J";
      print(answer);
      if (!replaces && !m_options.json) m_out << '\n';
      if (!m_out.flush()) return;
      std::this_thread::sleep_for(kRefresh);
    }
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
      if (item->last) {
        static_cast<void>(checked(item->json));
        return;
      }
      print(objectIn(item->json));
    }
    if (m_out && stoppedProcessAt(client().descriptor())) noReply();
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

// Whether errors are JSON too, also that of a command line that cannot be read.
bool asksForJson(std::span<const std::string> words) {
  const auto end = std::find(words.begin(), words.end(), "--");
  return std::find(words.begin(), end, "--json") != end;
}

class Failure {
 public:
  Failure(std::span<const std::string> words, std::ostream& err)
      : m_json(asksForJson(words)), m_err(err) {}

  int operator()(const char* text, Status status) const {
    if (m_json) {
      m_err << jsonLine({{"ok", false}, {"status", status}, {"error", escapedLine(text)}}) << '\n';
    } else {
      m_err << errorLine("clockctl", text);
    }
    return status;
  }

 private:
  const bool m_json;
  std::ostream& m_err;
};

}  // namespace

milliseconds replyLimit(const Verb& verb, const Json& request) {
  if (verb.route == Verb::Route::call || verb.route == Verb::Route::watch) return kCallLimit;
  return takesTime(verb, request) ? kMoveLimit : kControlLimit;
}

int runClockCtl(std::span<const std::string> words, const std::filesystem::path& defaultSocket,
                std::ostream& out, std::ostream& err) {
  const Failure fail(words, err);
  try {
    const auto options = readClockCtlOptions(words, defaultSocket, out);
    if (!options) return done;
    Session session(*options);
    Command(*options, session, out, err).run();
    return done;
  } catch (const UsageError& error) {
    return fail(error.what(), usage);
  } catch (const NoHost& error) {
    return fail(error.what(), noHost);
  } catch (const Json::exception&) {
    return fail("the host's answer is not understood; use the clockctl of the host's version",
                refused);
  } catch (const std::exception& error) {
    return fail(error.what(), refused);
  }
}

int failClockCtl(std::span<const std::string> words, const std::string& error, std::ostream& err) {
  return Failure(words, err)(error.c_str(), refused);
}

}  // namespace host
