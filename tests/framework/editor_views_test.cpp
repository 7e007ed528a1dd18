// The editor views: the base's timer, which polls the filter only while the view is in a
// window, and its parameter observers (order, quiet writes, absorbed changes, NaN, overrides,
// re-entry); the archived-node view's loading through the resource manager, custom nodes,
// connected controls, the library's own archive classes, sizes, the ".V7" archive under the
// newer look and the archived tool tips.
#include "controls/color_field.hpp"
#include "controls/edit_number.hpp"
#include "framework/audio_filter_editor_view_base.hpp"
#include "framework/audio_filter_editor_xml_view.hpp"
#include "framework/resource_manager.hpp"
#include "platform/archive/node_archive_writer.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_tool_tip.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <unistd.h>
#include <vector>

using namespace qoraudiofiltersui;
using namespace qafui_testing::archive;
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

    void SyncParameters() override {
        ++syncs;
        AudioFilterEditorViewBase::SyncParameters();
    }
    int syncs = 0;
};

class EditorView : public ::testing::Test {
protected:
    std::shared_ptr<ParameterStoreFilter> filter =
        std::make_shared<ParameterStoreFilter>(std::vector<qoraudiofilterhost::ParameterDescriptor>{
            {"a", 0.0f, 1.0f, 0.5f}, {"b", 0.0f, 1.0f, 0.0f}, {"c", 0.0f, 1.0f, 0.0f}});
    IntrusivePtr<TestView> view{new TestView(filter)};
    qorui::HeadlessWindow window{100, 100};
    int calls = 0;
    std::function<void()> counting = [this] {
        ++calls;
    };
};

TEST_F(EditorView, TheTimerPollsExactlyWhileInAWindow) {
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

    // Foreign timer ids are swallowed without synchronising.
    EXPECT_TRUE(view->UI_DoTimerNotify(secondId + 1000));
    EXPECT_EQ(view->syncs, 15);
    EXPECT_TRUE(view->UI_DoTimerNotify(secondId));
    EXPECT_EQ(view->syncs, 16);
    holder->RemoveFromParent();
}

TEST_F(EditorView, ObserversFireInRegistrationOrderAndWriteQuietly) {
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
    EXPECT_EQ(filter->GetCalls(),
              (std::vector<ParameterStoreFilter::Call>{{Kind::kPrepareParameterSync, -1, 0.0f},
                                                       {Kind::kSetParameterQuietly, 0, 0.25f},
                                                       {Kind::kSetParameterQuietly, 0, 0.25f}}));
    log.clear();
    view->SyncParameters();
    EXPECT_TRUE(log.empty()) << "each record keeps its last value";
}

