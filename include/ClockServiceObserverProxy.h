#pragma once

#include <string>

#include "ClockServiceObserverIfc.h"
#include "Proxy.h"

// Stands in for an observer in another process: each event becomes a message to it.
// Owner: the framework. Thread: any, after initProxy. Failure: none; the request delivers messages
// and handles their loss.
class ClockServiceObserverProxy : public Proxy, public ClockServiceObserverIfc {
 public:
  ClockServiceObserverProxy() = default;
  ~ClockServiceObserverProxy() override;

  // REQUIRES: called before the first event. `proxyRequest` outlives the proxy.
  void initProxy(ProxyRequest& proxyRequest) override;

  void timezoneChangeEvent(std::string timezone) override;
  void timeChangeEvent(int hours, int minutes, int seconds) override;
  void dateChangeEvent(int day, int month, int year) override;
  void alarmClockEvent(int alarm) override;

 private:
  ProxyRequest* request = nullptr;  // not owned
};

extern "C" __attribute__((visibility("default"))) Proxy* createClockServiceObserverProxy();
