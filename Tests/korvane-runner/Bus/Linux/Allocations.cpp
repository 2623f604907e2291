#include "Allocations.h"

#include <cstdlib>
#include <malloc.h>
#include <new>

using korvane::test::allocated;
using korvane::test::allocationsLeft;

long korvane::test::allocationsLeft = -1;
std::size_t korvane::test::allocated = 0;

namespace {

void giveBack(void* memory) noexcept {
    allocated -= ::malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

// For the whole test program, which finds memory wherever it is not told otherwise.
void* operator new(std::size_t size) {
    if (allocationsLeft > 0) --allocationsLeft;
    void* memory = allocationsLeft == 0 ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (allocationsLeft == 0) allocationsLeft = -1; // one alone is not found
    if (memory == nullptr) throw std::bad_alloc();
    allocated += ::malloc_usable_size(memory);
    return memory;
}
void operator delete(void* memory) noexcept { giveBack(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { giveBack(memory); }
