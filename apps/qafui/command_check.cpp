// qafui check FILE...: validates resource files by their kind, reporting the first error of
// each as FILE:LINE:COLUMN: message.

#include "command.hpp"
#include "script_files.hpp"

#include "core/stream_error.hpp"
#include "layout/box_layout.hpp"
#include "layout/layout_reader.hpp"
#include "sheet/sheet.hpp"
#include "sheet/sheet_reader.hpp"
#ifdef QAFUI_CHECK_ARCHIVES
#include "platform/archive/ui_node_builder.hpp"
#endif

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace qafui::cli {

namespace {

/// Checks the text of one file and throws its first error; `file` names it in positions.
using checker_proc_t = void (*)(std::string_view text, vorlen::name_t file);

void check_sheet_script(std::string_view text, vorlen::name_t file) {
    vorlen::sheet_t sheet;
    vorlen::parse_sheet_script(text, file, sheet);
}

void check_layout_script(std::string_view text, vorlen::name_t file) {
    const vorlen::layout_description_t description =
        vorlen::parse_layout_script(text, file, layout_file_options(file.c_str()));
    vorlen::box_layout_t layout(description.view);
    layout.solve(0, 0);
}

#ifdef QAFUI_CHECK_ARCHIVES
/// Loads the node archive and throws its first problem, placed by line and element path.
void check_node_archive(std::string_view text, vorlen::name_t file) {
    qorui::NodeArchiveReport report;
    const auto root = qorui::UI_NodeBuilder::LoadViewFromXMLText(text, {}, nullptr, {}, &report);
    if (report.diagnostics.empty() && root)
        return;
    if (report.diagnostics.empty())
        throw vorlen::stream_error_t("the archive has no root node", {file, 1});
    const qorui::NodeArchiveDiagnostic& first = report.diagnostics.front();
    const std::string where = first.path.empty() ? "" : first.path + ": ";
    throw vorlen::stream_error_t(where + first.message,
                                 {file, first.line, 0, std::max(first.column - 1, 0)});
}
#endif

struct checker_t {
    const char* extension; // lower case, with the dot
    const char* kind;
    checker_proc_t check;
};

// One row per kind of file; a new kind of resource is one more row and its function.
const checker_t checkers[] = {
    {".mrl", "sheet script", &check_sheet_script},
    {".tss", "layout script", &check_layout_script},
#ifdef QAFUI_CHECK_ARCHIVES
    {".xml", "node archive", &check_node_archive},
#endif
};

std::string usage() {
    std::string text = "usage: qafui check FILE...\n"
                       "\n"
                       "Checks each FILE as the kind of resource its extension names:\n";
    for (const checker_t& checker : checkers)
        text += "  " + std::string(checker.extension) + "  " + checker.kind + "\n";
    text += "\n"
            "Prints 'FILE: ok' for a good file and the first error of a bad one as\n"
            "FILE:LINE:COLUMN: message on standard error. The exit status is 1 when any file\n"
            "failed.\n";
    return text;
}

std::string lower_extension(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    const std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return "";
    std::string extension = path.substr(dot);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

/// Checks one file; true when it is good.
bool check_file(const std::string& path) {
    if (std::error_code error; std::filesystem::is_directory(path, error)) {
        std::cerr << path << ": " << read_failure(path) << "\n";
        return false;
    }
    const std::string extension = lower_extension(path);
    const checker_t* checker = nullptr;
    for (const checker_t& row : checkers)
        if (extension == row.extension)
            checker = &row;
    if (!checker) {
        std::string known;
        for (const checker_t& row : checkers)
            known += (known.empty() ? "" : ", ") + std::string(row.extension);
        std::cerr << path << ": unknown kind of file '" << extension << "' (known: " << known
                  << ")\n";
        return false;
    }
    const std::optional<std::string> text = read_file(path);
    if (!text) {
        std::cerr << path << ": " << read_failure(path) << "\n";
        return false;
    }
    try {
        checker->check(*text, vorlen::name_t(path.c_str()));
    } catch (const std::exception& error) {
        std::cerr << vorlen::format_stream_error(error) << "\n";
        return false;
    }
    std::cout << path << ": ok\n";
    return true;
}

int run(const command_t& command, const std::vector<std::string>& arguments) {
    if (arguments.empty())
        return usage_error(command, "no FILE given");
    for (const std::string& argument : arguments)
        if (argument.size() > 1 && argument[0] == '-')
            return usage_error(command, "unknown option '" + argument + "'");
    bool all_good = true;
    for (const std::string& path : arguments)
        all_good = check_file(path) && all_good;
    return all_good ? 0 : 1;
}

const command_registration_t registration(command_t{
    "check", "check resource files (sheet and layout scripts) and report the first error of each",
    usage(), &run});

} // namespace

} // namespace qafui::cli
