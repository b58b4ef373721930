/* Calls the factories as a C program: plain names, no arguments, each returns an object. */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

/* In factories.cpp, the framework's side: each deletes the object, and returns what is wrong with
   it or NULL. */
const char* releaseService(void* object);
const char* releaseInvoker(void* object);
const char* releaseProxy(void* object);

typedef void* (*Factory)(void);
typedef const char* (*Release)(void*);

static int makeOne(void* plugin, const char* name, Release release) {
  Factory factory = NULL;
  void* const symbol = dlsym(plugin, name);
  memcpy(&factory, &symbol, sizeof symbol);
  void* const object = factory == NULL ? NULL : factory();
  if (object == NULL) {
    fprintf(stderr, "%s: %s\n", name, factory == NULL ? "not found" : "returned null");
    return 1;
  }
  const char* const fault = release(object);
  if (fault != NULL) fprintf(stderr, "%s: its object %s\n", name, fault);
  return fault == NULL ? 0 : 1;
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
