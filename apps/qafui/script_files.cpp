#include "script_files.hpp"

#include "core/expression/virtual_machine.hpp"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

namespace qafui::cli {

namespace {

std::string with_case(std::string text, int (*convert)(int)) {
    for (char& c : text)
        c = static_cast<char>(convert(static_cast<unsigned char>(c)));
    return text;
}

} // namespace

std::optional<std::string> read_file(const std::filesystem::path& path) {
    // A folder opens as a stream on some systems and reads as nothing: it is no script.
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return std::nullopt;
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string read_failure(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return "is a folder, not a file";
    if (!std::filesystem::exists(path, error))
        return "no such file";
    return "cannot read the file";
}

vorlen::layout_reader_options_t layout_file_options(const std::string& file) {
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    vorlen::layout_reader_options_t options;
    options.provider =
        [folder](const std::string& identifier) -> std::optional<vorlen::layout_source_t> {
        for (const std::string& name :
             {identifier, with_case(identifier, ::toupper), with_case(identifier, ::tolower)}) {
            const std::filesystem::path path = folder / (name + ".tss");
            if (std::optional<std::string> inserted = read_file(path))
                return vorlen::layout_source_t{*inserted, vorlen::name_t(path.string().c_str())};
        }
        return std::nullopt;
    };
    // Without the editor's tables a localisable text shows its default, the part after '='.
    if (!vorlen::localization_ready())
        vorlen::set_localization_proc([](const std::string& key) {
            const std::size_t equal = key.find('=');
            return key.rfind("$$$/", 0) == 0 && equal != std::string::npos ? key.substr(equal + 1)
                                                                           : key;
        });
    return options;
}

} // namespace qafui::cli