TEST_F(EditorView, ObserversAbsorbChangesWhileNotificationIsOff) {
    view->AddParameterObserver(1, counting);
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

TEST_F(EditorView, ObserversOfNaNFireOnEveryTick) {
    view->AddParameterObserver(2, counting);
    filter->StoreValue(2, std::numeric_limits<float>::quiet_NaN());
    for (int i = 0; i < 3; ++i)
        view->SyncParameters();
    EXPECT_EQ(calls, 3);
}

TEST_F(EditorView, OverridesReplaceTheStoredValueOnlyWhenTheyDiffer) {
    view->AddParameterObserver(0, counting);
    filter->SetOverrideValue(0, 0.5f); // equal to the stored value
    view->SyncParameters();
    EXPECT_EQ(calls, 0) << "an override equal to the value changes nothing";
    filter->SetOverrideValue(0, 0.9f);
    filter->ClearCalls();
    view->SyncParameters();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(filter->GetCalls(Kind::kSetParameterQuietly).front().value, 0.9f);
}

TEST_F(EditorView, AnObserverMayRegisterAnotherThatRunsInTheSameTick) {
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

TEST_F(EditorView, AnEmptyObserverFailsWithBadFunctionCall) {
    view->AddParameterObserver(0, nullptr);
    filter->StoreValue(0, 0.2f);
    EXPECT_THROW(view->SyncParameters(), std::bad_function_call);
    EXPECT_THROW(view->AddParameterObserver(5, [] {}), std::out_of_range)
        << "the filter refuses an unknown index at registration";
}

std::string EditorArchive(const std::string& rootId) {
    const std::string gain =
        Node("qorui::ui::UI_HotTextNumber",
             {Section("qorui::ui::UI_HotTextNumber", Pair("maxValue", Double("1")) +
                                                         Pair("minValue", Double("0")) +
                                                         Pair("value", Double("0.25"))),
              Section("qorui::ui::UI_HotText"), Section("qorui::ui::UI_InteractiveControlView"),
              Section("qorui::ui::UI_ControlView"), SubViewSection(),
              NodeSection("Gain", 4, 4, 60, 18,
                          Pair("tooltip", UStr("($$$/qafui/Test/GainTip=Output gain)")))});
    const std::string graph =
        Node("qorui::ui::UI_SubView", {SubViewSection(), NodeSection("Graph", 4, 30, 100, 50)});
    const std::string tint =
        Node("qoraudiofiltersui::ColorField",
             {Section("qoraudiofiltersui::ColorField", Pair("allowUserColorChange", Bool(false))),
              Section("qorui::ui::UI_InteractiveControlView"), Section("qorui::ui::UI_ControlView"),
              SubViewSection(), NodeSection("Tint", 110, 4, 30, 18)});
    const std::string semitones =
        Node("qoraudiofiltersui::EditNumber_Horizontal",
             {Section("qoraudiofiltersui::EditNumber_Horizontal"),
              Section("qoraudiofiltersui::EditNumber", Pair("maxValue", Double("12")) +
                                                           Pair("minValue", Double("-12")) +
                                                           Pair("label", UStr("Semitones:"))),
              Section("qorui::ui::UI_InteractiveControlView"), Section("qorui::ui::UI_ControlView"),
              SubViewSection(), NodeSection("Semitones", 110, 60, 120, 20)});
    return Document(Node("qorui::ui::UI_SubView", {SubViewSection({gain, graph, tint, semitones}),
                                                   NodeSection(rootId, 0, 0, 240, 120)}));
}

class GraphNode : public qorui::UI_Node {};

/// Supplies the graph and connects the gain to parameter 0, as an editor does.
class TestXMLView : public AudioFilterEditorXMLView {
public:
    using AudioFilterEditorXMLView::AudioFilterEditorXMLView;
    using AudioFilterEditorXMLView::GetContentView;

    IntrusivePtr<qorui::UI_Node> CreateCustomNode(const std::string& name) const override {
        return name == "Graph" ? IntrusivePtr<qorui::UI_Node>(new GraphNode) : nullptr;
    }
    void ConnectControls() override {
        ++connectCount;
        gain = dynamic_cast<qorui::UI_HotTextNumber*>(GetContentView()->FindNodeByID("Gain"));
        gain->NotifyWhenChanged([this](const qorui::UI_ControlChangedMessage&) {
            GetFilter()->SetParameterValue(0, float(gain->GetValue()));
        });
        AddParameterObserver(0, [this] { gain->SetValue(GetFilter()->GetParameterValue(0)); });
    }

    int connectCount = 0;
    qorui::UI_HotTextNumber* gain = nullptr;
};

/// Writes the test editor's archive for each look and a broken one into `folder`.
const std::filesystem::path& WithArchives(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const auto& [name, text] : std::vector<std::pair<std::string, std::string>>{
             {"TESTEDITOR.xml", EditorArchive("classic")},
             {"TESTEDITOR.V7.xml", EditorArchive("v7")},
             {"BROKEN.xml", "<?xml version='1.0'?>\r\n<prop.list/>\r\n"}})
        std::ofstream(folder / name, std::ios::binary) << text;
    return folder;
}

class EditorXMLView : public ::testing::Test {
protected:
    ~EditorXMLView() override { std::filesystem::remove_all(folder); }
    template <class View = TestXMLView>
    IntrusivePtr<View> Make(const char* name = "TestEditor") {
        return IntrusivePtr<View>(new View(&resources, name, filter));
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("qafui_xml_view_" + std::to_string(::getpid()));
    ResourceManager resources{ModuleHandle{}, WithArchives(folder)};
    std::shared_ptr<ParameterStoreFilter> filter = std::make_shared<ParameterStoreFilter>(
        std::vector<qoraudiofilterhost::ParameterDescriptor>{{"gain", 0.0f, 1.0f, 0.5f}});
    qorui::skins::ScopedSkin look{qorui::skins::Skin::kClassic};
    qorui::HeadlessWindow window{320, 240};
};

TEST_F(EditorXMLView, LoadsTheArchiveAndConnectsItsControls) {
    auto view = Make();
    EXPECT_FALSE(view->GetContentView()) << "nothing is loaded before Init";
    view->Init();
    auto content = view->GetContentView();
    ASSERT_TRUE(content);
    EXPECT_EQ(content->GetID(), "classic");
    EXPECT_EQ(content->GetParent(), view.get());
    EXPECT_EQ(view->GetFrame().width, 240);
    EXPECT_EQ(view->GetFrame().height, 120);
    EXPECT_TRUE(content->IsVisible());
    EXPECT_EQ(view->connectCount, 1);
    EXPECT_NE(dynamic_cast<GraphNode*>(content->FindNodeByID("Graph")), nullptr);
    // The library's own archive classes load without the subclass's help.
    auto* tint = dynamic_cast<ColorField*>(content->FindNodeByID("Tint"));
    ASSERT_NE(tint, nullptr);
    EXPECT_FALSE(tint->GetAllowUserColorChange());
    auto* semitones = dynamic_cast<EditNumber*>(content->FindNodeByID("Semitones"));
    ASSERT_NE(semitones, nullptr);
    EXPECT_DOUBLE_EQ(semitones->GetMinValue(), -12.0);
    EXPECT_DOUBLE_EQ(semitones->GetMaxValue(), 12.0);
    EXPECT_EQ(view->GetNodeMap().count("Gain"), 1u);
    EXPECT_FALSE(view->CanScrollContent());

    // The connected control writes the filter; a change of the filter reaches the control.
    ASSERT_NE(view->gain, nullptr);
    EXPECT_DOUBLE_EQ(view->gain->GetValue(), 0.25);
    view->gain->SetValue(0.75);
    view->gain->SendControlMessages();
    EXPECT_FLOAT_EQ(filter->GetParameterValue(0), 0.75f);
    window.GetRoot()->ChildPushBack(view);
    filter->SetParameterValue(0, 0.3f);
    window.AdvanceTime(0.02);
    EXPECT_DOUBLE_EQ(view->gain->GetValue(), 0.3f);

    // The content follows the view's size.
    view->SetSize(300, 200);
    EXPECT_EQ(content->GetFrame().width, 300);
    EXPECT_EQ(content->GetFrame().height, 200);
}

TEST_F(EditorXMLView, PrefersTheV7ArchiveUnderTheNewerLook) {
    qorui::skins::ScopedSkin v7(qorui::skins::Skin::kV7);
    auto view = Make();
    view->Init();
    ASSERT_TRUE(view->GetContentView());
    EXPECT_EQ(view->GetContentView()->GetID(), "v7");
}

TEST_F(EditorXMLView, UnreadableArchivesLeaveAnEmptyEditor) {
    for (const char* name : {"Missing", "Broken"}) {
        auto view = Make(name);
        view->SetSize(50, 40); // before anything is loaded: only the base's handling
        view->Init();
        EXPECT_FALSE(view->GetContentView()) << name;
        EXPECT_EQ(view->GetChildCount(), 0u) << name;
        EXPECT_EQ(view->connectCount, 0) << name;
        EXPECT_EQ(view->GetFrame().width, 50) << name;
    }
    // The base class answers no custom node and loads toolkit nodes only.
    class PlainView : public AudioFilterEditorXMLView {
    public:
        using AudioFilterEditorXMLView::AudioFilterEditorXMLView;
        using AudioFilterEditorXMLView::GetContentView;
    };
    auto plain = Make<PlainView>();
    plain->Init();
    ASSERT_TRUE(plain->GetContentView());
    auto* graph = plain->GetContentView()->FindNodeByID("Graph");
    EXPECT_NE(dynamic_cast<qorui::UI_SubView*>(graph), nullptr);
    EXPECT_EQ(dynamic_cast<GraphNode*>(graph), nullptr);
}

TEST_F(EditorXMLView, ShowsTheArchivedToolTipsWhileHovering) {
    auto view = Make();
    view->Init();
    window.AddNode(view);
    auto findTip = [&]() -> qorui::UI_ToolTip* {
        for (const auto& node : window.GetRoot()->GetChildren())
            if (auto* tip = dynamic_cast<qorui::UI_ToolTip*>(node.get()); tip && tip->IsShowing())
                return tip;
        return nullptr;
    };

    // Over the gain (4, 4, 60 by 18): the localised text once the delay is over.
    window.MouseMove(20, 10);
    window.AdvanceTime(qorui::UI_ToolTip::kDefaultDelaySeconds / 2);
    EXPECT_EQ(findTip(), nullptr) << "not before the delay";
    window.AdvanceTime(qorui::UI_ToolTip::kDefaultDelaySeconds);
    qorui::UI_ToolTip* tip = findTip();
    ASSERT_NE(tip, nullptr);
    EXPECT_EQ(tip->GetText(), "Output gain");
    EXPECT_GT(tip->GetFrame().y, 10.0f) << "below the pointer";
    window.RenderAll();
    EXPECT_EQ(window.GetPixel(int(tip->GetFrame().x) + 2, int(tip->GetFrame().y) + 4),
              qorui::skins::GetPalette().toolTipBackground);

    // Off the gain, over the graph, which has no tip: none, however long the pointer rests.
    window.MouseMove(50, 60);
    EXPECT_EQ(findTip(), nullptr);
    window.AdvanceTime(3.0);
    EXPECT_EQ(findTip(), nullptr);
    EXPECT_EQ(window.GetRoot()->GetChildCount(), 1u) << "only the editor is left";
}

} // namespace
