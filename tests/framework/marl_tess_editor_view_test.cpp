#include "controls/edit_number.hpp"
#include "framework/adapter_factory.hpp"
#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "framework/resource_manager.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/core/trace.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/tess/ui_tess.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_knob.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_slider.hpp"
#include "sheet/sheet.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

using namespace qoraudiofiltersui;
using qoraudiofilterhost::ParameterDescriptor;
using qoraudiofilterhost::ParameterStoreFilter;
using Kind = ParameterStoreFilter::CallKind;
using vorlen::any_regular_t;
using vorlen::name_t;

namespace {

// A gain in dB and a bypass switch on parameters 0 and 1; parameter 2 has no cells.
const char* const kSheet = R"(sheet Test {
constant:
    gain_min: -24;
    gain_max: 0;
    gain_range: gain_max - gain_min;
input:
    in0: 0.5;
    in1: 0;
    sample_rate: 0;
    suspended: false;
    time_format: { };
interface:
    unlink gain: in0 * gain_range + gain_min;
    unlink bypass: in1 >= 0.5;
    unlink boost: 0.25;
    unlink rate <== sample_rate;
    unlink is_suspended <== suspended;
    unlink align_probe <== align_left;
    unlink empty_curve <== get_curve_data({ index: 0, size: 0 });
    unlink curve <== get_curve_data({ index: 0, size: 3 });
    unlink channel_names <== [get_output_channel_abbrev(0), get_output_channel_abbrev(1),
                              get_output_channel_name(2), get_output_channel_abbrev(-1),
                              get_output_channel_abbrev(3)];
output:
    out0 <== (gain - gain_min) / gain_range;
    out1 <== bypass ? 1 : 0;
    out2 <== boost;
})";

const char* const kLayout = R"(layout Test {
view subview(margin: 4, spacing: 4) {
    inline_edit_number(identifier: 'Gain', value: @gain, decimal_places: 1, increment: 1,
                       min_max_filter: { min_value: gain_min_shown, max_value: 0 });
    checkbox(identifier: 'Bypass', name: 'Bypass', bind: @bypass);
    display_text(identifier: 'Rate', value: @rate);
    display_text(identifier: 'Suspended', value: @is_suspended);
    popup(identifier: 'Channels', items: get_output_channel_abbrev_array());
    static_text(identifier: 'Aligned', name: name_to_string(align_center));
}
})";

/// A sheet-driven editor over its own resource folder, in a headless window.
class EditorScene : public ::testing::Test {
protected:
    void TearDown() override {
        if (window)
            window->GetRoot()->RemoveAllChildren();
        view.reset();
        std::filesystem::remove_all(folder);
    }
    void Open(const std::string& sheet, const std::string& layout, bool hasSheet = true) {
        std::filesystem::create_directories(folder);
        if (hasSheet)
            std::ofstream(folder / "TEST.mrl") << sheet;
        // The layout reads a cell of its own for the limits: a layout's interface.
        std::string withInterface = layout;
        withInterface.insert(withInterface.find('{') + 1, "\ninterface: gain_min_shown: -24;\n");
        std::ofstream(folder / "TEST.tss") << withInterface;
        manager = std::make_unique<ResourceManager>(ModuleHandle{}, folder);
        view = MarlTessAudioFilterEditorView::Create(filter, &supplier, "Test", manager.get(),
                                                     hasSheet);
        window = std::make_unique<qorui::HeadlessWindow>(400, 300);
        window->AddNode(view);
    }
    template <class T = qorui::UI_Node>
    T& Control(const char* identifier) {
        auto* node =
            dynamic_cast<T*>(view->GetTessRoot()->GetTessViewHolder().GetControl(identifier).get());
        if (!node)
            throw std::runtime_error(std::string("no control ") + identifier);
        return *node;
    }
    std::string Text(const char* identifier) {
        return Control<qorui::UI_StaticText>(identifier).GetText();
    }
    qorcore::PointT<float> Centre(const char* identifier) {
        auto& node = Control(identifier);
        return node.UI_LocalToGlobalF({node.GetFrame().width / 2, node.GetFrame().height / 2});
    }
    any_regular_t Cell(const char* name) { return view->GetSheet()->get(name_t(name)); }
    void Set(const char* name, const any_regular_t& value) {
        view->GetSheet()->set(name_t(name), value);
        view->GetSheet()->update();
    }
    std::size_t Count(Kind kind) const { return filter->GetCalls(kind).size(); }
    /// How many gestures were begun and ended.
    std::vector<std::size_t> Gestures() const {
        return {Count(Kind::kBeginParameterEdit), Count(Kind::kEndParameterEdit)};
    }
    using Counts = std::vector<std::size_t>;
    void Tick() { window->AdvanceTime(0.01); }

