#pragma once

#include "platform/ui/ui_modal_overlay.hpp"

#include <string>
#include <vector>

namespace qorui {

/// A modal dialog drawn by the toolkit: a centred panel with a title, a content area that
/// subclasses fill with child nodes, and a row of buttons at the bottom right. Return presses
/// the default button, Escape cancels (response 0). `RunModal` gives the response: the
/// identifier of the button pressed.
class UI_ModalDialog : public UI_ModalOverlay {
public:
    struct Button {
        int response = 0; ///< above 0
        std::string text;
    };

    /// A size that is not positive throws std::invalid_argument.
    UI_ModalDialog(std::string title, float contentWidth, float contentHeight);

    std::string_view GetModalKind() const override { return "dialog"; }
    const std::string& GetTitle() const { return title_; }

    /// A response not above 0 throws std::invalid_argument. The first button added is the
    /// default.
    void AddButton(int response, std::string text);
    const std::vector<Button>& GetButtons() const { return buttons_; }
    /// A button's rectangle in window coordinates, empty past the end.
    RectT<float> GetButtonRect(std::size_t index) const;
    /// Presses the button with the response, as a click would; false for an unknown one.
    bool PressButton(int response);
    int GetResponse() const { return GetResult(); }
    /// The content area in the overlay's coordinates, where subclasses put their nodes.
    RectT<float> GetContentArea() const;

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;

protected:
    RectT<float> GetContentRect() const override { return panel_; }
    /// Presses outside the panel do nothing: a dialog is left through its buttons.
    void UI_PressOutside() override {}
    void UI_ModalStarted() override;
    /// Draws the content area; the base draws nothing there.
    virtual void DrawContent(Penrig* penrig, const RectT<float>& area) const;

private:
    std::string title_;
    float contentWidth_;
    float contentHeight_;
    std::vector<Button> buttons_;
    RectT<float> panel_;
    int pressed_ = -1;
};

namespace messagebox {

/// A note with a title, a text and an OK button, over the window of `parent` (or `window` when
/// `parent` is null or in no window). Returns once it is dismissed. Without any window it throws
/// std::invalid_argument.
void ShowNote(const UI_Node* parent, const std::string& title, const std::string& text,
              UI_Window* window = nullptr);

/// The dialog `ShowNote` runs, for responders that want to read the text.
class UI_NoteDialog : public UI_ModalDialog {
public:
    UI_NoteDialog(std::string title, std::string text);
    std::string_view GetModalKind() const override { return "note"; }
    const std::string& GetText() const { return text_; }

protected:
    void DrawContent(Penrig* penrig, const RectT<float>& area) const override;

private:
    std::string text_;
};

} // namespace messagebox

} // namespace qorui
