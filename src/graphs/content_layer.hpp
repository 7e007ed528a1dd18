#pragma once

#include "platform/core/rect.hpp"
#include "platform/core/ref_counted_object.hpp"

namespace qorui::penrig {
class Penrig;
}

namespace qoraudiofiltersui {

/// Something a graph paints under its points: a live spectrum, a level trace, a response curve.
/// Layers are drawn in the order they were added, the first lowest.
class ContentLayer : public qorcore::RefCountedObject {
public:
    virtual void Draw(qorui::penrig::Penrig* penrig, float scale) = 0;
    virtual void SetBounds(const qorcore::RectT<float>& content_rect, float scale) = 0;
};

} // namespace qoraudiofiltersui
