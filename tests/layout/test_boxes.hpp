#pragma once

#include "layout/placeable.hpp"
#include "layout/tess.hpp"

#include <memory>
#include <string>
#include <utility>

namespace vorlen::testing {

/// A placeable of fixed extents that remembers where it was put.
class box_t : public placeable_t {
public:
    box_t(std::string name, extents_t extents) : name_m(std::move(name)), extents_m(extents) {}

    void measure(extents_t& result) override { result = extents_m; }
    void place(const place_data_t& place) override {
        placed_m = place;
        ++place_count_m;
    }
    std::string type_name() const override { return name_m; }

    const place_data_t& placed() const { return placed_m; }
    int place_count() const { return place_count_m; }

private:
    std::string name_m;
    extents_t extents_m;
    place_data_t placed_m;
    int place_count_m = 0;
};

/// Text that wraps: it covers a fixed area, so its height follows the width it is given.
class wrap_t : public poly_placeable_twopass {
public:
    wrap_t(std::int32_t natural_width, std::int32_t area) : width_m(natural_width), area_m(area) {}

    void measure(extents_t& result) override {
        result.width() = width_m;
        result.height() = height_for(width_m);
    }
    void measure_vertical(extents_t& calculated, const place_data_t& place) override {
        given_width_m = calculated.width();
        given_place_width_m = place.width();
        calculated.height() = height_for(calculated.width());
    }
    void place(const place_data_t& place) override { placed_m = place; }
    std::string type_name() const override { return "wrap"; }

    std::int32_t given_width() const { return given_width_m; }
    std::int32_t given_place_width() const { return given_place_width_m; }
    const place_data_t& placed() const { return placed_m; }

private:
    std::int32_t height_for(std::int32_t width) const {
        return width > 0 ? (area_m + width - 1) / width : area_m;
    }
    std::int32_t width_m;
    std::int32_t area_m;
    std::int32_t given_width_m = -1;
    std::int32_t given_place_width_m = -1;
    place_data_t placed_m;
};

inline extents_t size_of(std::int32_t width, std::int32_t height) {
    extents_t e;
    e.width() = width;
    e.height() = height;
    return e;
}

} // namespace vorlen::testing
