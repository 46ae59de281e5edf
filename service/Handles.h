// Handles of the example service: one numbering for resource requests, listening registrations
// and thermal listening registrations.
//
// A handle is positive and 32-bit, and is not given twice while its owner lives. A client may
// still hold a handle of an instance that has died (a request or registration that did not
// survive a restart), so a later instance must not give that number to someone else: each
// instance starts its numbering at the boot-time clock (CLOCK_BOOTTIME, which goes on across
// restarts and suspend), one number per millisecond since boot. A restarted service therefore
// starts past every handle an earlier instance of the same boot gave out, as long as that one
// gave out fewer than one per millisecond of its life (a thousand a second, all its life long).
// The numbers come round after INT32_MAX milliseconds (about 24.8 days) of boot time; a handle of
// an instance that died that long before may then be given again.
//
// Not thread-safe: DrelService calls it under its own mutex.
#pragma once

#include <cstdint>
#include <functional>

namespace aidl::vendor::quarn::hardware::drel::example {

class HandleCounter {
public:
    // Counts from `first`; 0 or less: from the boot-time clock's value now.
    explicit HandleCounter(int32_t first);

    // The next handle that `inUse` does not claim; after INT32_MAX the count starts again at 1.
    int32_t next(const std::function<bool(int32_t)>& inUse);

private:
    int32_t next_;
};

}  // namespace aidl::vendor::quarn::hardware::drel::example
