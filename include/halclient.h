// Class API of libquarn-qel-client: drelHalclient.
//
// Static operations that map one to one onto the operations of the resource-control service
// ("vendor.quarn.hardware.drel.IDrel/default"): resource and scene/system-activity control,
// listening registrations, thermal notification, state queries, path-addressed variants,
// diagnostics dumps and properties. The class API keeps one process-wide connection of its own;
// the first call connects (waiting for a declared service to start), a service death or a failed
// call drops the connection and the next call reconnects without any action of the caller.
//
// Results: a handle or the service's answer on success, -1 on every failure. Nothing is thrown.
//
// Thread safety: every operation may be called from any thread, including from inside a caller
// callback. Calls proceed in parallel; connecting and resetting the connection wait for calls in
// flight.
//
// Binder threads: the library starts none. A report the service sends from a thread of its own,
// and the death notice that drops the connection, arrive on the caller process's binder thread
// pool, which the process must start (ABinderProcess_startThreadPool, or a thread in
// ABinderProcess_joinThreadPool); a process without one hears no such reports, and the service's
// reporting thread waits on it.
//
// Listening across service restarts. A registration (listening or thermal listening) lives in the
// service and does not survive a restart: the new service does not know it and reports nothing to
// it, and the library reconnects without registering again or telling the caller. To go on
// listening, unregister the old handle (the new service answers -1, and drelResListeningUnRegister
// drops the registration from the library all the same) and register again. Three more cases a
// caller sees:
// - an unregistration that answers -1 because the service was down may leave the registration in
//   place, and the same id or path list is then refused ("Same callback interface registered
//   already") until an unregistration of it succeeds: call it again once the service is back;
// - a registration whose reply was lost (-1, yet the service made it) keeps being reported to its
//   callback, with no handle to end it;
// - a report already on its way may still arrive just after an unregistration has returned.
//
// Calls from inside a callback. A report the service sends from a thread of its own reaches the
// callback on a binder thread, with no library lock held: any operation may be called from it. A
// report the service sends while it handles a synchronous call of this process (the current value
// from inside a listening registration, the answer of a one-shot request from inside the request,
// any report from inside any call) runs, as binder runs a nested transaction, on the very thread
// that made that call, while the library holds that call's locks. From inside such a report too,
// any operation of either API may be called, and none waits for this thread:
// - an operation of the API whose call is in progress uses that call's connection; should it
//   fail, its failure line is logged at once and the connection is reset once the outer call
//   has returned;
// - a listening registration made from inside a report of a registration in progress counts that
//   registration as made: the same id or path list is refused ("Same callback interface
//   registered already");
// - an operation of the other API (the flat API inside a class-API call, or the reverse) goes
//   ahead when that API is connected and its connection is not being connected, reset or
//   dropped at that moment; otherwise it returns its failure value at once and logs, at error
//   priority under that API's tag, "<operation>() failed: called from a report inside a binder
//   call of the other API while this connection is busy or not connected".
// A service that waits, inside one of this process's calls, for a report it sends from another
// thread gets that report on a binder thread: there, a listening registration waits until a
// registration in progress has returned.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/DrelRequestParcel.h>

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "IClientCallback.h"
#include "qel.h"
#include "qel_export.h"

// True when ids and values come in pairs: every non-zero id has a non-empty value and every zero
// id has none. An empty list is valid.
QEL_EXPORT bool checkResourceList(std::list<QelClient::Resource>& list);

class QEL_EXPORT drelHalclient {
public:
    using DrelRequestParcel = ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
    using ResourceList = std::list<QelClient::Resource>;

    // Connects and asks the service to initialise.
    static void drel_init();

    // Resource control. Short forms supply -1 for what they lack; `flag` is sent as (flag >= 1).
    static int drelResCtlRequest(int timeout, ResourceList& res, int p5);
    static int drelResCtlRequest(int timeout, ResourceList& res, int flag, int p5);
    static int drelResCtlRequest(int timeout, ResourceList& res, int p3, int flag, int p5);
    static int drelResCtlRequest(int reqId, int timeout, ResourceList& res, int p5);
    static int drelResCtlRequest(int reqId, int timeout, ResourceList& res, int flag, int p5);
    static int drelResCtlRequest(int reqId, int timeout, ResourceList& res, int p3, int flag,
                                 int p5);
    // As above; cb is called once, when the service reports on the request.
    static int drelResCtlRequest(int reqId, int timeout, ResourceList& res, int p3, int flag,
                                 int p5, const std::shared_ptr<IClientCallback>& cb);

