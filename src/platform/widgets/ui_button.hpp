#pragma once

#include "platform/widgets/ui_interactive_control_view.hpp"

namespace qorui {

/// The look options a button shares with its skin: the variant (0 the plain face), whether it
/// is emphasised as the default action, and the quiet look without a face until hovered.
struct ButtonComponents {
    int variant = 1;
    bool emphasized = false;
    bool quiet = false;

    void SetVariant(int v) { variant = v; }
    int GetVariant() const { return variant; }
};

/// A control pressed with the pointer or the keyboard. A press begins an interactive change
/// (0) and shows the down state while the pointer stays over the button; a release over it is
/// a click, which applies the button's behaviour and then finishes (2); a release elsewhere or
/// Escape cancels (3). Every click sends one changed message, whether the value changed or not.
/// Space and Return click a focused button.
class UI_Button : public UI_InteractiveControlView {
public:
    enum ButtonBehavior {
        kButtonBehaviorPush = 0,   ///< the value stays; the click is the message
        kButtonBehaviorToggle = 1, ///< the value flips between 0 and 1
        kButtonBehaviorSetOn = 2,  ///< the value becomes 1 (radio buttons)
    };

    UI_Button();

    void SetButtonBehavior(ButtonBehavior behavior) { behavior_ = behavior; }
    ButtonBehavior GetButtonBehavior() const { return behavior_; }
    /// Clicks at the press instead of the release.
    void SetNotificationOnMouseDown(bool on) { notifyOnDown_ = on; }
    bool GetNotificationOnMouseDown() const { return notifyOnDown_; }
    /// A button that is part of a larger control (a slider's thumb) lets its parent handle
    /// presses and releases; it only draws and hears the events its subclass takes.
    void SetPassesPressesToParent(bool on) { passesPresses_ = on; }
    bool GetPassesPressesToParent() const { return passesPresses_; }

    ButtonComponents& GetComponents() { return components_; }
    const ButtonComponents& GetComponents() const { return components_; }
    void SetVariant(int variant);

    /// Clicks the button as the user would, with the full message sequence.
    void Click(ModifierFlags modifiers = {});

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;

protected:
    /// What a click does to the value; the base applies the behaviour.
    virtual void UI_DoClick(ModifierFlags modifiers);
    /// Draws the inside of the button over its face.
    virtual void DrawContent(Penrig* penrig, const RectT<float>& rect);
    /// Whether the face is drawn; picture and check controls draw their own look.
    virtual bool DrawsFace() const { return true; }
    /// Whether the button shows as selected (a toggle that is on).
    bool IsSelectedLook() const;

    void UI_DoDragEvent(const MouseEvent& event) override;
    void UI_DoDragEnd(bool cancelled) override;

private:
    void ClickAndFinish(ModifierFlags modifiers);

    ButtonComponents components_;
    ButtonBehavior behavior_ = kButtonBehaviorPush;
    bool notifyOnDown_ = false;
    bool passesPresses_ = false;
    bool clickedAtPress_ = false;
};

namespace ui {
using ::qorui::ButtonComponents;
using ::qorui::UI_Button;
} // namespace ui

} // namespace qorui
