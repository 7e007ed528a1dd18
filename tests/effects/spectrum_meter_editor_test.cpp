// The analyser's editor on the reference analyser: each control writes its parameter and changes
// what the effect analyses or what the graph draws; the meter runs while the editor is open; both
// looks draw like their goldens over the live test signal.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/spectrum_meter.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "controls/edit_number.hpp"
#include "effects/spectrum_meter_editor_view.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/keyboard_code.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_popup.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qoraudiofilters::SpectrumMeter;
using qoraudiotoolkit::SpectrumMeterDSP;
namespace skins = qorui::skins;

namespace {

constexpr const char* kGuid = "A249D9E9-1DD5-4E3B-B581-31482951C608";
constexpr bool kOrange = false;
constexpr bool kWhite = true;

/// The editor over an analyser that the reference host feeds with its test signal.
class SpectrumMeterScene : public qafui_testing::EditorScene<SpectrumMeterEditorView> {
public:
    explicit SpectrumMeterScene(std::shared_ptr<SpectrumMeter> theAnalyser, float scale = 1.0f)
        : EditorScene(kGuid, theAnalyser, scale), analyser(std::move(theAnalyser)),
          host(analyser, {512, qafhost::ProcessHost::Clock::kVirtual, {}}) {
        host.SetSource(std::make_unique<qafhost::TestSignalSource>(
            qafhost::TestSignalSource::Kind::kMix, analyser->GetSampleRate(), 2));
    }
    void Run(int ticks) {
        for (int tick = 0; tick < ticks; ++tick) {
            host.Advance(0.01);
            window->AdvanceTime(0.01);
        }
    }
    CurveEditor& Curve() const { return *view->GetCurveEditor(); }
    /// Content pixels of the rendered graph in the spectrum's orange or the peaks' white.
    int Count(bool white) {
        window->RenderAll();
        const qorcore::RectT<float> content = Curve().GetContentRect();
        int count = 0;
        for (float y = 1; y < content.height - 1; ++y)
            for (float x = 1; x < content.width - 1; ++x) {
                const auto at = Curve().UI_LocalToGlobalF({content.x + x, content.y + y});
                const qorcore::ColorRGBA pixel = window->GetPixel(int(at.x), int(at.y));
                count += pixel.red > 0.8f && (white ? pixel.blue > 0.8f : pixel.blue < 0.4f);
            }
        return count;
    }

    std::shared_ptr<SpectrumMeter> analyser;
    qafhost::ProcessHost host;
};

TEST(SpectrumMeterEditor, EachPopupRowSetsWhatTheAnalyserAnalyses) {
    SpectrumMeterScene scene(std::make_shared<SpectrumMeter>());
    const char* popups[] = {"FFTSize", "SpectrumType", "FFTWindow", "Overlap", "WindowSize"};
    const int rows[] = {1, 2, 2, 3, 4};
    const float written[] = {0.25f, 1.0f, 2.0f / 7.0f, 1.0f, 0.2f};
    for (int parameter = 0; parameter < 5; ++parameter) {
        auto& popup = scene.Find<qorui::UI_Popup>(popups[parameter]);
        popup.ChooseItem(rows[parameter]);
        scene.Tick();
        EXPECT_FLOAT_EQ(scene.analyser->GetParameterValue(parameter), written[parameter]);
        EXPECT_EQ(popup.GetSelectedIndex(), rows[parameter]) << "the row shows the value";
    }
    // 1024 points of critical bands through the Bartlett window, 75 % overlap, 1 s averaging.
    const SpectrumMeterDSP& meter = *scene.analyser->GetSpectrumMeter();
    EXPECT_EQ(meter.GetFFTSize(), 1024u);
    EXPECT_EQ(meter.GetSpectrumType(), qoraudiotoolkit::kSpectrumTypeCriticalBands);
    EXPECT_EQ(meter.GetWindowType(), qoraudiotoolkit::WindowType::kTriangular);
    EXPECT_DOUBLE_EQ(meter.GetHopSeconds(), 256.0 / 48000.0);
    EXPECT_NEAR(meter.GetAverageTime(), 0.5, 1e-6);
}

TEST(SpectrumMeterEditor, TheBoxesAndTheHoldTimeWriteTheirParametersAndChangeTheDrawing) {
    SpectrumMeterScene scene(std::make_shared<SpectrumMeter>());
    scene.Run(50);
    const int filled = scene.Count(kOrange);
    EXPECT_GT(scene.Count(kWhite), 100) << "the peak trace";
    const auto middle = scene.Curve().UI_LocalToGlobalF(scene.Curve().GetContentRect().Center());
    scene.window->Click(middle.x, middle.y);
    EXPECT_TRUE(scene.Curve().GetCurvePoints().empty()) << "a click draws no point";
    for (const char* box : {"FlipChannelPhase", "Fill", "ShowPeakHold", "LogScale"})
        scene.Click(box);
    scene.Run(10);
    for (int parameter : {5, 7, 8, 9})
        EXPECT_EQ(scene.analyser->GetParameterValue(parameter), parameter == 5 ? 1.0f : 0.0f);
    EXPECT_LT(scene.Count(kOrange) * 20, filled) << "a trace is left of the area";
    EXPECT_EQ(scene.Count(kWhite), 0);
    // Linear: the ruler and the lines follow hertz in a straight line from 20 Hz to Nyquist.
    EXPECT_NE(dynamic_cast<qorui::LinearRuler*>(scene.Curve().GetHorizontalRuler().get()), nullptr);
    EXPECT_NEAR(scene.view->GetSpectrumDraw()->HzToPixels(12000.0f, true).value,
                (12000.0f - 20.0f) / (24000.0f - 20.0f) * scene.Curve().GetContentRect().width, 1);
    const auto& hot = *scene.Find<EditNumber>("PeakHoldTime").GetHotTextNumber();
    const auto at = hot.UI_LocalToGlobalF({hot.GetFrame().width / 2, hot.GetFrame().height / 2});
    scene.window->Click(at.x, at.y);
    scene.window->TypeText("500");
    scene.window->PressKey(qorui::KeyboardCode::kReturn);
    EXPECT_NEAR(scene.analyser->GetParameterValue(SpectrumMeter::kPeakHoldTime), 499.0f / 4999.0f,
                1e-6);
}

class SpectrumMeterGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {};

TEST_P(SpectrumMeterGolden, TheLiveSpectrumDrawsLikeItsGolden) {
    const auto [scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    auto analyser = std::make_shared<SpectrumMeter>();
    auto scene = std::make_unique<SpectrumMeterScene>(analyser, scale);
    EXPECT_TRUE(analyser->IsMeterActive());
    scene->window->SetBackgroundColor(skins::GetContentBackgroundColor());
    scene->Run(100);
    scene->window->RenderAll();
    const std::string name = std::string("spectrum_meter_") +
                             std::string(skins::GetSkinName(skin)) +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene->window->GetImage(), name));

    // Closing stops the feeding before the view goes; the carrier in flight ends.
    auto& host = scene->host;
    scene->view->RemoveFromParent();
    scene->view.reset();
    EXPECT_FALSE(analyser->IsMeterActive());
    host.Advance(0.02);
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(analyser->GetPostedMessageCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Looks, SpectrumMeterGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
