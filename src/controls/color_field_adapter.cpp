#include "controls/color_field_adapter.hpp"

#include "platform/archive/ui_node_builder.hpp"

#include <string>

namespace qoraudiofiltersui {

qorcore::IntrusivePtr<ColorField> ColorFieldAdapter::CreateColorField() const {
    return qorcore::MakeIntrusive<ColorField>();
}

void ColorFieldAdapter::ApplySection(qorui::UI_Node& node,
                                     const qorui::NodeArchiveSection& section) const {
    auto* field = dynamic_cast<ColorField*>(&node);
    if (!field)
        return; // a node supplied in the archived one's place keeps its own settings
    const qorui::NodeArchiveValue* allow = section.Find(kAllowUserColorChangeKey);
    if (!allow)
        return;
    if (const auto value = allow->GetBool())
        field->SetAllowUserColorChange(*value);
    else
        section.Report(kAllowUserColorChangeKey, "expected a boolean");
}

bool ColorFieldAdapter::Register() {
    if (registered_)
        return true;
    const std::string name(kClassName);
    // Both entries or none: a class whose section went unread would load half configured.
    if (qorui::UI_NodeBuilder::IsAdapterRegistered(name))
        return false;
    const ColorFieldAdapter* self = this;
    if (!qorui::UI_NodeBuilder::RegisterSectionApplier(
            name, [self](qorui::UI_Node& node, const qorui::NodeArchiveSection& section) {
                self->ApplySection(node, section);
            }))
        return false;
    registered_ = qorui::UI_NodeBuilder::RegisterAdapter(
        name, [self] { return qorcore::IntrusivePtr<qorui::UI_Node>(self->CreateColorField()); });
    return registered_;
}

ColorFieldAdapter* GetColorFieldAdapter() {
    static ColorFieldAdapter adapter;
    static const bool registered = adapter.Register();
    (void)registered;
    return &adapter;
}

} // namespace qoraudiofiltersui