    // Scene / system-activity control by a single id.
    static int drelSACtlRequest(int timeout, int saId, int p5);
    static int drelSACtlRequest(int reqId, int timeout, int saId, int p3, int flag, int p5);
    static int drelSACtlRequest(int reqId, int timeout, int saId, int p3, int flag, int p5,
                                const std::shared_ptr<IClientCallback>& cb);

    // Give a handle back; the service's answer or -1.
    static int drelResCtlRelease(int handle);
    static int drelSACtlRelease(int handle);

    // Registers callback for changes of resources; the registration handle or -1 (also when the
    // same id list is registered already). It does not survive a service restart (see above).
    static int drelResListeningRegister(ResourceList& resources, int param,
                                        const std::shared_ptr<IClientCallback>& callback);
    // Drops every registration with this handle; the service's answer or -1. A report on its way
    // may still arrive after it returns; after -1 for a service that was down, call it again.
    static int drelResListeningUnRegister(int handle);
    // Appends the service's current states to `states`; the size of `states` or -1.
    static int drelResStateRequest(ResourceList& resources, int param, ResourceList& states);
    // Tells the service thermal ids (resId) and levels (resValue); the service's answer or -1.
    static int drelThermalNotify(ResourceList& levels, int param);
    // Registers callback for thermal levels of subsysIds; the registration handle or -1.
    static int drelThermalListeningRegister(const std::vector<int>& subsysIds,
                                            const std::shared_ptr<IClientCallback>& callback);
    static int drelThermalListeningUnregister(int handle);

    // Sets the parcel's tags to exactly {"zdbdebug"}.
    static void drel_add_zdbdebug_for_request_parcel(DrelRequestParcel& parcel);

    // Path-addressed forms: paths[i] is requested with values[i].
    static int drel_resctl_request_by_path(int reqId, long timeout,
                                           const std::vector<std::string>& paths,
                                           const std::vector<std::string>& values, int param3,
                                           int flag, int param5);
    static int drel_resctl_request_with_callback_by_path(
            int reqId, long timeout, const std::vector<std::string>& paths,
            const std::vector<std::string>& values, int param3, int flag, int param5,
            const std::shared_ptr<IClientCallbackByPath>& callback);
    static int drel_res_state_request_by_path(const std::vector<std::string>& paths,
                                              const std::vector<std::string>& values, int param,
                                              std::vector<std::string>& states);
    static int drel_res_state_request_map_by_path(
            const std::map<std::string, std::string>& pathValues, int param,
            std::map<std::string, std::string>& stateMap);
    static int drel_res_listening_register_by_path(
            const std::vector<std::string>& paths, int param,
            const std::shared_ptr<IClientCallbackByPath>& callback);
    static int drel_res_listening_register_map_by_path(
            const std::map<std::string, std::string>& pathValues, int param,
            const std::shared_ptr<IClientCallbackByPath>& callback);

    // Diagnostics: the service dumps a table to its own log. 0 on success, -1 otherwise.
    static int drelDumpToDoQueue();
    static int drelDumpRunMap();
    static int drelDumpActiveResMap();
    static int drelDumpResRequest();
    static int drelDumpResInfo();
    static int drelDumpSAInfo();
    static int drelDumpPidFdList();
    static int drelDumpPidfdMonitorMap();
    static int drelDumpResRecordList();
    static int drelHistoryRequestRecordOn();
    static int drelHistoryRequestRecordOff();

    // The property's value in a new char[256] the caller frees with delete[]. A value of 256
    // bytes or more ends the process.
    static char* drelPropertyGet(const std::string& name);
    // The service's answer or -1.
    static int drelPropertySet(const std::string& name, const std::string& value);
};
