#include "platform/ui/ui_window.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/ui/ui_node_manager.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {

// A double click: the same button again within half a second and four pixels.
constexpr double kDoubleClickSeconds = 0.5;
constexpr float kDoubleClickDistance = 4.0f;

// The node that fills the window: it only holds the views.
class WindowRoot final : public UI_Node {};

bool IsInSubtree(const UI_Node* node, const UI_Node* root) {
    return node && (node == root || root->IsAncestorOf(node));
}

void CollectFocusable(UI_Node* node, std::vector<UI_Node*>& out) {
    if (!node->IsVisible() || !node->IsEnabled())
        return;
    if (node->WantsKeyboardFocus())
        out.push_back(node);
    for (const auto& child : node->GetChildren())
        CollectFocusable(child.get(), out);
}

UI_Node* HitTestNode(UI_Node* node, const PointT<float>& local) {
    if (!node->IsVisible() || !node->UI_HitTest(local))
        return nullptr;
    const auto& children = node->GetChildren();
    for (auto it = children.rbegin(); it != children.rend(); ++it) {
        const RectT<float>& frame = (*it)->GetFrame();
        if (UI_Node* hit = HitTestNode(it->get(), local - frame.Origin()))
            return hit;
    }
    return node;
}

} // namespace

UI_Window::UI_Window(float width, float height, float scale)
    : width_(width), height_(height), supplier_(scale) {
    if (!(width > 0 && height > 0 && std::isfinite(width) && std::isfinite(height)))
        throw std::invalid_argument("UI_Window: width and height must be positive");
    root_ = IntrusivePtr<UI_Node>(new WindowRoot());
    root_->window_ = this;
    root_->frame_ = GetBounds();
    dirty_.SetBounds(GetBounds());
    dirty_.AddAll();
}

UI_Window::~UI_Window() {
    CloseTree();
    root_->window_ = nullptr;
}

void UI_Window::CloseTree() {
    closing_ = true;
    UI_NodeManager::Get().CancelCaptureIn(this);
    timers_.Clear();
    hover_.reset();
    focus_.reset();
    pressed_.reset();
    CloseToolTip();
    root_->RemoveAllChildren();
}

void UI_Window::SetBackgroundColor(const qorcore::ColorRGBA& color) {
    background_ = color.Clamped();
    InvalidateAll();
}

void UI_Window::Resize(float width, float height) {
    if (!(width > 0 && height > 0 && std::isfinite(width) && std::isfinite(height)))
        return;
    width_ = width;
    height_ = height;
    dirty_.SetBounds(GetBounds());
    root_->SetFrame(GetBounds());
    InvalidateAll();
}

void UI_Window::InvalidateRect(const RectT<float>& windowRect) {
    dirty_.Add(windowRect);
}

void UI_Window::InvalidateAll() {
    dirty_.AddAll();
}

std::vector<RectT<float>> UI_Window::PaintDirty(Penrig& penrig) {
    std::vector<RectT<float>> rects = dirty_.GetRects();
    dirty_.Clear();
    for (const auto& r : rects)
        PaintRect(penrig, r);
    return rects;
}

void UI_Window::PaintRect(Penrig& penrig, const RectT<float>& windowRect) {
    penrig.PushClip(windowRect);
    penrig.Clear(background_);
    UI_Node::DrawNode(*root_, penrig);
    penrig.PopClip();
}

UI_Node* UI_Window::HitTest(const PointT<float>& windowPoint) const {
    if (!GetBounds().Contains(windowPoint))
        return nullptr;
    return HitTestNode(root_.get(), windowPoint);
}

int UI_Window::CountClick(const MouseEvent& event) {
    const TimeStamp now = GetTime();
    const PointT<float> d = event.GetPosition() - lastPress_.position;
    const bool again =
        lastPress_.count > 0 && event.GetButton() == lastPress_.button &&
        now - lastPress_.time <= qorcore::HighPrecisionTime::FromSeconds(kDoubleClickSeconds) &&
        std::abs(d.x) <= kDoubleClickDistance && std::abs(d.y) <= kDoubleClickDistance;
    lastPress_.count = again ? lastPress_.count + 1 : 1;
    lastPress_.button = event.GetButton();
    lastPress_.position = event.GetPosition();
    lastPress_.time = now;
    return lastPress_.count;
}

