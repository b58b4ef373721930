#pragma once

// Which lock guards what, for clang's thread safety analysis (-Wthread-safety): an access to a
// guarded member without its lock is an error. Empty for other compilers.

#if defined(__clang__)
#define CLOCK_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define CLOCK_THREAD_ATTRIBUTE(attribute)
#endif

// On a class: it is a lock, or it holds one for the life of a scope.
#define CLOCK_LOCK CLOCK_THREAD_ATTRIBUTE(capability("lock"))
#define CLOCK_SCOPED_LOCK CLOCK_THREAD_ATTRIBUTE(scoped_lockable)

// On a member: `lock` must be held to access it, or to access what it points to.
#define CLOCK_GUARDED_BY(lock) CLOCK_THREAD_ATTRIBUTE(guarded_by(lock))
#define CLOCK_POINTEE_GUARDED_BY(lock) CLOCK_THREAD_ATTRIBUTE(pt_guarded_by(lock))

// On a function: acquires or releases the named locks, or its own object if none is named.
// REQUIRES, EXCLUDES: the caller must, or must not, hold the named locks.
#define CLOCK_ACQUIRES(...) CLOCK_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define CLOCK_TRY_ACQUIRES(...) CLOCK_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define CLOCK_RELEASES(...) CLOCK_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define CLOCK_REQUIRES(...) CLOCK_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define CLOCK_EXCLUDES(...) CLOCK_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

// On a function whose locking the analysis cannot follow. Its comment says why it is correct.
#define CLOCK_UNCHECKED_LOCKING CLOCK_THREAD_ATTRIBUTE(no_thread_safety_analysis)
