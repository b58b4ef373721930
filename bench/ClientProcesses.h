#pragma once

#include <sys/types.h>

#include <functional>
#include <vector>

#include "remote/Descriptor.h"

namespace bench {

// Clients that are processes of their own, made of this one. They wait to be released together, so
// that what it takes to make them is not timed with their work. Owner: a measurement. Destruction
// ends and reaps those that are still there.
class ClientProcesses {
 public:
  // Throws std::system_error: no pipe.
  ClientProcesses();
  ~ClientProcesses();
  ClientProcesses(const ClientProcesses&) = delete;
  ClientProcesses& operator=(const ClientProcesses&) = delete;

  // One more. An exception of its work is its failure and goes no further than that process.
  // Returns when it waits to be released. Throws std::system_error: there can be no more processes;
  // std::runtime_error: it has ended before.
  void add(const std::function<void()>& work);
  void release();
  // Waits for their ends. Throws std::runtime_error: one has failed.
  void join();

 private:
  struct Pipe {
    Pipe();
    host::Descriptor from;
    host::Descriptor to;
  };

  [[noreturn]] void live(const std::function<void()>& work, const Pipe& ready);

  Pipe m_gate;  // its end releases them
  std::vector<pid_t> m_running;
};

}  // namespace bench
