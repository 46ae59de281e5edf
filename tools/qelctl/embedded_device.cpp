// The device build of qelctl talks to the service the device runs. The example service inside
// the qelctl process needs the host stand-in (its service manager and its control of a service's
// death), so on a device --embedded and demo are usage errors.

#include "qelctl_internal.h"

namespace qelctl {

namespace {

[[noreturn]] void hostOnly(const std::string& what) {
    throw UsageError(what +
                     " runs the example service inside qelctl, which only a host build of "
                     "qelctl can do");
}

}  // namespace

void Session::startEmbedded() {
    hostOnly("--embedded");
}

void Session::killEmbedded() {}

int runDemo(Session&) {
    hostOnly("demo");
}

}  // namespace qelctl
