#include "tess_scene.hpp"

#include "core/stream_error.hpp"
#include "platform/core/trace.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/panels/ui_tab_group.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_radio_button.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using qafui_testing::TessScene;
using vorlen::any_regular_t;
using vorlen::name_t;

const char* const kSheet = R"(sheet Test {
interface:
    enabled: true;
    mode: 1;
    level: 0.5;
    gain: -6;
    choice: @low;
    source: 'from source';
    target: 'none';
    command: 'idle';
    tab: 0;
})";

const char* const kLayout = R"(layout Test {
interface: caption: 'Caption';
view subview(margin: 8, spacing: 4) {
    checkbox(identifier: 'Enabled', name: 'Enabled', bind: @enabled);
    radiogroup(identifier: 'Mode') {
        radio_button(identifier: 'ModeA', name: 'A', bind: @mode, value: 0);
        radio_button(identifier: 'ModeB', name: 'B', bind: @mode, value: 1);
    }
    popup(identifier: 'Choice', bind: @choice,
          items: [{name: 'Low', value: @low}, {name: 'High', value: @high}]);
    display_text(identifier: 'Shown', value: @gain);
    static_text(identifier: 'Caption', name: caption);
    row(spacing: 4) {
        button(identifier: 'Copy', name: 'Copy', bind: @source, bind_output: @target);
        button(identifier: 'Go', name: 'Go', bind_output: @command, value: 'run',
               alt: '$$$/qafui/Test/Go=Runs the command');
    }
    knob(identifier: 'Level', bind: @level, value_range: [0, 1]);
    slider(identifier: 'Gain', bind: @gain, min_max_filter: {min_value: -24, max_value: 0});
    inline_edit_number(identifier: 'GainNumber', name: 'Gain:', value: @gain, label: ' dB',
                       min_max_filter: {min_value: -24, max_value: 0}, decimal_places: 1);
    separator();
    optional(identifier: 'Panel', bind: @enabled) {
        static_text(identifier: 'Inside', name: 'Inside the panel');
    }
    tab_group(identifier: 'Tabs', bind: @tab, items: [{name: 'One', value: 0}, {name: 'Two', value: 1}]) {
        optional(bind: @tab, value: 0) { static_text(identifier: 'First', name: 'First page'); }
        optional(bind: @tab, value: 1) { static_text(identifier: 'Second', name: 'Second page'); }
    }
}
})";

template <typename Control>
Control& As(qorui::UI_Node& node) {
    auto* control = dynamic_cast<Control*>(&node);
    if (!control)
        throw std::runtime_error("control of another class");
    return *control;
}

TEST(TessBinding, TwoStateControlsFollowTheirCellsAndWriteThem) {
    TessScene scene(kSheet, kLayout);
    auto& enabled = As<qorui::UI_Checkbox>(scene.Control("Enabled"));
    EXPECT_TRUE(enabled.IsChecked());

    scene.Set("enabled", any_regular_t(false));
    EXPECT_FALSE(enabled.IsChecked());
    scene.Click("Enabled");
    EXPECT_EQ(scene.Get("enabled"), any_regular_t(true));

    auto& a = As<qorui::UI_RadioButton>(scene.Control("ModeA"));
    auto& b = As<qorui::UI_RadioButton>(scene.Control("ModeB"));
    auto checked = [&] {
        return std::pair(a.IsChecked(), b.IsChecked());
    };
    EXPECT_EQ(checked(), std::pair(false, true));
    scene.Click("ModeA");
    EXPECT_EQ(scene.Get("mode"), any_regular_t(0.0));
    EXPECT_EQ(checked(), std::pair(true, false));
    scene.Set("mode", any_regular_t(1.0));
    EXPECT_EQ(checked(), std::pair(false, true));
}

