// The layout solver on trees of mixed rows and columns whose labels and baselines align.

#include "layout/tess.hpp"

#include <benchmark/benchmark.h>

#include <memory>
#include <utility>

namespace {

using namespace vorlen;

class box_t : public placeable_t {
public:
    explicit box_t(extents_t extents) : extents_m(std::move(extents)) {}
    void measure(extents_t& result) override { result = extents_m; }
    void place(const place_data_t& place) override { benchmark::DoNotOptimize(place.left()); }

private:
    extents_t extents_m;
};

extents_t box(std::int32_t width, std::int32_t height, guide_set_t label = {},
              guide_set_t baseline = {}) {
    extents_t e;
    e.width() = width;
    e.height() = height;
    e.horizontal().guide_set = std::move(label);
    e.vertical().guide_set = std::move(baseline);
    return e;
}

layout_attributes_t container(placement_t placement,
                              alignment_t horizontal = alignment_t::default_) {
    layout_attributes_t a;
    a.placement = placement;
    a.create = false;
    a.spacing = {0, 4};
    a.axis[0].alignment = horizontal;
    return a;
}

layout_attributes_t aligned(alignment_t horizontal) {
    layout_attributes_t a;
    a.axis[0].alignment = horizontal;
    return a;
}

/// A root column of `units` labelled blocks of ten widgets each:
///
///     row { label, column { row { field, button (reversed) }, row { field, field (filled) } },
///           knob }
///
/// so labels align down the root column and fields and baselines across each block.
tess_t make_tree(int units) {
    tess_t tess;
    auto add = [&tess](tess_t::iterator parent, const layout_attributes_t& attributes,
                       bool is_container, extents_t extents) {
        return tess.add_placeable(parent, attributes, is_container,
                                  std::make_shared<box_t>(std::move(extents)));
    };
    layout_attributes_t root = container(placement_t::column);
    root.axis[0].margin = {8, 8};
    root.axis[1].margin = {8, 8};
    const tess_t::iterator column = add(tess_t::iterator(), root, true, extents_t());
    for (int i = 0; i != units; ++i) {
        const std::int32_t label = 30 + (i * 7) % 40;
        const tess_t::iterator block = add(column, container(placement_t::row), true, extents_t());
        add(block, {}, false, box(label, 14, {label}, {11}));
        const tess_t::iterator inner = add(block, container(placement_t::column), true, {});
        const tess_t::iterator first =
            add(inner, container(placement_t::row, alignment_t::forward_fill), true, {});
        add(first, {}, false, box(60, 20, {12 + i % 9}, {14}));
        add(first, aligned(alignment_t::reverse), false, box(24, 20, {}, {14}));
        const tess_t::iterator second = add(inner, container(placement_t::row), true, {});
        add(second, {}, false, box(60, 20, {12 + i % 5}, {14}));
        add(second, aligned(alignment_t::forward_fill), false, box(40 + i % 13, 18, {}, {13}));
        add(block, {}, false, box(32, 32 + i % 3, {}, {20}));
    }
    return tess;
}

void BM_SolveLayout(benchmark::State& state) {
    tess_t tess = make_tree(static_cast<int>(state.range(0)) / 10);
    for (auto _ : state)
        benchmark::DoNotOptimize(tess.evaluate(true));
    state.counters["widgets"] = static_cast<double>(tess.size());
    state.counters["guide_rounds"] = static_cast<double>(tess.guide_rounds().first);
}
BENCHMARK(BM_SolveLayout)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

} // namespace
