#pragma once

#include "framework/audio_filter_editor_view_base.hpp"
#include "platform/core/guid.hpp"
#include "platform/core/intrusive_ptr.hpp"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace qoraudiofiltersui {

/// How an effect's editor is made.
enum class EditorKind : char {
    kGeneric = 'G',     ///< the generic factory: sheet and layout scripts
    kLayoutOnly = 'L',  ///< the generic factory without a sheet
    kSheetView = 'S',   ///< a class of its own on the sheet-driven view
    kArchiveView = 'X', ///< a class of its own on the archived-node view
};

/// One of the 36 effects whose editors this library registers.
struct EffectEntry {
    const char* name;
    qorcore::Guid classGuid;
    EditorKind kind;
    const char* viewClass;
    /// The name the editor passes to the resource manager.
    const char* resourceName;
    /// The resources it reads, "NAME.type" separated by spaces.
    const char* resources;

    std::string GetGuidText() const { return classGuid.AsString(); }
    bool HasSheet() const { return kind == EditorKind::kGeneric || kind == EditorKind::kSheetView; }
};

/// The 36 effects, in the order of registration.
std::span<const EffectEntry> GetEffectCatalogue();
/// The entry of an effect by name (case-insensitive) or by class GUID text; null if none.
const EffectEntry* FindEffect(std::string_view nameOrGuid);

/// The generic factory: an editor made from the scripts `resourceName` alone. Before
/// `Initialize` (no resource manager or supplier) it throws the null-pointer exception.
qorcore::IntrusivePtr<AudioFilterEditorViewBase>
CreateSheetEditor(const char* resourceName, bool hasSheet, std::shared_ptr<AudioFilter> filter);

/// Whether the editor class of the effect exists yet; until then its factory answers with a
/// `PendingEditorView`. The generic kinds always have theirs.
bool IsEditorClassBuilt(const EffectEntry& effect);

/// Makes the editor of an effect that has a view class of its own (kinds S and X).
using EditorClassFactory =
    std::function<qorcore::IntrusivePtr<AudioFilterEditorViewBase>(std::shared_ptr<AudioFilter>)>;
/// Enters the view class of an effect by its name, for its factory to make; false for an
/// empty name or factory, or a name entered before. Each effect's source file enters its class
/// with an `EditorClassRegistration` when the program loads.
bool RegisterEditorClass(const char* effectName, EditorClassFactory factory);

struct EditorClassRegistration {
    EditorClassRegistration(const char* effectName, EditorClassFactory factory) {
        RegisterEditorClass(effectName, std::move(factory));
    }
};

} // namespace qoraudiofiltersui
