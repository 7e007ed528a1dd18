#include "platform/core/main_thread_queue.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace qorcore;

namespace {

class MainThreadQueueTest : public ::testing::Test {
protected:
    void SetUp() override { queue.RunPending(); }
    void TearDown() override {
        queue.SetWakeUpFunction({});
        while (queue.RunPending() > 0) {
        }
    }
    MainThreadQueue& queue = MainThreadQueue::Get();
};

} // namespace

TEST_F(MainThreadQueueTest, TasksFromManyThreadsRunInPostOrderPerThread) {
    constexpr int threads = 4;
    constexpr int perThread = 250;
    std::vector<std::vector<int>> seen(threads);
    std::atomic<int> wakeUps{0};
    queue.SetWakeUpFunction([&] { ++wakeUps; });
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
        workers.emplace_back([&, t] {
            EXPECT_FALSE(queue.IsMainThread());
            for (int i = 0; i < perThread; ++i)
                queue.Post([&seen, t, i] { seen[t].push_back(i); });
        });
    for (auto& w : workers)
        w.join();
    EXPECT_EQ(wakeUps.load(), threads * perThread);
    EXPECT_EQ(queue.GetPendingCount(), std::size_t(threads * perThread));
    EXPECT_EQ(queue.RunPending(), std::size_t(threads * perThread));
    for (int t = 0; t < threads; ++t) {
        ASSERT_EQ(seen[t].size(), std::size_t(perThread));
        for (int i = 0; i < perThread; ++i)
            EXPECT_EQ(seen[t][i], i);
    }
}

TEST_F(MainThreadQueueTest, TaskPostedWhileRunningWaitsForTheNextPump) {
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        queue.Post(again);
    };
    queue.Post(again);
    EXPECT_EQ(queue.RunPending(), 1u);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(queue.GetPendingCount(), 1u);
    EXPECT_EQ(queue.RunPending(), 1u);
    EXPECT_EQ(runs, 2);
    again = [&] {
        ++runs;
    };
    queue.RunPending(); // the queued copy runs once more and posts the new, final task
    queue.RunPending();
    EXPECT_EQ(runs, 4);
    EXPECT_EQ(queue.GetPendingCount(), 0u);
}

TEST_F(MainThreadQueueTest, ThrowingTaskLeavesTheRestQueued) {
    std::vector<int> order;
    queue.Post([&] { order.push_back(1); });
    queue.Post([] { throw std::runtime_error("task failed"); });
    queue.Post([&] { order.push_back(3); });
    EXPECT_THROW(queue.RunPending(), std::runtime_error);
    EXPECT_EQ(order, std::vector<int>{1});
    EXPECT_EQ(queue.GetPendingCount(), 1u);
    EXPECT_EQ(queue.RunPending(), 1u);
    EXPECT_EQ(order, (std::vector<int>{1, 3}));
}

TEST_F(MainThreadQueueTest, RefusesEmptyTasksAndPumpingOffTheMainThread) {
    EXPECT_THROW(queue.Post({}), std::invalid_argument);
    bool threw = false;
    std::thread([&] {
        try {
            queue.RunPending();
        } catch (const std::logic_error&) {
            threw = true;
        }
    }).join();
    EXPECT_TRUE(threw);
}