TEST(TessBinding, ChoicesTextsAndNumbersShowTheirCells) {
    TessScene scene(kSheet, kLayout);
    auto& choice = As<qorui::UI_Popup>(scene.Control("Choice"));
    EXPECT_EQ(choice.GetSelectedIndex(), 0);
    scene.Set("choice", any_regular_t(name_t("high")));
    EXPECT_EQ(choice.GetSelectedIndex(), 1);
    choice.ChooseItem(0);
    EXPECT_EQ(scene.Get("choice"), any_regular_t(name_t("low")));
    scene.Set("choice", any_regular_t(name_t("neither")));
    EXPECT_EQ(choice.GetSelectedIndex(), -1);
    EXPECT_EQ(choice.GetDisplayedText(), "") << "a value no item has shows no item";

    EXPECT_EQ(As<qorui::UI_StaticText>(scene.Control("Caption")).GetText(), "Caption")
        << "an argument may read the layout's own cells";
    auto& shown = As<qorui::UI_StaticText>(scene.Control("Shown"));
    EXPECT_EQ(shown.GetText(), "-6");
    auto& slider = As<qorui::UI_Slider>(scene.Control("Gain"));
    EXPECT_DOUBLE_EQ(slider.GetValue(), 0.75) << "-6 in -24..0";
    auto& number = As<qorui::UI_HotTextNumber>(scene.Control("GainNumber"));
    EXPECT_DOUBLE_EQ(number.GetValue(), -6.0);
    EXPECT_DOUBLE_EQ(number.GetMinValue(), -24.0);

    scene.Set("gain", any_regular_t(-12.0));
    EXPECT_EQ(shown.GetText(), "-12");
    EXPECT_DOUBLE_EQ(slider.GetValue(), 0.5);
    EXPECT_DOUBLE_EQ(number.GetValue(), -12.0);

    // A wheel step on the number writes the cell, and the slider follows through the sheet.
    const auto at = scene.Centre("GainNumber");
    scene.window->MouseWheel(at.x, at.y, 1.0f);
    EXPECT_DOUBLE_EQ(scene.Get("gain").cast<double>(), number.GetValue());
    EXPECT_NE(number.GetValue(), -12.0);
    EXPECT_DOUBLE_EQ(slider.GetValue(), (number.GetValue() + 24.0) / 24.0);
}

TEST(TessBinding, ButtonsWriteTheirValueOrTheirSourceCell) {
    TessScene scene(kSheet, kLayout);
    scene.Click("Copy");
    EXPECT_EQ(scene.Get("target"), any_regular_t(std::string("from source")));
    scene.Click("Go");
    EXPECT_EQ(scene.Get("command"), any_regular_t(std::string("run")));
    EXPECT_EQ(scene.Control("Go").GetToolTipText(), "Runs the command") << "alt is localised";
}

TEST(TessBinding, OptionalPanelsComeAndGoWithANewLayout) {
    TessScene scene(kSheet, kLayout);
    qorui::UI_Node& inside = scene.Control("Inside");
    const float shownHeight = scene.root->GetFrame().height;
    EXPECT_TRUE(inside.IsShown());

    scene.Set("enabled", any_regular_t(false));
    EXPECT_FALSE(inside.IsShown());
    EXPECT_LT(scene.root->GetFrame().height, shownHeight) << "a hidden panel takes no room";

    scene.Click("Enabled"); // the user's change runs the same batch
    EXPECT_TRUE(inside.IsShown());
    EXPECT_EQ(scene.root->GetFrame().height, shownHeight);
}

TEST(TessBinding, TabsShowThePanelOfTheirValue) {
    TessScene scene(kSheet, kLayout);
    auto& tabs = As<qorui::UI_TabGroup>(scene.Control("Tabs"));
    auto shown = [&] {
        return std::pair(scene.Control("First").IsShown(), scene.Control("Second").IsShown());
    };
    EXPECT_EQ(tabs.GetSelectedTab(), 0);
    EXPECT_EQ(shown(), std::pair(true, false));

    const auto tab = tabs.UI_LocalToGlobalF(tabs.GetTabRect(1));
    scene.window->Click(tab.x + tab.width / 2, tab.y + tab.height / 2);
    EXPECT_EQ(scene.Get("tab"), any_regular_t(1.0));
    EXPECT_EQ(shown(), std::pair(false, true));
    // The second page sits where the first did: both panels overlay the tab group's area.
    EXPECT_EQ(scene.Control("Second").UI_LocalToGlobalF(qorcore::PointT<float>{0, 0}).y,
              tabs.UI_LocalToGlobalF(qorcore::PointT<float>{0, tabs.GetTabHeight()}).y);

    scene.Set("tab", any_regular_t(0.0));
    EXPECT_EQ(tabs.GetSelectedTab(), 0);
    EXPECT_EQ(shown(), std::pair(true, false));
}

TEST(TessBinding, WidgetsArePlacedByTheSolverInsideTheirContainers) {
    TessScene scene(kSheet, kLayout);
    // The first child sits at the root's margin; the next below it with the spacing.
    const auto& enabled = scene.Control("Enabled").GetFrame();
    EXPECT_EQ(enabled.x, 8.0f);
    EXPECT_EQ(enabled.y, 8.0f);
    const auto mode = scene.Control("Mode").GetFrame();
    EXPECT_EQ(mode.y, enabled.y + enabled.height + 4);
    // Radio buttons hang in their group, positioned relative to it.
    EXPECT_EQ(scene.Control("ModeA").GetParent(), &scene.Control("Mode"));
    EXPECT_EQ(scene.Control("ModeA").GetFrame().y, 0.0f);
    // Buttons of a row share a top.
    EXPECT_EQ(scene.Control("Copy").GetFrame().y, scene.Control("Go").GetFrame().y);
    EXPECT_GT(scene.Control("Go").GetFrame().x, scene.Control("Copy").GetFrame().x);
    // A separator fills its column.
    EXPECT_GT(scene.root->GetFrame().width, 0.0f);
}

