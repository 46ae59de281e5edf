// Host stand-in of <android/binder_stability.h>. Stability levels are not modelled on the host:
// marking a binder is accepted and changes nothing.
#pragma once

#include <android/binder_ibinder.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { FLAG_PRIVATE_VENDOR = 0x10000000 };
#ifdef __ANDROID_VENDOR__
enum { FLAG_PRIVATE_LOCAL = FLAG_PRIVATE_VENDOR };
#else
enum { FLAG_PRIVATE_LOCAL = 0 };
#endif

void AIBinder_markVintfStability(AIBinder* binder);
void AIBinder_markVendorStability(AIBinder* binder);
void AIBinder_markSystemStability(AIBinder* binder) __attribute__((weak));

#ifdef __cplusplus
}
#endif
