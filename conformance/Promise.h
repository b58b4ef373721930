#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "Context.h"
#include "Executable.h"
#include "Platform.h"

namespace conformance {

// A test of one promise of the header after which its file is named. It runs on a new platform.
// When it takes longer than the limit, the program says so and aborts.
class Promise : public testing::Test {
 protected:
  Promise();
  ~Promise() override;

  // The header's words that the test holds the platform to; printed when it fails or does not end.
  void promises(const char* words, const char* source = __builtin_FILE());

  Platform& platform() { return *m_platform; }

  // The service that the framework has registered. Throws std::runtime_error without.
  template <class Interface>
  Interface& service(const std::string& name) {
    auto* const found = dynamic_cast<Interface*>(platform().context().getService(name));
    if (found == nullptr) throw std::runtime_error("there is no " + name);
    return *found;
  }

  void TearDown() override;

 private:
  std::string m_promise;  // HEADER: "WORDS"
  std::unique_ptr<Platform> m_platform;
};

// Asks again and again until the condition holds; false when it does not within the limit.
template <class Condition>
bool becomesTrue(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds{30}) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

// Calls the function on this thread and, at the same time, on another. Most faults that this
// provokes show only under a thread sanitizer.
template <class Function>
void onTwoThreads(const Function& function) {
  std::thread other(function);
  function();
  other.join();
}

// A new folder, removed with its content by the destructor.
class ScratchFolder {
 public:
  ScratchFolder();  // throws std::system_error
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

 private:
  std::filesystem::path m_path;
};

// A file's content; empty without one.
std::string contentOf(const std::filesystem::path& file);

// Begins the message about a Platform operation that was called and is not overridden.
inline constexpr const char* kLack = "the adapter does not override ";

// Runs the tests, except those that leftOut() names, and prints what was left out and why. 0: all
// passed. 2: leftOut() names a test that there is none of.
int runPromises();

}  // namespace conformance
