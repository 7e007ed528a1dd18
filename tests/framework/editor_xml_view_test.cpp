// The archived-node editor view: loading through the resource manager, custom nodes, connected
// controls, the library's own archive classes, sizes, the ".V7" archive under the newer look and
// the archived tool tips.
#include "controls/color_field.hpp"
#include "controls/edit_number.hpp"
#include "framework/audio_filter_editor_xml_view.hpp"
#include "framework/resource_manager.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/ui_tool_tip.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_popup.hpp"

#include "platform/archive/node_archive_writer.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace qoraudiofiltersui;
using namespace qafui_testing::archive;
using qoraudiofilterhost::ParameterDescriptor;
using qoraudiofilterhost::ParameterStoreFilter;
using qorcore::IntrusivePtr;

namespace {

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

class ArchiveFolder {
public:
    ArchiveFolder() {
        path_ = std::filesystem::temp_directory_path() /
                ("qafui_xml_view_" + std::to_string(::getpid()));
        std::filesystem::create_directories(path_);
        Write("TESTEDITOR.xml", EditorArchive("classic"));
        Write("TESTEDITOR.V7.xml", EditorArchive("v7"));
        Write("BROKEN.xml", "<?xml version='1.0'?>\r\n<prop.list/>\r\n");
    }
    ~ArchiveFolder() { std::filesystem::remove_all(path_); }
    const std::filesystem::path& Path() const { return path_; }

private:
    void Write(const std::string& name, const std::string& text) {
        std::ofstream(path_ / name, std::ios::binary) << text;
    }
    std::filesystem::path path_;
};

class GraphNode : public qorui::UI_Node {};

/// Supplies the graph and connects the gain to parameter 0, as an editor does.
class TestXMLView : public AudioFilterEditorXMLView {
public:
    using AudioFilterEditorXMLView::AudioFilterEditorXMLView;
    using AudioFilterEditorXMLView::GetContentView;

    IntrusivePtr<qorui::UI_Node> CreateCustomNode(const std::string& name) const override {
        asked.push_back(name);
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

    mutable std::vector<std::string> asked;
    int connectCount = 0;
    qorui::UI_HotTextNumber* gain = nullptr;
};

std::shared_ptr<ParameterStoreFilter> MakeFilter() {
    return std::make_shared<ParameterStoreFilter>(
        std::vector<ParameterDescriptor>{{"gain", 0.0f, 1.0f, 0.5f}});
}

TEST(EditorXMLView, LoadsTheArchiveAndConnectsItsControls) {
    ArchiveFolder folder;
    ResourceManager resources(ModuleHandle{}, folder.Path());
    qorui::skins::ScopedSkin look(qorui::skins::Skin::kClassic);
    auto filter = MakeFilter();
    IntrusivePtr<TestXMLView> view(new TestXMLView(&resources, "TestEditor", filter));
    EXPECT_FALSE(view->GetContentView()) << "nothing is loaded before Init";
    EXPECT_EQ(view->GetResourceManager(), &resources);

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
    qorui::HeadlessWindow window(320, 240);
    window.GetRoot()->ChildPushBack(view);
    filter->SetParameterValue(0, 0.3f);
    window.AdvanceTime(0.02);
    EXPECT_DOUBLE_EQ(view->gain->GetValue(), 0.3f);

    // The content follows the view's size.
    view->SetSize(300, 200);
    EXPECT_EQ(content->GetFrame().width, 300);
    EXPECT_EQ(content->GetFrame().height, 200);
}

TEST(EditorXMLView, PrefersTheV7ArchiveUnderTheNewerLook) {
    ArchiveFolder folder;
    ResourceManager resources(ModuleHandle{}, folder.Path());
    qorui::skins::ScopedSkin look(qorui::skins::Skin::kV7);
    IntrusivePtr<TestXMLView> view(new TestXMLView(&resources, "TestEditor", MakeFilter()));
    view->Init();
    ASSERT_TRUE(view->GetContentView());
    EXPECT_EQ(view->GetContentView()->GetID(), "v7");
}

TEST(EditorXMLView, UnreadableArchivesLeaveAnEmptyEditor) {
    ArchiveFolder folder;
    ResourceManager resources(ModuleHandle{}, folder.Path());
    for (const char* name : {"Missing", "Broken"}) {
        IntrusivePtr<TestXMLView> view(new TestXMLView(&resources, name, MakeFilter()));
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
    IntrusivePtr<PlainView> plain(new PlainView(&resources, "TestEditor", MakeFilter()));
    plain->Init();
    ASSERT_TRUE(plain->GetContentView());
    auto* graph = plain->GetContentView()->FindNodeByID("Graph");
    EXPECT_NE(dynamic_cast<qorui::UI_SubView*>(graph), nullptr);
    EXPECT_EQ(dynamic_cast<GraphNode*>(graph), nullptr);
}

TEST(EditorXMLView, ShowsTheArchivedToolTipsWhileHovering) {
    ArchiveFolder folder;
    ResourceManager resources(ModuleHandle{}, folder.Path());
    qorui::skins::ScopedSkin look(qorui::skins::Skin::kClassic);
    IntrusivePtr<TestXMLView> view(new TestXMLView(&resources, "TestEditor", MakeFilter()));
    view->Init();
    qorui::HeadlessWindow window(320, 240);
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
