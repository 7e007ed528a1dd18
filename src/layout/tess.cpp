#include "layout/tess.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace vorlen {

namespace {

constexpr std::size_t no_node = static_cast<std::size_t>(-1);

bool is_forward(alignment_t a) noexcept {
    return a == alignment_t::forward || a == alignment_t::forward_fill;
}
bool is_reverse(alignment_t a) noexcept {
    return a == alignment_t::reverse || a == alignment_t::reverse_fill;
}
bool is_centered(alignment_t a) noexcept {
    return a == alignment_t::center || a == alignment_t::proportional;
}
// A filled item reaches both ends, so it takes part in the guides of both.
bool lays_forward(alignment_t a) noexcept {
    return is_forward(a) || a == alignment_t::reverse_fill;
}
bool lays_reverse(alignment_t a) noexcept {
    return is_reverse(a) || a == alignment_t::forward_fill;
}
bool takes_share(alignment_t a) noexcept {
    return is_centered(a) || a == alignment_t::forward_fill || a == alignment_t::reverse_fill;
}
bool is_solvable(alignment_t a) noexcept {
    return static_cast<std::int32_t>(a) >= 0 &&
           static_cast<std::int32_t>(a) <= static_cast<std::int32_t>(alignment_t::reverse_fill);
}

/// The axis along which a container lines its children up; -1 when it has none.
int major_axis(placement_t placement) noexcept {
    switch (placement) {
    case placement_t::row: return 0;
    case placement_t::column: return 1;
    default: return -1;
    }
}

/// Sums run in 64 bits and are stored clamped to +-2^30, so that a guide loop that does not
/// settle, or absurd lengths in a script, give odd places rather than overflow.
using wide_t = std::int64_t;
constexpr wide_t length_limit = wide_t(1) << 30;

std::int32_t narrow(wide_t x) noexcept {
    return static_cast<std::int32_t>(std::clamp(x, -length_limit, length_limit));
}

std::int32_t spacing_entry(const std::vector<std::int32_t>& spacing, std::size_t index) {
    if (spacing.empty())
        return 0;
    return spacing[std::min(index, spacing.size() - 1)];
}

/// Reverse guides count from the far edge, in the opposite order to the near-edge form.
guide_set_t flip_guides(const guide_set_t& guides, std::int32_t length) {
    guide_set_t result(guides.rbegin(), guides.rend());
    for (std::int32_t& g : result)
        g = length - g;
    return result;
}

} // namespace

struct tess_t::implementation_t {
    struct view_proxy_t {
        std::shared_ptr<placeable_t> placeable;
        poly_placeable_twopass* twopass = nullptr;
        bool visible = true;
        layout_attributes_t attributes;
        place_data_t place;
        std::int32_t spacing = 0; // the gap before this item, set by its parent
        std::array<std::int32_t, 2> minimum{0, 0};
        std::array<std::int32_t, 2> children_length{0, 0};
        std::array<guide_set_t, 2> forward;
        std::array<guide_set_t, 2> reverse;

        bool container = false;
        std::size_t parent = no_node;
        std::vector<std::size_t> children;
        std::vector<std::size_t> shown; // the visible children, refreshed by each solve
    };

    std::vector<view_proxy_t> nodes;
    std::size_t node_count = 0;     // visible nodes; 0 means "count again"
    std::vector<std::size_t> order; // visible nodes in pre-order
    std::array<std::size_t, 2> rounds{0, 0};

    view_proxy_t& node(iterator i) {
        if (i.index_m >= nodes.size())
            throw std::out_of_range("tess_t: no such node");
        return nodes[i.index_m];
    }

