// Host stand-in of <android/binder_shell.h>. Declared weak, as the NDK declares it, so that code
// may test for it; the host defines it and keeps the handler, which nothing on the host calls.
#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef binder_status_t (*AIBinder_handleShellCommand)(AIBinder* binder, int in, int out, int err,
                                                       const char** argv, uint32_t argc);
void AIBinder_Class_setHandleShellCommand(AIBinder_Class* clazz,
                                          AIBinder_handleShellCommand handleShellCommand)
        __attribute__((weak));

#ifdef __cplusplus
}
#endif
