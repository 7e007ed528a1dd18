// The node archive loader: an archive written for the test with nested subviews, popups, hot
// texts and a custom node; malformed archives; the ".V7" preference under each look.
#include "golden_image.hpp"
#include "node_archive_writer.hpp"
#include "platform/archive/ui_node_builder.hpp"
#include "platform/core/localizer.hpp"
#include "platform/core/trace.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/panels/ui_outline_box_with_label.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_text_button.hpp"

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace qorui;
using namespace qafui_testing::archive;

namespace {

const std::vector<std::string> kButtonChain = {
    "qorui::ui::UI_Button", "qorui::ui::UI_InteractiveControlView", "qorui::ui::UI_ControlView"};

/// A node of a class with the button chain: the class's own section, then the shared ones.
std::string ButtonLike(const std::string& adapter, const std::string& own,
                       const std::string& buttonPairs, const std::string& nodeSection,
                       const std::string& controlPairs = {}) {
    return Node(adapter, {Section(adapter, own), Section(kButtonChain[0], buttonPairs),
                          Section(kButtonChain[1]), Section(kButtonChain[2], controlPairs),
                          SubViewSection(), nodeSection});
}

std::string HotTextNumber(const std::string& id, float top, const std::string& value,
                          const std::string& label) {
    return Node("qorui::ui::UI_HotTextNumber",
                {Section("qorui::ui::UI_HotTextNumber",
                         Pair("decimalPlaces", Int(1)) + Pair("increment", Double("0.5")) +
                             Pair("maxValue", Double("20")) + Pair("minValue", Double("-20")) +
                             Pair("value", Double(value))),
                 Section("qorui::ui::UI_HotText", Pair("componentSize", Enum(-1)) +
                                                      Pair("fontSize", Float("12")) +
                                                      Pair("textLabel", UStr(label))),
                 Section("qorui::ui::UI_InteractiveControlView"),
                 Section("qorui::ui::UI_ControlView", Pair("enabled", Bool(true))),
                 SubViewSection(),
                 NodeSection(id, 10, top, 90, 18,
                             Pair("tooltip", UStr("($$$/qafui/Test/GainTip=Output gain)")))});
}

std::string TestArchive() {
    const std::string popup = ButtonLike(
        "qorui::ui::UI_Popup",
        Pair("alwaysNotify", Bool(true)) + Pair("drawDivider", Bool(false)) +
            Pair("popupItems",
                 UStrArray({"($$$/qafui/Test/Linear=Linear)", "Logarithmic", "-", "Steep"})) +
            Pair("popupType", Enum(0)),
        Pair("chromeType", Enum(-1)) + Pair("selected", Bool(false)) + Pair("variant", Enum(1)),
        NodeSection("Mode", 10, 48, 130, 22));
    const std::string checkbox =
        ButtonLike("qorui::ui::UI_Checkbox", Pair("checked", Int(1)) + Pair("text", UStr("Spline")),
                   Pair("selected", Bool(false)), NodeSection("Spline", 10, 76, 130, 18));
    const std::string note =
        Node("qorui::ui::UI_StaticText",
             {Section("qorui::ui::UI_StaticText", Pair("text", UStr("Hello archive"))),
              Section("qorui::ui::UI_ControlView"), SubViewSection(),
              NodeSection("Note", 0, 0, 150, 16)});
    const std::string inner = Node(
        "qorui::ui::UI_SubView", {SubViewSection({note}), NodeSection("Inner", 10, 100, 160, 30)});
    const std::string box =
        Node("qorui::ui::UI_OutlineBoxWithLabel",
             {Section("qorui::ui::UI_OutlineBoxWithLabel",
                      Pair("label", UStr("($$$/qafui/Test/Settings=Settings)"))),
              SubViewSection({HotTextNumber("Gain", 22, "6.5", "dB"), popup, checkbox, inner}),
              NodeSection("Box", 8, 8, 184, 140)});
    const std::string graph =
        Node("qorui::ui::UI_SubView", {SubViewSection(), NodeSection("Graph", 200, 8, 92, 92)});
    const std::string editNumber =
        Node("qoraudiofiltersui::EditNumber_Horizontal",
             {Section("qoraudiofiltersui::EditNumber_Horizontal"),
              Section("qoraudiofiltersui::EditNumber", Pair("maxValue", Double("1"))),
              Section("qorui::ui::UI_InteractiveControlView"), Section("qorui::ui::UI_ControlView"),
              SubViewSection(), NodeSection("Freq", 200, 104, 92, 20)});
    const std::string reset = ButtonLike(
        "qorui::ui::UI_TextButton", Pair("text", UStr("Reset")), Pair("emphasized", Bool(true)),
        NodeSection("Reset", 200, 128, 92, 22), Pair("enabled", Bool(false)));
    const std::string hidden =
        ButtonLike("qorui::ui::UI_TextButton", Pair("text", UStr("Hidden")), {},
                   NodeSection("Hidden", 0, 0, 50, 20, Pair("visible", Bool(false))));
    return Document(
        Node("qorui::ui::UI_SubView",
             {Section("qorui::ui::UI_SubView",
                      Pair("children", Indexed("child-", {box, graph, editNumber, reset, hidden}))),
              NodeSection("Root", 0, 0, 300, 160)}));
}

/// Stands in for an editor's graph: a filled, framed square.
class TestGraph : public UI_Node {
public:
    void UI_Draw(Penrig* p) override {
        const RectT<float> b = GetBounds();
        p->FillRect(b, qorcore::ColorRGBA(0.15f, 0.2f, 0.3f));
        p->FrameRect(b, qorcore::ColorRGBA(0.9f, 0.6f, 0.1f));
        UI_Node::UI_Draw(p);
    }
};

struct Loaded {
    IntrusivePtr<UI_Node> root;
    UI_NodeBuilder::NodeMap nodes;
    NodeArchiveReport report;
    std::vector<std::string> customAsked;
};

Loaded Load(const std::string& text) {
    Loaded loaded;
    auto custom = [&](const std::string& name) -> IntrusivePtr<UI_Node> {
        loaded.customAsked.push_back(name);
        if (name == "Graph")
            return qorcore::MakeIntrusive<TestGraph>();
        return nullptr;
    };
    loaded.root =
        UI_NodeBuilder::LoadViewFromXMLText(text, {}, &loaded.nodes, custom, &loaded.report);
    return loaded;
}

bool ReportMentions(const NodeArchiveReport& report, const std::string& part) {
    for (const auto& d : report.diagnostics)
        if (d.message.find(part) != std::string::npos || d.path.find(part) != std::string::npos)
            return true;
    return false;
}

TEST(NodeBuilder, TestArchiveLoadsIntoTheExpectedTree) {
    qorcore::Localizer::Get().AddEntry("$$$/qafui/Test/Settings", "Einstellungen");
    std::vector<std::string> traces;
    qorcore::debug::SetTraceSettings("UI_NodeBuilder*=5");
    qorcore::debug::SetTraceSink(
        [&](int, std::string_view, std::string_view text) { traces.emplace_back(text); });
    Loaded loaded = Load(TestArchive());
    qorcore::debug::SetTraceSink({});
    qorcore::debug::SetTraceSettings("");
    qorcore::Localizer::Get().Clear();

    ASSERT_TRUE(loaded.root);
    auto* root = dynamic_cast<UI_SubView*>(loaded.root.get());
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->GetID(), "Root");
    EXPECT_EQ(root->GetFrame(), (RectT<float>{0, 0, 300, 160}));
    // The unknown adapter is skipped; the four others stay in order.
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < root->GetChildCount(); ++i)
        ids.push_back(root->GetChildAt(i)->GetID());
    ASSERT_EQ(ids, (std::vector<std::string>{"Box", "Graph", "Reset", "Hidden"}));

    auto* box = dynamic_cast<UI_OutlineBoxWithLabel*>(root->GetChildAt(0));
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->GetLabel(), "Einstellungen"); // the table's text wins over the default
    EXPECT_EQ(box->GetChildCount(), 4u);

    auto* gain = dynamic_cast<UI_HotTextNumber*>(root->FindNodeByID("Gain"));
    ASSERT_NE(gain, nullptr);
    EXPECT_EQ(gain->GetFrame(), (RectT<float>{10, 22, 90, 18}));
    // Every number in the archive is exact in binary, so the values compare exactly.
    EXPECT_EQ(std::tuple(gain->GetMinValue(), gain->GetMaxValue(), gain->GetValue(),
                         gain->GetIncrement(), gain->GetDecimalPlaces(), gain->GetFontSize()),
              std::tuple(-20.0, 20.0, 6.5, 0.5, 1, 12.0f));
    EXPECT_EQ(gain->GetTextLabel(), "dB");

    auto* mode = dynamic_cast<UI_Popup*>(root->FindNodeByID("Mode"));
    ASSERT_NE(mode, nullptr);
    EXPECT_EQ(mode->GetItems(), (std::vector<std::string>{"Linear", "Logarithmic", "-", "Steep"}));
    EXPECT_EQ(mode->GetComponents().GetVariant(), 1);

    auto* spline = dynamic_cast<UI_Checkbox*>(root->FindNodeByID("Spline"));
    ASSERT_NE(spline, nullptr);
    EXPECT_TRUE(spline->IsChecked()); // an int where a boolean could stand
    EXPECT_EQ(spline->GetText(), "Spline");

    auto* note = dynamic_cast<UI_StaticText*>(root->FindNodeByID("Note"));
    ASSERT_NE(note, nullptr);
    EXPECT_EQ(note->GetText(), "Hello archive");
    EXPECT_EQ(note->GetParent(), root->FindNodeByID("Inner"));

    // The placeholder gave way to the supplied node, which keeps the archived frame and id.
    EXPECT_NE(dynamic_cast<TestGraph*>(root->GetChildAt(1)), nullptr);
    EXPECT_EQ(root->GetChildAt(1)->GetFrame(), (RectT<float>{200, 8, 92, 92}));
    EXPECT_NE(std::find(loaded.customAsked.begin(), loaded.customAsked.end(),
                        "qoraudiofiltersui::EditNumber_Horizontal"),
              loaded.customAsked.end());

    auto* reset = dynamic_cast<UI_TextButton*>(root->GetChildAt(2));
    ASSERT_NE(reset, nullptr);
    EXPECT_EQ(reset->GetText(), "Reset");
    EXPECT_FALSE(reset->IsEnabled());
    EXPECT_TRUE(reset->GetComponents().emphasized);
    EXPECT_FALSE(root->GetChildAt(3)->IsVisible());

    // Every named node is in the map, the skipped one is not.
    for (const char* id :
         {"Root", "Box", "Gain", "Mode", "Spline", "Inner", "Note", "Graph", "Reset", "Hidden"}) {
        ASSERT_TRUE(loaded.nodes.count(id)) << id;
        EXPECT_EQ(loaded.nodes[id].get(), root->FindNodeByID(id)) << id;
    }
    EXPECT_EQ(loaded.nodes.count("Freq"), 0u);

    // The tip is the node's own, localised; nodes without one have none.
    EXPECT_EQ(gain->GetToolTipText(), "Output gain");
    EXPECT_EQ(reset->GetToolTipText(), "");

    // The unknown adapter is the only problem, reported by name with its place.
    ASSERT_EQ(loaded.report.diagnostics.size(), 1u) << loaded.report.diagnostics[0].message;
    const NodeArchiveDiagnostic& d = loaded.report.diagnostics[0];
    EXPECT_NE(d.message.find("qoraudiofiltersui::EditNumber_Horizontal"), std::string::npos);
    EXPECT_EQ(d.path, "root/sections/section-0/children/child-2/adapter");
    EXPECT_GT(d.line, 1);
    bool traced = false;
    for (const std::string& t : traces)
        traced = traced || t.find("EditNumber_Horizontal") != std::string::npos;
    EXPECT_TRUE(traced);
}

