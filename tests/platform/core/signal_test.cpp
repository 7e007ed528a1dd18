#include "platform/core/signal.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace qorcore;

TEST(Signal, SlotsRunInConnectionOrderWithArguments) {
    Signal<void(int, const std::string&)> signal;
    std::vector<std::string> calls;
    Connection a = signal.Connect(
        [&](int n, const std::string& s) { calls.push_back("a" + std::to_string(n) + s); });
    Connection b = signal.Connect(
        [&](int n, const std::string& s) { calls.push_back("b" + std::to_string(n) + s); });
    signal(7, "x");
    EXPECT_EQ(calls, (std::vector<std::string>{"a7x", "b7x"}));
    EXPECT_EQ(signal.GetSlotCount(), 2u);
}

TEST(Signal, ResultIsTheLastSlotsOrEmpty) {
    Signal<int(int)> signal;
    EXPECT_FALSE(signal(1).has_value());
    Connection a = signal.Connect([](int v) { return v + 1; });
    Connection b = signal.Connect([](int v) { return v * 10; });
    EXPECT_EQ(*signal.Emit(4), 40);
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
    // A dropped result drops the connection at once.
    (void)signal.Connect([&] { ++calls; });
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
        Connection copy = connection;
        copy.Disconnect();
        EXPECT_FALSE(connection.IsConnected());
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
