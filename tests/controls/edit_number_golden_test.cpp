// A gallery of edit numbers: every slider knob in both directions, every ruler type and
// placement, descriptions, inline units, a disabled, an unknown and a slider-less control,
// rendered headless in both looks at 1x and 2x and compared with tests/golden/edit_number_*.
#include "controls/edit_number.hpp"
#include "golden_image.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

using namespace qoraudiofiltersui;
using qorcore::IntrusivePtr;
using qorcore::MakeIntrusive;
using qorcore::RectT;
using qorui::skins::Skin;

namespace {

IntrusivePtr<qorui::RulerBase> MakeRuler(int type, double value1, double value2) {
    IntrusivePtr<qorui::RulerBase> ruler;
    switch (type) {
    case 1: ruler = MakeIntrusive<qorui::LinearRuler>(); break;
    case 2: {
        auto log = MakeIntrusive<qorui::LogRuler>();
        log->SetAbbreviateNumbers(true);
        ruler = log;
        break;
    }
    case 3: ruler = MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleLinear); break;
    default: ruler = MakeIntrusive<qorui::DecibelRuler>(qorui::DecibelRuler::kStyleFader); break;
    }
    ruler->SetValueRange(value1, value2);
    ruler->HideTruncatedStrings(true);
    return ruler;
}

struct Gallery {
    Gallery(float scale, Skin skin) : look(skin), window(760, 360, scale) {
        window.SetBackgroundColor(qorui::skins::GetContentBackgroundColor());

        // Horizontal controls, one knob and one ruler type each.
        auto gain = Add(true, true, kSliderKnobArrowUpLeft, {10, 10, 400, 40}, "Gain:", "dB");
        gain->SetMinMaxValue(-12, 12, 3);
        gain->SetRuler(MakeRuler(1, -12, 12), kRulerPlacementLeftTop, kRulerTextPlacementLeftTop);

        auto frequency =
            Add(true, true, kSliderKnobArrowDownRight, {10, 55, 400, 40}, "Frequency:", "Hz");
        frequency->SetSliderLogarithmic(true);
        frequency->SetDecimalPlaces(0);
        frequency->SetMinMaxValue(20, 20000, 1000);
        frequency->SetRuler(MakeRuler(2, 20, 20000), kRulerPlacementRightBottom,
                            kRulerTextPlacementLeftTop);

        auto threshold =
            Add(true, true, kSliderKnobArrowBidirectional, {10, 100, 400, 60}, "Threshold:", "dB");
        threshold->SetMinMaxValue(-60, 0, -18);
        threshold->SetRuler(MakeRuler(3, -60, 0), kRulerPlacementBoth, kRulerTextPlacementLeftTop);
        threshold->SetDescription1("Soft");
        threshold->SetDescription2("Hard");

        auto mix = Add(true, true, kSliderKnobSandwich, {10, 165, 400, 30}, "Mix:", "%");
        mix->SetUsesInline(true);
        mix->SetDecimalPlaces(0);
        mix->SetMinMaxValue(0, 100, 50);

        auto level = Add(true, true, kSliderKnobFader, {10, 200, 400, 40}, "Level:", "dB");
        level->SetSliderLogarithmic(true);
        level->SetSliderLogStyle(1);
        level->SetDecimalPlaces(1);
        level->SetMinMaxValue(-60, 15, 0);
        level->SetFaderSliderHue(200);
        level->SetRuler(MakeRuler(4, -60, 15), kRulerPlacementBoth, kRulerTextPlacementLeftTop);

        auto ratio = Add(true, true, kSliderKnobArrowUpLeft, {10, 245, 400, 30}, "Ratio:", ":1");
        ratio->SetMinMaxValue(1, 20, 4);
        ratio->SetDisabled(true);

        auto delay =
            Add(true, true, kSliderKnobArrowBidirectional, {10, 280, 400, 30}, "Delay:", "ms");
        delay->SetMinMaxValue(0, 500, 20);
        delay->SetValueUnknown();

        auto order =
            Add(true, false, kSliderKnobArrowUpLeft, {10, 315, 200, 30}, "Order:", "poles");
        order->SetDecimalPlaces(0);
        order->SetMinMaxValue(1, 12, 6);

        // Vertical controls, with the numbers on either side.
        auto a = Add(false, true, kSliderKnobArrowUpLeft, {0, 0, 50, 300}, "Low", "dB");
        a->SetInvertSlider(true);
        a->SetMinMaxValue(-12, 12, 6);
        a->SetRuler(MakeRuler(1, 12, -12), kRulerPlacementLeftTop, kRulerTextPlacementLeftTop);

        auto b = Add(false, true, kSliderKnobArrowDownRight, {0, 0, 50, 300}, "Freq", "Hz");
        b->SetSliderLogarithmic(true);
        b->SetDecimalPlaces(0);
        b->SetMinMaxValue(20, 20000, 440);
        b->SetRuler(MakeRuler(2, 20, 20000), kRulerPlacementRightBottom,
                    kRulerTextPlacementRightBottom);

        auto c = Add(false, true, kSliderKnobArrowBidirectional, {0, 0, 50, 300}, "Thr", "dB");
        c->SetInvertSlider(true);
        c->SetMinMaxValue(-60, 0, -24);
        c->SetRuler(MakeRuler(3, 0, -60), kRulerPlacementBoth, kRulerTextPlacementLeftTop);

        auto d = Add(false, true, kSliderKnobSandwich, {0, 0, 50, 300}, "Pan", "");
        d->SetMinMaxValue(-100, 100, 25);
        d->SetDecimalPlaces(0);

        auto e = Add(false, true, kSliderKnobFader, {0, 0, 50, 300}, "Out", "dB");
        e->SetSliderLogarithmic(true);
        e->SetSliderLogStyle(1);
        e->SetInvertSlider(true);
        e->SetDecimalPlaces(1);
        e->SetMinMaxValue(-60, 15, -6);
        e->SetFaderSliderHue(30);
        e->SetRuler(MakeRuler(4, 15, -60), kRulerPlacementBoth, kRulerTextPlacementLeftTop);

        // Side by side, each as wide as it asks to be.
        float x = 430;
        for (EditNumber* vertical : {a.get(), b.get(), c.get(), d.get(), e.get()}) {
            const float width = vertical->UI_GetRecommendedSize().x;
            vertical->SetFrame({x, 10, width, 300});
            x += width + 8;
        }
    }

