#include "platform/BoundedLookup.h"

#include <atomic>
#include <exception>
#include <future>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "Logging.h"
#include "platform/FailedLookups.h"
#include "platform/ShownText.h"

namespace host {
namespace {

using SteadyClock = std::chrono::steady_clock;
using Address = std::optional<std::string>;

std::atomic<int> g_out{0};  // lookups whose threads have not returned

Address answerOf(const Resolve& resolve) noexcept {
  try {
    return resolve();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void work(const std::string& name, const Resolve& resolve, std::promise<Address> answer) {
  Address address = answerOf(resolve);
  if (address) failedLookups().forget(name);
  --g_out;
  answer.set_value(std::move(address));
}

void complain(const std::string& why) {
  logAppUni("clockhost", 3, __FILE__, __LINE__, "name lookup refused: %s", why.c_str());
}

void tellFailure(const std::string& name, const std::string& what) {
  logAppUni("clockhost", 3, __FILE__, __LINE__, "name lookup of %s: %s; next try after %lld s",
            quotedText(name).c_str(), what.c_str(),
            static_cast<long long>(FailedLookups::kKept.count()));
}

// Invalid: the name was not asked for.
std::future<Address> ask(const std::string& name, Resolve resolve) {
  if (++g_out > kMostLookups) {
    --g_out;
    complain(std::to_string(kMostLookups) + " are still out");
    return {};
  }
  std::promise<Address> promise;
  std::future<Address> answer = promise.get_future();
  try {
    std::thread(work, name, std::move(resolve), std::move(promise)).detach();
    return answer;
  } catch (const std::system_error& error) {
    --g_out;
    complain("cannot start its thread: " + error.code().message());
    return {};
  }
}

}  // namespace

// The name counts as failed from the start, and an address takes that back. So an address that
// comes late takes it back, too.
std::optional<std::string> boundedLookup(const std::string& name, std::chrono::milliseconds limit,
                                         Resolve resolve) {
  FailedLookups& failed = failedLookups();
  const auto now = SteadyClock::now();
  if (failed.holds(name, now)) return std::nullopt;
  const bool silent = failed.isSilent(now);
  const bool first = failed.add(name, now);
  std::future<Address> answer = ask(name, std::move(resolve));
  if (!answer.valid()) return std::nullopt;
  const auto wait = silent ? std::chrono::milliseconds(0) : limit;
  const bool answered = answer.wait_for(wait) == std::future_status::ready;
  Address address = answered ? answer.get() : std::nullopt;
  if (address) return address;
  if (!answered) failed.setUnanswered(name);
  if (!first) return std::nullopt;
  tellFailure(name, answered ? "no address found"
                    : silent ? "not waited for, the name server did not answer for another name"
                             : "no answer within " + std::to_string(limit.count()) + " ms");
  return std::nullopt;
}

}  // namespace host
