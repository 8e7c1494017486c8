#pragma once

#include <thread>
#include <vector>

/// Runs `action(0)` to `action(count - 1)`, each on a thread of its own, and waits for all of them.
template <typename Action>
void onThreads(int count, Action action) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int t = 0; t < count; ++t) {
        threads.emplace_back([&action, t] { action(t); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
