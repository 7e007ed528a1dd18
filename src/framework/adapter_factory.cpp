#include "framework/adapter_factory.hpp"

#include "adapters/tess_color_view_adapter.hpp"
#include "adapters/tess_compressor_expander_list_adapter.hpp"
#include "adapters/tess_curve_editor_adapter.hpp"
#include "adapters/tess_edit_number_adapter.hpp"
#include "adapters/tess_level_meter_adapter.hpp"
#include "adapters/tess_picture_toggle_button_adapter.hpp"

#include <cstring>
#include <new>

namespace qoraudiofiltersui {

namespace {

const ClientAdapterFactory* clientAdapterFactoryProc = nullptr;

// The widgets of this library, in the order the host lists them.
constexpr const char* kWidgetNames[] = {
    "wex_edit_number",  "wex_color_view",  "wex_comp_exp_list",
    "wex_curve_editor", "qor_level_meter", "wex_picture_toggle_button",
};

using AdapterMaker =
    qormarltess::UI_QORClientWidgetTessAdapter* (*)(const vorlen::dictionary_t& arguments,
                                                    qorui::UI_Node* parent,
                                                    const qormarltess::FactoryToken& token);

template <class Adapter>
qormarltess::UI_QORClientWidgetTessAdapter* Make(const vorlen::dictionary_t& arguments,
                                                 qorui::UI_Node* parent,
                                                 const qormarltess::FactoryToken& token) {
    // A failed allocation gives no widget; argument errors pass out to the script reader.
    return new (std::nothrow) Adapter(arguments, parent, token);
}

struct OwnWidget {
    const char* name;
    AdapterMaker make;
};

// The order in which the factory tries the names: differs from the list above by design.
constexpr OwnWidget kDispatchOrder[] = {
    {"wex_edit_number", &Make<TessEditNumberAdapter>},
    {"wex_curve_editor", &Make<TessCurveEditorAdapter>},
    {"qor_level_meter", &Make<TessLevelMeterAdapter>},
    {"wex_comp_exp_list", &Make<TessCompressorExpanderListAdapter>},
    {"wex_picture_toggle_button", &Make<TessPictureToggleButtonAdapter>},
    {"wex_color_view", &Make<TessColorViewAdapter>},
};

qormarltess::UI_QORClientWidgetTessAdapter* MakeAdapter(const vorlen::name_t& widget,
                                                        const vorlen::dictionary_t& arguments,
                                                        qorui::UI_Node* parent,
                                                        const qormarltess::FactoryToken& token) {
    for (const OwnWidget& own : kDispatchOrder)
        if (std::strcmp(widget.c_str(), own.name) == 0)
            return own.make(arguments, parent, token);
    if (!clientAdapterFactoryProc)
        return nullptr;
    // An empty function in the hook raises std::bad_function_call, as it should.
    return (*clientAdapterFactoryProc)(widget, arguments, parent, token);
}

} // namespace

const ClientAdapterFactory* GetLibraryAdapterFactory() {
    static const ClientAdapterFactory factory(&MakeAdapter);
    return &factory;
}

void SetClientAdapterFactoryProc(const ClientAdapterFactory* proc) {
    clientAdapterFactoryProc = proc;
}

const ClientAdapterFactory* GetClientAdapterFactoryProc() {
    return clientAdapterFactoryProc;
}

void AppendAvailableWidgetNames(std::vector<vorlen::name_t>& names) {
    for (const char* name : kWidgetNames)
        names.push_back(vorlen::name_t(name));
}

} // namespace qoraudiofiltersui
