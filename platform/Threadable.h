#pragma once

#include <string>

// A body that a Threader can run on a thread of its own.
// Objects are never deleted through this base, hence no virtual destructor.
class Threadable {
 public:
  // The thread body; the thread ends when it returns.
  virtual void run() = 0;

  // The wanted scheduling priority; the default is 0, that of the creator.
  virtual int getThreadPriorityForPlatform();

  // The kind of thread, for diagnostics; the default is "Threadable".
  virtual std::string type();

 protected:
  Threadable() = default;
  ~Threadable() = default;
  Threadable(const Threadable&) = delete;
  Threadable& operator=(const Threadable&) = delete;
};
