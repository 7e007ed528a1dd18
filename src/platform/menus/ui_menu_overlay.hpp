#pragma once

#include "platform/draw/font.hpp"
#include "platform/menus/os_menu.hpp"
#include "platform/ui/ui_modal_overlay.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace qorui {

/// A pop-up menu drawn by the toolkit over the window. It opens at a point with its top-left
/// corner there, moved inside the window when it would not fit. The pointer highlights items; a
/// click (or a release after moving into the menu) chooses an enabled one; Up and Down move the
/// highlight over enabled items, wrapping; Return or Space choose it; Escape or a press outside
/// cancel. In a searchable menu typed text moves the highlight to the first enabled item that
/// starts with what was typed since the last pause of a second (ignoring the case of ASCII
/// letters).
class UI_MenuOverlay : public UI_ModalOverlay {
public:
    /// `menu` must outlive the overlay; `windowPoint` is in window coordinates.
    UI_MenuOverlay(const OS_Menu& menu, const PointT<float>& windowPoint);

    std::string_view GetModalKind() const override { return "menu"; }
    const OS_Menu& GetMenu() const { return menu_; }

    /// Chooses the command with the identifier, as a click would; false (and the menu stays
    /// open) for an unknown or disabled one.
    bool ChooseItem(int id);
    /// The index of the highlighted item, or -1.
    int GetHighlightedIndex() const { return highlighted_; }
    /// An item's rectangle in window coordinates (empty for an index past the end).
    RectT<float> GetItemRect(std::size_t index) const;
    /// The menu panel in window coordinates.
    RectT<float> GetPanelRect() const { return panel_; }

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    bool UI_DoTimerNotify(int timerId) override;

protected:
    void UI_ModalStarted() override;
    RectT<float> GetContentRect() const override { return panel_; }

private:
    void Layout();
    int ItemAt(const PointT<float>& point) const;
    void SetHighlighted(int index);
    void MoveHighlight(int direction);
    void TypeSelect(std::string_view text);
    void DrawItem(Penrig* penrig, std::size_t index);

    const OS_Menu& menu_;
    PointT<float> anchor_;
    RectT<float> panel_;
    std::vector<RectT<float>> itemRects_;
    int highlighted_ = -1;
    bool armed_ = false;
    // Measured by the menu's style when the menu opens; x offsets from the panel's left edge.
    penrig::Font font_;
    float checkColumn_ = 0.0f;
    float iconColumn_ = 0.0f;
    float textLeft_ = 0.0f;
    std::string typed_; // what was typed since the last pause, in lower case
};

/// Runs `menu` as a pop-up at `position` in `node`'s coordinates and returns the chosen
/// identifier, 0 when cancelled. A menu without enabled commands returns 0 at once; a node in no
/// window throws std::invalid_argument.
int UI_DoContextMenu(const OS_Menu& menu, const UI_Node& node, const PointT<float>& position);

} // namespace qorui
