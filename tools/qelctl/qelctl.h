// qelctl: a thin command-line tool over libquarn-qel-client.
//
// The tool's logic lives in this library so that tests run it in-process with captured output;
// main.cpp only hands it the command line and the process's streams.
//
// Exit status: 0 success, 1 the service failed or is not available, 2 usage error. Arguments are
// checked before the service is looked up.
//
// Thread safety: runQelctl may run on any thread; requestStop may be called from any thread or
// from a signal handler.
#pragma once

#include <iostream>
#include <string>
#include <vector>

namespace qelctl {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

// Runs one qelctl command line (args without the program name). Results go to out, messages and
// usage errors to err; `script -` reads its commands from in.
int runQelctl(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
              std::istream& in = std::cin);

// Ends the current wait of `listen`, `thermal listen` or `sleep` early (Ctrl-C). Async-signal-safe.
void requestStop();

}  // namespace qelctl