class NodeBuilderGolden : public ::testing::TestWithParam<skins::Skin> {};

TEST_P(NodeBuilderGolden, TestArchiveDrawsLikeItsGolden) {
    skins::ScopedSkin look(GetParam());
    Loaded loaded = Load(TestArchive());
    ASSERT_TRUE(loaded.root);
    HeadlessWindow window(300, 160, 1.0f);
    window.SetBackgroundColor(skins::GetContentBackgroundColor());
    window.GetRoot()->ChildPushBack(loaded.root);
    window.RenderAll();
    const std::string name =
        std::string("node_archive_") + std::string(skins::GetSkinName(GetParam())) + "_1x";
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Looks, NodeBuilderGolden,
                         ::testing::Values(skins::Skin::kClassic, skins::Skin::kV7));

TEST(NodeBuilder, RootThatIsNotPropMapGivesNullNode) {
    for (const std::string& text :
         {std::string("<?xml version='1.0'?>\r\n<prop.list/>\r\n"), std::string(""),
          std::string("<?xml version='1.0'?>\r\n<prop.map version='4'/>\r\n")}) {
        Loaded loaded = Load(text);
        EXPECT_FALSE(loaded.root) << text;
        EXPECT_FALSE(loaded.report.diagnostics.empty()) << text;
    }
    Loaded wrong = Load("<?xml version='1.0'?>\r\n<prop.list/>\r\n");
    EXPECT_NE(wrong.report.diagnostics[0].message.find("'prop.list', not 'prop.map'"),
              std::string::npos);
}

