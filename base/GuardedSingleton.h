#pragma once

/// A process-wide object that is made at first use, under a spin variable, and never destroyed.

#include "base/Locks.h"

namespace tavr::templates::patterns {

/// The operations of a singleton, in their fixed order; `postConstruct` of `GuardedSingleton` follows them.
class GuardedSingletonBase {
 public:
    GuardedSingletonBase() = default;
    GuardedSingletonBase(const GuardedSingletonBase&) = delete;
    GuardedSingletonBase& operator=(const GuardedSingletonBase&) = delete;

    virtual void preDestruct() {}
    /// Stores the address of the singleton's instance pointer.
    virtual void getStaticMemberPointers(void*** instancePointer) = 0;
    virtual ~GuardedSingletonBase() = default;
};

/// The singleton of class `T`, which derives from this and has a default constructor.
template <typename T>
class GuardedSingleton : public GuardedSingletonBase {
 public:
    void getStaticMemberPointers(void*** instancePointer) override {
        *instancePointer = reinterpret_cast<void**>(&instance);
    }
    /// Second half of the construction, run when `instance` is already set: what it calls may come back here.
    virtual void postConstruct() {}

 protected:
    /// The singleton, made and completed if this is the first call in the process. Other threads wait until
    /// it is complete; the thread that completes it passes through. No lock is held on return.
    static T& reach() {
        const platform::SpinLockVariableGuard guard(&lock, &lockThreadId);
        if (instance == nullptr) {
            instance = new T;
            static_cast<GuardedSingleton*>(instance)->postConstruct();
        }
        return *instance;
    }

 private:
    static inline T* instance = nullptr;
    static inline int lock = 0;
    static inline pthread_t lockThreadId = 0;
};

}  // namespace tavr::templates::patterns
