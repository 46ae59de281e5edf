// Conversions between the callers' resource records and the service's wire records, the
// pairing check of resource lists, and the transaction-log hook of the callback stub.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/BnDrelCallback.h>
#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>

#include <vector>

#include "qel.h"

namespace qel_internal {

using ::aidl::vendor::quarn::hardware::drel::BnDrelCallback;
using ::aidl::vendor::quarn::hardware::drel::DrelRequestData;

// Makes `data`, a default-constructed record, the wire record of one resource: its id,
// resParam 0, and its value, or an empty value when it has none, so that resValue is always
// present. resPath and resExtra stay absent.
void toWire(const QelClient::Resource& resource, DrelRequestData& data);

// Appends the wire records of `resources`, in order. Each is built in place in `out`: the
// requests' hot path makes no temporary record per resource.
template <typename Container>
void appendToWire(std::vector<DrelRequestData>& out, const Container& resources) {
    out.reserve(out.size() + resources.size());
    for (const QelClient::Resource& resource : resources) toWire(resource, out.emplace_back());
}

// The caller's record of a reported one: same id, value present (empty when absent).
QelClient::Resource fromWire(const DrelRequestData& data);

// Logs one incoming transaction of the callback stub; installed in BnDrelCallback::logFunc.
void printLog(const BnDrelCallback::TransactionLog& log);

}  // namespace qel_internal
