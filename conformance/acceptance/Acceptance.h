#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "Promise.h"
#include "acceptance/Telephone.h"

namespace conformance {

// The clock on the platform under test. Restores the process's TZ, which the clock sets.
class Acceptance : public Promise {
 protected:
  Acceptance() {
    const char* const zone = std::getenv("TZ");  // NOLINT(concurrency-mt-unsafe): no other thread
    if (zone != nullptr) m_zoneBefore = zone;
    setenv("TZ", "UTC0", 1);
    tzset();
  }
  ~Acceptance() override {
    m_telephone.reset();
    if (m_zoneBefore) {
      setenv("TZ", m_zoneBefore->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  void TearDown() override {
    m_telephone.reset();
    Promise::TearDown();
  }

  // Switched on at first use.
  Telephone& telephone() {
    if (!m_telephone) m_telephone.emplace(platform());
    return *m_telephone;
  }
  void pass(std::chrono::milliseconds duration) { platform().passTime(duration); }

  // Sets keys of the management, and lets the clock apply a new zone.
  void manage(std::initializer_list<std::pair<const char*, const char*>> values) {
    for (const auto& [key, value] : values)
      EXPECT_TRUE(platform().manage(key, value)) << key << " = " << value;
    pass(std::chrono::milliseconds{1});
  }

 private:
  std::optional<std::string> m_zoneBefore;
  std::optional<Telephone> m_telephone;
};

}  // namespace conformance
