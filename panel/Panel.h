#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/thread_pool.hpp>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "server/Access.h"
#include "server/Feed.h"
#include "server/Http.h"
#include "telephone/Recording.h"
#include "telephone/TelephoneWatch.h"
#include "world/TimeServer.h"

namespace panel {

// The panel: a page and its files, the feed of all telephones, and what a page asks for. Owner:
// main. Thread: the server's, which runs the context.
class Panel {
 public:
  // timeServer: the port of a time server that the page commands; 0: none.
  Panel(boost::asio::io_context& context, const std::vector<HostSockets>& hosts,
        std::uint16_t timeServer);
  ~Panel();

  // Begins to let pages in. Call once, before the context runs.
  void open(Access access) { m_access.emplace(std::move(access)); }

  // As a Site. A worker, or a telephone, is waited for only in the destructor.
  [[nodiscard]] std::optional<Response> refusal(const Request& head) const;
  void answer(const Request& request, const Answer& answer);
  void follow(Feed::Page page) { m_feed.add(std::move(page)); }

 private:
  struct Telephone {
    Telephone(HostSockets at, TelephoneWatch::Tell tell)
        : sockets(at), watch(at, std::move(tell)) {}

    const HostSockets sockets;
    TelephoneWatch watch;
    std::mutex mutex;  // of the recording
    std::unique_ptr<Recording> recording;
  };
  using Work = std::function<host::Json()>;
  struct Service {
    std::string_view target;
    Work (Panel::*work)(const host::Json& asked);  // throws host::Error, Json::exception
  };

  // What POST requests ask for. Each takes the request's JSON.
  [[nodiscard]] Work hostWork(const host::Json& asked);
  [[nodiscard]] Work recordWork(const host::Json& asked);
  [[nodiscard]] Work replayWork(const host::Json& asked);
  [[nodiscard]] Work timeServerWork(const host::Json& asked);
  static const Service kServices[];

  void tell(std::size_t telephone, const std::string& name, const host::Json& value);
  void tellTimeServer();
  void serve(const Service& service, const Request& request, const Answer& answer);
  void carryOut(Work work, Answer answer);
  [[nodiscard]] Telephone& telephoneOf(const host::Json& asked);

  boost::asio::io_context& m_context;
  std::optional<Access> m_access;
  Feed m_feed;
  std::optional<TimeServer> m_timeServer;
  int m_asked = 0;  // works without an answer yet
  std::stop_source m_ending;
  std::deque<Telephone> m_telephones;
  boost::asio::thread_pool m_workers;
};

}  // namespace panel
