#include "ClockServiceObserverProxy.h"

#include "Method.h"
#include "ProxyRequest.h"

namespace {

// Event parameters carry the direction of call parameters, although they leave the service.
constexpr Parameter::directions kDirection = Parameter::in;

}  // namespace

extern "C" Proxy* createClockServiceObserverProxy() {
  return new ClockServiceObserverProxy;
}

ClockServiceObserverProxy::~ClockServiceObserverProxy() = default;

void ClockServiceObserverProxy::initProxy(ProxyRequest& proxyRequest) {
  request = &proxyRequest;
}

void ClockServiceObserverProxy::timezoneChangeEvent(std::string timezone) {
  Method event("timezoneChangeEvent", Method::call);
  event.addStringParameter("timezoneChangeEventTimezone", timezone, kDirection);
  request->sendMethod(event);
}

void ClockServiceObserverProxy::timeChangeEvent(int hours, int minutes, int seconds) {
  Method event("timeChangeEvent", Method::call);
  event.addIntParameter("timeChangeEventHours", hours, kDirection);
  event.addIntParameter("timeChangeEventMinutes", minutes, kDirection);
  event.addIntParameter("timeChangeEventSeconds", seconds, kDirection);
  request->sendMethod(event);
}

void ClockServiceObserverProxy::dateChangeEvent(int day, int month, int year) {
  Method event("dateChangeEvent", Method::call);
  event.addIntParameter("dateChangeEventDay", day, kDirection);
  event.addIntParameter("dateChangeEventMonth", month, kDirection);
  event.addIntParameter("dateChangeEventYear", year, kDirection);
  request->sendMethod(event);
}

void ClockServiceObserverProxy::alarmClockEvent(int alarm) {
  Method event("alarmClockEvent", Method::call);
  event.addIntParameter("alarmClockEventAlarm", alarm, kDirection);
  request->sendMethod(event);
}
