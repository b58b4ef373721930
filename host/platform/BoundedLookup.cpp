#include "platform/BoundedLookup.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "Logging.h"
#include "platform/FailedLookups.h"
#include "platform/ShownText.h"

namespace host {
namespace {

std::atomic<int> g_out{0};  // lookups whose threads have not returned

// Shared by the one who waits and the thread that asks; the later of the two frees it.
struct Lookup {
  std::string name;
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
  if (address) failedLookups().forget(lookup->name);
  --g_out;
  const std::lock_guard lock(lookup->mutex);
  lookup->address = std::move(address);
  lookup->done = true;
  lookup->changed.notify_all();
}

void complain(const std::string& why) {
  logAppUni("clockhost", 3, __FILE__, __LINE__, "name lookup refused: %s", why.c_str());
}

void tellFailure(const std::string& name, std::chrono::milliseconds limit) {
  logAppUni("clockhost", 3, __FILE__, __LINE__,
            "no address found for %s within %lld ms; it is asked for again after %lld s",
            quotedText(name).c_str(), static_cast<long long>(limit.count()),
            static_cast<long long>(FailedLookups::kKept.count()));
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

std::optional<std::string> boundedLookup(const std::string& name, std::chrono::milliseconds limit,
                                         Resolve resolve) {
  using SteadyClock = std::chrono::steady_clock;
  if (failedLookups().holds(name, SteadyClock::now())) return std::nullopt;
  const auto lookup = std::make_shared<Lookup>();
  lookup->name = name;
  lookup->resolve = std::move(resolve);
  if (!startThread(lookup)) return std::nullopt;
  std::unique_lock lock(lookup->mutex);
  lookup->changed.wait_for(lock, limit, [&] { return lookup->done; });
  if (!lookup->address && failedLookups().add(name, SteadyClock::now())) tellFailure(name, limit);
  return lookup->address;
}

}  // namespace host
