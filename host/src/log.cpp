// Host liblog: priority filter before formatting, then the installed logger (or stderr in brief
// form when ANDROID_LOG_TAGS asks for it).

#include <android/log.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::atomic<__android_logger_function> gLogger{nullptr};
std::atomic<int32_t> gMinimumPriority{ANDROID_LOG_DEFAULT};

int priorityFromChar(char c) {
    switch (c) {
        case 'v':
        case 'V':
            return ANDROID_LOG_VERBOSE;
        case 'd':
        case 'D':
            return ANDROID_LOG_DEBUG;
        case 'i':
        case 'I':
            return ANDROID_LOG_INFO;
        case 'w':
        case 'W':
            return ANDROID_LOG_WARN;
        case 'e':
        case 'E':
            return ANDROID_LOG_ERROR;
        case 'f':
        case 'F':
            return ANDROID_LOG_FATAL;
        default:
            return ANDROID_LOG_SILENT;
    }
}

char priorityChar(int priority) {
    static const char kChars[] = "??VDIWEFS";
    return priority >= 0 && priority <= ANDROID_LOG_SILENT ? kChars[priority] : '?';
}

// The level ANDROID_LOG_TAGS sets for tag: a "tag:level" entry, else "*:level", else silent.
int stderrLevelFor(const char* tag) {
    const char* spec = std::getenv("ANDROID_LOG_TAGS");
    if (spec == nullptr) return ANDROID_LOG_SILENT;
    int wildcard = ANDROID_LOG_SILENT;
    std::string specText(spec);
    size_t start = 0;
    while (start < specText.size()) {
        size_t end = specText.find(' ', start);
        if (end == std::string::npos) end = specText.size();
        std::string item = specText.substr(start, end - start);
        start = end + 1;
        size_t colon = item.rfind(':');
        if (colon == std::string::npos || colon + 1 >= item.size()) continue;
        std::string name = item.substr(0, colon);
        int level = priorityFromChar(item[colon + 1]);
        if (name == "*") {
            wildcard = level;
        } else if (tag != nullptr && name == tag) {
            return level;
        }
    }
    return wildcard;
}

}  // namespace

extern "C" {

void __android_log_stderr_logger(const struct __android_log_message* message) {
    if (message->priority < stderrLevelFor(message->tag)) return;
    std::fprintf(stderr, "%c/%s: %s\n", priorityChar(message->priority),
                 message->tag == nullptr ? "" : message->tag, message->message);
}

void __android_log_logd_logger(const struct __android_log_message* message) {
    __android_log_stderr_logger(message);
}

void __android_log_set_logger(__android_logger_function logger) {
    gLogger = logger;
}

int32_t __android_log_set_minimum_priority(int32_t priority) {
    return gMinimumPriority.exchange(priority);
}

int32_t __android_log_get_minimum_priority(void) {
    return gMinimumPriority.load();
}

int __android_log_is_loggable(int prio, const char* /*tag*/, int default_prio) {
    int32_t minimum = gMinimumPriority.load();
    if (minimum == ANDROID_LOG_DEFAULT) minimum = default_prio;
    return prio >= minimum ? 1 : 0;
}

void __android_log_write_log_message(struct __android_log_message* message) {
    __android_logger_function logger = gLogger.load();
    if (logger == nullptr) logger = __android_log_stderr_logger;
    logger(message);
}

int __android_log_write(int prio, const char* tag, const char* text) {
    if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
    __android_log_message message{sizeof(__android_log_message), LOG_ID_MAIN, prio, tag, nullptr, 0,
                                  text == nullptr ? "" : text};
    __android_log_write_log_message(&message);
    return 1;
}

int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap) {
    // Filtered lines are never formatted, as on the device.
    if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
    char buffer[4068];
    vsnprintf(buffer, sizeof(buffer), fmt, ap);
    return __android_log_write(prio, tag, buffer);
}

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
    va_list ap;
    va_start(ap, fmt);
    int result = __android_log_vprint(prio, tag, fmt, ap);
    va_end(ap);
    return result;
}

}  // extern "C"
