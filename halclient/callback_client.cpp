// The callback object: dispatch of the service's reports to the caller's callback, and the
// bookkeeping of one-shot clients in request_callbacks.

#include <algorithm>
#include <atomic>
#include <mutex>

#include "halclient/halclient_internal.h"
#include "halclient/wire.h"

#define CB_LOGI(...) __android_log_print(ANDROID_LOG_INFO, kDrelCallbackTag, __VA_ARGS__)
#define CB_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, kDrelCallbackTag, __VA_ARGS__)

namespace {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;

// How many PrintLogHook objects exist. The library makes one only to store it in the stub's
// hook, and nothing copies the hook, so the count is 1 while the hook holds printLog and drops to
// 0 as soon as anyone assigns another function (or null) to it, which destroys ours.
std::atomic<int> gLiveHooks{0};

// printLog as a function object that can be recognised without RTTI (std::function::target
// needs it, and the device build has none): its lifetime is what gLiveHooks counts.
struct PrintLogHook {
    PrintLogHook() { ++gLiveHooks; }
    PrintLogHook(const PrintLogHook&) { ++gLiveHooks; }
    PrintLogHook& operator=(const PrintLogHook&) = default;
    ~PrintLogHook() { --gLiveHooks; }
    void operator()(const BnDrelCallback::TransactionLog& entry) const {
        qel_internal::printLog(entry);
    }
};

// Puts printLog into the stub's transaction-log hook, replacing whatever is there. The stub reads
// the hook on binder threads during every incoming transaction, so it is written only when it
// does not hold printLog already: once installed, building more clients does not race with
// callbacks in flight. The mutex orders concurrent constructors.
void installPrintLog() {
    static std::mutex installMutex;
    std::lock_guard<std::mutex> lock(installMutex);
    if (gLiveHooks.load() == 0) BnDrelCallback::logFunc = PrintLogHook();
}

}  // namespace

DrelCallbackClient::DrelCallbackClient(const std::shared_ptr<IClientCallback>& cb, bool is_register,
                                       bool by_path)
    : clientCallback(cb), is_register(is_register), by_path(by_path) {
    installPrintLog();
}

DrelCallbackClient::DrelCallbackClient(const std::shared_ptr<IClientCallbackByPath>& cb,
                                       bool is_register, bool by_path)
    : clientCallbackByPath(cb), is_register(is_register), by_path(by_path) {
    installPrintLog();
}

DrelCallbackClient::~DrelCallbackClient() {
    CB_LOGI("ndk backend ~DrelCallbackClient");
    clientCallback.reset();
    clientCallbackByPath.reset();
}

::ndk::ScopedAStatus DrelCallbackClient::onCallback(const std::vector<DrelRequestData>& data) {
    if (!data.empty() && by_path) {
        std::vector<std::string> paths;
        std::vector<std::string> values;
        paths.reserve(data.size());
        values.reserve(data.size());
        for (const DrelRequestData& record : data) {
            paths.push_back(record.resPath.value_or(""));
            values.push_back(record.resValue.value_or(""));
            if (record.resPath && record.resValue) {
                CB_LOGI("DrelCallbackClient::onCallback res_Id %s res_Value %s is_register %d",
                        record.resPath->c_str(), record.resValue->c_str(), is_register);
            }
        }
        if (clientCallbackByPath != nullptr) {
            CB_LOGI("DrelCallback::onCallback call IClientCallback onCallback is_register %d",
                    is_register);
            clientCallbackByPath->onCallback(paths, values);
        }
    } else if (!data.empty()) {
        std::list<QelClient::Resource> resources;
        for (const DrelRequestData& record : data) {
            resources.push_back(qel_internal::fromWire(record));
            if (record.resValue) {
                CB_LOGI("DrelCallbackClient::onCallback res_Id %#x res_Value %s is_register %d",
                        static_cast<unsigned>(record.resId), record.resValue->c_str(), is_register);
            } else {
                CB_LOGI("DrelCallbackClient::onCallback res_Id %#x is_register %d",
                        static_cast<unsigned>(record.resId), is_register);
            }
        }
        if (clientCallback != nullptr) {
            CB_LOGI("DrelCallback::onCallback call IClientCallback onCallback is_register %d",
                    is_register);
            clientCallback->onCallback(resources);
        }
    }
    if (is_register) return ::ndk::ScopedAStatus::ok();

    // A one-shot client has been answered: it leaves the registry, after the caller's callback
    // has returned. request_callback_mutex is never held across a binder call or caller code, so
    // this cannot wait for this thread, even when the report came from inside the client's own
    // request (parked before that call was made, the client is found here).
    std::lock_guard<std::mutex> lock(request_callback_mutex);
    size_t before = request_callbacks.size();
    auto kept = std::remove_if(request_callbacks.begin(), request_callbacks.end(),
                               [this](const std::shared_ptr<DrelCallbackClient>& entry) {
                                   if (entry.get() != this) return false;
                                   CB_LOGI("callback is found in request_callbacks");
                                   return true;
                               });
    request_callbacks.erase(kept, request_callbacks.end());
    size_t after = request_callbacks.size();
    if (before == after) CB_LOGE("callback not found in request_callbacks");
    CB_LOGI("DrelCallback::onCallback request callback called , remove from request_callbacks , request_callbacks size before %d after %d",
            static_cast<int>(before), static_cast<int>(after));
    return ::ndk::ScopedAStatus::ok();
}
