#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/supplier_interface.hpp"

#include <string_view>

namespace qoraudiofiltersui {

class ResourceManager;

/// Makes images from the library's PNG and SVG resources through the draw supplier.
class ImageProvider {
public:
    /// Neither pointer is owned. `sharedCache` is reserved for a cache shared between
    /// libraries; this library passes none.
    ImageProvider(const ResourceManager* resources,
                  const qorui::penrig::SupplierInterface* supplier, void* sharedCache = nullptr);
    virtual ~ImageProvider();
    ImageProvider(const ImageProvider&) = delete;
    ImageProvider& operator=(const ImageProvider&) = delete;

    /// The image of a name, at the supplier's scale, first found of:
    /// 1. an icon by the name a layout writes, "Reset_Sm" (any case): the PNG drawn for the
    ///    scale (SP_RESET_SM_N_D at 1x, _AT_3TO2X at 1.5x, _AT_2X at 2x), else its SVG
    ///    S_RESET_SM_N_D_AT_2X, else another PNG of it; "Flyout_Xs" the same from
    ///    S_FLYOUT_XS_N_AT_2X;
    /// 2. a resource of that very name: at a scale of 2 or more its "_AT_2X" PNG, else the PNG,
    ///    else the SVG;
    /// 3. the toolkit's own pictures ("Alert_Sm").
    /// Null when none exists, when there is no manager or supplier, or when data does not decode.
    qorcore::IntrusivePtr<qorui::penrig::Image> GetImage(std::string_view name) const;

    const ResourceManager* GetResourceManager() const { return resources_; }
    const qorui::penrig::SupplierInterface* GetDrawSupplier() const { return supplier_; }

private:
    /// The resource `name` of `type` drawn for artwork of `artworkScale`; null when absent or
    /// unreadable.
    qorcore::IntrusivePtr<qorui::penrig::Image> Load(const std::string& name, std::string_view type,
                                                     float artworkScale) const;

    const ResourceManager* resources_;
    const qorui::penrig::SupplierInterface* supplier_;
};

} // namespace qoraudiofiltersui
