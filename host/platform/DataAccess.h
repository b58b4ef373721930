#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace host {

// The settings store behind DataStorage: the service "DataAccessServiceIfc" has this interface.
// Owner: the device. Thread: any. Schema, key and value are any bytes.
struct DataAccess {
  // False when it was not stored; the old value is then still there. True: it is durable.
  [[nodiscard]] virtual bool setItem(const std::string& schema, const std::string& key,
                                     const std::string& value) = 0;

  // Empty when nothing is stored, or it cannot be read.
  [[nodiscard]] virtual std::optional<std::string> getItem(const std::string& schema,
                                                           const std::string& key) = 0;

 protected:
  ~DataAccess() = default;
};

// How many values of the calling thread the store has failed to keep. A set is carried out on one
// thread: who counts before and after it knows whether the store refused, or somebody else.
[[nodiscard]] std::uint64_t failedWritesHere();

}  // namespace host
