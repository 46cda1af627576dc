#include "FailingMemory.h"

#include <cstdlib>
#include <new>

namespace {

/** How many allocations from now the one is that fails; 0 for none. */
unsigned left = 0;
bool failsForGood = false;
bool failed = false;
std::size_t used = 0;

void* allocate(std::size_t size) {
    if (left != 0 && --left == 0) {
        failed = true;
        left = failsForGood ? 1 : 0;
        return nullptr;
    }
    void* const memory = std::malloc(size != 0 ? size : 1); // NOLINT: what memory is made of
    used += memory != nullptr ? 1 : 0;
    return memory;
}

void release(void* memory) {
    used -= memory != nullptr ? 1 : 0;
    std::free(memory); // NOLINT: what memory is made of
}

} // namespace

void FailingMemory::failAt(unsigned number, bool forGood) {
    left = number;
    failsForGood = forGood;
    failed = false;
}

bool FailingMemory::hasFailed() {
    return failed;
}

std::size_t FailingMemory::inUse() {
    return used;
}

void* operator new(std::size_t size) {
    if (void* const memory = allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    release(memory);
}
