// The flanger, chorus/flanger, phaser and latency generator editors: generic editors made by the
// registry from their scripts alone, on the reference effects. Every parameter goes through the
// sheet and back unchanged, each number field shows the value the effect decodes, the switches
// reach the effect, and each editor draws like its goldens.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "audio/dsp/flanger.hpp"
#include "audio/dsp/latency_generator.hpp"
#include "audio/host/reference_effects.hpp"
#include "controls/edit_number.hpp"
#include "framework/effect_catalogue.hpp"
#include "platform/skins/skins.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

using namespace qoraudiofiltersui;
using qafui_testing::EditorScene;
using HostView = qoraudiofilterhostui::AudioFilterEditorViewBase;
namespace skins = qorui::skins;

namespace {

constexpr float kRate = 48000.0f;

struct Editor {
    const char* effect;
    const char* golden;
    /// The number fields in parameter order, with the parameter each shows.
    std::vector<std::pair<const char*, int>> numbers;
    /// The parameters that are switches (0 or 1).
    std::vector<int> switches;
};

const std::vector<Editor>& Editors() {
    static const std::vector<Editor> editors{
        {"Flanger",
         "flanger",
         {{"Delay", 0},
          {"Depth", 1},
          {"Rate", 2},
          {"Feedback", 3},
          {"Mix", 4},
          {"StereoPhase", 5},
          {"OutputGain", 6}},
         {7, 8, 9}},
        {"ChorusFlanger",
         "chorus_flanger",
         {{"Voices", 1}, {"Depth", 2}, {"Rate", 3}, {"Mix", 4}},
         {0}},
        {"Phaser",
         "phaser",
         {{"Stages", 0},
          {"Frequency", 1},
          {"Depth", 2},
          {"Rate", 3},
          {"Feedback", 4},
          {"Phase", 5},
          {"Mix", 6},
          {"OutputGain", 7}},
         {8}},
        {"LatencyGenerator", "latency_generator", {{"Latency", 0}}, {1}},
    };
    return editors;
}

std::size_t CountEditNumbers(qorui::UI_Node& node) {
    std::size_t count = dynamic_cast<EditNumber*>(&node) ? 1 : 0;
    for (const auto& child : node.GetChildren())
        count += CountEditNumbers(*child);
    return count;
}

std::unique_ptr<EditorScene<HostView>>
Open(const std::string& effect, std::shared_ptr<qoraudiofilters::ReferenceEffect> filter,
     float scale = 1.0f) {
    const std::string guid = FindEffect(effect)->GetGuidText();
    return std::make_unique<EditorScene<HostView>>(guid.c_str(), std::move(filter), scale);
}

TEST(ModulationEditors, EveryParameterGoesThroughTheSheetAndBackAndShowsDecoded) {
    for (const Editor& e : Editors()) {
        SCOPED_TRACE(e.effect);
        auto effect = qafhost::CreateReferenceEffect(e.effect, kRate, 2);
        ASSERT_TRUE(effect);
        const int count = int(effect->GetParameterCount());
        // Off the grid of every field; switches on and off alternately.
        std::vector<float> before(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            float v = float(std::fmod(0.173 * (i + 1), 0.9) + 0.05);
            if (std::find(e.switches.begin(), e.switches.end(), i) != e.switches.end())
                v = float(i % 2);
            effect->StoreValue(i, v);
            before[std::size_t(i)] = v;
        }
        auto scene = Open(e.effect, effect);
        for (int tick = 0; tick < 5; ++tick)
            scene->Tick();
        EXPECT_EQ(CountEditNumbers(*scene->view), e.numbers.size());
        EXPECT_EQ(e.numbers.size() + e.switches.size(), std::size_t(count));
        for (int i = 0; i < count; ++i)
            EXPECT_NEAR(effect->GetParameterValue(i), before[std::size_t(i)], 2e-7)
                << "parameter " << i;
        for (const auto& [id, index] : e.numbers) {
            const double plain =
                effect->GetParameterInfo(index)->PlainFromNormalised(before[std::size_t(index)]);
            EXPECT_NEAR(scene->Find<EditNumber>(id).GetValue(), plain, 1e-4 * (1 + std::abs(plain)))
                << id;
        }
    }
}

TEST(ModulationEditors, SwitchesReachTheEffect) {
    auto flanger = qafhost::CreateReferenceEffect("Flanger", kRate, 2);
    {
        auto scene = Open("Flanger", flanger);
        scene->Click("Triangle");
        scene->Click("Invert");
        scene->Tick();
    }
    EXPECT_EQ(flanger->GetParameterValue(qoraudiofilters::Flanger::kTriangle), 1.0f);
    EXPECT_EQ(flanger->GetParameterValue(qoraudiofilters::Flanger::kInvert), 1.0f);

    auto generator = std::make_shared<qoraudiofilters::LatencyGenerator>(kRate, 2);
    auto scene = Open("LatencyGenerator", generator);
    scene->Click("CrashOnProcess");
    scene->Tick();
    std::vector<float> left(256, 0.5f), right(256, 0.5f);
    const float* in[2] = {left.data(), right.data()};
    float* out[2] = {left.data(), right.data()};
    generator->Process(in, out, 2, left.size());
    EXPECT_TRUE(generator->HasFailed()) << "the switch raises the effect's failure state";
    EXPECT_EQ(left.back(), 0.0f);
}

class ModulationEditorsGolden
    : public ::testing::TestWithParam<std::tuple<std::size_t, float, skins::Skin>> {};

TEST_P(ModulationEditorsGolden, DrawLikeTheirGoldens) {
    const auto [which, scale, skin] = GetParam();
    const Editor& e = Editors()[which];
    skins::ScopedSkin look(skin);
    auto scene = Open(e.effect, qafhost::CreateReferenceEffect(e.effect, kRate, 2), scale);
    scene->Tick();
    scene->window->RenderAll();
    const std::string name = std::string(e.golden) +
                             (skin == skins::Skin::kV7 ? "_v7" : "_classic") +
                             (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(scene->window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(
    Editors, ModulationEditorsGolden,
    ::testing::Combine(::testing::Range<std::size_t>(0, 4), ::testing::Values(1.0f, 2.0f),
                       ::testing::Values(skins::Skin::kClassic, skins::Skin::kV7)));

} // namespace
