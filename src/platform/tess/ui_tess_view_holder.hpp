#pragma once

#include "layout/tess.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/tess/assemblage.hpp"
#include "platform/tess/behavior.hpp"
#include "platform/tess/visible_change_queue.hpp"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace vorlen {
class sheet_t;
}

namespace qorui {
class UI_Node;
}

namespace qormarltess {

/// Everything a view made from a layout script holds besides its nodes: the layout's own sheet,
/// the solver with the widgets' placeables, the controls by identifier, the assemblage that
/// ties cells and widgets, the pending visibility changes and the behaviour that runs them.
///
/// Members are destroyed in reverse order: the assemblage's connections end before the
/// placeables (and their nodes) and the sheets go.
class UI_TessViewHolder {
public:
    UI_TessViewHolder();
    ~UI_TessViewHolder();
    UI_TessViewHolder(const UI_TessViewHolder&) = delete;
    UI_TessViewHolder& operator=(const UI_TessViewHolder&) = delete;

    /// The layout's own sheet: its `constant:` and `interface:` cells.
    std::shared_ptr<vorlen::sheet_t> layoutSheet;

    /// The control entered under that identifier; null when none is.
    qorcore::IntrusivePtr<qorui::UI_Node> GetControl(std::string_view identifier) const;
    /// A later node of the same identifier replaces the earlier one. The node belongs to the
    /// view's tree, which outlives the holder's use of it.
    void RegisterControl(const std::string& identifier, qorui::UI_Node* node);
    const std::map<std::string, qorui::UI_Node*, std::less<>>& GetControls() const {
        return controls_;
    }

    vorlen::tess_t& GetTessEngine() { return tess_; }
    VisibleChangeQueue& GetVisibleChangeQueue() { return queue_; }
    behavior_t& GetRootBehavior() { return rootBehavior_; }
    Assemblage& GetAssemblage() { return assemblage_; }

    /// Solves the layout (0 asks for the natural length) and moves every node to its place;
    /// the root's size, or (0, 0) for an empty layout.
    std::pair<int, int> Layout(int width = 0, int height = 0);

    /// Ends the bindings and lets go of widgets and sheets; the nodes stay in their tree.
    void Release();

private:
    vorlen::tess_t tess_;
    std::map<std::string, qorui::UI_Node*, std::less<>> controls_;
    VisibleChangeQueue queue_;
    behavior_t rootBehavior_;
    Assemblage assemblage_;
};

} // namespace qormarltess
