// The library's factory of client widgets: each of its six names makes its adapter, in any view
// the engine builds; every other name goes to the hook, which may be missing or empty.
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

using adapter_testing::AdapterScene;
using qoraudiofiltersui::ClientAdapterFactory;
using qoraudiofiltersui::GetLibraryAdapterFactory;
using qoraudiofiltersui::SetClientAdapterFactoryProc;
using qormarltess::UI_QORClientWidgetTessAdapter;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;

/// Puts the hook back as the test found it.
struct HookScope {
    ~HookScope() { SetClientAdapterFactoryProc(nullptr); }
};

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

    AdapterScene scene("", "layout L { view column() { static_text(name: 'host'); } }");
    const qormarltess::FactoryToken token(scene.Holder(), nullptr, nullptr, nullptr, false);
    const ClientAdapterFactory& factory = *GetLibraryAdapterFactory();
    dictionary_t curve;
    curve[name_t("horizontal_ruler_type")] = any_regular_t(1.0);
    curve[name_t("vertical_ruler_type")] = any_regular_t(1.0);
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
            factory(name_t(c.name), c.arguments, scene.root.get(), token));
        ASSERT_NE(adapter, nullptr) << c.name;
        EXPECT_EQ(typeid(*adapter), c.made) << c.name;
        EXPECT_EQ(adapter->GetNode()->GetParent(), scene.root.get()) << c.name;
        scene.root->ChildRemove(adapter->GetNode());
    }
    EXPECT_EQ(hookCalls, 0) << "the library's own names never reach the hook";

    // A bad argument passes out of the factory as the adapter raised it.
    dictionary_t wrong;
    wrong[name_t("use_slider")] = any_regular_t(1.0);
    EXPECT_THROW(factory(name_t("wex_edit_number"), wrong, scene.root.get(), token),
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
    EXPECT_NE(adapter_testing::FailureOf("", layout).find("bad_function_call"), std::string::npos)
        << "an empty hook is a fault of the host, and says so";
    AdapterScene scene("", "layout L { view column() { static_text(name: 'host'); } }");
    const qormarltess::FactoryToken token(scene.Holder(), nullptr, nullptr, nullptr, false);
    EXPECT_THROW((*GetLibraryAdapterFactory())(name_t("host_text"), {}, scene.root.get(), token),
                 std::bad_function_call);
}

} // namespace
