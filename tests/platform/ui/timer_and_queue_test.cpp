// Timers on the headless window's virtual clock, and work posted to the main thread, which runs
// when the window pumps.
#include "platform/core/high_precision_time.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_node_manager.hpp"
#include "test_nodes.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <set>
#include <thread>

using namespace qorui;
using qafui_testing::MakeNode;
using qafui_testing::RecordingNode;

namespace {

// The polling pattern of editor views: a timer runs exactly while the node has a parent that
// receives events, checked at every tree notification.
class PollingView : public RecordingNode {
public:
    int timerID = 0;
    void UI_NodeChanged(NodeChange change) override {
        RecordingNode::UI_NodeChanged(change);
        UI_Node* recipient = UI_GetParentEventRecipientNode();
        if (!recipient && timerID != 0) {
            UI_RemoveTimer(timerID, true);
            timerID = 0;
        } else if (recipient && timerID == 0) {
            timerID = UI_NodeManager::Get().GetUniqueTimerID();
            UI_InstallTimer(0.01f, timerID);
        }
    }
};

class DeletionWitness : public RecordingNode {
public:
    explicit DeletionWitness(std::atomic<std::thread::id>* deletedOn) : deletedOn_(deletedOn) {}
    ~DeletionWitness() override { *deletedOn_ = std::this_thread::get_id(); }

private:
    std::atomic<std::thread::id>* deletedOn_;
};

class Timers : public ::testing::Test {
protected:
    void SetUp() override { window.AddNode(node); }
    HeadlessWindow window{50, 50};
    qorcore::IntrusivePtr<RecordingNode> node = MakeNode("n", {0, 0, 10, 10});
};

} // namespace

TEST_F(Timers, FireOnTheVirtualClockAtTheirDueTimes) {
    std::vector<double> times;
    node->onTimer = [&](int) {
        times.push_back(window.GetTimeSeconds());
    };
    const double start = window.GetTimeSeconds();
    ASSERT_TRUE(node->UI_InstallTimer(0.01f, 5));
    window.AdvanceTime(0.005);
    EXPECT_TRUE(times.empty());
    window.AdvanceTime(0.1);
    ASSERT_EQ(times.size(), 10u);
    for (std::size_t i = 0; i < times.size(); ++i)
        EXPECT_NEAR(times[i] - start, 0.01 * double(i + 1), 1e-6) << i;
    EXPECT_EQ(node->timerTicks, std::vector<int>(10, 5));
    using qorcore::HighPrecisionTime;
    EXPECT_NEAR(HighPrecisionTime::ConvertToSeconds(HighPrecisionTime::GetCurrentTimeStamp()) -
                    start,
                0.105, 1e-6)
        << "the window drives HighPrecisionTime";
}

TEST_F(Timers, InterleaveByDueTimeAndStopWhenRemoved) {
    ASSERT_TRUE(node->UI_InstallTimer(0.03f, 1));
    ASSERT_TRUE(node->UI_InstallTimer(0.02f, 2));
    window.AdvanceTime(0.065);
    EXPECT_EQ(node->timerTicks, (std::vector<int>{2, 1, 2, 1, 2}))
        << "at 20, 30, 40 and 60 ms, where the first installed goes first";
    EXPECT_TRUE(node->UI_RemoveTimer(1));
    EXPECT_FALSE(node->UI_RemoveTimer(1));
    node->timerTicks.clear();
    window.AdvanceTime(0.1);
    EXPECT_EQ(node->timerTicks, std::vector<int>(5, 2));
    // Installing an id again restarts it from now.
    node->timerTicks.clear();
    window.AdvanceTime(0.015);
    ASSERT_TRUE(node->UI_InstallTimer(0.02f, 2));
    window.AdvanceTime(0.019);
    EXPECT_EQ(node->timerTicks.size(), 1u) << "only the tick at 180 ms, before the restart";
    EXPECT_EQ(window.GetTimerCount(), 1u);
}

