#pragma once

#include <ctime>
#include <string>

// The device's security log, registered as "SecurityLogServiceIfc".
// Owner: the framework. Thread: any. The service itself handles a failure to write.
class SecurityLogServiceIfc {
 public:
  // Appends one record. time: seconds since 1970-01-01 UTC. The four numbers classify the event:
  // facility, severity, event class and event code. failure: the attempt was refused. subject,
  // origin: who and from where, empty when it is the device itself.
  virtual void record(time_t time, int facility, int severity, int eventClass, int eventCode,
                      bool failure, const std::string& text, const std::string& subject,
                      const std::string& origin) = 0;

 protected:
  ~SecurityLogServiceIfc() = default;
};
