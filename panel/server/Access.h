#pragma once

#include <string>
#include <string_view>

namespace panel {

// What decides whether a request may pass.
struct RequestHead {
  std::string_view method;
  std::string_view target;
  std::string_view host;
  std::string_view origin;  // empty: none
  std::string_view cookie;
};

// Who may use the panel: a browser that was opened with the printed address. The address holds a
// random token, which the first request exchanges for a cookie. Host and Origin are checked against
// other sites that a browser may have open (RFC 9110, 7.2; RFC 6454). Immutable; thread: any.
class Access {
 public:
  enum class Verdict { allowed, enter, wrongHost, wrongOrigin, noToken };

  // authority: "127.0.0.1:8080", the address that the panel listens at. A listener on a Unix socket
  // has "localhost".
  Access(std::string authority, std::string token);

  [[nodiscard]] Verdict check(const RequestHead& request) const;

  [[nodiscard]] std::string address() const;  // "http://127.0.0.1:8080/?token=..."
  [[nodiscard]] std::string cookie() const;   // the value of Set-Cookie

 private:
  [[nodiscard]] bool isOwnAuthority(std::string_view authority) const;
  [[nodiscard]] bool hasCookie(std::string_view cookies) const;

  const std::string m_authority;
  const std::string m_token;
  const std::string m_cookie;  // "clockpanel-8080=..."
};

// 122 random bits of the system, as a UUID. Throws std::exception when it has none.
[[nodiscard]] std::string newToken();

}  // namespace panel
