#pragma once

#include <pthread.h>
#include <signal.h>

#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "base/Error.h"

namespace host {

// Blocks all signals on the calling thread: the main thread handles them.
inline void blockSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

// Starts a thread that leaves all signals to the main thread. Throws Error, which names the thread,
// when the system cannot start another.
template <class Body>
[[nodiscard]] std::thread startThread(const char* name, Body body) {
  try {
    return std::thread([body = std::move(body)] {
      blockSignals();
      body();
    });
  } catch (const std::system_error& error) {
    throw Error(std::string("cannot start the ") + name + ": " + error.code().message());
  }
}

}  // namespace host
