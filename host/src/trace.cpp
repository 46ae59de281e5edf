// Host libcutils trace: the enabled-tags mask and the markers a begun and ended section write.

#include <cutils/trace.h>
#include <hostbinder/hostbinder.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace {

std::atomic<uint64_t> gEnabledTags{0};

struct Markers {
    std::mutex mutex;
    std::vector<std::string> lines;
};

Markers& markers() {
    static Markers* m = new Markers;  // outlives static destruction
    return *m;
}

void write(std::string line) {
    Markers& m = markers();
    std::lock_guard<std::mutex> l(m.mutex);
    m.lines.push_back(std::move(line));
}

}  // namespace

// The section bodies have no declaration at file scope in <cutils/trace.h>: only its inline
// atrace_begin / atrace_end name them.
extern "C" {

void atrace_begin_body(const char* name);
void atrace_end_body(void);

uint64_t atrace_get_enabled_tags(void) {
    return gEnabledTags.load();
}

void atrace_begin_body(const char* name) {
    write("B|" + std::to_string(getpid()) + "|" + (name == nullptr ? "" : name));
}

void atrace_end_body(void) {
    write("E|" + std::to_string(getpid()));
}

}  // extern "C"

namespace hostbinder {

void setTraceTags(uint64_t mask) {
    gEnabledTags = mask;
}

std::vector<std::string> traceMarkers() {
    Markers& m = markers();
    std::lock_guard<std::mutex> l(m.mutex);
    return m.lines;
}

void clearTrace() {
    Markers& m = markers();
    std::lock_guard<std::mutex> l(m.mutex);
    m.lines.clear();
}

}  // namespace hostbinder
