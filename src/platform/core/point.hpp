#pragma once

#include <cmath>

namespace qorcore {

template <class T>
struct PointT {
    T x{};
    T y{};

    constexpr PointT() = default;
    constexpr PointT(T px, T py) : x(px), y(py) {}

    template <class U>
    constexpr explicit PointT(const PointT<U>& other)
        : x(static_cast<T>(other.x)), y(static_cast<T>(other.y)) {}

    constexpr PointT operator+(const PointT& o) const { return {x + o.x, y + o.y}; }
    constexpr PointT operator-(const PointT& o) const { return {x - o.x, y - o.y}; }
    constexpr PointT& operator+=(const PointT& o) {
        x += o.x;
        y += o.y;
        return *this;
    }
    constexpr PointT& operator-=(const PointT& o) {
        x -= o.x;
        y -= o.y;
        return *this;
    }
    friend constexpr bool operator==(const PointT&, const PointT&) = default;
};

/// Rounds to the nearest integer point (halves away from zero).
inline PointT<int> RoundPoint(const PointT<float>& p) {
    return {static_cast<int>(std::lround(p.x)), static_cast<int>(std::lround(p.y))};
}

} // namespace qorcore
