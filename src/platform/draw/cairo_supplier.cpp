#include "platform/draw/cairo_supplier.hpp"

#include "platform/draw/image.hpp"
#include "platform/draw/penrig.hpp"

#include <cairo.h>

#include <stdexcept>

namespace qorui::penrig {

SupplierInterface::~SupplierInterface() = default;

namespace {

// The context holds its own reference to the image's surface, so the penrig stays valid even
// if the image is released first (as the measuring penrig's scratch image is).
std::unique_ptr<Penrig> MakePenrig(Image& target, float scale) {
    cairo_t* context = cairo_create(target.GetNativeSurface());
    if (cairo_status(context) != CAIRO_STATUS_SUCCESS) {
        cairo_destroy(context);
        throw std::runtime_error("cannot draw into the image");
    }
    auto penrig = std::make_unique<Penrig>(context, scale);
    cairo_destroy(context); // the penrig holds its own reference
    return penrig;
}

} // namespace

CairoSupplier::CairoSupplier(float scaleFactor) : scale_(scaleFactor) {
    if (!(scaleFactor > 0.0f && scaleFactor <= 8.0f))
        throw std::invalid_argument("CairoSupplier: scale must be above 0 and at most 8");
}

std::unique_ptr<Penrig> CairoSupplier::CreatePenrig(Image& target) const {
    return MakePenrig(target, target.GetScale());
}

std::unique_ptr<Penrig> CairoSupplier::CreateMeasuringPenrig() const {
    auto scratch = Image::Create(1, 1, scale_);
    return MakePenrig(*scratch, scale_);
}

Font CairoSupplier::CreateFont(float pixelSize, bool bold, bool italic) const {
    return Font(pixelSize, bold, italic);
}

qorcore::IntrusivePtr<Image> CairoSupplier::CreateImage(float width, float height) const {
    return Image::Create(width, height, scale_);
}

qorcore::IntrusivePtr<Image> CairoSupplier::CreateImageFromPNG(std::span<const std::uint8_t> data,
                                                               float imageScale) const {
    return Image::LoadPNG(data, imageScale);
}

qorcore::IntrusivePtr<Image> CairoSupplier::CreateImageFromSVG(std::span<const std::uint8_t> data,
                                                               float artworkScale) const {
    return Image::LoadSVG(data, scale_, artworkScale);
}

} // namespace qorui::penrig
