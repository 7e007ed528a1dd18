#include "framework/image_provider.hpp"

#include "framework/resource_manager.hpp"

#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <vector>

namespace qoraudiofiltersui {

ImageProvider::ImageProvider(const ResourceManager* resources,
                             const qorui::penrig::SupplierInterface* supplier, void*)
    : resources_(resources), supplier_(supplier) {}

ImageProvider::~ImageProvider() = default;

qorcore::IntrusivePtr<qorui::penrig::Image> ImageProvider::GetImage(std::string_view name) const {
    if (!resources_ || !supplier_ || name.empty())
        return nullptr;
    std::vector<char> bytes;
    auto asBytes = [&bytes] {
        return std::span<const std::uint8_t>(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                             bytes.size());
    };
    try {
        if (supplier_->GetScaleFactor() >= 2.0f &&
            resources_->GetBinary(std::string(name) + "_AT_2X", "png", bytes))
            return supplier_->CreateImageFromPNG(asBytes(), 2.0f);
        if (resources_->GetBinary(name, "png", bytes))
            return supplier_->CreateImageFromPNG(asBytes(), 1.0f);
        if (resources_->GetBinary(name, "svg", bytes))
            return supplier_->CreateImageFromSVG(asBytes());
    } catch (const std::exception&) {
        // A resource that does not decode is a missing image for the caller.
    }
    return nullptr;
}

} // namespace qoraudiofiltersui
