// Test control of the host stand-in of the Android platform.
//
// The NDK has no calls for these; tests use them, and nothing else beyond the NDK's own names,
// to drive service processes, wait for binder threads and read trace markers. Every call is
// thread-safe.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hostbinder {

// The name is declared (as in the VINTF manifest) but nothing runs under it yet.
void declareService(const char* instance);

// The service's process dies: it leaves the service manager, its proxies turn dead (calls fail
// with STATUS_DEAD_OBJECT) and every linked death recipient is called once, with its cookie, on a
// binder thread. The name stays declared.
void killService(const char* instance);

// Every running service dies (deaths delivered), then no services, no declarations, counters
// zero, trace tags zero and trace markers cleared. For use between tests.
void reset();

// How many AServiceManager_* look-ups (isDeclared, checkService, getService, waitForService) were
// made since reset().
int serviceManagerCalls();

// Returns when every queued death notification and callback has been delivered.
void waitIdle();

// Trace control: the enabled-tags mask, the markers written so far ("B|pid|name", "E|pid").
void setTraceTags(uint64_t mask);
std::vector<std::string> traceMarkers();
void clearTrace();

}  // namespace hostbinder
