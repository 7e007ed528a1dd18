// Edit numbers in node archives: the three archive classes load through the node builder with
// their section's properties (a falling range inverts the slider, the ruler types, placements
// and texts), bad properties are reported with their place, and the builder hands typed values
// to the section appliers of higher layers.
#include "controls/edit_number_adapter.hpp"
#include "platform/archive/node_archive_writer.hpp"
#include "platform/archive/ui_node_builder.hpp"
#include "platform/core/localizer.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace qoraudiofiltersui;
using namespace qafui_testing::archive;
using qorcore::IntrusivePtr;
using qorui::NodeArchiveReport;
using qorui::UI_NodeBuilder;

namespace {

std::string EnumItems(const std::vector<std::string>& items, int selected) {
    return List(Pair(".aptype", Int(2)) + Pair("items", UStrArray(items)) +
                Pair("selected", Int(selected)));
}

std::string RulerType(int selected) {
    return EnumItems({"None", "Linear", "Logarithmic", "DB", "FaderDB"}, selected);
}
std::string RulerPlacementEnum(int selected) {
    return EnumItems({"Left/Top", "Right/Bottom", "Both"}, selected);
}
std::string RulerTextPlacementEnum(int selected) {
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

std::string Archive(const std::vector<std::string>& children) {
    return Document(
        Node("qorui::ui::UI_SubView",
             {Section("qorui::ui::UI_SubView", Pair("children", Indexed("child-", children))),
              NodeSection("Root", 0, 0, 400, 400)}));
}

struct Loaded {
    IntrusivePtr<qorui::UI_Node> root;
    UI_NodeBuilder::NodeMap nodes;
    NodeArchiveReport report;

    EditNumber& Get(const std::string& id) {
        auto* control = dynamic_cast<EditNumber*>(nodes.at(id).get());
        if (!control)
            throw std::runtime_error(id + " is no edit number");
        return *control;
    }
    bool Mentions(const std::string& part) const {
        for (const auto& d : report.diagnostics)
            if (d.message.find(part) != std::string::npos || d.path.find(part) != std::string::npos)
                return true;
        return false;
    }
};

Loaded Load(const std::string& text) {
    RegisterEditNumberAdapters();
    Loaded loaded;
    loaded.root = UI_NodeBuilder::LoadViewFromXMLText(text, {}, &loaded.nodes, {}, &loaded.report);
    return loaded;
}

} // namespace

TEST(EditNumberArchive, TheThreeClassesAreRegistered) {
    RegisterEditNumberAdapters();
    RegisterEditNumberAdapters(); // again: nothing happens
    for (const char* name :
         {"qoraudiofiltersui::EditNumber", "qoraudiofiltersui::EditNumber_Horizontal",
          "qoraudiofiltersui::EditNumber_Vertical"})
        EXPECT_TRUE(UI_NodeBuilder::IsAdapterRegistered(name)) << name;
    EXPECT_EQ(EditNumberAdapter::GetPropertyNames().size(), 20u);
    EXPECT_EQ(EditNumberAdapter::GetPropertyNames().front(), "label");
    EXPECT_EQ(EditNumberAdapter::GetPropertyNames().back(), "logarithmic");
}

TEST(EditNumberArchive, TheClassesStartAsTheArchiveEditorMakesThem) {
    auto horizontal = EditNumberAdapter_Horizontal().CreateNode();
    EXPECT_TRUE(horizontal->IsHorizontal());
    EXPECT_FALSE(horizontal->GetUsesLabel());
    EXPECT_TRUE(horizontal->GetUsesSlider());
    EXPECT_FALSE(horizontal->GetUsesInline());
    EXPECT_EQ(horizontal->GetSlider()->GetDirection(),
              qorui::kSliderDirectionHorizontalPointingDown);
    EXPECT_EQ(horizontal->GetHotTextNumberAlignment(), qorui::penrig::HorizontalAlignment::kRight);
    EXPECT_EQ(horizontal->GetUnitLabelLength(), 40u);
    EXPECT_EQ(horizontal->GetFrame(), qorcore::RectT<float>(0, 0, 300, 20));

    auto vertical = EditNumberAdapter_Vertical().CreateNode();
    EXPECT_FALSE(vertical->IsHorizontal());
    EXPECT_FALSE(vertical->GetUsesLabel());
    EXPECT_EQ(vertical->GetLabel(), "Label");
    EXPECT_EQ(vertical->GetSlider()->GetDirection(), qorui::kSliderDirectionVertical);
    EXPECT_EQ(vertical->GetHotTextNumberAlignment(), qorui::penrig::HorizontalAlignment::kCenter);
    EXPECT_EQ(vertical->GetFrame(), qorcore::RectT<float>(0, 0, 30, 280));
}

TEST(EditNumberArchive, AnArchiveWithEditNumbersLoads) {
    const std::string semitones = EditNumberNode(
        "qoraudiofiltersui::EditNumber_Horizontal",
        Pair("abbreviateNumbers", Bool(false)) + Pair("decimalPlaces", Int(0, true)) +
            Pair("digits", Double("4")) + Pair("increment", Double("1")) +
            Pair("label", UStr("Semitones:")) + Pair("logSeed", Double("1")) +
            Pair("logStep", Double("10")) + Pair("logarithmic", Bool(false)) +
            Pair("maxValue", Double("12")) + Pair("minValue", Double("-12")) +
            Pair("rulerLabel1", UStr("")) + Pair("rulerLabel2", UStr("st")) +
            Pair("rulerPlacement", RulerPlacementEnum(2)) +
            Pair("rulerTextPlacement", RulerTextPlacementEnum(1)) +
            Pair("rulerType", RulerType(1)) + Pair("stepFactor", Double("2")) +
            Pair("unitLabel", UStr("st")) + Pair("unitLabelLength", Int(30, true)) +
            Pair("useInline", Bool(true)) + Pair("useLabel", Bool(true)),
        NodeSection("PS_SemiTones", 10, 10, 360, 40,
                    Pair("tooltip", UStr("($$$/qafui/Test/SemiTip=Pitch in semitones)"))));
    const std::string gain = EditNumberNode(
        "qoraudiofiltersui::EditNumber_Vertical",
        Pair("label", UStr("($$$/qafui/Test/Gain=Gain)")) + Pair("useLabel", Int(1)) +
            Pair("maxValue", Double("-48")) + Pair("minValue", Double("48")) +
            Pair("rulerType", RulerType(3)) + Pair("rulerPlacement", RulerPlacementEnum(0)) +
            Pair("rulerTextPlacement", RulerTextPlacementEnum(2)) + Pair("unitLabel", UStr("dB")),
        NodeSection("Gain", 10, 60, 60, 300));
    const std::string frequency = EditNumberNode(
        "qoraudiofiltersui::EditNumber_Horizontal",
        Pair("abbreviateNumbers", Bool(true)) + Pair("logarithmic", Bool(true)) +
            Pair("maxValue", Double("20000")) + Pair("minValue", Double("20")) +
            Pair("rulerType", RulerType(2)) + Pair("logStep", Double("10")) +
            Pair("logSeed", Double("2")) + Pair("rulerPlacement", RulerPlacementEnum(1)) +
            Pair("rulerTextPlacement", RulerTextPlacementEnum(0)) +
            Pair("decimalPlaces", Int(1, true)),
        NodeSection("Frequency", 80, 60, 300, 30));
    Loaded loaded = Load(Archive({semitones, gain, frequency}));
    ASSERT_TRUE(loaded.root);
    for (const auto& d : loaded.report.diagnostics)
        ADD_FAILURE() << d.path << ": " << d.message;
    ASSERT_EQ(loaded.root->GetChildCount(), 3u);

    EditNumber& st = loaded.Get("PS_SemiTones");
    EXPECT_EQ(st.GetFrame(), qorcore::RectT<float>(10, 10, 360, 40));
    EXPECT_TRUE(st.GetUsesLabel());
    EXPECT_EQ(st.GetLabel(), "Semitones:");
    EXPECT_TRUE(st.GetUsesInline());
    EXPECT_EQ(st.GetHotTextNumber()->GetTextLabel(), "st");
    EXPECT_EQ(st.GetUnitLabelLength(), 30u);
    EXPECT_EQ(st.GetDecimalPlaces(), 0);
    EXPECT_EQ(st.GetDigits(), 4);
    EXPECT_EQ(st.GetIncrement(), 1.0);
    EXPECT_EQ(st.GetMinValue(), -12.0);
    EXPECT_EQ(st.GetMaxValue(), 12.0);
    EXPECT_FALSE(st.GetInvertSlider());
    auto* linear = dynamic_cast<qorui::LinearRuler*>(st.GetRuler().get());
    ASSERT_NE(linear, nullptr);
    EXPECT_EQ(linear->GetValue1(), -12.0);
    EXPECT_EQ(linear->GetValue2(), 12.0);
    EXPECT_FALSE(linear->IsVertical());
    EXPECT_EQ(linear->GetStepFactor(), 2.0);
    EXPECT_EQ(linear->GetLabel2(), "st");
    EXPECT_EQ(st.GetRulerPlacement(), kRulerPlacementBoth);
    EXPECT_EQ(st.GetRulerTextPlacement(), kRulerTextPlacementLeftTop);
    EXPECT_EQ(st.GetHotTextNumber()->GetToolTipText(), "Pitch in semitones");

    EditNumber& g = loaded.Get("Gain");
    EXPECT_FALSE(g.IsHorizontal());
    EXPECT_EQ(g.GetLabel(), "Gain");
    EXPECT_TRUE(g.GetUsesLabel()) << "an int stands for the boolean";
    EXPECT_EQ(g.GetMinValue(), -48.0) << "the falling range is swapped";
    EXPECT_EQ(g.GetMaxValue(), 48.0);
    EXPECT_TRUE(g.GetInvertSlider());
    auto* decibels = dynamic_cast<qorui::DecibelRuler*>(g.GetRuler().get());
    ASSERT_NE(decibels, nullptr);
    EXPECT_EQ(decibels->GetStyle(), qorui::DecibelRuler::kStyleLinear);
    EXPECT_TRUE(decibels->IsVertical());
    EXPECT_EQ(decibels->GetValue1(), 48.0) << "+48 at the top, where the slider's value is 0";
    EXPECT_EQ(g.GetRulerTextPlacement(), kRulerTextPlacementRightBottom);
    g.SetValue(48);
    EXPECT_EQ(g.GetSlider()->GetNormalizedValue(), 0.0);

    EditNumber& f = loaded.Get("Frequency");
    EXPECT_TRUE(f.GetSliderLogarithmic());
    auto* log = dynamic_cast<qorui::LogRuler*>(f.GetRuler().get());
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->GetLogSeed(), 2.0);
    EXPECT_EQ(log->GetLogStep(), 10.0);
    EXPECT_TRUE(log->GetAbbreviateNumbers());
    EXPECT_TRUE(log->AreNumbersHidden()) << "text placement None";
    EXPECT_EQ(f.GetDecimalPlaces(), 1);
}