TEST_F(Timers, StopWhenTheNodeLeavesItsWindow) {
    auto child = MakeNode("c", {0, 0, 10, 10});
    node->ChildPushBack(child);
    ASSERT_TRUE(child->UI_InstallTimer(0.01f, 1));
    ASSERT_TRUE(node->UI_InstallTimer(0.01f, 2));
    window.AdvanceTime(0.02);
    EXPECT_EQ(child->timerTicks.size(), 2u);
    window.GetRoot()->ChildRemove(node.get());
    EXPECT_EQ(window.GetTimerCount(), 0u);
    window.AdvanceTime(0.1);
    EXPECT_EQ(child->timerTicks.size(), 2u);
    EXPECT_FALSE(child->UI_InstallTimer(0.01f, 1)) << "no window, no timer";
}

TEST_F(Timers, RefuseBadPeriodsAndClampTinyOnes) {
    for (float bad : {0.0f, -1.0f, NAN, INFINITY})
        EXPECT_FALSE(node->UI_InstallTimer(bad, 1)) << bad;
    ASSERT_TRUE(node->UI_InstallTimer(1e-9f, 1));
    window.AdvanceTime(0.01);
    EXPECT_EQ(node->timerTicks.size(), 10u) << "a period below a millisecond counts as one";
    EXPECT_THROW(window.AdvanceTime(-1), std::invalid_argument);
    EXPECT_THROW(window.AdvanceTime(NAN), std::invalid_argument);
}

TEST_F(Timers, HandlerMayRemoveANodeFromTheWindow) {
    auto other = MakeNode("b", {0, 0, 10, 10});
    window.AddNode(other);
    node->onTimer = [&](int) {
        window.GetRoot()->ChildRemove(other.get());
    };
    ASSERT_TRUE(node->UI_InstallTimer(0.01f, 1));
    ASSERT_TRUE(other->UI_InstallTimer(0.01f, 1));
    window.AdvanceTime(0.05);
    EXPECT_EQ(node->timerTicks.size(), 5u);
    EXPECT_TRUE(other->timerTicks.empty()) << "removed before its first tick came";
}

TEST_F(Timers, PollingViewRunsExactlyWhileItHangsInAWindow) {
    qorcore::IntrusivePtr<PollingView> view(new PollingView());
    view->SetFrame({0, 0, 10, 10});
    window.AddNode(view);
    EXPECT_NE(view->timerID, 0);
    window.AdvanceTime(0.1);
    EXPECT_EQ(view->timerTicks.size(), 10u);
    view->RemoveFromParent();
    EXPECT_EQ(view->timerID, 0);
    window.AdvanceTime(0.1);
    EXPECT_EQ(view->timerTicks.size(), 10u);
    window.AddNode(view);
    window.AdvanceTime(0.05);
    EXPECT_EQ(view->timerTicks.size(), 15u);
}

TEST(TimersAtClose, ClosingWindowTellsTheTreeAndRefusesNewTimers) {
    auto node = MakeNode("n", {0, 0, 10, 10});
    std::vector<bool> installed;
    {
        HeadlessWindow window(50, 50);
        window.AddNode(node);
        ASSERT_TRUE(node->UI_InstallTimer(0.01f, 1));
        node->onChange = [&](UI_Node::NodeChange change) {
            if (change == UI_Node::kNodeChangeRemovedFromParent)
                installed.push_back(node->UI_InstallTimer(0.01f, 2));
        };
    }
    EXPECT_EQ(installed, std::vector<bool>{false});
    EXPECT_EQ(node->GetWindow(), nullptr);
    EXPECT_EQ(node->changes.back(), int(UI_Node::kNodeChangeWindowChanged));
    std::set<int> ids;
    for (int i = 0; i < 1000; ++i) {
        const int id = UI_NodeManager::Get().GetUniqueTimerID();
        EXPECT_NE(id, 0);
        EXPECT_TRUE(ids.insert(id).second) << "unique timer ids never repeat";
    }
}

TEST_F(Timers, WorkFromOtherThreadsRunsWhenTheWindowPumps) {
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

    // A node released on another thread is deleted on the main thread, at the next pump.
    std::atomic<std::thread::id> deletedOn{};
    qorcore::IntrusivePtr<DeletionWitness> witness(new DeletionWitness(&deletedOn));
    std::thread([n = std::move(witness)]() mutable { n.reset(); }).join();
    EXPECT_EQ(deletedOn.load(), std::thread::id());
    window.AdvanceTime(0.01);
    EXPECT_EQ(deletedOn.load(), std::this_thread::get_id());
}
