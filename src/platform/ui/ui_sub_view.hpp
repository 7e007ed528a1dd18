#pragma once

#include "platform/ui/ui_container.hpp"

namespace qorui {

/// A container that stands for a view of its own: the root of an editor or of an archived node
/// tree. It can take the size of its content.
class UI_SubView : public UI_Container {
public:
    /// Sets the size to reach the right and bottom edges of the visible children (at least 0).
    void SizeToChildren();
};

namespace ui {
using ::qorui::UI_SubView;
}

} // namespace qorui
