#pragma once

#include <memory>

// One child process.
// Owner: its creator. Thread: one at a time. Destruction ends the child and reaps it.
class Process {
 public:
  // Option bits. 8: the child leads a process group of its own and inherits no descriptor but the
  // three standard ones.
  enum Options { ownProcessGroup = 8 };

  // arguments: null-terminated; entry 0 is the program's path. environment: null-terminated
  // "NAME=value" texts. Both are copied. workingFolder: null keeps the creator's.
  Process(int options, char* const* arguments, char* const* environment,
          const char* workingFolder = nullptr);

  // Ends the child, if it still runs, together with its process group, and reaps it.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // Starts the child. Returns its process id, or 0 or less when it could not be started.
  int launch();

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};
