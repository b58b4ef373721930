// A library with the factory of the plug-in, and no clock.
extern "C" void* createClockService() {
  return nullptr;
}
