#include "embedded/threads/ParallelTasks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace embedded {
namespace {

TEST(ParallelTasks, EachTaskRunsOnceWhateverTheThreads) {
    for (const std::int32_t threads : {0, 1, 2, 7}) {
        std::vector<std::atomic<int>> calls(1000);
        RunTasks(threads, 1000, [&](std::int32_t i) { ++calls[static_cast<std::size_t>(i)]; });
        for (const auto& count : calls) EXPECT_EQ(count, 1) << threads;
    }
}

TEST(ParallelTasks, NoTaskIsNoCall) {
    for (const std::int32_t count : {0, -1}) {
        RunTasks(2, count, [](std::int32_t) { FAIL(); });
    }
}

TEST(ParallelTasks, OneThreadIsTheCallersAndGoesInOrder) {
    std::vector<std::int32_t> order;
    RunTasks(1, 5, [&](std::int32_t i) { order.push_back(i); });
    EXPECT_EQ(order, (std::vector<std::int32_t>{0, 1, 2, 3, 4}));
}

TEST(ParallelTasks, TwoThreadsWorkSideBySide) {
    // Each of the two tasks ends only when the other has begun.
    std::atomic<int> begun = 0;
    RunTasks(2, 2, [&](std::int32_t) {
        ++begun;
        while (begun < 2) std::this_thread::yield();
    });
    EXPECT_EQ(begun, 2);
}

TEST(ParallelTasks, TheExceptionOfTheLowestTaskComesOut) {
    for (const std::int32_t threads : {1, 2, 4}) {
        try {
            RunTasks(threads, 100, [](std::int32_t i) {
                if (i >= 3) throw std::runtime_error(std::to_string(i));
            });
            FAIL() << "nothing came out";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "3");
        }
    }
}

TEST(ParallelTasks, NoTaskBeginsAfterAnException) {
    std::int32_t calls = 0;
    EXPECT_THROW(RunTasks(1, 100,
                          [&](std::int32_t i) {
                              ++calls;
                              if (i == 2) throw std::runtime_error("stop");
                          }),
                 std::runtime_error);
    EXPECT_EQ(calls, 3);
}

TEST(ParallelTasks, ThereIsAProcessor) { EXPECT_GE(AvailableThreads(), 1); }

}  // namespace
}  // namespace embedded
