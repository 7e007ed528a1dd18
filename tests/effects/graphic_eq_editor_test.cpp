// The graphic equalisers' generic editors, made by the registry from their scripts over the
// reference equaliser: every parameter through the sheet and back, a fader moved with the mouse,
// and the 10- and 30-band editors against their goldens.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/graphic_eq.hpp"
#include "controls/edit_number.hpp"
#include "platform/skins/skins.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <tuple>

using qafui_testing::EditorScene;
using qoraudiofilters::GraphicEQ;
using HostView = qoraudiofilterhostui::AudioFilterEditorViewBase;
using Kind = qoraudiofilterhost::ParameterStoreFilter::CallKind;
namespace skins = qorui::skins;

namespace {

const char* Guid(int bands) {
    switch (bands) {
    case 10: return "3792D46F-5036-4BE6-AB5A-177622246A5D";
    case 20: return "0E133EF5-2371-48DB-9B72-B4C441460391";
    default: return "C6BA8ED5-E0D5-4ED9-A209-08ADEC9B18A9";
    }
}

class GraphicEQEditor : public ::testing::TestWithParam<int> {};

TEST_P(GraphicEQEditor, EveryParameterGoesThroughTheSheetAndBackUnchanged) {
    auto eq = std::make_shared<GraphicEQ>(GetParam());
    const int count = eq->GetParameterCount();
    ASSERT_EQ(count, GetParam() + 4);
    // Values off the grid of any control; the bypass on, so that its output encodes too.
    for (int i = 0; i < count; ++i)
        eq->StoreValue(i, float(std::fmod(0.137 * (i + 1), 0.9) + 0.05));
    eq->StoreValue(eq->BypassIndex(), 1.0f);
    std::vector<float> before(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        before[std::size_t(i)] = eq->GetParameterValue(i);
    EditorScene<HostView> scene(Guid(GetParam()), eq);
    for (int tick = 0; tick < 5; ++tick)
        scene.Tick();
    for (int i = 0; i < count; ++i)
        EXPECT_NEAR(eq->GetParameterValue(i), before[std::size_t(i)], 2e-7) << "parameter " << i;
    // The faders show the decoded gains.
    for (int b = 0; b < GetParam(); ++b)
        EXPECT_NEAR(scene.Find<qoraudiofiltersui::EditNumber>(("Band" + std::to_string(b)).c_str())
                        .GetValue(),
                    before[std::size_t(b)] * 48.0 - 24.0, 1e-4);
}

TEST_P(GraphicEQEditor, AFaderDraggedUpWritesItsBandsGain) {
    auto eq = std::make_shared<GraphicEQ>(GetParam());
    EditorScene<HostView> scene(Guid(GetParam()), eq);
    const int band = GetParam() / 2;
    auto& fader =
        scene.Find<qoraudiofiltersui::EditNumber>(("Band" + std::to_string(band)).c_str());
    // The knob sits at 0 dB, half way up the slider, which starts at the fader's top.
    const auto from = fader.UI_LocalToGlobalF({fader.GetFrame().width / 2, 90.0f});
    scene.window->MouseDown(from.x, from.y);
    for (int step = 1; step <= 6; ++step)
        scene.window->MouseMove(from.x, from.y - 10.0f * float(step));
    scene.window->MouseUp(from.x, from.y - 60.0f);
    scene.Tick();
    const double written = eq->GetParameterValue(band) * 48.0 - 24.0;
    EXPECT_GT(written, 5.0) << "a third of the slider's 180 pixels is 16 dB";
    EXPECT_NEAR(written, fader.GetValue(), 1e-4);
    EXPECT_FALSE(eq->GetCalls(Kind::kBeginParameterEdit).empty());
    for (int b = 0; b < GetParam(); ++b) {
        if (b == band)
            continue;
        EXPECT_EQ(eq->GetParameterValue(b), 0.5f) << "band " << b;
    }
}

INSTANTIATE_TEST_SUITE_P(Counts, GraphicEQEditor, ::testing::Values(10, 20, 30));

class GraphicEQEditorGolden : public ::testing::TestWithParam<std::tuple<int, float, skins::Skin>> {
};

TEST_P(GraphicEQEditorGolden, DrawsLikeItsGolden) {
    const auto [bands, scale, skin] = GetParam();
    skins::ScopedSkin look(skin);
    auto eq = std::make_shared<GraphicEQ>(bands);
    // A recognisable setting: a smile with the lowest band cut.
    for (int b = 0; b < bands; ++b) {
        const double x = 2.0 * b / (bands - 1) - 1.0;
        eq->StoreValue(b, float((12.0 * x * x - 4.0 + 24.0) / 48.0));
    }
    eq->StoreValue(0, float((-9.0 + 24.0) / 48.0));
    EditorScene<HostView> scene(Guid(bands), eq, scale);
    scene.Tick();
    scene.window->RenderAll();
    const std::string name = "graphic_eq_" + std::to_string(bands) + "_" +
                             (skin == skins::Skin::kV7 ? "v7" : "classic") +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene.window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(
    Editors, GraphicEQEditorGolden,
    ::testing::Combine(::testing::Values(10, 30), ::testing::Values(1.0f, 2.0f),
                       ::testing::Values(skins::Skin::kClassic, skins::Skin::kV7)));

} // namespace
