// The colour fields, a colour view and picture toggles in their usual states, rendered
// headless in both looks at 1x and 2x and compared with their goldens.
#include "controls/color_field.hpp"
#include "controls/color_view.hpp"
#include "controls/picture_toggle_button.hpp"
#include "golden_image.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qorcore::ColorRGBA;
using qorcore::IntrusivePtr;
using qorui::skins::Skin;

namespace {

template <class T>
IntrusivePtr<T> Place(qorui::UI_Node& parent, const qorcore::RectT<float>& frame) {
    auto node = qorcore::MakeIntrusive<T>();
    node->SetFrame(frame);
    parent.ChildPushBack(node);
    return node;
}

/// A toggle face: a ring, filled when on.
IntrusivePtr<qorui::penrig::Image> ToggleFace(const qorui::UI_Window& window, bool on) {
    auto image = window.GetDrawSupplier().CreateImage(18, 18);
    auto penrig = window.GetDrawSupplier().CreatePenrig(*image);
    const ColorRGBA ink(0.15f, 0.45f, 0.75f);
    penrig->NewPath();
    penrig->FormEllipse({2, 2, 14, 14});
    if (on) {
        penrig->SetColor(ink);
        penrig->Fill(true);
    }
    penrig->SetPen(1.5f, ink);
    penrig->Stroke();
    return image;
}

using GoldenParam = std::tuple<Skin, float>;

class ColorControlsGolden : public ::testing::TestWithParam<GoldenParam> {};

TEST_P(ColorControlsGolden, LooksLikeItsGolden) {
    const auto [skin, scale] = GetParam();
    qorui::skins::ScopedSkin look(skin);
    qorui::HeadlessWindow window(300, 84, scale);
    window.SetBackgroundColor(qorui::skins::GetContentBackgroundColor());
    qorui::UI_Node& root = *window.GetRoot();

    // Fields: plain; selectable, unselected and selected; slashed; unknown; disabled.
    Place<ColorField>(root, {10, 10, 36, 22})->SetValue({0.85f, 0.2f, 0.15f});
    auto selectable = Place<ColorField>(root, {54, 10, 36, 22});
    selectable->SetUserSelectable(true);
    selectable->SetValue({0.2f, 0.4f, 0.9f});
    auto selected = Place<ColorField>(root, {98, 10, 36, 22});
    selected->SetUserSelectable(true);
    selected->SetSelected(true);
    selected->SetValue({0.3f, 0.75f, 0.35f});
    auto slashed = Place<ColorField>(root, {142, 10, 36, 22});
    slashed->SetUserSelectable(true);
    slashed->SetSlashed(true);
    slashed->SetValue({0.95f, 0.85f, 0.3f});
    Place<ColorField>(root, {186, 10, 36, 22})->SetValueUnknown();
    auto disabled = Place<ColorField>(root, {230, 10, 36, 22});
    disabled->SetValue({0.6f, 0.2f, 0.7f});
    disabled->SetDisabled(true);

    // A tinted panel holding a field and the two toggle states.
    auto panel = Place<ColorView>(root, {10, 42, 160, 34});
    panel->SetValue({0.82f, 0.88f, 0.95f});
    Place<ColorField>(*panel, {6, 6, 30, 22})->SetValue({0.1f, 0.1f, 0.1f});
    for (int i = 0; i < 2; ++i) {
        auto toggle = Place<PictureToggleButton>(*panel, {50.0f + 26 * i, 6, 22, 22});
        toggle->SetImages(ToggleFace(window, false), ToggleFace(window, true));
        toggle->SetState(i == 1);
    }

    window.RenderAll();
    const std::string name = std::string("color_controls_") +
                             (skin == Skin::kClassic ? "classic" : "v7") + "_" +
                             std::to_string(int(scale)) + "x";
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(LooksAndScales, ColorControlsGolden,
                         ::testing::Combine(::testing::Values(Skin::kClassic, Skin::kV7),
                                            ::testing::Values(1.0f, 2.0f)));

} // namespace
