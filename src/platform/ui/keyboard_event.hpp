#pragma once

#include "platform/ui/keyboard_code.hpp"
#include "platform/ui/modifier_keys.hpp"

#include <string>

namespace qorui {

enum class KeyAction : int { kKeyDown = 1, kKeyUp = 2 };

/// A key going down or up. Typed text arrives as a key-down of code kUnknown that carries the
/// UTF-8 text; the key itself arrives too, as its own event.
class KeyboardEvent {
public:
    KeyboardEvent() = default;
    KeyboardEvent(KeyAction action, KeyboardCode code, ModifierFlags modifiers = {}, int osCode = 0,
                  bool repeat = false, std::string text = {})
        : action_(action), code_(code), modifiers_(modifiers), osCode_(osCode), repeat_(repeat),
          text_(std::move(text)) {}

    /// A typed-text event.
    static KeyboardEvent Text(std::string text, ModifierFlags modifiers = {}) {
        return KeyboardEvent(KeyAction::kKeyDown, KeyboardCode::kUnknown, modifiers, 0, false,
                             std::move(text));
    }

    KeyAction GetAction() const { return action_; }
    bool IsActionKeyDown() const { return action_ == KeyAction::kKeyDown; }
    bool IsActionKeyUp() const { return action_ == KeyAction::kKeyUp; }
    KeyboardCode GetCode() const { return code_; }
    bool CompareCode(KeyboardCode code) const { return code_ == code; }
    /// True for a key-down of `code` with exactly these modifiers.
    bool CompareShortcut(KeyboardCode code, ModifierFlags modifiers = {}) const {
        return IsActionKeyDown() && code_ == code && modifiers_ == modifiers;
    }
    ModifierFlags GetModKey() const { return modifiers_; }
    int GetOSCode() const { return osCode_; }
    bool IsRepeat() const { return repeat_; }
    const std::string& GetText() const { return text_; }

private:
    KeyAction action_ = KeyAction::kKeyDown;
    KeyboardCode code_ = KeyboardCode::kUnknown;
    ModifierFlags modifiers_;
    int osCode_ = 0;
    bool repeat_ = false;
    std::string text_;
};

} // namespace qorui
