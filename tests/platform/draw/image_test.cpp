#include "platform/draw/cairo_supplier.hpp"
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

std::vector<std::uint8_t> ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace

TEST(Image, SizesFollowTheScale) {
    auto image = Image::Create(10.5f, 4, 2.0f);
    EXPECT_EQ(image->GetPixelWidth(), 21);
    EXPECT_EQ(image->GetPixelHeight(), 8);
    EXPECT_FLOAT_EQ(image->GetWidth(), 10.5f);
    EXPECT_EQ(image->GetPixel(0, 0), ColorRGBA(0, 0, 0, 0)) << "new images are transparent";
    EXPECT_EQ(image->GetRawPixel(-1, 0), 0u);
    EXPECT_EQ(image->GetRawPixel(21, 0), 0u);
    EXPECT_THROW(Image::Create(-1, 4), std::runtime_error);
    EXPECT_THROW(Image::Create(1e9f, 4), std::runtime_error);
    EXPECT_THROW(Image::Create(4, 4, 0.0f), std::runtime_error);
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
    const auto bytes = ReadFile(path);
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
    EXPECT_EQ(one->GetPixelWidth(), 10);
    EXPECT_EQ(one->GetPixelHeight(), 8);
    EXPECT_EQ(two->GetPixelWidth(), 20);
    EXPECT_FLOAT_EQ(two->GetWidth(), 10.0f);
    EXPECT_EQ(two->GetPixel(9, 15), ColorRGBA(1, 0, 0, 1));
    EXPECT_EQ(two->GetPixel(10, 15).alpha, 0.0f);
    EXPECT_EQ(one->GetPixel(4, 0), ColorRGBA(1, 0, 0, 1));
}
