#pragma once

#include "controls/color_field.hpp"

#include <string_view>

namespace qorui {
class NodeArchiveSection;
} // namespace qorui

namespace qoraudiofiltersui {

/// Makes `ColorField`s from archived node trees: nodes of the class
/// "qoraudiofiltersui::ColorField", whose own section holds `allowUserColorChange` (a boolean;
/// an int stands for one). The shared sections below it (control, view, node) are read by the
/// node builder as for any control.
class ColorFieldAdapter {
public:
    static constexpr std::string_view kClassName = "qoraudiofiltersui::ColorField";
    static constexpr std::string_view kAllowUserColorChangeKey = "allowUserColorChange";

    /// A new field with the defaults an archive's absent keys leave.
    qorcore::IntrusivePtr<ColorField> CreateColorField() const;
    /// Applies the class's own section to a field; a value of the wrong kind is reported
    /// through the section and leaves the field as it was. Other nodes are left alone.
    void ApplySection(qorui::UI_Node& node, const qorui::NodeArchiveSection& section) const;

    /// Enters the class and its section with the node builder. True when both are this
    /// adapter's, now or from an earlier call; false when another holds the class name.
    bool Register();
    bool IsRegistered() const { return registered_; }

private:
    bool registered_ = false;
};

/// The library's one adapter, entered with the node builder on the first call, so that archives
/// read after it make colour fields.
ColorFieldAdapter* GetColorFieldAdapter();

} // namespace qoraudiofiltersui
