// RulerSliderContainer: the slider's place for both looks and all text placements, the ruler's
// pixel range and tick extents taken from the slider's slideable rectangle, the sizes the
// container asks for, and the ticks as drawn.
#include "controls/fader_slider.hpp"
#include "controls/ruler_slider_container.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

using namespace qoraudiofiltersui;
using qorcore::IntrusivePtr;
using qorcore::MakeIntrusive;
using qorcore::RectT;
using qorui::skins::ScopedSkin;
using qorui::skins::Skin;

namespace {

IntrusivePtr<RulerSliderContainer> Make(qorui::SliderDirection direction) {
    auto container =
        MakeIntrusive<RulerSliderContainer>(MakeIntrusive<qorui::UI_Slider>(direction));
    container->SetSlideableDrawInsetPercent(0.3f);
    return container;
}

IntrusivePtr<qorui::LinearRuler> Ruler() {
    auto ruler = MakeIntrusive<qorui::LinearRuler>();
    ruler->SetValueRange(-12, 12);
    return ruler;
}

/// The first pixel, the last, and the major and minor tick extents.
std::array<int, 6> Geometry(const qorui::RulerBase& ruler) {
    return {ruler.GetPixel1(),
            ruler.GetPixel2(),
            ruler.GetMajorTickExtent().start,
            ruler.GetMajorTickExtent().end,
            ruler.GetMinorTickExtent().start,
            ruler.GetMinorTickExtent().end};
}

} // namespace

TEST(RulerSliderContainer, SizesFollowTheSliderTheRulerTextAndTheLook) {
    ScopedSkin classic(Skin::kClassic);
    auto pointed = Make(qorui::kSliderDirectionHorizontalPointingDown);
    auto plain = Make(qorui::kSliderDirectionVertical);
    auto fader = MakeIntrusive<RulerSliderContainer>(
        MakeIntrusive<FaderSlider>(qorui::kSliderDirectionVertical));
    EXPECT_EQ((std::array{pointed->GetSliderDefaultSize(), plain->GetSliderDefaultSize(),
                          fader->GetSliderDefaultSize(), pointed->GetBestSize()}),
              (std::array{20.0f, 16.0f, 18.0f, 20.0f}))
        << "no ruler, no room for numbers";
    pointed->SetRuler(Ruler(), kRulerPlacementLeftTop, kRulerTextPlacementNone);
    EXPECT_EQ(pointed->GetBestSize(), 20.0f) << "numbers hidden, nothing added";
    EXPECT_TRUE(pointed->GetRuler()->AreNumbersHidden());
    pointed->SetRulerTextPlacement(kRulerTextPlacementLeftTop);
    EXPECT_EQ(pointed->GetBestSize(), 30.0f);
    EXPECT_FALSE(pointed->GetRuler()->AreNumbersHidden());
    plain->SetRuler(Ruler(), kRulerPlacementBoth, kRulerTextPlacementRightBottom);
    EXPECT_EQ(plain->GetBestSize(), 36.0f);
    EXPECT_TRUE(plain->GetRuler()->IsVertical()) << "the ruler turns with the slider";
    ScopedSkin v7(Skin::kV7);
    EXPECT_EQ(std::pair(pointed->GetBestSize(), fader->GetBestSize()), std::pair(38.0f, 26.0f));
}

TEST(RulerSliderContainer, SliderRectangleInBothLooks) {
    auto h = Make(qorui::kSliderDirectionHorizontalPointingDown);
    auto v = Make(qorui::kSliderDirectionVerticalPointingRight);
    const struct {
        Skin skin;
        RulerSliderContainer* container;
        RulerTextPlacement text;
        RectT<float> bounds, slider;
    } cases[] = {
        {Skin::kClassic, h.get(), kRulerTextPlacementNone, {0, 0, 200, 30}, {6, 10, 188, 20}},
        {Skin::kClassic, h.get(), kRulerTextPlacementNone, {0, 0, 201, 31.5f}, {6, 11, 189, 20}},
        {Skin::kClassic, v.get(), kRulerTextPlacementNone, {0, 0, 41, 200}, {10, 8, 20, 184}},
        {Skin::kClassic, v.get(), kRulerTextPlacementLeftTop, {0, 0, 41, 200}, {21, 8, 20, 184}},
        {Skin::kClassic, v.get(), kRulerTextPlacementRightBottom, {0, 0, 41, 200}, {0, 8, 20, 184}},
        {Skin::kV7, h.get(), kRulerTextPlacementNone, {0, 0, 200, 38}, {6, 14, 188, 20}},
        {Skin::kV7, v.get(), kRulerTextPlacementRightBottom, {0, 0, 41, 200}, {4, 8, 20, 184}},
        {Skin::kV7, v.get(), kRulerTextPlacementLeftTop, {0, 0, 41, 200}, {17, 8, 20, 184}},
    };
    for (const auto& c : cases) {
        ScopedSkin look(c.skin);
        c.container->SetRulerTextPlacement(c.text);
        EXPECT_EQ(c.container->GetSliderRect(c.bounds), c.slider) << &c - cases;
    }
}

TEST(RulerSliderContainer, WithoutARulerOnlyTheSliderIsPlaced) {
    ScopedSkin classic(Skin::kClassic);
    auto container = Make(qorui::kSliderDirectionHorizontalPointingDown);
    container->SetFrame({0, 0, 200, 30});
    EXPECT_EQ(container->GetSlider()->GetFrame(), RectT<float>(6, 10, 188, 20));
    EXPECT_EQ(container->GetRuler(), nullptr);
    EXPECT_THROW(MakeIntrusive<RulerSliderContainer>(nullptr), qorcore::NullPointerException);
}

