#pragma once

#include "platform/core/intrusive_ptr.hpp"
#include "platform/draw/image.hpp"
#include "platform/draw/supplier_interface.hpp"

#include <string_view>

namespace qorui::skins {

/// The toolkit's own small pictures, for names an editor's layout uses that no library carries:
/// "Alert", "Caution" and "Info", with or without the "_Sm" of the small class, in any case.
/// Drawn at 16 by 16 logical pixels at the supplier's scale; null for any other name.
qorcore::IntrusivePtr<penrig::Image> MakeStandardPicture(std::string_view name,
                                                         const penrig::SupplierInterface& supplier);

} // namespace qorui::skins
