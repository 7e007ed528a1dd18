// The library's pictures by the names layouts give them, at every density, from one source per
// icon; and the cursors the graphs ask for.

#include "framework/image_provider.hpp"
#include "framework/library.hpp"
#include "framework/resource_manager.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/draw/image.hpp"
#include "platform/ui/cursor_pictures.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace {

using qoraudiofiltersui::GetLibraryImageProvider;
using qoraudiofiltersui::GetLibraryResourceManager;
using qorui::penrig::Image;

/// The library initialised at one density for as long as it lives.
class Library {
public:
    explicit Library(float scale) : supplier_(scale) { qoraudiofiltersui::Initialize(&supplier_); }
    ~Library() { qoraudiofiltersui::Terminate(); }

private:
    qorui::penrig::CairoSupplier supplier_;
};

constexpr const char* kBitmapIcons[] = {"Add",
                                        "Remove",
                                        "Reset",
                                        "Invert",
                                        "LowShelf_FirstOrder",
                                        "LowShelf_SecondOrder",
                                        "HighShelf_FirstOrder",
                                        "HighShelf_SecondOrder"};
constexpr const char* kVectorIcons[] = {"ArrowLeft", "ArrowRight", "Link"};

/// How many pixels are not transparent: a drawn icon has some, a blank one none.
int InkedPixels(const Image& image) {
    int inked = 0;
    for (int y = 0; y < image.GetPixelHeight(); ++y)
        for (int x = 0; x < image.GetPixelWidth(); ++x)
            inked += image.GetPixel(x, y).alpha > 0.1f ? 1 : 0;
    return inked;
}

TEST(ImageProvider, EveryIconResolvesAtEachDensityToSixteenLogicalPixels) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        Library library(scale);
        std::vector<std::string> names;
        for (const char* icon : kBitmapIcons)
            names.push_back(std::string(icon) + "_Sm");
        for (const char* icon : kVectorIcons)
            names.push_back(std::string(icon) + "_Sm");
        names.push_back("reset_sm"); // layouts and archives differ in case
        for (const std::string& name : names) {
            SCOPED_TRACE(name + " at " + std::to_string(scale));
            const auto image = GetLibraryImageProvider()->GetImage(name);
            ASSERT_TRUE(image);
            EXPECT_EQ(image->GetWidth(), 16.0f);
            EXPECT_EQ(image->GetHeight(), 16.0f);
            EXPECT_EQ(image->GetPixelWidth(), int(std::lround(16 * scale)));
            EXPECT_GT(InkedPixels(*image), 10) << "a picture, not a blank";
        }
        const auto flyout = GetLibraryImageProvider()->GetImage("SelectedToolFlyout_Xs");
        ASSERT_TRUE(flyout);
        EXPECT_EQ(flyout->GetWidth(), 8.0f);
        EXPECT_EQ(flyout->GetPixelWidth(), int(std::lround(8 * scale)));
    }
}

TEST(ImageProvider, EachBitmapIsItsVectorSourceDrawnAtThatSize) {
    Library library(2.0f);
    const auto* resources = GetLibraryResourceManager();
    auto bytes = [&](const std::string& name, const char* type) {
        std::vector<char> data;
        EXPECT_TRUE(resources->GetBinary(name, type, data)) << name << "." << type;
        return std::vector<std::uint8_t>(data.begin(), data.end());
    };
    for (const char* icon : kBitmapIcons) {
        const std::string base = icon;
        const auto svg = bytes("S_" + base + "_SM_N_D_AT_2X", "svg");
        struct Form {
            const char* suffix;
            float scale; // device pixels per logical pixel of a 16-pixel icon
        };
        for (const Form form : {Form{"", 1.0f}, Form{"_AT_3TO2X", 1.5f}, Form{"_AT_2X", 2.0f}}) {
            SCOPED_TRACE(base + form.suffix);
            const auto png =
                Image::LoadPNG(bytes("SP_" + base + "_SM_N_D" + form.suffix, "png"), form.scale);
            const auto drawn = Image::LoadSVG(svg, form.scale, 2.0f);
            ASSERT_EQ(png->GetPixelWidth(), drawn->GetPixelWidth());
            ASSERT_EQ(png->GetPixelHeight(), drawn->GetPixelHeight());
            float worst = 0.0f;
            for (int y = 0; y < png->GetPixelHeight(); ++y)
                for (int x = 0; x < png->GetPixelWidth(); ++x) {
                    const auto a = png->GetPixel(x, y);
                    const auto b = drawn->GetPixel(x, y);
                    worst = std::max({worst, std::abs(a.red - b.red), std::abs(a.alpha - b.alpha)});
                }
            // Both are the same drawing; only the PNG's 8-bit rounding may differ.
            EXPECT_LE(worst, 2.0f / 255.0f);
        }
    }
}

TEST(ImageProvider, NamesTheLibraryLacksComeFromTheToolkitOrNowhere) {
    Library library(1.0f);
    const auto alert = GetLibraryImageProvider()->GetImage("Alert_Sm");
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->GetWidth(), 16.0f);
    const auto middle = alert->GetPixel(8, 9);
    EXPECT_GT(middle.alpha, 0.9f);
    EXPECT_FALSE(GetLibraryImageProvider()->GetImage("NoSuchIcon_Sm"));
    EXPECT_FALSE(GetLibraryImageProvider()->GetImage("NoSuchPicture"));
}

TEST(ResourceManagerCursors, TheGraphsCursorsAreEnteredWithTheirHotSpots) {
    struct Row {
        int cursor;
        int x, y;
    };
    {
        Library library(1.0f);
        for (const Row row : {Row{200, 8, 6}, Row{201, 6, 8}, Row{202, 1, 1}, Row{203, 1, 1}}) {
            SCOPED_TRACE(row.cursor);
            const qorui::CursorPicture* picture = qorui::FindCursorPicture(row.cursor);
            ASSERT_NE(picture, nullptr);
            EXPECT_EQ(picture->hotSpot.x, row.x);
            EXPECT_EQ(picture->hotSpot.y, row.y);
            EXPECT_EQ(picture->picture->GetPixelWidth(), 32);
            ASSERT_TRUE(picture->picture2x);
            EXPECT_EQ(picture->picture2x->GetPixelWidth(), 64);
            EXPECT_EQ(picture->picture2x->GetWidth(), 32.0f);
            EXPECT_GT(InkedPixels(*picture->picture), 20);
        }
        EXPECT_FALSE(GetLibraryResourceManager()->MakeCursorFromPNG(204)) << "no such cursor";
        EXPECT_EQ(qorui::FindCursorPicture(204), nullptr);
    }
    EXPECT_EQ(qorui::FindCursorPicture(200), nullptr) << "the library took its cursors away";
}

} // namespace
