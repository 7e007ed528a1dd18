#include "platform/ui/ui_node.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/ui/ui_node_manager.hpp"
#include "platform/ui/ui_window.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qorui {

namespace {

float SanePosition(float v) {
    return std::isfinite(v) ? v : 0.0f;
}
float SaneSize(float v) {
    return std::isfinite(v) && v > 0.0f ? v : 0.0f;
}

} // namespace

UI_Node::UI_Node() = default;

UI_Node::~UI_Node() {
    // Children outlive their parent only if someone else holds them; they are orphans then.
    for (auto& child : children_)
        child->parent_ = nullptr;
}

// ---- tree ----

void UI_Node::ChildPushBack(IntrusivePtr<UI_Node> child) {
    ChildInsert(children_.size(), std::move(child));
}

void UI_Node::ChildInsert(std::size_t index, IntrusivePtr<UI_Node> child) {
    if (!child)
        throw std::invalid_argument("UI_Node::ChildInsert: null child");
    if (child.get() == this || child->IsAncestorOf(this))
        throw std::invalid_argument("UI_Node::ChildInsert: a node can't hold itself");
    if (child->parent_ == this) {
        // Re-ordering among the same children: no notifications.
        auto& v = children_;
        const auto it = std::find(v.begin(), v.end(), child);
        const std::size_t from = static_cast<std::size_t>(it - v.begin());
        if (index > v.size())
            throw std::out_of_range("UI_Node::ChildInsert: index past the end");
        v.erase(it);
        v.insert(v.begin() + static_cast<std::ptrdiff_t>(index > from ? index - 1 : index), child);
        child->InvalidateInParent();
        return;
    }
    if (index > children_.size())
        throw std::out_of_range("UI_Node::ChildInsert: index past the end");
    if (child->parent_)
        child->RemoveFromParent();
    // The old parent's notifications may have changed our children.
    Attach(std::min(index, children_.size()), std::move(child));
}

void UI_Node::Attach(std::size_t index, IntrusivePtr<UI_Node> child) {
    UI_Node* node = child.get();
    children_.insert(children_.begin() + static_cast<std::ptrdiff_t>(index), child);
    node->parent_ = this;
    node->UI_NodeChanged(kNodeChangeParentSet);
    if (node->parent_ != this)
        return; // the handler moved it elsewhere
    if (node->window_ != window_) {
        std::vector<IntrusivePtr<UI_Node>> changed;
        node->SetWindowRecursive(window_, changed);
        for (auto& n : changed)
            n->UI_NodeChanged(kNodeChangeWindowChanged);
    }
    if (node->parent_ != this)
        return;
    node->UI_NodeChanged(kNodeChangeAddedToParent);
    node->InvalidateInParent();
}

bool UI_Node::ChildRemove(UI_Node* child) {
    for (std::size_t i = 0; i < children_.size(); ++i)
        if (children_[i].get() == child) {
            Detach(i);
            return true;
        }
    return false;
}

void UI_Node::Detach(std::size_t index) {
    IntrusivePtr<UI_Node> child = children_[index];
    child->InvalidateInParent();
    UI_Window* oldWindow = child->window_;
    if (oldWindow)
        oldWindow->NodeLeaving(child.get());
    // The leaving handlers (end of a capture) may have changed the children.
    const auto it = std::find(children_.begin(), children_.end(), child);
    if (it == children_.end())
        return;
    children_.erase(it);
    child->parent_ = nullptr;
    child->UI_NodeChanged(kNodeChangeRemovedFromParent);
    if (oldWindow && child->window_ == oldWindow && !child->parent_) {
        std::vector<IntrusivePtr<UI_Node>> changed;
        child->SetWindowRecursive(nullptr, changed);
        for (auto& n : changed)
            n->UI_NodeChanged(kNodeChangeWindowChanged);
    }
}

void UI_Node::RemoveAllChildren() {
    while (!children_.empty())
        Detach(children_.size() - 1);
}

void UI_Node::RemoveFromParent() {
    if (parent_)
        parent_->ChildRemove(this);
}

