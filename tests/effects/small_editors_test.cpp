#include "golden_image.hpp"

#include "effects/loudness_meter_proxy_editor_view.hpp"
#include "effects/vocal_enhancer_editor_view.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/hostui/audio_filter_view_factory_registrar.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/ui_radio_button.hpp"
#include "platform/widgets/ui_radio_group.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qoraudiofilterhost::ParameterDescriptor;
using qoraudiofilterhost::ParameterStoreFilter;
using qoraudiofilterhostui::AudioFilterViewFactoryRegistry;
using Kind = ParameterStoreFilter::CallKind;
namespace skins = qorui::skins;

namespace {

constexpr const char* kVocalEnhancer = "82882ADC-18CB-475B-B237-597576A5E707";
constexpr const char* kLoudnessMeter = "43F746B7-B34E-402B-8FB4-479CF3466264";

/// An editor made through the registry from its effect's GUID, in a headless window of its
/// size.
class RegisteredEditor {
public:
    RegisteredEditor(const char* guid, std::shared_ptr<ParameterStoreFilter> theFilter,
                     float scale = 1.0f)
        : supplier(scale), filter(std::move(theFilter)) {
        Initialize(&supplier);
        view = AudioFilterViewFactoryRegistry::Get().CreateEditor(guid, filter);
        if (!view)
            throw std::runtime_error("no editor");
        window = std::make_unique<qorui::HeadlessWindow>(view->GetFrame().width,
                                                         view->GetFrame().height, scale);
        window->AddNode(view);
    }
    ~RegisteredEditor() {
        window->GetRoot()->RemoveAllChildren();
        view.reset();
        Terminate();
    }

    qorui::UI_Node& Find(const char* id) {
        qorui::UI_Node* node = view->FindNodeByID(id);
        if (!node)
            throw std::runtime_error(std::string("no node ") + id);
        return *node;
    }
    void Click(const char* id) {
        auto& node = Find(id);
        const auto at = node.UI_LocalToGlobalF(
            qorcore::PointT<float>{node.GetFrame().width / 2, node.GetFrame().height / 2});
        window->Click(at.x, at.y);
    }

    qorui::penrig::CairoSupplier supplier;
    std::shared_ptr<ParameterStoreFilter> filter;
    qorcore::IntrusivePtr<qoraudiofilterhostui::AudioFilterEditorViewBase> view;
    std::unique_ptr<qorui::HeadlessWindow> window;
};

std::shared_ptr<ParameterStoreFilter> VocalEnhancerFilter() {
    return std::make_shared<ParameterStoreFilter>(
        std::vector<ParameterDescriptor>{{"Mode", 0.0f, 2.0f, 0.0f}});
}

TEST(VocalEnhancer, TheRegistryMakesItsOwnClassAndTheModeIsParameterZero) {
    ASSERT_TRUE(IsEditorClassBuilt(*FindEffect("VocalEnhancer")));
    RegisteredEditor editor(kVocalEnhancer, VocalEnhancerFilter());
    ASSERT_NE(dynamic_cast<VocalEnhancerEditorView*>(editor.view.get()), nullptr);
    auto& mode = dynamic_cast<qorui::UI_RadioGroup&>(editor.Find("Mode"));
    EXPECT_EQ(mode.GetValue(), 0.0);

    editor.Click("HighTone");
    EXPECT_FLOAT_EQ(editor.filter->GetParameterValue(0), 0.5f);
    ASSERT_EQ(editor.filter->GetCalls(Kind::kSetParameterValue).size(), 1u);
    EXPECT_TRUE(editor.filter->GetCalls(Kind::kBeginParameterEdit).empty())
        << "a radio group writes without a gesture";

    editor.filter->StoreValue(0, 1.0f);
    editor.window->AdvanceTime(0.01);
    EXPECT_EQ(mode.GetValue(), 2.0);
    EXPECT_TRUE(dynamic_cast<qorui::UI_RadioButton&>(editor.Find("Music")).IsChecked());
}

TEST(LoudnessMeterProxy, StandsInForTheMeterWithItsOneText) {
    RegisteredEditor editor(kLoudnessMeter, VocalEnhancerFilter());
    ASSERT_NE(dynamic_cast<LoudnessMeterProxyEditorView*>(editor.view.get()), nullptr);
    std::vector<std::string> texts;
    std::function<void(qorui::UI_Node&)> collect = [&](qorui::UI_Node& node) {
        if (auto* text = dynamic_cast<qorui::UI_StaticText*>(&node))
            texts.push_back(text->GetText());
        for (const auto& child : node.GetChildren())
            collect(*child);
    };
    collect(*editor.view);
    EXPECT_EQ(texts, std::vector<std::string>{
                         "The Loudness Radar is currently not available on this platform."});
}

class SmallEditorsGolden
    : public ::testing::TestWithParam<std::tuple<const char*, float, skins::Skin>> {};

TEST_P(SmallEditorsGolden, DrawLikeTheirGoldens) {
    const auto [guid, scale, skin] = GetParam();
    skins::ScopedSkin look(skin);
    RegisteredEditor editor(guid, VocalEnhancerFilter(), scale);
    editor.window->RenderAll();
    const std::string name =
        std::string(guid == kVocalEnhancer ? "vocal_enhancer_" : "loudness_meter_proxy_") +
        (skin == skins::Skin::kV7 ? "v7" : "classic") + (scale == 2.0f ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(editor.window->GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Editors, SmallEditorsGolden,
                         ::testing::Combine(::testing::Values(kVocalEnhancer, kLoudnessMeter),
                                            ::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)));

} // namespace
