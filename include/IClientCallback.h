// Caller-side callback interfaces of the class API.
//
// A caller passes one of these, held by std::shared_ptr, with a request or a listening
// registration. The library keeps it alive for as long as the registration (or the one-shot
// request) needs it and calls onCallback each time the service reports: on a binder thread of the
// caller process's thread pool, which the process must start (ABinderProcess_startThreadPool;
// without one such reports never arrive), or,
// for a report the service sends while it handles a call of this process (for example from
// inside the registration or the request itself), on the thread that made that call, before the
// call returns. Implementations must therefore be thread-safe, must not wait for another thread
// of theirs that is calling the library, and may call back into the library: halclient.h says
// what such a call does from inside a call in progress.
//
// A listening registration's callback hears nothing more once the service restarts: the new
// service does not know the registration, and the caller registers again (halclient.h says how).
// A report already on its way may still arrive just after the unregistration has returned, and a
// registration whose reply was lost (the caller got -1) is reported all the same, with no handle
// to end it: onCallback must cope with reports it no longer expects.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "qel.h"

// Reports resources by id: the list is the caller's own copy.
class IClientCallback {
public:
    virtual void onCallback(std::list<QelClient::Resource> resources) = 0;
    virtual ~IClientCallback() = default;
};

// Reports resources by path: paths[i] holds values[i]; both vectors are the caller's copies.
class IClientCallbackByPath {
public:
    virtual void onCallback(std::vector<std::string> paths, std::vector<std::string> values) = 0;
    virtual ~IClientCallbackByPath() = default;
};