    std::shared_ptr<ParameterStoreFilter> filter = std::make_shared<ParameterStoreFilter>(
        std::vector<ParameterDescriptor>{{"Gain", 0.0f, 1.0f, 0.5f},
                                         {"Bypass", 0.0f, 1.0f, 0.0f},
                                         {"Other", 0.0f, 1.0f, 0.25f}});
    qorui::penrig::CairoSupplier supplier;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("qafui-marltess-" + std::to_string(::getpid()));
    std::unique_ptr<ResourceManager> manager;
    IntrusivePtr<MarlTessAudioFilterEditorView> view;
    std::unique_ptr<qorui::HeadlessWindow> window;
};

TEST_F(EditorScene, TheFirstSyncBringsTheFiltersValuesIntoTheSheetAndControls) {
    filter->StoreValue(0, 0.75f);
    filter->SetSampleRate(44100.0f);
    Open(kSheet, kLayout);
    EXPECT_DOUBLE_EQ(Cell("gain").cast<double>(), -6.0);
    EXPECT_DOUBLE_EQ(Control<qorui::UI_HotTextNumber>("Gain").GetValue(), -6.0);
    EXPECT_EQ(Text("Rate"), "44100");
    EXPECT_EQ(Count(Kind::kSetParameterValue), 0u) << "the view's own refresh writes nothing back";
    EXPECT_GT(view->GetFrame().width, 0.0f);
    EXPECT_EQ(view->GetFrame().width, view->GetTessRoot()->GetFrame().width);
    EXPECT_TRUE(view->GetStateFlags().IsSet(16));
}

TEST_F(EditorScene, ADragOpensOneGestureAndTheButtonsReleaseClosesIt) {
    Open(kSheet, kLayout);
    const auto at = Centre("Gain");
    window->MouseDown(at.x, at.y);
    window->MouseMove(at.x, at.y - 10);
    window->MouseMove(at.x, at.y - 20);
    ASSERT_EQ(Count(Kind::kBeginParameterEdit), 1u);
    EXPECT_EQ(filter->GetCalls(Kind::kBeginParameterEdit)[0].index, 0);
    const std::size_t writes = Count(Kind::kSetParameterValue);
    EXPECT_GE(writes, 2u);
    EXPECT_FLOAT_EQ(filter->GetParameterValue(0),
                    float((Cell("gain").cast<double>() + 24.0) / 24.0));

    // Ticks while the button is down write the inputs back (in sync) but end nothing.
    Tick();
    Tick();
    EXPECT_EQ(Gestures(), (Counts{1, 0}));
    EXPECT_EQ(Count(Kind::kSetParameterValue), writes) << "the outputs fire again, ignored";

    window->MouseUp(at.x, at.y - 20);
    EXPECT_EQ(Gestures(), (Counts{1, 0})) << "gestures close at the next tick";
    Tick();
    ASSERT_EQ(Gestures(), (Counts{1, 1}));
    EXPECT_EQ(filter->GetCalls(Kind::kEndParameterEdit)[0].index, 0);
    Tick();
    EXPECT_EQ(Gestures(), (Counts{1, 1}));
}

