#include "platform/skins/standard_pictures.hpp"

#include "platform/core/ascii_case.hpp"
#include "platform/draw/penrig.hpp"

#include <string>

namespace qorui::skins {

namespace {

constexpr float kSide = 16.0f;

enum class Picture { kNone, kAlert, kCaution, kInfo };

Picture PictureOf(std::string_view name) {
    std::string upper = qorcore::ToUpperAscii(name);
    if (upper.ends_with("_SM"))
        upper.resize(upper.size() - 3);
    if (upper == "ALERT")
        return Picture::kAlert;
    if (upper == "CAUTION")
        return Picture::kCaution;
    if (upper == "INFO")
        return Picture::kInfo;
    return Picture::kNone;
}

/// A filled triangle or circle with a mark in it, the two shapes a person reads as a warning
/// and as a note.
void Draw(penrig::Penrig& p, Picture picture) {
    const qorcore::ColorRGBA red{0.80f, 0.16f, 0.12f, 1.0f};
    const qorcore::ColorRGBA amber{0.93f, 0.62f, 0.05f, 1.0f};
    const qorcore::ColorRGBA blue{0.16f, 0.42f, 0.80f, 1.0f};
    const qorcore::ColorRGBA white{1.0f, 1.0f, 1.0f, 1.0f};
    p.NewPath();
    if (picture == Picture::kInfo) {
        p.SetColor(blue);
        p.FormEllipse({1, 1, 14, 14});
        p.Fill();
        p.FillRect({7, 7, 2, 5}, white);
        p.FillRect({7, 4, 2, 2}, white);
        return;
    }
    p.SetColor(picture == Picture::kAlert ? red : amber);
    p.MoveTo(8, 1);
    p.LineTo(15, 14.5f);
    p.LineTo(1, 14.5f);
    p.ClosePath();
    p.Fill();
    p.FillRect({7, 5, 2, 5}, white);
    p.FillRect({7, 11, 2, 2}, white);
}

} // namespace

qorcore::IntrusivePtr<penrig::Image>
MakeStandardPicture(std::string_view name, const penrig::SupplierInterface& supplier) {
    const Picture picture = PictureOf(name);
    if (picture == Picture::kNone)
        return nullptr;
    auto image = supplier.CreateImage(kSide, kSide);
    auto penrig = supplier.CreatePenrig(*image);
    Draw(*penrig, picture);
    return image;
}

} // namespace qorui::skins
