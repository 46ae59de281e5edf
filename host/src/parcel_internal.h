// The host parcel: a typed sequence of values with a read position.
#pragma once

#include <android/binder_parcel.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct ParcelStatus {
    binder_exception_t exception = EX_NONE;
    int32_t errorCode = 0;
    std::string message;
};

struct ParcelEntry {
    enum class Kind { Int32, Int64, Bool, String, Binder, Status };
    explicit ParcelEntry(Kind kind) : kind(kind) {}

    Kind kind;
    int64_t number = 0;
    std::optional<std::string> text;
    AIBinder* binder = nullptr;  // +1 reference owned by the parcel
    ParcelStatus status;
};

struct AParcel {
    AParcel() = default;
    ~AParcel();
    AParcel(const AParcel&) = delete;
    AParcel& operator=(const AParcel&) = delete;

    std::vector<ParcelEntry> entries;
    mutable size_t position = 0;
};