TEST(EditNumberArchive, BadPropertiesAreReportedAndLeftOut) {
    const std::string bad =
        EditNumberNode("qoraudiofiltersui::EditNumber_Horizontal",
                       Pair("useLabel", UStr("yes")) + Pair("minValue", Double("-1")) +
                           Pair("maxValue", Double("1")) + Pair("rulerType", RulerType(2)) +
                           Pair("increment", Double("-3")),
                       NodeSection("Bad", 0, 0, 300, 30));
    const std::string placement =
        EditNumberNode("qoraudiofiltersui::EditNumber_Horizontal",
                       Pair("rulerType", RulerType(9)) + Pair("label", Bool(true)),
                       NodeSection("Placement", 0, 40, 300, 30));
    Loaded loaded = Load(Archive({bad, placement}));
    ASSERT_TRUE(loaded.root);
    ASSERT_EQ(loaded.root->GetChildCount(), 2u) << "bad properties don't cost the node";

    EditNumber& b = loaded.Get("Bad");
    EXPECT_FALSE(b.GetUsesLabel());
    EXPECT_EQ(b.GetRuler(), nullptr) << "a logarithmic ruler can't reach 0";
    EXPECT_EQ(b.GetMinValue(), -1.0);
    EXPECT_EQ(b.GetIncrement(), 1.0);
    EXPECT_TRUE(loaded.Mentions("child-0/sections/section-1/useLabel"));
    EXPECT_TRUE(loaded.Mentions("expected a boolean"));
    EXPECT_TRUE(loaded.Mentions("child-0/sections/section-1/rulerType"));
    EXPECT_TRUE(loaded.Mentions("child-0/sections/section-1/increment"));
    EXPECT_TRUE(loaded.Mentions("selected 9 is not one of the 5 items"));
    EXPECT_TRUE(loaded.Mentions("child-1/sections/section-1/label"));
    for (const auto& d : loaded.report.diagnostics)
        EXPECT_GT(d.line, 1) << d.path;
}