TEST(NodeBuilder, MissingKeysKeepDefaultsAndLoadTheRest) {
    // A hot text without a value and with a rectangle lacking its width; a child record
    // without an adapter; a count that promises more children than there are.
    const std::string number =
        Node("qorui::ui::UI_HotTextNumber",
             {Section("qorui::ui::UI_HotTextNumber", Pair("maxValue", Double("5"))),
              Section("qorui::ui::UI_HotText"), SubViewSection(),
              Section("qorui::ui::UI_Node",
                      Pair("bounds", List(Pair(".aptype", Int(1)) + Pair("height", Float("9")) +
                                          Pair("left", Float("3")) + Pair("top", Float("4")))) +
                          Pair("id", Str("N")))});
    const std::string noAdapter = List(Pair("sections", Indexed("section-", {})));
    std::string children =
        List(Pair("count", Int(5, true)) + Pair("child-0", number) + Pair("child-1", noAdapter));
    Loaded loaded = Load(Document(
        Node("qorui::ui::UI_SubView", {Section("qorui::ui::UI_SubView", Pair("children", children)),
                                       NodeSection("R", 0, 0, 9, 9)})));
    ASSERT_TRUE(loaded.root);
    ASSERT_EQ(loaded.root->GetChildCount(), 1u);
    auto* n = dynamic_cast<UI_HotTextNumber*>(loaded.root->GetChildAt(0));
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(n->GetFrame(), (RectT<float>{3, 4, 0, 9}));
    EXPECT_DOUBLE_EQ(n->GetMaxValue(), 5);
    EXPECT_TRUE(ReportMentions(loaded.report, "missing key 'width'"));
    EXPECT_TRUE(ReportMentions(loaded.report, "missing key 'adapter'"));
    EXPECT_TRUE(ReportMentions(loaded.report, "count 5"));
    EXPECT_TRUE(ReportMentions(loaded.report, "root/sections/section-0/children/child-1"));
}

