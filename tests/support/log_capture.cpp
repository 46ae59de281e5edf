#include "support/log_capture.h"

#include <algorithm>

namespace qel_test {
namespace {

std::mutex gMutex;
std::vector<LogLine>* gLines = nullptr;  // while a LogCapture is alive

void captureLine(const __android_log_message* message) {
    std::lock_guard<std::mutex> l(gMutex);
    if (gLines == nullptr) return;
    gLines->push_back({message->priority, std::nullopt, message->message});
    if (message->tag != nullptr) gLines->back().tag = message->tag;
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const LogLine& line) {
    return os << "{" << line.priority << ", " << (line.tag ? *line.tag : "<no tag>") << ", \""
              << line.message << "\"}";
}

LogCapture::LogCapture() {
    {
        std::lock_guard<std::mutex> l(gMutex);
        gLines = new std::vector<LogLine>;
    }
    __android_log_set_logger(captureLine);
}

LogCapture::~LogCapture() {
    __android_log_set_logger(nullptr);
    std::lock_guard<std::mutex> l(gMutex);
    delete gLines;
    gLines = nullptr;
}

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> l(gMutex);
    return *gLines;
}

std::vector<LogLine> LogCapture::linesWithTag(const std::string& tag) const {
    std::vector<LogLine> out = lines();
    out.erase(std::remove_if(out.begin(), out.end(), [&](auto& line) { return line.tag != tag; }),
              out.end());
    return out;
}

bool LogCapture::contains(const LogLine& line) const {
    auto all = lines();
    return std::find(all.begin(), all.end(), line) != all.end();
}

int LogCapture::count(const std::string& message) const {
    auto all = lines();
    return static_cast<int>(std::count_if(all.begin(), all.end(),
                                          [&](auto& line) { return line.message == message; }));
}

void LogCapture::clear() {
    std::lock_guard<std::mutex> l(gMutex);
    gLines->clear();
}

}  // namespace qel_test
