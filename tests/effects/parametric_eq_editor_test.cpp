// The Parametric EQ editor on the reference equaliser: its sheet carries every parameter in and
// out, keeps a switched-off band exact, ties each graph node to its number fields with one
// gesture per parameter, follows the range switch on curve and spectrum, draws the response the
// filter applies (against sines measured through it), and draws like its goldens over the live
// test signal.
#include "../audio/audio_test_helpers.hpp"
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/parametric_eq.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "controls/edit_number.hpp"
#include "effects/parametric_eq_editor_view.hpp"
#include "graphs/curve_editor.hpp"
#include "graphs/spectrum_draw.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_radio_button.hpp"
#include "platform/widgets/ui_radio_group.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using qafui_testing::EditorScene;
using qoraudiofilters::ParametricEQ;
using Kind = qoraudiofilterhost::ParameterStoreFilter::CallKind;
namespace skins = qorui::skins;

namespace {

constexpr const char* kGuid = "8EDCD326-33DE-4A4D-985B-F1BF48ED1427";
constexpr float kRate = 48000.0f;
constexpr double kNyquist = kRate / 2.0;

double FrequencyValue(double hz) {
    return (hz - 20.0) / (kNyquist - 20.0);
}
double GainValue(double db) {
    return (db + 48.0) / 96.0;
}

class ParametricEQScene : public EditorScene<ParametricEQEditorView> {
public:
    explicit ParametricEQScene(std::shared_ptr<ParametricEQ> theEq, float scale = 1.0f)
        : EditorScene(kGuid, theEq, scale), eq(std::move(theEq)) {}

    CurveEditor& Curve() const { return *view->GetCurveEditor(); }
    double Number(const char* id) const { return Find<EditNumber>(id).GetValue(); }
    /// Presses on graph node `index`, moves by (dx, dy) pixels in steps and lets go.
    void DragNode(std::size_t index, float dx, float dy) {
        const auto& point = Curve().GetCurvePoints().at(index).position;
        const auto local = Curve().GetPixelForCoordinatePair(point);
        const auto at = Curve().UI_LocalToGlobalF(local);
        window->MouseDown(at.x, at.y);
        for (int step = 1; step <= 4; ++step)
            window->MouseMove(at.x + dx * float(step) / 4, at.y + dy * float(step) / 4);
        window->MouseUp(at.x + dx, at.y + dy);
        Tick();
        Tick();
    }