TEST(NodeBuilder, BadNumbersAreSkippedWithTheirPlace) {
    const std::string number = Node(
        "qorui::ui::UI_HotTextNumber",
        {Section("qorui::ui::UI_HotTextNumber", Pair("decimalPlaces", Int(0) /* replaced below */) +
                                                    Pair("maxValue", Double("1e999")) +
                                                    Pair("minValue", Double("-3")) +
                                                    Pair("value", Double("abc"))),
         Section("qorui::ui::UI_Node", Pair("bounds", Rect(1, 2, 3, 4)) + Pair("id", Str("N")))});
    std::string text = Document(number);
    const std::string good = "<int type='signed' size='32'>0</int>";
    text.replace(text.find(good), good.size(), "<int type='signed' size='32'>7x</int>");
    Loaded loaded = Load(text);
    ASSERT_TRUE(loaded.root);
    auto* n = dynamic_cast<UI_HotTextNumber*>(loaded.root.get());
    ASSERT_NE(n, nullptr);
    EXPECT_DOUBLE_EQ(n->GetMinValue(), -3);
    EXPECT_GT(n->GetMaxValue(), 1e300); // the default stands for the overflowing text
    EXPECT_EQ(n->GetFrame(), (RectT<float>{1, 2, 3, 4}));
    EXPECT_TRUE(ReportMentions(loaded.report, "bad number 'abc'"));
    EXPECT_TRUE(ReportMentions(loaded.report, "bad number '1e999'"));
    EXPECT_TRUE(ReportMentions(loaded.report, "'7x'"));
    for (const auto& d : loaded.report.diagnostics) {
        EXPECT_GT(d.line, 1) << d.message;
        EXPECT_GT(d.column, 0) << d.message;
    }
    // A wrong record type is refused, not read as a rectangle.
    Loaded typed = Load(Document(
        Node("qorui::ui::UI_SubView",
             {Section("qorui::ui::UI_Node", Pair("bounds", Enum(3)) + Pair("id", Str("S")))})));
    ASSERT_TRUE(typed.root);
    EXPECT_EQ(typed.root->GetFrame(), (RectT<float>{0, 0, 0, 0}));
    EXPECT_TRUE(ReportMentions(typed.report, ".aptype 2 where 1 was expected"));
}

