#pragma once

#include <string>
#include <string_view>

namespace qoraudiofiltersui {

class ResourceManager;

/// The two script texts of a sheet-driven editor, and which layout resource gave the layout.
struct EditorResources {
    std::string sheetText;
    std::string layoutText;
    /// "" when no layout was found, else the name read: `name` or `name` + ".V7".
    std::string layoutName;
};

/// Chooses the scripts of a sheet-driven editor named `name`:
/// - the sheet is (name, "mrl") when `hasSheet` is set and it exists; there are no ".V7" sheets;
/// - the layout is (name + ".V7", "tss") under the newer look when it exists, else (name, "tss")
///   when that exists.
/// A missing resource leaves its text empty; that is no error here. A null manager finds
/// nothing.
EditorResources ChooseEditorResources(const ResourceManager* resources, std::string_view name,
                                      bool hasSheet, bool newerLook);

} // namespace qoraudiofiltersui
