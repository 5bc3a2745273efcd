#ifndef BENCH_SIDE_BY_SIDE_H
#define BENCH_SIDE_BY_SIDE_H

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

// Runs task(0) .. task(count - 1) on so many threads, each task as soon as a thread is free.
template <class Task>
void SideBySide(std::size_t threads, std::size_t count, const Task& task) {
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t at = next++; at < count; at = next++) task(at);
    };
    std::vector<std::jthread> others;
    for (std::size_t t = 1; t < threads; ++t) others.emplace_back(work);
    work();
}

#endif
