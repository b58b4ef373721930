// A stream of HTTP requests to the panel: only those with the token, for its own address and from
// its own page pass, and each answer keeps other pages out and is a page, JSON or one line.

#include <boost/asio/io_context.hpp>
#include <boost/beast/http.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>

#include "Panel.h"
#include "fuzz/Property.h"
#include "server/Connection.h"

namespace {

namespace http = boost::beast::http;
using fuzz::hold;
using host::Json;
using panel::Request;
using panel::Response;

// As in the corpus.
const std::string kAuthority = "127.0.0.1:8080";
const std::string kToken(32, 'a');
const std::string kCookie = "clockpanel-8080=" + kToken;

// A panel of no telephone. One for all inputs, as no request changes it.
struct LonePanel {
  LonePanel() { panel.open(panel::Access(kAuthority, kToken)); }

  boost::asio::io_context context;
  panel::Panel panel{context, {}, 0};
};

std::string text(boost::beast::string_view value) {
  return {value.data(), value.size()};
}

bool isOwn(const std::string& authority) {
  return authority == kAuthority || authority == "localhost:8080";
}

bool hasToken(const Request& request) {
  const std::string cookies = "; " + text(request[http::field::cookie]) + ';';
  return std::regex_search(cookies, std::regex("; *" + kCookie + ";"));
}

void holdPassed(const Request& request) {
  const std::string origin = text(request[http::field::origin]);
  hold(isOwn(text(request[http::field::host])), "only its own address is served");
  hold(origin.empty() ? request.method() == http::verb::get
                      : origin.rfind("http://", 0) == 0 && isOwn(origin.substr(7)),
       "only its own page is served", origin);
  hold(hasToken(request), "only who has the token is served");
}

void holdAnswer(const Response& response) {
  const std::string type = text(response[http::field::content_type]);
  hold(text(response["Content-Security-Policy"]).rfind("default-src 'none'", 0) == 0 &&
           response["X-Content-Type-Options"] == "nosniff",
       "each answer keeps other pages out");
  hold(response.result() == http::status::see_other ||
           response.body().find(kToken) == std::string::npos,
       "the token is not in an answer");
  if (type == "application/json") {
    hold(Json::parse(response.body()).contains("ok"), "JSON says whether it was done");
  } else if (response.result() != http::status::ok) {
    const std::string_view body = response.body();
    hold(body.ends_with('\n') && fuzz::isShortLine(body.substr(0, body.size() - 1)),
         "a refusal is one line", body);
  }
}

// A replay would start a program.
bool startsProgram(const Request& request) {
  if (request.target() != "/replay") return false;
  const Json asked = Json::parse(request.body(), nullptr, false);
  return asked.is_object() && asked.contains("scenario") && asked["scenario"].is_string();
}

void use(const Request& request) {
  static LonePanel lone;
  if (const auto refusal = lone.panel.refusal(request)) return holdAnswer(*refusal);
  holdPassed(request);
  if (startsProgram(request)) return;
  std::optional<Response> answer;
  lone.panel.answer(request, [&answer](Response response) { answer = std::move(response); });
  hold(answer.has_value(), "a request without a telephone is answered at once");
  holdAnswer(*answer);
}

}  // namespace

void fuzz::property(std::string_view input) {
  const std::string stream = expanded(input);
  std::string_view rest = stream;
  while (!rest.empty()) {
    http::request_parser<http::string_body> parser;
    parser.header_limit(panel::kMostHead);
    parser.body_limit(panel::kMostBody);
    parser.eager(true);
    while (!parser.is_done()) {
      boost::beast::error_code error;
      const std::size_t used = parser.put(boost::asio::buffer(rest.data(), rest.size()), error);
      rest.remove_prefix(used);
      if (error || (used == 0 && !parser.is_done())) return;
    }
    use(parser.get());
  }
}
