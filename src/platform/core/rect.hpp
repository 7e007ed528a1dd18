#pragma once

#include "platform/core/point.hpp"

#include <algorithm>
#include <cmath>

namespace qorcore {

/// A rectangle by its top-left corner and size. A rectangle whose width or height is not above
/// zero is empty: it contains no point and vanishes in a union.
template <class T>
struct RectT {
    T x{};
    T y{};
    T width{};
    T height{};

    constexpr RectT() = default;
    constexpr RectT(T px, T py, T w, T h) : x(px), y(py), width(w), height(h) {}
    constexpr RectT(const PointT<T>& origin, T w, T h)
        : x(origin.x), y(origin.y), width(w), height(h) {}

    template <class U>
    constexpr explicit RectT(const RectT<U>& other)
        : x(static_cast<T>(other.x)), y(static_cast<T>(other.y)),
          width(static_cast<T>(other.width)), height(static_cast<T>(other.height)) {}

    static constexpr RectT FromEdges(T left, T top, T right, T bottom) {
        return {left, top, right - left, bottom - top};
    }

    constexpr T Left() const { return x; }
    constexpr T Top() const { return y; }
    constexpr T Right() const { return x + width; }
    constexpr T Bottom() const { return y + height; }
    constexpr PointT<T> Origin() const { return {x, y}; }
    constexpr PointT<T> Size() const { return {width, height}; }
    constexpr bool IsEmpty() const { return !(width > T(0)) || !(height > T(0)); }

    /// Half-open: the right and bottom edges are outside.
    constexpr bool Contains(const PointT<T>& p) const {
        return p.x >= x && p.y >= y && p.x < x + width && p.y < y + height;
    }
    constexpr bool Contains(const RectT& r) const {
        return !r.IsEmpty() && r.x >= x && r.y >= y && r.Right() <= Right() &&
               r.Bottom() <= Bottom();
    }
    constexpr bool Intersects(const RectT& r) const { return !Intersection(r).IsEmpty(); }

    constexpr RectT Intersection(const RectT& r) const {
        const T l = std::max(x, r.x);
        const T t = std::max(y, r.y);
        const T rr = std::min(Right(), r.Right());
        const T b = std::min(Bottom(), r.Bottom());
        if (rr <= l || b <= t)
            return {};
        return FromEdges(l, t, rr, b);
    }
    /// The smallest rectangle holding both; an empty operand is ignored.
    constexpr RectT Union(const RectT& r) const {
        if (r.IsEmpty())
            return *this;
        if (IsEmpty())
            return r;
        return FromEdges(std::min(x, r.x), std::min(y, r.y), std::max(Right(), r.Right()),
                         std::max(Bottom(), r.Bottom()));
    }
    constexpr RectT Offset(T dx, T dy) const { return {x + dx, y + dy, width, height}; }
    constexpr RectT Offset(const PointT<T>& d) const { return Offset(d.x, d.y); }
    constexpr RectT Inset(T dx, T dy) const {
        return {x + dx, y + dy, width - dx - dx, height - dy - dy};
    }
    constexpr PointT<T> Center() const { return {x + width / T(2), y + height / T(2)}; }

    friend constexpr bool operator==(const RectT&, const RectT&) = default;
};

/// The smallest integer rectangle that covers `r`: floor of the start, ceiling of the end.
template <class T>
RectT<int> OutsetToIntegers(const RectT<T>& r) {
    const int l = static_cast<int>(std::floor(r.x));
    const int t = static_cast<int>(std::floor(r.y));
    const int rr = static_cast<int>(std::ceil(r.x + r.width));
    const int b = static_cast<int>(std::ceil(r.y + r.height));
    return RectT<int>::FromEdges(l, t, rr, b);
}

} // namespace qorcore
