// The binder callback object the class API hands to the service, and the listening
// registrations that keep such objects alive.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>

#include <memory>
#include <string>
#include <vector>

#include "IClientCallback.h"

// Implements IDrelCallback for one caller callback: converts each report of the service into the
// caller's form (by id or by path) and calls the caller: on a binder thread with no library lock
// held, or, for a report the service sends from inside a call of this process, on the thread
// that made the call (whose holds the library's operations then reuse). A one-shot client
// (is_register false) leaves request_callbacks on its first report.
class DrelCallbackClient : public ::aidl::vendor::quarn::hardware::drel::BnDrelCallback {
public:
    using DrelRequestData = ::aidl::vendor::quarn::hardware::drel::DrelRequestData;

    DrelCallbackClient(const std::shared_ptr<IClientCallback>& cb, bool is_register, bool by_path);
    DrelCallbackClient(const std::shared_ptr<IClientCallbackByPath>& cb, bool is_register,
                       bool by_path);
    ~DrelCallbackClient() override;

    ::ndk::ScopedAStatus onCallback(const std::vector<DrelRequestData>& data) override;

    std::shared_ptr<IClientCallback> clientCallback;
    std::shared_ptr<IClientCallbackByPath> clientCallbackByPath;
    bool is_register;
    bool by_path;
};

// One listening registration: what it listens to, the service's handle, and the client that
// the service reports to.
struct DrelCallbackGroup {
    DrelCallbackGroup(std::shared_ptr<DrelCallbackClient> client, std::vector<int> ids, int handle)
        : ids(std::move(ids)), handle(handle), client(std::move(client)) {}
    DrelCallbackGroup(std::shared_ptr<DrelCallbackClient> client, std::vector<std::string> paths,
                      int handle)
        : paths(std::move(paths)), handle(handle), client(std::move(client)) {}
    DrelCallbackGroup(DrelCallbackGroup&&) = default;
    DrelCallbackGroup& operator=(DrelCallbackGroup&&) = default;

    std::vector<int> ids;
    std::vector<std::string> paths;
    int handle;
    std::shared_ptr<DrelCallbackClient> client;
};
