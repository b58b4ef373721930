#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string_view>

namespace host {

// A parameter of a remote method.
struct MethodParameter {
  enum class Type { integer, text, boolean };
  std::string_view name;
  Type type;
};

// At most six parameters, in their order.
class MethodParameters {
 public:
  constexpr MethodParameters(std::initializer_list<MethodParameter> list) : m_size(list.size()) {
    std::copy(list.begin(), list.end(), m_all.begin());
  }
  [[nodiscard]] constexpr const MethodParameter* begin() const { return m_all.data(); }
  [[nodiscard]] constexpr const MethodParameter* end() const { return begin() + m_size; }
  [[nodiscard]] constexpr std::size_t size() const { return m_size; }

 private:
  std::array<MethodParameter, 6> m_all{};
  std::size_t m_size;
};

// What a caller needs to know about a remote method: for suggestions, expectations and documents.
// clockctl also sends calls of methods that are not in the table: the service decides.
struct MethodRow {
  std::string_view name;
  MethodParameters request;  // in the order in which the service reads them
  MethodParameters reply;    // in the order of the reply; empty: one-way

  [[nodiscard]] constexpr bool replies() const { return reply.size() > 0; }
};

// In the order in which the service matches them.
[[nodiscard]] std::span<const MethodRow> remoteMethods();

// The events that an observer receives, with their parameters in `request`.
[[nodiscard]] std::span<const MethodRow> remoteEvents();

}  // namespace host
