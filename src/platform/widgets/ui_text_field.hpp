#pragma once

#include "platform/draw/font.hpp"
#include "platform/ui/ui_node.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace qorui {

/// A one-line text entry. It takes typed text, Backspace, Delete, the arrows, Home and End;
/// Return (or Enter) commits, Escape cancels, and losing the focus commits. A commit function
/// that answers false keeps the field open, marked invalid, for the user to correct.
///
/// Controls open it over themselves (`OpenOver`) for typing a value in place.
class UI_TextField : public UI_Node {
public:
    using CommitFunction = std::function<bool(const std::string& text)>;
    using CancelFunction = std::function<void()>;
    /// Whether a typed text may go in; the field asks before inserting it.
    using FilterFunction = std::function<bool(std::string_view typed)>;
    /// Called after Tab (forward) or Shift-Tab (backward) committed the field.
    using TabFunction = std::function<void(bool forward)>;

    UI_TextField();

    void SetText(std::string_view text);
    const std::string& GetText() const { return text_; }
    /// Selects the whole text: the next typing replaces it.
    void SelectAll();
    bool IsAllSelected() const { return allSelected_; }
    /// The caret, as a byte offset at a character boundary.
    std::size_t GetCaret() const { return caret_; }

    void SetCommitFunction(CommitFunction commit) { commit_ = std::move(commit); }
    void SetCancelFunction(CancelFunction cancel) { cancel_ = std::move(cancel); }
    void SetFilterFunction(FilterFunction filter) { filter_ = std::move(filter); }
    /// Tab and Shift-Tab commit; with a tab function, a successful commit then calls it, so
    /// that a form can move typing on to its next field.
    void SetTabFunction(TabFunction tab) { tab_ = std::move(tab); }
    void SetFont(const penrig::Font& font);
    void SetInvalid(bool invalid);
    bool IsInvalid() const { return invalid_; }
    bool IsOpen() const { return GetWindow() != nullptr; }

    /// Shows the field over `control` (in the window's root, so nothing clips it), with the
    /// text selected and the focus. False if the control is in no window.
    bool OpenOver(UI_Node& control, std::string_view text);
    /// Commits as Return does; false if the commit function refused.
    bool Commit();
    /// Closes without committing, as Escape does.
    void Cancel();

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    void UI_FocusChanged(bool hasFocus) override;

private:
    void Insert(std::string_view typed);
    void Close();

    std::string text_;
    std::size_t caret_ = 0;
    bool allSelected_ = false;
    bool invalid_ = false;
    bool closing_ = false;
    penrig::Font font_;
    CommitFunction commit_;
    CancelFunction cancel_;
    FilterFunction filter_;
    TabFunction tab_;
};

namespace ui {
using ::qorui::UI_TextField;
}

} // namespace qorui
