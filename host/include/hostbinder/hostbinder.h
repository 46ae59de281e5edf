// Test control of the host stand-in of the Android platform.
//
// The NDK has no calls for these; tests use them, and nothing else beyond the NDK's own names,
// to drive service processes, wait for binder threads and read trace markers. Every call is
// thread-safe.
//
// Threads, as binder has them: a call into a service runs on the calling thread (standing in for
// the service's binder thread). A call the service makes into a client's binder object while it
// handles that client's synchronous call runs on the very thread that made the call (a nested
// transaction), so it sees whatever that thread holds; any other call into the client (from a
// thread the service started itself) and every death notice (unless deliverDeathsInFailingCalls
// says otherwise) runs on a thread of the client process's binder thread pool while the service
// waits. The test process is the one client process: as on a device, it must start its pool
// (ABinderProcess_startThreadPool, or a thread in ABinderProcess_joinThreadPool) to hear them;
// until then they wait, and the first that waits logs one warning (tag "hostbinder"). reset()
// leaves the pool running.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace hostbinder {

// The name is declared (as in the VINTF manifest) but nothing runs under it yet.
void declareService(const char* instance);

// The service's process dies: it leaves the service manager, its proxies turn dead (calls fail
// with STATUS_DEAD_OBJECT) and every linked death recipient is called once, with its cookie, on a
// binder thread: those of one proxy one after another, in the order they were linked, on one
// thread. The name stays declared.
void killService(const char* instance);

// The named service dies at the next AIBinder_linkToDeath made on its binder, which then fails
// with STATUS_DEAD_OBJECT: a service that crashes between a client's look-up and its link.
void dieAtNextDeathLink(const char* instance);

// While enabled, death notices are delivered as an RPC binder transport (binder over sockets)
// delivers them, not on the binder thread pool: a process's notices of a dead process wait until
// one of its transactions into that process fails with STATUS_DEAD_OBJECT (a call in flight when
// it dies, or a later one through a dead proxy), and then run on that calling thread, inside that
// call, before it returns; one failing call runs all that wait. waitIdle() does not wait for
// them. Disabling it (and reset()) hands what still waits to the pool. Off by default.
void deliverDeathsInFailingCalls(bool enabled);

// Death notices go to the pool again (deliverDeathsInFailingCalls(false)), every running service
// dies (deaths delivered), then no services, no declarations, no pending death-link faults,
// counters zero, trace tags zero and trace markers cleared. For use between tests.
void reset();

// How many AServiceManager_* look-ups (isDeclared, checkService, getService, waitForService) were
// made since reset().
int serviceManagerCalls();

// Inside the calls this thread makes into a service from now on, AIBinder_getCallingPid()
// answers `pid`, as if they came from another client process; 0 (or less) gives this process's
// own pid again. Only this thread's own calls out of the test process are affected: a call the
// service makes back into the process, or a report on a binder thread, is from the service as
// before. reset() leaves it as it is.
void setCallingPid(pid_t pid);

// Returns when every queued death notification and callback has been delivered. In a process that
// has no binder thread pool yet it returns once nothing runs: what waits for the pool stays
// queued, and is delivered once the pool starts.
void waitIdle();

// Trace control: the enabled-tags mask, the markers written so far ("B|pid|name", "E|pid").
void setTraceTags(uint64_t mask);
std::vector<std::string> traceMarkers();
void clearTrace();

}  // namespace hostbinder
