// The library's factory of client widgets: each of its six names makes its adapter, in any view
// the engine builds; every other name goes to the hook, which may be missing or empty. And how
// each widget fails on scripts it can't take.
#include "adapter_scene.hpp"

#include "adapters/tess_color_view_adapter.hpp"
#include "adapters/tess_compressor_expander_list_adapter.hpp"
#include "adapters/tess_curve_editor_adapter.hpp"
#include "adapters/tess_edit_number_adapter.hpp"
#include "adapters/tess_level_meter_adapter.hpp"
#include "adapters/tess_picture_toggle_button_adapter.hpp"
#include "controls/edit_number.hpp"
#include "platform/panels/ui_static_text.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <typeinfo>

namespace {

using namespace adapter_testing;
using qoraudiofiltersui::ClientAdapterFactory;
using qoraudiofiltersui::GetLibraryAdapterFactory;
using qoraudiofiltersui::SetClientAdapterFactoryProc;
using qormarltess::UI_QORClientWidgetTessAdapter;
using vorlen::dictionary_t;
using vorlen::name_t;

/// Puts the hook back as the test found it.
struct HookScope {
    ~HookScope() { SetClientAdapterFactoryProc(nullptr); }
};

const char* const kHostLayout = "layout L { view column() { static_text(name: 'host'); } }";

/// A host's own widget: a static text of its `text` argument.
class HostTextAdapter : public UI_QORClientWidgetTessAdapter {
public:
    HostTextAdapter(const dictionary_t& arguments, qorui::UI_Node* parent,
                    const qormarltess::FactoryToken& token)
        : UI_QORClientWidgetTessAdapter(parent, token) {
        std::string text;
        vorlen::get_value(arguments, name_t("text"), text);
        SetNode(qorcore::MakeIntrusive<qorui::UI_StaticText>(text));
    }

protected:
    std::pair<int, int> GetNaturalSize() const override { return {60, 14}; }
};

TEST(LibraryAdapterFactory, EachOwnNameMakesItsAdapter) {
    HookScope scope;
    int hookCalls = 0;
    const ClientAdapterFactory hook = [&](const name_t&, const dictionary_t&, qorui::UI_Node*,
                                          const qormarltess::FactoryToken&) {
        ++hookCalls;
        return nullptr;
    };
    SetClientAdapterFactoryProc(&hook);

    AdapterScene scene("", kHostLayout);
    const ClientAdapterFactory& factory = *GetLibraryAdapterFactory();
    const dictionary_t curve =
        Value("{ horizontal_ruler_type: 1, vertical_ruler_type: 1 }").cast<dictionary_t>();
    const struct {
        const char* name;
        const dictionary_t arguments;
        const std::type_info& made;
    } cases[] = {
        {"wex_edit_number", {}, typeid(qoraudiofiltersui::TessEditNumberAdapter)},
        {"wex_curve_editor", curve, typeid(qoraudiofiltersui::TessCurveEditorAdapter)},
        {"qor_level_meter", {}, typeid(qoraudiofiltersui::TessLevelMeterAdapter)},
        {"wex_comp_exp_list", {}, typeid(qoraudiofiltersui::TessCompressorExpanderListAdapter)},
        {"wex_picture_toggle_button",
         {},
         typeid(qoraudiofiltersui::TessPictureToggleButtonAdapter)},
        {"wex_color_view", {}, typeid(qoraudiofiltersui::TessColorViewAdapter)},
    };
    for (const auto& c : cases) {
        std::unique_ptr<UI_QORClientWidgetTessAdapter> adapter(
            factory(name_t(c.name), c.arguments, scene.root.get(), scene.Token()));
        ASSERT_NE(adapter, nullptr) << c.name;
        const UI_QORClientWidgetTessAdapter& made = *adapter;
        EXPECT_EQ(typeid(made), c.made) << c.name;
        EXPECT_EQ(adapter->GetNode()->GetParent(), scene.root.get()) << c.name;
        scene.root->ChildRemove(adapter->GetNode());
    }
    EXPECT_EQ(hookCalls, 0) << "the library's own names never reach the hook";

    // A bad argument passes out of the factory as the adapter raised it.
    EXPECT_THROW(factory(name_t("wex_edit_number"), Value("{ use_slider: 1 }").cast<dictionary_t>(),
                         scene.root.get(), scene.Token()),
                 vorlen::bad_cast);
}

TEST(LibraryAdapterFactory, OtherNamesGoToTheHook) {
    HookScope scope;
    const char* const layout = R"(layout L { view column() {
        host_text(identifier: 'Host', text: 'from the host');
        wex_edit_number(identifier: 'Own', name: 'Gain:');
    } })";
    {
        AdapterScene scene("", layout);
        EXPECT_FALSE(scene.Holder().GetControl("Host")) << "no hook: the widget is left out";
        EXPECT_TRUE(scene.Holder().GetControl("Own"));
    }

    std::vector<std::string> asked;
    const ClientAdapterFactory hook =
        [&](const name_t& widget, const dictionary_t& arguments, qorui::UI_Node* parent,
            const qormarltess::FactoryToken& token) -> UI_QORClientWidgetTessAdapter* {
        asked.emplace_back(widget.c_str());
        return new HostTextAdapter(arguments, parent, token);
    };
    SetClientAdapterFactoryProc(&hook);
    {
        AdapterScene scene("", layout);
        EXPECT_EQ(asked, std::vector<std::string>{"host_text"});
        EXPECT_EQ(scene.As<qorui::UI_StaticText>("Host").GetText(), "from the host");
        EXPECT_TRUE(scene.Holder().GetControl("Own"));
    }

    const ClientAdapterFactory empty;
    SetClientAdapterFactoryProc(&empty);
    EXPECT_NE(FailureOf("", layout).find("bad_function_call"), std::string::npos)
        << "an empty hook is a fault of the host, and says so";
}

