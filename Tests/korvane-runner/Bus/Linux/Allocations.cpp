#include "Allocations.h"

#include <cstdlib>
#include <new>

using korvane::test::allocationsLeft;

long korvane::test::allocationsLeft = -1;

// For the whole test program, which finds memory wherever it is not told otherwise.
void* operator new(std::size_t size) {
    if (allocationsLeft > 0) --allocationsLeft;
    void* memory = allocationsLeft == 0 ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (allocationsLeft == 0) allocationsLeft = -1; // one alone is not found
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
