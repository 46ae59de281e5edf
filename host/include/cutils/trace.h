// Host stand-in of <cutils/trace.h>: the body functions behind the ATRACE macros.
//
// The enabled-tags mask is set by tests (hostbinder::setTraceTags); a begun section writes
// "B|pid|name" and an ended one "E|pid", the text the device writes to trace_marker, and the
// host keeps them for hostbinder::traceMarkers().
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ATRACE_TAG_NEVER 0
#define ATRACE_TAG_ALWAYS (1 << 0)

uint64_t atrace_get_enabled_tags(void);
void atrace_begin_body(const char* name);
void atrace_end_body(void);

#ifdef __cplusplus
}
#endif