    IntrusivePtr<EditNumber> Add(bool horizontal, bool slider, SliderKnob knob,
                                 const RectT<float>& frame, const std::string& label,
                                 const std::string& unit) {
        auto control = MakeIntrusive<EditNumber>(horizontal, true, slider, !horizontal, knob);
        control->SetLabel(label);
        control->SetUnitLabel(unit);
        control->SetFrame(frame);
        window.AddNode(control);
        return control;
    }

    qorui::skins::ScopedSkin look;
    qorui::HeadlessWindow window;
};

class EditNumberGolden : public ::testing::TestWithParam<std::tuple<float, Skin>> {};

} // namespace

TEST_P(EditNumberGolden, GalleryRendersLikeItsGolden) {
    const auto [scale, skin] = GetParam();
    Gallery gallery(scale, skin);
    gallery.window.Render();
    const std::string name = std::string("edit_number_") +
                             std::string(qorui::skins::GetSkinName(skin)) + "_" +
                             std::to_string(int(scale)) + "x";
    EXPECT_TRUE(qafui_testing::MatchesGolden(gallery.window.GetImage(), name));
}

INSTANTIATE_TEST_SUITE_P(Scales, EditNumberGolden,
                         ::testing::Combine(::testing::Values(1.0f, 2.0f),
                                            ::testing::Values(Skin::kClassic, Skin::kV7)),
                         [](const auto& info) {
                             return std::string(
                                        qorui::skins::GetSkinName(std::get<1>(info.param))) +
                                    (std::get<0>(info.param) == 1.0f ? "_1x" : "_2x");
                         });
