// The de-esser's editor on the reference effect: band edges and the band itself dragged with
// their limits (width 100..7500 Hz, centre 500..12000 Hz) and a cancelled drag put back, the
// mode buttons and the effect's mode kept in step, the input spectrum and the gain reduction
// live while open and the meter handed back on the process thread after close, and both looks
// against goldens.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/de_esser.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "effects/de_esser_cutoff_overlay.hpp"
#include "effects/de_esser_editor_view.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_radio_button.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qoraudiofilters::DeEsser;
namespace skins = qorui::skins;

namespace {

constexpr float kRate = 48000.0f;

void SetPlain(DeEsser& fx, int index, double plain) {
    fx.SetParameterValue(index, fx.GetParameterInfo(index)->NormalisedFromPlain(float(plain)));
}

class DeEsserScene : public qafui_testing::EditorScene<DeEsserEditorView> {
public:
    explicit DeEsserScene(std::shared_ptr<DeEsser> theFx, float scale = 1.0f)
        : EditorScene("FFBE710F-CD69-4139-AD26-65603616D9D4", theFx, scale), fx(theFx) {}

    DeEsserCutoffOverlay& Overlay() const { return *view->GetOverlay(); }
    double Center() const { return DeEsserCutoffOverlay::CenterHz(fx->GetParameterValue(3)); }
    double Width() const { return DeEsserCutoffOverlay::BandwidthHz(fx->GetParameterValue(4)); }
    /// The window point of `hz` on the graph, halfway down.
    qorcore::PointT<float> At(double hz) const {
        const CurveEditor& curve = *view->GetCurveEditor();
        const float x = curve.GetPixelForHorizontalValue(hz);
        return curve.UI_LocalToGlobalF({x, curve.GetContentRect().y + 50.0f});
    }
    /// Presses on an edge (0, 1) or the band's middle (2) and moves to `hz` with the button
    /// held.
    void Drag(int target, double hz) {
        const auto& o = Overlay();
        const float x =
            target == 2 ? (o.GetEdgePixel(0) + o.GetEdgePixel(1)) / 2 : o.GetEdgePixel(target);
        const auto from = o.UI_LocalToGlobalF({x, 50.0f});
        ASSERT_EQ(o.FindEdge({x, 50.0f}), target);
        window->MouseDown(from.x, from.y);
        const double toward =
            target == 2 ? std::sqrt((Center() - Width() / 2) * (Center() + Width() / 2)) : 0.0;
        // The middle drag moves the band's middle pixel, which lies at the edges' geometric mean.
        const float dx = target == 2 ? At(hz).x - At(toward).x : At(hz).x - from.x;
        window->MouseMove(from.x + dx, from.y);
    }