TEST(LibraryAdapters, ScriptsTheyCannotTakeFailWithTheirMessages) {
    const char* const sheet = R"(sheet S { interface:
        text: 'not a number'; number: 2; nothing: empty;
        no_points: { num_active_points: 2 }; no_count: { curve_points: [] };
        triples: { curve_points: [[1, 2, 3]], num_active_points: 1 };
    })";
    const std::string curve = "wex_curve_editor(horizontal_ruler_type: 1, vertical_ruler_type: 1, ";
    // The widget, its message, and whether that is the whole message (=), its end ($) or a
    // part of it (~). The widget stands at line 2, column 1.
    const struct {
        std::string widget;
        char match;
        std::string message;
    } rows[] = {
        {"wex_edit_number(bind: @text)", '=',
         "test.tss:2:1: edit number must be bound to either a number or an empty_t"},
        {"wex_edit_number(use_slider: 1)", '~', "test.tss:2:1: bad_cast: double -> bool"},
        {"wex_edit_number(min_max_filter: { min_value: 1 })", '=',
         "test.tss:2:1: dictionary_t: key 'max_value' not found"},
        {"wex_edit_number(slider_knob: @round)", '~', "slider_knob 'round' is none of"},
        // The scale names carry three letters t.
        {"wex_edit_number(hottext_scale: @hottext_scale_log)", '~',
         "hottext_scale 'hottext_scale_log'"},
        {"wex_edit_number(min_max_filter: @nowhere)", '=',
         "test.tss:2:1: no cell named 'nowhere' to bind"},
        {"wex_edit_number(bind: @number)", '=', "no failure"},
        {"qor_level_meter(bind: @text)", '=',
         "test.tss:2:1: value must be bound to either a number or an empty_t"},
        {"qor_level_meter(type: @peak)", '~', "type 'peak' is none of"},
        {"qor_level_meter(min_dB: 0, max_dB: -6)", '~', "min dB must be below max dB"},
        {"qor_level_meter(min_dB: -60, ruler_increment: 0)", '~', "ruler_increment"},
        {"qor_level_meter(show_LED: 'yes')", '~', "bad_cast"},
        {"wex_curve_editor(vertical_ruler_type: 1)", '$', ": Null pointer: RulerBase"},
        {curve + "content_width: 'wide')", '~', "bad_cast"},
        {curve + "bind: @number)", '~', "bad_cast: double -> "},
        {curve + "bind: @no_count)", '$', ": dictionary_t: key 'num_active_points' not found"},
        {curve + "bind: @triples)", '$', ": curve_points: a point is a pair [x, y]"},
        {curve + "bind: @none)", '$', ": no cell named 'none' to bind"},
        {curve + "bind: @nothing)", '=', "no failure"}, // an empty cell shows no points
        {"wex_comp_exp_list(bind: @number)", '~', "bad_cast"},
        {"wex_comp_exp_list(bind: @no_points)", '$', "dictionary_t: key 'curve_points' not found"},
        {"wex_color_view(color: { r: 'red', g: 0, b: 0 })", '~', "bad_cast"},
        {"wex_color_view(color: 0.5)", '~', "bad_cast"},
        {"wex_picture_toggle_button(bind: @number)", '~', "bad_cast: double -> bool"},
    };
    for (const auto& row : rows) {
        const std::string failure =
            FailureOf(sheet, "layout T { view column() {\n" + row.widget + ";\n} }");
        const bool matches = row.match == '='   ? failure == row.message
                             : row.match == '$' ? failure.ends_with(row.message)
                                                : failure.find(row.message) != std::string::npos;
        EXPECT_TRUE(matches) << row.widget << " failed with: " << failure;
    }
}

} // namespace
