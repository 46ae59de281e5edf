// Host stand-in of <android/binder_parcel_utils.h>: the C++ helpers the generated code uses to
// read and write strings, vectors, parcelables, binders and interfaces. Vectors travel as an
// int32 size (-1 for a null vector) followed by their elements.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace ndk {

inline binder_status_t AParcel_writeString(AParcel* parcel, const std::string& str) {
    return ::AParcel_writeString(parcel, str.c_str(), static_cast<int32_t>(str.size()));
}

inline binder_status_t AParcel_writeString(AParcel* parcel, const std::optional<std::string>& str) {
    if (!str) return ::AParcel_writeString(parcel, nullptr, -1);
    return AParcel_writeString(parcel, *str);
}

namespace parcel_detail {
struct StringTarget {
    std::optional<std::string>* out;
};
inline bool stringAllocator(void* data, int32_t length, char** buffer) {
    auto* target = static_cast<StringTarget*>(data);
    if (length < 0) {
        target->out->reset();
        *buffer = nullptr;
        return true;
    }
    target->out->emplace(static_cast<size_t>(length), '\0');
    *buffer = (*target->out)->data();
    return true;
}
}  // namespace parcel_detail

inline binder_status_t AParcel_readString(const AParcel* parcel, std::optional<std::string>* str) {
    parcel_detail::StringTarget target{str};
    return ::AParcel_readString(parcel, &target, parcel_detail::stringAllocator);
}

inline binder_status_t AParcel_readString(const AParcel* parcel, std::string* str) {
    std::optional<std::string> value;
    binder_status_t status = AParcel_readString(parcel, &value);
    if (status != STATUS_OK) return status;
    if (!value) return STATUS_UNEXPECTED_NULL;
    *str = std::move(*value);
    return STATUS_OK;
}

inline binder_status_t AParcel_writeRequiredStrongBinder(AParcel* parcel,
                                                         const SpAIBinder& binder) {
    if (binder.get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return AParcel_writeStrongBinder(parcel, binder.get());
}
inline binder_status_t AParcel_writeNullableStrongBinder(AParcel* parcel,
                                                         const SpAIBinder& binder) {
    return AParcel_writeStrongBinder(parcel, binder.get());
}
inline binder_status_t AParcel_readNullableStrongBinder(const AParcel* parcel, SpAIBinder* binder) {
    AIBinder* readBinder = nullptr;
    binder_status_t status = AParcel_readStrongBinder(parcel, &readBinder);
    if (status == STATUS_OK) binder->set(readBinder);
    return status;
}
inline binder_status_t AParcel_readRequiredStrongBinder(const AParcel* parcel, SpAIBinder* binder) {
    binder_status_t status = AParcel_readNullableStrongBinder(parcel, binder);
    if (status == STATUS_OK && binder->get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return status;
}

// Scalars.
inline binder_status_t AParcel_writeData(AParcel* p, int32_t v) {
    return AParcel_writeInt32(p, v);
}
inline binder_status_t AParcel_writeData(AParcel* p, int64_t v) {
    return AParcel_writeInt64(p, v);
}
inline binder_status_t AParcel_writeData(AParcel* p, bool v) {
    return AParcel_writeBool(p, v);
}
inline binder_status_t AParcel_readData(const AParcel* p, int32_t* v) {
    return AParcel_readInt32(p, v);
}
inline binder_status_t AParcel_readData(const AParcel* p, int64_t* v) {
    return AParcel_readInt64(p, v);
}
inline binder_status_t AParcel_readData(const AParcel* p, bool* v) {
    return AParcel_readBool(p, v);
}
inline binder_status_t AParcel_writeData(AParcel* p, const std::string& v) {
    return AParcel_writeString(p, v);
}
inline binder_status_t AParcel_writeData(AParcel* p, const std::optional<std::string>& v) {
    return AParcel_writeString(p, v);
}
inline binder_status_t AParcel_readData(const AParcel* p, std::string* v) {
    return AParcel_readString(p, v);
}
inline binder_status_t AParcel_readData(const AParcel* p, std::optional<std::string>* v) {
    return AParcel_readString(p, v);
}

// Parcelables: anything with readFromParcel / writeToParcel.
template <typename P, typename = decltype(std::declval<const P&>().writeToParcel(nullptr))>
binder_status_t AParcel_writeData(AParcel* p, const P& v) {
    return v.writeToParcel(p);
}
template <typename P, typename = decltype(std::declval<P&>().readFromParcel(nullptr))>
binder_status_t AParcel_readData(const AParcel* p, P* v) {
    return v->readFromParcel(p);
}

template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vec) {
    binder_status_t status = AParcel_writeInt32(parcel, static_cast<int32_t>(vec.size()));
    for (const T& item : vec) {
        if (status != STATUS_OK) return status;
        status = AParcel_writeData(parcel, item);
    }
    return status;
}
template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::optional<std::vector<T>>& vec) {
    if (!vec) return AParcel_writeInt32(parcel, -1);
    return AParcel_writeVector(parcel, *vec);
}

template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::optional<std::vector<T>>* vec) {
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < 0) {
        vec->reset();
        return STATUS_OK;
    }
    vec->emplace();
    (*vec)->resize(static_cast<size_t>(size));
    for (T& item : **vec) {
        status = AParcel_readData(parcel, &item);
        if (status != STATUS_OK) return status;
    }
    return STATUS_OK;
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vec) {
    std::optional<std::vector<T>> value;
    binder_status_t status = AParcel_readVector(parcel, &value);
    if (status != STATUS_OK) return status;
    if (!value) return STATUS_UNEXPECTED_NULL;
    *vec = std::move(*value);
    return STATUS_OK;
}

// Out-vector sizes: a proxy writes the size of an out array before the call.
template <typename T>
binder_status_t AParcel_writeVectorSize(AParcel* parcel, const std::vector<T>& vec) {
    return AParcel_writeInt32(parcel, static_cast<int32_t>(vec.size()));
}
template <typename T>
binder_status_t AParcel_resizeVector(const AParcel* parcel, std::vector<T>* vec) {
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < 0) return STATUS_UNEXPECTED_NULL;
    vec->resize(static_cast<size_t>(size));
    return STATUS_OK;
}

}  // namespace ndk
