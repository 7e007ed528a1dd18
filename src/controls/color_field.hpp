#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/signal.hpp"
#include "platform/widgets/ui_interactive_control_view.hpp"

#include <cstdint>

namespace sharedui {
class ColorPickerDialog;
}

namespace qoraudiofiltersui {

using qorcore::ColorRGBA;

/// A clickable colour swatch. It can be selected like a radio item (a press, or Space when
/// user selectable), carry a red slash that marks it as off, and on a press opens the colour
/// picker. The picker's changes show in the swatch as they happen; when the picker closes
/// having changed the colour (a cancel that undid a change counts), the field sends its changed
/// messages with the colour it ends with.
class ColorField : public qorui::UI_InteractiveControlView {
public:
    using FieldSignal = qorcore::Signal<void(qorcore::IntrusivePtr<ColorField>)>;

    /// The OS key codes the keyboard answers to; the toolkit's own codes for Space, Return and
    /// keypad Enter count too, as a headless window sends them.
    static constexpr int kSpaceOSCode = 32;
    static constexpr int kReturnOSCode = 13;

    ColorField();

    /// Components below 0 (and not-a-number) become 0; the value is known from then on.
    void SetValue(const ColorRGBA& color);
    const ColorRGBA& GetValue() const { return color_; }

    void SetID(unsigned int id) { id_ = id; }
    unsigned int GetID() const { return id_; }
    void SetAllowUserColorChange(bool allow) { allowUserColorChange_ = allow; }
    bool GetAllowUserColorChange() const { return allowUserColorChange_; }
    /// A selectable field draws its swatch a pixel smaller, leaving room for the selection.
    void SetUserSelectable(bool selectable);
    bool IsUserSelectable() const { return userSelectable_; }
    void SetSelected(bool selected);
    bool IsSelected() const { return selected_; }
    void SetSlashed(bool slashed);
    bool IsSlashed() const { return slashed_; }
    void SetDrawSelectionState(bool draw);
    bool GetDrawSelectionState() const { return drawSelectionState_; }
    /// The node whose window the picker opens over; the field's own when null or in no window.
    /// Not owned: it must outlive the field or be cleared first.
    void SetParentWindowForDialog(qorui::UI_Node* parent) { parentForDialog_ = parent; }
    qorui::UI_Node* GetParentWindowForDialog() const { return parentForDialog_; }

    /// The user selected the field (a press or Space).
    FieldSignal& GetSelectionChangedSignal() { return selectionChanged_; }
    FieldSignal& GetSingleClickSignal() { return singleClick_; }
    FieldSignal& GetDoubleClickSignal() { return doubleClick_; }
    /// Return, or keypad Enter, released over a selectable field.
    FieldSignal& GetReturnKeyPressedSignal() { return returnKeyPressed_; }

    /// The picker while it runs, null otherwise.
    sharedui::ColorPickerDialog* GetColorPicker() const { return picker_.get(); }

    bool UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) override;
    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    /// Disabled or of unknown value, the swatch is grey; unknown, it shows a question mark.
    void UI_Draw(qorui::Penrig* penrig) override;

protected:
    ~ColorField() override;

    /// The picker moved: the swatch follows at once, without telling anyone yet.
    void OnColorChanged();
    void SendChangedMessage();
    void DrawQuestionMark(qorui::Penrig* penrig) const;
    void DrawSlash(qorui::Penrig* penrig, const qorcore::RectT<float>& rect) const;

private:
    // The control's value is its colour: the numeric value of a control stays out of reach.
    using qorui::UI_InteractiveControlView::SetValue;

    void StoreColor(const ColorRGBA& color);
    void Select();
    void Fire(FieldSignal& signal);
    void RunPicker();

    qorui::UI_Node* parentForDialog_ = nullptr;
    ColorRGBA color_{0.0f, 0.0f, 0.0f, 1.0f};
    qorcore::IntrusivePtr<sharedui::ColorPickerDialog> picker_;
    unsigned int id_ = 0;
    bool hasChanged_ = false;
    bool allowUserColorChange_ = true;
    bool userSelectable_ = false;
    bool selected_ = false;
    bool slashed_ = false;
    bool drawSelectionState_ = true;
    FieldSignal selectionChanged_;
    FieldSignal singleClick_;
    FieldSignal doubleClick_;
    FieldSignal returnKeyPressed_;
};

} // namespace qoraudiofiltersui
