/* The factories as a C program finds them: plain names, no arguments, an object each. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

/* factories.cpp: the framework's side, which ends each object through its base. */
void releaseService(void* object);
void releaseInvoker(void* object);
void releaseProxy(void* object);

typedef void* (*Factory)(void);
typedef void (*Release)(void*);

static int makeOne(void* plugin, const char* name, Release release) {
  Factory factory = NULL;
  void* const symbol = dlsym(plugin, name);
  memcpy(&factory, &symbol, sizeof symbol);
  void* const object = factory == NULL ? NULL : factory();
  if (object == NULL) {
    fprintf(stderr, "%s: %s\n", name, factory == NULL ? "not found" : "returned null");
    return 1;
  }
  release(object);
  return 0;
}

int main(int count, char** arguments) {
  void* const plugin = count == 2 ? dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (plugin == NULL) {
    fprintf(stderr, "%s\n", count == 2 ? dlerror() : "usage: factories PLUGIN");
    return 1;
  }
  const int faults = makeOne(plugin, "createClockService", releaseService) +
                     makeOne(plugin, "createClockServiceInvoker", releaseInvoker) +
                     makeOne(plugin, "createClockServiceObserverProxy", releaseProxy);
  return faults == 0 ? 0 : 1;
}
