// Host stand-in of <android/binder_process.h>: the binder thread pool of the (one) client
// process. Calls into the process that are not nested in its own synchronous calls, and death
// notices, run on the pool's threads; until it has one they wait.
#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Starts the pool (one thread, more as work needs them); once only.
void ABinderProcess_startThreadPool(void);
// The most threads the pool makes besides its first (15 unless set); does not start it.
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
// The calling thread joins the pool for good, as a service's main thread does.
void ABinderProcess_joinThreadPool(void);

#ifdef __cplusplus
}
#endif
