#pragma once

/// What clang checks about locks while it compiles; other compilers see nothing. Attributes cannot be hidden
/// behind a template, hence macros.

#ifdef __clang__
#define MAROVINE_CHECKED(attribute) __attribute__((attribute))
#else
#define MAROVINE_CHECKED(attribute)
#endif

/// The class is a lock.
#define IS_LOCK MAROVINE_CHECKED(capability("mutex"))
/// The class holds a lock from its constructor to its destructor.
#define IS_SCOPED_LOCK MAROVINE_CHECKED(scoped_lockable)
/// The function takes, tries to take or gives back a lock; without argument its own object.
#define TAKES(...) MAROVINE_CHECKED(acquire_capability(__VA_ARGS__))
#define TRIES_TO_TAKE(...) MAROVINE_CHECKED(try_acquire_capability(__VA_ARGS__))
#define GIVES_BACK(...) MAROVINE_CHECKED(release_capability(__VA_ARGS__))
/// The function may be called only while the lock is held.
#define NEEDS(...) MAROVINE_CHECKED(requires_capability(__VA_ARGS__))
/// The lock is held when the function returns; said where the checker cannot see it.
#define SAYS_IT_IS_HELD MAROVINE_CHECKED(assert_capability(this))
/// The member may be used only while the lock is held.
#define GUARDED_BY(lock) MAROVINE_CHECKED(guarded_by(lock))
/// The body is the lock's own business.
#define NOT_CHECKED MAROVINE_CHECKED(no_thread_safety_analysis)
