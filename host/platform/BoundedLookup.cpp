#include "platform/BoundedLookup.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "Logging.h"

namespace host {
namespace {

std::atomic<int> g_out{0};  // lookups whose threads have not returned

// Shared by the one who waits and the thread that asks; the later of the two frees it.
struct Lookup {
  Resolve resolve;
  std::mutex mutex;  // guards what follows
  std::condition_variable changed;
  bool done = false;
  std::optional<std::string> address;
};

std::optional<std::string> answerOf(const Resolve& resolve) noexcept {
  try {
    return resolve();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void work(const std::shared_ptr<Lookup>& lookup) {
  auto address = answerOf(lookup->resolve);
  --g_out;
  const std::lock_guard lock(lookup->mutex);
  lookup->address = std::move(address);
  lookup->done = true;
  lookup->changed.notify_all();
}

void complain(const std::string& why) {
  logAppUni("clockhost", 3, __FILE__, __LINE__, "name lookup refused: %s", why.c_str());
}

bool startThread(const std::shared_ptr<Lookup>& lookup) {
  if (++g_out > kMostLookups) {
    --g_out;
    complain(std::to_string(kMostLookups) + " are still out");
    return false;
  }
  try {
    std::thread([lookup] { work(lookup); }).detach();
    return true;
  } catch (const std::system_error& error) {
    --g_out;
    complain("cannot start its thread: " + error.code().message());
    return false;
  }
}

}  // namespace

std::optional<std::string> boundedLookup(std::chrono::milliseconds limit, Resolve resolve) {
  const auto lookup = std::make_shared<Lookup>();
  lookup->resolve = std::move(resolve);
  if (!startThread(lookup)) return std::nullopt;
  std::unique_lock lock(lookup->mutex);
  lookup->changed.wait_for(lock, limit, [&] { return lookup->done; });
  return lookup->address;
}

}  // namespace host
