#pragma once

#include <vector>

namespace conformance {

// A fault of the platform that can be switched on, and the one test that has to find it. The
// objects are constants of the files that contain the faults. Thread: constructed before any other
// thread; on() from any.
class Violation {
 public:
  // test: as GoogleTest names it. what: the fault, for people. says: printed when it is found.
  Violation(const char* test, const char* what, const char* says = "Not kept: ");
  Violation(const Violation&) = delete;
  Violation& operator=(const Violation&) = delete;

  [[nodiscard]] bool on() const { return s_active == this; }
  void switchOn() const { s_active = this; }

  [[nodiscard]] static const std::vector<const Violation*>& all();

  const char* const test;
  const char* const what;
  const char* const says;

  static constexpr const char* kHangs = "The test did not end within";  // and the program aborts

 private:
  static inline const Violation* s_active = nullptr;
};

}  // namespace conformance
