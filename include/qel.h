// Flat API of libquarn-qel-client.
//
// Plain, unmangled functions that reach the device's resource-control service
// ("vendor.quarn.hardware.drel.IDrel/default") over a connection of their own, separate from the
// class API's. Every call is synchronous: it connects lazily (without ever waiting for a service
// that is not running), makes one binder call and returns a handle or the service's answer, or
// -1 on any failure. A service restart is survived by reconnecting on the next call. The death
// notice that drops the connection arrives on the process's binder thread pool, which the caller
// must start (ABinderProcess_startThreadPool); the library starts no threads.
//
// Thread safety: every function may be called from any thread at any time; calls proceed in
// parallel and are serialised only against connecting and resetting the connection.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "qel_export.h"

namespace QelClient {

// One resource of a request: a 32-bit opcode (0 = none) and its requested value as text.
struct Resource {
    int32_t resId = 0;
    std::optional<std::string> resValue;
};

}  // namespace QelClient

extern "C" {

// Connects and asks the service to initialise: 0 on success, -1 when the service cannot be
// reached, -2 when it answers init with a failure.
QEL_EXPORT int qelInit();

// Applies event cmdId (a position in gActionList; -2 and -3 select plain resource requests) for
// pkg and identity during duration, with extra resources. Returns the service's handle or -1.
QEL_EXPORT int QelEventAcquire(int cmdId, const std::string& pkg, const std::string& identity,
                               int duration, const std::vector<QelClient::Resource>& resources);

// QelEventAcquire(-2, "", identity, duration, resources); the second argument is not read.
QEL_EXPORT int QelResAcquire(const std::vector<QelClient::Resource>& resources, long unused,
                             const std::string& identity, int duration);

// QelEventAcquire(-3, pkg, identity, duration, resources); note identity comes before pkg.
QEL_EXPORT int QelPlatformResAcquire(const std::vector<QelClient::Resource>& resources, long unused,
                                     const std::string& identity, const std::string& pkg,
                                     int duration);

// Gives a handle from one of the acquire functions back; reports nothing.
QEL_EXPORT void QelRelease(int handle);

// Sends notification id with param, one record per value. Returns the service's answer or -1.
QEL_EXPORT int QelNotify(int id, int param, const std::vector<int>& values);

// Overwrites the value of each resource the service reports on; returns how many got a value,
// or -1 on failure.
QEL_EXPORT int QelMutiResStateRequest(std::vector<QelClient::Resource>& resources);

// Sets value to the service's value for opcode; leaves it unchanged when there is none.
QEL_EXPORT void QelResStateRequest(int opcode, std::string& value);

// Fills history with "start:...;end"; 0 on success, -1 on failure (history untouched).
QEL_EXPORT int QelGetHistory(std::string& history);

// The power-mode status number for mode, or -1 on failure. A reply record without a value
// throws std::bad_optional_access to the caller.
QEL_EXPORT int QelGetPMStatus(int mode);

// Switches rule ruleId to status with the resources it concerns. The service's answer or -1.
QEL_EXPORT int qelRuleCtl(int ruleId, int status,
                          const std::vector<QelClient::Resource>& resources);

// Hands the service one item of related system information. The service's answer or -1.
QEL_EXPORT int setRelatedSysInfo(int type, long info);

}  // extern "C"
