// The drawing primitives rendered into images and compared with the goldens in tests/golden/,
// once at 1x and once at 2x: the same logical scene must come out crisp at both.
#include "golden_image.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace qorui::penrig;
using qorcore::ColorRGBA;

namespace {

constexpr std::string_view kIconSvg =
    R"(<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24">)"
    R"(<circle cx="12" cy="12" r="10" fill="#2a7fff" stroke="#003366" stroke-width="2"/>)"
    R"(<path d="M7 12 L11 16 L17 8" fill="none" stroke="white" stroke-width="2.5"/></svg>)";

std::span<const std::uint8_t> Bytes(std::string_view s) {
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

// Paths, pens, fills, clips, alpha and antialiasing.
void DrawShapes(Penrig& p) {
    p.Clear(ColorRGBA(0.95f, 0.95f, 0.92f));
    p.FillRect({4, 4, 40, 24}, ColorRGBA(0.2f, 0.4f, 0.8f));
    p.FrameRect({50, 4, 40, 24}, ColorRGBA(0.1f, 0.1f, 0.1f));
    p.FrameRect({96, 4, 40, 24}, ColorRGBA(0.8f, 0.1f, 0.1f), 3.0f);

    // Crisp horizontal and vertical one-pixel lines on half pixels.
    p.SetPen(1.0f, ColorRGBA(0, 0, 0));
    p.DrawLine(4, 34.5f, 136, 34.5f);
    p.DrawLine(140.5f, 4, 140.5f, 60);

    // An antialiased diagonal and the same without antialiasing.
    p.SetPen(1.5f, ColorRGBA(0.0f, 0.5f, 0.0f));
    p.DrawLine(4, 40, 60, 60);
    p.SetAntialias(false);
    p.DrawLine(64, 40, 120, 60);
    p.SetAntialias(true);

    // A Bézier curve with round caps, and a dashed polyline.
    p.Save();
    p.SetPen(2.0f, ColorRGBA(0.6f, 0.2f, 0.7f));
    p.SetLineCap(LineCap::kRound);
    p.NewPath();
    p.MoveTo(150, 60);
    p.CurveTo(170, 0, 190, 70, 210, 10);
    p.Stroke();
    p.SetDash({4, 2});
    p.SetLineCap(LineCap::kButt);
    p.SetPen(1.0f, ColorRGBA(0, 0, 0));
    p.NewPath();
    p.MoveTo(150.5f, 66.5f);
    p.LineTo(210.5f, 66.5f);
    p.LineTo(210.5f, 90.5f);
    p.Stroke();
    p.Restore();

    // Ellipse and rounded rectangle, filled and stroked.
    p.NewPath();
    p.FormEllipse({4, 66, 40, 24});
    p.SetColor(ColorRGBA(1.0f, 0.8f, 0.0f));
    p.Fill(true);
    p.SetPen(1.0f, ColorRGBA(0.4f, 0.3f, 0.0f));
    p.Stroke();
    p.NewPath();
    p.FormRoundedRect({50.5f, 66.5f, 40, 24}, 6);
    p.SetColor(ColorRGBA(0.3f, 0.7f, 0.6f));
    p.Fill(true);
    p.SetColor(ColorRGBA(0, 0, 0));
    p.Stroke();

    // A large circle clipped to a rectangle, then half-transparent overlap.
    p.PushClip({96, 66, 40, 24});
    p.NewPath();
    p.Arc(116, 78, 20, 0, 6.2831853f);
    p.SetColor(ColorRGBA(0.9f, 0.3f, 0.2f));
    p.Fill();
    p.PopClip();
    p.Save();
    p.SetAlpha(0.5f);
    p.FillRect({110, 72, 40, 24}, ColorRGBA(0.1f, 0.2f, 0.9f));
    p.Restore();

    // Translation moves everything after it.
    p.Save();
    p.Translate(4, 96);
    p.FillRect({0, 0, 10, 10}, ColorRGBA(0, 0, 0));
    p.FillRect({12, 0, 10, 10}, ColorRGBA(0, 0, 0, 0.5f));
    p.Restore();
}

void DrawTextAndImages(Penrig& p, const SupplierInterface& supplier) {
    p.Clear(ColorRGBA(1, 1, 1));
    const ColorRGBA frame(0.7f, 0.7f, 0.7f);
    const RectT<float> box(4, 4, 150, 20);
    p.FrameRect(box, frame);
    p.SetColor(ColorRGBA(0, 0, 0));
    p.SetFont(Font(11));
    p.DrawText("Left aligned", box.Inset(3, 0), HorizontalAlignment::kLeft);
    p.FrameRect(box.Offset(0, 24), frame);
    p.SetFont(Font(11, true));
    p.DrawText("Centred bold", box.Offset(0, 24), HorizontalAlignment::kCenter);
    p.FrameRect(box.Offset(0, 48), frame);
    p.SetFont(Font(13, false, true));
    p.SetColor(ColorRGBA(0.1f, 0.3f, 0.7f));
    p.DrawText("Right, 13 px italic", box.Offset(0, 48).Inset(3, 0), HorizontalAlignment::kRight);
    p.FrameRect(box.Offset(0, 72), frame);
    p.SetFont(Font(11));
    p.SetColor(ColorRGBA(0, 0, 0));
    p.DrawText("A label far too long for its little box", box.Offset(0, 72).Inset(3, 0));
    p.DrawText("Top", {160, 4, 60, 40}, HorizontalAlignment::kLeft, VerticalAlignment::kTop);
    p.DrawText("Bottom", {160, 4, 60, 40}, HorizontalAlignment::kRight, VerticalAlignment::kBottom);
    p.FrameRect({160, 4, 60, 40}, frame);
    p.SetPen(1.0f, ColorRGBA(0.8f, 0, 0));
    p.DrawLine(160, 70.5f, 230, 70.5f);
    p.SetColor(ColorRGBA(0, 0, 0));
    p.DrawTextAtBaseline("Baseline ÄÖü", {162, 70.5f});

    // An image drawn by a penrig of its own, then drawn as is and scaled up.
    auto swatch = supplier.CreateImage(16, 16);
    {
        auto q = supplier.CreatePenrig(*swatch);
        q->FillRect({0, 0, 8, 8}, ColorRGBA(1, 0, 0));
        q->FillRect({8, 8, 8, 8}, ColorRGBA(0, 0, 1));
        q->FrameRect({0, 0, 16, 16}, ColorRGBA(0, 0, 0));
    }
    p.DrawImage(*swatch, PointT<float>(160, 80));
    p.DrawImage(*swatch, RectT<float>(180, 80, 32, 32), 0.6f);
    auto icon = supplier.CreateImageFromSVG(Bytes(kIconSvg));
    p.DrawImage(*icon, PointT<float>(216, 84));
}

class PenrigGolden : public ::testing::TestWithParam<float> {};

} // namespace

TEST_P(PenrigGolden, ShapesPathsClipsAndPens) {
    const float scale = GetParam();
    CairoSupplier supplier(scale);
    auto target = supplier.CreateImage(216, 110);
    {
        auto penrig = supplier.CreatePenrig(*target);
        DrawShapes(*penrig);
        EXPECT_EQ(penrig->GetSaveDepth(), 0);
    }
    EXPECT_TRUE(
        qafui_testing::MatchesGolden(*target, "penrig_shapes_" + std::to_string(int(scale)) + "x"));
}

TEST_P(PenrigGolden, TextAndImages) {
    const float scale = GetParam();
    CairoSupplier supplier(scale);
    auto target = supplier.CreateImage(244, 120);
    {
        auto penrig = supplier.CreatePenrig(*target);
        DrawTextAndImages(*penrig, supplier);
    }
    EXPECT_TRUE(qafui_testing::MatchesGolden(*target, "penrig_text_images_" +
                                                          std::to_string(int(scale)) + "x"));
}

INSTANTIATE_TEST_SUITE_P(Scales, PenrigGolden, ::testing::Values(1.0f, 2.0f),
                         [](const auto& info) { return info.param == 1.0f ? "1x" : "2x"; });