    void collect();
    void measure();
    void solve_axis(int a, std::int32_t length, bool absolute);
    void prepare(view_proxy_t& c, int a);
    void gather(view_proxy_t& c, int a);
    void gather_minor(view_proxy_t& c, int a);
    void gather_major(view_proxy_t& c, int a);
    bool push_down(view_proxy_t& c, int a);
    bool push_down_minor(view_proxy_t& c, int a);
    bool push_down_major(view_proxy_t& c, int a);
    void distribute(view_proxy_t& c, int a);
    void layout_minor(view_proxy_t& c, int a);
    void layout_major(view_proxy_t& c, int a);
    void outset(view_proxy_t& c, int a);
    void finish(view_proxy_t& c, int a, bool absolute);
    void measure_vertical();
};

void tess_t::implementation_t::collect() {
    order.clear();
    if (nodes.empty() || !nodes[0].visible) {
        node_count = 0;
        return;
    }
    // An explicit stack: the depth of a tree comes from script input.
    std::vector<std::size_t> stack{0};
    while (!stack.empty()) {
        std::size_t i = stack.back();
        stack.pop_back();
        order.push_back(i);
        view_proxy_t& n = nodes[i];
        n.shown.clear();
        for (std::size_t child : n.children)
            if (nodes[child].visible)
                n.shown.push_back(child);
        stack.insert(stack.end(), n.shown.rbegin(), n.shown.rend());
    }
    node_count = order.size();
}

void tess_t::implementation_t::measure() {
    for (auto i = order.rbegin(); i != order.rend(); ++i) {
        view_proxy_t& n = nodes[*i];
        extents_t extents;
        n.placeable->measure(extents);
        for (int a = 0; a != 2; ++a) {
            place_data_t::slice_t& p = n.place.slice[a];
            p.length = extents.slice[a].length;
            p.position = 0;
            p.outset = extents.slice[a].outset;
            p.guide_set = extents.slice[a].guide_set;
        }
        n.minimum[0] = extents.slice[0].length;
        static_cast<extents_t&>(n.attributes) = std::move(extents);
    }
    // The root has no parent to resolve a default alignment against.
    for (layout_attributes_t::axis_t& axis : nodes[order.front()].attributes.axis)
        if (!is_solvable(axis.alignment))
            axis.alignment = alignment_t::forward;
}

void tess_t::implementation_t::measure_vertical() {
    for (std::size_t i : order) {
        view_proxy_t& n = nodes[i];
        if (n.twopass) {
            extents_t calculated = n.attributes;
            calculated.slice[0].length = n.place.slice[0].length;
            n.twopass->measure_vertical(calculated, n.place);
            n.attributes.slice[1] = std::move(calculated.slice[1]);
        }
        const extents_t::slice_t& v = n.attributes.slice[1];
        place_data_t::slice_t& p = n.place.slice[1];
        p.length = v.length;
        p.position = 0;
        p.outset = v.outset;
        p.guide_set = v.guide_set;
        n.minimum[1] = v.length;
    }
}

void tess_t::implementation_t::solve_axis(int a, std::int32_t length, bool absolute) {
    for (auto i = order.rbegin(); i != order.rend(); ++i)
        if (nodes[*i].container)
            prepare(nodes[*i], a);

    for (auto i = order.rbegin(); i != order.rend(); ++i)
        if (nodes[*i].container)
            gather(nodes[*i], a);
    // Push down and gather only ever raise guides, but nothing proves they settle: bound it.
    std::size_t round = 0;
    while (round != node_count + 1) {
        ++round;
        bool changed = false;
        for (std::size_t i : order)
            if (nodes[i].container)
                changed |= push_down(nodes[i], a);
        for (auto i = order.rbegin(); i != order.rend(); ++i)
            if (nodes[*i].container)
                gather(nodes[*i], a);
        if (!changed)
            break;
    }
    rounds[a] = round;

    view_proxy_t& root = nodes[order.front()];
    root.place.slice[a].length = length != 0 ? length : root.minimum[a];
    root.place.slice[a].position = 0;
    for (std::size_t i : order)
        if (nodes[i].container)
            distribute(nodes[i], a);
    for (auto i = order.rbegin(); i != order.rend(); ++i)
        outset(nodes[*i], a);
    for (std::size_t i : order)
        if (nodes[i].container)
            finish(nodes[i], a, absolute);
}

