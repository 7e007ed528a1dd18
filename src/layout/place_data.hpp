#pragma once

#include "layout/extents.hpp"

#include <array>
#include <cstdint>

namespace vorlen {

/// Where the solver put an item: per axis its length and its position relative to the parent's
/// near edge (or absolute, when the solve asked for that).
struct place_data_t {
    struct slice_t {
        std::int32_t length = 0;
        std::int32_t position = 0;
        length_pair_t outset{0, 0};
        guide_set_t guide_set;

        friend bool operator==(const slice_t&, const slice_t&) = default;
    };

    slice_t& horizontal() noexcept { return slice[0]; }
    const slice_t& horizontal() const noexcept { return slice[0]; }
    slice_t& vertical() noexcept { return slice[1]; }
    const slice_t& vertical() const noexcept { return slice[1]; }
    std::int32_t left() const noexcept { return slice[0].position; }
    std::int32_t top() const noexcept { return slice[1].position; }
    std::int32_t width() const noexcept { return slice[0].length; }
    std::int32_t height() const noexcept { return slice[1].length; }

    std::array<slice_t, 2> slice;

    friend bool operator==(const place_data_t&, const place_data_t&) = default;
};

} // namespace vorlen
