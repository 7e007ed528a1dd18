#pragma once

#include <algorithm>

namespace qorcore {

/// A colour of four floats from 0 to 1, not premultiplied.
struct ColorRGBA {
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 1.0f;

    constexpr ColorRGBA() = default;
    constexpr ColorRGBA(float r, float g, float b, float a = 1.0f)
        : red(r), green(g), blue(b), alpha(a) {}

    /// From 8-bit channels, as colour pickers and resources give them.
    static constexpr ColorRGBA FromBytes(int r, int g, int b, int a = 255) {
        return {r / 255.0f, g / 255.0f, b / 255.0f, a / 255.0f};
    }

    constexpr ColorRGBA WithAlpha(float a) const { return {red, green, blue, a}; }
    /// Every channel limited to 0..1; NaN becomes 0.
    constexpr ColorRGBA Clamped() const {
        auto c = [](float v) {
            return v >= 0.0f ? std::min(v, 1.0f) : 0.0f;
        };
        return {c(red), c(green), c(blue), c(alpha)};
    }

    friend constexpr bool operator==(const ColorRGBA&, const ColorRGBA&) = default;
};

/// Named colours.
struct ColorRGBAFixed {
    static constexpr ColorRGBA Black{0.0f, 0.0f, 0.0f, 1.0f};
    static constexpr ColorRGBA White{1.0f, 1.0f, 1.0f, 1.0f};
    static constexpr ColorRGBA Red{1.0f, 0.0f, 0.0f, 1.0f};
    static constexpr ColorRGBA Green{0.0f, 1.0f, 0.0f, 1.0f};
    static constexpr ColorRGBA Blue{0.0f, 0.0f, 1.0f, 1.0f};
    static constexpr ColorRGBA Transparent{0.0f, 0.0f, 0.0f, 0.0f};
};

} // namespace qorcore
