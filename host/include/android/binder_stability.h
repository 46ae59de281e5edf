// Host stand-in of <android/binder_stability.h>. Stability levels are not modelled on the host:
// marking a binder is accepted and changes nothing. As on a device, vendor code
// (__ANDROID_VENDOR__) sees the vendor marking and other code the weak system one.
#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { FLAG_PRIVATE_VENDOR = 0x10000000 };

#ifdef __ANDROID_VENDOR__
enum { FLAG_PRIVATE_LOCAL = FLAG_PRIVATE_VENDOR };
void AIBinder_markVendorStability(AIBinder* binder);
static inline void AIBinder_markCompilationUnitStability(AIBinder* binder) {
    AIBinder_markVendorStability(binder);
}
#else
enum { FLAG_PRIVATE_LOCAL = 0 };
void AIBinder_markSystemStability(AIBinder* binder) __attribute__((weak));
#endif

void AIBinder_markVintfStability(AIBinder* binder);

#ifdef __cplusplus
}
#endif
