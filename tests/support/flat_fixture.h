// The fixture of the flat API's tests: the usual mock service and log capture, plus a look at
// the flat API's own connection and its log lines.
#pragma once

#include <unistd.h>

#include <string>
#include <vector>

#include "support/service_fixture.h"

namespace qel_test {

inline constexpr const char* kQelTag = "[QEL_CLIENT]";

// One line of the flat API's log.
inline LogLine qelLine(int priority, std::string message) {
    return {priority, std::string(kQelTag), std::move(message)};
}

// The trace markers a zero-length section named `name` writes.
inline std::vector<std::string> sectionMarkers(const std::string& name) {
    std::string pid = std::to_string(getpid());
    return {"B|" + pid + "|" + name, "E|" + pid};
}

class FlatFixture : public ServiceFixture {
protected:
    std::vector<LogLine> qelLines() const { return log.linesWithTag(kQelTag); }
};

}  // namespace qel_test
