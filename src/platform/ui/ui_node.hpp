#pragma once

#include "platform/core/delete_on_main_thread_ref_counted_object.hpp"
#include "platform/core/flags.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/point.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/scale_matrix.hpp"
#include "platform/ui/keyboard_event.hpp"
#include "platform/ui/mouse_event.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qorui {

namespace penrig {
class Penrig;
class SupplierInterface;
} // namespace penrig

class UI_Window;

using penrig::Penrig;
using qorcore::IntrusivePtr;
using qorcore::RectT;
using qorcore::ScaleMatrixT;

/// A node of the retained tree: a frame in its parent's coordinates, children drawn in order
/// (the last on top), visibility, enabled state, an id, state flags, timers and events. Nodes
/// are counted and always deleted on the main thread; a parent owns its children.
///
/// Tree notifications (`UI_NodeChanged`), in order:
/// - adding a child: 0 (parent set) to the child; 3 (window changed) to every node of its
///   subtree if that changes its window; then 1 (added to a parent) to the child.
/// - removing a child: 2 (removed) to the child; then 3 to its subtree if it was in a window.
///   A node that leaves its window loses its timers, focus, hover and any input capture on it.
/// - moving a child to another parent is a removal and then an addition.
/// - `UI_SetVisible` sends 4 (visibility changed) to the node and its whole subtree.
class UI_Node : public qorcore::DeleteOnMainThreadRefCountedObject {
public:
    enum NodeChange {
        kNodeChangeParentSet = 0,
        kNodeChangeAddedToParent = 1,
        kNodeChangeRemovedFromParent = 2,
        kNodeChangeWindowChanged = 3,
        kNodeChangeVisibilityChanged = 4,
    };

    /// State bits kept by the toolkit; bits from kStateUser up are free for subclasses.
    enum StateBits : std::uint32_t {
        kStateHovered = 1u << 0,
        kStatePressed = 1u << 1,
        kStateFocused = 1u << 2,
        kStateUser = 1u << 16,
    };

    UI_Node();

    // Tree. Adding null, the node itself or one of its ancestors throws std::invalid_argument;
    // an index past the end throws std::out_of_range.
    void ChildPushBack(IntrusivePtr<UI_Node> child);
    void ChildInsert(std::size_t index, IntrusivePtr<UI_Node> child);
    /// False if `child` is not a child of this node.
    bool ChildRemove(UI_Node* child);
    void RemoveAllChildren();
    void RemoveFromParent();
    std::size_t GetChildCount() const { return children_.size(); }
    /// Null past the end.
    UI_Node* GetChildAt(std::size_t index) const;
    const std::vector<IntrusivePtr<UI_Node>>& GetChildren() const { return children_; }
    UI_Node* GetParent() const { return parent_; }
    bool IsAncestorOf(const UI_Node* node) const;
    UI_Window* GetWindow() const { return window_; }
    /// The parent, once this node hangs in a window; null otherwise.
    UI_Node* UI_GetParentEventRecipientNode() const;

    // Identity
    void SetID(std::string id) { id_ = std::move(id); }
    const std::string& GetID() const { return id_; }
    /// This node or the first descendant, depth first, with the id; null if none.
    UI_Node* FindNodeByID(std::string_view id);

    // Geometry. Sizes below zero and NaN become zero.
    void SetFrame(const RectT<float>& frame);
    const RectT<float>& GetFrame() const { return frame_; }
    RectT<float> GetBounds() const { return {0, 0, frame_.width, frame_.height}; }
    void SetSize(float width, float height);
    void SetPosition(float x, float y);
    /// From this node's coordinates to the window's, and back. Outside a window the topmost
    /// ancestor's coordinates stand in for the window's.
    PointT<float> UI_LocalToGlobalF(const PointT<float>& local) const;
    PointT<float> UI_GlobalToLocalF(const PointT<float>& global) const;
    RectT<float> UI_LocalToGlobalF(const RectT<float>& local) const;
    /// The transform from this node's coordinates to those of `ancestor` (the window's when
    /// null). An `ancestor` that is not one gives the window transform too.
    ScaleMatrixT<float> UI_GetSelfToSpecificParentMatrix(const UI_Node* ancestor) const;

    // Visibility and enabling
    void UI_SetVisible(bool visible);
    bool IsVisible() const { return visible_; }
    /// Visible itself, with every ancestor visible, and in a window.
    bool IsShown() const;
    void UI_SetEnabled(bool enabled);
    bool IsEnabled() const { return enabled_; }
    /// Enabled itself and through every ancestor.
    bool IsEnabledInTree() const;

