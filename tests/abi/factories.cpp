#include "Invoker.h"
#include "Proxy.h"
#include "Service.h"

extern "C" {
void releaseService(void* object);
void releaseInvoker(void* object);
void releaseProxy(void* object);
}

void releaseService(void* object) {
  delete static_cast<Service*>(object);
}
void releaseInvoker(void* object) {
  delete static_cast<Invoker*>(object);
}
void releaseProxy(void* object) {
  delete static_cast<Proxy*>(object);
}
