#ifndef PREDSEL_NAIVEBAYES_TESTS_ALLOCATIONMETER_H
#define PREDSEL_NAIVEBAYES_TESTS_ALLOCATIONMETER_H

#include <cstddef>

/// Watches operator new of this program while it lives: how often it is called, the largest piece
/// that is asked for, and, with a limit, failure of every larger piece. One at a time.
class AllocationMeter {
 public:
    explicit AllocationMeter(std::size_t limit = static_cast<std::size_t>(-1));
    ~AllocationMeter();
    AllocationMeter(const AllocationMeter&) = delete;
    AllocationMeter& operator=(const AllocationMeter&) = delete;

    std::size_t Calls() const;
    std::size_t Largest() const;
};

#endif  // PREDSEL_NAIVEBAYES_TESTS_ALLOCATIONMETER_H
