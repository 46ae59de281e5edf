// Host stand-in of <android/binder_parcel.h>: the subset that the generated interface code uses.
//
// A host parcel is a typed sequence of values rather than bytes: reading a value of another
// type than was written fails with STATUS_BAD_TYPE, reading past the end with
// STATUS_NOT_ENOUGH_DATA. Binders written to a parcel are resolved for the reading process
// (a proxy in another process, the local object in the owning one), as the kernel driver does.
#pragma once

#include <android/binder_status.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct AIBinder;
typedef struct AIBinder AIBinder;
struct AParcel;
typedef struct AParcel AParcel;

// Called with the string's length (-1 for a null string); sets *buffer to length + 1 bytes.
typedef bool (*AParcel_stringAllocator)(void* stringData, int32_t length, char** buffer);

void AParcel_delete(AParcel* parcel);
binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position);
int32_t AParcel_getDataPosition(const AParcel* parcel);

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder);
binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder);
binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status);
binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status);

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value);
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value);
binder_status_t AParcel_writeBool(AParcel* parcel, bool value);
binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value);
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value);
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value);

// string == NULL with length -1 writes a null string.
binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length);
binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator);

#ifdef __cplusplus
}
#endif
