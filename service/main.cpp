// The example IDrel service process: registers DrelService as
// vendor.quarn.hardware.drel.IDrel/default and serves binder calls until it is killed.

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "drel-service/DrelService.h"

using ::aidl::vendor::quarn::hardware::drel::DrelService;

int main() {
    // Several threads: a client's callback may call back into the service while another binder
    // thread waits for that callback to return.
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();

    std::shared_ptr<DrelService> service = ::ndk::SharedRefBase::make<DrelService>();
    service->startExpiryThread();

    const std::string instance = std::string(DrelService::descriptor) + "/default";
    binder_exception_t status =
            AServiceManager_addService(service->asBinder().get(), instance.c_str());
    if (status != EX_NONE) {
        __android_log_print(ANDROID_LOG_FATAL, DrelService::kLogTag,
                            "could not register %s: exception %d", instance.c_str(),
                            static_cast<int>(status));
        return EXIT_FAILURE;
    }

    ABinderProcess_joinThreadPool();
    return EXIT_FAILURE;  // joinThreadPool does not return
}
