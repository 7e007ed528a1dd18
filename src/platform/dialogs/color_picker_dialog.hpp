#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/dialogs/ui_dialog_hot_text_number.hpp"
#include "platform/dialogs/ui_modal_dialog.hpp"

#include <array>
#include <functional>

namespace sharedui {

/// A modal colour picker: hue, saturation and value (degrees and percent) and red, green and
/// blue (0 to 255) as numbers that can be dragged or typed, with a swatch of the new colour
/// over the original one. Every change of a number updates the others and calls the colour
/// changed function. OK (or Return) gives response 1; Cancel (response 2) or Escape (0) puts
/// the original colour back, calling the function once more if the colour had moved. Alpha is
/// kept as it was given.
class ColorPickerDialog : public qorui::UI_ModalDialog {
public:
    enum Response { kResponseCancelled = 0, kResponseAccept = 1, kResponseCancelButton = 2 };
    enum Field { kHue = 0, kSaturation, kValue, kRed, kGreen, kBlue, kFieldCount };
    using ColorChangedFunction = std::function<void()>;

    /// `parent` gives the window `RunModal()` runs in; it may be null when the dialog is run
    /// with an explicit window.
    explicit ColorPickerDialog(qorui::UI_Node* parent, std::string title = "Color");

    std::string_view GetModalKind() const override { return "color picker"; }

    /// Sets both the original and the current colour (components limited to 0..1); the
    /// changed function is not called.
    void SetColor(const qorcore::ColorRGBA& color);
    const qorcore::ColorRGBA& GetColor() const { return color_; }
    const qorcore::ColorRGBA& GetOriginalColor() const { return original_; }
    /// Sets the current colour as the user would, calling the changed function if it moved.
    void ChangeColor(const qorcore::ColorRGBA& color);
    void InstallColorChangedFunction(ColorChangedFunction changed) {
        changed_ = std::move(changed);
    }

    qorui::UI_HotTextNumber* GetField(Field field) const;
    /// Where a field is, in the dialog's coordinates; empty for a bad field.
    qorui::RectT<float> GetFieldRect(int field) const;
    /// The swatch: the new colour above, the original below.
    qorui::RectT<float> GetSwatchRect() const;

    /// Runs in `window` and returns the response; after a cancel the colour is the original
    /// again.
    int RunModal(qorui::UI_Window& window);
    /// The same in the parent's window; without one it throws std::invalid_argument.
    int RunModal();

protected:
    void UI_ModalStarted() override;
    void DrawContent(qorui::Penrig* penrig, const qorui::RectT<float>& area) const override;

private:
    void FieldChanged(Field field);
    void ShowColorInFields();

    qorui::UI_Node* parent_;
    qorcore::ColorRGBA original_;
    qorcore::ColorRGBA color_;
    /// Hue and saturation are kept apart from the colour so that they survive grey and black.
    double hue_ = 0.0;
    double saturation_ = 0.0;
    ColorChangedFunction changed_;
    std::array<qorui::IntrusivePtr<qorui::UI_DialogHotTextNumber>, kFieldCount> fields_;
    bool updating_ = false;
};

} // namespace sharedui
