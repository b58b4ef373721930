// The framework's side, built apart from the plug-in: it casts each object to its interfaces,
// catches its exceptions, and deletes it through its base.
#include <stdexcept>

#include "ClockServiceIfc.h"
#include "ClockServiceObserverIfc.h"
#include "Invoker.h"
#include "MgmtAgentIfc.h"
#include "Proxy.h"
#include "Service.h"
#include "physicalEventObserver.h"

extern "C" {
const char* releaseService(void* object);
const char* releaseInvoker(void* object);
const char* releaseProxy(void* object);
}

namespace {

bool throwsWhatIsCaught(ClockServiceIfc& clock) {
  try {
    clock.convertUtcStringToLocalString("");
  } catch (const std::logic_error&) {
    return true;
  } catch (...) {
  }
  return false;
}

const char* faultOf(Service& service) {
  auto* const clock = dynamic_cast<ClockServiceIfc*>(&service);
  if (clock == nullptr) return "is no ClockServiceIfc";
  if (dynamic_cast<MgmtAgentIfc*>(&service) == nullptr) return "is no MgmtAgentIfc";
  if (dynamic_cast<physicalEventObserver*>(clock) == nullptr) return "is no physicalEventObserver";
  return throwsWhatIsCaught(*clock) ? nullptr : "throws no std::logic_error";
}

}  // namespace

const char* releaseService(void* object) {
  auto* const service = static_cast<Service*>(object);
  const char* const fault = faultOf(*service);
  delete service;
  return fault;
}

const char* releaseInvoker(void* object) {
  delete static_cast<Invoker*>(object);
  return nullptr;
}

const char* releaseProxy(void* object) {
  auto* const proxy = static_cast<Proxy*>(object);
  const bool observes = dynamic_cast<ClockServiceObserverIfc*>(proxy) != nullptr;
  delete proxy;
  return observes ? nullptr : "is no ClockServiceObserverIfc";
}
