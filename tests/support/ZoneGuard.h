#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace support {

// Sets TZ of the process during its lifetime, and restores the former value.
// Thread: no other thread may read local time meanwhile.
class ZoneGuard {
 public:
  explicit ZoneGuard(const std::string& tz) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): see above
    if (const char* const former = std::getenv("TZ")) m_former = former;
    install(tz.c_str());
  }
  ~ZoneGuard() { install(m_former ? m_former->c_str() : nullptr); }
  ZoneGuard(const ZoneGuard&) = delete;
  ZoneGuard& operator=(const ZoneGuard&) = delete;

 private:
  static void install(const char* tz) {
    // NOLINTBEGIN(concurrency-mt-unsafe)
    if (tz != nullptr) {
      setenv("TZ", tz, 1);
    } else {
      unsetenv("TZ");
    }
    // NOLINTEND(concurrency-mt-unsafe)
    tzset();
  }

  std::optional<std::string> m_former;
};

}  // namespace support
