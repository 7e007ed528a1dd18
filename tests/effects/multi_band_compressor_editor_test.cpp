// The multiband compressor's editor on the reference effect: crossovers dragged past each other
// stop a gap short (with and without link) and a cancelled drag is put back, linked thresholds
// move together within range, solo and bypass grey the swatches, the limiter mode box, the
// meters live while open and quiet after close, and both looks against goldens.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/multi_band_compressor.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "controls/edit_number.hpp"
#include "effects/multi_band_compressor_cutoff_overlay.hpp"
#include "effects/multi_band_compressor_editor_view.hpp"
#include "graphs/curve_editor.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_checkbox.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qoraudiofilters::MultiBandCompressor;
using MBC = MultiBandCompressor;
namespace skins = qorui::skins;

namespace {

constexpr float kRate = 48000.0f;

class MBCScene : public qafui_testing::EditorScene<MultiBandCompressorEditorView> {
public:
    explicit MBCScene(std::shared_ptr<MBC> theFx, float scale = 1.0f)
        : EditorScene("3981E750-C8AE-40A2-889F-41A01C7EFA03", theFx, scale), fx(theFx) {}

    MultiBandCompressorCutoffOverlay& Overlay() const { return view->GetOverlay(); }
    double Hz(int i) const { return fx->GetParameterValue(MBC::kCrossOver + i) * 19980.0 + 20.0; }
    void SetHz(int i, double hz) {
        fx->SetParameterValue(MBC::kCrossOver + i, float((hz - 20.0) / 19980.0));
        Tick();
    }
    /// Presses on crossover `i` and moves the pointer to where `hz` lies, the button held.
    void Drag(int i, double hz) {
        const auto& o = Overlay();
        const float x = o.GetFreqScale().HzToPixels(0, o.GetCutoff(i), false).value;
        ASSERT_EQ(o.FindCutoff({x, 40.0f}), i);
        const auto from = o.UI_LocalToGlobalF({x, 40.0f});
        const float toX = o.GetFreqScale().HzToPixels(0, hz, false).value;
        window->AdvanceTime(1.0); // a new press, not a double click
        window->MouseDown(from.x, from.y);
        last = {from.x + (toX - x), from.y};
        window->MouseMove(last.x, last.y);
    }

    qorcore::PointT<float> last;