    std::shared_ptr<ParametricEQ> eq;
};

std::shared_ptr<ParametricEQ> MakeEQ() {
    return std::make_shared<ParametricEQ>(kRate, 2);
}

TEST(ParametricEQEditor, EveryParameterGoesThroughTheSheetAndBackUnchanged) {
    auto eq = MakeEQ();
    // Values off the grid of any control, every element on, so that every output encodes.
    for (int i = 0; i < ParametricEQ::kParameterCount; ++i)
        eq->StoreValue(i, float(std::fmod(0.137 * (i + 1), 0.9) + 0.05));
    for (int enable : {7, 11, 15, 19, 23, 29, 30, 37, 40})
        eq->StoreValue(enable, 1.0f);
    eq->StoreValue(ParametricEQ::kHighPassSlope, 0.4f);
    eq->StoreValue(ParametricEQ::kLowPassSlope, 0.8f);
    std::vector<float> before(ParametricEQ::kParameterCount);
    for (int i = 0; i < ParametricEQ::kParameterCount; ++i)
        before[std::size_t(i)] = eq->GetParameterValue(i);
    ParametricEQScene scene(eq);
    for (int tick = 0; tick < 5; ++tick)
        scene.Tick();
    for (int i = 0; i < ParametricEQ::kParameterCount; ++i)
        EXPECT_NEAR(eq->GetParameterValue(i), before[std::size_t(i)], 2e-7) << "parameter " << i;

    // And the fields show the decoded values.
    EXPECT_NEAR(scene.Number("Band1Frequency"), before[4] * (kNyquist - 20.0) + 20.0, 1e-2);
    EXPECT_NEAR(scene.Number("Band1Gain"), before[6] * 96.0 - 48.0, 1e-4);
    EXPECT_NEAR(scene.Number("HighShelfGain"), before[3] * 96.0 - 48.0, 1e-4);
}

TEST(ParametricEQEditor, ASwitchedOffBandKeepsItsValuesExactThroughEdits) {
    auto eq = MakeEQ();
    eq->StoreValue(8, 0.0123456f);  // band 2 centre
    eq->StoreValue(9, 0.0007071f);  // band 2 Q
    eq->StoreValue(10, 0.6180339f); // band 2 gain
    eq->StoreValue(11, 0.0f);       // band 2 off
    eq->StoreValue(33, 0.0031415f); // band 2 width
    ParametricEQScene scene(eq);
    for (int round = 0; round < 6; ++round) {
        scene.DragNode(2, round % 2 ? -15.0f : 15.0f, round % 2 ? 10.0f : -10.0f);
        scene.Click("Constant");
    }
    EXPECT_EQ(eq->GetParameterValue(8), 0.0123456f);
    EXPECT_EQ(eq->GetParameterValue(9), 0.0007071f);
    EXPECT_EQ(eq->GetParameterValue(10), 0.6180339f);
    EXPECT_EQ(eq->GetParameterValue(33), 0.0031415f);
    EXPECT_FALSE(scene.Curve().IsPointVisible(3)) << "its node is hidden";
}

struct DragRow {
    std::size_t node;
    const char* frequencyField;
    const char* gainField; // none for the passes, which stay at 0 dB
    int frequencyParameter;
    int gainParameter;
};

TEST(ParametricEQEditor, DraggingANodeMovesItsFieldsInOneGesturePerParameter) {
    const DragRow rows[] = {
        {2, "Band1Frequency", "Band1Gain", 4, 6},
        {7, "HighShelfFrequency", "HighShelfGain", 2, 3},
        {0, "HighPassFrequency", nullptr, 38, -1},
    };
    for (const DragRow& row : rows) {
        SCOPED_TRACE(row.frequencyField);
        auto eq = MakeEQ();
        eq->StoreValue(ParametricEQ::kHighPassEnable, 1.0f);
        ParametricEQScene scene(eq);
        eq->ClearCalls();
        const auto start = scene.Curve().GetCurvePoints().at(row.node).position;
        scene.DragNode(row.node, 40.0f, -30.0f);
        const auto end = scene.Curve().GetCurvePoints().at(row.node).position;
        EXPECT_GT(end.first, start.first * 1.1);
        EXPECT_NEAR(scene.Number(row.frequencyField), end.first, 1e-3 * end.first);
        EXPECT_NEAR(eq->GetParameterValue(row.frequencyParameter), FrequencyValue(end.first), 1e-6);
        if (row.node == 2) {
            // The curve follows: a band reaches its gain at its centre (the other bands are flat).
            const std::vector<double>& drawn = scene.Curve().GetResponseData(0);
            ASSERT_EQ(drawn.size(), 570u);
            const double at = std::log(end.first / 20.0) / std::log(kNyquist / 20.0) * 570.0;
            EXPECT_NEAR(drawn[std::size_t(std::lround(at))], end.second, 0.3);
        }
        if (row.gainField) {
            EXPECT_GT(end.second, start.second + 3.0);
            EXPECT_NEAR(scene.Number(row.gainField), end.second, 1e-4);
            EXPECT_NEAR(eq->GetParameterValue(row.gainParameter), GainValue(end.second), 1e-6);
        } else {
            EXPECT_EQ(end.second, 0.0) << "a pass node stays at 0 dB";
        }
        // One gesture per parameter written, closed when the button went up.
        std::vector<int> begun, ended;
        for (const auto& call : eq->GetCalls(Kind::kBeginParameterEdit))
            begun.push_back(call.index);
        for (const auto& call : eq->GetCalls(Kind::kEndParameterEdit))
            ended.push_back(call.index);
        std::vector<int> written = {row.frequencyParameter};
        if (row.gainField)
            written.insert(written.begin() + (row.gainParameter < row.frequencyParameter ? 0 : 1),
                           row.gainParameter);
        std::sort(begun.begin(), begun.end());
        EXPECT_EQ(begun, written);
        EXPECT_EQ(ended, written);
    }
}

TEST(ParametricEQEditor, TheRangeSwitchSetsCurveAndSpectrum) {
    ParametricEQScene scene(MakeEQ());
    auto& range = scene.Find<qorui::UI_RadioGroup>("Range");
    ASSERT_EQ(range.GetRadioButtonCount(), 2u);
    const struct {
        std::size_t button;
        double top;
    } rows[] = {{0, 15.0}, {1, 48.0}, {0, 15.0}};
    for (const auto& row : rows) {
        auto* button = range.GetRadioButtonAt(row.button);
        const auto at = button->UI_LocalToGlobalF(
            {button->GetFrame().width / 2, button->GetFrame().height / 2});
        scene.window->Click(at.x, at.y);
        scene.Tick();
        EXPECT_EQ(scene.eq->GetParameterValue(ParametricEQ::kLowFilterRange),
                  row.button == 0 ? 1.0f : 0.0f);
        EXPECT_EQ(scene.Curve().GetVerticalStartBounds(), row.top);
        EXPECT_EQ(scene.Curve().GetVerticalEndBounds(), -row.top);
        EXPECT_EQ(scene.view->GetSpectrumDraw()->GetDBRange().high, float(row.top));
        EXPECT_EQ(scene.view->GetSpectrumDraw()->GetDBRange().low, -120.0f);
    }
}

TEST(ParametricEQEditor, ASlopeNoRowOffersShowsNoRow) {
    auto eq = MakeEQ();
    eq->StoreValue(ParametricEQ::kHighPassSlope, 0.7f);
    eq->StoreValue(ParametricEQ::kLowPassSlope, 0.8f);
    ParametricEQScene scene(eq);
    EXPECT_EQ(scene.Find<qorui::UI_Popup>("HighPassSlope").GetSelectedIndex(), -1);
    EXPECT_EQ(scene.Find<qorui::UI_Popup>("HighPassSlope").GetDisplayedText(), "");
    EXPECT_EQ(scene.Find<qorui::UI_Popup>("LowPassSlope").GetSelectedIndex(), 6) << "48 dB/oct";
}

TEST(ParametricEQEditor, TheDrawnResponseIsTheGainOfSinesThroughTheFilter) {
    auto eq = MakeEQ();
    const std::pair<int, float> settings[] = {
        {ParametricEQ::kHighPassEnable, 1.0f},
        {ParametricEQ::kHighPassSlope, 0.4f},
        {ParametricEQ::kLowShelfGain, float(GainValue(6.0))},
        {6, float(GainValue(-9.0))},
        {14, float(GainValue(4.5))},
        {ParametricEQ::kHighShelfGain, float(GainValue(-3.0))},
        {ParametricEQ::kLowPassEnable, 1.0f},
        {ParametricEQ::kLowPassSlope, 0.2f}};
    for (const auto& setting : settings)
        eq->StoreValue(setting.first, setting.second);
    ParametricEQScene scene(eq);
    scene.Tick();
    const std::vector<double>& drawn = scene.Curve().GetResponseData(0);
    ASSERT_EQ(drawn.size(), 570u) << "the sheet asks for 570 points whatever the width";

    for (std::size_t index = 40; index < 570; index += 45) {
        // Value i lies at i / 570 of the logarithmic axis from 20 Hz to Nyquist.
        const double hz = 20.0 * std::pow(kNyquist / 20.0, double(index) / 570.0);
        auto through = MakeEQ();
        for (int i = 0; i < ParametricEQ::kParameterCount; ++i)
            through->StoreValue(i, eq->GetParameterValue(i));
        through->UpdateFromParameters();
        const std::vector<float> signal = audiotest::Sine(hz, 0.25, kRate, 188 * 512);
        std::vector<float> left(signal.size()), right(signal.size());
        for (std::size_t first = 0; first < signal.size(); first += 512) {
            const float* inputs[2] = {signal.data() + first, signal.data() + first};
            float* outputs[2] = {left.data() + first, right.data() + first};
            through->Process(inputs, outputs, 2, 512);
        }
        const double measured = audiotest::Decibels(
            audiotest::AmplitudeAt(left, hz, kRate, left.size() - 48000, 48000) / 0.25);
        EXPECT_NEAR(drawn[index], measured, 0.1) << hz << " Hz";
    }
}

class ParametricEQGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {};

TEST_P(ParametricEQGolden, BandsOverTheLiveSpectrumDrawLikeTheirGolden) {
    const auto [scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    auto eq = MakeEQ();
    eq->StoreValue(6, float(GainValue(-6.0)));
    eq->StoreValue(14, float(GainValue(4.5)));
    eq->StoreValue(ParametricEQ::kHighPassEnable, 1.0f);
    eq->StoreValue(ParametricEQ::kHighShelfGain, float(GainValue(3.0)));
    eq->UpdateFromParameters();
    qafhost::ProcessHost host(eq, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, eq->GetSampleRate(), 2));
    auto scene = std::make_unique<ParametricEQScene>(eq, scale);
    scene->window->SetBackgroundColor(skins::GetContentBackgroundColor());
    for (int step = 0; step < 100; ++step) {
        host.Advance(0.01);
        scene->window->AdvanceTime(0.01);
    }
    scene->window->RenderAll();
    const std::string name = std::string("parametric_eq_") + std::string(skins::GetSkinName(skin)) +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene->window->GetImage(), name));

    // Closing stops the feeding before the view goes; the carrier in flight ends.
    scene.reset();
    EXPECT_FALSE(eq->IsMeterActive());
    host.Advance(0.02);
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(eq->GetPostedMessageCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Looks, ParametricEQGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
