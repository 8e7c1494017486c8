#include "base/Locks.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "tests/Threads.h"

namespace {

using namespace tavr::templates::patterns;
using namespace tavr::templates::platform;

/// Runs `action` on another thread and waits for it.
void elsewhere(const std::function<void()>& action) {
    std::thread(action).join();
}

/// A lock without a mutex: it counts, and a test can take its mark away.
class CountingLock : public GenericLock {
 public:
    explicit CountingLock(int* deletions = nullptr) : deletions_(deletions) {}
    ~CountingLock() override {
        if (deletions_ != nullptr) {
            ++*deletions_;
        }
    }
    void acquire() override { ++held; }
    bool try_acquire(unsigned int /*timeout*/) override { return false; }
    void release() override { --held; }
    void loseMark() { locked_ = false; }

    int held = 0;

 private:
    int* deletions_;
};

template <typename MakeGuard>
std::string refusal(MakeGuard makeGuard) {
    try {
        makeGuard();
    } catch (const std::logic_error& error) {
        return error.what();
    }
    return "";
}

TEST(CriticalSection, KeepsOtherThreadsOutWhileAGuardHoldsIt) {
    CriticalSection lock;
    const auto freeForOthers = [&] {
        bool taken = false;
        elsewhere([&] {
            taken = lock.try_acquire(60'000);
            if (taken) {
                lock.release();
            }
        });
        return taken;
    };
    {
        const CriticalSectionGuard guard(&lock);
        EXPECT_FALSE(freeForOthers());
    }
    EXPECT_TRUE(freeForOthers());
    EXPECT_THROW(
        {
            const GenericLockGuard guard(&lock);
            throw std::runtime_error("leaves the scope");
        },
        std::runtime_error);
    EXPECT_TRUE(freeForOthers());
}

TEST(CriticalSection, LeavesAnExternalMutexToItsOwner) {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    {
        CriticalSection lock(&mutex);
        const CriticalSectionGuard guard(&lock);
        EXPECT_NE(pthread_mutex_trylock(&mutex), 0);
    }
    EXPECT_EQ(pthread_mutex_trylock(&mutex), 0);
    pthread_mutex_unlock(&mutex);
    pthread_mutex_destroy(&mutex);
}

TEST(GenericLockGuard, RefusesALockThatIsMarkedHeld) {
    const std::string expected = "GenericLock object got lock but is already marked as locked";
    CountingLock counting;
    CriticalSection section;
    {
        const GenericLockGuard outer(&counting);
        EXPECT_EQ(refusal([&] { const GenericLockGuard inner(&counting); }), expected);
        EXPECT_EQ(counting.held, 1) << "the refused guard gives back what it took, and only that";
    }
    EXPECT_EQ(counting.held, 0);
#ifndef NESTING_IS_REPORTED  // by the thread sanitizer
    {
        const CriticalSectionGuard outer(&section);
        EXPECT_EQ(refusal([&] { const CriticalSectionGuard inner(&section); }), expected);
        EXPECT_EQ(refusal([&] { const GenericLockGuard inner(&section); }), expected);
    }
    const CriticalSectionGuard again(&section);
#endif
}

TEST(GenericLockGuard, DeletesALockThatItOwns) {
    int deletions = 0;
    { const GenericLockGuard guard(new CountingLock(&deletions), true); }
    EXPECT_EQ(deletions, 1);
    { const CriticalSectionGuard guard(new CriticalSection, true); }
    { const RecursiveMutexGuard guard(new RecursiveMutex, true); }
    { const ReadWriteLockGuard guard(new ReadWriteLock, Access::Read, true); }
}

TEST(GenericLockDeathTest, EndsTheProcessOnMisuseFoundInADestructor) {
    EXPECT_DEATH(
        {
            CountingLock lock;
            const GenericLockGuard guard(&lock);
            lock.loseMark();
        },
        "GenericLock::leave\\(\\) called with lock not held");
    EXPECT_DEATH(
        {
            auto lock = std::make_unique<CriticalSection>();
            const CriticalSectionGuard guard(lock.get());
            lock.reset();
        },
        "GenericLock object destroyed with lock still held");
}

TEST(RecursiveMutex, CountsNestedGuards) {
    RecursiveMutex mutex;
    {
        const RecursiveMutexGuard outer(&mutex);
        { const RecursiveMutexGuard inner(&mutex); }
        EXPECT_EQ(mutex.depth(), 1);
    }
    EXPECT_EQ(mutex.depth(), 0);
    elsewhere([&] { const RecursiveMutexGuard guard(&mutex); });
}

TEST(Locks, LetOneThreadPassAtATime) {
    CriticalSection section;
    ReadWriteLock readWrite;
    int spin = 0;
    pthread_t owner = 0;
    const auto counted = [](auto makeGuard) {
        int count = 0;
        onThreads(4, [&](int) {
            for (int i = 0; i < 500; ++i) {
                const auto guard = makeGuard();
                ++count;
            }
        });
        return count;
    };
    EXPECT_EQ(2000, counted([&] { return CriticalSectionGuard(&section); }));
    EXPECT_EQ(2000, counted([&] { return ReadWriteLockGuard(&readWrite, Access::Write); }));
    for (pthread_t* variable : {&owner, static_cast<pthread_t*>(nullptr)})
        EXPECT_EQ(2000, counted([&] { return SpinLockVariableGuard(&spin, variable); }));
    const ReadWriteLockGuard reader(&readWrite, Access::Read);
    elsewhere([&] { const ReadWriteLockGuard other(&readWrite, Access::Read); });
}

TEST(SpinLockVariable, LetsItsOwnThreadThrough) {
    int spin = 0;
    pthread_t owner = 0;
    {
        const SpinLockVariableGuard outer(&spin, &owner);
        { const SpinLockVariableGuard inner(&spin, &owner); }
        EXPECT_EQ(spin, 1) << "the nested guard must not free the variable";
        EXPECT_EQ(owner, pthread_self());
    }
    EXPECT_EQ(spin, 0);
    EXPECT_EQ(owner, 0u);
}

}  // namespace