    std::shared_ptr<DeEsser> fx;
};

struct DragCase {
    const char* name;
    double center, width; // before
    int target;
    double toHz;
    double wantCenter, wantWidth, tolerance;
};

TEST(DeEsserEditor, EdgesMoveCentreAndWidthTogetherWithinTheirLimits) {
    const DragCase cases[] = {
        {"low onto high stops at 100 Hz", 7000, 4000, 0, 9000, 8950, 100, 0.5},
        {"the widest band is 7500 Hz", 7000, 4000, 0, 40, 5250, 7500, 0.5},
        {"high past low keeps the low edge", 7000, 4000, 1, 200, 5050, 100, 0.5},
        {"the centre stays at 500 Hz and moves the low edge", 600, 400, 1, 450, 500, 100, 0.5},
        {"the centre stays at 12000 Hz", 11000, 2000, 1, 19000, 12000, 7500, 0.5},
        {"the high edge alone moves", 7000, 4000, 1, 11000, 8000, 6000, 80},
        {"the band moves whole", 7000, 4000, 2, 3000, 3000, 4000, 150},
    };
    auto fx = std::make_shared<DeEsser>(kRate, 2);
    DeEsserScene scene(fx);
    for (const DragCase& c : cases) {
        SCOPED_TRACE(c.name);
        SetPlain(*fx, 3, c.center);
        SetPlain(*fx, 4, c.width);
        for (int tick = 0; tick < 100; ++tick) // no double click
            scene.Tick();
        scene.Drag(c.target, c.toHz);
        EXPECT_TRUE(fx->IsParameterBeingEdited(3));
        EXPECT_TRUE(fx->IsParameterBeingEdited(4));
        EXPECT_NEAR(scene.Center(), c.wantCenter, c.tolerance);
        EXPECT_NEAR(scene.Width(), c.wantWidth, c.target == 2 ? 0.5 : c.tolerance);
        const auto end = scene.At(c.toHz);
        scene.window->MouseUp(end.x, end.y);
        EXPECT_FALSE(fx->IsParameterBeingEdited(3));
    }

    // Escape puts both back.
    SetPlain(*fx, 3, 7000);
    SetPlain(*fx, 4, 4000);
    for (int tick = 0; tick < 100; ++tick)
        scene.Tick();
    scene.Drag(0, 2000);
    EXPECT_GT(scene.Width(), 6000);
    scene.window->PressKey(qorui::KeyboardCode::kEscape);
    EXPECT_NEAR(scene.Center(), 7000, 0.5);
    EXPECT_NEAR(scene.Width(), 4000, 0.5);
    EXPECT_EQ(scene.Overlay().GetDraggedEdge(), -1);
}

TEST(DeEsserEditor, TheModeButtonsAndTheEffectsModeMoveTogether) {
    auto fx = std::make_shared<DeEsser>(kRate, 2);
    DeEsserScene scene(fx);
    auto& broadband = scene.Find<qorui::UI_RadioButton>("Broadband");
    auto& multiband = scene.Find<qorui::UI_RadioButton>("Multiband");
    EXPECT_TRUE(multiband.IsChecked());
    EXPECT_FALSE(broadband.IsChecked());
    scene.Click("Broadband");
    EXPECT_EQ(fx->GetParameterValue(DeEsser::kMode), 0.0f);
    EXPECT_FALSE(multiband.IsChecked());
    scene.Tick();
    EXPECT_TRUE(broadband.IsChecked());
    fx->SetParameterValue(DeEsser::kMode, 1.0f);
    scene.Tick();
    EXPECT_TRUE(multiband.IsChecked());
    EXPECT_FALSE(broadband.IsChecked());
}

TEST(DeEsserEditor, MetersRunWhileOpenAndTheMeterChangesHandsAfterClose) {
    auto fx = std::make_shared<DeEsser>(kRate, 2);
    SetPlain(*fx, DeEsser::kThreshold, -60.0);
    qafhost::ProcessHost host(fx, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, kRate, 2));
    auto scene = std::make_unique<DeEsserScene>(fx);
    EXPECT_TRUE(scene->view->IsSpectrumMeterEnabled());
    for (int step = 0; step < 50; ++step) {
        host.Advance(0.01);
        scene->Tick();
    }
    EXPECT_FALSE(scene->view->GetSpectrumDraw()->GetLinePixels().empty()) << "a spectrum came";
    const auto& meter = scene->Find<qorui::UI_LevelMeterView>("GainReductionMeter");
    // The meter shows the effect's reduction, down to the bottom of its -30..0 dB scale.
    EXPECT_NEAR(meter.GetLevelDB(0), std::max(-30.0f, fx->GetGainReduction()), 3.0);
    EXPECT_LT(meter.GetLevelDB(0), -1.0) << "the programme is far over -60 dB in the band";

    scene.reset();
    host.Advance(0.01);
    qorcore::MainThreadQueue::Get().RunPending();
    host.Advance(0.01);
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(fx->GetPostedMessageCount(), 0u) << "nothing posts itself any more";
    EXPECT_FALSE(fx->SwapSpectrumMeter({})) << "the effect holds no meter";
}

class DeEsserGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {};

TEST_P(DeEsserGolden, TheBandOverTheLiveProgrammeDrawsLikeItsGolden) {
    const auto [scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    auto fx = std::make_shared<DeEsser>(kRate, 2);
    SetPlain(*fx, DeEsser::kThreshold, -45.0);
    SetPlain(*fx, DeEsser::kCenterFrequency, 6000.0);
    SetPlain(*fx, DeEsser::kBandwidth, 5000.0);
    qafhost::ProcessHost host(fx, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, kRate, 2));
    DeEsserScene scene(fx, scale);
    scene.window->SetBackgroundColor(skins::GetContentBackgroundColor());
    for (int step = 0; step < 100; ++step) {
        host.Advance(0.01);
        scene.window->AdvanceTime(0.01);
    }
    scene.window->RenderAll();
    const std::string name = std::string("de_esser_") + std::string(skins::GetSkinName(skin)) +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Looks, DeEsserGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