void tess_t::implementation_t::prepare(view_proxy_t& c, int a) {
    alignment_t child_default = c.attributes.axis[a].child_alignment;
    if (!is_solvable(child_default))
        child_default = alignment_t::forward;
    const bool on_major = major_axis(c.attributes.placement) == a;

    std::size_t forward_count = 0;
    std::size_t reverse_count = 0;
    for (std::size_t k = 0; k != c.shown.size(); ++k) {
        view_proxy_t& child = nodes[c.shown[k]];
        layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        if (axis.alignment == alignment_t::default_)
            axis.alignment = child_default;
        if (!is_solvable(axis.alignment))
            axis.alignment = alignment_t::forward;
        const alignment_t alignment = axis.alignment;

        if (!child.container) {
            const extents_t::slice_t& slice = child.attributes.slice[a];
            child.forward[a].clear();
            child.reverse[a].clear();
            if (is_forward(alignment))
                child.forward[a] = slice.guide_set;
            else if (is_reverse(alignment))
                child.reverse[a] = flip_guides(slice.guide_set, slice.length);
        }
        if (is_centered(alignment))
            axis.suppress = true;
        child.spacing = on_major ? spacing_entry(c.attributes.spacing, k) : 0;
        if (axis.suppress)
            continue;

        auto count = [on_major](std::size_t& total, std::size_t size) {
            total = on_major ? total + size : std::max(total, size);
        };
        if (is_forward(alignment))
            count(forward_count, child.forward[a].size());
        if (is_reverse(alignment))
            count(reverse_count, child.reverse[a].size());
    }
    c.forward[a].assign(forward_count, 0);
    c.reverse[a].assign(reverse_count, 0);
}

void tess_t::implementation_t::gather(view_proxy_t& c, int a) {
    if (major_axis(c.attributes.placement) == a)
        gather_major(c, a);
    else
        gather_minor(c, a);
}

