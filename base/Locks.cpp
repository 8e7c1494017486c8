#include "base/Locks.h"

#include <sched.h>

#include <atomic>
#include <stdexcept>

namespace tavr::templates::patterns {

void reportLockMisuse(const char* text) {
    throw std::logic_error(text);
}

}  // namespace tavr::templates::patterns

namespace tavr::templates::platform {

CriticalSection::CriticalSection() : mutex_(&ownMutex_) {
    pthread_mutexattr_t attribute;
    pthread_mutexattr_init(&attribute);
    pthread_mutexattr_settype(&attribute, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&ownMutex_, &attribute);
    pthread_mutexattr_destroy(&attribute);
}

CriticalSection::~CriticalSection() {
    if (!external_) {
        pthread_mutex_destroy(&ownMutex_);
    }
}

RecursiveMutex::RecursiveMutex() {
    pthread_mutexattr_init(&attribute_);
    pthread_mutexattr_settype(&attribute_, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&mutex_, &attribute_);
}

RecursiveMutex::~RecursiveMutex() {
    pthread_mutex_destroy(&mutex_);
    pthread_mutexattr_destroy(&attribute_);
}

ReadWriteLock::ReadWriteLock() {
    pthread_rwlockattr_t attribute;
    pthread_rwlockattr_init(&attribute);
    pthread_rwlockattr_setpshared(&attribute, PTHREAD_PROCESS_PRIVATE);
    pthread_rwlock_init(&lock_, &attribute);
    pthread_rwlockattr_destroy(&attribute);
}

ReadWriteLock::~ReadWriteLock() {
    pthread_rwlock_destroy(&lock_);
}

ReadWriteLockGuard::ReadWriteLockGuard(ReadWriteLock* lock, Access access, bool ownsLock) : Guard(lock) {
    if (access == Access::Write) {
        pthread_rwlock_wrlock(&lock->lock_);
    } else {
        pthread_rwlock_rdlock(&lock->lock_);
    }
    setHeld(ownsLock);
}

ReadWriteLockGuard::~ReadWriteLockGuard() {
    if (locked_) {
        pthread_rwlock_unlock(&lock_->lock_);
    }
    deleteOwnedLock();
}

SpinLockVariableGuard::SpinLockVariableGuard(int* spin, pthread_t* owner) : spin_(spin), owner_(owner) {
    // Other threads may store their ids meanwhile; none of them can store this thread's.
    if (owner_ != nullptr && std::atomic_ref(*owner_).load(std::memory_order_relaxed) == pthread_self()) {
        return;
    }
    while (std::atomic_ref(*spin_).exchange(1, std::memory_order_acquire) == 1) {
        sched_yield();
    }
    if (owner_ != nullptr) {
        std::atomic_ref(*owner_).store(pthread_self(), std::memory_order_relaxed);
    }
    locked_ = true;
}

SpinLockVariableGuard::~SpinLockVariableGuard() {
    if (!locked_) {
        return;
    }
    if (owner_ != nullptr) {
        std::atomic_ref(*owner_).store(0, std::memory_order_relaxed);
    }
    std::atomic_ref(*spin_).store(0, std::memory_order_release);
}

}  // namespace tavr::templates::platform
