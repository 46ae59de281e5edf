// Host stand-in of <cutils/trace.h>: the enabled-tags mask and the inline section calls.
//
// Shaped like the platform header: callers use atrace_begin(tag, name) / atrace_end(tag) (or the
// ATRACE_* macros), which look at the enabled tags and only then call the section bodies. The
// bodies are declared inside those inline functions and nowhere else, so code that calls
// atrace_begin_body / atrace_end_body directly fails to compile here just as it would on the
// device. The enabled-tags mask is set by tests (hostbinder::setTraceTags); a begun section
// writes "B|pid|name" and an ended one "E|pid", the text the device writes to trace_marker, and
// the host keeps them for hostbinder::traceMarkers().
//
// Left out: async sections, counters, the atrace_* setup calls and the tag list beyond the
// always-on tag.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ATRACE_TAG_NEVER 0
#define ATRACE_TAG_ALWAYS (1 << 0)

#ifndef ATRACE_TAG
#define ATRACE_TAG ATRACE_TAG_NEVER
#endif

// The mask of tags being traced right now.
uint64_t atrace_get_enabled_tags(void);

static inline uint64_t atrace_is_tag_enabled(uint64_t tag) {
    return atrace_get_enabled_tags() & tag;
}

// Begins a section named `name` when `tag` is being traced.
static inline void atrace_begin(uint64_t tag, const char* name) {
    if (atrace_is_tag_enabled(tag)) {
        void atrace_begin_body(const char*);
        atrace_begin_body(name);
    }
}

// Ends the innermost section when `tag` is being traced.
static inline void atrace_end(uint64_t tag) {
    if (atrace_is_tag_enabled(tag)) {
        void atrace_end_body(void);
        atrace_end_body();
    }
}

#define ATRACE_ENABLED() atrace_is_tag_enabled(ATRACE_TAG)
#define ATRACE_BEGIN(name) atrace_begin(ATRACE_TAG, name)
#define ATRACE_END() atrace_end(ATRACE_TAG)

#ifdef __cplusplus
}
#endif
