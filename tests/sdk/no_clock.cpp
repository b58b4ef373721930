// A library with the factory of the plug-in, and no clock.
class Service;

extern "C" Service* createClockService() {
  return nullptr;
}
