// Shared ownership across threads, the main-thread queue, and signals with their connections.
#include "platform/core/delete_on_main_thread_ref_counted_object.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/core/ref_counted_object.hpp"
#include "platform/core/signal.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

using namespace qorcore;

namespace {

struct Tracked : RefCountedObject {
    explicit Tracked(int* deaths) : deaths_(deaths) {}
    ~Tracked() override { ++*deaths_; }
    int* deaths_;
};

struct Derived : Tracked {
    using Tracked::Tracked;
};

struct MainThreadOnly : DeleteOnMainThreadRefCountedObject {
    explicit MainThreadOnly(std::atomic<std::thread::id>* where) : where_(where) {}
    ~MainThreadOnly() override { *where_ = std::this_thread::get_id(); }
    std::atomic<std::thread::id>* where_;
};

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

TEST(IntrusivePtr, CountsCopiesMovesResetsAndSharedAdoption) {
    int deaths = 0;
    {
        IntrusivePtr<Tracked> a(new Tracked(&deaths));
        EXPECT_EQ(a->GetRefCount(), 1);
        IntrusivePtr<Tracked> b = a;
        EXPECT_EQ(a->GetRefCount(), 2);
        IntrusivePtr<Tracked> c = std::move(b);
        EXPECT_FALSE(b);
        EXPECT_EQ(c->GetRefCount(), 2);
        c.reset();
        EXPECT_EQ(a->GetRefCount(), 1);
        const auto& same = a;
        a = same; // self-assignment keeps the object
        EXPECT_EQ(deaths, 0);
        EXPECT_EQ(a->GetRefCount(), 1);
    }
    EXPECT_EQ(deaths, 1);
    // Adopting one raw pointer twice shares the count that lives in the object.
    Tracked* raw = new Tracked(&deaths);
    IntrusivePtr<Tracked> a(raw), b(raw);
    EXPECT_EQ(raw->GetRefCount(), 2);
    a.reset();
    EXPECT_EQ(deaths, 1);
    b.reset();
    EXPECT_EQ(deaths, 2);
    // Copying an object starts a fresh count.
    IntrusivePtr<Tracked> original(new Tracked(&deaths));
    IntrusivePtr<Tracked> copy(new Tracked(*original));
    EXPECT_EQ(copy->GetRefCount(), 1);
    EXPECT_EQ(original->GetRefCount(), 1);
}

TEST(IntrusivePtr, ConvertsAndCastsBetweenRelatedTypes) {
    int deaths = 0;
    IntrusivePtr<Derived> derived = MakeIntrusive<Derived>(&deaths);
    IntrusivePtr<Tracked> base = derived;
    EXPECT_EQ(base, derived);
    EXPECT_EQ(derived->GetRefCount(), 2);
    EXPECT_EQ(DynamicPointerCast<Derived>(base).get(), derived.get());
    IntrusivePtr<Tracked> plain = MakeIntrusive<Tracked>(&deaths);
    EXPECT_FALSE(DynamicPointerCast<Derived>(plain));
    EXPECT_EQ((std::unordered_set<IntrusivePtr<Tracked>>{base, plain, base}.size()), 2u);
    EXPECT_TRUE(IntrusivePtr<Tracked>() == nullptr);
}

TEST(RefCountedObject, ConcurrentReferencesDeleteExactlyOnce) {
    int deaths = 0;
    {
        IntrusivePtr<Tracked> shared(new Tracked(&deaths));
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([shared] {
                for (int i = 0; i < 10000; ++i)
                    IntrusivePtr<Tracked>(shared).reset();
            });
        for (auto& t : threads)
            t.join();
        EXPECT_EQ(shared->GetRefCount(), 1);
    }
    EXPECT_EQ(deaths, 1);
}

TEST_F(MainThreadQueueTest, LastReleaseOffTheMainThreadDefersDeletionToTheQueue) {
    ASSERT_TRUE(queue.IsMainThread());
    std::atomic<std::thread::id> where{};
    IntrusivePtr<MainThreadOnly> object(new MainThreadOnly(&where));
    std::thread([p = std::move(object)]() mutable { p.reset(); }).join();
    EXPECT_EQ(where.load(), std::thread::id()) << "deleted off the main thread";
    EXPECT_EQ(queue.GetPendingCount(), 1u);
    EXPECT_EQ(queue.RunPending(), 1u);
    EXPECT_EQ(where.load(), std::this_thread::get_id());

    IntrusivePtr<MainThreadOnly> local(new MainThreadOnly(&where));
    where = std::thread::id();
    local.reset();
    EXPECT_EQ(where.load(), std::this_thread::get_id()) << "on the main thread it goes at once";
    EXPECT_EQ(queue.GetPendingCount(), 0u);
}

TEST_F(MainThreadQueueTest, TasksFromManyThreadsRunInPostOrderPerThread) {
    constexpr int threads = 4, perThread = 250;
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
    std::vector<int> inOrder(perThread);
    for (int i = 0; i < perThread; ++i)
        inOrder[i] = i;
    for (int t = 0; t < threads; ++t)
        EXPECT_EQ(seen[t], inOrder) << "thread " << t;
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

TEST_F(MainThreadQueueTest, ThrowingTaskLeavesTheRestQueuedAndMisuseIsRefused) {
    std::vector<int> order;
    queue.Post([&] { order.push_back(1); });
    queue.Post([] { throw std::runtime_error("task failed"); });
    queue.Post([&] { order.push_back(3); });
    EXPECT_THROW(queue.RunPending(), std::runtime_error);
    EXPECT_EQ(order, std::vector<int>{1});
    EXPECT_EQ(queue.GetPendingCount(), 1u);
    EXPECT_EQ(queue.RunPending(), 1u);
    EXPECT_EQ(order, (std::vector<int>{1, 3}));

    EXPECT_THROW(queue.Post({}), std::invalid_argument);
    bool threw = false;
    std::thread([&] {
        try {
            queue.RunPending();
        } catch (const std::logic_error&) {
            threw = true;
        }
    }).join();
    EXPECT_TRUE(threw) << "only the main thread pumps";
}

TEST(Signal, SlotsRunInOrderAndTheResultIsTheLastSlots) {
    Signal<void(int, const std::string&)> signal;
    std::vector<std::string> calls;
    auto slot = [&](const char* name) {
        return [&calls, name](int n, const std::string& s) {
            calls.push_back(name + std::to_string(n) + s);
        };
    };
    Connection a = signal.Connect(slot("a")), b = signal.Connect(slot("b"));
    signal(7, "x");
    EXPECT_EQ(calls, (std::vector<std::string>{"a7x", "b7x"}));
    EXPECT_EQ(signal.GetSlotCount(), 2u);

    Signal<int(int)> valued;
    EXPECT_FALSE(valued(1).has_value());
    Connection plusOne = valued.Connect([](int v) { return v + 1; });
    Connection timesTen = valued.Connect([](int v) { return v * 10; });
    EXPECT_EQ(*valued.Emit(4), 40);
}

TEST(Connection, EndsWhenTheLastCopyIsReleased) {
    Signal<void()> signal;
    int calls = 0;
    Connection first = signal.Connect([&] { ++calls; });
    Connection copy = first;
    first.Release();
    signal();
    EXPECT_EQ(calls, 1) << "a copy still holds the connection";
    EXPECT_TRUE(copy.IsConnected());
    copy.Release();
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(signal.GetSlotCount(), 0u);
    (void)signal.Connect([&] { ++calls; }); // a dropped result drops the connection at once
    signal();
    EXPECT_EQ(calls, 1);
}

TEST(Connection, SurvivesTheSignalAndDisconnectsExplicitly) {
    Connection connection;
    EXPECT_FALSE(connection.IsConnected());
    connection.Disconnect(); // harmless when empty
    {
        Signal<void()> signal;
        connection = signal.Connect([] {});
        EXPECT_TRUE(connection.IsConnected());
        Connection(connection).Disconnect();
        EXPECT_FALSE(connection.IsConnected()) << "a copy disconnects them all";
        connection = signal.Connect([] {});
    }
    EXPECT_FALSE(connection.IsConnected()) << "the signal is gone";
}

TEST(ScopedConnection, DisconnectsOnScopeExitAndReassignmentDespiteCopies) {
    Signal<void()> signal;
    int a = 0, b = 0;
    Connection keptCopy;
    {
        ScopedConnection scoped = signal.Connect([&] { ++a; });
        signal();
        ScopedConnection moved = std::move(scoped);
        signal();
        moved = signal.Connect([&] { ++b; });
        signal();
        keptCopy = Connection(); // no effect on the scoped one
        EXPECT_TRUE(moved.IsConnected());
    }
    signal();
    EXPECT_EQ(a, 2);
    EXPECT_EQ(b, 1);
    EXPECT_TRUE(signal.IsEmpty());
}

TEST(Signal, SlotMayDisconnectItselfWhileRunningAndEmptySlotIsRefused) {
    Signal<void()> signal;
    int calls = 0;
    Connection self;
    self = signal.Connect([&] {
        ++calls;
        self.Disconnect();
    });
    signal();
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_THROW((void)signal.Connect({}), std::invalid_argument);
    Connection other = signal.Connect([&] { ++calls; });
    signal.DisconnectAll();
    signal();
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(other.IsConnected());
}
