#include "platform/tess/factory_token.hpp"

#include "platform/core/localizer.hpp"
#include "platform/tess/assemblage.hpp"
#include "platform/tess/ui_tess_view_holder.hpp"

namespace qormarltess {

FactoryToken::FactoryToken(UI_TessViewHolder& holder,
                           const qorui::penrig::SupplierInterface* supplier,
                           const ResourceProvider* resources, const ImageSupplyFunction* images,
                           bool useSpectrumPolicy)
    : holder_(&holder), supplier_(supplier), resources_(resources), images_(images),
      useSpectrumPolicy_(useSpectrumPolicy) {}

vorlen::sheet_t* FactoryToken::FindSheet(vorlen::name_t cell) const {
    return holder_->GetAssemblage().FindSheet(cell);
}

Assemblage& FactoryToken::GetAssemblage() const {
    return holder_->GetAssemblage();
}

std::vector<std::uint8_t> FactoryToken::GetResource(vorlen::name_t name) const {
    if (!resources_ || !*resources_)
        return {};
    return (*resources_)(name);
}

qorcore::IntrusivePtr<qorui::penrig::Image> FactoryToken::GetImage(const std::string& name) const {
    if (images_ && *images_)
        if (auto image = (*images_)(name))
            return image;
    // A name with an extension may be a resource of the view's own ("Curve.png").
    const std::vector<std::uint8_t> bytes = GetResource(vorlen::name_t(name.c_str()));
    if (bytes.empty())
        return {};
    const bool svg = name.size() > 4 && (name.ends_with(".svg") || name.ends_with(".SVG"));
    return svg ? qorui::penrig::Image::LoadSVG(bytes) : qorui::penrig::Image::LoadPNG(bytes);
}

std::string LocalizeString(std::string_view text) {
    return qorcore::Localize(text);
}

} // namespace qormarltess
