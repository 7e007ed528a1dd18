// Level meters: peaks that hold and fall on the window's virtual clock, valleys, latching clip
// indicators, gain reduction from the top, channel groups, and golden images of both looks.
#include "golden_image.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/ui_level_meter_view.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

using namespace qorui;

namespace {

constexpr float kMinus6 = -6.0206f; // 20 log10(0.5)

// A one-channel vertical meter at (10, 10) from -60 to 0 dB, 1.5 s hold, 20 dB/s fall, no ruler.
class LevelMeterTest : public ::testing::Test {
protected:
    void Make(LevelMeterKind kind = LevelMeterKind::kInput) {
        meter = qorcore::MakeIntrusive<UI_LevelMeterView>(1, LevelMeterOrientation::kVertical, kind,
                                                          20.0f, 125.0f);
        meter->SetPosition(10, 10);
        meter->SetShowRuler(false);
        window.AddNode(meter);
    }
    // Whether the pixel is brighter than the meter's dark track.
    bool Lit(float x, float y) {
        const auto c = window.GetPixel(int(x), int(y));
        return c.red + c.green + c.blue > 0.9f;
    }
    // The middle of the channel, across, in window coordinates.
    float CentreX() { return 10 + meter->GetChannelRect(0).x + meter->GetChannelRect(0).width / 2; }

