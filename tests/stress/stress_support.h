// Helpers shared by the stress tests: parameters from the environment and a deadlock watchdog.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

namespace qel_stress {

// The integer in environment variable `name`, or `fallback` when it is unset or not a number.
inline long envLong(const char* name, long fallback) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') return fallback;
    char* end = nullptr;
    long value = std::strtol(text, &end, 10);
    return *end == '\0' ? value : fallback;
}

// Ends the process when it is not destroyed within `bound`: a deadlocked test then fails (the
// process dies with a message) instead of hanging CI.
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds bound)
        : thread_([done = disarmed_.get_future(), bound] {
              if (done.wait_for(bound) == std::future_status::timeout) {
                  std::fprintf(stderr, "stress: no progress within %lld s, a deadlock\n",
                               static_cast<long long>(bound.count()));
                  std::abort();
              }
          }) {}
    ~Watchdog() {
        disarmed_.set_value();
        thread_.join();
    }

private:
    std::promise<void> disarmed_;  // before thread_: the thread takes its future
    std::thread thread_;
};

}  // namespace qel_stress
