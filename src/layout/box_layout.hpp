#pragma once

#include "layout/layout_reader.hpp"
#include "layout/tess.hpp"

#include <cstdint>
#include <string>
#include <utility>

namespace vorlen {

/// A layout description solved without widgets: every widget is a box whose natural size is
/// its `width` and `height` arguments (0 when absent), named after the widget in reports, and
/// whose guides are its `guides` (horizontal: label edges) and `baselines` (vertical) arguments,
/// arrays of offsets from its near edge. It shows what the solver makes of a script, for the
/// command line, tests and benchmarks.
class box_layout_t {
public:
    /// Throws `stream_error_t` at the widget whose layout arguments are wrong.
    explicit box_layout_t(const widget_description_t& view);

    /// Solves with every position relative to the root; 0 asks for the natural length.
    std::pair<std::int32_t, std::int32_t> solve(std::int32_t width = 0, std::int32_t height = 0) {
        return tess_m.evaluate(true, width, height);
    }
    std::string report(bool guides = false) const { return tess_m.report(guides); }
    tess_t& tess() noexcept { return tess_m; }

private:
    void add(tess_t::iterator parent, const widget_description_t& widget);

    tess_t tess_m;
};

} // namespace vorlen
