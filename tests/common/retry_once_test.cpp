// The once-only region that a failure leaves open.
#include "common/retry_once.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using fl::detail::retry_once;

TEST(retry_once, stays_open_after_a_throw_and_closes_on_success)
{
    retry_once<int> region;
    int made = 7;
    int calls = 0;
    EXPECT_THROW(region.get([&]() -> int* {
        ++calls;
        throw std::runtime_error("first attempt fails");
    }),
                 std::runtime_error);
    EXPECT_EQ(region.peek(), nullptr);
    EXPECT_EQ(&region.get([&] {
        ++calls;
        return &made;
    }),
              &made);
    // Closed now: a later factory is never called, even one that would fail.
    EXPECT_EQ(&region.get([&]() -> int* {
        ++calls;
        throw std::runtime_error("must not run");
    }),
              &made);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(region.peek(), &made);
}

// Threads racing into a region whose first attempts fail: every thread retries until it gets the
// object, exactly one attempt succeeds, and all threads see the same object.
TEST(retry_once, makes_one_object_for_racing_threads_despite_failures)
{
    constexpr int thread_count = 8;
    constexpr int failures = 3;
    retry_once<int> region;
    int made = 42;
    std::atomic<int> attempts{0};
    std::atomic<int> successes{0};
    std::atomic<bool> go{false};
    std::vector<const int*> seen(thread_count, nullptr);
    std::vector<std::thread> threads;
    for (int t = 0; t < thread_count; ++t) {
        threads.emplace_back([&, t] {
            while (!go.load())
                std::this_thread::yield();
            for (;;) {
                try {
                    seen[static_cast<std::size_t>(t)] = &region.get([&] {
                        if (attempts.fetch_add(1) < failures)
                            throw std::runtime_error("not yet");
                        successes.fetch_add(1);
                        return &made;
                    });
                    return;
                } catch (const std::runtime_error&) {
                }
            }
        });
    }
    go.store(true);
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(attempts.load(), failures + 1);
    EXPECT_EQ(successes.load(), 1);
    for (const int* pointer : seen)
        EXPECT_EQ(pointer, &made);
}

}  // namespace
