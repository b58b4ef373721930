#include "server/Access.h"

#include <algorithm>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

namespace panel {
namespace {

// "8080" of "127.0.0.1:8080"; empty: none. Cookies are not kept apart by port, so that the name of
// the cookie has it.
std::string portOf(const std::string& authority) {
  const std::size_t colon = authority.rfind(':');
  return colon == std::string::npos ? "" : authority.substr(colon + 1);
}

// Takes the same time wherever the texts differ, so that no prefix of the token can be found out.
bool sameSecret(std::string_view one, std::string_view other) {
  if (one.size() != other.size()) return false;
  int differing = 0;
  for (std::size_t i = 0; i < one.size(); ++i) differing |= one[i] ^ other[i];
  return differing == 0;
}

constexpr std::string_view kEntrance = "/?token=";

}  // namespace

Access::Access(std::string authority, std::string token)
    : m_authority(std::move(authority)),
      m_token(std::move(token)),
      m_cookie("clockpanel-" + portOf(m_authority) + "=" + m_token) {}

Access::Verdict Access::check(const RequestHead& request) const {
  if (!isOwnAuthority(request.host)) return Verdict::wrongHost;
  constexpr std::string_view kScheme = "http://";
  const bool foreign = !request.origin.starts_with(kScheme) ||
                       !isOwnAuthority(request.origin.substr(kScheme.size()));
  // A browser tells the origin of each request that changes something.
  if (request.origin.empty() ? request.method != "GET" : foreign) return Verdict::wrongOrigin;
  if (request.method == "GET" && request.target.starts_with(kEntrance) &&
      sameSecret(request.target.substr(kEntrance.size()), m_token)) {
    return Verdict::enter;
  }
  return hasCookie(request.cookie) ? Verdict::allowed : Verdict::noToken;
}

std::string Access::address() const {
  return "http://" + m_authority + std::string(kEntrance) + m_token;
}

std::string Access::cookie() const {
  return m_cookie + "; Path=/; HttpOnly; SameSite=Strict";
}

// A browser may have been told "localhost" for the loopback address.
bool Access::isOwnAuthority(std::string_view authority) const {
  const std::string port = portOf(m_authority);
  return authority == m_authority || authority == "localhost" + (port.empty() ? "" : ":" + port);
}

bool Access::hasCookie(std::string_view cookies) const {
  for (;;) {
    const std::size_t end = cookies.find(';');
    if (sameSecret(cookies.substr(0, end), m_cookie)) return true;
    if (end == std::string_view::npos) return false;
    cookies.remove_prefix(std::min(cookies.find_first_not_of(' ', end + 1), cookies.size()));
  }
}

std::string newToken() {
  return to_string(boost::uuids::random_generator()());
}

}  // namespace panel
