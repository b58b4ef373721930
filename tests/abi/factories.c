/* The factories as a C program sees them: plain names, no arguments, an object each. */
#include <stdio.h>

void* createClockService(void);
void* createClockServiceInvoker(void);
void* createClockServiceObserverProxy(void);

/* factories.cpp: the framework's side, which ends each object through its base. */
void releaseService(void* object);
void releaseInvoker(void* object);
void releaseProxy(void* object);

static int missing(const void* object, const char* factory) {
  if (object == NULL) {
    fprintf(stderr, "%s returned null\n", factory);
    return 1;
  }
  return 0;
}

int main(void) {
  void* const service = createClockService();
  void* const invoker = createClockServiceInvoker();
  void* const proxy = createClockServiceObserverProxy();
  const int faults = missing(service, "createClockService") +
                     missing(invoker, "createClockServiceInvoker") +
                     missing(proxy, "createClockServiceObserverProxy");
  releaseProxy(proxy);
  releaseInvoker(invoker);
  releaseService(service);
  return faults == 0 ? 0 : 1;
}