UI_Node* UI_Node::GetChildAt(std::size_t index) const {
    return index < children_.size() ? children_[index].get() : nullptr;
}

bool UI_Node::IsAncestorOf(const UI_Node* node) const {
    for (const UI_Node* p = node ? node->parent_ : nullptr; p; p = p->parent_)
        if (p == this)
            return true;
    return false;
}

UI_Node* UI_Node::UI_GetParentEventRecipientNode() const {
    return window_ ? parent_ : nullptr;
}

void UI_Node::SetWindowRecursive(UI_Window* window, std::vector<IntrusivePtr<UI_Node>>& changed) {
    window_ = window;
    changed.emplace_back(this);
    for (auto& child : children_)
        child->SetWindowRecursive(window, changed);
}

UI_Node* UI_Node::FindNodeByID(std::string_view id) {
    if (id_ == id)
        return this;
    for (auto& child : children_)
        if (UI_Node* found = child->FindNodeByID(id))
            return found;
    return nullptr;
}

// ---- geometry ----

void UI_Node::SetFrame(const RectT<float>& frame) {
    const RectT<float> sane(SanePosition(frame.x), SanePosition(frame.y), SaneSize(frame.width),
                            SaneSize(frame.height));
    if (sane == frame_)
        return;
    const bool resized = sane.width != frame_.width || sane.height != frame_.height;
    InvalidateInParent();
    frame_ = sane;
    InvalidateInParent();
    if (resized)
        UI_SizeChanged();
}

void UI_Node::SetSize(float width, float height) {
    SetFrame({frame_.x, frame_.y, width, height});
}

void UI_Node::SetPosition(float x, float y) {
    SetFrame({x, y, frame_.width, frame_.height});
}

PointT<float> UI_Node::UI_LocalToGlobalF(const PointT<float>& local) const {
    PointT<float> p = local;
    for (const UI_Node* n = this; n; n = n->parent_)
        p += n->frame_.Origin();
    return p;
}

PointT<float> UI_Node::UI_GlobalToLocalF(const PointT<float>& global) const {
    return global - UI_LocalToGlobalF(PointT<float>(0, 0));
}

RectT<float> UI_Node::UI_LocalToGlobalF(const RectT<float>& local) const {
    return local.Offset(UI_LocalToGlobalF(PointT<float>(0, 0)));
}

ScaleMatrixT<float> UI_Node::UI_GetSelfToSpecificParentMatrix(const UI_Node* ancestor) const {
    if (ancestor && !ancestor->IsAncestorOf(this))
        ancestor = nullptr;
    ScaleMatrixT<float> m;
    for (const UI_Node* n = this; n && n != ancestor; n = n->parent_) {
        m.translateX += n->frame_.x;
        m.translateY += n->frame_.y;
    }
    return m;
}

// ---- visibility, enabling, state ----

void UI_Node::UI_SetVisible(bool visible) {
    if (visible == visible_)
        return;
    if (!visible)
        InvalidateInParent();
    visible_ = visible;
    if (visible)
        InvalidateInParent();
    else if (window_)
        window_->NodeUnavailable(this);
    std::vector<IntrusivePtr<UI_Node>> subtree;
    CollectSubtree(subtree);
    for (auto& n : subtree)
        n->UI_NodeChanged(kNodeChangeVisibilityChanged);
}

bool UI_Node::IsShown() const {
    if (!window_)
        return false;
    for (const UI_Node* n = this; n; n = n->parent_)
        if (!n->visible_)
            return false;
    return true;
}

void UI_Node::UI_SetEnabled(bool enabled) {
    if (enabled == enabled_)
        return;
    enabled_ = enabled;
    if (!enabled && window_)
        window_->NodeUnavailable(this);
    EmitInvalidate();
}

bool UI_Node::IsEnabledInTree() const {
    for (const UI_Node* n = this; n; n = n->parent_)
        if (!n->enabled_)
            return false;
    return true;
}

void UI_Node::SetStateFlags(std::uint32_t mask, bool on) {
    state_.Set(mask, on);
}

