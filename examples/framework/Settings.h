#pragma once

#include <map>
#include <mutex>
#include <string>

#include "Context.h"
#include "Executable.h"

namespace example {

// The settings, in memory: a restart of the process forgets them. DataStorage, which the plug-in
// uses, finds them as the service "DataAccessServiceIfc". Thread: any.
class Settings final : public Executable {
 public:
  void init(Context& /*context*/) override {}
  void shutdown() override {}

  void set(const std::string& key, const std::string& value);

  // "<KEY>value</KEY>", or empty text for a key without a value.
  std::string elementOf(const std::string& key) const;

 private:
  mutable std::mutex m_mutex;
  std::map<std::string, std::string> m_values;
};

}  // namespace example
