// Dragging a point of the curve editor: a curve of 128 points over a data curve of 4096 values,
// in a 1000 by 300 content area. One iteration is one pointer move through the headless window
// (the editor's rules of moving, the selection signal, the cursor) and the repaint of what it
// dirtied, which redraws the grid, the data curve and all the points. The pointer sweeps 500
// pixels right and back, so the point passes neighbours, is held beside them and jumps.

#include "graphs/curve_editor.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/ui/headless_window.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

using qoraudiofiltersui::CurveEditor;
using qorcore::PointT;

/// The vertical value of the curve through `points` at `h`, by straight lines between them.
double Interpolate(const CurveEditor::CurvePoints& points, double h) {
    if (h <= points.front().position.first)
        return points.front().position.second;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const auto [h1, v1] = points[i].position;
        if (h <= h1) {
            const auto [h0, v0] = points[i - 1].position;
            return v0 + (h - h0) / (h1 - h0) * (v1 - v0);
        }
    }
    return points.back().position.second;
}

void BM_CurveEditorDragMove(benchmark::State& state) {
    const float scale = float(state.range(0));
    constexpr int kPoints = 128;
    constexpr int kDataValues = 4096;
    constexpr int kSweep = 500;

    auto editor = qorcore::MakeIntrusive<CurveEditor>(qorcore::MakeIntrusive<qorui::LinearRuler>(),
                                                      qorcore::MakeIntrusive<qorui::LinearRuler>());
    const PointT<float> size = editor->GetSizeForContentSize({1000, 300});
    qorui::HeadlessWindow window(size.x + 20, size.y + 20, scale);
    editor->SetFrame({10, 10, size.x, size.y});
    window.AddNode(editor);
    editor->SetRanges(0, 1000, 100, 0);
    editor->SetMaxPointCount(kPoints);

    CurveEditor::CurvePoints points;
    for (int i = 0; i < kPoints; ++i)
        points.emplace_back(std::uint32_t(i + 1), i * 1000.0 / (kPoints - 1),
                            50.0 + 30.0 * std::sin(i * 0.3));
    editor->SetCurvePoints(points);
    std::vector<double> data(kDataValues);
    for (int i = 0; i < kDataValues; ++i)
        data[i] = Interpolate(points, i * 1000.0 / kDataValues);
    editor->SetResponseData(data, 0);
    window.RenderAll();

    // Press on a point a quarter of the way in and sweep from there.
    const PointT<float> origin = editor->GetFrame().Origin();
    const PointT<float> at = editor->GetPixelForCoordinatePair(points[kPoints / 4].position);
    const float x0 = origin.x + at.x;
    const float y = origin.y + at.y;
    window.MouseMove(x0, y);
    window.MouseDown(x0, y);
    long step = 0;
    for (auto _ : state) {
        const long phase = ++step % (2 * kSweep);
        const float offset = float(phase < kSweep ? phase : 2 * kSweep - phase);
        window.MouseMove(x0 + offset, y);
        benchmark::DoNotOptimize(window.Render());
    }
    window.MouseUp(x0, y);
    state.counters["points"] = double(editor->GetCurvePoints().size());
}
BENCHMARK(BM_CurveEditorDragMove)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

} // namespace
