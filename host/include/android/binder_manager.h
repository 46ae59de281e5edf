// Host stand-in of <android/binder_manager.h> (LLNDK, API 31).
//
// One service manager per process. addService registers a service in a process of its own and
// marks the name declared; the look-ups return a +1 reference (a proxy for the caller), or null.
// checkService never blocks; waitForService blocks until the name is registered (forever, also
// when it is not declared); getService waits up to about five seconds.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#ifdef __cplusplus
extern "C" {
#endif

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance)
        __attribute__((warn_unused_result));
AIBinder* AServiceManager_checkService(const char* instance) __attribute__((warn_unused_result));
AIBinder* AServiceManager_getService(const char* instance) __attribute__((warn_unused_result));
AIBinder* AServiceManager_waitForService(const char* instance) __attribute__((warn_unused_result));
bool AServiceManager_isDeclared(const char* instance);

#ifdef __cplusplus
}
#endif