TEST_F(EditorScene, GesturesOfSeveralParametersCloseInRisingOrder) {
    Open(kSheet, kLayout);
    const auto gain = Centre("Gain");
    window->MouseDown(gain.x, gain.y);
    window->MouseMove(gain.x, gain.y - 12);
    // While the button is held the bypass changes too (as a linked control would).
    Set("bypass", any_regular_t(true));
    window->MouseUp(gain.x, gain.y - 12);
    Tick();
    std::vector<int> ended;
    for (const auto& call : filter->GetCalls(Kind::kEndParameterEdit))
        ended.push_back(call.index);
    EXPECT_EQ(ended, (std::vector<int>{0, 1}));
}

TEST_F(EditorScene, OnlyAPressInsideTheViewOpensGesturesAndItsFlagWaitsForOne) {
    Open(kSheet, kLayout);
    // A press elsewhere in the window holds the button, but it is not the view's.
    IntrusivePtr<qorui::UI_Node> elsewhere(new qorui::UI_Node);
    elsewhere->SetFrame({380, 280, 20, 20});
    window->GetRoot()->ChildPushBack(elsewhere);
    ASSERT_FALSE(view->GetFrame().Contains(qorcore::PointT<float>{390, 290}));
    window->MouseDown(390, 290);
    Set("gain", any_regular_t(-6.0));
    window->MouseUp(390, 290);
    Tick();
    EXPECT_EQ(Count(Kind::kSetParameterValue), 1u);
    EXPECT_EQ(Gestures(), (Counts{0, 0}));

    // A press inside that writes nothing leaves the flag up, so the next write is a gesture
    // even with the button up; the gesture's end takes the flag down.
    window->Click(Centre("Aligned").x, Centre("Aligned").y);
    Tick();
    EXPECT_EQ(Gestures(), (Counts{0, 0}));
    Set("gain", any_regular_t(-18.0));
    EXPECT_EQ(Gestures(), (Counts{1, 0}));
    Tick();
    EXPECT_EQ(Gestures(), (Counts{1, 1}));
    Set("gain", any_regular_t(-20.0));
    Tick();
    EXPECT_EQ(Gestures(), (Counts{1, 1}));
}

TEST_F(EditorScene, AClickWritesWithoutGestureAndEqualValuesAreNotWrittenAgain) {
    Open(kSheet, kLayout);
    window->Click(Centre("Bypass").x, Centre("Bypass").y);
    ASSERT_EQ(Count(Kind::kSetParameterValue), 1u);
    EXPECT_FLOAT_EQ(filter->GetParameterValue(1), 1.0f);
    Tick();
    EXPECT_EQ(Gestures(), (Counts{1, 1})) << "the press opened the bypass's gesture";

    filter->ClearCalls();
    Set("gain", any_regular_t(-12.0)); // the filter holds 0.5 already
    EXPECT_EQ(Count(Kind::kSetParameterValue), 0u);
    EXPECT_EQ(Gestures(), (Counts{0, 0}));
}

TEST_F(EditorScene, ASuspendedChangeForcesARefreshAndOutOfRangeValuesAreTraced) {
    Open(kSheet, kLayout);
    std::vector<std::string> traces;
    qorcore::debug::SetTraceSettings("MarlTessAudioFilterEditorView*=5");
    qorcore::debug::SetTraceSink(
        [&](int, std::string_view, std::string_view text) { traces.emplace_back(text); });

    filter->SetParameterQuietly(0, 0.25f); // no dirty count: a tick alone takes nothing
    Tick();
    EXPECT_DOUBLE_EQ(Cell("gain").cast<double>(), -12.0);
    filter->SetSuspended(true);
    Tick();
    EXPECT_DOUBLE_EQ(Cell("gain").cast<double>(), -18.0);
    EXPECT_EQ(Cell("suspended"), any_regular_t(true));
    EXPECT_EQ(Text("Suspended"), "true");

    filter->StoreValue(1, 1.5f);
    Tick();
    EXPECT_EQ(Cell("bypass"), any_regular_t(true)) << "the value is used all the same";
    // The other way: a value from the sheet outside 0..1 reaches the filter and is traced.
    Set("boost", any_regular_t(1.5));
    const auto writes = filter->GetCalls(Kind::kSetParameterValue);
    ASSERT_FALSE(writes.empty());
    EXPECT_EQ(writes.back().index, 2);
    EXPECT_FLOAT_EQ(writes.back().value, 1.5f);
    qorcore::debug::SetTraceSink({});
    qorcore::debug::SetTraceSettings("");
    EXPECT_EQ(traces, (std::vector<std::string>{
                          "(from component) parameter out of range: index = 1, value = 1.5\n",
                          "(from UI) parameter out of range: index = 2, value = 1.5\n"}));
}

