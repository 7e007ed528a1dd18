#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace vorlen {

/// Offsets from an item's near edge; ascending.
using guide_set_t = std::vector<std::int32_t>;

/// A pair of lengths at the near (first) and far (second) end of an axis.
using length_pair_t = std::pair<std::int32_t, std::int32_t>;

/// What a placeable reports about itself. Axis 0 is horizontal, axis 1 vertical.
struct extents_t {
    struct slice_t {
        std::int32_t length = 0;
        /// How far visible ink reaches beyond the box.
        length_pair_t outset{0, 0};
        /// A strip inside the box reserved for a frame.
        length_pair_t frame{0, 0};
        /// A further strip inside the frame.
        length_pair_t inset{0, 0};
        /// Label edges for the horizontal slice, baselines for the vertical one.
        guide_set_t guide_set;

        friend bool operator==(const slice_t&, const slice_t&) = default;
    };

    slice_t& horizontal() noexcept { return slice[0]; }
    const slice_t& horizontal() const noexcept { return slice[0]; }
    slice_t& vertical() noexcept { return slice[1]; }
    const slice_t& vertical() const noexcept { return slice[1]; }
    std::int32_t& width() noexcept { return slice[0].length; }
    std::int32_t width() const noexcept { return slice[0].length; }
    std::int32_t& height() noexcept { return slice[1].length; }
    std::int32_t height() const noexcept { return slice[1].length; }

    std::array<slice_t, 2> slice;

    friend bool operator==(const extents_t&, const extents_t&) = default;
};

} // namespace vorlen
