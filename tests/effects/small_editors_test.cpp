// The vocal enhancer's editor and the loudness meter's stand-in, made through the registry, at
// work and against their goldens.
#include "fft_filter_scene.hpp"
#include "golden_image.hpp"

#include "effects/loudness_meter_proxy_editor_view.hpp"
#include "effects/vocal_enhancer_editor_view.hpp"
#include "framework/effect_catalogue.hpp"
#include "platform/skins/skins.hpp"
#include "platform/widgets/ui_radio_button.hpp"
#include "platform/widgets/ui_radio_group.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qafui_testing::EditorScene;
using qoraudiofilterhost::ParameterStoreFilter;
using Kind = ParameterStoreFilter::CallKind;
namespace skins = qorui::skins;

namespace {

constexpr const char* kVocalEnhancer = "82882ADC-18CB-475B-B237-597576A5E707";
constexpr const char* kLoudnessMeter = "43F746B7-B34E-402B-8FB4-479CF3466264";

std::shared_ptr<ParameterStoreFilter> ModeFilter() {
    return std::make_shared<ParameterStoreFilter>(
        std::vector<qoraudiofilterhost::ParameterDescriptor>{{"Mode", 0.0f, 2.0f, 0.0f}});
}

TEST(VocalEnhancer, TheRegistryMakesItsOwnClassAndTheModeIsParameterZero) {
    ASSERT_TRUE(IsEditorClassBuilt(*FindEffect("VocalEnhancer")));
    auto filter = ModeFilter();
    EditorScene<VocalEnhancerEditorView> editor(kVocalEnhancer, filter);
    auto& mode = editor.Find<qorui::UI_RadioGroup>("Mode");
    EXPECT_EQ(mode.GetValue(), 0.0);

    editor.Click("HighTone");
    EXPECT_FLOAT_EQ(filter->GetParameterValue(0), 0.5f);
    ASSERT_EQ(filter->GetCalls(Kind::kSetParameterValue).size(), 1u);
    EXPECT_TRUE(filter->GetCalls(Kind::kBeginParameterEdit).empty())
        << "a radio group writes without a gesture";

    filter->StoreValue(0, 1.0f);
    editor.Tick();
    EXPECT_EQ(mode.GetValue(), 2.0);
    EXPECT_TRUE(editor.Find<qorui::UI_RadioButton>("Music").IsChecked());
}

using HostView = qoraudiofilterhostui::AudioFilterEditorViewBase;

/// The proxy as a build without the loudness meter registers it.
qorcore::IntrusivePtr<HostView> MakeProxy(std::shared_ptr<qoraudiofilterhost::AudioFilter> filter) {
    return LoudnessMeterProxyEditorView::Create(std::move(filter));
}

TEST(LoudnessMeterProxy, StandsInForTheMeterWithItsOneText) {
    EditorScene<HostView> editor(MakeProxy, ModeFilter());
    EXPECT_EQ(qafui_testing::StaticTexts(*editor.view),
              std::vector<std::string>{
                  "The Loudness Radar is currently not available on this platform."});
}

class SmallEditorsGolden
    : public ::testing::TestWithParam<std::tuple<const char*, float, skins::Skin>> {};

TEST_P(SmallEditorsGolden, DrawLikeTheirGoldens) {
    const auto [guid, scale, skin] = GetParam();
    skins::ScopedSkin look(skin);
    auto editor = guid == kVocalEnhancer
                      ? std::make_unique<EditorScene<HostView>>(guid, ModeFilter(), scale)
                      : std::make_unique<EditorScene<HostView>>(MakeProxy, ModeFilter(), scale);
    editor->window->RenderAll();
    const std::string name =
        std::string(guid == kVocalEnhancer ? "vocal_enhancer_" : "loudness_meter_proxy_") +
        (skin == skins::Skin::kV7 ? "v7" : "classic") + (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(editor->window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Editors, SmallEditorsGolden,
                         ::testing::Combine(::testing::Values(kVocalEnhancer, kLoudnessMeter),
                                            ::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
