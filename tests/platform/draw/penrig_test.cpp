#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace qorui::penrig;
using qorcore::ColorRGBA;

namespace {

// Alpha of a device pixel, 0 to 255.
int AlphaAt(const Image& image, int x, int y) {
    return int(image.GetRawPixel(x, y) >> 24);
}

} // namespace

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
