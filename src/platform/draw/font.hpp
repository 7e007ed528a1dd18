#pragma once

#include <string>

namespace qorui::penrig {

/// A font by family, pixel size and style. Text is always set in the bundled DejaVu family;
/// another family name falls back to it, so layouts come out the same on every machine.
struct Font {
    static constexpr const char* kDefaultFamily = "DejaVu Sans";

    std::string family = kDefaultFamily;
    float size = 11.0f; ///< in logical pixels (the em size), not points
    bool bold = false;
    bool italic = false;

    Font() = default;
    explicit Font(float pixelSize, bool isBold = false, bool isItalic = false)
        : size(pixelSize), bold(isBold), italic(isItalic) {}
    Font(std::string familyName, float pixelSize, bool isBold = false, bool isItalic = false)
        : family(std::move(familyName)), size(pixelSize), bold(isBold), italic(isItalic) {}

    friend bool operator==(const Font&, const Font&) = default;
};

} // namespace qorui::penrig
