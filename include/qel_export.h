// Symbol visibility for libquarn-qel-client.
//
// The library is built with hidden visibility; only declarations marked QEL_EXPORT are part of
// its dynamic interface. Callers include this header indirectly through the API headers.
#pragma once

#define QEL_EXPORT __attribute__((visibility("default")))
