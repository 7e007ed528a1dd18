#pragma once

#include "layout/layout_attributes.hpp"
#include "layout/place_data.hpp"
#include "layout/placeable.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace vorlen {

/// The layout solver. It holds a tree of placeables with their attributes and solves one axis at
/// a time: extents flow up, guides (label edges, baselines) are aligned across the tree, lengths
/// and positions flow down. It runs in two passes because a view's height may depend on its width.
class tess_t {
public:
    /// A handle to a node; the default one stands for "no node" (the parent of the root).
    class iterator {
    public:
        iterator() = default;
        explicit operator bool() const noexcept { return index_m != npos; }
        friend bool operator==(iterator, iterator) = default;

    private:
        friend class tess_t;
        static constexpr std::size_t npos = static_cast<std::size_t>(-1);
        explicit iterator(std::size_t index) : index_m(index) {}
        std::size_t index_m = npos;
    };

    tess_t();
    tess_t(tess_t&&) noexcept;
    tess_t& operator=(tess_t&&) noexcept;
    ~tess_t();

    /// Appends a node under `parent` (the default iterator for the root, of which there is one).
    /// A container arranges its children by `attributes.placement`.
    iterator add_placeable(iterator parent, const layout_attributes_t& attributes,
                           bool is_container, std::shared_ptr<placeable_t> placeable);

    /// Solves and places the tree. A width or height of 0 asks for the natural length. With
    /// `absolute` every position is relative to the root; otherwise a created container keeps its
    /// children's positions relative to itself. Returns the root's width and height.
    /// Throws `std::logic_error` when a reversed item stands before a forward one.
    std::pair<std::int32_t, std::int32_t> evaluate(bool absolute, std::int32_t width = 0,
                                                   std::int32_t height = 0);

    /// Invisible nodes and their subtrees take no part in the solve.
    void set_visible(iterator node, bool visible);
    bool visible(iterator node) const;

    const place_data_t& place_data(iterator node) const;
    const layout_attributes_t& attributes(iterator node) const;
    layout_attributes_t& attributes(iterator node);
    const std::shared_ptr<placeable_t>& placeable(iterator node) const;

    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }
    void clear();

    /// Rounds of the guide loop in the last evaluate, per axis; at most the visible node count
    /// plus one, which bounds a solve that does not settle.
    std::pair<std::size_t, std::size_t> guide_rounds() const noexcept;

    /// One line per visible node, children indented by four blanks per depth:
    /// "name(left: x, top: y, width: w, height: h, horizontal: a, vertical: a, placement: p);"
    /// for a leaf, " {" ... "}" around a container's children. With `guides`, each line adds
    /// ", guides: [g, ...], baselines: [b, ...]" before its ")": the guide sets the item exports
    /// on the horizontal and the vertical axis.
    std::string report(bool guides = false) const;

    struct implementation_t;

private:
    std::unique_ptr<implementation_t> object_m;
};

} // namespace vorlen
