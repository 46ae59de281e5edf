// The host parcel: bytes laid out as a device parcel lays them out (4-byte aligned values,
// UTF-16 strings, 24-byte binder objects), one position for reading and writing, and the binder
// objects it carries by offset.
#pragma once

#include <android/binder_parcel.h>

#include <cstdint>
#include <map>
#include <vector>

struct AParcel {
    AParcel() = default;
    ~AParcel();
    AParcel(const AParcel&) = delete;
    AParcel& operator=(const AParcel&) = delete;

    std::vector<uint8_t> data;
    mutable size_t position = 0;
    std::map<size_t, AIBinder*> objects;  // by offset; a +1 reference each
};
