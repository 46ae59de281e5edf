// Resource and scene/system-activity control: requests with and without one-shot callbacks, and
// the releases.

#include "halclient.h"
#include "halclient/halclient_internal.h"

using qel_internal::GuardedCall;
using qel_internal::kDrelConnection;

namespace {

// One guarded IDrel::release call under the operation's name.
int releaseHandle(const char* name, int handle) {
    int32_t result = -1;
    GuardedCall call(kDrelConnection, name);
    if (!call) return -1;
    call.finish(call->release(handle, &result));
    return result;
}

}  // namespace

int drelHalclient::drelResCtlRelease(int handle) {
    DREL_LOGI("drel client drelResCtlRelease");
    return releaseHandle("drelResCtlRelease", handle);
}

int drelHalclient::drelSACtlRelease(int handle) {
    DREL_LOGI("drel client drelSACtlRelease");
    return releaseHandle("drelSACtlRelease", handle);
}
