#include "adapters/tess_color_view_adapter.hpp"

#include "adapters/adapter_arguments.hpp"
#include "layout/layout_attributes.hpp"
#include "platform/tess/assemblage.hpp"

#include <string>

namespace qoraudiofiltersui {

using namespace adapter_arguments;
using vorlen::any_regular_t;
using vorlen::dictionary_t;
using vorlen::name_t;
using vorlen::operator""_name;

TessColorViewAdapter::TessColorViewAdapter(const dictionary_t& arguments, qorui::UI_Node* parent,
                                           const qormarltess::FactoryToken& token)
    : UI_QORClientWidgetTessAdapter(parent, token) {
    view_ = qorcore::MakeIntrusive<ColorView>();
    SetNode(view_);
    std::string identifier;
    if (vorlen::get_value(arguments, "identifier"_name, identifier))
        UI_SetNodeID(identifier);
    dictionary_t color;
    if (Read(arguments, "color"_name, color))
        view_->SetValue(ToColor(color));
    AddToParent();
    if (const name_t cell = Cell(arguments, "bind"_name)) {
        ColorView* view = view_.get();
        token.GetAssemblage().BindView(cell, [view](const any_regular_t& value) {
            if (!value.is<vorlen::empty_t>())
                view->SetValue(ToColor(value.cast<dictionary_t>()));
        });
    }
}

TessColorViewAdapter::~TessColorViewAdapter() = default;

void TessColorViewAdapter::AdjustAttributes(vorlen::layout_attributes_t& attributes) const {
    // A swatch holds its controls the way a subview does.
    if (attributes.placement == vorlen::placement_t::leaf)
        attributes.placement = vorlen::placement_t::column;
}

} // namespace qoraudiofiltersui