TEST(NodeBuilder, TruncatedXmlReportsLineAndColumnAndNeverCrashes) {
    const std::string whole = TestArchive();
    // Malformed XML is reported at its place.
    Loaded broken = Load("<?xml version='1.0'?>\r\n<prop.map version='4'>\r\n<prop.list>\r\n"
                         "<prop.pair><key>x</key><int>1</float>\r\n");
    ASSERT_FALSE(broken.report.diagnostics.empty());
    EXPECT_NE(broken.report.diagnostics[0].message.find("malformed XML"), std::string::npos);
    EXPECT_EQ(broken.report.diagnostics[0].line, 4);
    EXPECT_GT(broken.report.diagnostics[0].column, 1);
    // Every prefix of the archive loads something or nothing, with a report when incomplete.
    for (std::size_t cut = 0; cut < whole.size(); cut += 97) {
        Loaded loaded = Load(whole.substr(0, cut));
        EXPECT_FALSE(loaded.report.diagnostics.empty()) << cut;
    }
}

TEST(NodeBuilder, DeepNestingIsBoundedAndReported) {
    // Node records nested far beyond the limit: the loader stops at the limit.
    std::string node = Node("qorui::ui::UI_SubView", {NodeSection("leaf", 0, 0, 1, 1)});
    for (int i = 0; i < UI_NodeBuilder::kMaxNodeDepth + 20; ++i)
        node =
            Node("qorui::ui::UI_SubView", {SubViewSection({node}), NodeSection("n", 0, 0, 1, 1)});
    Loaded loaded = Load(Document(node));
    ASSERT_TRUE(loaded.root);
    int depth = 0;
    for (UI_Node* n = loaded.root.get(); n->GetChildCount() > 0; n = n->GetChildAt(0))
        ++depth;
    EXPECT_EQ(depth, UI_NodeBuilder::kMaxNodeDepth - 1);
    EXPECT_TRUE(ReportMentions(loaded.report, "nest deeper than"));
    // Raw element nesting a hundred thousand deep does not exhaust the stack either.
    std::string deep = "<?xml version='1.0'?>\r\n<prop.map version='4'><prop.list>";
    for (int i = 0; i < 100000; ++i)
        deep += "<prop.list>";
    Loaded raw = Load(deep);
    EXPECT_FALSE(raw.root);
    EXPECT_FALSE(raw.report.diagnostics.empty());
}

