#pragma once

#include <cstddef>
#include <map>
#include <utility>

#include "Executable.h"
#include "base/Mutex.h"
#include "framework/DataAccess.h"

namespace host {

// A settings store in memory, with faults to order: for tests and simulations.
// Owner: the device or the test. Thread: any.
class MemoryDataAccess : public Executable, public DataAccess {
 public:
  MemoryDataAccess() = default;
  ~MemoryDataAccess() override;

  void init(Context& context) override;
  void shutdown() override;

  bool setItem(const std::string& schema, const std::string& key,
               const std::string& value) override;
  std::optional<std::string> getItem(const std::string& schema, const std::string& key) override;

  // After `accepted` more sets, the next `refused` ones fail.
  void refuseSets(std::size_t accepted, std::size_t refused);
  // While true nothing can be read.
  void refuseGets(bool refused);

  [[nodiscard]] std::size_t setsAsked() const;

 private:
  mutable Mutex m_mutex;
  std::map<std::pair<std::string, std::string>, std::string> m_items CLOCK_GUARDED_BY(m_mutex);
  std::size_t m_setsAsked CLOCK_GUARDED_BY(m_mutex) = 0;
  std::size_t m_acceptFirst CLOCK_GUARDED_BY(m_mutex) = 0;
  std::size_t m_refuseThen CLOCK_GUARDED_BY(m_mutex) = 0;
  bool m_refuseGets CLOCK_GUARDED_BY(m_mutex) = false;
};

}  // namespace host
