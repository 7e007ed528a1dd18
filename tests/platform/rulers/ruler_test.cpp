// Rulers: mappings as inverse pairs in both directions, tick spacing that stays readable for any
// range, numbers, and golden images of the three kinds in both looks.
#include "golden_image.hpp"
#include "platform/draw/penrig.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/rulers/linear_ruler.hpp"
#include "platform/rulers/log_ruler.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include "platform/skins/control_drawing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

using namespace qorui;

namespace {

// Every gap between neighbouring pixels is at least `minimum`.
void ExpectSpacing(const std::vector<int>& pixels, int minimum) {
    for (std::size_t i = 1; i < pixels.size(); ++i)
        EXPECT_GE(std::abs(pixels[i] - pixels[i - 1]), minimum) << "between ticks " << i - 1;
}

// Neighbouring labels of a horizontal ruler never touch: each gap holds half of both texts as
// the font measures them, and a little air.
void ExpectLabelsApart(const RulerBase& ruler) {
    const std::vector<double> values = ruler.GetMajorValues();
    const std::vector<int> pixels = ruler.GetMajorPixels();
    const penrig::Font font(ruler.GetFontSize());
    auto width = [&](double v) {
        return control_drawing::MeasureText(ruler.FormatValue(v), font).width;
    };
    for (std::size_t i = 1; i < values.size(); ++i)
        EXPECT_GE(float(std::abs(pixels[i] - pixels[i - 1])),
                  (width(values[i]) + width(values[i - 1])) / 2 + 4)
            << ruler.FormatValue(values[i - 1]) << " and " << ruler.FormatValue(values[i]);
}

// Steps between neighbouring values are all equal.
void ExpectEvenSteps(const std::vector<double>& values, double step) {
    for (std::size_t i = 1; i < values.size(); ++i)
        EXPECT_NEAR(values[i] - values[i - 1], step, step * 1e-9);
}

// A ruler of the given kind mapping pixels p1..p2 to values v1..v2.
template <class Ruler, class... Args>
IntrusivePtr<Ruler> Make(int p1, int p2, double v1, double v2, Args... args) {
    auto ruler = qorcore::MakeIntrusive<Ruler>(args...);
    ruler->SetPixelRange(p1, p2);
    ruler->SetValueRange(v1, v2);
    return ruler;
}

TEST(RulerMappingTest, LinearMapsBothWaysInEitherDirection) {
    auto ruler = Make<LinearRuler>(10, 210, -1.0, 1.0);
    EXPECT_EQ(ruler->GetPixelFromValue(-1.0), 10);
    EXPECT_EQ(ruler->GetPixelFromValue(0.0), 110);
    EXPECT_EQ(ruler->GetPixelFromValue(1.0), 210);
    EXPECT_EQ(ruler->GetPixelFromValue(2.0), 310); // past the end maps past the end
    for (int px = 10; px <= 210; ++px)
        EXPECT_EQ(ruler->GetPixelFromValue(ruler->GetValueFromPixel(px)), px);
    // A vertical axis: the high value at the top pixel.
    ruler->SetPixelRange(300, 0);
    ruler->SetValueRange(-48.0, 12.0);
    EXPECT_EQ(ruler->GetPixelFromValue(12.0), 0);
    EXPECT_EQ(ruler->GetPixelFromValue(-18.0), 150);
    EXPECT_DOUBLE_EQ(ruler->GetValueFromPixel(300), -48.0);
    // Degenerate ranges stay calm.
    ruler->SetValueRange(5.0, 5.0);
    EXPECT_EQ(ruler->GetPixelFromValue(7.0), 300);
    EXPECT_TRUE(ruler->GetMajorPixels().empty());
    ruler->SetPixelRange(4, 4);
    ruler->SetValueRange(0, 1);
    EXPECT_DOUBLE_EQ(ruler->GetValueFromPixel(99), 0.0);
    EXPECT_THROW(ruler->SetValueRange(0, INFINITY), std::invalid_argument);
    EXPECT_THROW(ruler->SetValueRange(NAN, 1), std::invalid_argument);
    EXPECT_DOUBLE_EQ(ruler->GetValue2(), 1.0);
    EXPECT_THROW(ruler->SetStepFactor(0), std::invalid_argument);
    EXPECT_THROW(ruler->SetFontSize(-2), std::invalid_argument);
}

TEST(RulerMappingTest, LogAndFaderMapThroughTheirCurves) {
    auto log = Make<LogRuler>(0, 300, 20.0, 20000.0);
    EXPECT_EQ(log->GetPixelFromValue(200.0), 100); // one decade of three
    EXPECT_EQ(log->GetPixelFromValue(2000.0), 200);
    EXPECT_NEAR(log->GetValueFromPixel(150), std::sqrt(200.0 * 2000.0), 1e-6);
    for (int px = 0; px <= 300; px += 7)
        EXPECT_EQ(log->GetPixelFromValue(log->GetValueFromPixel(px)), px);
    EXPECT_EQ(log->GetPixelFromValue(0.0), -1000000000); // zero lies infinitely far
    EXPECT_THROW(log->SetValueRange(0.0, 100.0), std::invalid_argument);
    EXPECT_THROW(log->SetLogStep(1.0), std::invalid_argument);
    EXPECT_THROW(log->SetLogSeed(-1.0), std::invalid_argument);

    auto fader = Make<DecibelRuler>(200, 0, -96.0, 12.0, DecibelRuler::kStyleFader);
    const int zero = fader->GetPixelFromValue(0.0);
    // 0 dB sits high on a fader, yet the top twelve decibels get far more travel than the
    // 22 pixels a linear scale would give them.
    EXPECT_LT(zero, 80);
    EXPECT_GT(zero, 50);
    for (int px = 0; px <= 200; px += 5)
        EXPECT_EQ(fader->GetPixelFromValue(fader->GetValueFromPixel(px)), px);
    EXPECT_THROW(DecibelRuler(2), std::invalid_argument);
}

TEST(RulerTicksTest, LinearTicksAreRoundAndReadableForAnyRange) {
    auto ruler = Make<LinearRuler>(0, 400, 0.0, 100.0);
    const std::vector<double> tens{0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100};
    EXPECT_EQ(ruler->GetMajorValues(), tens) << "short numbers sit close";
    // Five parts to a step of 10: with the majors, every 2.
    std::vector<double> all = ruler->GetMinorValues();
    EXPECT_EQ(all.size(), 40u);
    for (double v : ruler->GetMajorValues())
        all.push_back(v);
    std::sort(all.begin(), all.end());
    ExpectEvenSteps(all, 2.0);
    // Reversed values and pixels give the same ticks in mirrored places.
    ruler->SetValueRange(100.0, 0.0);
    EXPECT_EQ(ruler->GetMajorValues(), tens);
    EXPECT_EQ(ruler->GetMajorPixels().front(), 400);
    EXPECT_EQ(ruler->GetMajorPixels()[5], 200);
    // A step factor asks for that many pixels at least; fewer than a label needs change nothing.
    ruler->SetStepFactor(150.0);
    EXPECT_EQ(ruler->GetMajorValues(), (std::vector<double>{0, 50, 100}));
    ruler->SetStepFactor(4.0);
    EXPECT_EQ(ruler->GetMajorValues(), tens);
    ruler->SetStepFactor(1.0);
    // Small, odd and huge ranges: round steps and enough room, vertical and horizontal.
    struct Case {
        double v1, v2;
        int p1, p2;
        bool vertical;
    } cases[] = {
        {-0.37, 0.91, 0, 517, false}, {1e6, -3e6, 0, 800, false}, {0.001, 0.0012, 300, 10, true},
        {-48, 12, 0, 240, true},      {7, 9, 0, 37, true},        {-1e-9, 1e-9, 0, 1000, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.v1 << ".." << c.v2);
        ruler->SetVertical(c.vertical);
        ruler->SetPixelRange(c.p1, c.p2);
        ruler->SetValueRange(c.v1, c.v2);
        const auto values = ruler->GetMajorValues();
        ASSERT_GE(values.size(), 1u);
        if (c.vertical)
            ExpectSpacing(ruler->GetMajorPixels(), 21);
        else
            ExpectLabelsApart(*ruler);
        if (values.size() >= 2) {
            const double step = values[1] - values[0];
            ExpectEvenSteps(values, step);
            const double mantissa = step / std::pow(10.0, std::floor(std::log10(step) + 1e-9));
            EXPECT_TRUE(std::abs(mantissa - 1) < 1e-6 || std::abs(mantissa - 2) < 1e-6 ||
                        std::abs(mantissa - 2.5) < 1e-6 || std::abs(mantissa - 5) < 1e-6)
                << mantissa;
        }
        ExpectSpacing(ruler->GetMinorPixels(), 3);
    }
}

TEST(RulerTicksTest, CustomValuesReplaceComputedTicks) {
    auto ruler = Make<LinearRuler>(0, 200, -60, 0);
    ruler->SetCustomValues({-60, -23, -18, -9, 0, 5}, 1.0);
    EXPECT_EQ(ruler->GetMajorValues(), (std::vector<double>{-60, -23, -18, -9, 0}));
    EXPECT_TRUE(ruler->GetMinorValues().empty());
    ruler->SetCustomValues({0.5}, 100.0);
    EXPECT_EQ(ruler->FormatValue(0.5), "50");
    EXPECT_THROW(ruler->SetCustomValues({NAN}), std::invalid_argument);
    ruler->SetCustomValues({});
    EXPECT_EQ(ruler->GetMajorValues().front(), -60.0);
}

TEST(RulerTicksTest, LogTicksFollowDecadesAndFillInWithRoom) {
    auto ruler = Make<LogRuler>(0, 600, 20, 20000);
    const auto majors = ruler->GetMajorValues();
    EXPECT_EQ(majors, (std::vector<double>{20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000}));
    ExpectSpacing(ruler->GetMajorPixels(), 48);
    const auto minors = ruler->GetMinorValues();
    EXPECT_NE(std::find(minors.begin(), minors.end(), 30.0), minors.end());
    EXPECT_NE(std::find(minors.begin(), minors.end(), 9000.0), minors.end());
    // A narrow ruler keeps only decades; a very narrow one skips some.
    ruler->SetPixelRange(150, 0);
    EXPECT_EQ(ruler->GetMajorValues(), (std::vector<double>{100, 1000, 10000}));
    ruler->SetValueRange(1e-3, 1e9);
    ruler->SetPixelRange(0, 200);
    ExpectSpacing(ruler->GetMajorPixels(), 48);
    EXPECT_GE(ruler->GetMajorValues().size(), 2u);
    // Octaves from a seed of 1000 Hz with a step of 2.
    ruler->SetLogStep(2.0);
    ruler->SetLogSeed(1000.0);
    ruler->SetValueRange(200, 20000);
    ruler->SetPixelRange(0, 700);
    EXPECT_EQ(ruler->GetMajorValues(),
              (std::vector<double>{250, 500, 1000, 2000, 4000, 8000, 16000}));
}

TEST(RulerTicksTest, DecibelTicksInBothStyles) {
    auto linear = Make<DecibelRuler>(0, 240, 12, -48);
    linear->SetVertical(true);
    EXPECT_EQ(linear->GetMajorValues(),
              (std::vector<double>{-48, -42, -36, -30, -24, -18, -12, -6, 0, 6, 12}));
    auto fader = Make<DecibelRuler>(300, 0, -96, 12, DecibelRuler::kStyleFader);
    fader->SetVertical(true);
    const auto majors = fader->GetMajorValues();
    EXPECT_NE(std::find(majors.begin(), majors.end(), 0.0), majors.end());
    EXPECT_NE(std::find(majors.begin(), majors.end(), 12.0), majors.end());
    auto pixels = fader->GetMajorPixels();
    std::sort(pixels.begin(), pixels.end());
    ExpectSpacing(pixels, 21);
}

TEST(RulerNumbersTest, NumbersAbbreviateAndCarryTheirSign) {
    auto ruler = qorcore::MakeIntrusive<LinearRuler>();
    EXPECT_EQ(ruler->FormatValue(20000), "20000");
    EXPECT_EQ(ruler->FormatValue(0.25), "0.25");
    EXPECT_EQ(ruler->FormatValue(-0.0), "0");
    ruler->SetAbbreviateNumbers(true);
    EXPECT_EQ(ruler->FormatValue(20000), "20k");
    EXPECT_EQ(ruler->FormatValue(1500), "1.5k");
    EXPECT_EQ(ruler->FormatValue(-2500000), "-2.5M");
    EXPECT_EQ(ruler->FormatValue(999), "999");
    DecibelRuler db;
    EXPECT_EQ(db.FormatValue(6), "+6");
    EXPECT_EQ(db.FormatValue(0), "0");
    EXPECT_EQ(db.FormatValue(-12.5), "-12.5");
    EXPECT_EQ(db.FormatValue(-200), "-\u221E");
}

// A node drawing a ruler under or beside a frame, as graphs place them.
class RulerNode : public UI_Node {
public:
    explicit RulerNode(IntrusivePtr<RulerBase> ruler) : ruler_(std::move(ruler)) {}
    void UI_Draw(Penrig* p) override {
        const auto b = GetBounds();
        p->FillRect(b, skins::GetContentBackgroundColor());
        if (ruler_->IsVertical()) {
            ruler_->SetPixelRange(4, int(b.height) - 5);
            ruler_->Draw(p, {0, 0, int(b.width), int(b.height)});
        } else {
            ruler_->SetPixelRange(12, int(b.width) - 13);
            ruler_->Draw(p, {0, 0, int(b.width), int(b.height)});
        }
    }

private:
    IntrusivePtr<RulerBase> ruler_;
};

TEST(RulerDrawTest, HiddenNumbersDrawOnlyTicks) {
    HeadlessWindow window(200, 30);
    auto ruler = qorcore::MakeIntrusive<LinearRuler>();
    ruler->SetValueRange(0, 10);
    ruler->SetColor(qorcore::ColorRGBA(0, 0, 0));
    auto node = qorcore::MakeIntrusive<RulerNode>(ruler);
    node->SetFrame({0, 0, 200, 30});
    window.AddNode(node);
    auto darkRowsBelowTicks = [&] {
        window.RenderAll();
        int dark = 0;
        for (int y = 8; y < 30; ++y)
            for (int x = 0; x < 200; ++x)
                dark += window.GetPixel(x, y).red < 0.5f;
        return dark;
    };
    EXPECT_GT(darkRowsBelowTicks(), 20);
    ruler->HideAllNumbers(true);
    EXPECT_EQ(darkRowsBelowTicks(), 0);
    // The major tick is crisp: one full dark device pixel column at its pixel.
    const int px = ruler->GetMajorPixels().at(1);
    EXPECT_LT(window.GetPixel(px, 2).red, 0.05f);
    EXPECT_GT(window.GetPixel(px + 1, 2).red, 0.9f);
}

void CheckRulerGolden(skins::Skin skin, float scale) {
    skins::ScopedSkin look(skin);
    HeadlessWindow window(360, 200, scale);
    window.SetBackgroundColor(skins::GetContentBackgroundColor());
    auto linear = qorcore::MakeIntrusive<LinearRuler>();
    linear->SetValueRange(-1, 1);
    auto log = qorcore::MakeIntrusive<LogRuler>();
    log->SetValueRange(20, 20000);
    log->SetAbbreviateNumbers(true);
    log->SetLabel2("Hz");
    log->HideTruncatedStrings(true);
    auto db = qorcore::MakeIntrusive<DecibelRuler>();
    db->SetVertical(true);
    db->SetValueRange(12, -48);
    db->SetLabel1("dB");
    auto fader = qorcore::MakeIntrusive<DecibelRuler>(DecibelRuler::kStyleFader);
    fader->SetVertical(true);
    fader->SetValueRange(12, -96);
    struct Placed {
        IntrusivePtr<RulerBase> ruler;
        RectT<float> frame;
    } placed[] = {{linear, {10, 10, 260, 28}},
                  {log, {10, 50, 260, 28}},
                  {db, {280, 10, 34, 180}},
                  {fader, {320, 10, 34, 180}}};
    for (auto& p : placed) {
        auto node = qorcore::MakeIntrusive<RulerNode>(p.ruler);
        node->SetFrame(p.frame);
        window.AddNode(node);
    }
    window.RenderAll();
    const std::string name = std::string("rulers_") + std::string(skins::GetSkinName(skin)) +
                             (scale > 1 ? "_2x" : "_1x");
    EXPECT_TRUE(qafui_testing::MatchesGolden(window.GetImage(), name));
}

TEST(RulerGoldenTest, AllKindsInBothLooksAt1xAnd2x) {
    for (skins::Skin skin : {skins::Skin::kClassic, skins::Skin::kV7})
        for (float scale : {1.0f, 2.0f})
            CheckRulerGolden(skin, scale);
}

} // namespace
