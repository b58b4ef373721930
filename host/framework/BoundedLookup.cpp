#include "framework/BoundedLookup.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "Logging.h"
#include "base/LogLevels.h"
#include "base/PrintableText.h"
#include "framework/FailedLookups.h"

namespace host {
namespace {

using SteadyClock = std::chrono::steady_clock;
using Address = std::optional<std::string>;

std::atomic<int> g_pending{0};  // lookups whose threads have not returned

struct Decrement {
  void operator()(std::atomic<int>* count) const noexcept { --*count; }
};
// Counts as one of the kMostLookups while it exists. Empty: all are in use.
using Slot = std::unique_ptr<std::atomic<int>, Decrement>;

Slot takeSlot() {
  const bool isFree = ++g_pending <= kMostLookups;
  Slot slot(&g_pending);
  return isFree ? std::move(slot) : nullptr;
}

Address answerOf(const std::string& name, const Resolve& resolve) noexcept {
  try {
    Address address = resolve();
    if (address) failedLookups().forget(name);
    if (!address) failedLookups().setAnswered(name);
    return address;
  } catch (const std::exception&) {  // no name server has answered
    return std::nullopt;
  }
}

void runLookup(const std::string& name, const Resolve& resolve, std::promise<Address> answer,
               Slot slot) {
  Address address = answerOf(name, resolve);
  slot.reset();
  answer.set_value(std::move(address));
}

void logFailure(const std::string& name, const std::string& cause) {
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "name lookup of %s: %s; not asked again for %lld s", quotedText(name).c_str(),
            cause.c_str(), static_cast<long long>(FailedLookups::kKept.count()));
}

std::string timeoutText(std::chrono::milliseconds wait, bool silent) {
  return "no answer within " + std::to_string(wait.count()) + " ms" +
         (silent ? " (a short wait: the name server is not answering)" : "");
}

std::future<Address> startLookup(const std::string& name, Resolve resolve, Slot slot) {
  std::promise<Address> promise;
  std::future<Address> answer = promise.get_future();
  std::thread(runLookup, name, std::move(resolve), std::move(promise), std::move(slot)).detach();
  return answer;
}

// The name counts as failed until an address arrives, in time or late. Only a full wait without an
// answer makes the server count as silent: a short wait proves nothing about the server, and would
// prolong the silence.
Address answerInTime(const std::string& name, std::chrono::milliseconds limit, Resolve resolve,
                     Slot slot) {
  FailedLookups& failed = failedLookups();
  const auto now = SteadyClock::now();
  const bool silent = failed.isSilent(now);
  const bool first = failed.add(name, now);
  std::future<Address> answer = startLookup(name, std::move(resolve), std::move(slot));
  const auto wait = silent ? std::min(limit, kShortWait) : limit;
  const bool answered = answer.wait_for(wait) == std::future_status::ready;
  Address address = answered ? answer.get() : std::nullopt;
  if (address) return address;
  if (!answered && !silent) failed.setUnanswered(name);
  if (first) logFailure(name, answered ? "no address found" : timeoutText(wait, silent));
  return std::nullopt;
}

}  // namespace

// After an exception the name was not looked up, so it does not count as failed.
std::optional<std::string> boundedLookup(const std::string& name, std::chrono::milliseconds limit,
                                         Resolve resolve) try {
  if (failedLookups().holds(name, SteadyClock::now())) return std::nullopt;
  Slot slot = takeSlot();
  if (slot) return answerInTime(name, limit, std::move(resolve), std::move(slot));
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "name lookup refused: %d lookups are pending", kMostLookups);
  return std::nullopt;
} catch (const std::exception&) {
  failedLookups().forget(name);
  logAppUni("clockhost", kLogWarning, __FILE__, __LINE__,
            "name lookup refused: no memory or no thread for it");
  return std::nullopt;
}

}  // namespace host