TEST_F(EditorScene, TheFunctionPackReachesTheFilterAndReflectsLayoutNames) {
    filter->SetBuses({}, {{{1, 0, 2}}});
    filter->SetCustomFloatData(0, {1.5f, 2.5f, 3.5f});
    Open(kSheet, kLayout);
    EXPECT_EQ(Cell("align_probe"), any_regular_t(name_t("align_left")))
        << "a reflected name needs no cell";
    EXPECT_EQ(Cell("empty_curve"), any_regular_t(vorlen::array_t()));
    EXPECT_EQ(Cell("curve"), any_regular_t(vorlen::array_t{any_regular_t(1.5), any_regular_t(2.5),
                                                           any_regular_t(3.5)}));
    EXPECT_EQ(Cell("channel_names"),
              any_regular_t(
                  vorlen::array_t{any_regular_t(std::string("L")), any_regular_t(std::string("2")),
                                  any_regular_t(std::string("Right")), any_regular_t(std::string()),
                                  any_regular_t(std::string())}));
    EXPECT_EQ(Control<qorui::UI_Popup>("Channels").GetItems(),
              (std::vector<std::string>{"L", "2", "R"}));
    EXPECT_EQ(Text("Aligned"), "align_center");
}

// A layout without a sheet, bound by its parameter map.
const char* const kMappedLayout = R"(layout Mapped {
interface:
    __qoraudiofilter_parameter_map: [
        { identifier: 'Size', parameter: 0 },
        { identifier: 'Missing', parameter: 1 },
        { identifier: 'Level' },
        { identifier: 'Level', parameter: 2 },
        { identifier: 'Amount', parameter: 4 } ];
view subview(margin: 4) {
    popup(identifier: 'Size', items: [{name: 'a', value: 0}, {name: 'b', value: 1},
                                      {name: 'c', value: 2}, {name: 'd', value: 3},
                                      {name: 'e', value: 4}]);
    knob(identifier: 'Level', value_range: [-10, 10]);
    slider(identifier: 'Drive');
    test_edit_number(identifier: 'Amount');
}
})";

/// Stands in for the library's own edit number widget: the client hook makes a bare EditNumber.
class TestEditNumberAdapter : public qormarltess::UI_QORClientWidgetTessAdapter {
public:
    TestEditNumberAdapter(const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
                          const qormarltess::FactoryToken& token)
        : UI_QORClientWidgetTessAdapter(parent, token) {
        SetNode(IntrusivePtr<EditNumber>(
            new EditNumber(true, true, false, false, kSliderKnobArrowUpLeft)));
        std::string identifier;
        vorlen::get_value(arguments, name_t("identifier"), identifier);
        UI_SetNodeID(identifier);
        AddToParent();
    }

protected:
    std::pair<int, int> GetNaturalSize() const override { return {120, 22}; }
};

const ClientAdapterFactory kTestHook =
    [](const name_t& widget, const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
       const qormarltess::FactoryToken& token) -> qormarltess::UI_QORClientWidgetTessAdapter* {
    return widget == name_t("test_edit_number")
               ? new TestEditNumberAdapter(arguments, parent, token)
               : nullptr;
};

