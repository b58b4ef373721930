#pragma once

#include <string>

class Executable;

// What the framework offers a service: other services by name, and timers.
// Owner: the framework; it outlives every service. Thread: any, for every operation.
// Failure: starting, stopping, cancelling or deleting an unknown timer does nothing. An id is
// unknown when it is 0 or negative, was never returned, or its timer was deleted.
class Context {
 public:
  // The service registered as `name` ("LocalMgmtIfc", ...), or null. Not owned by the caller, who
  // reaches the wanted interface by dynamic_cast.
  virtual Executable* getService(const std::string& name) = 0;

  // A stopped one-shot timer whose expiry calls owner.timerEvent(id) on the framework thread.
  // period: milliseconds from start to expiry. The id is positive and not reused soon; 0 or less
  // when no timer could be created. Equal expiries are delivered in order of creation.
  virtual int createTimer(Executable& owner, unsigned int periodMilliseconds) = 0;

  // Arms the timer for its full period from now, also when it is already running.
  virtual void startTimer(int timerId) = 0;

  // Disarms it; it may be started again.
  virtual void stopTimer(int timerId) = 0;

  // Disarms it and drops an expiry that is due but not yet delivered.
  virtual void cancelTimer(int timerId) = 0;

  // Frees the timer. Its id never reaches timerEvent again.
  virtual void deleteTimer(int timerId) = 0;

 protected:
  ~Context() = default;
};
