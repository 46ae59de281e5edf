// Host stand-in of <android/binder_ibinder_platform.h> (platform only, not in the app NDK): the
// transaction flag that asks the driver to clear the transaction's buffers after use. The host
// accepts it on a transaction and has no buffers to clear.
#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { FLAG_CLEAR_BUF = 0x20 };

#ifdef __cplusplus
}
#endif
