#include "server/Listener.h"

#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <chrono>

#include "base/Error.h"
#include "base/PrintableText.h"
#include "server/Connection.h"

namespace panel {
namespace {

using boost::asio::ip::tcp;
using Local = boost::asio::local::stream_protocol;
using boost::system::error_code;

constexpr auto kPause = std::chrono::milliseconds(100);
constexpr const char* kForms = "; use 127.0.0.1:PORT, [::1]:PORT or a file's path";

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

// Removes the socket file of a panel that has ended.
void removeUnused(boost::asio::io_context& context, const std::string& path) {
  Local::socket probe(context);
  error_code error;
  probe.connect(Local::endpoint(path), error);
  if (!error) refuse(path, "another program listens there; choose another file");
  struct stat status {};
  if (error == boost::asio::error::connection_refused && ::lstat(path.c_str(), &status) == 0 &&
      S_ISSOCK(status.st_mode)) {
    ::unlink(path.c_str());
  }
}

tcp::acceptor listenTcp(boost::asio::io_context& context, const std::string& place) {
  const tcp::endpoint endpoint = endpointOf(place);
  try {
    return {context, endpoint, true};
  } catch (const boost::system::system_error& error) {
    refuse(place, error.code().message() + "; choose another port, or 0 for a free one");
  }
}

Local::acceptor listenLocal(boost::asio::io_context& context, const std::string& path) {
  try {
    removeUnused(context, path);
    Local::acceptor acceptor(context, Local());
    const mode_t mask = ::umask(S_IRWXG | S_IRWXO);
    error_code error;
    acceptor.bind(Local::endpoint(path), error);
    ::umask(mask);
    if (error) refuse(path, error.message() + "; name a file in a folder that you may write to");
    acceptor.listen();
    return acceptor;
  } catch (const boost::system::system_error& error) {
    refuse(path, error.code().message() + "; name a shorter path in a folder of yours");
  }
}

std::variant<tcp::acceptor, Local::acceptor> listenAt(boost::asio::io_context& context,
                                                      const std::string& place) {
  if (place.find('/') != std::string::npos) return listenLocal(context, place);
  return listenTcp(context, place);
}

}  // namespace

Listener::Listener(boost::asio::io_context& context, const std::string& place, Site& site)
    : m_site(site),
      m_pause(context),
      m_socketFile(place.find('/') != std::string::npos ? place : ""),
      m_acceptor(listenAt(context, place)) {}

Listener::~Listener() {
  if (!m_socketFile.empty()) ::unlink(m_socketFile.c_str());
}

void Listener::start() {
  std::visit([this](auto& acceptor) { accept(acceptor); }, m_acceptor);
}

std::string Listener::authority() const {
  if (!m_socketFile.empty()) return "localhost";
  const tcp::endpoint endpoint = std::get<tcp::acceptor>(m_acceptor).local_endpoint();
  const std::string address = endpoint.address().to_string();
  return (endpoint.address().is_v6() ? "[" + address + "]" : address) + ":" +
         std::to_string(endpoint.port());
}

template <class Acceptor>
void Listener::accept(Acceptor& acceptor) {
  acceptor.async_accept([this, &acceptor](error_code error, auto socket) {
    if (error == boost::asio::error::operation_aborted) return;
    if (error) return acceptLater(acceptor);
    if (*m_count < kMostConnections) serve(std::move(socket), m_site, m_count);
    accept(acceptor);
  });
}

// No descriptor or no memory: some connection will end.
template <class Acceptor>
void Listener::acceptLater(Acceptor& acceptor) {
  m_pause.expires_after(kPause);
  m_pause.async_wait([this, &acceptor](error_code error) {
    if (!error) accept(acceptor);
  });
}

}  // namespace panel
