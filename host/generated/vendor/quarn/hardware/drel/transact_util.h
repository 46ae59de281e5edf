// Shared plumbing of the host form of the generated proxies and stubs: one outgoing transaction
// (prepare, write, transact, read the status header and the reply) and the transaction log that
// aidl's --log option adds around each call.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_to_string.h>

#include <chrono>
#include <climits>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace aidl_host {

using Args = std::vector<std::pair<std::string, std::string>>;

template <typename WriteArgs, typename ReadReply>
::ndk::ScopedAStatus proxyTransact(const ::ndk::SpAIBinder& binder, uint32_t code,
                                   WriteArgs&& writeArgs, ReadReply&& readReply) {
    ::ndk::ScopedAParcel in;
    ::ndk::ScopedAParcel out;
    ::ndk::ScopedAStatus status;
    binder_status_t ret = AIBinder_prepareTransaction(binder.get(), in.getR());
    if (ret == STATUS_OK) ret = writeArgs(in.get());
    if (ret == STATUS_OK) ret = AIBinder_transact(binder.get(), code, in.getR(), out.getR(), 0);
    if (ret == STATUS_OK) ret = AParcel_readStatusHeader(out.get(), status.getR());
    if (ret != STATUS_OK) return ::ndk::ScopedAStatus::fromStatus(ret);
    if (!AStatus_isOk(status.get())) return status;
    ret = readReply(out.get());
    if (ret != STATUS_OK) return ::ndk::ScopedAStatus::fromStatus(ret);
    return status;
}

// Runs call() and, when logFunc is set, reports it as a TransactionLog of type Log.
template <typename Log, typename Inputs, typename Call, typename Result>
::ndk::ScopedAStatus logged(const std::function<void(const Log&)>& logFunc, const char* iface,
                            const char* method, const void* proxy, const void* stub,
                            Inputs&& inputs, Call&& call, Result&& result) {
    if (!logFunc) return call();
    Log log{};
    log.input_args = inputs();
    auto start = std::chrono::steady_clock::now();
    ::ndk::ScopedAStatus status = call();
    log.duration_ms =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                    .count();
    log.interface_name = iface;
    log.method_name = method;
    log.proxy_address = proxy;
    log.stub_address = stub;
    if (status.get() != nullptr) {
        log.exception_code = AStatus_getExceptionCode(status.get());
        log.exception_message = AStatus_getMessage(status.get());
        log.transaction_error = AStatus_getStatus(status.get());
        log.service_specific_error_code = AStatus_getServiceSpecificError(status.get());
    }
    log.result = result();
    logFunc(log);
    return status;
}

// Finishes a stub call: the status header, then (on success) the reply.
template <typename WriteReply>
binder_status_t stubReply(AParcel* out, const ::ndk::ScopedAStatus& status,
                          WriteReply&& writeReply) {
    binder_status_t ret = AParcel_writeStatusHeader(out, status.get());
    if (ret != STATUS_OK || !AStatus_isOk(status.get())) return ret;
    return writeReply(out);
}

// Writes a parcelable as aidl does: its size in bytes from the size field to the end of the last
// field (0 until the fields are written), then the fields.
template <typename WriteFields>
binder_status_t writeSized(AParcel* parcel, WriteFields&& writeFields) {
    const int32_t start = AParcel_getDataPosition(parcel);
    binder_status_t status = AParcel_writeInt32(parcel, 0);
    if (status == STATUS_OK) status = writeFields();
    if (status != STATUS_OK) return status;
    const int32_t end = AParcel_getDataPosition(parcel);
    AParcel_setDataPosition(parcel, start);
    status = AParcel_writeInt32(parcel, end - start);
    AParcel_setDataPosition(parcel, end);
    return status;
}

// Reads it back: the size, each field the record holds, then on to its end, so that fields a
// newer writer added are skipped.
template <typename... ReadField>
binder_status_t readSized(const AParcel* parcel, ReadField&&... readField) {
    const int32_t start = AParcel_getDataPosition(parcel);
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < 0 || start > INT32_MAX - size) return STATUS_BAD_VALUE;
    auto next = [&](auto& read) {
        if (status == STATUS_OK && AParcel_getDataPosition(parcel) - start < size) status = read();
    };
    (next(readField), ...);
    if (status != STATUS_OK) return status;
    AParcel_setDataPosition(parcel, start + size);
    return STATUS_OK;
}

inline binder_status_t noArgs(AParcel*) {
    return STATUS_OK;
}
inline binder_status_t noReply(const AParcel*) {
    return STATUS_OK;
}
inline Args noInputs() {
    return {};
}
inline std::string noResult() {
    return "";
}

}  // namespace aidl_host
