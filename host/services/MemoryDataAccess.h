#pragma once

#include <cstddef>
#include <map>
#include <utility>

#include "Executable.h"
#include "base/Mutex.h"
#include "framework/DataAccess.h"

namespace host {

// A settings store in memory that can be told to fail. Only for tests and simulations: the host's
// settings are in SettingsDatabase.
// Owner: the device or the test. Thread: any.
class MemoryDataAccess : public Executable, public DataAccess {
 public:
  void init(Context&) override {}
  void shutdown() override {}

  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

  // Accepts `accepted` more sets, then refuses the next `refused` ones.
  void refuseSets(std::size_t accepted, std::size_t refused);
  // While true, every get fails.
  void refuseGets(bool refused);

  [[nodiscard]] std::size_t setsAsked() const;  // accepted and refused sets

 private:
  mutable Mutex m_mutex;
  std::map<std::pair<std::string, std::string>, std::string> m_items CLOCK_GUARDED_BY(m_mutex);
  std::size_t m_setsAsked CLOCK_GUARDED_BY(m_mutex) = 0;
  std::size_t m_acceptFirst CLOCK_GUARDED_BY(m_mutex) = 0;
  std::size_t m_refuseThen CLOCK_GUARDED_BY(m_mutex) = 0;
  bool m_refuseGets CLOCK_GUARDED_BY(m_mutex) = false;
};

}  // namespace host
