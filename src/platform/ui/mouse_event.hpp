#pragma once

#include "platform/core/point.hpp"
#include "platform/ui/modifier_keys.hpp"

#include <cstdint>

namespace qorui {

using qorcore::PointT;

enum class PointerAction : int {
    kNone = 0,
    kPress = 1,
    kRelease = 2,
    kMove = 3,
    kWheel = 4,
    kEnter = 5,
    kLeave = 6,
};

enum class MouseButton : int { kNone = 0, kLeft = 1, kRight = 2, kMiddle = 3 };

/// Bits of `UI_NodeManager::GetCurrentMouseButtonState`.
namespace MouseButtonBit {
constexpr std::uint32_t kLeft = 1;
constexpr std::uint32_t kRight = 2;
constexpr std::uint32_t kMiddle = 4;
} // namespace MouseButtonBit

constexpr std::uint32_t MouseButtonToBit(MouseButton button) {
    switch (button) {
    case MouseButton::kLeft: return MouseButtonBit::kLeft;
    case MouseButton::kRight: return MouseButtonBit::kRight;
    case MouseButton::kMiddle: return MouseButtonBit::kMiddle;
    default: return 0;
    }
}

/// What every pointer event has: a position in the receiver's coordinates, an action and the
/// modifier keys.
class PointerEvent {
public:
    PointerEvent() = default;
    PointerEvent(PointerAction action, const PointT<float>& position, ModifierFlags modifiers)
        : position_(position), action_(action), modifiers_(modifiers) {}

    const PointT<float>& GetPosition() const { return position_; }
    PointerAction GetAction() const { return action_; }
    bool IsAction(PointerAction action) const { return action_ == action; }
    ModifierFlags GetModKey() const { return modifiers_; }

    void SetPosition(const PointT<float>& position) { position_ = position; }

private:
    PointT<float> position_;
    PointerAction action_ = PointerAction::kNone;
    ModifierFlags modifiers_;
};

/// A mouse event: the button that changed (for press and release), the click count of a
/// press (2 for a double click) and the wheel's movement (positive y away from the user).
class MouseEvent : public PointerEvent {
public:
    MouseEvent() = default;
    MouseEvent(PointerAction action, const PointT<float>& position,
               MouseButton button = MouseButton::kNone, ModifierFlags modifiers = {},
               int clickCount = 0, const PointT<float>& wheelDelta = {})
        : PointerEvent(action, position, modifiers), button_(button), clickCount_(clickCount),
          wheelDelta_(wheelDelta) {}

    MouseButton GetButton() const { return button_; }
    bool IsButton(MouseButton button) const { return button_ == button; }
    int GetClickCount() const { return clickCount_; }
    void SetClickCount(int count) { clickCount_ = count; }
    const PointT<float>& GetWheelDelta() const { return wheelDelta_; }

    bool IsLeftButtonSingleDown() const { return IsDown(MouseButton::kLeft, 1); }
    bool IsRightButtonSingleDown() const { return IsDown(MouseButton::kRight, 1); }
    bool IsLeftButtonDoubleClick() const { return IsDown(MouseButton::kLeft, 2); }
    /// A press that asks for a context menu: the right button, or Control with the left.
    bool IsContextMenuClick() const {
        return IsAction(PointerAction::kPress) &&
               (button_ == MouseButton::kRight ||
                (button_ == MouseButton::kLeft && GetModKey().IsSet(ModifierKey::kControl)));
    }

    /// The same event at another position (used when it moves between coordinate spaces).
    MouseEvent MovedTo(const PointT<float>& position) const {
        MouseEvent copy = *this;
        copy.SetPosition(position);
        return copy;
    }

private:
    bool IsDown(MouseButton button, int clicks) const {
        return IsAction(PointerAction::kPress) && button_ == button && clickCount_ == clicks;
    }

    MouseButton button_ = MouseButton::kNone;
    int clickCount_ = 0;
    PointT<float> wheelDelta_;
};

} // namespace qorui
