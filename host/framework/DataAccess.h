#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace host {

// The settings store behind DataStorage: the service "DataAccessServiceIfc" has this interface.
// Owner: the device. Thread: any. Schema, key and value are any bytes.
struct DataAccess {
  // True: the value is durable. False: it was not stored, and the old value stays.
  [[nodiscard]] virtual bool setItem(const std::string& schema, const std::string& key,
                                     const std::string& value) = 0;

  // Empty when no value is stored, or it cannot be read.
  [[nodiscard]] virtual std::optional<std::string> getItem(const std::string& schema,
                                                           const std::string& key) = 0;

 protected:
  ~DataAccess() = default;
};

// How many writes of the calling thread the store has refused. A setting is changed on one thread,
// so the counts before and after show whether the store refused it.
[[nodiscard]] std::uint64_t failedWritesHere();

}  // namespace host
