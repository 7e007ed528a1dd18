#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/draw/font.hpp"

#include <cstdint>
#include <memory>
#include <span>

namespace qorui::penrig {

class Image;
class Penrig;

/// The draw supplier a host hands to the library: it makes penrigs, fonts and images for one
/// scale factor. Controls keep a pointer to it to measure text and to prepare offscreen images
/// outside of a paint.
class SupplierInterface {
public:
    virtual ~SupplierInterface();

    virtual float GetScaleFactor() const = 0;

    /// A penrig drawing into `target` at the target's own pixel density.
    virtual std::unique_ptr<Penrig> CreatePenrig(Image& target) const = 0;
    /// A penrig for measuring text; what it draws goes nowhere.
    virtual std::unique_ptr<Penrig> CreateMeasuringPenrig() const = 0;

    virtual Font CreateFont(float pixelSize, bool bold = false, bool italic = false) const = 0;

    /// A transparent image of the given logical size at the supplier's scale.
    virtual qorcore::IntrusivePtr<Image> CreateImage(float width, float height) const = 0;
    /// PNG data drawn for `imageScale` (2 for "@2x" artwork). Throws std::runtime_error.
    virtual qorcore::IntrusivePtr<Image> CreateImageFromPNG(std::span<const std::uint8_t> data,
                                                            float imageScale = 1.0f) const = 0;
    /// SVG data rendered at the supplier's scale; `artworkScale` as for PNG (2 for "_AT_2X"
    /// artwork). Throws std::runtime_error.
    virtual qorcore::IntrusivePtr<Image> CreateImageFromSVG(std::span<const std::uint8_t> data,
                                                            float artworkScale = 1.0f) const = 0;
};

} // namespace qorui::penrig
