#pragma once

#include "platform/core/fader_translator.hpp"
#include "platform/core/point.hpp"
#include "platform/ui/keyboard_event.hpp"
#include "platform/ui/mouse_event.hpp"
#include "platform/widgets/ui_button.hpp"
#include "platform/widgets/ui_slider.hpp"

#include <vector>

namespace qoraudiofiltersui {

class EditNumber;

/// The cap of a fader: a button face tinted by a hue, shown pressed while the fader is dragged.
/// It resets the level it controls to 0 dB: by a double click, by an Alt-click, or from its
/// context menu. Every other press goes on to the slider.
class FaderSliderThumb : public qorui::UI_Button {
public:
    /// The identifier of the menu's only command.
    static constexpr int kMenuZero = 501;
    /// Modifier keys that make a click on the cap a reset to 0 dB; they must be exactly these.
    static constexpr std::uint8_t kZeroModifiers = qorui::ModifierKey::kAlt;

    FaderSliderThumb();

    /// In degrees around the colour circle; a negative hue (the default) leaves the face
    /// untinted. Not a number counts as negative.
    void SetHue(double hue);
    double GetHue() const { return hue_; }

    /// Shows the menu with "Zero" at `position` (in the cap's coordinates); choosing it sets the
    /// enclosing edit number to 0 dB in one gesture of the slider. Without an enclosing edit
    /// number or slider nothing is done.
    void DoContextMenu(const qorcore::PointT<float>& position);
    /// Whether the gesture running now is the fader's (a drag of the cap or of the slider).
    bool IsCaptured() const;

    bool UI_DoMouseEvent(const qorui::MouseEvent& event) override;
    void UI_Draw(qorui::Penrig* penrig) override;

private:
    /// Sets `editNumber` to 0 dB inside one gesture of the slider the cap sits on.
    void ZeroInSliderGesture(EditNumber& editNumber);

    double hue_ = -1.0;
};

/// A mixing-desk fader: a slider whose positions follow the fader law of
/// `qorcore::FaderTranslator` (0.75, 15, 15), with detents every 3 dB from -300 dB up to
/// +15 dB, a large cap (`FaderSliderThumb`) and 3 dB steps for the wheel with Shift or Control
/// and for Page Up and Page Down.
///
/// The loud end is the top of a vertical fader and the right end of a horizontal one: the
/// law's position is 1 - the slider's value when vertical (a vertical slider's value is 0 at
/// its top) and the value itself when horizontal.
class FaderSlider : public qorui::UI_Slider {
public:
    static constexpr double kStepDecibels = 3.0;
    static constexpr double kLowestDetentDecibels = -300.0;
    static constexpr double kHighestDetentDecibels = 15.0;
    /// Held during a drag, the cap glides past the detents.
    static constexpr std::uint8_t kFreeDragModifiers = qorui::ModifierKey::kAlt;

    explicit FaderSlider(qorui::SliderDirection direction = qorui::kSliderDirectionVertical,
                         bool small = false);

    /// Forwards to the cap.
    void SetHue(double hue);
    FaderSliderThumb* GetFaderThumb() const;

    /// The law the fader follows.
    static const qorcore::FaderTranslator<double>& GetTranslator();
    /// Between the law's position (1 at the loud end) and the slider's value.
    double SliderValueFromFaderPosition(double position) const;
    double FaderPositionFromSliderValue(double value) const;
    /// The level the cap stands at now.
    double GetDecibels() const;

    void DoScrollThumb(const qorcore::PointT<float>& pointer,
                       qorui::ModifierFlags modifiers) override;
    void Scroll(bool up, bool modifier, double amount) override;
    float GetMinThumbSize() const override { return 33.0f; }
    bool UI_DoKeyboardEvent(const qorui::KeyboardEvent& event) override;
};

} // namespace qoraudiofiltersui
