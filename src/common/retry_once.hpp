// A once-only region that a failure leaves open: the first call that returns normally publishes
// its object, and a call that throws leaves the region as it found it for the next caller.
#pragma once

#include <atomic>
#include <mutex>

namespace fl::detail {

template <class T>
class retry_once {
public:
    constexpr retry_once() noexcept = default;
    retry_once(const retry_once&) = delete;
    retry_once& operator=(const retry_once&) = delete;

    /// The published object, made by `make()` (returning a `T*` the region keeps for the life of
    /// the process) on the first call that does not throw. Later calls are one atomic load.
    template <class Make>
    T& get(Make&& make)
    {
        if (T* value = value_.load(std::memory_order_acquire))
            return *value;
        std::lock_guard<std::mutex> lock(mutex_);
        T* value = value_.load(std::memory_order_relaxed);
        if (value == nullptr) {
            value = make();
            value_.store(value, std::memory_order_release);
        }
        return *value;
    }

    /// The object if one has been published, else null; never makes one.
    T* peek() const noexcept { return value_.load(std::memory_order_acquire); }

private:
    std::atomic<T*> value_{nullptr};
    std::mutex mutex_;
};

/// The same region for a step that publishes nothing: `f` runs until one run returns normally.
class retry_once_flag {
public:
    constexpr retry_once_flag() noexcept = default;
    retry_once_flag(const retry_once_flag&) = delete;
    retry_once_flag& operator=(const retry_once_flag&) = delete;

    template <class F>
    void call(F&& f)
    {
        if (done_.load(std::memory_order_acquire))
            return;
        std::lock_guard<std::mutex> lock(mutex_);
        if (done_.load(std::memory_order_relaxed))
            return;
        f();
        done_.store(true, std::memory_order_release);
    }

    bool done() const noexcept { return done_.load(std::memory_order_acquire); }

private:
    std::atomic<bool> done_{false};
    std::mutex mutex_;
};

}  // namespace fl::detail