void UI_Node::CollectSubtree(std::vector<IntrusivePtr<UI_Node>>& out) {
    out.emplace_back(this);
    for (auto& child : children_)
        child->CollectSubtree(out);
}

// ---- invalidation ----

void UI_Node::EmitInvalidate() {
    EmitInvalidate(GetBounds());
}

void UI_Node::EmitInvalidate(const RectT<float>& local) {
    if (!window_)
        return;
    // Walk up, clipping to each node's bounds as drawing does.
    RectT<float> r = local.Intersection(GetBounds());
    for (const UI_Node* n = this; n; n = n->parent_) {
        if (!n->visible_ || r.IsEmpty())
            return;
        r = r.Offset(n->frame_.Origin());
        if (n->parent_)
            r = r.Intersection(n->parent_->GetBounds());
    }
    window_->InvalidateRect(r);
}

void UI_Node::InvalidateInParent() {
    if (parent_ && visible_ && !frame_.IsEmpty())
        parent_->EmitInvalidate(frame_);
}

// ---- focus, timers, cursor, tool tip ----

void UI_Node::SetWantsKeyboardFocus(bool wants) {
    wantsFocus_ = wants;
    if (!wants && HasFocus() && window_)
        window_->SetFocusNode(nullptr);
}

bool UI_Node::UI_RequestFocus() {
    return window_ && window_->SetFocusNode(this);
}

bool UI_Node::UI_InstallTimer(float seconds, int id) {
    return window_ && window_->InstallTimer(this, seconds, id);
}

bool UI_Node::UI_RemoveTimer(int id, bool) {
    return window_ && window_->RemoveTimer(this, id);
}

void UI_Node::UI_SetCursor(int cursor) {
    if (window_)
        window_->SetCursor(cursor);
}

void UI_Node::UI_SetToolTip(const std::string& text) {
    if (text == toolTip_)
        return;
    toolTip_ = text;
    if (window_)
        window_->ToolTipTextChanged(this);
}

// ---- drawing ----

void UI_Node::UI_ClipToSelf(Penrig* penrig) const {
    penrig->ClipToRect(GetBounds());
}

void UI_Node::UI_ClipToRect(Penrig* penrig, const RectT<float>& local) const {
    penrig->ClipToRect(local);
}

void UI_Node::DrawNode(UI_Node& node, Penrig& penrig) {
    if (!node.visible_ || node.frame_.IsEmpty() || !penrig.GetClipBounds().Intersects(node.frame_))
        return;
    IntrusivePtr<UI_Node> keep(&node);
    Penrig::StateSaver saver(penrig);
    penrig.Translate(node.frame_.x, node.frame_.y);
    penrig.ClipToRect(node.GetBounds());
    node.UI_Draw(&penrig);
}

void UI_Node::UI_Draw(Penrig* penrig) {
    // By index: a child drawn may not change the tree, but this keeps a mistake harmless.
    for (std::size_t i = 0; i < children_.size(); ++i) {
        IntrusivePtr<UI_Node> child = children_[i];
        DrawNode(*child, *penrig);
    }
}

// ---- default overrides ----

bool UI_Node::UI_DoMouseEvent(const MouseEvent&) {
    return false;
}
bool UI_Node::UI_DoKeyboardEvent(const KeyboardEvent&) {
    return false;
}
bool UI_Node::UI_DoTimerNotify(int) {
    return false;
}
bool UI_Node::UI_DoCursor(const PointT<float>&, ModifierFlags) {
    return false;
}
bool UI_Node::UI_HitTest(const PointT<float>& local) const {
    return GetBounds().Contains(local);
}
void UI_Node::UI_NodeChanged(NodeChange) {}
void UI_Node::UI_SizeChanged() {}
void UI_Node::UI_FocusChanged(bool) {}

const penrig::SupplierInterface* UI_Node::UI_GetDrawSupplier() const {
    return window_ ? &window_->GetDrawSupplier() : nullptr;
}

} // namespace qorui
