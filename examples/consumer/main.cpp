// A caller's host program: it registers a small service of its own with the host stand-in and
// drives it through the installed library, as it would drive the real service on a device.

#include <aidl/vendor/quarn/hardware/drel/BnDrel.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <hostbinder/hostbinder.h>

#include <cstdio>
#include <list>

#include "halclient.h"

namespace {

using ::aidl::vendor::quarn::hardware::drel::BnDrel;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestParcel;
using ::aidl::vendor::quarn::hardware::drel::IDrelCallback;
using ::ndk::ScopedAStatus;

// Answers every release with the handle it was given, and nothing else.
class EchoService : public BnDrel {
public:
    ScopedAStatus init() override {
        initialised = true;
        return ScopedAStatus::ok();
    }
    ScopedAStatus release(int32_t handle, int32_t* result) override {
        *result = handle;
        return ScopedAStatus::ok();
    }
    ScopedAStatus request(const DrelRequestParcel&, int32_t*) override { return unsupported(); }
    ScopedAStatus stateRequest(const DrelRequestParcel&, std::vector<DrelRequestData>*) override {
        return unsupported();
    }
    ScopedAStatus listeningRegister(const DrelRequestParcel&, const std::shared_ptr<IDrelCallback>&,
                                    int32_t*) override {
        return unsupported();
    }
    ScopedAStatus listeningUnregister(int32_t, int32_t*) override { return unsupported(); }
    ScopedAStatus propertyGet(const std::string&, std::string*) override { return unsupported(); }
    ScopedAStatus propertySet(const std::string&, const std::string&, int32_t*) override {
        return unsupported();
    }
    ScopedAStatus thermalListeningRegister(const std::vector<int32_t>&,
                                           const std::shared_ptr<IDrelCallback>&,
                                           int32_t*) override {
        return unsupported();
    }
    ScopedAStatus thermalListeningUnregister(int32_t, int32_t*) override { return unsupported(); }
    ScopedAStatus reserved11() override { return unsupported(); }
    ScopedAStatus setRelatedSysInfo(int32_t, int64_t, int32_t*) override { return unsupported(); }
    ScopedAStatus ruleCtl(int32_t, int32_t, const std::vector<DrelRequestData>&,
                          int32_t*) override {
        return unsupported();
    }

    bool initialised = false;

private:
    static ScopedAStatus unsupported() {
        return ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
    }
};

}  // namespace

int main() {
    // The service's reports reach this process on its binder threads.
    ABinderProcess_startThreadPool();
    auto service = ndk::SharedRefBase::make<EchoService>();
    if (AServiceManager_addService(service->asBinder().get(),
                                   "vendor.quarn.hardware.drel.IDrel/default") != EX_NONE) {
        std::fprintf(stderr, "could not register the service\n");
        return 1;
    }
    drelHalclient::drel_init();
    int released = drelHalclient::drelResCtlRelease(42);
    std::printf("init reached the service: %s; release(42) answered %d\n",
                service->initialised ? "yes" : "no", released);
    hostbinder::reset();
    return service->initialised && released == 42 ? 0 : 1;
}