/// A client adapter that makes a static text with the widget's `text` argument.
class TextClientAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    TextClientAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                      const qormarltess::FactoryToken& token)
        : UI_QORClientWidgetTessAdapter(parent, token) {
        std::string text;
        vorlen::get_value(arguments, name_t("text"), text);
        SetNode(qorcore::IntrusivePtr<qorui::UI_StaticText>(new qorui::UI_StaticText(text)));
        std::string identifier;
        vorlen::get_value(arguments, name_t("identifier"), identifier);
        UI_SetNodeID(identifier);
        AddToParent();
    }

protected:
    std::pair<int, int> GetNaturalSize() const override { return {50, 14}; }
};

const char* const kClientLayout = R"(layout Client {
view subview() {
    fancy_widget(identifier: 'Fancy', text: 'made by the client') {
        checkbox(identifier: 'Child');
    }
    checkbox(identifier: 'After');
}
})";

TEST(TessBinding, UnknownWidgetsGoToTheClientOrAreLeftOutWithATrace) {
    std::vector<std::string> traces;
    qorcore::debug::SetTraceSettings("UI_Tess*=5");
    qorcore::debug::SetTraceSink(
        [&](int, std::string_view, std::string_view text) { traces.emplace_back(text); });
    {
        TessScene scene("", kClientLayout);
        EXPECT_FALSE(scene.Holder().GetControl("Fancy"));
        EXPECT_FALSE(scene.Holder().GetControl("Child")) << "the children go with it";
        EXPECT_TRUE(scene.Holder().GetControl("After"));
    }
    qorcore::debug::SetTraceSink({});
    qorcore::debug::SetTraceSettings("");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_NE(traces[0].find("test.tss:3:5"), std::string::npos) << traces[0];
    EXPECT_NE(traces[0].find("fancy_widget"), std::string::npos) << traces[0];

    qormarltess::UI_Tess engine(nullptr);
    std::vector<std::string> asked;
    engine.SetClientWidgetAdapterFactory(
        [&](const name_t& widget, const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
            const qormarltess::FactoryToken& token) -> qormarltess::UI_QORClientWidgetTessAdapter* {
            asked.emplace_back(widget.c_str());
            if (widget != name_t("fancy_widget"))
                return nullptr;
            return new TextClientAdapter(arguments, parent, token);
        });
    TessScene scene("", kClientLayout, 1.0f, &engine);
    EXPECT_EQ(asked, std::vector<std::string>{"fancy_widget"}) << "built-ins never reach it";
    auto& fancy = As<qorui::UI_StaticText>(scene.Control("Fancy"));
    EXPECT_EQ(fancy.GetText(), "made by the client");
    EXPECT_EQ(fancy.GetFrame().width, 50.0f);
    EXPECT_EQ(scene.Control("Child").GetParent(), &fancy) << "children hang in the client's node";
}

std::string FailureOf(const std::string& layout) {
    try {
        TessScene scene(kSheet, layout);
    } catch (const std::exception& error) {
        return vorlen::format_stream_error(error);
    }
    return "no failure";
}

TEST(TessBinding, BadArgumentsFailAtTheirPlaceAndLeaveNothingBehind) {
    EXPECT_NE(FailureOf("layout T {\nview subview() {\n    checkbox(bind: @nowhere);\n}\n}")
                  .find("test.tss:3:5: no cell named 'nowhere' to bind"),
              std::string::npos);
    const std::string wrongType =
        FailureOf("layout T {\nview subview() {\n  popup(items: 5);\n}\n}");
    EXPECT_EQ(wrongType.rfind("test.tss:3:3: ", 0), 0u) << wrongType;
    const std::string syntax = FailureOf("layout T {\nview subview() {\n  checkbox(name: );\n}\n}");
    EXPECT_EQ(syntax.rfind("test.tss:3:", 0), 0u) << syntax;
}

/// An engine that finds inserted layouts by name, as a view does through its resources.
class BandEngine : public qormarltess::UI_Tess {
public:
    BandEngine() : UI_Tess(nullptr) {}

protected:
    std::vector<std::uint8_t> GetLayoutScript(name_t name) override {
        if (name != name_t("Band"))
            return {};
        const std::string text = "layout Band {\ninterface: label: 'Band';\nview column() {\n"
                                 "  static_text(identifier: 'Name', name: label);\n"
                                 "  checkbox(identifier: 'On', bind: @enabled);\n}\n}";
        return std::vector<std::uint8_t>(text.begin(), text.end());
    }
};

