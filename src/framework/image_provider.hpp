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

    /// The image of that resource name: at a scale of 2 or more the "_AT_2X" PNG when there is
    /// one, else the plain PNG, else the SVG. Null when none exists, when there is no manager or
    /// supplier, or when the data does not decode.
    qorcore::IntrusivePtr<qorui::penrig::Image> GetImage(std::string_view name) const;

    const ResourceManager* GetResourceManager() const { return resources_; }
    const qorui::penrig::SupplierInterface* GetDrawSupplier() const { return supplier_; }

private:
    const ResourceManager* resources_;
    const qorui::penrig::SupplierInterface* supplier_;
};

} // namespace qoraudiofiltersui
