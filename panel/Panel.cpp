#include "Panel.h"

#include <boost/asio/post.hpp>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "PageFiles.h"
#include "base/Error.h"
#include "verbs/JsonText.h"
#include "verbs/ReadJson.h"

namespace panel {
namespace {

namespace http = boost::beast::http;
using host::Json;

constexpr int kWorkers = 4;     // a move of the clock keeps one busy for up to a minute
constexpr int kMostAsked = 64;  // requests that wait for a worker, or for a host

// No fraction, and no number that an integer cannot hold.
std::int64_t integerIn(const Json& asked, const char* name) {
  const Json& value = asked.at(name);
  const bool fits = value.is_number_integer() && value <= std::uint64_t{INT64_MAX};
  if (!fits) throw host::Error(name + std::string(" is not an integer"));
  return value;
}

Response entrance(const Access& access) {
  Response response = lineResponse(http::status::see_other, "this way");
  response.set(http::field::location, "/");
  response.set(http::field::set_cookie, access.cookie());
  return response;
}

}  // namespace

const Panel::Service Panel::kServices[] = {
    {"/request", &Panel::hostWork},
    {"/record", &Panel::recordWork},
    {"/replay", &Panel::replayWork},
    {"/time-server", &Panel::timeServerWork},
};

Panel::Panel(boost::asio::io_context& context, const std::vector<HostSockets>& hosts,
             std::uint16_t timeServer)
    : m_context(context), m_workers(kWorkers) {
  m_feed.tellState("catalogue", host::jsonLine({{"catalogue", catalogue()}}));
  if (timeServer != 0) m_timeServer.emplace(context, timeServer);
  tellTimeServer();
  for (std::size_t i = 0; i < hosts.size(); ++i) {
    m_telephones.emplace_back(
        hosts[i], [this, i](const std::string& name, const Json& value) { tell(i, name, value); });
  }
}

// The threads use the telephones and post to the context.
Panel::~Panel() {
  m_ending.request_stop();
  m_workers.stop();
  m_workers.join();
  m_telephones.clear();
}

std::optional<Response> Panel::refusal(const Request& head) const {
  switch (m_access->check({head.method_string(), head.target(), head[http::field::host],
                           head[http::field::origin], head[http::field::cookie]})) {
    case Access::Verdict::allowed:
      return std::nullopt;
    case Access::Verdict::enter:
      return entrance(*m_access);
    case Access::Verdict::wrongHost:
      return lineResponse(http::status::misdirected_request,
                          "this panel has another address; open the one that clockpanel printed");
    case Access::Verdict::wrongOrigin:
      return lineResponse(http::status::forbidden, "a page of another site may not use this panel");
    case Access::Verdict::noToken:
      break;
  }
  return lineResponse(http::status::forbidden,
                      "open the address that clockpanel printed, with its token");
}

void Panel::answer(const Request& request, const Answer& answer) {
  const std::string_view target = request.target();
  if (request.method() == http::verb::post) {
    for (const Service& service : kServices) {
      if (service.target == target) return serve(service, request, answer);
    }
  } else if (request.method() != http::verb::get) {
    return answer(lineResponse(http::status::method_not_allowed, "only GET and POST"));
  } else if (const PageFile* const file = pageFile(target == "/" ? "/index.html" : target)) {
    Response response =
        responseOf(http::status::ok, std::string(file->type), std::string(file->content));
    response.set(http::field::content_encoding, "gzip");
    return answer(std::move(response));
  }
  answer(lineResponse(http::status::not_found, "no such page; / has everything"));
}

void Panel::serve(const Service& service, const Request& request, const Answer& answer) {
  try {
    carryOut((this->*service.work)(host::readRequest(request.body())), answer);
  } catch (const Json::exception&) {
    answer(lineResponse(http::status::bad_request, "the body is not the JSON object that " +
                                                       std::string(service.target) + " takes"));
  } catch (const host::Error& error) {
    answer(refusedResponse(error.what()));
  }
}

// Runs the work on a worker, as it may block.
void Panel::carryOut(Work work, Answer answer) {
  if (m_asked >= kMostAsked) throw host::Error("too many requests; wait for the others");
  ++m_asked;
  boost::asio::post(m_workers, [this, work = std::move(work), answer = std::move(answer)] {
    Response response;
    try {
      response = jsonResponse(work());
    } catch (const std::exception& error) {
      response = refusedResponse(error.what());
    }
    boost::asio::post(m_context, [this, answer, response = std::move(response)] {
      --m_asked;
      answer(response);
    });
  });
}

// {"telephone": 0, "words": ["clock", "pause"]}
Panel::Work Panel::hostWork(const Json& asked) {
  Telephone& telephone = telephoneOf(asked);
  return [this, &telephone, words = asked.at("words").get<std::vector<std::string>>()] {
    Json answer = answerOf(telephone.sockets, words, m_ending.get_token());
    telephone.watch.poke();
    return answer;
  };
}

// {"telephone": 0, "on": true}. The end of a recording has the scenario.
Panel::Work Panel::recordWork(const Json& asked) {
  Telephone& telephone = telephoneOf(asked);
  const std::size_t number = asked.at("telephone");
  return [this, &telephone, number, on = asked.at("on").get<bool>()] {
    const std::lock_guard lock(telephone.mutex);
    Json answer = {{"ok", true}};
    if (on && telephone.recording == nullptr) {
      telephone.recording = std::make_unique<Recording>(telephone.sockets, m_ending.get_token());
    } else if (!on && telephone.recording != nullptr) {
      answer.update(std::exchange(telephone.recording, nullptr)->finish(m_ending.get_token()));
    }
    tell(number, "recording", on);
    return answer;
  };
}

// {"scenario": TEXT}
Panel::Work Panel::replayWork(const Json& asked) {
  return [scenario = asked.at("scenario").get<std::string>(), ending = m_ending.get_token()] {
    return replay(scenario, ending);
  };
}

// {"silent": false, "error": seconds}
Panel::Work Panel::timeServerWork(const Json& asked) {
  if (!m_timeServer) {
    throw host::Error("this panel has no time server; start it with --time-server PORT");
  }
  constexpr std::int64_t kMostError = 100LL * 366 * 86400;  // a century
  const std::int64_t error = integerIn(asked, "error");
  const bool silent = asked.at("silent");
  if (error < -kMostError || error > kMostError) {
    throw host::Error("the time server is wrong by at most a century");
  }
  m_timeServer->answer(std::chrono::seconds(error));
  if (silent) m_timeServer->beSilent();
  tellTimeServer();
  return [] { return Json{{"ok", true}}; };
}

Panel::Telephone& Panel::telephoneOf(const Json& asked) {
  const auto number = static_cast<std::uint64_t>(integerIn(asked, "telephone"));
  if (number >= m_telephones.size()) throw host::Error("no such telephone");
  return m_telephones[static_cast<std::size_t>(number)];
}

void Panel::tell(std::size_t telephone, const std::string& name, const Json& value) {
  const std::string json = host::jsonLine({{"telephone", telephone}, {name, value}});
  boost::asio::post(m_context, [this, telephone, name, json] {
    if (name == "entries") return m_feed.tellEntries(json);
    m_feed.tellState(std::to_string(telephone) + name, json);
  });
}

void Panel::tellTimeServer() {
  Json state = nullptr;
  if (m_timeServer) {
    state = {{"silent", m_timeServer->silent()}, {"error", m_timeServer->error().count()}};
  }
  m_feed.tellState("timeServer", host::jsonLine({{"timeServer", state}}));
}

}  // namespace panel
