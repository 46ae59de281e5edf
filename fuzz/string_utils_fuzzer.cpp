// Fuzzes the stringUtils functions with arbitrary bytes (NULs, high bytes, delimiters of any
// kind) and checks what each promises.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>
#include <vector>

#include "stringUtils.h"

namespace {

void require(bool promise) {
    if (!promise) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    std::string delims = in.ConsumeRandomLengthString(8);
    // The trimming sets are C strings: a NUL ends them.
    std::string chars = in.ConsumeBool() ? std::string(stringUtils::WHITESPACE)
                                         : std::string(in.ConsumeRandomLengthString(8).c_str());
    std::string a = in.ConsumeRandomLengthString(512);
    std::string b = in.ConsumeRemainingBytesAsString();

    require(stringUtils::contains(a, "") && stringUtils::contains(a + b, b));
    require(stringUtils::equals(a, a) && stringUtils::equals(a, b) == (a == b));

    int number = stringUtils::parseInt(a);
    require(stringUtils::parseInt(stringUtils::valueOf(number)) == number);

    std::string left = stringUtils::trimLeft(a, chars.c_str());
    std::string right = stringUtils::trimRight(a, chars.c_str());
    std::string both = stringUtils::trim(a, chars.c_str());
    require(left.empty() || chars.find(left.front()) == std::string::npos);
    require(right.empty() || chars.find(right.back()) == std::string::npos);
    require(both.size() <= left.size() && both.size() <= right.size());
    require(a.find(both) != std::string::npos);

    for (const std::string& field : stringUtils::split(b, delims)) {
        require(!field.empty() && field.find_first_of(delims) == std::string::npos);
        require(b.find(field) != std::string::npos);
    }
    return 0;
}
