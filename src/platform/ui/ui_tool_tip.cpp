#include "platform/ui/ui_tool_tip.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/draw/supplier_interface.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/ui_window.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {
constexpr int kShowTimer = 1;
constexpr float kPaddingX = 6.0f;
constexpr float kPaddingY = 3.0f;
constexpr float kBelowAnchor = 20.0f; // clear of an arrow pointer's tip
constexpr float kMaxWidth = 360.0f;
} // namespace

UI_ToolTip::UI_ToolTip(std::string text) : text_(std::move(text)) {}

void UI_ToolTip::SetText(std::string text) {
    if (text == text_)
        return;
    EmitInvalidate();
    text_ = std::move(text);
    Layout();
    EmitInvalidate();
}

void UI_ToolTip::SetAnchor(const PointT<float>& windowPoint) {
    anchor_ = windowPoint;
    Layout();
}

void UI_ToolTip::Layout() {
    UI_Window* window = GetWindow();
    if (!window)
        return;
    auto measurer = window->GetDrawSupplier().CreateMeasuringPenrig();
    measurer->SetFont(penrig::Font(skins::GetPalette().smallFontSize));
    const penrig::TextMetrics m = measurer->MeasureText(text_);
    const float w = std::min(kMaxWidth, std::ceil(m.width) + 2 * kPaddingX);
    const float h = std::ceil(m.height) + 2 * kPaddingY;
    float x = anchor_.x;
    float y = anchor_.y + kBelowAnchor;
    // Kept inside the window: above the anchor when there is no room below.
    if (y + h > window->GetHeight())
        y = anchor_.y - h - 4.0f;
    x = std::clamp(x, 0.0f, std::max(0.0f, window->GetWidth() - w));
    y = std::clamp(y, 0.0f, std::max(0.0f, window->GetHeight() - h));
    EmitInvalidate();
    SetFrame({std::round(x), std::round(y), w, h});
    EmitInvalidate();
}

void UI_ToolTip::ShowAfter(double seconds) {
    if (!(seconds >= 0.0) || !std::isfinite(seconds))
        throw std::invalid_argument("UI_ToolTip::ShowAfter: the delay must be a number >= 0");
    if (!GetWindow())
        throw std::invalid_argument("UI_ToolTip::ShowAfter: the tip is not in a window");
    Layout();
    if (seconds < 0.001) {
        UI_RemoveTimer(kShowTimer);
        UI_SetVisible(true);
        EmitInvalidate();
        return;
    }
    UI_SetVisible(false);
    UI_InstallTimer(float(seconds), kShowTimer);
}

void UI_ToolTip::Close() {
    UI_RemoveTimer(kShowTimer);
    if (IsVisible()) {
        EmitInvalidate();
        UI_SetVisible(false);
    }
    RemoveFromParent();
}

bool UI_ToolTip::UI_DoTimerNotify(int timerId) {
    if (timerId != kShowTimer)
        return UI_Node::UI_DoTimerNotify(timerId);
    UI_RemoveTimer(kShowTimer);
    // Lifted to the top of the window so that nothing added since covers it.
    if (UI_Node* parent = GetParent(); parent && parent->GetChildren().back().get() != this) {
        IntrusivePtr<UI_Node> self(this);
        parent->ChildRemove(this);
        parent->ChildPushBack(self);
    }
    Layout();
    UI_SetVisible(true);
    EmitInvalidate();
    return true;
}

bool UI_ToolTip::UI_HitTest(const PointT<float>&) const {
    return false;
}

void UI_ToolTip::UI_Draw(Penrig* penrig) {
    if (!penrig)
        return;
    const skins::Palette& palette = skins::GetPalette();
    const RectT<float> b = GetBounds();
    penrig->FillRect(b, palette.toolTipBackground);
    penrig->FrameRect(b, palette.toolTipBorder);
    Penrig::StateSaver saver(*penrig);
    penrig->SetFont(penrig::Font(palette.smallFontSize));
    penrig->SetColor(palette.toolTipText);
    penrig->DrawText(text_, {kPaddingX, 0, b.width - 2 * kPaddingX, b.height});
    UI_Node::UI_Draw(penrig);
}

IntrusivePtr<UI_ToolTip> CreateUI_ToolTip(UI_Node* owner, std::string text,
                                          const PointT<float>& ownerLocal, double delaySeconds) {
    if (!owner || !owner->GetWindow())
        throw std::invalid_argument("CreateUI_ToolTip: the owner must hang in a window");
    if (!(delaySeconds >= 0.0) || !std::isfinite(delaySeconds))
        throw std::invalid_argument("CreateUI_ToolTip: the delay must be a number >= 0");
    auto tip = qorcore::MakeIntrusive<UI_ToolTip>(std::move(text));
    // Hidden until the delay is over; not in the constructor, which may not hand out `this`.
    tip->UI_SetVisible(false);
    owner->GetWindow()->AddNode(tip);
    tip->SetAnchor(owner->UI_LocalToGlobalF(ownerLocal));
    tip->ShowAfter(delaySeconds);
    return tip;
}

} // namespace qorui
