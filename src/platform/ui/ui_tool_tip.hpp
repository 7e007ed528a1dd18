#pragma once

#include "platform/ui/ui_node.hpp"

#include <string>

namespace qorui {

/// Made hidden by `CreateUI_ToolTip`; a tip made directly is visible until `ShowAfter`.
/// A tool tip: a small box of text drawn over everything else in its window, near an anchor
/// point and always inside the window. It shows after a delay on the window's clock, so tests
/// move a headless window's virtual clock to see it. It never takes events.
class UI_ToolTip : public UI_Node {
public:
    static constexpr double kDefaultDelaySeconds = 0.6;

    explicit UI_ToolTip(std::string text);

    void SetText(std::string text);
    const std::string& GetText() const { return text_; }
    /// The point, in window coordinates, the tip hangs from: it sits below and to the right,
    /// or above or to the left where the window ends.
    void SetAnchor(const PointT<float>& windowPoint);
    const PointT<float>& GetAnchor() const { return anchor_; }
    /// Shows the tip after `seconds` (at once for 0). It must hang in a window.
    void ShowAfter(double seconds);
    bool IsShowing() const { return GetWindow() != nullptr && IsVisible(); }
    /// Hides the tip and takes it out of its window.
    void Close();

    void UI_Draw(Penrig* penrig) override;
    bool UI_HitTest(const PointT<float>& local) const override;
    bool UI_DoTimerNotify(int timerId) override;

private:
    void Layout();

    std::string text_;
    PointT<float> anchor_;
};

/// Makes a tool tip for `owner` at `ownerLocal` (in the owner's coordinates), hangs it over the
/// owner's window and shows it after `delaySeconds`. A null owner, or one outside a window,
/// throws std::invalid_argument; so does a delay that is negative or not a number.
IntrusivePtr<UI_ToolTip> CreateUI_ToolTip(UI_Node* owner, std::string text,
                                          const PointT<float>& ownerLocal,
                                          double delaySeconds = 0.0);

namespace ui {
using ::qorui::CreateUI_ToolTip;
using ::qorui::UI_ToolTip;
} // namespace ui

} // namespace qorui
