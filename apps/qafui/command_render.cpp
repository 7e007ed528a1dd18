// qafui render EFFECT -o PNG [--scale 1|2] [--skin classic|v7]: draws an effect's editor in a
// headless window and writes it as a PNG. Until the reference effects exist, the editor is bound
// to a table of parameters shaped like the effect's.

#include "command.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "framework/resource_manager.hpp"
#include "platform/draw/cairo_supplier.hpp"
#include "platform/host/audio_filter_view_factory_registrar.hpp"
#include "platform/host/parameter_store_filter.hpp"
#include "platform/ui/headless_window.hpp"
#include "platform/ui/skins.hpp"

#include <algorithm>
#include <exception>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui render EFFECT -o PNG [--scale 1|2] [--skin classic|v7]\n"
    "\n"
    "Draws the editor of EFFECT (a name or class GUID of `qafui list`) in a headless\n"
    "window at its natural size and writes it to PNG.\n"
    "\n"
    "options:\n"
    "  -o PNG         the file to write\n"
    "  --scale S      1 (the default) or 2\n"
    "  --skin LOOK    classic (the default) or v7\n";

using qoraudiofilterhost::ParameterDescriptor;

/// The parameters of an effect as its editor reads them: the known layouts, else one normalised
/// parameter per input cell "in" + i of its sheet.
std::vector<ParameterDescriptor> StandInParameters(const qoraudiofiltersui::EffectEntry& effect) {
    if (std::string_view(effect.name) == "VocalEnhancer")
        return {{"Mode", 0.0f, 2.0f, 0.0f}};
    std::vector<ParameterDescriptor> parameters;
    std::vector<char> sheet;
    if (auto* resources = qoraudiofiltersui::GetLibraryResourceManager())
        resources->GetBinary(effect.resourceName, "mrl", sheet);
    const std::string text(sheet.begin(), sheet.end());
    const std::regex input(R"(\bin(\d+)\s*:)");
    int count = 0;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), input);
         it != std::sregex_iterator(); ++it)
        count = std::max(count, std::stoi((*it)[1]) + 1);
    for (int i = 0; i < count; ++i)
        parameters.push_back({"in" + std::to_string(i), 0.0f, 1.0f, 0.0f});
    return parameters;
}

int run(const command_t& command, const std::vector<std::string>& arguments) {
    std::string effectName;
    std::string output;
    float scale = 1.0f;
    auto skin = qorui::skins::Skin::kClassic;
    for (std::size_t i = 0; i != arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        auto next = [&]() -> const std::string* {
            return i + 1 < arguments.size() ? &arguments[++i] : nullptr;
        };
        if (argument == "-o") {
            const std::string* value = next();
            if (!value)
                return usage_error(command, "-o needs a file");
            output = *value;
        } else if (argument == "--scale") {
            const std::string* value = next();
            if (!value || (*value != "1" && *value != "2"))
                return usage_error(command, "--scale takes 1 or 2");
            scale = *value == "2" ? 2.0f : 1.0f;
        } else if (argument == "--skin") {
            const std::string* value = next();
            if (!value || (*value != "classic" && *value != "v7"))
                return usage_error(command, "--skin takes classic or v7");
            skin = *value == "v7" ? qorui::skins::Skin::kV7 : qorui::skins::Skin::kClassic;
        } else if (!argument.empty() && argument[0] == '-') {
            return usage_error(command, "unknown option '" + argument + "'");
        } else if (effectName.empty()) {
            effectName = argument;
        } else {
            return usage_error(command, "one EFFECT only");
        }
    }
    if (effectName.empty())
        return usage_error(command, "no EFFECT given");
    if (output.empty())
        return usage_error(command, "no output file given (-o PNG)");
    const qoraudiofiltersui::EffectEntry* effect = qoraudiofiltersui::FindEffect(effectName);
    if (!effect) {
        std::cerr << "qafui render: no effect '" << effectName << "' (see qafui list)\n";
        return 1;
    }

    const qorui::skins::ScopedSkin look(skin);
    const qorui::penrig::CairoSupplier supplier(scale);
    qoraudiofiltersui::Initialize(&supplier);
    int status = 0;
    try {
        auto filter =
            std::make_shared<qoraudiofilterhost::ParameterStoreFilter>(StandInParameters(*effect));
        auto view = qoraudiofilterhostui::AudioFilterViewFactoryRegistry::Get().CreateEditor(
            effect->GetGuidText(), filter);
        if (!view)
            throw std::runtime_error("no editor is registered for " + effect->GetGuidText());
        const auto size = view->GetFrame();
        qorui::HeadlessWindow window(std::max(1.0f, size.width), std::max(1.0f, size.height),
                                     scale);
        window.AddNode(view);
        window.AdvanceTime(0.05);
        window.RenderAll();
        window.WritePNG(output);
        window.GetRoot()->RemoveAllChildren();
    } catch (const std::exception& error) {
        std::cerr << "qafui render: " << effect->name << ": " << error.what() << "\n";
        status = 1;
    }
    qoraudiofiltersui::Terminate();
    return status;
}

const command_registration_t registration(command_t{
    "render", "draw an effect's editor headless into a PNG", usage_text, &run});

} // namespace

} // namespace qafui::cli
