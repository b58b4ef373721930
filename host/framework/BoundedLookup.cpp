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
#include "base/PrintableText.h"
#include "framework/FailedLookups.h"

namespace host {
namespace {

using SteadyClock = std::chrono::steady_clock;
using Address = std::optional<std::string>;

std::atomic<int> g_out{0};  // lookups whose threads have not returned

struct Return {
  void operator()(std::atomic<int>* out) const noexcept { --*out; }
};
// One of the kMostLookups, in use while it lives. Empty: none was free.
using Slot = std::unique_ptr<std::atomic<int>, Return>;

Slot takeSlot() {
  const bool isFree = ++g_out <= kMostLookups;
  Slot slot(&g_out);
  return isFree ? std::move(slot) : nullptr;
}

Address answerOf(const std::string& name, const Resolve& resolve) noexcept {
  try {
    Address address = resolve();
    if (address) failedLookups().forget(name);
    if (!address) failedLookups().setAnswered(name);
    return address;
  } catch (const std::exception&) {  // no server has answered
    return std::nullopt;
  }
}

void work(const std::string& name, const Resolve& resolve, std::promise<Address> answer,
          Slot slot) {
  Address address = answerOf(name, resolve);
  slot.reset();
  answer.set_value(std::move(address));
}

void tellFailure(const std::string& name, const std::string& what) {
  logAppUni("clockhost", 3, __FILE__, __LINE__, "name lookup of %s: %s; not asked again for %lld s",
            quotedText(name).c_str(), what.c_str(),
            static_cast<long long>(FailedLookups::kKept.count()));
}

std::string lateness(std::chrono::milliseconds wait, bool silent) {
  return "no answer within " + std::to_string(wait.count()) + " ms" +
         (silent ? " (a short wait: the name server is not answering)" : "");
}

std::future<Address> ask(const std::string& name, Resolve resolve, Slot slot) {
  std::promise<Address> promise;
  std::future<Address> answer = promise.get_future();
  std::thread(work, name, std::move(resolve), std::move(promise), std::move(slot)).detach();
  return answer;
}

// The name counts as failed from the start, until an address arrives, in time or late. Only a full
// wait without an answer begins a silence: a short wait proves nothing about the server, and would
// prolong the silence.
Address answerInTime(const std::string& name, std::chrono::milliseconds limit, Resolve resolve,
                     Slot slot) {
  FailedLookups& failed = failedLookups();
  const auto now = SteadyClock::now();
  const bool silent = failed.isSilent(now);
  const bool first = failed.add(name, now);
  std::future<Address> answer = ask(name, std::move(resolve), std::move(slot));
  const auto wait = silent ? std::min(limit, kShortWait) : limit;
  const bool answered = answer.wait_for(wait) == std::future_status::ready;
  Address address = answered ? answer.get() : std::nullopt;
  if (address) return address;
  if (!answered && !silent) failed.setUnanswered(name);
  if (first) tellFailure(name, answered ? "no address found" : lateness(wait, silent));
  return std::nullopt;
}

}  // namespace

// A name that was not looked up has not failed.
std::optional<std::string> boundedLookup(const std::string& name, std::chrono::milliseconds limit,
                                         Resolve resolve) try {
  if (failedLookups().holds(name, SteadyClock::now())) return std::nullopt;
  Slot slot = takeSlot();
  if (slot) return answerInTime(name, limit, std::move(resolve), std::move(slot));
  logAppUni("clockhost", 3, __FILE__, __LINE__, "name lookup refused: %d are still out",
            kMostLookups);
  return std::nullopt;
} catch (const std::exception&) {
  failedLookups().forget(name);
  logAppUni("clockhost", 3, __FILE__, __LINE__,
            "name lookup refused: no memory or no thread for it");
  return std::nullopt;
}

}  // namespace host
