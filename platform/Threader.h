#pragma once

class Threadable;

// Priority of a thread within the telephone; a larger number is more urgent.
enum VotkThreadPriority : int {
  votkThreadPriorityIdle = 0,
  votkThreadPriorityLow = 1,
  votkThreadPriorityNormal = 2,
  votkThreadPriorityHigh = 3
};

// Launches and joins threads.
// Thread: any. An id is valid from spawn until destroy.
class Threader {
 public:
  // Starts body->run() on a new thread and stores its id (not 0) in *threadId before the body runs.
  // stackBytes: the least; 0 is the platform's default. False, and *threadId untouched, on failure,
  // as without a body or with a negative number of bytes.
  bool spawn(unsigned long* threadId, Threadable* body, const char* name,
             VotkThreadPriority priority, int stackBytes);

  // Returns when the body has returned. An unknown id returns at once.
  void waitForThreadCompletion(unsigned long threadId);

  // Frees a thread's resources. Waits for its end while it still runs.
  void destroy(unsigned long threadId);
};
