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

template <class T>
qorcore::IntrusivePtr<T> Place(UI_Node& parent, qorcore::IntrusivePtr<T> node,
                               const RectT<float>& frame) {
    node->SetFrame(frame);
    parent.ChildPushBack(node);
    return node;
}

struct Gallery {
    Gallery(float scale, skins::Skin skin) : look(skin), window(420, 260, scale) {
        window.SetBackgroundColor(skins::GetContentBackgroundColor());
        UI_Node& root = *window.GetRoot();

        // Buttons: normal, toggled on, disabled, pressed.
        Place(root, qorcore::MakeIntrusive<UI_TextButton>("Apply"), {12, 12, 72, 22});
        auto on = Place(root, qorcore::MakeIntrusive<UI_ToggleButton>("Solo"), {92, 12, 56, 22});
        on->SetValue(1);
        auto off = Place(root, qorcore::MakeIntrusive<UI_TextButton>("Bypass"), {156, 12, 64, 22});
        off->SetDisabled(true);
        pressed = Place(root, qorcore::MakeIntrusive<UI_TextButton>("Reset"), {228, 12, 60, 22});

        // Checks and radios.
        auto checked =
            Place(root, qorcore::MakeIntrusive<UI_Checkbox>("Spline curves"), {12, 44, 130, 18});
        checked->SetValue(true);
        Place(root, qorcore::MakeIntrusive<UI_Checkbox>("Use default settings"), {12, 66, 150, 18});
        auto mixed = Place(root, qorcore::MakeIntrusive<UI_Checkbox>("Mixed"), {12, 88, 130, 18});
        mixed->SetValueUnknown();
        auto box = Place(root, qorcore::MakeIntrusive<UI_OutlineBoxWithLabel>("Precision"),
                         {170, 42, 130, 84});
        auto group = Place(*box, qorcore::MakeIntrusive<UI_RadioGroup>(),
                           {10, box->GetContentTop(), 112, 62});
        const char* names[] = {"Low", "Medium", "High"};
        for (int i = 0; i < 3; ++i) {
            auto radio = qorcore::MakeIntrusive<UI_RadioButton>(names[i]);
            radio->SetFrame({0, float(i) * 20, 112, 18});
            group->AddRadioButton(radio);
        }
        group->SetValue(1);
        Place(root, qorcore::MakeIntrusive<UI_DisclosureTriangleButton>("Advanced"),
              {12, 110, 120, 16});
        auto open = Place(root, qorcore::MakeIntrusive<UI_DisclosureTriangleButton>("Open"),
                          {12, 130, 120, 16});
        open->SetValue(1);

        // Sliders in three directions, one with the focus.
        auto h = Place(
            root, qorcore::MakeIntrusive<UI_Slider>(kSliderDirectionHorizontalPointingDown),
            {12, 156, 180, UI_Slider::GetDefaultSize(kSliderDirectionHorizontalPointingDown)});
        h->SetValue(0.3);
        auto c = Place(root, qorcore::MakeIntrusive<UI_Slider>(kSliderDirectionHorizontal),
                       {12, 184, 180, UI_Slider::GetDefaultSize(kSliderDirectionHorizontal)});
        c->SetValue(0.75);
        focused = c;
        auto v =
            Place(root, qorcore::MakeIntrusive<UI_Slider>(kSliderDirectionVerticalPointingLeft),
                  {310, 12, UI_Slider::GetDefaultSize(kSliderDirectionVerticalPointingLeft), 120});
        v->SetValue(0.4);

        // Hot text numbers, a popup, a knob, a caption and a divider.
        Place(root, qorcore::MakeIntrusive<UI_StaticText>("Frequency:"), {210, 140, 70, 18});
        auto number = Place(root, qorcore::MakeIntrusive<UI_HotTextNumber>(), {280, 140, 90, 18});
        number->SetDecimalPlaces(1);
        number->SetTextLabel("Hz");
        number->SetValue(440);
        auto unknown = Place(root, qorcore::MakeIntrusive<UI_HotTextNumber>(), {280, 160, 90, 18});
        unknown->SetValueUnknown();
        auto popup = Place(root, qorcore::MakeIntrusive<UI_Popup>(), {210, 184, 120, 22});
        popup->SetItems({"Hann", "Hamming", "Blackman"});
        popup->SetValue(1);
        auto knob = Place(root, qorcore::MakeIntrusive<UI_Knob>(), {350, 180, 40, 40});
        knob->SetValue(0.65);
        Place(root, qorcore::MakeIntrusive<UI_Divider>(), {12, 226, 396, 9});
        Place(root, qorcore::MakeIntrusive<UI_StaticText>("A caption too long to show whole"),
              {12, 238, 120, 18});
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
