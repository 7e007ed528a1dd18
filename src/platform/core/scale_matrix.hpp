#pragma once

#include "platform/core/point.hpp"
#include "platform/core/rect.hpp"

namespace qorcore {

/// An axis-aligned transform: scale, then translate. Nodes never rotate, so this is all the
/// geometry the toolkit needs between coordinate spaces.
template <class T>
struct ScaleMatrixT {
    T scaleX = T(1);
    T scaleY = T(1);
    T translateX = T(0);
    T translateY = T(0);

    constexpr PointT<T> Apply(const PointT<T>& p) const {
        return {p.x * scaleX + translateX, p.y * scaleY + translateY};
    }
    constexpr RectT<T> Apply(const RectT<T>& r) const {
        const PointT<T> a = Apply(r.Origin());
        return {a.x, a.y, r.width * scaleX, r.height * scaleY};
    }
    /// This transform applied after `inner`.
    constexpr ScaleMatrixT Compose(const ScaleMatrixT& inner) const {
        return {scaleX * inner.scaleX, scaleY * inner.scaleY,
                inner.translateX * scaleX + translateX, inner.translateY * scaleY + translateY};
    }
    constexpr ScaleMatrixT Inverse() const {
        return {T(1) / scaleX, T(1) / scaleY, -translateX / scaleX, -translateY / scaleY};
    }
    friend constexpr bool operator==(const ScaleMatrixT&, const ScaleMatrixT&) = default;
};

} // namespace qorcore
