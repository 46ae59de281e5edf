// The host binder status.
#pragma once

#include <android/binder_status.h>

#include <cstdint>
#include <string>

struct AStatus {
    binder_exception_t exception = EX_NONE;
    int32_t errorCode = 0;
    std::string message;
};
