#pragma once

#include "layout/layout_reader.hpp"

#include <filesystem>
#include <optional>
#include <string>

namespace qafui::cli {

/// The whole of a file, or nothing when it cannot be read.
std::optional<std::string> read_file(const std::filesystem::path& path);
/// Why `read_file` gave nothing, for a message: a folder, a missing file, or unreadable.
std::string read_failure(const std::filesystem::path& path);

/// Reader options for a layout file on disk: `layout_script` inserts the file IDENTIFIER.tss
/// beside it (also in upper or lower case), and localisable texts show their defaults when no
/// tables are loaded.
vorlen::layout_reader_options_t layout_file_options(const std::string& file);

} // namespace qafui::cli
