// Resource records on the wire, and their validation.

#include "halclient/wire.h"

#include <android/log.h>

#include "halclient.h"

namespace qel_internal {

void toWire(const QelClient::Resource& resource, DrelRequestData& data) {
    data.resId = resource.resId;
    if (resource.resValue) {
        data.resValue = *resource.resValue;
    } else {
        data.resValue.emplace();
    }
}

QelClient::Resource fromWire(const DrelRequestData& data) {
    QelClient::Resource resource;
    resource.resId = data.resId;
    resource.resValue = data.resValue ? *data.resValue : std::string();
    return resource;
}

void printLog(const BnDrelCallback::TransactionLog& log) {
    // Logged without a tag, as the stub's own transaction log.
    __android_log_print(
            ANDROID_LOG_INFO, nullptr,
            "BnDrelCallback::logFunc NDK BACKEND method_name %s exception_code %d exception_message %s transaction_error %d service_specific_error_code %d",
            log.method_name.c_str(), log.exception_code, log.exception_message.c_str(),
            log.transaction_error, log.service_specific_error_code);
}

}  // namespace qel_internal

bool checkResourceList(std::list<QelClient::Resource>& list) {
    for (const QelClient::Resource& resource : list) {
        bool hasValue = resource.resValue && !resource.resValue->empty();
        // An id needs a value and a value needs an id.
        if ((resource.resId != 0) != hasValue) return false;
    }
    return true;
}