    HeadlessWindow window{60, 150};
    IntrusivePtr<UI_LevelMeterView> meter;
};

TEST_F(LevelMeterTest, PeaksHoldThenFallOnTheVirtualClock) {
    Make();
    meter->SetLevel(0.5f, true);
    meter->SetLevel(0.01f, true); // -40 dB
    EXPECT_NEAR(meter->GetLevelDB(0), -40.0f, 1e-3);
    EXPECT_NEAR(meter->GetPeakDB(0), kMinus6, 1e-3);

    window.RenderAll();
    const float cx = CentreX();
    auto yOf = [&](float dB) {
        return 10 + meter->GetBarRect(0, dB).y;
    };
    EXPECT_TRUE(Lit(cx, yOf(kMinus6) + 0.5f)) << "peak mark at -6 dB";
    EXPECT_FALSE(Lit(cx, yOf(-20.0f))) << "nothing between the peak and the level";
    EXPECT_TRUE(Lit(cx, yOf(-45.0f))) << "the bar up to -40 dB";

    window.AdvanceTime(1.0); // still holding
    EXPECT_NEAR(meter->GetPeakDB(0), kMinus6, 1e-3);
    window.AdvanceTime(1.0); // 0.5 s of falling at 20 dB/s
    EXPECT_NEAR(meter->GetPeakDB(0), kMinus6 - 10.0f, 0.05);
    window.Render();
    EXPECT_FALSE(Lit(cx, yOf(kMinus6) + 0.5f)) << "the mark left its old place";
    EXPECT_TRUE(Lit(cx, yOf(kMinus6 - 10.0f) + 0.5f)) << "and was redrawn by the timer";

    window.AdvanceTime(5.0); // down to the level, where it rests
    EXPECT_NEAR(meter->GetPeakDB(0), -40.0f, 1e-3);
    EXPECT_EQ(window.GetTimerCount(), 0u) << "no timer once the marks are settled";

    // A louder level takes the mark up at once and restarts the hold.
    meter->SetLevel(0.5f);
    meter->SetLevel(0.1f);
    EXPECT_NEAR(meter->GetPeakDB(0), kMinus6, 1e-3);
    EXPECT_EQ(window.GetTimerCount(), 1u);
    meter->ResetPeaksAndValleys();
    EXPECT_NEAR(meter->GetPeakDB(0), -20.0f, 1e-3);
}

TEST_F(LevelMeterTest, ValleysRiseBackAndNoLevelEmptiesTheBar) {
    Make();
    meter->SetShowValley(true);
    meter->SetLevel(0.1f);   // -20
    meter->SetLevel(0.001f); // -60
    meter->SetLevel(0.1f);
    EXPECT_NEAR(meter->GetValleyDB(0), -60.0f, 1e-3);
    window.AdvanceTime(2.0); // hold 1.5, then 0.5 s at 20 dB/s
    EXPECT_NEAR(meter->GetValleyDB(0), -50.0f, 0.05);
    window.AdvanceTime(3.0);
    EXPECT_NEAR(meter->GetValleyDB(0), -20.0f, 1e-3);

    // Not-a-number is no level: the bar goes empty while the peak stays.
    meter->SetLevel(std::nanf(""), true);
    EXPECT_FLOAT_EQ(meter->GetLevelDB(0), -60.0f);
    EXPECT_EQ(meter->GetBarRect(0, meter->GetLevelDB(0)).height, 0.0f);
    // A negative amplitude (a layout's -99 placeholder) shows as silence.
    meter->SetLevel(-99.0f, true);
    EXPECT_FLOAT_EQ(meter->GetLevelDB(0), -60.0f);
    // Levels above the range are pinned to its top.
    meter->SetLevel(4.0f);
    EXPECT_FLOAT_EQ(meter->GetLevelDB(0), 0.0f);
}

TEST_F(LevelMeterTest, ClipIndicatorsLatchUntilResetOrClicked) {
    Make();
    int changes = 0;
    bool last = false;
    auto connection = meter->GetClipStateChangedSignal().Connect([&](bool any) {
        ++changes;
        last = any;
    });
    meter->SetLevel(0.9f);
    EXPECT_FALSE(meter->IsClipped(0));
    meter->SetLevel(1.0f); // at the reference level
    meter->SetLevel(0.2f);
    EXPECT_TRUE(meter->IsClipped(0)) << "latched after the level fell";
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(last);

    window.RenderAll();
    const RectT<float> clip = meter->GetClipIndicatorRect(0);
    const auto on = window.GetPixel(int(10 + clip.x + clip.width / 2), int(10 + clip.y + 2));
    EXPECT_GT(on.red, 0.8f);
    EXPECT_LT(on.green, 0.4f);

    meter->ResetClippedStates();
    EXPECT_FALSE(meter->IsAnyClipped());
    EXPECT_EQ(changes, 2);
    EXPECT_FALSE(last);
    window.Render();
    EXPECT_LT(window.GetPixel(int(10 + clip.x + clip.width / 2), int(10 + clip.y + 2)).red, 0.4f);

    // A click on the indicator clears it; a click elsewhere does not.
    meter->SetClippedRefLevel(0.5f);
    meter->SetLevel(0.6f);
    EXPECT_TRUE(meter->IsClipped(0));
    window.Click(10 + clip.x + 2, 10 + 60);
    EXPECT_TRUE(meter->IsClipped(0));
    window.Click(10 + clip.x + 2, 10 + clip.y + 2);
    EXPECT_FALSE(meter->IsClipped(0));
}

TEST_F(LevelMeterTest, GainReductionGrowsFromTheTop) {
    Make(LevelMeterKind::kGainReduction);
    meter->SetMinMaxDBValues(-48.0f, 0.0f);
    meter->SetLevel(1.0f, true); // no reduction
    const RectT<float> r = meter->GetChannelRect(0);
    EXPECT_EQ(meter->GetBarRect(0, meter->GetLevelDB(0)).height, 0.0f);
    meter->SetLevel(0.25f); // about -12 dB
    const RectT<float> bar = meter->GetBarRect(0, meter->GetLevelDB(0));
    EXPECT_FLOAT_EQ(bar.y, r.y);
    EXPECT_NEAR(bar.height, r.height / 4, 1.0f);
    window.RenderAll();
    EXPECT_TRUE(Lit(CentreX(), 10 + r.y + 3));
    EXPECT_FALSE(Lit(CentreX(), 10 + r.y + r.height - 3));
    // The peak is the deepest reduction and returns upwards; gain reduction never clips.
    meter->SetLevel(1.0f);
    EXPECT_NEAR(meter->GetPeakDB(0), -12.04f, 0.01);
    window.AdvanceTime(1.6);
    EXPECT_NEAR(meter->GetPeakDB(0), -12.04f + 2.0f, 0.05);
    meter->SetLevel(2.0f);
    EXPECT_FALSE(meter->IsClipped(0));
}

TEST_F(LevelMeterTest, GroupsChannelsAndRejectsBadInput) {
    meter = qorcore::MakeIntrusive<UI_LevelMeterView>(0, LevelMeterOrientation::kHorizontal,
                                                      LevelMeterKind::kOutput, 200.0f, 40.0f);
    EXPECT_EQ(meter->GetChannelCount(), 0u);
    meter->AddMeter(2, 1, "Out");
    meter->AddMeter(1, 3, "GR");
    meter->ArrangeMeters();
    ASSERT_EQ(meter->GetChannelCount(), 3u);
    EXPECT_EQ(meter->GetMeterKind(1), LevelMeterKind::kGainReduction);
    // Horizontal channels are stacked with the gap between them, below each other.
    EXPECT_GT(meter->GetChannelRect(1).y,
              meter->GetChannelRect(0).y + meter->GetChannelRect(0).height);
    meter->SetLevel(std::vector<float>{0.5f, 0.1f}, true); // the third keeps its state
    EXPECT_NEAR(meter->GetLevelDB(0), kMinus6, 1e-3);
    EXPECT_NEAR(meter->GetLevelDB(1), -20.0f, 1e-3);
    EXPECT_FLOAT_EQ(meter->GetLevelDB(2), 0.0f) << "gain reduction with no level is empty";
    const float two[] = {1.0f, 1.0f, 0.5f};
    meter->SetLevel(two, 2, false);
    EXPECT_FLOAT_EQ(meter->GetLevelDB(0), 0.0f);
    EXPECT_FLOAT_EQ(meter->GetLevelDB(2), 0.0f);
    // A horizontal level bar grows to the right.
    const RectT<float> bar = meter->GetBarRect(1, -20.0f);
    EXPECT_FLOAT_EQ(bar.x, meter->GetChannelRect(1).x);

    EXPECT_THROW(meter->AddMeter(0, 0, ""), std::invalid_argument);
    EXPECT_THROW(meter->AddMeter(1, 5, ""), std::invalid_argument);
    EXPECT_THROW(meter->SetMinMaxDBValues(0.0f, -10.0f), std::invalid_argument);
    EXPECT_THROW(meter->SetMinMaxDBValues(NAN, 0.0f), std::invalid_argument);
    EXPECT_FLOAT_EQ(meter->GetMinDBValue(), -60.0f) << "a refused range changes nothing";
    EXPECT_THROW(meter->SetOrientation(2), std::invalid_argument);
    EXPECT_THROW(meter->GetLevelDB(3), std::out_of_range);
    EXPECT_THROW(meter->SetRuler(nullptr), std::invalid_argument);
    EXPECT_THROW(meter->SetLevel(nullptr, 2, true), std::invalid_argument);
    EXPECT_THROW(UI_LevelMeterView(-1), std::invalid_argument);

    // A linear ruler with custom values can stand in for the decibel one.
    auto ruler = qorcore::MakeIntrusive<LinearRuler>();
    ruler->SetCustomValues({-60, -30, 0});
    meter->SetRuler(ruler);
    EXPECT_EQ(meter->GetRuler()->GetMajorValues().size(), 3u);
    meter->RemoveAllMeters();
    EXPECT_EQ(meter->GetChannelCount(), 0u);
}

TEST_F(LevelMeterTest, ZonesFollowCautionWarningAndCustomColors) {
    Make();
    LevelMeterSettings s = meter->GetSettings();
    s.showGradient = false;
    s.cautionLevel = -30.0f;
    s.warningLevel = -10.0f;
    meter->SetSettings(s);
    meter->SetCustomColors({1, 0, 0, 1}, {1, 1, 0, 1}, {0, 1, 0, 1});
    meter->SetLevel(1.0f, true);
    window.RenderAll();
    for (auto [dB, colour] : {std::pair{-45.0f, qorcore::ColorRGBA(0, 1, 0, 1)},
                              {-20.0f, qorcore::ColorRGBA(1, 1, 0, 1)},
                              {-5.0f, qorcore::ColorRGBA(1, 0, 0, 1)}})
        EXPECT_EQ(window.GetPixel(int(CentreX()), int(10 + meter->GetBarRect(0, dB).y)), colour)
            << dB;
}

void CheckMeterGolden(skins::Skin skin, float scale) {
    skins::ScopedSkin look(skin);
    HeadlessWindow window(330, 180, scale);
    window.SetBackgroundColor(skins::GetContentBackgroundColor());
    auto gradient = qorcore::MakeIntrusive<UI_LevelMeterView>(
        2, LevelMeterOrientation::kVertical, LevelMeterKind::kInput, 56.0f, 160.0f);
    gradient->SetPosition(10, 10);
    gradient->SetRulerLabel1("dB");
    auto led = qorcore::MakeIntrusive<UI_LevelMeterView>(2, LevelMeterOrientation::kVertical,
                                                         LevelMeterKind::kOutput, 56.0f, 160.0f);
    led->SetPosition(76, 10);
    LevelMeterSettings s = led->GetSettings();
    s.showLED = true;
    led->SetSettings(s);
    auto gr = qorcore::MakeIntrusive<UI_LevelMeterView>(
        1, LevelMeterOrientation::kVertical, LevelMeterKind::kGainReduction, 36.0f, 160.0f);
    gr->SetPosition(142, 10);
    gr->SetMinMaxDBValues(-48.0f, 0.0f);
    gr->SetSettings([&] {
        LevelMeterSettings g = gr->GetSettings();
        g.showLED = true;
        return g;
    }());
    gr->SetShowClipIndicators(false);
    auto horizontal = qorcore::MakeIntrusive<UI_LevelMeterView>(
        2, LevelMeterOrientation::kHorizontal, LevelMeterKind::kMaster, 130.0f, 46.0f);
    horizontal->SetFrame({190, 10, 130, 46});
    for (auto* m : {gradient.get(), led.get(), horizontal.get()}) {
        m->SetLevel(std::vector<float>{1.2f, 0.9f}); // peaks and clips latched
        m->SetLevel(std::vector<float>{0.3f, 0.06f});
    }
    gr->SetLevel(0.2f);
    gr->SetLevel(0.5f);
    for (auto& m : {gradient, led, gr, horizontal})
        window.AddNode(m);
    window.RenderAll();
    const std::string name = std::string("level_meter_") + std::string(skins::GetSkinName(skin)) +
                             "_" + std::to_string(int(scale)) + "x";
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

TEST(LevelMeterGoldenTest, GradientAndLEDLooksAt1xAnd2x) {
    for (skins::Skin skin : {skins::Skin::kClassic, skins::Skin::kV7})
        for (float scale : {1.0f, 2.0f})
            CheckMeterGolden(skin, scale);
}

} // namespace
