#pragma once

#include "layout/extents.hpp"
#include "layout/place_data.hpp"

#include <string>

namespace vorlen {

/// What the layout solver sees of a widget: it reports its extents, then accepts its place.
class placeable_t {
public:
    virtual ~placeable_t() = default;

    /// First pass: fill `result`, which arrives zeroed.
    virtual void measure(extents_t& result) = 0;
    /// The final place, once both axes are solved.
    virtual void place(const place_data_t& place) = 0;

    /// The name that a report of a placed tree shows for this item; the class name by default.
    virtual std::string type_name() const;
};

/// A placeable whose height depends on its width (wrapped text, for one): after the horizontal
/// solve it is asked again for its vertical slice.
class poly_placeable_twopass : public placeable_t {
public:
    /// `calculated_horizontal` holds the first-pass extents with the solved width; update its
    /// vertical slice. `place` holds the solved horizontal slice.
    virtual void measure_vertical(extents_t& calculated_horizontal, const place_data_t& place) = 0;
};

} // namespace vorlen
