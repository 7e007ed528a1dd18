#include "layout/layout_attributes.hpp"

namespace vorlen {

const char* alignment_text(alignment_t alignment) noexcept {
    switch (alignment) {
    case alignment_t::forward: return "forward";
    case alignment_t::reverse: return "reverse";
    case alignment_t::center: return "center";
    case alignment_t::proportional: return "proportional";
    case alignment_t::forward_fill: return "forward_fill";
    case alignment_t::reverse_fill: return "reverse_fill";
    case alignment_t::default_: return "default";
    }
    return "invalid";
}

const char* placement_text(placement_t placement) noexcept {
    switch (placement) {
    case placement_t::leaf: return "leaf";
    case placement_t::column: return "column";
    case placement_t::row: return "row";
    case placement_t::overlay: return "overlay";
    }
    return "invalid";
}

} // namespace vorlen
