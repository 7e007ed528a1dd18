// The Dynamics editor on the reference processor: the curve buttons and their enabling, the list
// following the curve in place, points past the count kept, look-ahead and band edges held while
// the effect runs, the fill drawn from the filter's curve up to the live input level, the
// gain-reduction meter showing the reduction measured while open and quiet after close, and both
// looks against goldens.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/dynamics.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "controls/compressor_expander_list.hpp"
#include "controls/edit_number.hpp"
#include "effects/dynamics_editor_view.hpp"
#include "graphs/curve_editor.hpp"
#include "platform/core/main_thread_queue.hpp"
#include "platform/dialogs/curve_point_edit_dialog.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/modal_testing.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "sheet/sheet.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using qoraudiofilters::Dynamics;
namespace skins = qorui::skins;

namespace {

constexpr float kRate = 48000.0f;

/// The processor, counting what the editor asks of its curve.
class CountingDynamics : public Dynamics {
public:
    CountingDynamics() : Dynamics(kRate, 2) {}
    int GetResponseCurve(int channel, int count, std::vector<float>& out) override {
        ++asked;
        return Dynamics::GetResponseCurve(channel, count, out);
    }
    int asked = 0;
};

void SetPoints(Dynamics& fx, const std::vector<std::pair<double, double>>& points) {
    fx.StoreValue(Dynamics::kPointCount, float(points.size()) / 7.0f);
    for (std::size_t i = 0; i < points.size(); ++i) {
        fx.StoreValue(Dynamics::PointInputIndex(int(i)), float(points[i].first / 100 + 1));
        fx.StoreValue(Dynamics::PointOutputIndex(int(i)), float(points[i].second / 100 + 1));
    }
    fx.UpdateFromParameters();
}

class DynamicsScene : public qafui_testing::EditorScene<DynamicsEditorView> {
public:
    explicit DynamicsScene(std::shared_ptr<Dynamics> theFx, float scale = 1.0f)
        : EditorScene("F76DAD9C-77DA-477A-9939-EEFEFC5C23BD", theFx, scale), fx(theFx) {}

    CurveEditor& Curve() const { return *view->GetCurveEditor(); }
    const DynamicsCurveContentLayer& Fill() const { return *view->GetFillLayer(); }
    bool Enabled(const char* id) const { return Find(id).IsEnabledInTree(); }
    float Value(int index) const { return fx->GetParameterValue(index); }
    /// The values of the points' parameters from `first` on.
    std::vector<float> Values(int first) const {
        std::vector<float> values;
        for (int index = first; index < Dynamics::kMakeUpGain; ++index)
            values.push_back(Value(index));
        return values;
    }
    std::vector<std::string> Types() const {
        std::vector<std::string> types;
        for (const auto& row : Find<CompressorExpanderList>("CompressorExpanderList").GetRows())
            types.push_back(row.type);
        return types;
    }
    /// Writes a cell as its control would.
    void Write(const char* cell, double value) {
        view->GetSheet()->set(vorlen::name_t(cell), vorlen::any_regular_t(value));
        view->GetSheet()->update();
        Tick();
    }
    /// Plays a 1 kHz sine at a peak level through the processor, the window ticking along, and
    /// measures the gain of the last block.
    void Play(double peak, double seconds) {
        std::vector<float> left(480), right(480);
        const double amplitude = peak > -300.0 ? std::pow(10.0, peak / 20) : 0.0;
        for (int tick = 0; tick < int(seconds * 100); ++tick, position += 480) {
            for (std::size_t i = 0; i < 480; ++i)
                left[i] = right[i] =
                    float(amplitude * std::sin(std::numbers::pi * double(position + i) / 24));
            float* channels[] = {left.data(), right.data()};
            fx->ProcessPostedMessages();
            if (!fx->IsSuspended())
                fx->Process(channels, channels, 2, 480);
            Tick();
        }
        if (amplitude > 0.0)
            measured = 20 * std::log10(*std::max_element(left.begin(), left.end()) / amplitude);
    }

