// The Parametric EQ editor on the reference equaliser, in a headless window:
//  - open: made through the registry (both scripts read, the sheet built and solved, 27 number
//    fields and the curve placed, the meter switched on), put in a window and painted whole;
//  - drag step: one mouse move of a band's node: the curve editor writes the points, the sheet
//    solves its relations and writes two parameters, the editor's tick takes them back, the
//    response is asked for at 570 points, and the window repaints what changed.
// Each at scale 1 and 2.

#include "audio/dsp/parametric_eq.hpp"
#include "effects/parametric_eq_editor_view.hpp"
#include "framework/library.hpp"
#include "graphs/curve_editor.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/ui/headless_window.hpp"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr const char* kGuid = "8EDCD326-33DE-4A4D-985B-F1BF48ED1427";

using qoraudiofilters::ParametricEQ;

struct Editor {
    explicit Editor(float scale)
        : supplier(scale), eq(std::make_shared<ParametricEQ>(48000.0f, 2)) {
        qoraudiofiltersui::Initialize(&supplier);
    }
    ~Editor() {
        Close();
        qoraudiofiltersui::Terminate();
    }
    void Open() {
        view = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(kGuid, eq);
        window = std::make_unique<qorui::HeadlessWindow>(
            view->GetFrame().width, view->GetFrame().height, supplier.GetScaleFactor());
        window->AddNode(view);
        window->RenderAll();
    }
    void Close() {
        if (window)
            window->GetRoot()->RemoveAllChildren();
        view.reset();
        window.reset();
    }

    qorui::penrig::CairoSupplier supplier;
    std::shared_ptr<ParametricEQ> eq;
    qorcore::IntrusivePtr<qoraudiofilterhostui::AudioFilterEditorViewBase> view;
    std::unique_ptr<qorui::HeadlessWindow> window;
};

void BM_ParametricEQEditorOpen(benchmark::State& state) {
    Editor editor(float(state.range(0)));
    for (auto _ : state) {
        editor.Open();
        state.PauseTiming();
        editor.Close();
        editor.eq->ProcessPostedMessages();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_ParametricEQEditorOpen)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_ParametricEQEditorDragStep(benchmark::State& state) {
    Editor editor(float(state.range(0)));
    editor.Open();
    auto* view = dynamic_cast<qoraudiofiltersui::ParametricEQEditorView*>(editor.view.get());
    qoraudiofiltersui::CurveEditor& curve = *view->GetCurveEditor();
    // Band 3's node, pressed and then moved back and forth.
    const auto at = curve.UI_LocalToGlobalF(
        curve.GetPixelForCoordinatePair(curve.GetCurvePoints().at(4).position));
    editor.window->MouseDown(at.x, at.y);
    float offset = 0.0f;
    for (auto _ : state) {
        offset = offset > 20.0f ? -20.0f : offset + 2.0f;
        editor.window->MouseMove(at.x + offset, at.y - offset);
        editor.window->AdvanceTime(0.01);
        benchmark::DoNotOptimize(editor.window->Render());
    }
    editor.window->MouseUp(at.x, at.y);
}
BENCHMARK(BM_ParametricEQEditorDragStep)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

} // namespace
