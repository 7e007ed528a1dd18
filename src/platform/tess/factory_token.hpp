#pragma once

#include "core/any_regular.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/draw/image.hpp"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qorui::penrig {
class SupplierInterface;
}

namespace vorlen {
class sheet_t;
}

namespace qormarltess {

class Assemblage;
class UI_TessViewHolder;

/// Reads resources named from scripts ("Curve.png"); an empty vector when there is none.
using ResourceProvider = std::function<std::vector<std::uint8_t>(vorlen::name_t)>;
/// Makes an image by the name a layout writes ("Add_Sm"); null when there is none.
using ImageSupplyFunction =
    std::function<qorcore::IntrusivePtr<qorui::penrig::Image>(const std::string& name)>;

/// What a widget's adapter may reach while the engine builds a view: the sheets its names
/// resolve against, the assemblage that ties them to widgets, the view holder, and the
/// resources of the view. Valid during the adapter's construction and as long as the view
/// holder lives.
class FactoryToken {
public:
    FactoryToken(UI_TessViewHolder& holder, const qorui::penrig::SupplierInterface* supplier,
                 const ResourceProvider* resources, const ImageSupplyFunction* images,
                 bool useSpectrumPolicy);

    /// The sheet that has an input or output of that name, the view's sheet before the
    /// layouts' own; null when none has it.
    vorlen::sheet_t* FindSheet(vorlen::name_t cell) const;
    Assemblage& GetAssemblage() const;
    UI_TessViewHolder& GetViewHolder() const { return *holder_; }
    const qorui::penrig::SupplierInterface* GetDrawSupplier() const { return supplier_; }
    /// The newer look's rules for spectrum displays are asked for.
    bool GetUseSpectrumPolicy() const { return useSpectrumPolicy_; }

    std::vector<std::uint8_t> GetResource(vorlen::name_t name) const;
    qorcore::IntrusivePtr<qorui::penrig::Image> GetImage(const std::string& name) const;

private:
    UI_TessViewHolder* holder_;
    const qorui::penrig::SupplierInterface* supplier_;
    const ResourceProvider* resources_;
    const ImageSupplyFunction* images_;
    bool useSpectrumPolicy_;
};

/// A text of a script as it shows: "$$$/path/Key=Default" resolves through the localiser (the
/// default when the key is unknown); any other text stands as written.
std::string LocalizeString(std::string_view text);

} // namespace qormarltess
