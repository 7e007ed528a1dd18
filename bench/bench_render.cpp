// Repaint cost of the toolkit: a headless window of 800 by 600 holding 200 simple nodes with
// text (10 columns, 20 rows of 80 by 30), fully repainted at 1x and 2x, and one invalidated
// 50 by 50 rectangle repainted. Times are per frame, in milliseconds.
#include "platform/draw/penrig.hpp"
#include "platform/ui/headless_window.hpp"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace qorui;
using qorcore::ColorRGBA;

class TextNode : public UI_Node {
public:
    explicit TextNode(std::string text) : text_(std::move(text)) {}

    void UI_Draw(Penrig* p) override {
        const RectT<float> b = GetBounds();
        p->FillRect(b, ColorRGBA(0.97f, 0.97f, 0.98f));
        p->FrameRect(b, ColorRGBA(0.5f, 0.5f, 0.55f));
        p->SetColor(ColorRGBA(0.1f, 0.1f, 0.1f));
        p->SetFont(penrig::Font(11));
        p->DrawText(text_, b.Inset(4, 2), penrig::HorizontalAlignment::kLeft);
    }

private:
    std::string text_;
};

std::unique_ptr<HeadlessWindow> MakeWindow(float scale) {
    auto window = std::make_unique<HeadlessWindow>(800, 600, scale, false);
    for (int i = 0; i < 200; ++i) {
        IntrusivePtr<TextNode> node(new TextNode("Gain " + std::to_string(i)));
        node->SetFrame({float(i % 10) * 80, float(i / 10) * 30, 80, 30});
        window->AddNode(node);
    }
    window->Render();
    return window;
}

void BM_FullRepaint(benchmark::State& state) {
    const float scale = float(state.range(0));
    auto window = MakeWindow(scale);
    for (auto _ : state) {
        window->InvalidateAll();
        benchmark::DoNotOptimize(window->Render());
    }
    state.SetLabel(std::to_string(int(scale)) + "x, 200 nodes");
}
BENCHMARK(BM_FullRepaint)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_SmallRepaint(benchmark::State& state) {
    const float scale = float(state.range(0));
    auto window = MakeWindow(scale);
    for (auto _ : state) {
        window->InvalidateRect({375, 275, 50, 50});
        benchmark::DoNotOptimize(window->Render());
    }
    state.SetLabel(std::to_string(int(scale)) + "x, one 50x50 rectangle");
}
BENCHMARK(BM_SmallRepaint)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
