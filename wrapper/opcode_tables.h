// The opcode tables of the scenario builders, as the library itself reads them.
//
// The five exported tables (opCodeTargetLoad, opCodeAdpXpuCoreBoost, ...) are names for
// consecutive slices of one block of words, so that a position past the end of one table reads
// the first words of the next, as callers of the builders have always seen it. The builders
// index the block itself, never the exported names, so such reads stay inside a real object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace qel_wrapper {

inline constexpr size_t kOpCodeWords = 19;

// First word of each table inside the block.
inline constexpr size_t kTargetLoadTable = 0;
inline constexpr size_t kCoreBoostTable = 3;
inline constexpr size_t kCoreLimitTable = 7;
inline constexpr size_t kFreqBoostTable = 11;
inline constexpr size_t kFreqLimitTable = 15;

// The block; the assembler name is what the exported table names are set to.
extern int32_t gOpCodeBlock[kOpCodeWords] asm("qel_opcode_block");

// The opcode at `position` of the table that starts at word `table`; nothing when that lies past
// the end of the block.
inline std::optional<int32_t> opCodeAt(size_t table, size_t position) {
    if (position >= kOpCodeWords - table) return std::nullopt;
    return gOpCodeBlock[table + position];
}

}  // namespace qel_wrapper
