// The counting operator new. Only the count is added: memory still comes from malloc and goes
// back through the default operator delete, which calls free.

#include "alloc_counter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local uint64_t tlAllocations = 0;

void* countedAllocation(std::size_t size) {
    ++tlAllocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

}  // namespace

namespace qel_bench {

uint64_t threadAllocations() {
    return tlAllocations;
}

}  // namespace qel_bench

void* operator new(std::size_t size) {
    return countedAllocation(size);
}

void* operator new[](std::size_t size) {
    return countedAllocation(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