bool UI_Window::DispatchMouseEvent(MouseEvent event) {
    UI_NodeManager& manager = UI_NodeManager::Get();
    const PointT<float> at = event.GetPosition();
    const bool press = event.IsAction(PointerAction::kPress);
    const bool release = event.IsAction(PointerAction::kRelease);
    if (press || event.IsAction(PointerAction::kWheel) || event.IsAction(PointerAction::kLeave))
        CloseToolTip();
    if (press) {
        if (event.GetClickCount() <= 0)
            event.SetClickCount(CountClick(event));
        else
            lastPress_ = {event.GetButton(), at, GetTime(), event.GetClickCount()};
        buttons_ |= MouseButtonToBit(event.GetButton());
    } else if (release) {
        buttons_ &= ~MouseButtonToBit(event.GetButton());
    }
    manager.RecordMouseEvent(event, buttons_);
    if (release && pressed_ && buttons_ == 0) {
        pressed_->SetStateFlags(UI_Node::kStatePressed, false);
        pressed_.reset();
    }

    IntrusivePtr<InputCapture> capture(manager.GetCurrentCapture());
    if (capture && capture->GetNode()->GetWindow() == this) {
        UI_Node* node = capture->GetNode();
        const MouseEvent local = event.MovedTo(node->UI_GlobalToLocalF(at));
        if (event.IsAction(PointerAction::kMove))
            capture->UI_DoCursor(local.GetPosition(), event.GetModKey());
        capture->UI_DoMouseEvent(local);
        if (release && (buttons_ & 7u) == 0 && manager.GetCurrentCapture() == capture.get())
            manager.EndInputCapture(false);
        return true;
    }

    if (event.IsAction(PointerAction::kLeave)) {
        UpdateHover(nullptr);
        return false;
    }
    UI_Node* target = HitTest(at);
    if (!event.IsAction(PointerAction::kWheel))
        UpdateHover(target);
    if (event.IsAction(PointerAction::kMove) || event.IsAction(PointerAction::kEnter))
        UpdateToolTip(target, event);
    if (press && target) {
        const IntrusivePtr<UI_Node> pressed(target);
        for (IntrusivePtr<UI_Node> n(target); n && n->GetWindow() == this; n = n->GetParent())
            n->UI_PressInside(*pressed);
    }
    if (press) {
        for (UI_Node* n = target; n; n = n->GetParent())
            if (n->WantsKeyboardFocus() && n->IsEnabledInTree()) {
                SetFocusNode(n);
                break;
            }
    }
    bool consumed = false;
    if (!event.IsAction(PointerAction::kEnter))
        consumed = Bubble(target, event);
    if (press && consumed && !manager.GetCurrentCapture() && target && !pressed_) {
        pressed_ = target;
        pressed_->SetStateFlags(UI_Node::kStatePressed, true);
    }
    if (event.IsAction(PointerAction::kMove) || event.IsAction(PointerAction::kEnter))
        UpdateCursor(target, at, event.GetModKey());
    return consumed;
}

bool UI_Window::Bubble(UI_Node* target, const MouseEvent& windowEvent) {
    IntrusivePtr<UI_Node> node(target);
    while (node && node->GetWindow() == this) {
        if (node->IsEnabledInTree() && node->UI_DoMouseEvent(windowEvent.MovedTo(
                                           node->UI_GlobalToLocalF(windowEvent.GetPosition()))))
            return true;
        node = node->GetParent();
    }
    return false;
}

void UI_Window::UpdateHover(UI_Node* node) {
    if (node == hover_.get())
        return;
    IntrusivePtr<UI_Node> old = std::move(hover_);
    hover_ = node;
    const MouseEvent& last = UI_NodeManager::Get().GetPreviousMouseEvent();
    if (old) {
        old->SetStateFlags(UI_Node::kStateHovered, false);
        if (old->GetWindow() == this)
            old->UI_DoMouseEvent(MouseEvent(PointerAction::kLeave,
                                            old->UI_GlobalToLocalF(last.GetPosition()),
                                            MouseButton::kNone, last.GetModKey()));
    }
    if (hover_ && hover_ == node) {
        hover_->SetStateFlags(UI_Node::kStateHovered, true);
        hover_->UI_DoMouseEvent(MouseEvent(PointerAction::kEnter,
                                           hover_->UI_GlobalToLocalF(last.GetPosition()),
                                           MouseButton::kNone, last.GetModKey()));
    }
}

void UI_Window::UpdateToolTip(UI_Node* target, const MouseEvent& windowEvent) {
    if (target != toolTipNode_.get()) {
        CloseToolTip();
        toolTipNode_ = target;
    }
    // No tip comes up while a button is held: the pointer is dragging, not resting.
    if (!target || target->GetToolTipText().empty() || buttons_ != 0)
        return;
    toolTipHover_.SetText(target->GetToolTipText());
    toolTipHover_.HandleMouseEvent(
        *target, windowEvent.MovedTo(target->UI_GlobalToLocalF(windowEvent.GetPosition())));
}

void UI_Window::ToolTipTextChanged(UI_Node* node) {
    if (node == toolTipNode_.get())
        toolTipHover_.SetText(node->GetToolTipText());
}

void UI_Window::CloseToolTip() {
    toolTipHover_.Close();
    toolTipNode_.reset();
}

