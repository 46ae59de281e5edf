// Host parcel functions: values are kept with their type, and read back in order.

#include <android/binder_ibinder.h>

#include "parcel_internal.h"
#include "runtime.h"
#include "status_internal.h"

AParcel::~AParcel() {
    for (ParcelEntry& entry : entries) AIBinder_decStrong(entry.binder);
}

namespace {

binder_status_t append(AParcel* parcel, ParcelEntry entry) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    parcel->entries.push_back(std::move(entry));
    return STATUS_OK;
}

// The next entry if it has the expected kind.
const ParcelEntry* next(const AParcel* parcel, ParcelEntry::Kind kind, binder_status_t* status) {
    if (parcel == nullptr) {
        *status = STATUS_UNEXPECTED_NULL;
        return nullptr;
    }
    if (parcel->position >= parcel->entries.size()) {
        *status = STATUS_NOT_ENOUGH_DATA;
        return nullptr;
    }
    const ParcelEntry& entry = parcel->entries[parcel->position];
    if (entry.kind != kind) {
        *status = STATUS_BAD_TYPE;
        return nullptr;
    }
    ++parcel->position;
    *status = STATUS_OK;
    return &entry;
}

template <typename T>
binder_status_t readNumber(const AParcel* parcel, ParcelEntry::Kind kind, T* value) {
    binder_status_t status;
    const ParcelEntry* entry = next(parcel, kind, &status);
    if (entry != nullptr) *value = static_cast<T>(entry->number);
    return status;
}

}  // namespace

extern "C" {

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    if (position < 0 || static_cast<size_t>(position) > parcel->entries.size()) {
        return STATUS_BAD_VALUE;
    }
    parcel->position = static_cast<size_t>(position);
    return STATUS_OK;
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return parcel == nullptr ? 0 : static_cast<int32_t>(parcel->position);
}

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    AIBinder_incStrong(binder);
    ParcelEntry entry{ParcelEntry::Kind::Binder};
    entry.binder = binder;
    binder_status_t status = append(parcel, std::move(entry));
    if (status != STATUS_OK) AIBinder_decStrong(binder);
    return status;
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status;
    const ParcelEntry* entry = next(parcel, ParcelEntry::Kind::Binder, &status);
    if (entry != nullptr) *binder = hostbinder::readBinderFor(entry->binder);
    return status;
}

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    if (status == nullptr) return STATUS_UNEXPECTED_NULL;
    // As on the device, a transaction failure is never written into a reply: it is returned.
    if (status->exception == EX_TRANSACTION_FAILED) return status->errorCode;
    ParcelEntry entry{ParcelEntry::Kind::Status};
    entry.status = ParcelStatus{status->exception, status->errorCode, status->message};
    return append(parcel, std::move(entry));
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    if (status == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t result;
    const ParcelEntry* entry = next(parcel, ParcelEntry::Kind::Status, &result);
    if (entry != nullptr) {
        *status = new AStatus{entry->status.exception, entry->status.errorCode,
                              entry->status.message};
    }
    return result;
}

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    ParcelEntry entry{ParcelEntry::Kind::Int32};
    entry.number = value;
    return append(parcel, std::move(entry));
}

binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    ParcelEntry entry{ParcelEntry::Kind::Int64};
    entry.number = value;
    return append(parcel, std::move(entry));
}

binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    ParcelEntry entry{ParcelEntry::Kind::Bool};
    entry.number = value ? 1 : 0;
    return append(parcel, std::move(entry));
}

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return readNumber(parcel, ParcelEntry::Kind::Int32, value);
}

binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return readNumber(parcel, ParcelEntry::Kind::Int64, value);
}

binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    binder_status_t status;
    const ParcelEntry* entry = next(parcel, ParcelEntry::Kind::Bool, &status);
    if (entry != nullptr) *value = entry->number != 0;
    return status;
}

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    ParcelEntry entry{ParcelEntry::Kind::String};
    if (string == nullptr) {
        if (length != -1) return STATUS_UNEXPECTED_NULL;
    } else {
        if (length < 0) return STATUS_BAD_VALUE;
        entry.text.emplace(string, static_cast<size_t>(length));
    }
    return append(parcel, std::move(entry));
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    if (allocator == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status;
    const ParcelEntry* entry = next(parcel, ParcelEntry::Kind::String, &status);
    if (entry == nullptr) return status;
    char* buffer = nullptr;
    if (!entry->text) return allocator(stringData, -1, &buffer) ? STATUS_OK : STATUS_NO_MEMORY;
    const std::string& text = *entry->text;
    if (!allocator(stringData, static_cast<int32_t>(text.size()), &buffer)) {
        return STATUS_NO_MEMORY;
    }
    if (buffer == nullptr) return STATUS_UNEXPECTED_NULL;
    text.copy(buffer, text.size());
    buffer[text.size()] = '\0';
    return STATUS_OK;
}

}  // extern "C"