    std::shared_ptr<Dynamics> fx;
    std::size_t position = 0;
    double measured = 0.0;
};

TEST(DynamicsEditor, CurveButtonsAddDeleteInvertAndResetThroughTheSheet) {
    auto fx = std::make_shared<Dynamics>(kRate, 2);
    SetPoints(*fx, {{-100, -100}, {-40, -20}, {0, 0}});
    DynamicsScene scene(fx);
    EXPECT_TRUE(scene.Enabled("AddPointButton"));
    EXPECT_FALSE(scene.Enabled("DeletePointButton")) << "nothing selected";

    // Invert mirrors the inner point; the list's rows change their texts in place.
    EXPECT_EQ(scene.Types(), (std::vector<std::string>{"Compressor", "Expander"}));
    auto* tree = scene.Find<CompressorExpanderList>("CompressorExpanderList").GetTree();
    const auto* firstRow = tree->GetRowAt(0);
    scene.Click("InvertButton");
    EXPECT_EQ(scene.Value(Dynamics::PointInputIndex(1)), 0.8f);
    EXPECT_EQ(scene.Value(Dynamics::PointOutputIndex(1)), 0.6f);
    EXPECT_EQ(scene.Types(), (std::vector<std::string>{"Expander", "Compressor"}));
    EXPECT_EQ(tree->GetRowAt(0), firstRow);

    // Up to seven points, each asked for in the point dialog; then adding is disabled.
    std::size_t asked = 0;
    const qorui::testing::ScopedModalResponder dialogs([&asked](qorui::UI_ModalOverlay& overlay) {
        if (auto* dialog = dynamic_cast<qormediaui::CurvePointEditDialog*>(&overlay)) {
            dialog->GetHotTextNumber1()->SetValue(-90.0 + 10.0 * double(asked));
            dialog->GetHotTextNumber2()->SetValue(-90.0 + 10.0 * double(asked++));
            dialog->PressButton(qormediaui::CurvePointEditDialog::kResponseAccept);
        }
    });
    for (int count = 4; count <= 7; ++count) {
        scene.Click("AddPointButton");
        scene.Tick();
        EXPECT_EQ(scene.Value(Dynamics::kPointCount), float(count) / 7.0f);
    }
    EXPECT_FALSE(scene.Enabled("AddPointButton"));
    scene.Click("AddPointButton");
    EXPECT_EQ(asked, 4u);
    EXPECT_EQ(scene.Value(Dynamics::PointInputIndex(4)), 0.4f) << "-60 dB, in order";

    // Node 0 can't be deleted; another can, which enables adding again.
    scene.Curve().SetSelectedNode(0);
    EXPECT_FALSE(scene.Enabled("DeletePointButton"));
    scene.Curve().SetSelectedNode(2);
    scene.Click("DeletePointButton");
    scene.Tick();
    EXPECT_EQ(scene.Value(Dynamics::kPointCount), 6.0f / 7.0f);
    EXPECT_TRUE(scene.Enabled("AddPointButton"));

    // Reset is the script's: three points on the diagonal; those past them keep their values.
    const std::vector<float> kept = scene.Values(Dynamics::PointInputIndex(3));
    scene.Click("ResetButton");
    scene.Tick();
    EXPECT_EQ(scene.Value(Dynamics::kPointCount), 3.0f / 7.0f);
    EXPECT_EQ(scene.Value(Dynamics::PointOutputIndex(1)), 0.8f);
    EXPECT_EQ(scene.Types(), (std::vector<std::string>{"Neutral", "Neutral"}));
    EXPECT_EQ(scene.Values(Dynamics::PointInputIndex(3)), kept);
}

TEST(DynamicsEditor, LookAheadAndBandEdgesWriteOnlyWhileSuspended) {
    using Row = std::tuple<const char*, const char*, int, double, double>;
    const Row rows[] = {{"look_ahead_time", "LookAheadTime", 4, 100.0, 0.2},
                        {"low_frequency", "LowCutoff", 7, 2418.0, 0.1},
                        {"high_frequency", "HighCutoff", 8, 12010.0, 0.5}};
    DynamicsScene scene(std::make_shared<Dynamics>(kRate, 2));
    for (bool suspended : {false, true}) {
        scene.fx->SetSuspended(suspended);
        scene.Tick();
        for (const auto& [cell, control, index, value, normalised] : rows) {
            SCOPED_TRACE(cell);
            const float stored = scene.Value(index);
            EditNumber& number = scene.Find<EditNumber>(control);
            const double shown = number.GetValue();
            EXPECT_EQ(number.IsDisabled(), !suspended);
            scene.Write(cell, value);
            // Running, the parameter stays and the control returns to it.
            EXPECT_NEAR(scene.Value(index), suspended ? normalised : stored, 1e-6);
            EXPECT_NEAR(number.GetValue(), suspended ? value : shown, 1e-3);
        }
    }
    EXPECT_EQ(scene.fx->GetLatencySamples(), 4800u);
}

TEST(DynamicsEditor, TheFillIsTheFiltersCurveUpToTheLiveLevelAndTheMeterTheReduction) {
    auto fx = std::make_shared<CountingDynamics>();
    // The detector holds the peaks; the gain lets go within 50 ms.
    fx->StoreValue(Dynamics::kParameterIndex_AttackTime, 0.0f);
    fx->StoreValue(Dynamics::kParameterIndex_EnvelopeGainReleaseTime, 0.025f);
    auto scene = std::make_unique<DynamicsScene>(fx);
    const auto content = scene->Curve().GetContentRect();
    ASSERT_EQ(scene->Fill().GetCurve().size(), std::size_t(2 * content.width));
    const int asked = fx->asked;
    scene->Play(-300.0, 0.2);
    EXPECT_EQ(fx->asked, asked) << "nothing changed";
    EXPECT_LE(scene->Fill().GetLevelPosition(), content.x) << "silence reads -300 dB";

    // 4:1 above -40 dB, asked for once; value i of n lies at -100 + 100 i / n dB.
    SetPoints(*fx, {{-100, -100}, {-40, -40}, {0, -30}});
    scene->Tick();
    EXPECT_EQ(fx->asked, asked + 1);
    const std::vector<float>& curve = scene->Fill().GetCurve();
    for (std::size_t i = 0; i < curve.size(); i += 37) {
        const double level = -100.0 + 100.0 * double(i) / double(curve.size());
        const double out = level <= -40 ? level : -40 + (level + 40) / 4;
        EXPECT_NEAR(curve[i], scene->Curve().GetPixelForVerticalValue(out), 0.01) << level;
    }
    for (double peak : {-30.0, -10.0, -60.0}) {
        SCOPED_TRACE(peak);
        scene->Play(peak, 1.0);
        EXPECT_NEAR(scene->Fill().GetLevelPosition(),
                    scene->Curve().GetPixelForHorizontalValue(peak), 0.5);
        EXPECT_NEAR(scene->measured, -(std::max(peak, -40.0) + 40) * 0.75, 0.2);
        EXPECT_NEAR(scene->view->GetMeter()->GetLevelDB(0), scene->measured, 0.2);
    }
    fx->SetSuspended(true);
    scene->Play(-10.0, 0.1);
    EXPECT_EQ(scene->Fill().GetLevelPosition(), 0.0f) << "suspended";

    // A content without width asks nothing.
    const auto frame = scene->Curve().GetFrame();
    const auto empty = scene->Curve().GetSizeForContentSize({0.0f, content.height});
    scene->Curve().SetFrame({frame.x, frame.y, empty.x, frame.height});
    ASSERT_EQ(scene->Curve().GetContentRect().width, 0.0f);
    fx->SetParameterValue(Dynamics::kMakeUpGain, 0.25f);
    scene->Tick();
    EXPECT_EQ(fx->asked, asked + 1);

    // Closing ends the deliveries: the message in flight stops posting itself.
    scene.reset();
    fx->ProcessPostedMessages();
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(fx->GetPostedMessageCount(), 0u);
}

class DynamicsGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {};

TEST_P(DynamicsGolden, ACompressorOverTheLiveProgrammeDrawsLikeItsGolden) {
    const auto [scale, skin] = GetParam();
    const skins::ScopedSkin look(skin);
    auto fx = std::make_shared<Dynamics>(kRate, 2);
    SetPoints(*fx, {{-100, -100}, {-60, -55}, {-30, -30}, {0, -16}});
    fx->SetParameterValue(Dynamics::kParameterIndex_Splines, 1.0f);
    fx->SetParameterValue(Dynamics::kMakeUpGain, 0.06f);
    qafhost::ProcessHost host(fx, {512, qafhost::ProcessHost::Clock::kVirtual, {}});
    host.SetSource(std::make_unique<qafhost::TestSignalSource>(
        qafhost::TestSignalSource::Kind::kMix, kRate, 2));
    DynamicsScene scene(fx, scale);
    scene.window->SetBackgroundColor(skins::GetContentBackgroundColor());
    for (int step = 0; step < 100; ++step) {
        host.Advance(0.01);
        scene.window->AdvanceTime(0.01);
    }
    scene.window->RenderAll();
    const std::string name = std::string("dynamics_") + std::string(skins::GetSkinName(skin)) +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Looks, DynamicsGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
