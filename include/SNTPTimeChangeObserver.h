#pragma once

#include <atomic>
#include <string>

#include "Semaphore.h"
#include "ThreadSafety.h"
#include "Threadable.h"
#include "Threader.h"

// Receives the times that the NTP client has set. Thread: the listener's.
class SNTPTimeChangeObserver {
 public:
  virtual ~SNTPTimeChangeObserver() = default;

  // secondsSinceEpoch: the time the client reported, since 1970-01-01 UTC; not 0.
  virtual void handleSNTPClientUpdate(long secondsSinceEpoch) = 0;
};

// Listens on the named pipe to which the external NTP client reports each time it set the clock.
// A message is 4 bytes: seconds since 1970-01-01 UTC, unsigned, in the device's byte order; 0
// carries no time. Each time the pipe is opened, one message is read and the rest is dropped.
// Owner: the service. Thread: start and destruction are the owner's, run is the listener's.
// Failure: a missing or unreadable pipe, or a file of another kind in its place, is logged; the
// listener retries every second.
class SNTPClientThread final : public Threadable {
 public:
  // Where the client reports.
  static const std::string ntpclient_pipe;

  // The observer is not owned.
  explicit SNTPClientThread(SNTPTimeChangeObserver* timeChangeObserver);

  // Returns when the thread has ended, which is after the open or read that it waits in has
  // returned. Without a started thread it returns at once and does not touch the pipe.
  ~SNTPClientThread();

  // Starts listening. Called once.
  void start();

  // Waits for a call of the observer under way; after the return there are no more calls.
  void releaseObserver();

  void run() override;

 private:
  bool takeMessage(int pipe);  // false: the thread is to end
  void report(unsigned long secondsSinceEpoch);
  void wakeListener();

  [[maybe_unused]] int reserved{};
  std::atomic<bool> running{false};
  SNTPTimeChangeObserver* observer CLOCK_GUARDED_BY(reportLock);
  Threader threader;
  unsigned long threadId = 0;
  // Held while the observer handles a report and stores the time: releaseObserver waits for that.
  Semaphore reportLock{1, 1};
};
