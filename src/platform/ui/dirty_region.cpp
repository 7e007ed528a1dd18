#include "platform/ui/dirty_region.hpp"

#include <cmath>
#include <limits>

namespace qorui {

using qorcore::RectT;

namespace {

float Area(const RectT<float>& r) {
    return r.IsEmpty() ? 0.0f : r.width * r.height;
}

// Overlapping, or side by side so that their union covers exactly the two.
bool ShouldMerge(const RectT<float>& a, const RectT<float>& b) {
    if (a.Intersects(b))
        return true;
    const bool sideBySide =
        (a.y == b.y && a.height == b.height && (a.Right() == b.x || b.Right() == a.x)) ||
        (a.x == b.x && a.width == b.width && (a.Bottom() == b.y || b.Bottom() == a.y));
    return sideBySide;
}

bool IsFinite(const RectT<float>& r) {
    return std::isfinite(r.x) && std::isfinite(r.y) && std::isfinite(r.width) &&
           std::isfinite(r.height);
}

} // namespace

DirtyRegion::DirtyRegion(std::size_t maxRects) : maxRects_(maxRects < 1 ? 1 : maxRects) {}

void DirtyRegion::SetBounds(const RectT<float>& bounds) {
    bounds_ = bounds;
    for (auto& r : rects_)
        r = r.Intersection(bounds_);
    std::erase_if(rects_, [](const RectT<float>& r) { return r.IsEmpty(); });
}

void DirtyRegion::Add(const RectT<float>& rect) {
    if (!IsFinite(rect))
        return;
    const RectT<float> whole(qorcore::OutsetToIntegers(rect.Intersection(bounds_)));
    const RectT<float> clipped = whole.Intersection(bounds_);
    if (clipped.IsEmpty())
        return;
    for (const auto& r : rects_)
        if (r.Contains(clipped))
            return;
    rects_.push_back(clipped);
    MergeOverlaps(rects_.size() - 1);
    while (rects_.size() > maxRects_) {
        std::size_t bestI = 0, bestJ = 1;
        float bestWaste = std::numeric_limits<float>::max();
        for (std::size_t i = 0; i < rects_.size(); ++i)
            for (std::size_t j = i + 1; j < rects_.size(); ++j) {
                const float waste =
                    Area(rects_[i].Union(rects_[j])) - Area(rects_[i]) - Area(rects_[j]);
                if (waste < bestWaste) {
                    bestWaste = waste;
                    bestI = i;
                    bestJ = j;
                }
            }
        rects_[bestI] = rects_[bestI].Union(rects_[bestJ]);
        rects_.erase(rects_.begin() + static_cast<std::ptrdiff_t>(bestJ));
        MergeOverlaps(bestI < bestJ ? bestI : bestI - 1);
    }
}

void DirtyRegion::MergeOverlaps(std::size_t changed) {
    // A merged rectangle may now meet others, so keep merging into it until nothing touches.
    bool merged = true;
    while (merged) {
        merged = false;
        for (std::size_t i = 0; i < rects_.size(); ++i) {
            if (i == changed || !ShouldMerge(rects_[i], rects_[changed]))
                continue;
            rects_[changed] = rects_[changed].Union(rects_[i]);
            rects_.erase(rects_.begin() + static_cast<std::ptrdiff_t>(i));
            if (i < changed)
                --changed;
            merged = true;
            break;
        }
    }
}

RectT<float> DirtyRegion::GetBoundingRect() const {
    RectT<float> all;
    for (const auto& r : rects_)
        all = all.Union(r);
    return all;
}

float DirtyRegion::GetArea() const {
    float area = 0;
    for (const auto& r : rects_)
        area += Area(r);
    return area;
}

} // namespace qorui
