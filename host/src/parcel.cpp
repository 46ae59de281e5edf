// Host parcel functions: the byte layout, positions and checks of a device parcel.

#include <android/binder_ibinder.h>

#include <climits>
#include <cstring>
#include <optional>
#include <string>

#include "parcel_internal.h"
#include "runtime.h"
#include "status_internal.h"

AParcel::~AParcel() {
    for (auto& [offset, binder] : objects) AIBinder_decStrong(binder);
}

namespace {

constexpr size_t kObjectSize = 24;  // a flat binder object: type, flags, binder, cookie
constexpr uint32_t kTypeBinder = 0x73622a85;
constexpr uint32_t kTypeHandle = 0x73682a85;
constexpr binder_exception_t kExceptionHasReplyHeader = -128;

size_t padded(size_t size) {
    return (size + 3) & ~size_t{3};
}

// True when [at, at + size) covers part of a binder object.
bool coversObject(const AParcel* parcel, size_t at, size_t size) {
    auto it = parcel->objects.lower_bound(at >= kObjectSize ? at - kObjectSize + 1 : 0);
    return it != parcel->objects.end() && it->first < at + size;
}

// Room for `size` bytes at the position, which moves past them (padded). Objects written over
// are dropped.
uint8_t* writeRoom(AParcel* parcel, size_t size) {
    const size_t at = parcel->position;
    const size_t end = at + padded(size);
    if (end > parcel->data.size()) parcel->data.resize(end);
    while (coversObject(parcel, at, end - at)) {
        auto it = parcel->objects.lower_bound(at >= kObjectSize ? at - kObjectSize + 1 : 0);
        AIBinder_decStrong(it->second);
        parcel->objects.erase(it);
    }
    std::memset(parcel->data.data() + at + size, 0, end - at - size);
    parcel->position = end;
    return parcel->data.data() + at;
}

// The `size` bytes at the position, which moves past them (padded); null with *status set when
// they are not there, or when they cover a binder object.
const uint8_t* readRoom(const AParcel* parcel, size_t size, binder_status_t* status) {
    const size_t at = parcel->position;
    if (at > parcel->data.size() || padded(size) > parcel->data.size() - at) {
        *status = STATUS_NOT_ENOUGH_DATA;
        return nullptr;
    }
    parcel->position = at + padded(size);
    if (coversObject(parcel, at, padded(size))) {
        *status = STATUS_PERMISSION_DENIED;
        return nullptr;
    }
    *status = STATUS_OK;
    return parcel->data.data() + at;
}

template <typename T>
binder_status_t writeValue(AParcel* parcel, T value) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    std::memcpy(writeRoom(parcel, sizeof(T)), &value, sizeof(T));
    return STATUS_OK;
}

template <typename T>
binder_status_t readValue(const AParcel* parcel, T* value) {
    if (parcel == nullptr || value == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status;
    const uint8_t* at = readRoom(parcel, sizeof(T), &status);
    if (at != nullptr) std::memcpy(value, at, sizeof(T));
    return status;
}

// UTF-8 to UTF-16; false on malformed input.
bool toUtf16(const char* s, size_t n, std::u16string* out) {
    for (size_t i = 0; i < n;) {
        auto c = static_cast<unsigned char>(s[i++]);
        int extra = c < 0x80 ? 0 : c < 0xC0 ? -1 : c < 0xE0 ? 1 : c < 0xF0 ? 2 : c < 0xF8 ? 3 : -1;
        if (extra < 0 || static_cast<size_t>(extra) > n - i) return false;
        uint32_t cp = extra == 0 ? c : c & (0x3Fu >> extra);
        for (int k = 0; k < extra; ++k) {
            auto next = static_cast<unsigned char>(s[i++]);
            if ((next & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (next & 0x3Fu);
        }
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out->push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
            cp = 0xDC00 + (cp & 0x3FF);
        }
        out->push_back(static_cast<char16_t>(cp));
    }
    return true;
}

std::string toUtf8(const std::u16string& s) {
    static const uint8_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        uint32_t cp = s[i];
        if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < s.size() && s[i + 1] >= 0xDC00 &&
            s[i + 1] < 0xE000) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (s[++i] - 0xDC00);
        }
        int extra = cp < 0x80 ? 0 : cp < 0x800 ? 1 : cp < 0x10000 ? 2 : 3;
        out += static_cast<char>(kLead[extra] | (cp >> (6 * extra)));
        for (int k = extra - 1; k >= 0; --k)
            out += static_cast<char>(0x80 | ((cp >> (6 * k)) & 0x3F));
    }
    return out;
}

binder_status_t writeString16(AParcel* parcel, const std::u16string* text) {
    if (text == nullptr) return writeValue<int32_t>(parcel, -1);
    binder_status_t status = writeValue(parcel, static_cast<int32_t>(text->size()));
    if (status != STATUS_OK) return status;
    std::memcpy(writeRoom(parcel, (text->size() + 1) * 2), text->c_str(), (text->size() + 1) * 2);
    return STATUS_OK;
}

