#pragma once

// Which lock guards what, for clang's thread safety analysis (-Wthread-safety): the compiler
// refuses a guarded member that is touched without its lock. Other compilers see nothing.

#if defined(__clang__)
#define CLOCK_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define CLOCK_THREAD_ATTRIBUTE(attribute)
#endif

// Of a class: it is a lock; it holds one for the life of a scope.
#define CLOCK_LOCK CLOCK_THREAD_ATTRIBUTE(capability("lock"))
#define CLOCK_SCOPED_LOCK CLOCK_THREAD_ATTRIBUTE(scoped_lockable)

// Of a member: touched, or what it points to is touched, only while `lock` is held.
#define CLOCK_GUARDED_BY(lock) CLOCK_THREAD_ATTRIBUTE(guarded_by(lock))
#define CLOCK_POINTEE_GUARDED_BY(lock) CLOCK_THREAD_ATTRIBUTE(pt_guarded_by(lock))

// Of a function: it takes or gives back its object or the locks named; its caller holds them, or
// does not hold them.
#define CLOCK_ACQUIRES(...) CLOCK_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define CLOCK_TRY_ACQUIRES(...) CLOCK_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define CLOCK_RELEASES(...) CLOCK_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define CLOCK_REQUIRES(...) CLOCK_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define CLOCK_EXCLUDES(...) CLOCK_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

// Of a function whose locking the analysis cannot follow. Its comment says why it is right.
#define CLOCK_UNCHECKED_LOCKING CLOCK_THREAD_ATTRIBUTE(no_thread_safety_analysis)