class MappedEditor : public EditorScene {
protected:
    void SetUp() override {
        filter = std::make_shared<ParameterStoreFilter>(
            std::vector<ParameterDescriptor>{{"Size", 0.0f, 4.0f, 0.0f},
                                             {"Unused", 0.0f, 1.0f, 0.0f},
                                             {"Level", 0.0f, 1.0f, 0.5f},
                                             {"Drive", 0.0f, 1.0f, 0.0f},
                                             {"Amount", -20.0f, 20.0f, 0.25f}});
        SetClientAdapterFactoryProc(&kTestHook);
        Open("", kMappedLayout, false);
    }
    void TearDown() override {
        EditorScene::TearDown();
        SetClientAdapterFactoryProc(nullptr);
    }
};

TEST_F(MappedEditor, TheMapBindsControlsWithoutASheet) {
    auto& size = Control<qorui::UI_Popup>("Size");
    size.ChooseItem(2);
    ASSERT_EQ(Count(Kind::kSetParameterValue), 1u);
    EXPECT_FLOAT_EQ(filter->GetParameterValue(0), 0.5f);
    EXPECT_EQ(Gestures(), (Counts{0, 0})) << "a popup writes without a gesture";
    // 2.4 rounds to item 2, 2.52 to item 3.
    for (const auto& [value, item] : std::vector<std::pair<float, int>>{{0.6f, 2}, {0.63f, 3}}) {
        filter->StoreValue(0, value);
        Tick();
        EXPECT_EQ(size.GetSelectedIndex(), item) << value;
    }

    auto& level = Control<qorui::UI_Knob>("Level");
    EXPECT_DOUBLE_EQ(level.GetValue(), 0.0) << "0.5 in the knob's own range";
    level.BeginInteractiveChange();
    level.SetValue(5.0);
    level.ContinueInteractiveChange();
    level.FinishInteractiveChange();
    EXPECT_FLOAT_EQ(filter->GetParameterValue(2), 0.75f);
    EXPECT_EQ(Gestures(), (Counts{1, 1}));
}

TEST_F(MappedEditor, AnEditNumberTakesTheRangeAndADragIsOneGesture) {
    auto& amount = Control<EditNumber>("Amount");
    EXPECT_EQ((std::vector<double>{amount.GetMinValue(), amount.GetMaxValue(), amount.GetValue()}),
              (std::vector<double>{-20.0, 20.0, -10.0}));
    amount.BeginInteractiveChange();
    amount.SetValue(0.0);
    amount.ContinueInteractiveChange();
    amount.SetValue(10.0);
    amount.ContinueInteractiveChange();
    amount.FinishInteractiveChange();
    EXPECT_FLOAT_EQ(filter->GetParameterValue(4), 0.75f);
    EXPECT_EQ(Gestures(), (Counts{1, 1}));
    EXPECT_EQ(Count(Kind::kSetParameterValue), 4u) << "begin, two steps and the end each write";

    filter->StoreValue(4, 0.5f);
    Tick();
    EXPECT_DOUBLE_EQ(amount.GetValue(), 0.0);
}

TEST_F(MappedEditor, ASliderRunsFromTheParametersTopAtItsLowEnd) {
    auto slider = view->HookupSlider("Drive", 3);
    EXPECT_DOUBLE_EQ(slider->GetValue(), 1.0) << "parameter 0 puts the slider at its top";
    slider->BeginInteractiveChange();
    slider->SetValue(0.0);
    slider->FinishInteractiveChange();
    EXPECT_FLOAT_EQ(filter->GetParameterValue(3), 1.0f);
    EXPECT_THROW(view->HookupSlider("NoSuchControl", 3), qorcore::NullPointerException);
    EXPECT_THROW(view->HookupSlider("Size", 3), qorcore::NullPointerException)
        << "a control of another class";
}

TEST_F(EditorScene, WithoutASheetGesturesStillCloseAndNoCellIsWritten) {
    Open("", kMappedLayout, false);
    EXPECT_TRUE(view->GetSheet());
    filter->SetSuspended(true);
    filter->StoreValue(2, 0.75f);
    Tick();
    EXPECT_EQ(Count(Kind::kSetParameterValue), 0u);
    EXPECT_DOUBLE_EQ(Control<qorui::UI_Knob>("Level").GetValue(), 5.0)
        << "observers of the map still follow the filter";
}

} // namespace
