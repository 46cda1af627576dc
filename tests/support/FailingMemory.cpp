#include "FailingMemory.h"

#include <cstdlib>
#include <new>

// The linker has calls of malloc lead to __wrap_malloc, and those of __real_malloc to malloc; the others
// likewise.
extern "C" {
void* realMalloc(std::size_t size) __asm__("__real_malloc");
void* realCalloc(std::size_t count, std::size_t size) __asm__("__real_calloc");
void* realRealloc(void* memory, std::size_t size) __asm__("__real_realloc");
void* countedMalloc(std::size_t size) __asm__("__wrap_malloc");
void* countedCalloc(std::size_t count, std::size_t size) __asm__("__wrap_calloc");
void* countedRealloc(void* memory, std::size_t size) __asm__("__wrap_realloc");
}

namespace {

/** How many allocations from now the one is that fails; 0 for none. */
unsigned left = 0;
bool failsForGood = false;
unsigned failed = 0;
std::size_t used = 0;
std::size_t asked = 0;

void* allocate(std::size_t size) {
    ++asked;
    if (left != 0 && --left == 0) {
        ++failed;
        left = failsForGood ? 1 : 0;
        return nullptr;
    }
    void* const memory = realMalloc(size != 0 ? size : 1);
    used += memory != nullptr ? 1 : 0;
    return memory;
}

void release(void* memory) {
    used -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

} // namespace

void FailingMemory::failAt(unsigned number, bool forGood) {
    left = number;
    failsForGood = forGood;
    failed = 0;
}

unsigned FailingMemory::failures() {
    return failed;
}

std::size_t FailingMemory::inUse() {
    return used;
}

std::size_t FailingMemory::taken() {
    return asked;
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

void* countedMalloc(std::size_t size) {
    ++asked;
    return realMalloc(size);
}
void* countedCalloc(std::size_t count, std::size_t size) {
    ++asked;
    return realCalloc(count, size);
}
void* countedRealloc(void* memory, std::size_t size) {
    ++asked;
    return realRealloc(memory, size);
}
