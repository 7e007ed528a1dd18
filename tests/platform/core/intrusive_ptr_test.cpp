#include "platform/core/delete_on_main_thread_ref_counted_object.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/core/ref_counted_object.hpp"

#include <gtest/gtest.h>

#include <atomic>
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

} // namespace

TEST(IntrusivePtr, CountsCopiesMovesAndResets) {
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
        a = a; // self-assignment keeps the object
        EXPECT_EQ(deaths, 0);
        EXPECT_EQ(a->GetRefCount(), 1);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(IntrusivePtr, AdoptingRawPointerTwiceSharesOneCount) {
    int deaths = 0;
    Tracked* raw = new Tracked(&deaths);
    IntrusivePtr<Tracked> a(raw);
    IntrusivePtr<Tracked> b(raw); // the count lives in the object
    EXPECT_EQ(raw->GetRefCount(), 2);
    a.reset();
    EXPECT_EQ(deaths, 0);
    b.reset();
    EXPECT_EQ(deaths, 1);
}

TEST(IntrusivePtr, ConvertsAndCastsBetweenRelatedTypes) {
    int deaths = 0;
    IntrusivePtr<Derived> derived = MakeIntrusive<Derived>(&deaths);
    IntrusivePtr<Tracked> base = derived;
    EXPECT_EQ(base, derived);
    EXPECT_EQ(derived->GetRefCount(), 2);
    IntrusivePtr<Derived> back = DynamicPointerCast<Derived>(base);
    EXPECT_EQ(back.get(), derived.get());
    IntrusivePtr<Tracked> plain = MakeIntrusive<Tracked>(&deaths);
    EXPECT_FALSE(DynamicPointerCast<Derived>(plain));
    std::unordered_set<IntrusivePtr<Tracked>> set{base, plain, base};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_TRUE(IntrusivePtr<Tracked>() == nullptr);
}

TEST(RefCountedObject, CopyingAnObjectStartsAFreshCount) {
    int deaths = 0;
    IntrusivePtr<Tracked> a(new Tracked(&deaths));
    IntrusivePtr<Tracked> b(new Tracked(*a));
    EXPECT_EQ(b->GetRefCount(), 1);
    EXPECT_EQ(a->GetRefCount(), 1);
}

TEST(RefCountedObject, ConcurrentReferencesDeleteExactlyOnce) {
    int deaths = 0;
    {
        IntrusivePtr<Tracked> shared(new Tracked(&deaths));
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([shared] {
                for (int i = 0; i < 10000; ++i) {
                    IntrusivePtr<Tracked> copy = shared;
                    copy.reset();
                }
            });
        for (auto& t : threads)
            t.join();
        EXPECT_EQ(shared->GetRefCount(), 1);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(DeleteOnMainThreadRefCountedObject, LastReleaseOffTheMainThreadDefersToTheQueue) {
    auto& queue = MainThreadQueue::Get();
    ASSERT_TRUE(queue.IsMainThread());
    queue.RunPending();
    std::atomic<std::thread::id> where{};
    IntrusivePtr<MainThreadOnly> object(new MainThreadOnly(&where));
    std::thread worker([p = std::move(object)]() mutable { p.reset(); });
    worker.join();
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
