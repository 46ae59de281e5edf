// Captures Android log lines through __android_log_set_logger, for exact checks of tag,
// priority and text.
#pragma once

#include <android/log.h>

#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace qel_test {

struct LogLine {
    int priority;
    std::optional<std::string> tag;  // absent when logged without a tag
    std::string message;

    bool operator==(const LogLine& other) const {
        return priority == other.priority && tag == other.tag && message == other.message;
    }
};

std::ostream& operator<<(std::ostream& os, const LogLine& line);

// While alive, every log line is recorded (and still filtered by the minimum priority).
class LogCapture {
public:
    LogCapture();
    ~LogCapture();

    std::vector<LogLine> lines() const;
    // Only the lines of one tag, in order.
    std::vector<LogLine> linesWithTag(const std::string& tag) const;
    bool contains(const LogLine& line) const;
    int count(const std::string& message) const;  // lines with this text, any tag
    void clear();
};

}  // namespace qel_test
