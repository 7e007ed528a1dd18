// The library's archive classes: colour fields and the three edit numbers load through the node
// builder with their own and the shared sections, bad values are reported with their place and
// left out, and the builder hands typed values to the section appliers of higher layers.
#include "controls/color_field_adapter.hpp"
#include "controls/edit_number_adapter.hpp"
#include "platform/archive/node_archive_writer.hpp"
#include "platform/archive/ui_node_builder.hpp"
#include "platform/dialogs/color_picker_dialog.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/modal_testing.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace qoraudiofiltersui;
using namespace qafui_testing::archive;
using qorcore::IntrusivePtr;
using qorui::UI_NodeBuilder;

namespace {

struct Loaded {
    IntrusivePtr<qorui::UI_Node> root;
    UI_NodeBuilder::NodeMap nodes;
    qorui::NodeArchiveReport report;

    template <class T>
    T& Get(const std::string& id) {
        auto* node = dynamic_cast<T*>(nodes.at(id).get());
        if (!node)
            throw std::runtime_error(id + " is of another class");
        return *node;
    }
    bool Mentions(const std::string& part) const {
        for (const auto& d : report.diagnostics)
            if (d.message.find(part) != std::string::npos || d.path.find(part) != std::string::npos)
                return true;
        return false;
    }
};

/// Loads a root view 400 by 400 holding `children`.
Loaded Load(const std::vector<std::string>& children) {
    GetColorFieldAdapter();
    RegisterEditNumberAdapters();
    Loaded loaded;
    loaded.root = UI_NodeBuilder::LoadViewFromXMLText(
        Document(Node("qorui::ui::UI_SubView",
                      {SubViewSection(children), NodeSection("Root", 0, 0, 400, 400)})),
        {}, &loaded.nodes, {}, &loaded.report);
    if (!loaded.root)
        throw std::runtime_error("nothing loaded");
    return loaded;
}

std::string Field(const std::string& id, float left, const std::string& ownPairs,
                  const std::string& controlPairs = {}, const std::string& nodePairs = {}) {
    return Node("qoraudiofiltersui::ColorField",
                {Section("qoraudiofiltersui::ColorField", ownPairs),
                 Section("qorui::ui::UI_InteractiveControlView"),
                 Section("qorui::ui::UI_ControlView", controlPairs), SubViewSection(),
                 NodeSection(id, left, 10, 30, 20, nodePairs)});
}

TEST(ColorFieldAdapterTest, ArchivedFieldsTakeTheirSectionsAndBadValuesAreReported) {
    Loaded loaded = Load({Field("Locked", 10, Pair("allowUserColorChange", Bool(false))),
                          Field("Plain", 50, {}, Pair("enabled", Bool(false))),
                          Field("ByInt", 90, Pair("allowUserColorChange", Int(0))),
                          Field("Open", 130, Pair("allowUserColorChange", Bool(true)), {},
                                Pair("tooltip", UStr("($$$/qafui/Test/ColorTip=Curve colour)"))),
                          Field("Odd", 170, Pair("allowUserColorChange", UStr("no")))});
    ASSERT_EQ(loaded.root->GetChildCount(), 5u);
    // One report, for the value of the wrong kind, which is ignored.
    ASSERT_EQ(loaded.report.diagnostics.size(), 1u);
    const qorui::NodeArchiveDiagnostic& d = loaded.report.diagnostics.front();
    EXPECT_NE(d.path.find("child-4/sections/section-0/allowUserColorChange"), std::string::npos)
        << d.path;
    EXPECT_NE(d.message.find("boolean"), std::string::npos) << d.message;
    EXPECT_GT(d.line, 1);
    // An absent key or a bad value keeps the default.
    for (const auto& [id, allowed] : std::vector<std::pair<std::string, bool>>{
             {"Locked", false}, {"Plain", true}, {"ByInt", false}, {"Open", true}, {"Odd", true}})
        EXPECT_EQ(loaded.Get<ColorField>(id).GetAllowUserColorChange(), allowed) << id;
    ColorField& locked = loaded.Get<ColorField>("Locked");
    ColorField& open = loaded.Get<ColorField>("Open");
    EXPECT_EQ(locked.GetFrame(), (qorcore::RectT<float>{10, 10, 30, 20}));
    EXPECT_TRUE(loaded.Get<ColorField>("Plain").IsDisabled());
    EXPECT_EQ(open.GetToolTipText(), "Curve colour");

    // The loaded fields work: the open one opens the picker, the locked one only selects.
    qorui::HeadlessWindow window(200, 60);
    window.AddNode(loaded.root);
    int opened = 0;
    qorui::testing::ScopedModalResponder responder([&](qorui::UI_ModalOverlay& overlay) {
        ++opened;
        dynamic_cast<sharedui::ColorPickerDialog&>(overlay).ChangeColor({1, 1, 0});
        overlay.EndModal(sharedui::ColorPickerDialog::kResponseAccept);
    });
    window.Click(140, 20);
    EXPECT_EQ(opened, 1);
    EXPECT_EQ(open.GetValue(), qorcore::ColorRGBA(1, 1, 0));
    window.AdvanceTime(1.0);
    window.Click(20, 20);
    EXPECT_EQ(opened, 1);
    EXPECT_TRUE(locked.IsSelected());
}

TEST(ColorFieldAdapterTest, TheLibraryHasOneAdapterAndTheClassOneEntry) {
    ColorFieldAdapter* adapter = GetColorFieldAdapter();
    ASSERT_NE(adapter, nullptr);
    EXPECT_EQ(GetColorFieldAdapter(), adapter);
    EXPECT_TRUE(adapter->IsRegistered());
    EXPECT_TRUE(adapter->Register()) << "a second call changes nothing";
    EXPECT_TRUE(UI_NodeBuilder::IsAdapterRegistered(ColorFieldAdapter::kClassName));
    ColorFieldAdapter another;
    EXPECT_FALSE(another.Register()) << "the class name is taken";
    EXPECT_FALSE(another.IsRegistered());

    // A node supplied in place of an archived field keeps its own settings.
    auto stranger = qorcore::MakeIntrusive<qorui::UI_Node>();
    qorui::NodeArchiveSection section("qoraudiofiltersui::ColorField",
                                      {{"allowUserColorChange", {}}}, {});
    adapter->ApplySection(*stranger, section);
    auto field = adapter->CreateColorField();
    adapter->ApplySection(*field, section);
    EXPECT_FALSE(field->GetAllowUserColorChange()) << "a default value is the boolean false";
}

std::string EnumItems(const std::vector<std::string>& items, int selected) {
    return List(Pair(".aptype", Int(2)) + Pair("items", UStrArray(items)) +
                Pair("selected", Int(selected)));
}
std::string RulerType(int selected) {
    return EnumItems({"None", "Linear", "Logarithmic", "DB", "FaderDB"}, selected);
}
std::string RulerPlacement(int selected) {
    return EnumItems({"Left/Top", "Right/Bottom", "Both"}, selected);
}
std::string RulerTextPlacement(int selected) {
    return EnumItems({"None", "Left/Top", "Right/Bottom"}, selected);
}

/// An edit number node of `adapter` with the control's own section and the shared chain.
std::string EditNumberNode(const std::string& adapter, const std::string& ownPairs,
                           const std::string& nodeSection) {
    return Node(adapter, {Section(adapter), Section("qoraudiofiltersui::EditNumber", ownPairs),
                          Section("qorui::ui::UI_InteractiveControlView"),
                          Section("qorui::ui::UI_ControlView", Pair("enabled", Bool(true))),
                          SubViewSection(), nodeSection});
}

constexpr const char* kHorizontal = "qoraudiofiltersui::EditNumber_Horizontal";

TEST(EditNumberArchive, TheThreeClassesAreRegisteredAndStartAsTheArchiveEditorMakesThem) {
    RegisterEditNumberAdapters();
    RegisterEditNumberAdapters(); // again: nothing happens
    for (const char* name :
         {"qoraudiofiltersui::EditNumber", kHorizontal, "qoraudiofiltersui::EditNumber_Vertical"})
        EXPECT_TRUE(UI_NodeBuilder::IsAdapterRegistered(name)) << name;

    // Direction, label, slider, inline number, knob direction, alignment and frame.
    using qorui::penrig::HorizontalAlignment;
    auto horizontal = EditNumberAdapter_Horizontal().CreateNode();
    EXPECT_EQ(std::tuple(horizontal->IsHorizontal(), horizontal->GetUsesLabel(),
                         horizontal->GetUsesSlider(), horizontal->GetUsesInline(),
                         horizontal->GetSlider()->GetDirection(),
                         horizontal->GetHotTextNumberAlignment(), horizontal->GetFrame()),
              std::tuple(true, false, true, false, qorui::kSliderDirectionHorizontalPointingDown,
                         HorizontalAlignment::kRight, qorcore::RectT<float>(0, 0, 300, 20)));
    EXPECT_EQ(horizontal->GetUnitLabelLength(), 40u);
    auto vertical = EditNumberAdapter_Vertical().CreateNode();
    EXPECT_EQ(std::tuple(vertical->IsHorizontal(), vertical->GetUsesLabel(), vertical->GetLabel(),
                         vertical->GetSlider()->GetDirection(),
                         vertical->GetHotTextNumberAlignment(), vertical->GetFrame()),
              std::tuple(false, false, std::string("Label"), qorui::kSliderDirectionVertical,
                         HorizontalAlignment::kCenter, qorcore::RectT<float>(0, 0, 30, 280)));
}

TEST(EditNumberArchive, AnArchiveWithEditNumbersLoads) {
    const std::string semitones = EditNumberNode(
        kHorizontal,
        Pair("abbreviateNumbers", Bool(false)) + Pair("decimalPlaces", Int(0, true)) +
            Pair("digits", Double("4")) + Pair("increment", Double("1")) +
            Pair("label", UStr("Semitones:")) + Pair("logSeed", Double("1")) +
            Pair("logStep", Double("10")) + Pair("logarithmic", Bool(false)) +
            Pair("maxValue", Double("12")) + Pair("minValue", Double("-12")) +
            Pair("rulerLabel1", UStr("")) + Pair("rulerLabel2", UStr("st")) +
            Pair("rulerPlacement", RulerPlacement(2)) +
            Pair("rulerTextPlacement", RulerTextPlacement(1)) + Pair("rulerType", RulerType(1)) +
            Pair("stepFactor", Double("2")) + Pair("unitLabel", UStr("st")) +
            Pair("unitLabelLength", Int(30, true)) + Pair("useInline", Bool(true)) +
            Pair("useLabel", Bool(true)),
        NodeSection("PS_SemiTones", 10, 10, 360, 40,
                    Pair("tooltip", UStr("($$$/qafui/Test/SemiTip=Pitch in semitones)"))));
    const std::string gain = EditNumberNode(
        "qoraudiofiltersui::EditNumber_Vertical",
        Pair("label", UStr("($$$/qafui/Test/Gain=Gain)")) + Pair("useLabel", Int(1)) +
            Pair("maxValue", Double("-48")) + Pair("minValue", Double("48")) +
            Pair("rulerType", RulerType(3)) + Pair("rulerPlacement", RulerPlacement(0)) +
            Pair("rulerTextPlacement", RulerTextPlacement(2)) + Pair("unitLabel", UStr("dB")),
        NodeSection("Gain", 10, 60, 60, 300));
    const std::string frequency = EditNumberNode(
        kHorizontal,
        Pair("abbreviateNumbers", Bool(true)) + Pair("logarithmic", Bool(true)) +
            Pair("maxValue", Double("20000")) + Pair("minValue", Double("20")) +
            Pair("rulerType", RulerType(2)) + Pair("logStep", Double("10")) +
            Pair("logSeed", Double("2")) + Pair("rulerPlacement", RulerPlacement(1)) +
            Pair("rulerTextPlacement", RulerTextPlacement(0)) + Pair("decimalPlaces", Int(1, true)),
        NodeSection("Frequency", 80, 60, 300, 30));
    Loaded loaded = Load({semitones, gain, frequency});
    for (const auto& d : loaded.report.diagnostics)
        ADD_FAILURE() << d.path << ": " << d.message;
    ASSERT_EQ(loaded.root->GetChildCount(), 3u);

    using std::string;
    EditNumber& st = loaded.Get<EditNumber>("PS_SemiTones");
    EXPECT_EQ(st.GetFrame(), qorcore::RectT<float>(10, 10, 360, 40));
    EXPECT_EQ(std::tuple(st.GetUsesLabel(), st.GetLabel(), st.GetUsesInline(),
                         st.GetHotTextNumber()->GetTextLabel(), st.GetUnitLabelLength(),
                         st.GetHotTextNumber()->GetToolTipText()),
              std::tuple(true, string("Semitones:"), true, string("st"), 30u,
                         string("Pitch in semitones")));
    EXPECT_EQ((std::vector<double>{double(st.GetDecimalPlaces()), double(st.GetDigits()),
                                   st.GetIncrement(), st.GetMinValue(), st.GetMaxValue()}),
              (std::vector<double>{0, 4, 1, -12, 12}));
    EXPECT_FALSE(st.GetInvertSlider());
    EXPECT_EQ(std::pair(st.GetRulerPlacement(), st.GetRulerTextPlacement()),
              std::pair(kRulerPlacementBoth, kRulerTextPlacementLeftTop));
    auto* linear = dynamic_cast<qorui::LinearRuler*>(st.GetRuler().get());
    ASSERT_NE(linear, nullptr);
    EXPECT_EQ(std::tuple(linear->GetValue1(), linear->GetValue2(), linear->IsVertical(),
                         linear->GetStepFactor(), linear->GetLabel2()),
              std::tuple(-12.0, 12.0, false, 2.0, string("st")));

    EditNumber& g = loaded.Get<EditNumber>("Gain");
    EXPECT_FALSE(g.IsHorizontal());
    EXPECT_EQ(g.GetLabel(), "Gain");
    EXPECT_TRUE(g.GetUsesLabel()) << "an int stands for the boolean";
    EXPECT_EQ(std::tuple(g.GetMinValue(), g.GetMaxValue(), g.GetInvertSlider()),
              std::tuple(-48.0, 48.0, true))
        << "the falling range is swapped and the slider turned over";
    EXPECT_EQ(g.GetRulerTextPlacement(), kRulerTextPlacementRightBottom);
    auto* decibels = dynamic_cast<qorui::DecibelRuler*>(g.GetRuler().get());
    ASSERT_NE(decibels, nullptr);
    EXPECT_EQ(std::tuple(decibels->GetStyle(), decibels->IsVertical(), decibels->GetValue1()),
              std::tuple(qorui::DecibelRuler::kStyleLinear, true, 48.0))
        << "+48 at the top, where the slider's value is 0";
    g.SetValue(48);
    EXPECT_EQ(g.GetSlider()->GetNormalizedValue(), 0.0);

    EditNumber& f = loaded.Get<EditNumber>("Frequency");
    EXPECT_TRUE(f.GetSliderLogarithmic());
    EXPECT_EQ(f.GetDecimalPlaces(), 1);
    auto* log = dynamic_cast<qorui::LogRuler*>(f.GetRuler().get());
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(std::tuple(log->GetLogSeed(), log->GetLogStep(), log->GetAbbreviateNumbers(),
                         log->AreNumbersHidden()),
              std::tuple(2.0, 10.0, true, true))
        << "numbers hidden: text placement None";
}

TEST(EditNumberArchive, BadPropertiesAreReportedAndLeftOut) {
    Loaded loaded = Load(
        {EditNumberNode(kHorizontal,
                        Pair("useLabel", UStr("yes")) + Pair("minValue", Double("-1")) +
                            Pair("maxValue", Double("1")) + Pair("rulerType", RulerType(2)) +
                            Pair("increment", Double("-3")),
                        NodeSection("Bad", 0, 0, 300, 30)),
         EditNumberNode(kHorizontal, Pair("rulerType", RulerType(9)) + Pair("label", Bool(true)),
                        NodeSection("Placement", 0, 40, 300, 30))});
    ASSERT_EQ(loaded.root->GetChildCount(), 2u) << "bad properties don't cost the node";
    EditNumber& b = loaded.Get<EditNumber>("Bad");
    EXPECT_FALSE(b.GetUsesLabel());
    EXPECT_EQ(b.GetRuler(), nullptr) << "a logarithmic ruler can't reach 0";
    EXPECT_EQ(b.GetMinValue(), -1.0);
    EXPECT_EQ(b.GetIncrement(), 1.0);
    for (const char* part :
         {"child-0/sections/section-1/useLabel", "expected a boolean",
          "child-0/sections/section-1/rulerType", "child-0/sections/section-1/increment",
          "selected 9 is not one of the 5 items", "child-1/sections/section-1/label"})
        EXPECT_TRUE(loaded.Mentions(part)) << part;
    for (const auto& d : loaded.report.diagnostics)
        EXPECT_GT(d.line, 1) << d.path;
}

std::vector<std::string> seen;

void ThrowingApplier(qorui::UI_Node&, const qorui::NodeArchiveSection& section) {
    seen.clear();
    for (const auto& property : section.GetProperties())
        seen.push_back(property.key);
    const qorui::NodeArchiveValue* ratio = section.Find("ratio");
    const qorui::NodeArchiveValue* count = section.Find("count");
    const qorui::NodeArchiveValue* flag = section.Find("flag");
    const qorui::NodeArchiveValue* names = section.Find("names");
    const qorui::NodeArchiveValue* mode = section.Find("mode");
    const qorui::NodeArchiveValue* text = section.Find("text");
    if (!ratio || ratio->GetNumber() != 2.5 || !count || count->GetNumber() != 7.0 ||
        !count->GetBool().value_or(false) || !flag || flag->GetBool() != false ||
        flag->GetNumber() || !names || names->items != std::vector<std::string>{"a", "b"} ||
        !mode || mode->GetEnumSelected() != 1 || !text || !text->GetString() ||
        *text->GetString() != "Hello")
        section.Report("ratio", "the typed values are not as written");
    throw std::runtime_error("applier gave up");
}

TEST(SectionAppliers, GetTypedValuesAndTheirFaultsAreReported) {
    ASSERT_TRUE(UI_NodeBuilder::RegisterAdapter("qafui_test::Applied", [] {
        return IntrusivePtr<qorui::UI_Node>(qorcore::MakeIntrusive<qorui::UI_SubView>());
    }));
    ASSERT_TRUE(UI_NodeBuilder::RegisterSectionApplier("qafui_test::Applied", ThrowingApplier));
    // Taken already, the toolkit's own, or nameless: refused.
    for (const char* name : {"qafui_test::Applied", "UI_Node", "qorui::ui::UI_Button", ""})
        EXPECT_FALSE(UI_NodeBuilder::RegisterSectionApplier(name, ThrowingApplier)) << name;

    Loaded loaded = Load(
        {Node("qafui_test::Applied",
              {Section("qafui_test::Applied",
                       Pair("ratio", Float("2.5")) + Pair("count", Int(7, true)) +
                           Pair("flag", Bool(false)) + Pair("names", UStrArray({"a", "b"})) +
                           Pair("mode", EnumItems({"x", "y"}, 1)) + Pair("text", Str("Hello"))),
               SubViewSection(), NodeSection("Applied", 0, 0, 10, 10)})});
    EXPECT_EQ(loaded.root->GetChildCount(), 1u) << "the node stays";
    EXPECT_EQ(seen, (std::vector<std::string>{"ratio", "count", "flag", "names", "mode", "text"}));
    EXPECT_FALSE(loaded.Mentions("not as written"));
    ASSERT_TRUE(loaded.Mentions("applier gave up"));
    EXPECT_TRUE(loaded.Mentions("child-0/sections/section-0"));
}

} // namespace