TEST(NodeBuilder, PrefersTheV7ArchiveUnderTheNewerLookOnly) {
    const std::map<std::string, std::string> resources = {
        {"FFTFILTER",
         Document(Node("qorui::ui::UI_SubView", {NodeSection("classic", 0, 0, 1, 1)}))},
        {"FFTFILTER.V7", Document(Node("qorui::ui::UI_SubView", {NodeSection("v7", 0, 0, 1, 1)}))},
        {"AMPLIFY", Document(Node("qorui::ui::UI_SubView", {NodeSection("amp", 0, 0, 1, 1)}))},
    };
    std::vector<std::string> asked;
    auto read = [&](std::string_view name, std::vector<char>& out) {
        std::string upper(name);
        for (char& c : upper)
            c = char(std::toupper((unsigned char)c));
        asked.push_back(upper);
        const auto found = resources.find(upper);
        if (found == resources.end())
            return false;
        out.assign(found->second.begin(), found->second.end());
        return true;
    };
    auto idOf = [&](std::string_view name) {
        IntrusivePtr<UI_Node> node = UI_NodeBuilder::LoadViewFromXML(read, {}, name, nullptr, {});
        return node ? node->GetID() : std::string("<null>");
    };
    {
        skins::ScopedSkin look(skins::Skin::kClassic);
        asked.clear();
        EXPECT_EQ(idOf("FFTFilter"), "classic");
        EXPECT_EQ(asked, (std::vector<std::string>{"FFTFILTER"}));
    }
    {
        skins::ScopedSkin look(skins::Skin::kV7);
        EXPECT_EQ(idOf("FFTFilter"), "v7");
        EXPECT_EQ(idOf("Amplify"), "amp"); // no variant: the plain archive
        EXPECT_EQ(idOf("Missing"), "<null>");
    }
}

TEST(NodeBuilder, RegisteredAdaptersMakeTheirNodes) {
    EXPECT_TRUE(UI_NodeBuilder::IsAdapterRegistered("qorui::ui::UI_Popup"));
    EXPECT_TRUE(UI_NodeBuilder::IsAdapterRegistered("UI_Popup"));
    EXPECT_FALSE(UI_NodeBuilder::IsAdapterRegistered("qafui_test::Thing"));
    EXPECT_TRUE(UI_NodeBuilder::RegisterAdapter("qafui_test::Thing", [] {
        return IntrusivePtr<UI_Node>(qorcore::MakeIntrusive<TestGraph>());
    }));
    EXPECT_FALSE(UI_NodeBuilder::RegisterAdapter("qafui_test::Thing",
                                                 [] { return IntrusivePtr<UI_Node>(); }));
    Loaded loaded = Load(Document(
        Node("qafui_test::Thing", {Section("qafui_test::Thing"), NodeSection("T", 1, 1, 5, 5)})));
    ASSERT_TRUE(loaded.root);
    EXPECT_NE(dynamic_cast<TestGraph*>(loaded.root.get()), nullptr);
    EXPECT_TRUE(loaded.report.diagnostics.empty());
}

} // namespace