// ---- the builder's section appliers ----

namespace {

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

} // namespace

TEST(SectionAppliers, GetTypedValuesAndTheirFaultsAreReported) {
    ASSERT_TRUE(UI_NodeBuilder::RegisterAdapter("qafui_test::Applied", [] {
        return IntrusivePtr<qorui::UI_Node>(qorcore::MakeIntrusive<qorui::UI_SubView>());
    }));
    ASSERT_TRUE(UI_NodeBuilder::RegisterSectionApplier("qafui_test::Applied", ThrowingApplier));
    EXPECT_FALSE(UI_NodeBuilder::RegisterSectionApplier("qafui_test::Applied", ThrowingApplier))
        << "taken";
    EXPECT_FALSE(UI_NodeBuilder::RegisterSectionApplier("UI_Node", ThrowingApplier))
        << "the toolkit's sections stay its own";
    EXPECT_FALSE(UI_NodeBuilder::RegisterSectionApplier("qorui::ui::UI_Button", ThrowingApplier));
    EXPECT_FALSE(UI_NodeBuilder::RegisterSectionApplier("", ThrowingApplier));

    const std::string node =
        Node("qafui_test::Applied",
             {Section("qafui_test::Applied",
                      Pair("ratio", Float("2.5")) + Pair("count", Int(7, true)) +
                          Pair("flag", Bool(false)) + Pair("names", UStrArray({"a", "b"})) +
                          Pair("mode", EnumItems({"x", "y"}, 1)) + Pair("text", Str("Hello"))),
              SubViewSection(), NodeSection("Applied", 0, 0, 10, 10)});
    Loaded loaded = Load(Archive({node}));
    ASSERT_TRUE(loaded.root);
    EXPECT_EQ(loaded.root->GetChildCount(), 1u) << "the node stays";
    EXPECT_EQ(seen, (std::vector<std::string>{"ratio", "count", "flag", "names", "mode", "text"}));
    EXPECT_FALSE(loaded.Mentions("not as written"));
    ASSERT_TRUE(loaded.Mentions("applier gave up"));
    EXPECT_TRUE(loaded.Mentions("child-0/sections/section-0"));
}
