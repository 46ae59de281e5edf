// Host stand-in of <android/binder_parcel_utils.h>: the C++ helpers the generated code uses to
// read and write strings, vectors, parcelables and binders, over the C functions of
// <android/binder_parcel.h>, with the NDK's wire layout: a parcelable is an int32 present marker
// (1) before its fields, a nullable one 0 when absent; vectors are the C arrays (an int32 length,
// -1 for null, then the elements).
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstdint>
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

inline bool setNull(std::string&) {
    return false;
}
inline bool setNull(std::optional<std::string>& str) {
    str.reset();
    return true;
}
// `size` characters plus the terminator's slot, which the reader fills with the NUL.
inline char* sized(std::string& str, size_t size) {
    str.assign(size, '\0');
    return &str[0];
}
inline char* sized(std::optional<std::string>& str, size_t size) {
    str.emplace(size, '\0');
    return &(*str)[0];
}
// `length` counts the terminator; -1 is a null string.
template <typename S>
bool fillString(S& str, int32_t length, char** buffer) {
    if (length < 0) return setNull(str);
    if (length == 0) return false;
    *buffer = sized(str, static_cast<size_t>(length) - 1);
    return true;
}
template <typename S>
bool stringAllocator(void* data, int32_t length, char** buffer) {
    return fillString(*static_cast<S*>(data), length, buffer);
}

template <typename T>
using OptionalVector = std::optional<std::vector<T>>;

template <typename T>
bool vectorAllocator(void* data, int32_t length) {
    auto* vec = static_cast<OptionalVector<T>*>(data);
    if (length < 0) {
        vec->reset();
    } else {
        vec->emplace(static_cast<size_t>(length));
    }
    return true;
}
inline bool int32Allocator(void* data, int32_t length, int32_t** buffer) {
    vectorAllocator<int32_t>(data, length);
    if (length > 0) *buffer = (*static_cast<OptionalVector<int32_t>*>(data))->data();
    return true;
}
template <typename S>
bool stringElementAllocator(void* data, size_t index, int32_t length, char** buffer) {
    return fillString((**static_cast<OptionalVector<S>*>(data))[index], length, buffer);
}
inline const std::string* stringOf(const std::string& str) {
    return &str;
}
inline const std::string* stringOf(const std::optional<std::string>& str) {
    return str ? &*str : nullptr;
}
// The elements of an array's own object: a vector, or an engaged optional one.
template <typename T>
const std::vector<T>& elementsOf(const std::vector<T>& vec) {
    return vec;
}
template <typename T>
const std::vector<T>& elementsOf(const OptionalVector<T>& vec) {
    return *vec;
}
// Element getters and writers get the address of the array's own object (`C`), as arrayData.
template <typename C>
const char* stringElementGetter(const void* data, size_t index, int32_t* length) {
    const std::string* str = stringOf(elementsOf(*static_cast<const C*>(data))[index]);
    *length = str ? static_cast<int32_t>(str->size()) : -1;
    return str ? str->c_str() : nullptr;
}

template <typename T>
constexpr bool kIsString =
        std::is_same_v<T, std::string> || std::is_same_v<T, std::optional<std::string>>;

}  // namespace parcel_detail

template <typename S>
binder_status_t AParcel_readString(const AParcel* parcel, S* str) {
    return ::AParcel_readString(parcel, str, parcel_detail::stringAllocator<S>);
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

template <typename P>
binder_status_t AParcel_writeParcelable(AParcel* parcel, const P& p) {
    binder_status_t status = AParcel_writeInt32(parcel, 1);  // present
    return status == STATUS_OK ? p.writeToParcel(parcel) : status;
}
template <typename P>
binder_status_t AParcel_readParcelable(const AParcel* parcel, P* p) {
    int32_t present = 0;
    binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) return STATUS_UNEXPECTED_NULL;
    return p->readFromParcel(parcel);
}
template <typename P>
binder_status_t AParcel_writeNullableParcelable(AParcel* parcel, const std::optional<P>& p) {
    if (!p) return AParcel_writeInt32(parcel, 0);
    return AParcel_writeParcelable(parcel, *p);
}
template <typename P>
binder_status_t AParcel_readNullableParcelable(const AParcel* parcel, std::optional<P>* p) {
    int32_t present = 0;
    binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) {
        p->reset();
        return STATUS_OK;
    }
    return p->emplace().readFromParcel(parcel);
}

namespace parcel_detail {
template <typename C>
binder_status_t parcelableElementWriter(AParcel* parcel, const void* data, size_t index) {
    return AParcel_writeParcelable(parcel, elementsOf(*static_cast<const C*>(data))[index]);
}
template <typename P>
binder_status_t parcelableElementReader(const AParcel* parcel, void* data, size_t index) {
    return AParcel_readParcelable(parcel, &(**static_cast<OptionalVector<P>*>(data))[index]);
}

inline bool isNull(const void*) {
    return false;
}
template <typename T>
bool isNull(const OptionalVector<T>* vec) {
    return !vec->has_value();
}

// A vector, or a null one for an empty optional. As the NDK's helpers do, strings and
// parcelables pass the address of the caller's own object (never null) with the length, -1 for
// null; int32 arrays pass their data, null for a null array.
template <typename T, typename C>
binder_status_t writeArray(AParcel* parcel, const C& vec) {
    const int32_t length = isNull(&vec) ? -1 : static_cast<int32_t>(elementsOf(vec).size());
    if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_writeInt32Array(parcel, length < 0 ? nullptr : elementsOf(vec).data(),
                                       length);
    } else if constexpr (kIsString<T>) {
        return AParcel_writeStringArray(parcel, &vec, length, stringElementGetter<C>);
    } else {
        return AParcel_writeParcelableArray(parcel, &vec, length, parcelableElementWriter<C>);
    }
}
template <typename T>
binder_status_t readArray(const AParcel* parcel, OptionalVector<T>* vec) {
    if constexpr (std::is_same_v<T, int32_t>) {
        return AParcel_readInt32Array(parcel, vec, int32Allocator);
    } else if constexpr (kIsString<T>) {
        return AParcel_readStringArray(parcel, vec, vectorAllocator<T>, stringElementAllocator<T>);
    } else {
        return AParcel_readParcelableArray(parcel, vec, vectorAllocator<T>,
                                           parcelableElementReader<T>);
    }
}
}  // namespace parcel_detail

template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vec) {
    return parcel_detail::writeArray<T>(parcel, vec);
}
template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::optional<std::vector<T>>& vec) {
    return parcel_detail::writeArray<T>(parcel, vec);
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::optional<std::vector<T>>* vec) {
    return parcel_detail::readArray(parcel, vec);
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vec) {
    std::optional<std::vector<T>> value;
    binder_status_t status = parcel_detail::readArray(parcel, &value);
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