TEST(TessBinding, InsertedLayoutsKeepTheirOwnCellsAndUniqueIdentifiers) {
    BandEngine engine;
    TessScene scene(kSheet,
                    "layout Main { view subview() { layout_script(identifier: 'Band', layoutId: 1);"
                    " layout_script(identifier: 'Band', layoutId: 2); } }",
                    1.0f, &engine);
    auto& first = As<qorui::UI_StaticText>(scene.Control("Band1_Name"));
    EXPECT_EQ(first.GetText(), "Band");
    EXPECT_TRUE(scene.Holder().GetControl("Band2_Name"));
    // Both bands bind the view's cell.
    scene.Click("Band2_On");
    EXPECT_EQ(scene.Get("enabled"), any_regular_t(false));
    EXPECT_FALSE(As<qorui::UI_Checkbox>(scene.Control("Band1_On")).IsChecked());
    EXPECT_GT(scene.Control("Band2_Name").GetFrame().y, scene.Control("Band1_On").GetFrame().y);
}

TEST(TessBinding, ControlsAreEnabledWhileTheirCellCounts) {
    TessScene scene(R"(sheet E {
interface:
    use_gain: true;
    gain: 0;
output:
    result <== use_gain ? gain : 0;
})",
                    R"(layout E { view subview() {
    checkbox(identifier: 'Use', bind: @use_gain);
    knob(identifier: 'Gain', bind: @gain, value_range: [-10, 10]);
} })");
    EXPECT_TRUE(scene.Control("Gain").IsEnabled());
    scene.Click("Use");
    EXPECT_EQ(scene.Get("use_gain"), any_regular_t(false));
    EXPECT_FALSE(scene.Control("Gain").IsEnabled()) << "the result no longer reads the gain";
    scene.Set("use_gain", any_regular_t(true));
    EXPECT_TRUE(scene.Control("Gain").IsEnabled());
}

} // namespace

TEST(TessBinding, ACellThatARelationFillsKeepsItsControlEnabled) {
    // Both knobs feed the result through one relation; whichever the relation fills now, the
    // user may turn either.
    TessScene scene(R"(sheet R {
interface:
    a: 1;
    b: 2;
logic:
    relate { a <== b / 2; b <== a * 2; }
output:
    result <== a + b;
})",
                    R"(layout R { view subview() {
    knob(identifier: 'A', bind: @a, value_range: [0, 10]);
    knob(identifier: 'B', bind: @b, value_range: [0, 10]);
} })");
    for (const char* first : {"a", "b"}) {
        scene.Set(first, any_regular_t(4.0));
        EXPECT_TRUE(scene.Control("A").IsEnabled()) << first;
        EXPECT_TRUE(scene.Control("B").IsEnabled()) << first;
    }
}

TEST(TessBinding, AWidthOrHeightTheScriptAsksForReplacesTheNaturalOne) {
    TessScene scene(R"(sheet S { interface: on: true; })", R"(layout S {
view subview(spacing: 0) {
    row(height: 30, child_vertical: @align_center) { checkbox(identifier: 'Centred', bind: @on); }
    checkbox(identifier: 'Fixed', bind: @on, width: 120, height: 24);
    checkbox(identifier: 'Natural', bind: @on);
} })");
    const auto centred = scene.Control("Centred").GetFrame();
    EXPECT_EQ(centred.y, std::floor((30.0f - centred.height) / 2));
    const auto fixed = scene.Control("Fixed").GetFrame();
    EXPECT_EQ(fixed.y, 30.0f) << "the row below is as tall as asked";
    EXPECT_EQ(fixed.width, 120.0f);
    EXPECT_EQ(fixed.height, 24.0f);
    EXPECT_EQ(scene.Control("Natural").GetFrame().y, 54.0f);
    EXPECT_LT(scene.Control("Natural").GetFrame().width, 120.0f);
}

TEST(TessBinding, PanelsFollowACellOfTheLayoutsOwn) {
    TessScene scene(R"(sheet S { })", R"(layout L {
interface: page: 0;
view subview() {
    tab_group(identifier: 'Tabs', bind: @page, items: [{name: 'A', value: 0}, {name: 'B', value: 1}]) {
        optional(bind: @page, value: 0) { static_text(identifier: 'First', name: 'First page'); }
        optional(bind: @page, value: 1) { static_text(identifier: 'Second', name: 'Second page'); }
    }
} })");
    // The panels are the texts' parents.
    EXPECT_TRUE(scene.Control("First").GetParent()->IsVisible());
    EXPECT_FALSE(scene.Control("Second").GetParent()->IsVisible());
    EXPECT_GT(scene.Control("First").GetFrame().height, 0.0f) << "the shown panel takes room";
}
