#include "golden_image.hpp"

#include <cairo.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace qafui_testing {

namespace {

bool UpdateRequested() {
    const char* env = std::getenv("QAFUI_UPDATE_GOLDEN");
    return env && std::string(env) == "1";
}

int Channel(std::uint32_t v, int shift) {
    return int((v >> shift) & 0xFF);
}

} // namespace

::testing::AssertionResult MatchesGolden(const qorui::penrig::Image& image, const std::string& name,
                                         GoldenTolerance tolerance) {
    namespace fs = std::filesystem;
    const fs::path golden = fs::path(QAFUI_GOLDEN_DIR) / (name + ".png");
    if (UpdateRequested()) {
        fs::create_directories(golden.parent_path());
        image.WritePNG(golden.string());
        return ::testing::AssertionSuccess() << "updated " << golden;
    }
    const fs::path outDir = fs::path(QAFUI_GOLDEN_OUTPUT_DIR);
    fs::create_directories(outDir);
    const fs::path actualPath = outDir / (name + ".actual.png");
    if (!fs::exists(golden)) {
        image.WritePNG(actualPath.string());
        return ::testing::AssertionFailure()
               << "missing golden image " << golden << " (actual written to " << actualPath
               << "; run `make update-golden` after checking it)";
    }
    qorcore::IntrusivePtr<qorui::penrig::Image> expected;
    try {
        expected = qorui::penrig::Image::LoadPNGFile(golden.string());
    } catch (const std::exception& e) {
        return ::testing::AssertionFailure() << "unreadable golden " << golden << ": " << e.what();
    }
    const int w = image.GetPixelWidth();
    const int h = image.GetPixelHeight();
    if (expected->GetPixelWidth() != w || expected->GetPixelHeight() != h) {
        image.WritePNG(actualPath.string());
        return ::testing::AssertionFailure()
               << name << ": size " << w << "x" << h << " but golden is "
               << expected->GetPixelWidth() << "x" << expected->GetPixelHeight()
               << " (actual written to " << actualPath << ")";
    }
    auto diff = qorui::penrig::Image::Create(float(w), float(h), 1.0f);
    std::uint32_t* diffPixels = nullptr;
    int different = 0;
    int worst = 0;
    int firstX = -1, firstY = -1;
    // The difference image is written pixel by pixel through Cairo's own buffer.
    cairo_surface_t* surface = diff->GetNativeSurface();
    unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < h; ++y) {
        diffPixels = reinterpret_cast<std::uint32_t*>(data + y * stride);
        for (int x = 0; x < w; ++x) {
            const std::uint32_t a = image.GetRawPixel(x, y);
            const std::uint32_t b = expected->GetRawPixel(x, y);
            int delta = 0;
            for (int shift : {0, 8, 16, 24})
                delta = std::max(delta, std::abs(Channel(a, shift) - Channel(b, shift)));
            worst = std::max(worst, delta);
            if (delta > tolerance.channel) {
                if (different++ == 0) {
                    firstX = x;
                    firstY = y;
                }
                diffPixels[x] = 0xFFFF0000u;
            } else {
                const std::uint32_t grey = 0xC0 + Channel(a, 8) / 4;
                diffPixels[x] = 0xFF000000u | (grey << 16) | (grey << 8) | grey;
            }
        }
    }
    cairo_surface_mark_dirty(surface);
    if (different <= tolerance.pixels)
        return ::testing::AssertionSuccess();
    const fs::path diffPath = outDir / (name + ".diff.png");
    image.WritePNG(actualPath.string());
    diff->WritePNG(diffPath.string());
    return ::testing::AssertionFailure()
           << name << ": " << different << " pixels differ (allowed " << tolerance.pixels
           << ", channel tolerance " << tolerance.channel << ", largest difference " << worst
           << ", first at " << firstX << "," << firstY << "); see " << actualPath << " and "
           << diffPath;
}

} // namespace qafui_testing
