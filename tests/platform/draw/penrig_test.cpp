// Images, the penrig's state and clipping, and text measured and drawn with the pinned fonts.
#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/font_system.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

using namespace qorui::penrig;
using qorcore::ColorRGBA;

namespace {

std::span<const std::uint8_t> Bytes(std::string_view s) {
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

// Alpha of a device pixel, 0 to 255.
int AlphaAt(const Image& image, int x, int y) {
    return int(image.GetRawPixel(x, y) >> 24);
}

} // namespace

TEST(Image, SizesFollowTheScale) {
    auto image = Image::Create(10.5f, 4, 2.0f);
    EXPECT_EQ(std::pair(image->GetPixelWidth(), image->GetPixelHeight()), std::pair(21, 8));
    EXPECT_FLOAT_EQ(image->GetWidth(), 10.5f);
    EXPECT_EQ(image->GetPixel(0, 0), ColorRGBA(0, 0, 0, 0)) << "new images are transparent";
    EXPECT_EQ(image->GetRawPixel(-1, 0), 0u);
    EXPECT_EQ(image->GetRawPixel(21, 0), 0u);
    for (auto [w, scale] : {std::pair{-1.0f, 1.0f}, {1e9f, 1.0f}, {4.0f, 0.0f}})
        EXPECT_THROW(Image::Create(w, 4, scale), std::runtime_error) << w << " at " << scale;
}

TEST(Image, PngRoundTripKeepsPixelsAndDensity) {
    auto image = Image::Create(3, 2);
    image->Fill(ColorRGBA(0, 0, 0, 0));
    {
        CairoSupplier supplier(1.0f);
        auto p = supplier.CreatePenrig(*image);
        p->FillRect({0, 0, 1, 1}, ColorRGBA(1, 0, 0));
        p->FillRect({1, 0, 1, 1}, ColorRGBA(0, 1, 0, 0.5f));
    }
    const auto path = std::filesystem::temp_directory_path() / "qafui_image_roundtrip.png";
    image->WritePNG(path.string());
    auto back = Image::LoadPNGFile(path.string());
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(back->GetRawPixel(x, y), image->GetRawPixel(x, y)) << x << "," << y;
    std::ifstream in(path, std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
    auto twice = Image::LoadPNG(bytes, 2.0f);
    EXPECT_EQ(twice->GetPixelWidth(), 3);
    EXPECT_FLOAT_EQ(twice->GetWidth(), 1.5f) << "@2x artwork is half as wide in points";
    std::filesystem::remove(path);
}

TEST(Image, UnreadableDataFailsWithAReason) {
    EXPECT_THROW(Image::LoadPNG(Bytes("not a png")), std::runtime_error);
    EXPECT_THROW(Image::LoadPNG({}), std::runtime_error);
    EXPECT_THROW(Image::LoadPNGFile("/nonexistent/file.png"), std::runtime_error);
    EXPECT_THROW(Image::LoadSVG(Bytes("<svg")), std::runtime_error);
    EXPECT_THROW(Image::LoadSVG(Bytes("<svg xmlns='http://www.w3.org/2000/svg'/>")),
                 std::runtime_error)
        << "an SVG without size or view box cannot be rendered";
    EXPECT_THROW(Image::Create(2, 2)->WritePNG("/nonexistent/dir/out.png"), std::runtime_error);
}

TEST(Image, SvgRendersAtTheAskedScale) {
    constexpr std::string_view svg =
        R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 10 8">)"
        R"(<rect x="0" y="0" width="5" height="8" fill="#ff0000"/></svg>)";
    auto one = Image::LoadSVG(Bytes(svg), 1.0f);
    auto two = Image::LoadSVG(Bytes(svg), 2.0f);
    EXPECT_EQ(std::tuple(one->GetPixelWidth(), one->GetPixelHeight(), two->GetPixelWidth()),
              std::tuple(10, 8, 20));
    EXPECT_FLOAT_EQ(two->GetWidth(), 10.0f);
    EXPECT_EQ(two->GetPixel(9, 15), ColorRGBA(1, 0, 0, 1));
    EXPECT_EQ(two->GetPixel(10, 15).alpha, 0.0f);
    EXPECT_EQ(one->GetPixel(4, 0), ColorRGBA(1, 0, 0, 1));
}

TEST(Penrig, HalfPixelLinesCoverWholeDevicePixelsAtEveryScale) {
    for (float scale : {1.0f, 2.0f}) {
        CairoSupplier supplier(scale);
        auto image = supplier.CreateImage(10, 10);
        {
            auto p = supplier.CreatePenrig(*image);
            p->SetPen(1.0f, ColorRGBA(0, 0, 0));
            p->DrawLine(4.5f, 0, 4.5f, 10);
        }
        const int s = int(scale);
        for (int x = 0; x < 10 * s; ++x) {
            const bool inside = x >= 4 * s && x < 5 * s;
            EXPECT_EQ(AlphaAt(*image, x, 5 * s), inside ? 255 : 0)
                << "scale " << scale << " column " << x;
        }
    }
}

TEST(Penrig, ClipKeepsDrawingInsideAndPopsBack) {
    CairoSupplier supplier(2.0f);
    auto image = supplier.CreateImage(20, 20);
    auto p = supplier.CreatePenrig(*image);
    p->PushClip({5, 5, 5, 5});
    EXPECT_EQ(p->GetClipBounds(), RectT<float>(5, 5, 5, 5));
    p->FillRect({0, 0, 20, 20}, ColorRGBA(1, 0, 0));
    p->PopClip();
    EXPECT_EQ(p->GetClipBounds(), RectT<float>(0, 0, 20, 20));
    EXPECT_EQ(AlphaAt(*image, 10, 10), 255);
    EXPECT_EQ(AlphaAt(*image, 19, 19), 255);
    EXPECT_EQ(AlphaAt(*image, 9, 10), 0);
    EXPECT_EQ(AlphaAt(*image, 20, 10), 0);
    p->PushClip({0, 0, 0, 10});
    EXPECT_TRUE(p->IsClipEmpty()) << "an empty rectangle clips everything away";
    p->FillRect({0, 0, 20, 20}, ColorRGBA(0, 0, 1));
    p->PopClip();
    EXPECT_EQ(image->GetPixel(0, 0).alpha, 0.0f);
}

TEST(Penrig, SaveRestoreBringsBackPenFontAlphaAndTransform) {
    CairoSupplier supplier(1.0f);
    auto image = supplier.CreateImage(10, 10);
    auto p = supplier.CreatePenrig(*image);
    p->SetPen(2.0f, ColorRGBA(1, 0, 0));
    p->SetFont(Font(9));
    {
        Penrig::StateSaver saver(*p);
        p->SetPen(5.0f, ColorRGBA(0, 1, 0));
        p->SetAlpha(0.25f);
        p->SetFont(Font(20, true));
        p->SetAntialias(false);
        p->Translate(3, 4);
        EXPECT_EQ(p->UserToDevice({0, 0}), (PointT<float>(3, 4)));
        EXPECT_EQ(p->GetSaveDepth(), 1);
    }
    EXPECT_EQ(p->GetPenWidth(), 2.0f);
    EXPECT_EQ(p->GetColor(), ColorRGBA(1, 0, 0));
    EXPECT_EQ(p->GetAlpha(), 1.0f);
    EXPECT_EQ(p->GetFont(), Font(9));
    EXPECT_TRUE(p->GetAntialias());
    EXPECT_EQ(p->UserToDevice({0, 0}), (PointT<float>(0, 0)));
    EXPECT_THROW(p->Restore(), std::logic_error);
}

TEST(Penrig, AlphaMultipliesColoursAndImages) {
    CairoSupplier supplier(1.0f);
    auto image = supplier.CreateImage(4, 2);
    auto source = supplier.CreateImage(1, 1);
    source->Fill(ColorRGBA(0, 0, 1));
    {
        auto p = supplier.CreatePenrig(*image);
        p->SetAlpha(0.5f);
        p->FillRect({0, 0, 1, 1}, ColorRGBA(1, 0, 0, 0.5f));
        p->DrawImage(*source, RectT<float>(1, 0, 1, 1), 0.5f);
        p->SetAlpha(7.0f); // limited to 1
        p->FillRect({2, 0, 1, 1}, ColorRGBA(0, 1, 0));
    }
    EXPECT_NEAR(image->GetPixel(0, 0).alpha, 0.25f, 0.01f);
    EXPECT_NEAR(image->GetPixel(1, 0).alpha, 0.25f, 0.01f);
    EXPECT_NEAR(image->GetPixel(1, 0).blue, 1.0f, 0.02f);
    EXPECT_EQ(image->GetPixel(2, 0).alpha, 1.0f);
}

TEST(Penrig, RefusesBadArgumentsWithoutDrawing) {
    CairoSupplier supplier(1.0f);
    auto image = supplier.CreateImage(4, 4);
    auto p = supplier.CreatePenrig(*image);
    EXPECT_THROW(p->SetDash({-1.0f}), std::invalid_argument);
    EXPECT_THROW(p->SetDash({0.0f, 0.0f}), std::invalid_argument);
    EXPECT_THROW(p->Scale(0.0f, 1.0f), std::invalid_argument);
    EXPECT_THROW(Penrig(nullptr, 1.0f), std::invalid_argument);
    p->SetPenWidth(-3.0f);
    EXPECT_EQ(p->GetPenWidth(), 1.0f) << "a bad width falls back to one pixel";
    p->FillRect({0, 0, -2, 4}, ColorRGBA(0, 0, 0));
    p->FrameRect({0, 0, 4, 4}, ColorRGBA(0, 0, 0), 0.0f);
    EXPECT_EQ(image->GetRawPixel(1, 1), 0u);
    EXPECT_THROW(CairoSupplier(0.0f), std::invalid_argument);
    EXPECT_THROW(CairoSupplier(100.0f), std::invalid_argument);
}

TEST(Text, MeasuresTheSameAtEveryScaleAndGrowsWithText) {
    // Goldens and widths below hold only for the fonts pinned with the tests.
    ASSERT_TRUE(FontSystem::Get().IsPinned()) << FontSystem::Get().GetFontDirectory();
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
