#include "naivebayes/tests/AllocationMeter.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

std::size_t gLimit = static_cast<std::size_t>(-1);
std::size_t gCalls = 0;
std::size_t gLargest = 0;

}  // namespace

AllocationMeter::AllocationMeter(std::size_t limit) {
    gCalls = 0;
    gLargest = 0;
    gLimit = limit;
}

AllocationMeter::~AllocationMeter() { gLimit = static_cast<std::size_t>(-1); }

std::size_t AllocationMeter::Calls() const { return gCalls; }
std::size_t AllocationMeter::Largest() const { return gLargest; }

void* operator new(std::size_t size) {
    ++gCalls;
    gLargest = std::max(gLargest, size);
    if (size > gLimit) throw std::bad_alloc();
    void* const memory = std::malloc(std::max<std::size_t>(size, 1));
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
