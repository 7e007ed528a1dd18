#pragma once

#include "controls/edit_number.hpp"
#include "platform/archive/ui_node_builder.hpp"
#include "platform/core/intrusive_ptr.hpp"

#include <string_view>
#include <vector>

namespace qoraudiofiltersui {

/// How node archives describe an `EditNumber`. The archive class
/// "qoraudiofiltersui::EditNumber" carries the control's own section; the classes "..._Horizontal"
/// and "..._Vertical" are edit numbers made the way the archive editor lays them out.
///
/// Reading a section: limits whose minimum lies above the maximum are swapped and invert the
/// slider; "rulerType" makes a linear, logarithmic, decibel or fader-decibel ruler over the
/// slider's range, turned to the control and with truncated numbers hidden. A property of the
/// wrong type, or a ruler the range can't carry, is reported and left out.
class EditNumberAdapter {
public:
    static constexpr const char* kClassName = "qoraudiofiltersui::EditNumber";

    virtual ~EditNumberAdapter() = default;

    /// The archive class this adapter makes.
    virtual const char* GetClassName() const { return kClassName; }
    /// The control as the class starts, before any section applies.
    virtual qorcore::IntrusivePtr<EditNumber> CreateNode() const;

    /// The properties of the control's section, in the archive editor's order.
    static const std::vector<std::string_view>& GetPropertyNames();
    /// Applies a "qoraudiofiltersui::EditNumber" section to `control` and lays it out again.
    static void ApplySection(EditNumber& control, const qorui::NodeArchiveSection& section);
};

/// A horizontal edit number with an arrow slider, the number right-aligned and a 40-pixel unit
/// label; 300 by 20 until the archive gives bounds.
class EditNumberAdapter_Horizontal : public EditNumberAdapter {
public:
    static constexpr const char* kClassName = "qoraudiofiltersui::EditNumber_Horizontal";

    const char* GetClassName() const override { return kClassName; }
    qorcore::IntrusivePtr<EditNumber> CreateNode() const override;
};

/// A vertical edit number with a plain slider, the number centred, labelled "Label" (shown once
/// the archive turns the label on); 30 by 280 until the archive gives bounds.
class EditNumberAdapter_Vertical : public EditNumberAdapter {
public:
    static constexpr const char* kClassName = "qoraudiofiltersui::EditNumber_Vertical";

    const char* GetClassName() const override { return kClassName; }
    qorcore::IntrusivePtr<EditNumber> CreateNode() const override;
};

/// Enters the three archive classes and the section reader with `qorui::UI_NodeBuilder`, so that
/// archives with edit numbers load. Calling it again does nothing.
void RegisterEditNumberAdapters();

} // namespace qoraudiofiltersui
