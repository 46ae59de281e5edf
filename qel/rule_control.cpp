// Rule control and related system information: the flat API's calls of IDrel::ruleCtl and
// IDrel::setRelatedSysInfo.

#include <vector>

#include "halclient/wire.h"
#include "qel.h"
#include "qel/qel_internal.h"

using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;
using qel_internal::GuardedCall;
using qel_internal::kQelConnection;

int qelRuleCtl(int ruleId, int status, const std::vector<QelClient::Resource>& resources) {
    QEL_LOGI("qelRuleCtl, ruleId:%d, status:%d", ruleId, status);

    int32_t answer = -1;
    GuardedCall call(kQelConnection, "qelRuleCtl");
    if (!call) return -1;
    // Not validated; an empty list is sent as such.
    std::vector<DrelRequestData> records;
    qel_internal::appendToWire(records, resources);
    // A failed status wins over whatever the answer says.
    if (!call.finish(call->ruleCtl(ruleId, status, records, &answer))) return -1;
    return answer;
}

int setRelatedSysInfo(int type, long info) {
    int32_t answer = -1;
    GuardedCall call(kQelConnection, "setRelatedSysInfo");
    if (!call) return -1;
    if (!call.finish(call->setRelatedSysInfo(type, info, &answer))) return -1;
    return answer;
}