// A UTF-16 string, or nothing for a null string and for one that is not there or not terminated,
// which a device parcel cannot tell apart either.
std::optional<std::u16string> readString16(const AParcel* parcel) {
    int32_t size = -1;
    if (readValue(parcel, &size) != STATUS_OK || size < 0 || size == INT32_MAX) return {};
    binder_status_t status;
    const uint8_t* at = readRoom(parcel, (static_cast<size_t>(size) + 1) * 2, &status);
    if (at == nullptr) return {};
    std::u16string text(static_cast<size_t>(size) + 1, u'\0');
    std::memcpy(&text[0], at, text.size() * 2);
    if (text.back() != u'\0') return {};
    text.pop_back();
    return text;
}

// The length of an array: -1 is a null array, whatever the data pointer is (the NDK's C++
// helpers pass the address of their own empty std::optional with -1).
binder_status_t writeArrayLength(AParcel* parcel, int32_t length) {
    if (length < -1) return STATUS_BAD_VALUE;
    return writeValue(parcel, length);
}

binder_status_t readArrayLength(const AParcel* parcel, int32_t* length) {
    binder_status_t status = readValue(parcel, length);
    if (status == STATUS_OK && *length < -1) return STATUS_BAD_VALUE;
    return status;
}

}  // namespace

extern "C" {

AParcel* AParcel_create(void) {
    return new AParcel;
}

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (position < 0) return STATUS_BAD_VALUE;
    parcel->position = static_cast<size_t>(position);
    return STATUS_OK;
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->position);
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->data.size());
}

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    if (parcel == nullptr) return STATUS_UNEXPECTED_NULL;
    const size_t at = parcel->position;
    const uint32_t header[2] = {AIBinder_isRemote(binder) ? kTypeHandle : kTypeBinder, 0};
    const uint64_t id = reinterpret_cast<uintptr_t>(binder);
    uint8_t* room = writeRoom(parcel, kObjectSize);
    std::memcpy(room, header, sizeof(header));
    std::memcpy(room + 8, &id, sizeof(id));
    std::memcpy(room + 16, &id, sizeof(id));
    if (binder != nullptr) {
        AIBinder_incStrong(binder);
        parcel->objects[at] = binder;
    }
    return STATUS_OK;
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    if (parcel == nullptr || binder == nullptr) return STATUS_UNEXPECTED_NULL;
    const size_t at = parcel->position;
    if (at > parcel->data.size() || parcel->data.size() - at < kObjectSize) return STATUS_BAD_TYPE;
    parcel->position = at + kObjectSize;
    auto object = parcel->objects.find(at);
    if (object != parcel->objects.end()) {
        *binder = hostbinder::readBinderFor(object->second);
        return STATUS_OK;
    }
    // Only a null binder is written without an object.
    uint32_t type = 0;
    uint64_t ids[2] = {1, 1};
    std::memcpy(&type, parcel->data.data() + at, sizeof(type));
    std::memcpy(ids, parcel->data.data() + at + 8, sizeof(ids));
    if (type != kTypeBinder || ids[0] != 0 || ids[1] != 0) return STATUS_BAD_TYPE;
    *binder = nullptr;
    return STATUS_OK;
}

// The status header as binder writes it: the exception; unless none, the message, an empty
// remote stack trace header and, for a service-specific error, its code.
binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    if (status == nullptr) return STATUS_UNEXPECTED_NULL;
    // As on the device, a transaction failure is never written into a reply: it is returned.
    if (status->exception == EX_TRANSACTION_FAILED) return status->errorCode;
    binder_status_t ret = writeValue(parcel, status->exception);
    if (ret != STATUS_OK || status->exception == EX_NONE) return ret;
    std::u16string message;
    if (!toUtf16(status->message.data(), status->message.size(), &message)) message.clear();
    writeString16(parcel, &message);
    writeValue<int32_t>(parcel, 0);
    if (status->exception == EX_SERVICE_SPECIFIC) return writeValue(parcel, status->errorCode);
    if (status->exception == EX_PARCELABLE) return writeValue<int32_t>(parcel, 0);
    return STATUS_OK;
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    if (status == nullptr) return STATUS_UNEXPECTED_NULL;
    AStatus read;
    binder_status_t ret = readValue(parcel, &read.exception);
    // Skips a size-prefixed header of `parcel`, counted from where its size field starts.
    auto skipHeader = [&] {
        const size_t start = parcel->position;
        int32_t size = 0;
        ret = readValue(parcel, &size);
        if (ret == STATUS_OK &&
            (size < 0 || static_cast<size_t>(size) > parcel->data.size() - start)) {
            ret = STATUS_UNKNOWN_ERROR;
        }
        if (ret == STATUS_OK) parcel->position = start + static_cast<size_t>(size);
    };
    if (ret == STATUS_OK && read.exception == kExceptionHasReplyHeader) {
        skipHeader();
        read.exception = EX_NONE;
    }
    if (ret == STATUS_OK && read.exception != EX_NONE) {
        std::optional<std::u16string> message = readString16(parcel);
        if (!message) ret = STATUS_UNEXPECTED_NULL;
        if (message) read.message = toUtf8(*message);
        int32_t traceSize = 0;
        if (ret == STATUS_OK) ret = readValue(parcel, &traceSize);
        if (ret == STATUS_OK && (traceSize < 0 || static_cast<size_t>(traceSize) >
                                                          parcel->data.size() - parcel->position)) {
            ret = STATUS_UNKNOWN_ERROR;
        }
        if (ret == STATUS_OK) parcel->position += static_cast<size_t>(traceSize);
        if (ret == STATUS_OK && read.exception == EX_SERVICE_SPECIFIC) {
            ret = readValue(parcel, &read.errorCode);
        } else if (ret == STATUS_OK && read.exception == EX_PARCELABLE) {
            skipHeader();
        }
    }
    if (ret == STATUS_OK) *status = new AStatus(read);
    return ret;
}

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return writeValue(parcel, value);
}

binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    return writeValue(parcel, value);
}

binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return writeValue<int32_t>(parcel, value ? 1 : 0);
}

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return readValue(parcel, value);
}

binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return readValue(parcel, value);
}

binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    int32_t number = 0;
    binder_status_t status = readValue(parcel, &number);
    if (status == STATUS_OK) *value = number != 0;
    return status;
}

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    if (string == nullptr) {
        return length == -1 ? writeString16(parcel, nullptr) : STATUS_UNEXPECTED_NULL;
    }
    if (length < 0) return STATUS_BAD_VALUE;
    std::u16string text;
    if (!toUtf16(string, static_cast<size_t>(length), &text)) return STATUS_BAD_VALUE;
    return writeString16(parcel, &text);
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    std::optional<std::u16string> text = readString16(parcel);
    if (!text) return allocator(stringData, -1, nullptr) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    const std::string utf8 = toUtf8(*text);
    if (utf8.size() >= INT32_MAX) return STATUS_BAD_VALUE;
    char* buffer = nullptr;
    if (!allocator(stringData, static_cast<int32_t>(utf8.size() + 1), &buffer) ||
        buffer == nullptr) {
        return STATUS_NO_MEMORY;
    }
    std::memcpy(buffer, utf8.c_str(), utf8.size() + 1);
    return STATUS_OK;
}

binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length) {
    if (arrayData == nullptr && length > 0) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = writeArrayLength(parcel, length);
    if (status != STATUS_OK || length <= 0) return status;
    const size_t bytes = static_cast<size_t>(length) * sizeof(int32_t);
    std::memcpy(writeRoom(parcel, bytes), arrayData, bytes);
    return STATUS_OK;
}

binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, &length);
    if (status != STATUS_OK) return status;
    int32_t* array = nullptr;
    if (!allocator(arrayData, length, &array)) return STATUS_NO_MEMORY;
    if (length <= 0) return STATUS_OK;
    if (array == nullptr) return STATUS_NO_MEMORY;
    const size_t bytes = static_cast<size_t>(length) * sizeof(int32_t);
    const uint8_t* at = readRoom(parcel, bytes, &status);
    if (at != nullptr) std::memcpy(array, at, bytes);
    return status;
}

binder_status_t AParcel_writeStringArray(AParcel* parcel, const void* arrayData, int32_t length,
                                         AParcel_stringArrayElementGetter getter) {
    binder_status_t status = writeArrayLength(parcel, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        int32_t elementLength = 0;
        const char* element = getter(arrayData, static_cast<size_t>(i), &elementLength);
        if (element == nullptr && elementLength != -1) return STATUS_UNEXPECTED_NULL;
        status = AParcel_writeString(parcel, element, elementLength);
    }
    return status;
}

binder_status_t AParcel_readStringArray(const AParcel* parcel, void* arrayData,
                                        AParcel_stringArrayAllocator allocator,
                                        AParcel_stringArrayElementAllocator elementAllocator) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, &length);
    if (status != STATUS_OK) return status;
    if (!allocator(arrayData, length)) return STATUS_NO_MEMORY;
    // Each element is read as one string, its allocator given the array and the index.
    struct Element {
        void* arrayData;
        size_t index;
        AParcel_stringArrayElementAllocator allocate;
    };
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        Element element{arrayData, static_cast<size_t>(i), elementAllocator};
        status = AParcel_readString(parcel, &element, [](void* data, int32_t size, char** buffer) {
            auto* e = static_cast<Element*>(data);
            return e->allocate(e->arrayData, e->index, size, buffer);
        });
    }
    return status;
}

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    binder_status_t status = writeArrayLength(parcel, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = elementWriter(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, &length);
    if (status != STATUS_OK) return status;
    if (!allocator(arrayData, length)) return STATUS_NO_MEMORY;
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = elementReader(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

}  // extern "C"
