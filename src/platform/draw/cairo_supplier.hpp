#pragma once

#include "platform/draw/supplier_interface.hpp"

namespace qorui::penrig {

/// The supplier over Cairo, Pango and librsvg that both backends hand out.
class CairoSupplier final : public SupplierInterface {
public:
    /// The scale must be above 0 and at most 8; otherwise std::invalid_argument.
    explicit CairoSupplier(float scaleFactor = 1.0f);

    float GetScaleFactor() const override { return scale_; }
    std::unique_ptr<Penrig> CreatePenrig(Image& target) const override;
    std::unique_ptr<Penrig> CreateMeasuringPenrig() const override;
    Font CreateFont(float pixelSize, bool bold, bool italic) const override;
    qorcore::IntrusivePtr<Image> CreateImage(float width, float height) const override;
    qorcore::IntrusivePtr<Image> CreateImageFromPNG(std::span<const std::uint8_t> data,
                                                    float imageScale) const override;
    qorcore::IntrusivePtr<Image> CreateImageFromSVG(std::span<const std::uint8_t> data,
                                                    float artworkScale = 1.0f) const override;

private:
    float scale_;
};

} // namespace qorui::penrig
