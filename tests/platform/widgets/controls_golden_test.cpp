// A gallery of the value controls in their usual states, rendered headless and compared with
// the goldens in tests/golden/ at 1x and 2x.
#include "golden_image.hpp"
#include "platform/panels/ui_divider.hpp"
#include "platform/panels/ui_outline_box_with_label.hpp"
#include "platform/panels/ui_static_text.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_disclosure_triangle_button.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_knob.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_radio_group.hpp"
#include "platform/widgets/ui_slider.hpp"
#include "platform/widgets/ui_text_button.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace qorui;

namespace {

template <class T, class... Args>
qorcore::IntrusivePtr<T> Place(UI_Node& parent, const RectT<float>& frame, Args... args) {
    auto node = qorcore::MakeIntrusive<T>(args...);
    node->SetFrame(frame);
    parent.ChildPushBack(node);
    return node;
}

struct Gallery {
    Gallery(float scale, skins::Skin skin) : look(skin), window(420, 260, scale) {
        window.SetBackgroundColor(skins::GetContentBackgroundColor());
        UI_Node& root = *window.GetRoot();

        // Buttons: normal, toggled on, disabled, pressed.
        Place<UI_TextButton>(root, {12, 12, 72, 22}, "Apply");
        Place<UI_ToggleButton>(root, {92, 12, 56, 22}, "Solo")->SetValue(1);
        Place<UI_TextButton>(root, {156, 12, 64, 22}, "Bypass")->SetDisabled(true);
        pressed = Place<UI_TextButton>(root, {228, 12, 60, 22}, "Reset");

        // Checks and radios.
        Place<UI_Checkbox>(root, {12, 44, 130, 18}, "Spline curves")->SetValue(true);
        Place<UI_Checkbox>(root, {12, 66, 150, 18}, "Use default settings");
        Place<UI_Checkbox>(root, {12, 88, 130, 18}, "Mixed")->SetValueUnknown();
        auto box = Place<UI_OutlineBoxWithLabel>(root, {170, 42, 130, 84}, "Precision");
        auto group = Place<UI_RadioGroup>(*box, {10, box->GetContentTop(), 112, 62});
        const char* names[] = {"Low", "Medium", "High"};
        for (int i = 0; i < 3; ++i) {
            auto radio = qorcore::MakeIntrusive<UI_RadioButton>(names[i]);
            radio->SetFrame({0, float(i) * 20, 112, 18});
            group->AddRadioButton(radio);
        }
        group->SetValue(1);
        Place<UI_DisclosureTriangleButton>(root, {12, 110, 120, 16}, "Advanced");
        Place<UI_DisclosureTriangleButton>(root, {12, 130, 120, 16}, "Open")->SetValue(1);

        // Sliders in three directions, one with the focus.
        const auto size = [](SliderDirection direction) {
            return UI_Slider::GetDefaultSize(direction);
        };
        Place<UI_Slider>(root, {12, 156, 180, size(kSliderDirectionHorizontalPointingDown)},
                         kSliderDirectionHorizontalPointingDown)
            ->SetValue(0.3);
        focused = Place<UI_Slider>(root, {12, 184, 180, size(kSliderDirectionHorizontal)},
                                   kSliderDirectionHorizontal);
        focused->SetValue(0.75);
        Place<UI_Slider>(root, {310, 12, size(kSliderDirectionVerticalPointingLeft), 120},
                         kSliderDirectionVerticalPointingLeft)
            ->SetValue(0.4);

        // Hot text numbers, a popup, a knob, a caption and a divider.
        Place<UI_StaticText>(root, {210, 140, 70, 18}, "Frequency:");
        auto number = Place<UI_HotTextNumber>(root, {280, 140, 90, 18});
        number->SetDecimalPlaces(1);
        number->SetTextLabel("Hz");
        number->SetValue(440);
        Place<UI_HotTextNumber>(root, {280, 160, 90, 18})->SetValueUnknown();
        auto popup = Place<UI_Popup>(root, {210, 184, 120, 22});
        popup->SetItems({"Hann", "Hamming", "Blackman"});
        popup->SetValue(1);
        Place<UI_Knob>(root, {350, 180, 40, 40})->SetValue(0.65);
        Place<UI_Divider>(root, {12, 226, 396, 9});
        Place<UI_StaticText>(root, {12, 238, 120, 18}, "A caption too long to show whole");
    }

    skins::ScopedSkin look;
    HeadlessWindow window;
    qorcore::IntrusivePtr<UI_TextButton> pressed;
    qorcore::IntrusivePtr<UI_Slider> focused;
};

class ControlsGolden : public ::testing::TestWithParam<std::tuple<float, skins::Skin>> {};

} // namespace

TEST_P(ControlsGolden, GalleryRendersLikeItsGolden) {
    const auto [scale, skin] = GetParam();
    Gallery gallery(scale, skin);
    gallery.pressed->SetDownState(true);
    ASSERT_TRUE(gallery.focused->UI_RequestFocus());
    gallery.window.Render();
    EXPECT_EQ(gallery.window.GetImage().GetPixelWidth(), int(420 * scale));
    const std::string name = std::string("controls_gallery_") +
                             std::string(skins::GetSkinName(skin)) + "_" +
                             std::to_string(int(scale)) + "x";
    EXPECT_TRUE(qafui_testing::MatchesGolden(gallery.window.GetImage(), name));
}

TEST_P(ControlsGolden, RedrawingOneControlMatchesAFullRepaint) {
    const auto [scale, skin] = GetParam();
    Gallery partial(scale, skin);
    partial.window.Render();
    partial.pressed->SetDownState(true);
    partial.focused->UI_RequestFocus();
    partial.focused->SetValue(0.2);
    partial.window.Render();

    Gallery full(scale, skin);
    full.pressed->SetDownState(true);
    full.focused->UI_RequestFocus();
    full.focused->SetValue(0.2);
    full.window.RenderAll();
    const auto& a = partial.window.GetImage();
    const auto& b = full.window.GetImage();
    int different = 0;
    for (int y = 0; y < a.GetPixelHeight(); ++y)
        for (int x = 0; x < a.GetPixelWidth(); ++x)
            different += a.GetRawPixel(x, y) != b.GetRawPixel(x, y);
    EXPECT_EQ(different, 0) << "every control invalidates what it changes";
}

INSTANTIATE_TEST_SUITE_P(Scales, ControlsGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(skins::Skin::kClassic,
                                                              skins::Skin::kV7)),
                         [](const auto& info) {
                             return std::string(skins::GetSkinName(std::get<1>(info.param))) +
                                    (std::get<0>(info.param) == 1.0f ? "_1x" : "_2x");
                         });
