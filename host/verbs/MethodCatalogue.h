#pragma once

#include <span>
#include <string_view>

namespace host {

// A parameter of a remote method or event.
struct MethodParameter {
  enum class Type { integer, text, boolean };
  std::string_view name;
  Type type{};
  std::string_view values{};   // that a request takes or an event has; empty for replies
  std::string_view example{};  // one of them
};

// In their order.
using MethodParameters = std::span<const MethodParameter>;

// What a caller needs to know about a remote method or an event: for checks, suggestions,
// expectations and documents.
struct MethodRow {
  std::string_view name;
  std::string_view meaning;  // what the method does, or when the event is raised
  MethodParameters request;  // in the order in which the service reads them
  MethodParameters reply;    // in the order of the reply; empty: one-way

  [[nodiscard]] constexpr bool replies() const { return !reply.empty(); }
};

// In the order in which the service matches them.
[[nodiscard]] std::span<const MethodRow> remoteMethods();

// The events that an observer receives, with their parameters in `request`.
[[nodiscard]] std::span<const MethodRow> remoteEvents();

// "int", "string" or "bool"
[[nodiscard]] std::string_view typeName(MethodParameter::Type type);

}  // namespace host
