#pragma once

#include <pthread.h>
#include <signal.h>

#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "base/Error.h"

namespace host {

// A thread of the host's own. Signals to the process are not for it. Throws Error naming the thread
// when the system has none left.
template <class Body>
[[nodiscard]] std::thread startThread(const char* name, Body body) {
  try {
    return std::thread([body = std::move(body)] {
      sigset_t all;
      sigfillset(&all);
      pthread_sigmask(SIG_BLOCK, &all, nullptr);
      body();
    });
  } catch (const std::system_error& error) {
    throw Error(std::string("cannot start the ") + name + ": " + error.code().message());
  }
}

}  // namespace host
