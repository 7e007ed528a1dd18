#include "framework/adapter_factory.hpp"

#include <cstring>

namespace qoraudiofiltersui {

namespace {

const ClientAdapterFactory* clientAdapterFactoryProc = nullptr;

// The widgets of this library, in the order the host lists them.
constexpr const char* kWidgetNames[] = {
    "wex_edit_number",  "wex_color_view",  "wex_comp_exp_list",
    "wex_curve_editor", "qor_level_meter", "wex_picture_toggle_button",
};

// The order in which the factory tries the names: differs from the list above by design.
constexpr const char* kDispatchOrder[] = {
    "wex_edit_number",   "wex_curve_editor",          "qor_level_meter",
    "wex_comp_exp_list", "wex_picture_toggle_button", "wex_color_view",
};

qormarltess::UI_QORClientWidgetTessAdapter* MakeAdapter(const vorlen::name_t& widget,
                                                        const vorlen::dictionary_t& arguments,
                                                        qorui::UI_Node* parent,
                                                        const qormarltess::FactoryToken& token) {
    for (const char* own : kDispatchOrder) {
        if (std::strcmp(widget.c_str(), own) == 0) {
            // The adapters of these widgets are built with their controls (edit number, curve
            // editor, level meter, compressor list, picture toggle, colour view); until each
            // exists, a layout that uses it gets no widget there.
            return nullptr;
        }
    }
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