void UI_Window::UpdateCursor(UI_Node* target, const PointT<float>& at, ModifierFlags modifiers) {
    IntrusivePtr<UI_Node> node(target);
    while (node && node->GetWindow() == this) {
        if (node->IsEnabledInTree() && node->UI_DoCursor(node->UI_GlobalToLocalF(at), modifiers))
            return;
        node = node->GetParent();
    }
    SetCursor(0);
}

bool UI_Window::DispatchKeyboardEvent(const KeyboardEvent& event) {
    UI_NodeManager& manager = UI_NodeManager::Get();
    IntrusivePtr<InputCapture> capture(manager.GetCurrentCapture());
    if (capture && capture->GetNode()->GetWindow() == this) {
        if (capture->UI_DoKeyboardEvent(event))
            return true;
        if (event.CompareCode(KeyboardCode::kEscape) && event.IsActionKeyDown()) {
            manager.EndInputCapture(true);
            return true;
        }
    }
    IntrusivePtr<UI_Node> node = focus_;
    while (node && node->GetWindow() == this) {
        if (node->IsEnabledInTree() && node->UI_DoKeyboardEvent(event))
            return true;
        node = node->GetParent();
    }
    if (event.CompareShortcut(KeyboardCode::kTab))
        return MoveFocus(true);
    if (event.CompareShortcut(KeyboardCode::kTab, ModifierKey::kShift))
        return MoveFocus(false);
    return false;
}

bool UI_Window::SetFocusNode(UI_Node* node) {
    if (node && (node->GetWindow() != this || !node->IsShown() || !node->IsEnabledInTree() ||
                 !node->WantsKeyboardFocus()))
        return false;
    if (node == focus_.get())
        return true;
    IntrusivePtr<UI_Node> old = std::move(focus_);
    focus_ = node;
    if (old) {
        old->SetStateFlags(UI_Node::kStateFocused, false);
        old->UI_FocusChanged(false);
    }
    if (focus_ && focus_ == node) {
        focus_->SetStateFlags(UI_Node::kStateFocused, true);
        focus_->UI_FocusChanged(true);
    }
    return true;
}

bool UI_Window::MoveFocus(bool forward) {
    std::vector<UI_Node*> order;
    CollectFocusable(root_.get(), order);
    if (order.empty())
        return false;
    std::size_t next = forward ? 0 : order.size() - 1;
    for (std::size_t i = 0; i < order.size(); ++i)
        if (order[i] == focus_.get()) {
            next = forward ? (i + 1) % order.size() : (i + order.size() - 1) % order.size();
            break;
        }
    return SetFocusNode(order[next]);
}

void UI_Window::LoseInputFocus() {
    UI_NodeManager::Get().CancelCaptureIn(this);
    buttons_ = 0;
    CloseToolTip();
    UI_NodeManager::Get().RecordMouseEvent(UI_NodeManager::Get().GetPreviousMouseEvent(), 0);
    if (pressed_) {
        pressed_->SetStateFlags(UI_Node::kStatePressed, false);
        pressed_.reset();
    }
}

void UI_Window::SetCursor(int cursor) {
    if (cursor == cursor_)
        return;
    cursor_ = cursor;
    OnCursorChanged(cursor);
}

void UI_Window::OnCursorChanged(int) {}

bool UI_Window::InstallTimer(UI_Node* node, float seconds, int id) {
    if (closing_ || !node || node->GetWindow() != this || !(seconds > 0.0f) ||
        !std::isfinite(seconds))
        return false;
    const TimeStamp period =
        std::max<TimeStamp>(qorcore::HighPrecisionTime::FromSeconds(seconds), 1'000'000);
    timers_.Install(node, id, period, GetTime());
    return true;
}

std::size_t UI_Window::FireDueTimers() {
    const TimeStamp now = GetTime();
    std::size_t fired = 0;
    while (auto due = timers_.TakeDue(now, CatchesUpOnTimers())) {
        if (due->first->GetWindow() == this)
            due->first->UI_DoTimerNotify(due->second);
        ++fired;
    }
    return fired;
}

void UI_Window::NodeLeaving(UI_Node* subtree) {
    timers_.RemoveSubtree(subtree);
    NodeUnavailable(subtree);
}

void UI_Window::NodeUnavailable(UI_Node* subtree) {
    UI_NodeManager::Get().CancelCaptureUnder(subtree);
    if (IsInSubtree(focus_.get(), subtree)) {
        IntrusivePtr<UI_Node> old = std::move(focus_);
        old->SetStateFlags(UI_Node::kStateFocused, false);
        old->UI_FocusChanged(false);
    }
    if (IsInSubtree(hover_.get(), subtree)) {
        hover_->SetStateFlags(UI_Node::kStateHovered, false);
        hover_.reset();
    }
    if (IsInSubtree(pressed_.get(), subtree)) {
        pressed_->SetStateFlags(UI_Node::kStatePressed, false);
        pressed_.reset();
    }
    if (IsInSubtree(toolTipNode_.get(), subtree))
        CloseToolTip();
}

} // namespace qorui