    // State flags. Changing them redraws nothing: a node whose look follows hover, press or
    // focus invalidates itself from `UI_DoMouseEvent` (enter, leave) or `UI_FocusChanged`, so a
    // large container does not repaint whenever the pointer crosses it.
    qorcore::Flags<std::uint32_t> GetStateFlags() const { return state_; }
    void SetStateFlags(std::uint32_t mask, bool on);

    // Redrawing
    void EmitInvalidate();
    void EmitInvalidate(const RectT<float>& local);

    // Focus
    void SetWantsKeyboardFocus(bool wants);
    bool WantsKeyboardFocus() const { return wantsFocus_; }
    /// Asks the window for the keyboard focus; false if it can't have it now.
    bool UI_RequestFocus();
    bool HasFocus() const { return state_.IsSet(kStateFocused); }

    // Timers: `UI_DoTimerNotify(id)` every `seconds` while the node is in a window. Installing
    // fails (false) outside a window or for a period that is not a positive number; a period
    // below a millisecond is taken as one. Installing an id again restarts it.
    bool UI_InstallTimer(float seconds, int id);
    /// False if no such timer ran. Removal is immediate; the flag is accepted for callers that
    /// distinguish a removal while detaching and is not needed here.
    bool UI_RemoveTimer(int id, bool detaching = true);

    /// Sets the window's cursor by number (0 the arrow).
    void UI_SetCursor(int cursor);

    // Tool tip: the window shows the text in a tip while the pointer rests over this node, after
    // the hover delay; leaving, pressing or scrolling hides it. An empty text shows none. Only
    // the node under the pointer counts, not its ancestors, so a control made of children hands
    // its text on to the children that cover it. A showing tip takes a new text at once.
    virtual void UI_SetToolTip(const std::string& text);
    const std::string& GetToolTipText() const { return toolTip_; }

    // Clipping helpers for `UI_Draw`; undone when the draw returns.
    void UI_ClipToSelf(Penrig* penrig) const;
    void UI_ClipToRect(Penrig* penrig, const RectT<float>& local) const;

    // Overrides
    /// Draws the node in its own coordinates, clipped to its bounds. The base draws the visible
    /// children that meet the clip; subclasses draw themselves and then call it.
    virtual void UI_Draw(Penrig* penrig);
    /// Events arrive in the node's coordinates; return true when consumed.
    virtual bool UI_DoMouseEvent(const MouseEvent& event);
    /// A press is about to reach `target`, this node or one inside it; called on the target
    /// and each of its ancestors in turn, before the event itself, whoever consumes it. A view
    /// learns here of presses its controls take for themselves.
    virtual void UI_PressInside(UI_Node& target) { (void)target; }
    virtual bool UI_DoKeyboardEvent(const KeyboardEvent& event);
    virtual bool UI_DoTimerNotify(int timerId);
    /// Set the cursor (with `UI_SetCursor`) and return true, or return false to let the parent
    /// decide. The arrow is shown when no node decides.
    virtual bool UI_DoCursor(const PointT<float>& local, ModifierFlags modifiers);
    /// Whether the point belongs to the node; false lets the event go to what lies below.
    virtual bool UI_HitTest(const PointT<float>& local) const;
    virtual void UI_NodeChanged(NodeChange change);
    virtual void UI_SizeChanged();
    virtual void UI_FocusChanged(bool hasFocus);
    /// The window's draw supplier; null outside a window.
    virtual const penrig::SupplierInterface* UI_GetDrawSupplier() const;

    /// Draws `node` and its subtree: translated to its frame, clipped to its bounds, skipped when
    /// hidden or outside the clip. This is how parents and windows draw children.
    static void DrawNode(UI_Node& node, Penrig& penrig);

protected:
    ~UI_Node() override;

private:
    friend class UI_Window;

    void Attach(std::size_t index, IntrusivePtr<UI_Node> child);
    void Detach(std::size_t index);
    void SetWindowRecursive(UI_Window* window, std::vector<IntrusivePtr<UI_Node>>& changed);
    void CollectSubtree(std::vector<IntrusivePtr<UI_Node>>& out);
    void InvalidateInParent();

    UI_Node* parent_ = nullptr;
    UI_Window* window_ = nullptr;
    std::vector<IntrusivePtr<UI_Node>> children_;
    RectT<float> frame_;
    std::string id_;
    std::string toolTip_;
    qorcore::Flags<std::uint32_t> state_;
    bool visible_ = true;
    bool enabled_ = true;
    bool wantsFocus_ = false;
};

namespace ui {
using ::qorui::UI_Node;
}

} // namespace qorui
