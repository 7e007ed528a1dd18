#include "framework/image_provider.hpp"

#include "framework/resource_manager.hpp"
#include "platform/core/ascii_case.hpp"
#include "platform/skins/standard_pictures.hpp"

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

qorcore::IntrusivePtr<qorui::penrig::Image>
ImageProvider::Load(const std::string& name, std::string_view type, float artworkScale) const {
    std::vector<char> bytes;
    if (!resources_->GetBinary(name, type, bytes))
        return nullptr;
    const std::span<const std::uint8_t> data(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                             bytes.size());
    try {
        return type == "svg" ? supplier_->CreateImageFromSVG(data, artworkScale)
                             : supplier_->CreateImageFromPNG(data, artworkScale);
    } catch (const std::exception&) {
        // A resource that does not decode is a missing image for the caller.
        return nullptr;
    }
}

qorcore::IntrusivePtr<qorui::penrig::Image> ImageProvider::GetImage(std::string_view name) const {
    if (!resources_ || !supplier_ || name.empty())
        return nullptr;
    const float scale = supplier_->GetScaleFactor();
    const std::string upper = qorcore::ToUpperAscii(name);

    struct candidate_t {
        std::string name;
        std::string_view type;
        float artworkScale;
    };
    std::vector<candidate_t> candidates;
    if (upper.ends_with("_SM")) {
        const std::string base = upper.substr(0, upper.size() - 3);
        const candidate_t x1{"SP_" + base + "_SM_N_D", "png", 1.0f};
        const candidate_t x15{"SP_" + base + "_SM_N_D_AT_3TO2X", "png", 1.5f};
        const candidate_t x2{"SP_" + base + "_SM_N_D_AT_2X", "png", 2.0f};
        const candidate_t vector{"S_" + base + "_SM_N_D_AT_2X", "svg", 2.0f};
        // The bitmap drawn for this density is the sharpest; the vector form beats scaling
        // another bitmap; a bitmap of another density is better than nothing.
        if (scale >= 2.0f)
            candidates = {x2, vector, x15, x1};
        else if (scale >= 1.5f)
            candidates = {x15, vector, x2, x1};
        else
            candidates = {x1, vector, x15, x2};
    } else if (upper.ends_with("_XS")) {
        candidates = {{"S_" + upper.substr(0, upper.size() - 3) + "_XS_N_AT_2X", "svg", 2.0f}};
    }
    const std::string literal(name);
    if (scale >= 2.0f)
        candidates.push_back({literal + "_AT_2X", "png", 2.0f});
    candidates.push_back({literal, "png", 1.0f});
    candidates.push_back({literal, "svg", 1.0f});
    for (const candidate_t& candidate : candidates)
        if (auto image = Load(candidate.name, candidate.type, candidate.artworkScale))
            return image;
    return qorui::skins::MakeStandardPicture(name, *supplier_);
}

} // namespace qoraudiofiltersui
