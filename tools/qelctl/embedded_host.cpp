// The example service inside the qelctl process, for host runs (--embedded, demo): registered
// with the host stand-in's service manager and killed through its test control. The device build
// has embedded_device.cpp instead.

#include <android/binder_manager.h>
#include <hostbinder/hostbinder.h>

#include "drel-service/DrelService.h"
#include "qelctl_internal.h"

namespace qelctl {

using ::aidl::vendor::quarn::hardware::drel::DrelService;

void Session::startEmbedded() {
    // Handles from 1, so that a script can name the ones it was given ("release 2"): the
    // embedded service serves this one process, which gives back what it kept before a restart.
    DrelService::Options options;
    options.firstHandle = 1;
    auto service = ::ndk::SharedRefBase::make<DrelService>(options);
    service->startExpiryThread();
    const binder_exception_t status =
            AServiceManager_addService(service->asBinder().get(), kInstance);
    if (status != EX_NONE) {
        throw std::runtime_error("could not register the example service (exception " +
                                 std::to_string(status) + ")");
    }
    embedded_ = service;
}

void Session::killEmbedded() {
    if (!embedded_) return;
    hostbinder::killService(kInstance);
    // Both API connections hear of the death before the next command runs.
    hostbinder::waitIdle();
    embedded_.reset();
}

}  // namespace qelctl
