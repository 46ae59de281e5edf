// Fuzzes the scenario builders with arbitrary texts: every resource they build has an opcode of
// the tables (or of the builder's own constants) and a present value, and none reads outside the
// opcode block however many items a text holds.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <iterator>
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

// The list builders that take a text alone, in the order the corpus picks them by.
std::vector<QelClient::Resource> (*const kTextBuilders[])(std::string) = {
        getTargetLoadList, getColocationList, getGameAdpList};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const size_t builder = in.ConsumeIntegralInRange<size_t>(0, std::size(kTextBuilders) + 1);
    const int level = in.ConsumeIntegral<int>();
    const int opcode = in.ConsumeIntegral<int>();
    const std::string text = in.ConsumeRemainingBytesAsString();
    if (builder < std::size(kTextBuilders)) {
        requireWellFormed(kTextBuilders[builder](text));
    } else if (builder == std::size(kTextBuilders)) {
        std::vector<QelClient::Resource> list = getGameUpgradeList(0, 0, level, 0, 0, text);
        requireWellFormed(list);
        require(list.size() == (level >= 1 ? 1u : 0u) + (text.empty() ? 0u : 1u));
    } else {
        QelClient::Resource resource = QelResourceInfo(opcode, text);
        require(resource.resId == opcode && resource.resValue == text);
    }
    return 0;
}
