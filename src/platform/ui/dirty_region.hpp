#pragma once

#include "platform/core/rect.hpp"

#include <cstddef>
#include <vector>

namespace qorui {

/// The areas of a window waiting to be repainted. Rectangles are widened to whole pixels and
/// kept inside the window; overlapping or touching rectangles merge into one, and past the
/// limit the two whose union wastes least area merge, so a paint never walks many small areas.
class DirtyRegion {
public:
    explicit DirtyRegion(std::size_t maxRects = 8);

    void SetBounds(const qorcore::RectT<float>& bounds);
    void Add(const qorcore::RectT<float>& rect);
    void AddAll() { Add(bounds_); }
    void Clear() { rects_.clear(); }

    bool IsEmpty() const { return rects_.empty(); }
    const std::vector<qorcore::RectT<float>>& GetRects() const { return rects_; }
    /// The union of all rectangles.
    qorcore::RectT<float> GetBoundingRect() const;
    float GetArea() const;

private:
    void MergeOverlaps(std::size_t changed);

    qorcore::RectT<float> bounds_;
    std::size_t maxRects_;
    std::vector<qorcore::RectT<float>> rects_;
};

} // namespace qorui
