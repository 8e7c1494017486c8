#pragma once

/// Locks and scope guards over POSIX threads. A guard takes its lock when it is built and gives it back when
/// it ends; the lock classes check their own use and report misuse as `std::logic_error`.

#include <pthread.h>

#include "base/ThreadSafety.h"

namespace tavr::templates::platform {
class CriticalSectionScope;
}

namespace tavr::templates::patterns {

/// Throws `std::logic_error` with `text`. Kept out of line: the guards stay small, and a call from a
/// destructor ends the process in `std::terminate`, as a misuse found there must.
[[noreturn]] void reportLockMisuse(const char* text);

/// A lock that knows whether a guard holds it. Must be free when it is destroyed; otherwise the process ends
/// with "GenericLock object destroyed with lock still held".
class IS_LOCK GenericLock {
 public:
    GenericLock() = default;
    GenericLock(const GenericLock&) = delete;
    GenericLock& operator=(const GenericLock&) = delete;

    // The order of the virtual operations is fixed.
    virtual ~GenericLock() {
        if (locked_) {
            reportLockMisuse("GenericLock object destroyed with lock still held");
        }
    }
    /// Blocks until the lock is taken.
    virtual void acquire() TAKES() = 0;
    /// Tries once, or for at most `timeout` if the lock can wait; true if it was taken.
    virtual bool try_acquire(unsigned int timeout) TRIES_TO_TAKE(true) = 0;
    /// Gives the lock back.
    virtual void release() GIVES_BACK() = 0;

 protected:
    friend class GenericLockGuard;
    friend class platform::CriticalSectionScope;

    // What guards do. A lock that was just acquired is marked as held; one that another guard of this thread
    // holds was not really acquired, is released again and reported.
    void mark() NOT_CHECKED {
        if (locked_) {
            release();
            reportLockMisuse("GenericLock object got lock but is already marked as locked");
        }
        locked_ = true;
    }
    /// Before the lock is given back.
    void unmark() {
        if (!locked_) {
            reportLockMisuse("GenericLock::leave() called with lock not held");
        }
        locked_ = false;
    }

    bool locked_ = false;  ///< a guard holds the lock; only guards change it
};

/// What all guards share. Releasing is the business of the derived guards.
template <typename LockPointer>
class Guard {
 public:
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    virtual ~Guard() = default;

 protected:
    explicit Guard(LockPointer lock) : lock_(lock) {}

    /// Last act of a constructor: until then a guard that ends holds and owns nothing.
    void setHeld(bool ownsLock) {
        locked_ = true;
        ownsLock_ = ownsLock;
    }

    /// Last act of a guard: deletes the lock if the guard was built to own it.
    void deleteOwnedLock() {
        if (ownsLock_) {
            delete lock_;
        }
    }

    LockPointer lock_;       ///< the guarded lock
    bool locked_ = false;    ///< this guard holds the lock
    bool ownsLock_ = false;  ///< this guard deletes the lock when it ends
};

/// Holds a `GenericLock` for a scope. Not re-entrant: a second guard on a held lock throws
/// "GenericLock object got lock but is already marked as locked".
class IS_SCOPED_LOCK GenericLockGuard : public Guard<GenericLock*> {
 public:
    /// Takes `lock`; with `ownsLock` the lock is deleted when the guard ends.
    explicit GenericLockGuard(GenericLock* lock, bool ownsLock = false) TAKES(lock) NOT_CHECKED
        : Guard(lock) {
        enter(*lock, ownsLock);
    }
    ~GenericLockGuard() override GIVES_BACK() NOT_CHECKED {
        if (locked_) {
            leave(*lock_);
        }
        deleteOwnedLock();
    }

 protected:
    struct NotEntered {};
    GenericLockGuard(GenericLock* lock, NotEntered /*tag*/) : Guard(lock) {}

    /// `Lock` is the class that the caller knows: a final one needs no virtual call.
    template <typename Lock>
    void enter(Lock& lock, bool ownsLock) NOT_CHECKED {
        lock.acquire();
        adopt(lock, ownsLock);
    }

    /// Makes a lock that was just acquired this guard's.
    template <typename Lock>
    void adopt(Lock& lock, bool ownsLock) NOT_CHECKED {
        static_cast<GenericLock&>(lock).mark();
        setHeld(ownsLock);
    }

    template <typename Lock>
    void leave(Lock& lock) NOT_CHECKED {
        static_cast<GenericLock&>(lock).unmark();
        locked_ = false;
        lock.release();
    }
};

}  // namespace tavr::templates::patterns

namespace tavr::templates::platform {

/// A lock on an error-checking mutex: a second `acquire` of the holding thread fails instead of blocking for
/// ever, and the guard then sees from the lock's own mark that it is nested.
class IS_LOCK CriticalSection final : public patterns::GenericLock {
 public:
    CriticalSection();
    /// Works on a mutex of the caller's, which must outlive the lock.
    explicit CriticalSection(pthread_mutex_t* externalMutex) : external_(true), mutex_(externalMutex) {}
    ~CriticalSection() override;

    void acquire() override TAKES() NOT_CHECKED { pthread_mutex_lock(mutex_); }
    /// The same, unless this thread holds the lock; whether it was taken. Needs an error-checking mutex.
    bool acquireUnlessHeld() NOT_CHECKED { return pthread_mutex_lock(mutex_) == 0; }
    /// One attempt; the timeout is not waited for.
    bool try_acquire(unsigned int /*timeout*/) override TRIES_TO_TAKE(true) NOT_CHECKED {
        return pthread_mutex_trylock(mutex_) == 0;
    }
    void release() override GIVES_BACK() NOT_CHECKED { pthread_mutex_unlock(mutex_); }
    /// Said in a body that runs only while the lock is held, where the checker cannot see it: in a lambda, or
    /// behind a virtual call.
    void saidToBeHeld() const SAYS_IT_IS_HELD {}

