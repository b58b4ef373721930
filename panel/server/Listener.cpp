#include "server/Listener.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <boost/asio/ip/tcp.hpp>
#include <charconv>
#include <chrono>
#include <sstream>
#include <utility>

#include "base/Error.h"
#include "base/PrintableText.h"

namespace panel {
namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

constexpr auto kPause = std::chrono::milliseconds(100);
constexpr const char* kForms = "; use 127.0.0.1:PORT, [::1]:PORT or a path with a slash";

[[noreturn]] void refuse(const std::string& place, const std::string& why) {
  throw host::Error("cannot listen at " + host::quotedText(place) + ": " + why);
}

tcp::endpoint endpointOf(const std::string& place) {
  const std::size_t colon = place.rfind(':');
  unsigned short port = 0;
  const char* const end = place.data() + place.size();
  const char* const digits = colon == std::string::npos ? end : place.data() + colon + 1;
  const auto [read, error] = std::from_chars(digits, end, port);
  if (error != std::errc() || read != end) refuse(place, std::string("no port") + kForms);
  std::string address = place.substr(0, colon);
  if (address == "localhost") address = "127.0.0.1";
  if (address.size() > 2 && address.front() == '[') address = address.substr(1, address.size() - 2);
  error_code unknown;
  const auto parsed = boost::asio::ip::make_address(address, unknown);
  if (unknown || !parsed.is_loopback()) {
    refuse(place, std::string("not a loopback address; other machines could reach it") + kForms);
  }
  return {parsed, port};
}

tcp::acceptor listenTcp(boost::asio::io_context& context, const std::string& place) {
  const tcp::endpoint endpoint = endpointOf(place);
  try {
    return {context, endpoint, true};
  } catch (const boost::system::system_error& error) {
    refuse(place, error.code().message() + "; choose another port, or 0 for a free one");
  }
}

}  // namespace

Listener::Listener(boost::asio::io_context& context, const std::string& place, const Site& site)
    : m_site(site), m_pause(context), m_acceptor(context) {
  if (place.find('/') != std::string::npos) {
    m_file.emplace(place);
    m_acceptor.assign({AF_UNIX, 0}, ::fcntl(m_file->descriptor(), F_DUPFD_CLOEXEC, 0));
  } else {
    tcp::acceptor acceptor = listenTcp(context, place);
    const tcp::endpoint endpoint = acceptor.local_endpoint();
    m_authority = (std::ostringstream() << endpoint).str();
    m_acceptor.assign(endpoint.protocol(), acceptor.release());
  }
}

void Listener::start() {
  m_acceptor.async_accept([this](error_code error, Protocol::socket socket) {
    if (error == boost::asio::error::operation_aborted) return;
    if (!error) {
      if (m_place.use_count() <= kMostConnections) serve(std::move(socket), m_site, m_place);
      return start();
    }
    // No descriptor or no memory: some connection will end.
    m_pause.expires_after(kPause);
    m_pause.async_wait([this](error_code ended) {
      if (!ended) start();
    });
  });
}

}  // namespace panel