TEST(RulerSliderContainer, TheRulerSpansTheTravelAndItsTicksCrossTheGroove) {
    ScopedSkin classic(Skin::kClassic);
    auto container = Make(qorui::kSliderDirectionHorizontalPointingDown);
    auto ruler = Ruler();
    container->SetRuler(ruler, kRulerPlacementLeftTop, kRulerTextPlacementLeftTop);
    container->SetFrame({0, 0, 200, 30});
    // The slider at (6, 10) is 188 long; its thumb (11) travels from 5.5 for 177 pixels, and
    // the groove is the middle 8 of its 20 pixels: rows 16 to 24, middle 20.
    EXPECT_EQ(Geometry(*ruler), (std::array{11, 187, 16, 20, 16, 20}));
    container->SetRulerPlacement(kRulerPlacementRightBottom);
    EXPECT_EQ(Geometry(*ruler), (std::array{11, 187, 20, 22, 20, 20}));
    container->SetRulerPlacement(kRulerPlacementBoth);
    EXPECT_EQ(Geometry(*ruler), (std::array{11, 187, 16, 22, 16, 20}));
    // The ruler's first value lines up with the thumb at the slider's value 0.
    container->GetSlider()->SetValue(0.0);
    const float thumb0 = container->GetSlider()->GetDrawSliderParameters().GetThumbPosition() +
                         container->GetSlider()->GetFrame().x;
    EXPECT_EQ(std::floor(thumb0), float(ruler->GetPixelFromValue(-12)));
    {
        // The slider sits 4 above the bottom: groove rows 20 to 28; the majors stand out 4 above.
        ScopedSkin v7(Skin::kV7);
        container->SetFrame({0, 0, 200, 38});
        container->SetRulerPlacement(kRulerPlacementLeftTop);
        EXPECT_EQ(Geometry(*ruler), (std::array{11, 187, 16, 24, 20, 24}));
    }

    // Vertically: the slider at (20, 8), 20 by 184; groove columns 26 to 34; travel from 13.5
    // for 173 pixels.
    auto vertical = Make(qorui::kSliderDirectionVerticalPointingRight);
    auto upright = Ruler();
    vertical->SetRuler(upright, kRulerPlacementBoth, kRulerTextPlacementLeftTop);
    vertical->SetFrame({0, 0, 40, 200});
    EXPECT_EQ(vertical->GetSlider()->GetFrame(), RectT<float>(20, 8, 20, 184));
    EXPECT_EQ(Geometry(*upright), (std::array{13, 186, 26, 30, 26, 30}));
    vertical->SetRulerPlacement(kRulerPlacementRightBottom);
    EXPECT_EQ(std::pair(Geometry(*upright)[2], Geometry(*upright)[3]), std::pair(30, 30));
}

TEST(RulerSliderContainer, TooNarrowABoundsLeavesTheRulerAlone) {
    auto container = Make(qorui::kSliderDirectionHorizontalPointingDown);
    auto ruler = Ruler();
    container->SetRuler(ruler, kRulerPlacementLeftTop, kRulerTextPlacementLeftTop);
    ruler->SetPixelRange(-7, 77);
    ruler->SetMajorTickExtent(1, 2);
    ScopedSkin classic(Skin::kClassic);
    container->SetFrame({0, 0, 10, 30});
    EXPECT_EQ(container->GetSlider()->GetFrame().width, 0.0f) << "10 - 12 is no width";
    EXPECT_EQ((std::array{ruler->GetPixel1(), ruler->GetPixel2(), ruler->GetMajorTickExtent().start,
                          ruler->GetMajorTickExtent().end}),
              (std::array{-7, 77, 1, 2}));
}

TEST(RulerSliderContainer, ToolTipsReachTheSliderAndItsThumb) {
    auto container = Make(qorui::kSliderDirectionHorizontal);
    container->UI_SetToolTip("Output level");
    EXPECT_EQ(container->GetToolTipText(), "Output level");
    EXPECT_EQ(container->GetSlider()->GetToolTipText(), "Output level");
    EXPECT_EQ(container->GetSlider()->GetSliderThumb()->GetToolTipText(), "Output level");
}

TEST(RulerSliderContainer, TicksAreDrawnAcrossTheGrooveButNotOverTheThumb) {
    ScopedSkin classic(Skin::kClassic);
    qorui::HeadlessWindow window(220, 40);
    window.SetBackgroundColor({1, 1, 1, 1});
    auto container = Make(qorui::kSliderDirectionHorizontal);
    auto ruler = Ruler();
    ruler->SetColor(qorcore::ColorRGBA(1, 0, 0, 1));
    container->SetRuler(ruler, kRulerPlacementBoth, kRulerTextPlacementNone);
    container->SetFrame({0, 0, 200, 30});
    container->GetSlider()->SetValue(0.5); // the thumb covers the tick of 0
    window.AddNode(container);
    window.RenderAll();
    auto redAt = [&](double value, int y) {
        const qorcore::ColorRGBA c = window.GetPixel(ruler->GetPixelFromValue(value), y);
        return c.red > 0.8f && c.green < 0.4f && c.blue < 0.4f;
    };
    const int groove = ruler->GetMajorTickExtent().start + 1;
    const std::vector<double> majors = ruler->GetMajorValues();
    ASSERT_GE(majors.size(), 3u);
    ASSERT_NE(std::find(majors.begin(), majors.end(), 0.0), majors.end());
    EXPECT_TRUE(redAt(majors.front(), groove));
    EXPECT_TRUE(redAt(majors.back(), groove));
    EXPECT_FALSE(redAt(majors.front(), groove - 3)) << "above the ticks";
    EXPECT_FALSE(redAt(0, groove)) << "the thumb stays clear";
}
