#pragma once

#include "platform/ui/ui_sub_view.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace qorui {

/// A strip of tabs over a panel area: each tab has a panel node and only the selected tab's
/// panel is shown. A click on a tab selects it; with the focus, Left and Right move between
/// tabs. The first tab added is selected.
class UI_TabGroup : public UI_SubView {
public:
    using TabChangedFunction = std::function<void(std::size_t tab)>;

    UI_TabGroup();

    /// Adds a tab and its panel, laid out over the panel area; a null panel throws
    /// std::invalid_argument. Returns the tab's index.
    std::size_t AddTab(std::string title, IntrusivePtr<UI_Node> panel);
    std::size_t CountTabs() const { return tabs_.size(); }
    /// An index past the end throws std::out_of_range (here and below).
    UI_Node* GetPanelAt(std::size_t index) const;
    const std::string& GetTabTitle(std::size_t index) const;
    /// Selects from code: the tab changed function is not called.
    void SelectTab(std::size_t index);
    /// -1 with no tabs.
    int GetSelectedTab() const { return selected_; }
    void SetTabChangedCallback(TabChangedFunction changed) { changed_ = std::move(changed); }

    float GetTabHeight() const;
    /// A tab's rectangle in the group's coordinates.
    RectT<float> GetTabRect(std::size_t index) const;
    /// Where the panels are, in the group's coordinates.
    RectT<float> GetPanelArea() const;

    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoKeyboardEvent(const KeyboardEvent& event) override;
    void UI_SizeChanged() override;

private:
    struct Tab {
        std::string title;
        IntrusivePtr<UI_Node> panel;
        float width;
    };
    void UserSelect(std::size_t index);
    const Tab& GetTab(std::size_t index) const;

    std::vector<Tab> tabs_;
    int selected_ = -1;
    TabChangedFunction changed_;
};

namespace ui {
using ::qorui::UI_TabGroup;
}

} // namespace qorui
