#pragma once

#include "core/any_regular.hpp"
#include "core/name.hpp"

#include <functional>
#include <vector>

namespace qorui {
class UI_Node;
}

namespace qormarltess {
class UI_QORClientWidgetTessAdapter;
class FactoryToken;
} // namespace qormarltess

namespace qoraudiofiltersui {

/// What layout scripts call for a widget name the script engine does not know: it makes the
/// widget's adapter, or answers null. The parent and the token are handed to the adapter's base
/// as they come.
using ClientAdapterFactory = std::function<qormarltess::UI_QORClientWidgetTessAdapter*(
    const vorlen::name_t& widget, const vorlen::dictionary_t& arguments, qorui::UI_Node* parent,
    const qormarltess::FactoryToken& token)>;

/// The library's factory, made once behind a thread-safe local static.
const ClientAdapterFactory* GetLibraryAdapterFactory();

/// The hook for widgets this library does not know. Stored as given, not owned; a later call
/// replaces it; null clears it.
void SetClientAdapterFactoryProc(const ClientAdapterFactory* proc);
const ClientAdapterFactory* GetClientAdapterFactoryProc();

/// Appends the six widget names of this library, in their fixed order, after what `names`
/// already holds.
void AppendAvailableWidgetNames(std::vector<vorlen::name_t>& names);

} // namespace qoraudiofiltersui
