#pragma once

class Context;

// Base of the objects that the framework loads or returns: services, proxies.
// Owner: the framework, which deletes it through this base. Thread: init, shutdown and timerEvent
// are called on the object's framework thread. Other interfaces are reached by dynamic_cast.
class Executable {
 public:
  virtual ~Executable();

  // Called once, before anything else. The context outlives the object.
  virtual void init(Context& context) = 0;

  // Called once, before destruction.
  virtual void shutdown() = 0;

  // A timer created for this object has expired. The default ignores it.
  virtual void timerEvent(int timerId);

 protected:
  Executable() = default;
  Executable(const Executable&) = delete;
  Executable& operator=(const Executable&) = delete;
};