 private:
    bool external_ = false;  ///< the mutex in use is the caller's and is not destroyed here
    pthread_mutex_t ownMutex_;
    pthread_mutex_t* mutex_;  ///< the mutex in use
};

/// A `GenericLockGuard` that knows its lock's class. It stands on the path of every typed get and set.
class IS_SCOPED_LOCK CriticalSectionGuard final : public patterns::GenericLockGuard {
 public:
    explicit CriticalSectionGuard(CriticalSection* lock, bool ownsLock = false) TAKES(lock) NOT_CHECKED
        : GenericLockGuard(lock, NotEntered{}) {
        enter(*lock, ownsLock);
    }
    ~CriticalSectionGuard() override GIVES_BACK() NOT_CHECKED {
        if (locked_) {
            leave(static_cast<CriticalSection&>(*lock_));
        }
    }
};

/// Holds a `CriticalSection` for a scope of one function, with the checks of a `CriticalSectionGuard`. It has
/// no class of its own at run time and owns no lock, so that nothing of it is kept but the lock.
class IS_SCOPED_LOCK CriticalSectionScope final {
 public:
    explicit CriticalSectionScope(CriticalSection* lock) TAKES(lock) NOT_CHECKED : lock_(*lock) {
        lock_.acquire();
        static_cast<patterns::GenericLock&>(lock_).mark();
    }
    CriticalSectionScope(const CriticalSectionScope&) = delete;
    CriticalSectionScope& operator=(const CriticalSectionScope&) = delete;
    ~CriticalSectionScope() GIVES_BACK() NOT_CHECKED {
        static_cast<patterns::GenericLock&>(lock_).unmark();
        lock_.release();
    }

 private:
    CriticalSection& lock_;
};

/// Holds a `CriticalSection` for a scope, except where the thread holds it already: for work that is asked
/// for on its own as well as in the middle of a call that holds the lock.
class IS_SCOPED_LOCK OuterCriticalSectionGuard final : public patterns::GenericLockGuard {
 public:
    explicit OuterCriticalSectionGuard(CriticalSection* lock) TAKES(lock) NOT_CHECKED
        : GenericLockGuard(lock, NotEntered{}) {
        if (lock->acquireUnlessHeld()) adopt(*lock, false);
    }
    ~OuterCriticalSectionGuard() override GIVES_BACK() NOT_CHECKED {}
};

/// A mutex that its thread may take again.
class IS_LOCK RecursiveMutex {
 public:
    RecursiveMutex();
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;
    virtual ~RecursiveMutex();

    /// Number of guards that hold the mutex now. Settled only for the thread that holds it.
    int depth() const { return depth_; }

 private:
    friend class RecursiveMutexGuard;
    pthread_mutex_t mutex_;
    pthread_mutexattr_t attribute_;  ///< lives as long as the mutex
    int depth_ = 0;
};

/// Holds a `RecursiveMutex` for a scope; guards of one thread may nest.
class IS_SCOPED_LOCK RecursiveMutexGuard final : public patterns::Guard<RecursiveMutex*> {
 public:
    explicit RecursiveMutexGuard(RecursiveMutex* lock, bool ownsLock = false) TAKES(lock) NOT_CHECKED
        : Guard(lock) {
        pthread_mutex_lock(&lock_->mutex_);
        ++lock_->depth_;
        setHeld(ownsLock);
    }
    ~RecursiveMutexGuard() override GIVES_BACK() NOT_CHECKED {
        if (locked_) {
            // Before the unlock: the counter belongs to whoever holds the mutex.
            --lock_->depth_;
            pthread_mutex_unlock(&lock_->mutex_);
        }
        deleteOwnedLock();
    }
};

/// A lock for many readers or one writer, within this process.
class IS_LOCK ReadWriteLock {
 public:
    ReadWriteLock();
    ReadWriteLock(const ReadWriteLock&) = delete;
    ReadWriteLock& operator=(const ReadWriteLock&) = delete;
    virtual ~ReadWriteLock();

 private:
    friend class ReadWriteLockGuard;
    pthread_rwlock_t lock_;
};

/// How a `ReadWriteLockGuard` takes its lock.
enum class Access { Read, Write };

/// Holds a `ReadWriteLock` for a scope.
class IS_SCOPED_LOCK ReadWriteLockGuard final : public patterns::Guard<ReadWriteLock*> {
 public:
    ReadWriteLockGuard(ReadWriteLock* lock, Access access, bool ownsLock = false) TAKES(lock);
    ~ReadWriteLockGuard() override GIVES_BACK();
};

/// Holds a spin variable for a scope: an `int` that is 0 while free and 1 while taken. With an owner variable
/// a nested guard of the same thread passes through and leaves the spin variable alone.
class SpinLockVariableGuard final {
 public:
    /// Waits, yielding the processor, until `spin` is taken. `owner` (0: nobody) may be null; nesting then
    /// waits for ever.
    explicit SpinLockVariableGuard(int* spin, pthread_t* owner = nullptr);
    SpinLockVariableGuard(const SpinLockVariableGuard&) = delete;
    SpinLockVariableGuard& operator=(const SpinLockVariableGuard&) = delete;
    virtual ~SpinLockVariableGuard();

 private:
    int* spin_;
    pthread_t* owner_;
    bool locked_ = false;  ///< this guard, not an outer one of the same thread, took the variable
};

}  // namespace tavr::templates::platform
