#include "framework/audio_filter_editor_view_base.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

using namespace qoraudiofiltersui;
using qoraudiofilterhost::ParameterDescriptor;
using qoraudiofilterhost::ParameterStoreFilter;
using qorcore::IntrusivePtr;
using Kind = ParameterStoreFilter::CallKind;

namespace {

/// Opens the protected operations to the tests.
class TestView : public AudioFilterEditorViewBase {
public:
    using AudioFilterEditorViewBase::AddParameterObserver;
    using AudioFilterEditorViewBase::AudioFilterEditorViewBase;
    using AudioFilterEditorViewBase::SetAllowObserverNotificationDuringSyncParameters;
    using AudioFilterEditorViewBase::SyncParameters;

    void SyncParameters() override {
        ++syncs;
        AudioFilterEditorViewBase::SyncParameters();
    }
    int syncs = 0;
};

std::shared_ptr<ParameterStoreFilter> MakeFilter() {
    return std::make_shared<ParameterStoreFilter>(std::vector<ParameterDescriptor>{
        {"a", 0.0f, 1.0f, 0.5f}, {"b", 0.0f, 1.0f, 0.0f}, {"c", 0.0f, 1.0f, 0.0f}});
}

} // namespace

TEST(EditorViewTimer, PollsExactlyWhileInAWindow) {
    qorui::HeadlessWindow window(100, 100);
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    EXPECT_EQ(view->GetTimerID(), 0) << "no timer at construction";

    IntrusivePtr<qorui::UI_Node> holder(new qorui::UI_Node);
    holder->ChildPushBack(view);
    EXPECT_EQ(view->GetTimerID(), 0) << "a parent outside a window receives no events";

    window.AddNode(holder);
    const int firstId = view->GetTimerID();
    ASSERT_NE(firstId, 0);
    EXPECT_TRUE(window.HasTimer(view.get(), firstId));
    window.AdvanceTime(0.1);
    EXPECT_EQ(view->syncs, 10) << "100 ticks a second";

    holder->RemoveFromParent();
    EXPECT_EQ(view->GetTimerID(), 0);
    EXPECT_FALSE(window.HasTimer(view.get(), firstId));
    window.AdvanceTime(0.1);
    EXPECT_EQ(view->syncs, 10) << "a detached view does not poll";

    window.AddNode(holder);
    const int secondId = view->GetTimerID();
    EXPECT_NE(secondId, 0);
    EXPECT_NE(secondId, firstId) << "attaching again takes a new id";
    window.AdvanceTime(0.05);
    EXPECT_EQ(view->syncs, 15);
    holder->RemoveFromParent();
}

TEST(EditorViewTimer, ForeignTimerIdsAreSwallowedWithoutSynchronising) {
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    qorui::HeadlessWindow window(100, 100);
    window.AddNode(view);
    const int id = view->GetTimerID();
    EXPECT_TRUE(view->UI_DoTimerNotify(id + 1000));
    EXPECT_EQ(view->syncs, 0);
    EXPECT_TRUE(view->UI_DoTimerNotify(id));
    EXPECT_EQ(view->syncs, 1);
    view->RemoveFromParent();
}

TEST(EditorViewObservers, FireInRegistrationOrderAndWriteQuietly) {
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    std::vector<std::string> log;
    view->AddParameterObserver(0, [&] { log.push_back("first on 0"); });
    view->AddParameterObserver(1, [&] { log.push_back("on 1"); });
    view->AddParameterObserver(0, [&] { log.push_back("second on 0"); });
    EXPECT_TRUE(log.empty()) << "registration calls nothing";

    view->SyncParameters();
    EXPECT_TRUE(log.empty()) << "nothing changed";
    filter->StoreValue(0, 0.25f);
    filter->ClearCalls();
    view->SyncParameters();
    EXPECT_EQ(log, (std::vector<std::string>{"first on 0", "second on 0"}));
    const std::vector<ParameterStoreFilter::Call> expected{
        {Kind::kPrepareParameterSync, -1, 0.0f},
        {Kind::kSetParameterQuietly, 0, 0.25f},
        {Kind::kSetParameterQuietly, 0, 0.25f},
    };
    EXPECT_EQ(filter->GetCalls(), expected);

    log.clear();
    view->SyncParameters();
    EXPECT_TRUE(log.empty()) << "each record keeps its last value";
}

TEST(EditorViewObservers, AbsorbChangesWhileNotificationIsOff) {
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    int calls = 0;
    view->AddParameterObserver(1, [&] { ++calls; });
    view->SetAllowObserverNotificationDuringSyncParameters(false);
    filter->StoreValue(1, 0.5f);
    filter->ClearCalls();
    view->SyncParameters();
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(filter->GetCalls(Kind::kSetParameterQuietly).size(), 1u)
        << "the value is still taken over";
    view->SetAllowObserverNotificationDuringSyncParameters(true);
    view->SyncParameters();
    EXPECT_EQ(calls, 0) << "the absorbed change stays silent after notification returns";
    filter->StoreValue(1, 0.75f);
    view->SyncParameters();
    EXPECT_EQ(calls, 1);
}

TEST(EditorViewObservers, NaNFiresOnEveryTick) {
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    int calls = 0;
    view->AddParameterObserver(2, [&] { ++calls; });
    filter->StoreValue(2, std::numeric_limits<float>::quiet_NaN());
    for (int i = 0; i < 3; ++i)
        view->SyncParameters();
    EXPECT_EQ(calls, 3);
}

TEST(EditorViewObservers, OverridesReplaceTheStoredValueOnlyWhenTheyDiffer) {
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    int calls = 0;
    view->AddParameterObserver(0, [&] { ++calls; });
    filter->SetOverrideValue(0, 0.5f); // equal to the stored value
    view->SyncParameters();
    EXPECT_EQ(calls, 0) << "an override equal to the value changes nothing";
    filter->SetOverrideValue(0, 0.9f);
    filter->ClearCalls();
    view->SyncParameters();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(filter->GetCalls(Kind::kSetParameterQuietly).front().value, 0.9f);
}

TEST(EditorViewObservers, AnObserverMayRegisterAnotherThatRunsInTheSameTick) {
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    std::vector<std::string> log;
    view->AddParameterObserver(0, [&] {
        log.push_back("outer");
        for (int i = 0; i < 20; ++i) // enough to move the vector
            view->AddParameterObserver(1, [&] { log.push_back("inner"); });
    });
    filter->StoreValue(0, 0.1f);
    view->SyncParameters();
    EXPECT_EQ(log, std::vector<std::string>{"outer"}) << "new records start at the current value";
    EXPECT_EQ(view->GetParameterObserverCount(), 21u);
    filter->StoreValue(1, 0.3f);
    view->SyncParameters();
    EXPECT_EQ(log.size(), 21u);
}

TEST(EditorViewObservers, AnEmptyObserverFailsWithBadFunctionCall) {
    auto filter = MakeFilter();
    IntrusivePtr<TestView> view(new TestView(filter));
    view->AddParameterObserver(0, nullptr);
    filter->StoreValue(0, 0.2f);
    EXPECT_THROW(view->SyncParameters(), std::bad_function_call);
    EXPECT_THROW(view->AddParameterObserver(5, [] {}), std::out_of_range)
        << "the filter refuses an unknown index at registration";
}
