// qelctl's process: a binder thread pool for the service's reports, Ctrl-C for listen, and the
// command line handed to runQelctl.

#include <android/binder_process.h>

#include <csignal>
#include <iostream>
#include <string>
#include <vector>

#include "qelctl.h"

namespace {

void onInterrupt(int) {
    qelctl::requestStop();
    // A second Ctrl-C ends the process as usual.
    std::signal(SIGINT, SIG_DFL);
}

}  // namespace

int main(int argc, char** argv) {
    // Listening reports arrive as incoming binder calls.
    ABinderProcess_setThreadPoolMaxThreadCount(2);
    ABinderProcess_startThreadPool();
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);

    const std::vector<std::string> args(argv + 1, argv + argc);
    return qelctl::runQelctl(args, std::cout, std::cerr, std::cin);
}