void tess_t::implementation_t::gather_minor(view_proxy_t& c, int a) {
    const wide_t near =
        wide_t(c.attributes.slice[a].frame.first) + c.attributes.axis[a].margin.first;
    const wide_t far =
        wide_t(c.attributes.slice[a].frame.second) + c.attributes.axis[a].margin.second;
    guide_set_t& forward = c.forward[a];
    guide_set_t& reverse = c.reverse[a];

    for (std::size_t i : c.shown) {
        const view_proxy_t& child = nodes[i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        if (axis.suppress)
            continue;
        const wide_t n = near + (is_forward(axis.alignment) ? child.attributes.indent : 0);
        const wide_t f = far + (is_reverse(axis.alignment) ? child.attributes.indent : 0);
        if (lays_forward(axis.alignment)) {
            const std::size_t count = std::min(forward.size(), child.forward[a].size());
            for (std::size_t g = 0; g != count; ++g)
                forward[g] = narrow(std::max<wide_t>(forward[g], child.forward[a][g] + n));
        }
        if (lays_reverse(axis.alignment)) {
            const std::size_t count = std::min(reverse.size(), child.reverse[a].size());
            for (std::size_t g = 0; g != count; ++g)
                reverse[g] = narrow(std::max<wide_t>(reverse[g], child.reverse[a][g] + f));
        }
    }

    wide_t length = near + far;
    for (std::size_t i : c.shown) {
        const view_proxy_t& child = nodes[i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        wide_t n = near + (is_forward(axis.alignment) ? child.attributes.indent : 0);
        wide_t f = far + (is_reverse(axis.alignment) ? child.attributes.indent : 0);
        if (!child.container && !axis.suppress) {
            if (!child.forward[a].empty() && !forward.empty())
                n = forward[0] - child.forward[a][0];
            if (!child.reverse[a].empty() && !reverse.empty())
                f = reverse[0] - child.reverse[a][0];
        }
        length = std::max<wide_t>(length, wide_t(child.minimum[a]) + n + f);
    }
    c.children_length[a] = narrow(length);
    c.minimum[a] = narrow(std::max<wide_t>(c.minimum[a], length));
}

void tess_t::implementation_t::gather_major(view_proxy_t& c, int a) {
    const wide_t near =
        wide_t(c.attributes.slice[a].frame.first) + c.attributes.axis[a].margin.first;
    const wide_t far =
        wide_t(c.attributes.slice[a].frame.second) + c.attributes.axis[a].margin.second;
    guide_set_t& forward = c.forward[a];
    guide_set_t& reverse = c.reverse[a];

    // From the far end: reverse guides count as distances from the container's far edge. A leaf
    // that meets a guide further out moves away from the edge; the gap counts in `extra`.
    wide_t running = far;
    wide_t extra = 0;
    std::size_t entry = 0;
    for (auto i = c.shown.rbegin(); i != c.shown.rend(); ++i) {
        const view_proxy_t& child = nodes[*i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        if (!axis.suppress && lays_reverse(axis.alignment)) {
            const guide_set_t& guides = child.reverse[a];
            for (std::size_t g = 0; g != guides.size() && entry != reverse.size(); ++g, ++entry) {
                reverse[entry] = narrow(std::max<wide_t>(reverse[entry], guides[g] + running));
                if (g == 0 && !child.container) {
                    const wide_t moved = reverse[entry] - guides[0];
                    extra += moved - running;
                    running = moved;
                }
            }
        }
        running += wide_t(child.spacing) + child.minimum[a];
    }

    running = near;
    entry = 0;
    for (std::size_t i : c.shown) {
        const view_proxy_t& child = nodes[i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        running += child.spacing;
        if (!axis.suppress && lays_forward(axis.alignment)) {
            const guide_set_t& guides = child.forward[a];
            for (std::size_t g = 0; g != guides.size() && entry != forward.size(); ++g, ++entry) {
                forward[entry] = narrow(std::max<wide_t>(forward[entry], guides[g] + running));
                if (g == 0 && !child.container)
                    running = forward[entry] - guides[0];
            }
        }
        running += child.minimum[a];
    }

    if (c.attributes.balance && forward.size() > 2) {
        wide_t gap = 0;
        for (std::size_t g = 1; g != forward.size(); ++g)
            gap = std::max<wide_t>(gap, wide_t(forward[g]) - forward[g - 1]);
        for (std::size_t g = 1; g != forward.size(); ++g)
            forward[g] = narrow(forward[0] + static_cast<wide_t>(g) * gap);
    }

    const wide_t length = running + extra + far;
    c.children_length[a] = narrow(length);
    c.minimum[a] = narrow(std::max<wide_t>(c.minimum[a], length));
}

bool tess_t::implementation_t::push_down(view_proxy_t& c, int a) {
    return major_axis(c.attributes.placement) == a ? push_down_major(c, a) : push_down_minor(c, a);
}

namespace {

/// Gives a child its part of the container's guides: entries `first`... of `from` become the
/// child's guides in its own coordinates, the child's near (or far) edge lying at `offset`.
/// A leaf's own first guide has placed it already, so it is left alone.
bool push_guides(const guide_set_t& from, std::size_t first, guide_set_t& to, wide_t offset,
                 bool skip_first) {
    bool changed = false;
    for (std::size_t g = skip_first ? 1 : 0; g < to.size() && first + g < from.size(); ++g) {
        const std::int32_t value = narrow(from[first + g] - offset);
        if (to[g] != value) {
            to[g] = value;
            changed = true;
        }
    }
    return changed;
}

} // namespace

bool tess_t::implementation_t::push_down_minor(view_proxy_t& c, int a) {
    const wide_t near =
        wide_t(c.attributes.slice[a].frame.first) + c.attributes.axis[a].margin.first;
    const wide_t far =
        wide_t(c.attributes.slice[a].frame.second) + c.attributes.axis[a].margin.second;
    const guide_set_t& forward = c.forward[a];
    const guide_set_t& reverse = c.reverse[a];
    bool changed = false;

    for (std::size_t i : c.shown) {
        view_proxy_t& child = nodes[i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        if (axis.suppress)
            continue;
        wide_t n = near + (is_forward(axis.alignment) ? child.attributes.indent : 0);
        wide_t f = far + (is_reverse(axis.alignment) ? child.attributes.indent : 0);
        if (lays_forward(axis.alignment) && !child.forward[a].empty() && !forward.empty()) {
            if (!child.container)
                n = forward[0] - child.forward[a][0];
            changed |= push_guides(forward, 0, child.forward[a], n, !child.container);
        }
        if (lays_reverse(axis.alignment) && !child.reverse[a].empty() && !reverse.empty()) {
            if (!child.container)
                f = reverse[0] - child.reverse[a][0];
            changed |= push_guides(reverse, 0, child.reverse[a], f, !child.container);
        }
    }
    return changed;
}

bool tess_t::implementation_t::push_down_major(view_proxy_t& c, int a) {
    const wide_t near =
        wide_t(c.attributes.slice[a].frame.first) + c.attributes.axis[a].margin.first;
    const wide_t far =
        wide_t(c.attributes.slice[a].frame.second) + c.attributes.axis[a].margin.second;
    const guide_set_t& forward = c.forward[a];
    const guide_set_t& reverse = c.reverse[a];

    // The running distances follow those of gather_major exactly, or the two would never agree.
    wide_t running = far;
    std::size_t entry = 0;
    for (auto i = c.shown.rbegin(); i != c.shown.rend(); ++i) {
        view_proxy_t& child = nodes[*i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        guide_set_t& guides = child.reverse[a];
        if (!axis.suppress && lays_reverse(axis.alignment) && !guides.empty() &&
            entry < reverse.size()) {
            if (!child.container)
                running = reverse[entry] - guides[0];
            if (push_guides(reverse, entry, guides, running, !child.container))
                return true;
            entry += guides.size();
        }
        running += wide_t(child.spacing) + child.minimum[a];
    }

    running = near;
    entry = 0;
    for (std::size_t i : c.shown) {
        view_proxy_t& child = nodes[i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        guide_set_t& guides = child.forward[a];
        running += child.spacing;
        if (!axis.suppress && lays_forward(axis.alignment) && !guides.empty() &&
            entry < forward.size()) {
            if (!child.container)
                running = forward[entry] - guides[0];
            if (push_guides(forward, entry, guides, running, !child.container))
                return true;
            entry += guides.size();
        }
        running += child.minimum[a];
    }
    return false;
}

void tess_t::implementation_t::distribute(view_proxy_t& c, int a) {
    if (major_axis(c.attributes.placement) == a)
        layout_major(c, a);
    else
        layout_minor(c, a);
}

void tess_t::implementation_t::layout_minor(view_proxy_t& c, int a) {
    const wide_t length = c.place.slice[a].length;
    const wide_t near =
        wide_t(c.attributes.slice[a].frame.first) + c.attributes.axis[a].margin.first;
    const wide_t far =
        length - c.attributes.slice[a].frame.second - c.attributes.axis[a].margin.second;
    const guide_set_t& forward = c.forward[a];
    const guide_set_t& reverse = c.reverse[a];

    for (std::size_t i : c.shown) {
        view_proxy_t& child = nodes[i];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        place_data_t::slice_t& place = child.place.slice[a];
        const wide_t minimum = child.minimum[a];
        const bool guided = !child.container && !axis.suppress;
        if (axis.alignment != alignment_t::forward_fill)
            place.length = narrow(minimum);

        wide_t n = near;
        wide_t f = far;
        if (is_forward(axis.alignment)) {
            n += child.attributes.indent;
            if (guided && !child.forward[a].empty() && !forward.empty())
                n = forward[0] - child.forward[a][0];
            if (axis.alignment == alignment_t::forward_fill)
                place.length = narrow(f - n);
            place.position = narrow(n);
        } else if (is_reverse(axis.alignment)) {
            f -= child.attributes.indent;
            if (guided && !child.reverse[a].empty() && !reverse.empty())
                f = length - reverse[0] + child.reverse[a][0];
            // A filled reversed item takes the whole length but keeps the position of its
            // minimum; scripts rely on it as it stands.
            if (axis.alignment == alignment_t::reverse_fill)
                place.length = narrow(f - n);
            place.position = narrow(f - minimum);
        } else {
            place.position = narrow((n + f - minimum) / 2);
        }
    }
}

void tess_t::implementation_t::layout_major(view_proxy_t& c, int a) {
    const wide_t length = c.place.slice[a].length;
    const extents_t::slice_t& slice = c.attributes.slice[a];
    const length_pair_t& margin = c.attributes.axis[a].margin;
    const guide_set_t& forward = c.forward[a];
    const guide_set_t& reverse = c.reverse[a];

    wide_t count = 0;
    for (std::size_t i : c.shown)
        if (takes_share(nodes[i].attributes.axis[a].alignment))
            ++count;
    wide_t extra = length - c.children_length[a];
    auto take_share = [&count, &extra]() {
        const wide_t share = count > 0 ? extra / count : 0;
        --count;
        extra -= share;
        return share;
    };
    wide_t far = length - margin.second - slice.frame.second;
    const wide_t inner =
        length - margin.first - margin.second - slice.frame.first - slice.frame.second;

    // The trailing reversed items, from the far end.
    std::size_t end = c.shown.size();
    std::size_t entry = 0;
    while (end != 0 && is_reverse(nodes[c.shown[end - 1]].attributes.axis[a].alignment)) {
        view_proxy_t& child = nodes[c.shown[--end]];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        place_data_t::slice_t& place = child.place.slice[a];
        const guide_set_t& guides = child.reverse[a];
        place.length = child.minimum[a];
        if (!axis.suppress && !guides.empty()) {
            // The guide lies reverse[entry] from the far edge; the leaf's far edge follows it.
            if (!child.container && entry < reverse.size())
                far = length - reverse[entry] + guides[0];
            entry += guides.size();
        }
        if (axis.alignment == alignment_t::reverse_fill)
            place.length = narrow(place.length + take_share());
        place.position = narrow(far - place.length);
        far -= wide_t(child.spacing) + place.length;
    }

    wide_t running = wide_t(slice.frame.first) + margin.first;
    const wide_t left = running;
    entry = 0;
    for (std::size_t k = 0; k != end; ++k) {
        view_proxy_t& child = nodes[c.shown[k]];
        const layout_attributes_t::axis_t& axis = child.attributes.axis[a];
        place_data_t::slice_t& place = child.place.slice[a];
        const wide_t minimum = child.minimum[a];
        wide_t at = running + child.spacing;
        if (axis.alignment != alignment_t::forward_fill)
            place.length = narrow(minimum);
        const wide_t share = takes_share(axis.alignment) ? take_share() : 0;

        switch (axis.alignment) {
        case alignment_t::forward:
        case alignment_t::forward_fill: {
            const guide_set_t& guides = child.forward[a];
            if (!axis.suppress && !guides.empty()) {
                if (!child.container && entry < forward.size())
                    at = forward[entry] - guides[0];
                entry += guides.size();
            }
            if (axis.alignment == alignment_t::forward_fill)
                place.length = narrow(minimum + share);
            place.position = narrow(at);
            break;
        }
        case alignment_t::reverse:
        case alignment_t::reverse_fill:
            throw std::logic_error("Right align item before other item.");
        case alignment_t::center:
            place.position = narrow(share / 2 + at);
            at += share;
            break;
        case alignment_t::proportional: {
            // The item keeps the same fraction of its share as it has of the free length before it.
            const double free = static_cast<double>(inner - minimum - share);
            double offset =
                free > 0
                    ? std::floor(
                          static_cast<double>(at - left) / free * static_cast<double>(share) + 0.5)
                    : 0.0;
            offset = std::clamp(offset, std::min(0.0, static_cast<double>(share)),
                                std::max(0.0, static_cast<double>(share)));
            place.position = narrow(static_cast<wide_t>(offset) + at);
            at += share;
            break;
        }
        default: place.position = narrow(at); break;
        }
        running = at + place.length;
    }
}

void tess_t::implementation_t::outset(view_proxy_t& c, int a) {
    place_data_t::slice_t& place = c.place.slice[a];
    if (!c.container || c.shown.empty()) {
        place.outset = c.attributes.slice[a].outset;
        return;
    }
    const wide_t length = place.length;
    if (major_axis(c.attributes.placement) == a) {
        const place_data_t::slice_t& first = nodes[c.shown.front()].place.slice[a];
        const place_data_t::slice_t& last = nodes[c.shown.back()].place.slice[a];
        place.outset.first = narrow(
            std::max<wide_t>(place.outset.first, wide_t(first.outset.first) - first.position));
        place.outset.second = narrow(std::max<wide_t>(
            place.outset.second, last.outset.second - (length - last.position - last.length)));
    } else {
        wide_t n = c.attributes.slice[a].frame.first;
        wide_t f = c.attributes.slice[a].frame.second;
        for (std::size_t i : c.shown) {
            const place_data_t::slice_t& child = nodes[i].place.slice[a];
            n = std::min<wide_t>(n, wide_t(child.position) - child.outset.first);
            f = std::min<wide_t>(f, length - child.outset.second - child.length - child.position);
        }
        place.outset.first = narrow(std::max<wide_t>(place.outset.first, -n));
        place.outset.second = narrow(std::max<wide_t>(place.outset.second, -f));
    }
}

void tess_t::implementation_t::finish(view_proxy_t& c, int a, bool absolute) {
    place_data_t::slice_t& place = c.place.slice[a];
    const alignment_t alignment = c.attributes.axis[a].alignment;
    if (is_forward(alignment))
        place.guide_set = c.forward[a];
    else if (is_reverse(alignment))
        place.guide_set = flip_guides(c.reverse[a], place.length);
    if (absolute || !c.attributes.create)
        for (std::size_t i : c.shown)
            nodes[i].place.slice[a].position =
                narrow(wide_t(nodes[i].place.slice[a].position) + place.position);
}

tess_t::tess_t() : object_m(std::make_unique<implementation_t>()) {}
tess_t::tess_t(tess_t&&) noexcept = default;
tess_t& tess_t::operator=(tess_t&&) noexcept = default;
tess_t::~tess_t() = default;

tess_t::iterator tess_t::add_placeable(iterator parent, const layout_attributes_t& attributes,
                                       bool is_container, std::shared_ptr<placeable_t> placeable) {
    if (!placeable)
        throw std::invalid_argument("tess_t: a node needs a placeable");
    std::vector<implementation_t::view_proxy_t>& nodes = object_m->nodes;
    if (!parent) {
        if (!nodes.empty())
            throw std::logic_error("tess_t: a layout has exactly one root");
    } else {
        if (!object_m->node(parent).container)
            throw std::logic_error("tess_t: only a container takes children");
    }
    implementation_t::view_proxy_t proxy;
    proxy.twopass = dynamic_cast<poly_placeable_twopass*>(placeable.get());
    proxy.placeable = std::move(placeable);
    proxy.attributes = attributes;
    proxy.container = is_container;
    proxy.parent = parent ? parent.index_m : no_node;
    const std::size_t index = nodes.size();
    nodes.push_back(std::move(proxy));
    if (parent)
        nodes[parent.index_m].children.push_back(index);
    object_m->node_count = 0;
    return iterator(index);
}

std::pair<std::int32_t, std::int32_t> tess_t::evaluate(bool absolute, std::int32_t width,
                                                       std::int32_t height) {
    implementation_t& self = *object_m;
    self.collect();
    self.rounds = {0, 0};
    if (self.order.empty())
        return {0, 0};

    self.measure();
    self.solve_axis(0, width, absolute);
    self.measure_vertical();
    self.solve_axis(1, height, absolute);
    for (std::size_t i : self.order)
        self.nodes[i].placeable->place(self.nodes[i].place);

    const place_data_t& root = self.nodes[self.order.front()].place;
    return {root.width(), root.height()};
}

void tess_t::set_visible(iterator node, bool visible) {
    object_m->node(node).visible = visible;
    object_m->node_count = 0;
}

bool tess_t::visible(iterator node) const {
    return object_m->node(node).visible;
}

const place_data_t& tess_t::place_data(iterator node) const {
    return object_m->node(node).place;
}

const layout_attributes_t& tess_t::attributes(iterator node) const {
    return object_m->node(node).attributes;
}

layout_attributes_t& tess_t::attributes(iterator node) {
    return object_m->node(node).attributes;
}

const std::shared_ptr<placeable_t>& tess_t::placeable(iterator node) const {
    return object_m->node(node).placeable;
}

std::size_t tess_t::size() const noexcept {
    return object_m->nodes.size();
}

void tess_t::clear() {
    *object_m = implementation_t();
}

std::pair<std::size_t, std::size_t> tess_t::guide_rounds() const noexcept {
    return {object_m->rounds[0], object_m->rounds[1]};
}

namespace {

std::string guide_set_text(const guide_set_t& guides) {
    std::string out = "[";
    for (std::size_t i = 0; i < guides.size(); ++i) {
        if (i != 0)
            out += ", ";
        out += std::to_string(guides[i]);
    }
    return out + "]";
}

} // namespace

std::string tess_t::report(bool guides) const {
    const std::vector<implementation_t::view_proxy_t>& nodes = object_m->nodes;
    std::string out;
    if (nodes.empty() || !nodes[0].visible)
        return out;

    // (node, depth, closing): a container's closing brace is a stack entry of its own.
    struct visit_t {
        std::size_t node;
        std::size_t depth;
        bool closing;
    };
    std::vector<visit_t> stack{{0, 0, false}};
    while (!stack.empty()) {
        const visit_t visit = stack.back();
        stack.pop_back();
        const implementation_t::view_proxy_t& n = nodes[visit.node];
        out.append(visit.depth * 4, ' ');
        if (visit.closing) {
            out += "}\n";
            continue;
        }
        const place_data_t& p = n.place;
        const layout_attributes_t& at = n.attributes;
        out += n.placeable->type_name();
        out += "(left: " + std::to_string(p.left());
        out += ", top: " + std::to_string(p.top());
        out += ", width: " + std::to_string(p.width());
        out += ", height: " + std::to_string(p.height());
        out += ", horizontal: ";
        out += alignment_text(at.axis[0].alignment);
        out += ", vertical: ";
        out += alignment_text(at.axis[1].alignment);
        out += ", placement: ";
        out += placement_text(at.placement);
        if (guides) {
            out += ", guides: ";
            out += guide_set_text(p.horizontal().guide_set);
            out += ", baselines: ";
            out += guide_set_text(p.vertical().guide_set);
        }
        out += ")";
        if (!n.container) {
            out += ";\n";
            continue;
        }
        out += " {\n";
        stack.push_back({visit.node, visit.depth, true});
        for (auto child = n.children.rbegin(); child != n.children.rend(); ++child)
            if (nodes[*child].visible)
                stack.push_back({*child, visit.depth + 1, false});
    }
    return out;
}

} // namespace vorlen
