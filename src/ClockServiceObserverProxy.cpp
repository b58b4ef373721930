#include "ClockServiceObserverProxy.h"

#include "Method.h"
#include "ProxyRequest.h"

namespace {

// Event parameters carry the direction of call parameters, although they leave the service.
constexpr Parameter::directions direction = Parameter::in;

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
  event.addStringParameter("timezoneChangeEventTimezone", timezone, direction);
  request->sendMethod(event);
}

void ClockServiceObserverProxy::timeChangeEvent(int hours, int minutes, int seconds) {
  Method event("timeChangeEvent", Method::call);
  event.addIntParameter("timeChangeEventHours", hours, direction);
  event.addIntParameter("timeChangeEventMinutes", minutes, direction);
  event.addIntParameter("timeChangeEventSeconds", seconds, direction);
  request->sendMethod(event);
}

void ClockServiceObserverProxy::dateChangeEvent(int day, int month, int year) {
  Method event("dateChangeEvent", Method::call);
  event.addIntParameter("dateChangeEventDay", day, direction);
  event.addIntParameter("dateChangeEventMonth", month, direction);
  event.addIntParameter("dateChangeEventYear", year, direction);
  request->sendMethod(event);
}

void ClockServiceObserverProxy::alarmClockEvent(int alarm) {
  Method event("alarmClockEvent", Method::call);
  event.addIntParameter("alarmClockEventAlarm", alarm, direction);
  request->sendMethod(event);
}
