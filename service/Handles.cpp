#include "Handles.h"

#include <time.h>

#include <climits>

namespace aidl::vendor::quarn::hardware::drel::example {

namespace {

// 1 + (milliseconds since boot mod INT32_MAX): from 1 to INT32_MAX.
int32_t firstOfNow() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    const uint64_t millis = static_cast<uint64_t>(now.tv_sec) * 1000u +
                            static_cast<uint64_t>(now.tv_nsec) / 1000000u;
    return static_cast<int32_t>(1 + millis % INT32_MAX);
}

}  // namespace

HandleCounter::HandleCounter(int32_t first) : next_(first > 0 ? first : firstOfNow()) {}

int32_t HandleCounter::next(const std::function<bool(int32_t)>& inUse) {
    for (;;) {
        const int32_t handle = next_;
        next_ = next_ == INT32_MAX ? 1 : next_ + 1;
        if (!inUse(handle)) return handle;
    }
}

}  // namespace aidl::vendor::quarn::hardware::drel::example
