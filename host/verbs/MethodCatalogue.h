#pragma once

#include <span>
#include <string_view>

namespace host {

// One named value of a remote method, in the form NAME:TYPE.
struct MethodParameter {
  enum class Type { integer, text, boolean };
  std::string_view name;
  Type type;
};

// The service's remote methods as a caller needs to know them: for suggestions, for the arguments
// of an expectation, for documentation. Calls are sent as typed in any case: the service decides.
struct RemoteMethod {
  std::string_view name;
  std::span<const MethodParameter> request;  // in the order in which the service reads them
  std::span<const MethodParameter> reply;    // in the order in which the reply holds them
  bool replies;                              // false: the method is one-way
};

// In the order in which the service matches them.
[[nodiscard]] std::span<const RemoteMethod> remoteMethods();

// The events an observer hears, with their parameters; `replies` is false.
[[nodiscard]] std::span<const RemoteMethod> remoteEvents();

}  // namespace host
