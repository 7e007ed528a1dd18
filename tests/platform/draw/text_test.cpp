#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/font_system.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <gtest/gtest.h>

using namespace qorui::penrig;

TEST(Text, FontsComeFromThePinnedDejaVuFolder) {
    EXPECT_TRUE(FontSystem::Get().IsPinned()) << FontSystem::Get().GetFontDirectory();
}

TEST(Text, MeasuresTheSameAtEveryScaleAndGrowsWithText) {
    CairoSupplier one(1.0f), two(2.0f);
    auto a = one.CreateMeasuringPenrig();
    auto b = two.CreateMeasuringPenrig();
    a->SetFont(Font(11));
    b->SetFont(Font(11));
    const TextMetrics m1 = a->MeasureText("Frequency (Hz)");
    const TextMetrics m2 = b->MeasureText("Frequency (Hz)");
    EXPECT_FLOAT_EQ(m1.width, m2.width);
    EXPECT_FLOAT_EQ(m1.height, m2.height);
    EXPECT_GT(m1.width, 60.0f);
    EXPECT_LT(m1.width, 100.0f);
    EXPECT_GT(m1.baseline, 0.0f);
    EXPECT_LT(m1.baseline, m1.height);
    EXPECT_LT(a->MeasureStringWidth("Freq"), m1.width);
    EXPECT_EQ(a->MeasureStringWidth(""), 0.0f);
    a->SetFont(Font(22));
    EXPECT_NEAR(a->MeasureStringWidth("Frequency (Hz)"), 2 * m1.width, 0.5f);
    a->SetFont(Font(11, true));
    EXPECT_GT(a->MeasureStringWidth("Frequency (Hz)"), m1.width) << "bold is wider";
}

TEST(Text, TruncationEndsWithEllipsisAndFits) {
    CairoSupplier supplier(1.0f);
    auto p = supplier.CreateMeasuringPenrig();
    p->SetFont(Font(11));
    const std::string text = "Über-long parameter name";
    EXPECT_EQ(p->TruncateString(text, 1000.0f), text);
    const std::string cut = p->TruncateString(text, 60.0f);
    ASSERT_GE(cut.size(), 3u);
    EXPECT_EQ(cut.substr(cut.size() - 3), "\xE2\x80\xA6");
    EXPECT_LE(p->MeasureStringWidth(cut), 60.0f);
    EXPECT_EQ(text.compare(0, cut.size() - 3, cut, 0, cut.size() - 3), 0) << cut;
    // One more character would not fit.
    const std::string longer = text.substr(0, cut.size() - 3 + 1) + "\xE2\x80\xA6";
    EXPECT_GT(p->MeasureStringWidth(longer), 60.0f);
    EXPECT_EQ(p->TruncateString(text, 2.0f), "");
    // A cut never splits a multi-byte character.
    const std::string umlauts = "ÄÄÄÄÄÄÄÄÄÄÄÄ";
    const std::string cutUmlauts = p->TruncateString(umlauts, 30.0f);
    EXPECT_EQ((cutUmlauts.size() - 3) % 2, 0u) << cutUmlauts;
}

TEST(Text, DrawnTextStaysInsideItsRectangle) {
    CairoSupplier supplier(2.0f);
    auto image = supplier.CreateImage(100, 30);
    {
        auto p = supplier.CreatePenrig(*image);
        p->SetColor(qorcore::ColorRGBA(0, 0, 0));
        p->SetFont(Font(20));
        p->DrawText("WWWWWWWWWWWWWWW", {10, 5, 50, 20}, HorizontalAlignment::kLeft,
                    VerticalAlignment::kCenter, false);
    }
    int inside = 0;
    for (int y = 0; y < image->GetPixelHeight(); ++y)
        for (int x = 0; x < image->GetPixelWidth(); ++x) {
            const bool ink = (image->GetRawPixel(x, y) >> 24) != 0;
            const bool within = x >= 20 && x < 120 && y >= 10 && y < 50;
            if (ink && !within)
                FAIL() << "ink outside the rectangle at " << x << "," << y;
            inside += ink;
        }
    EXPECT_GT(inside, 200);
}
