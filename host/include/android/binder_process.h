// Host stand-in of <android/binder_process.h>. Binder threads are made on demand on a host, so
// these only record the request.
#pragma once

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

void ABinderProcess_startThreadPool(void);
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
// Blocks the calling thread for good, as a service's main thread does.
void ABinderProcess_joinThreadPool(void);

#ifdef __cplusplus
}
#endif
