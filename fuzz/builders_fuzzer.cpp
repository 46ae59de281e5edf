// Fuzzes the scenario builders with arbitrary texts: every resource they build has an opcode of
// the tables (or of the builder's own constants) and a present value, and none reads outside the
// opcode block however many items a text holds.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>
#include <vector>

#include "QelWrapper.h"

namespace {

void require(bool promise) {
    if (!promise) __builtin_trap();
}

void requireWellFormed(const std::vector<QelClient::Resource>& list) {
    for (const QelClient::Resource& resource : list) {
        require(resource.resId != 0 && resource.resValue.has_value());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    int builder = in.ConsumeIntegralInRange<int>(0, 4);
    int level = in.ConsumeIntegral<int>();
    int opcode = in.ConsumeIntegral<int>();
    std::string text = in.ConsumeRemainingBytesAsString();
    switch (builder) {
        case 0:
            requireWellFormed(getTargetLoadList(text));
            break;
        case 1:
            requireWellFormed(getColocationList(text));
            break;
        case 2:
            requireWellFormed(getGameAdpList(text));
            break;
        case 3: {
            std::vector<QelClient::Resource> list = getGameUpgradeList(0, 0, level, 0, 0, text);
            requireWellFormed(list);
            require(list.size() == (level >= 1 ? 1u : 0u) + (text.empty() ? 0u : 1u));
            break;
        }
        default: {
            QelClient::Resource resource = QelResourceInfo(opcode, text);
            require(resource.resId == opcode && resource.resValue == text);
            break;
        }
    }
    return 0;
}
