#include "platform/core/main_thread_queue.hpp"
#include "platform/ui/headless_window.hpp"
#include "test_nodes.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace qorui;
using qafui_testing::MakeNode;
using qafui_testing::RecordingNode;

namespace {

class CountedNode : public RecordingNode {
public:
    explicit CountedNode(std::atomic<std::thread::id>* deletedOn) : deletedOn_(deletedOn) {}
    ~CountedNode() override { *deletedOn_ = std::this_thread::get_id(); }

private:
    std::atomic<std::thread::id>* deletedOn_;
};

} // namespace

TEST(MainQueue, WorkFromOtherThreadsRunsWhenTheWindowPumps) {
    HeadlessWindow window(100, 100);
    auto node = MakeNode("meter", {0, 0, 100, 100});
    window.AddNode(node);
    window.Render();
    std::vector<int> levels;
    std::vector<std::thread> producers;
    for (int t = 0; t < 3; ++t)
        producers.emplace_back([&, t] {
            for (int i = 0; i < 10; ++i)
                qorcore::PostToMainThread([&, t, i] {
                    levels.push_back(t * 100 + i);
                    node->EmitInvalidate();
                });
        });
    for (auto& p : producers)
        p.join();
    EXPECT_TRUE(levels.empty()) << "nothing runs off the main thread";
    window.AdvanceTime(0.0);
    EXPECT_EQ(levels.size(), 30u);
    EXPECT_FALSE(window.GetDirtyRegion().IsEmpty());
    qorcore::PostToMainThread([&] { levels.push_back(-1); });
    EXPECT_EQ(window.PumpMainQueue(), 1u);
    EXPECT_EQ(levels.back(), -1);
}

TEST(MainQueue, NodeReleasedOnAnotherThreadIsDeletedOnTheMainThread) {
    HeadlessWindow window(10, 10);
    std::atomic<std::thread::id> deletedOn{};
    qorcore::IntrusivePtr<CountedNode> node(new CountedNode(&deletedOn));
    std::thread([n = std::move(node)]() mutable { n.reset(); }).join();
    EXPECT_EQ(deletedOn.load(), std::thread::id());
    window.AdvanceTime(0.01);
    EXPECT_EQ(deletedOn.load(), std::this_thread::get_id());
}