    std::shared_ptr<MBC> fx;
};

TEST(MultiBandCompressorEditor, CrossoversDraggedPastEachOtherStopAGapShort) {
    struct Case {
        int index;
        double toHz;
        int neighbour; // the crossover it runs into
    };
    const Case cases[] = {{0, 5000.0, 1}, {1, 30.0, 0}, {1, 15000.0, 2}, {2, 200.0, 1}};
    auto fx = std::make_shared<MBC>(kRate, 2);
    MBCScene scene(fx);
    for (const bool link : {false, true}) {
        fx->SetParameterValue(MBC::kLinkBandControls, link ? 1.0f : 0.0f);
        for (const Case& c : cases) {
            SCOPED_TRACE(std::to_string(c.index) + (link ? " linked" : ""));
            scene.SetHz(0, 150.0);
            scene.SetHz(1, 1000.0);
            scene.SetHz(2, 8000.0);
            const float gap = scene.Overlay().GetMinimumGap();
            ASSERT_GT(gap, 0.0f);
            scene.Drag(c.index, c.toHz);
            const double octaves = std::log2(scene.Hz(c.index) / scene.Hz(c.neighbour));
            EXPECT_NEAR(std::fabs(octaves), gap, 1e-3);
            EXPECT_EQ(octaves > 0, c.index > c.neighbour) << "the order holds";
            scene.window->MouseUp(scene.last.x, scene.last.y);
            EXPECT_FALSE(fx->IsParameterBeingEdited(MBC::kCrossOver + c.index));
        }
    }
    // The middle edit number's limits follow a move of the low crossover.
    scene.Tick();
    const auto& mid = scene.Find<EditNumber>("Mid");
    EXPECT_NEAR(std::log2(mid.GetMinValue() / scene.Hz(0)), scene.Overlay().GetMinimumGap(), 1e-3);

    // Escape puts the parameter back exactly.
    const float before = fx->GetParameterValue(MBC::kCrossOver + 1);
    scene.Drag(1, 3000.0);
    EXPECT_NE(fx->GetParameterValue(MBC::kCrossOver + 1), before);
    scene.window->PressKey(qorui::KeyboardCode::kEscape);
    EXPECT_EQ(fx->GetParameterValue(MBC::kCrossOver + 1), before);
    EXPECT_EQ(scene.Overlay().GetDraggedIndex(), -1);
    EXPECT_FALSE(fx->IsParameterBeingEdited(MBC::kCrossOver + 1));
}

TEST(MultiBandCompressorEditor, LinkedThresholdsMoveByTheSameStepHeldInRange) {
    auto fx = std::make_shared<MBC>(kRate, 2);
    const float start[4] = {0.5f, 0.2f, 0.4f, 0.7f};
    for (const bool link : {true, false}) {
        for (int b = 0; b < 4; ++b)
            fx->SetParameterValue(MBC::kThreshold + b, start[b]);
        fx->SetParameterValue(MBC::kLinkBandControls, link ? 1.0f : 0.0f);
        MBCScene scene(fx);
        // The first band's fader pushed to its top.
        auto& slider = scene.Find<qorui::UI_Node>("CompressorBand1_ThresholdS");
        const auto frame = slider.GetFrame();
        const auto from = slider.UI_LocalToGlobalF({frame.width / 2, frame.height / 2});
        scene.window->MouseDown(from.x, from.y);
        scene.window->MouseMove(from.x, from.y - 400.0f);
        scene.window->MouseUp(from.x, from.y - 400.0f);
        const float expected[4] = {1.0f, link ? 0.7f : 0.2f, link ? 0.9f : 0.4f,
                                   link ? 1.0f : 0.7f};
        for (int b = 0; b < 4; ++b)
            EXPECT_NEAR(fx->GetParameterValue(MBC::kThreshold + b), expected[b], 1e-4)
                << "band " << b << (link ? " linked" : "");
    }
}

TEST(MultiBandCompressorEditor, SoloAndBypassGreyTheSwatches) {
    struct Case {
        int solo;   // -1 none
        int bypass; // -1 none
        bool grey[4];
    };
    const Case cases[] = {{-1, -1, {false, false, false, false}},
                          {1, -1, {true, false, true, true}},
                          {1, 1, {true, true, true, true}},
                          {-1, 3, {false, false, false, true}}};
    auto fx = std::make_shared<MBC>(kRate, 2);
    MBCScene scene(fx);
    for (const Case& c : cases) {
        for (int b = 0; b < 4; ++b) {
            fx->SetParameterValue(MBC::kSolo + b, b == c.solo ? 1.0f : 0.0f);
            fx->SetParameterValue(MBC::kBypass + b, b == c.bypass ? 1.0f : 0.0f);
        }
        scene.Tick();
        for (int b = 0; b < 4; ++b) {
            const qorcore::ColorRGBA shown = scene.view->GetSwatchColor(b);
            const qorcore::ColorRGBA& band = MultiBandCompressorEditorView::kBandColors[b];
            const qorcore::ColorRGBA want =
                c.grey[b] ? qorcore::ColorRGBA{0.5f, 0.5f, 0.5f, 1.0f}
                          : qorcore::ColorRGBA{std::min(1.0f, band.red * 1.2f),
                                               std::min(1.0f, band.green * 1.2f),
                                               std::min(1.0f, band.blue * 1.2f), 0.5f};
            EXPECT_EQ(shown, want)
                << "solo " << c.solo << ", bypass " << c.bypass << ", band " << b;
        }
    }
}

TEST(MultiBandCompressorEditor, TheBrickwallBoxShowsOnlyModeOne) {
    auto fx = std::make_shared<MBC>(kRate, 2);
    MBCScene scene(fx);
    auto& box = scene.Find<qorui::UI_Checkbox>("BrickwallLimiter");
    for (const auto& [mode, checked] : {std::pair{0.25f, true}, std::pair{0.5f, false},
                                        std::pair{0.0f, false}, std::pair{0.3f, true}}) {
        fx->SetParameterValue(MBC::kBrickwallLimiter, mode);
        scene.Tick();
        EXPECT_EQ(box.IsChecked(), checked) << mode;
    }
    fx->SetParameterValue(MBC::kBrickwallLimiter, 0.5f);
    scene.Tick();
    scene.Click("BrickwallLimiter");
    EXPECT_EQ(fx->GetParameterValue(MBC::kBrickwallLimiter), 0.25f);
    scene.Click("BrickwallLimiter");
    EXPECT_EQ(fx->GetParameterValue(MBC::kBrickwallLimiter), 0.0f);
}

TEST(MultiBandCompressorEditor, MetersAreFedWhileOpenAndSilentAfterClose) {
    auto fx = std::make_shared<MBC>(kRate, 2);
    qafhost::ProcessHost host(fx, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, kRate, 2));
    auto scene = std::make_unique<MBCScene>(fx);
    for (int step = 0; step < 50; ++step) {
        host.Advance(0.01);
        scene->Tick();
    }
    for (int b = 0; b < 4; ++b) {
        const std::string band = "CompressorBand" + std::to_string(b + 1) + "_";
        const auto& level = scene->Find<qorui::UI_LevelMeterView>((band + "LevelMeter").c_str());
        EXPECT_GT(level.GetPeakDB(0), -60.0f) << "band " << b << " heard the programme";
        const auto& reduction =
            scene->Find<qorui::UI_LevelMeterView>((band + "GainReductionMeter").c_str());
        EXPECT_NEAR(reduction.GetLevelDB(0), std::max(-30.0f, fx->GetGainReduction(b)), 3.0);
    }
    EXPECT_GT(scene->Find<qorui::UI_LevelMeterView>("LevelMeter").GetPeakDB(0), -40.0f);
    const std::weak_ptr<qoraudiotoolkit::LevelMeterDSP> output = scene->view->GetOutputLevelMeter();
    EXPECT_FALSE(output.expired());

    scene.reset();
    for (int i = 0; i < 3; ++i) {
        host.Advance(0.01);
        qorcore::MainThreadQueue::Get().RunPending();
    }
    EXPECT_EQ(fx->GetPostedMessageCount(), 0u) << "nothing posts itself any more";
    EXPECT_TRUE(output.expired()) << "the effect let go of the output meter";
}

class MultiBandCompressorGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {
};

TEST_P(MultiBandCompressorGolden, TheBandsOverTheLiveProgrammeDrawLikeTheirGolden) {
    const auto [scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    auto fx = std::make_shared<MBC>(kRate, 2);
    fx->SetParameterValue(MBC::kSolo + 2, 1.0f);
    fx->SetParameterValue(MBC::kBypass + 3, 1.0f);
    qafhost::ProcessHost host(fx, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, kRate, 2));
    MBCScene scene(fx, scale);
    scene.window->SetBackgroundColor(skins::GetContentBackgroundColor());
    for (int step = 0; step < 100; ++step) {
        host.Advance(0.01);
        scene.window->AdvanceTime(0.01);
    }
    scene.window->RenderAll();
    const std::string name = std::string("multi_band_compressor_") +
                             std::string(skins::GetSkinName(skin)) +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Looks, MultiBandCompressorGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
