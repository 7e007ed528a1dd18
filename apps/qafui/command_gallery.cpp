// qafui gallery -o DIR [--scale 1|2] [--seconds S]: renders every editor that exists, in both
// looks, into DIR with an index.html page that shows them side by side.

#include "command.hpp"
#include "editor_options.hpp"
#include "headless_editor.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/skins/skins.hpp"
#include "platform/ui/headless_window.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui gallery -o DIR [--scale 1|2] [--seconds S]\n"
    "\n"
    "Renders the editor of every effect whose editor exists, in the classic and the v7\n"
    "look, as NAME-classic.png and NAME-v7.png in DIR (made if missing), and writes\n"
    "DIR/index.html showing them. Effects of the reference host run S seconds of\n"
    "virtual time on the test signal first. An editor that can't be shown (its class\n"
    "pending, resources missing) is skipped with its reason on the page and on standard\n"
    "error, and the status is then 1.\n"
    "\n"
    "options:\n"
    "  -o DIR         the folder to write\n"
    "  --scale S      1 (the default) or 2\n"
    "  --seconds S    how long each effect runs before its picture, 0 to 60 (default 1)\n";

constexpr qorui::skins::Skin kLooks[] = {qorui::skins::Skin::kClassic, qorui::skins::Skin::kV7};

std::string Escape(const std::string& text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

/// One effect's line of the page: its pictures, or why there are none.
struct entry_t {
    const qoraudiofiltersui::EffectEntry* effect;
    std::vector<std::string> pictures;
    std::vector<int> widths; // in logical pixels, so that 2x pictures show at their size
    std::string note;
};

/// Renders one editor in the current look into `path`; returns its width.
int Render(const qoraudiofiltersui::EffectEntry& effect, const editor_options_t& options,
           const std::filesystem::path& path) {
    headless_editor_t session(effect, options);
    session.run();
    session.window().RenderAll();
    session.window().WritePNG(path.string());
    return int(std::ceil(session.editor().view()->GetFrame().width));
}

void WriteIndex(const std::filesystem::path& folder, const std::vector<entry_t>& entries,
                float scale) {
    std::ofstream page(folder / "index.html", std::ios::binary);
    page << "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
            "<title>qafui editors</title>\n<style>\n"
            "body { font-family: sans-serif; background: #f4f4f4; margin: 2em; }\n"
            "section { margin-bottom: 2.5em; }\n"
            "h2 { font-size: 1.1em; margin-bottom: 0.2em; }\n"
            ".meta { color: #666; font-size: 0.85em; margin-bottom: 0.6em; }\n"
            ".looks { display: flex; gap: 1.5em; flex-wrap: wrap; align-items: flex-start; }\n"
            "figure { margin: 0; } figcaption { font-size: 0.8em; color: #444; }\n"
            "img { border: 1px solid #ccc; }\n"
            "</style>\n</head>\n<body>\n<h1>qafui editors</h1>\n";
    std::size_t shown = 0;
    for (const entry_t& entry : entries)
        shown += entry.pictures.empty() ? 0 : 1;
    page << "<p>" << shown << " of " << entries.size() << " editors, at scale " << scale
         << ".</p>\n";
    for (const entry_t& entry : entries) {
        const auto& effect = *entry.effect;
        page << "<section>\n<h2>" << Escape(effect.name) << "</h2>\n<div class=\"meta\">"
             << Escape(effect.GetGuidText()) << " &middot; kind " << char(effect.kind)
             << " &middot; " << Escape(effect.resources) << "</div>\n";
        if (entry.pictures.empty()) {
            page << "<p><em>" << Escape(entry.note) << "</em></p>\n";
        } else {
            page << "<div class=\"looks\">\n";
            for (std::size_t i = 0; i < entry.pictures.size(); ++i)
                page << "<figure><img src=\"" << Escape(entry.pictures[i]) << "\" width=\""
                     << entry.widths[i] << "\" alt=\"" << Escape(effect.name) << "\"><figcaption>"
                     << Escape(std::string(qorui::skins::GetSkinName(kLooks[i])))
                     << "</figcaption></figure>\n";
            page << "</div>\n";
        }
        page << "</section>\n";
    }
    page << "</body>\n</html>\n";
    if (!page)
        throw std::runtime_error("cannot write " + (folder / "index.html").string());
}

int run(const command_t& command, const std::vector<std::string>& arguments) {
    editor_options_t options;
    options.seconds = 1.0;
    const editor_option_rules_t rules{.effect = false,
                                      .output = "folder",
                                      .input = false,
                                      .skin = false,
                                      .max_seconds = 60.0,
                                      .parameters = false};
    if (const std::string error = read_editor_options(arguments, rules, options); !error.empty())
        return usage_error(command, error);
    const std::string& output = options.output;
    const float scale = options.scale;
    if (output.empty())
        return usage_error(command, "no output folder given (-o DIR)");
    const std::filesystem::path folder(output);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_directory(folder)) {
        std::cerr << "qafui gallery: cannot make the folder " << output << ": "
                  << (error ? error.message() : "a file of that name is in the way") << "\n";
        return 1;
    }

    const qorui::penrig::CairoSupplier supplier(scale);
    qoraudiofiltersui::Initialize(&supplier);
    int status = 0;
    std::vector<entry_t> entries;
    std::vector<std::string> skipped;
    for (const auto& effect : qoraudiofiltersui::GetEffectCatalogue()) {
        entry_t entry{&effect, {}, {}, {}};
        if (const editor_readiness_t readiness = check_editor(effect);
            readiness.status != editor_readiness_t::status_t::ready) {
            entry.note = "skipped: " + readiness.reason();
            skipped.push_back(std::string(effect.name) + ": " + readiness.reason());
        } else {
            for (const qorui::skins::Skin skin : kLooks) {
                const qorui::skins::ScopedSkin look(skin);
                const std::string name = std::string(effect.name) + "-" +
                                         std::string(qorui::skins::GetSkinName(skin)) + ".png";
                try {
                    entry.widths.push_back(Render(effect, options, folder / name));
                    entry.pictures.push_back(name);
                } catch (const std::exception& failure) {
                    std::cerr << "qafui gallery: " << effect.name << " ("
                              << qorui::skins::GetSkinName(skin) << "): " << failure.what() << "\n";
                    entry.pictures.clear();
                    entry.note = std::string("it failed to render: ") + failure.what();
                    status = 1;
                    break;
                }
            }
            if (!entry.pictures.empty())
                std::cout << effect.name << ": " << entry.pictures.size() << " pictures\n";
        }
        entries.push_back(std::move(entry));
    }
    // An editor that can't be shown yet is named with its reason, and the whole run fails, so
    // that a gallery never looks complete when it is not.
    for (const std::string& line : skipped)
        std::cerr << "qafui gallery: skipped " << line << "\n";
    if (!skipped.empty()) {
        std::cerr << "qafui gallery: " << skipped.size() << " of " << entries.size()
                  << " editors skipped\n";
        status = 1;
    }
    try {
        WriteIndex(folder, entries, scale);
        std::cout << "wrote " << (folder / "index.html").string() << "\n";
    } catch (const std::exception& failure) {
        std::cerr << "qafui gallery: " << failure.what() << "\n";
        status = 1;
    }
    qoraudiofiltersui::Terminate();
    return status;
}

const command_registration_t registration(command_t{
    "gallery", "render every editor that exists into a folder with an index page", usage_text,
    &run});

} // namespace

} // namespace qafui::cli
