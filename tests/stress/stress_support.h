// Helpers shared by the stress tests: parameters from the environment, a small seeded random
// source, a deadlock watchdog, and a heap-in-use probe that works with and without sanitizers.
#pragma once

#include <malloc.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QEL_STRESS_SANITIZER_HEAP 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QEL_STRESS_SANITIZER_HEAP 1
#endif
#ifdef QEL_STRESS_SANITIZER_HEAP
#include <sanitizer/allocator_interface.h>
#endif

namespace qel_stress {

// The integer in environment variable `name`, or `fallback` when it is unset or not a number.
inline long envLong(const char* name, long fallback) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') return fallback;
    char* end = nullptr;
    long value = std::strtol(text, &end, 10);
    return *end == '\0' ? value : fallback;
}

// xorshift64*: one per thread, seeded from the run's seed and the thread's number.
class Rng {
public:
    explicit Rng(uint64_t seed) : state_(seed * 0x9e3779b97f4a7c15ULL + 0x2545f4914f6cdd1dULL) {
        if (state_ == 0) state_ = 1;
    }
    uint64_t next() {
        state_ ^= state_ >> 12;
        state_ ^= state_ << 25;
        state_ ^= state_ >> 27;
        return state_ * 0x2545f4914f6cdd1dULL;
    }
    // Uniform in [0, bound).
    int below(int bound) { return static_cast<int>(next() % static_cast<uint64_t>(bound)); }
    bool percent(int p) { return below(100) < p; }

private:
    uint64_t state_;
};

// Ends the process when it is not disarmed within `bound`: a deadlocked test then fails (the
// process dies with a message) instead of hanging CI.
class Watchdog {
public:
    Watchdog(std::chrono::seconds bound, std::function<void()> onExpiry)
        : thread_([this, bound, onExpiry] {
              std::unique_lock<std::mutex> lock(mutex_);
              if (!done_.wait_for(lock, bound, [this] { return disarmed_; })) {
                  std::fprintf(stderr, "stress: no progress within %lld s, a deadlock\n",
                               static_cast<long long>(bound.count()));
                  if (onExpiry) onExpiry();
                  std::abort();
              }
          }) {}
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            disarmed_ = true;
        }
        done_.notify_all();
        thread_.join();
    }

private:
    std::mutex mutex_;
    std::condition_variable done_;
    bool disarmed_ = false;
    std::thread thread_;
};

// Bytes of heap the process has in use right now (the sanitizer's allocator when there is one).
inline size_t heapInUse() {
#ifdef QEL_STRESS_SANITIZER_HEAP
    return __sanitizer_get_current_allocated_bytes();
#else
    struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

}  // namespace qel_stress
