#pragma once

#include <atomic>
#include <string>

#include "Semaphore.h"
#include "ThreadSafety.h"
#include "Threadable.h"
#include "Threader.h"

// Hears that the NTP client has set the clock. Thread: the listener's.
class SNTPTimeChangeObserver {
 public:
  virtual ~SNTPTimeChangeObserver() = default;

  // secondsSinceEpoch: the time the client reported, since 1970-01-01 UTC; not 0.
  virtual void handleSNTPClientUpdate(long secondsSinceEpoch) = 0;
};

// Listens on the named pipe to which the external NTP client reports each time it set the clock.
// A message is 4 bytes: seconds since 1970-01-01 UTC, unsigned, in the device's byte order; 0
// carries no time. One message is read for each opening of the pipe, and the rest is dropped.
// Owner: the service. Thread: start and destruction are the owner's, run is the listener's.
// Failure: a missing or unreadable pipe, or anything else in its place, is logged and tried again
// after a second, for ever.
class SNTPClientThread final : public Threadable {
 public:
  // Where the client reports.
  static const std::string ntpclient_pipe;

  // The observer is not owned.
  explicit SNTPClientThread(SNTPTimeChangeObserver* timeChangeObserver);

  // Returns once the thread has ended, that is after the open or read it waits in has returned. A
  // thread that was never started is not waited for, and the pipe is not touched.
  ~SNTPClientThread();

  // Starts listening. Called once.
  void start();

  // From its return on the observer is not called any more; a call under way is waited for.
  void releaseObserver();

  void run() override;

 private:
  bool takeMessage(int pipe);  // false: told to end
  void report(unsigned long secondsSinceEpoch);
  void wakeListener();

  [[maybe_unused]] int reserved = 0;
  std::atomic<bool> running{false};
  SNTPTimeChangeObserver* observer CLOCK_GUARDED_BY(reportLock);
  Threader threader;
  unsigned long threadId = 0;
  Semaphore reportLock{1, 1};  // held while the observer is called
};
