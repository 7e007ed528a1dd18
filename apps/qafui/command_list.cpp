// qafui list: the 36 effects whose editors the library registers, one a line: name, class GUID,
// kind (G, L, S, X), whether the editor is ready, and the resources it reads.

#include "command.hpp"
#include "live_editor.hpp"

#include "audio/host/reference_effects.hpp"
#include "framework/effect_catalogue.hpp"
#include "framework/library.hpp"
#include "platform/draw/cairo_supplier.hpp"

#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui list\n"
    "\n"
    "Prints the effects whose editors the library registers, one a line: name, class\n"
    "GUID, kind, state and resources. Kinds: G generic sheet and layout, L layout only,\n"
    "S a sheet-driven class of its own, X an archived-node class. States: ready (render,\n"
    "describe and open show it), pending (its view class is not built yet) or missing\n"
    "(followed by the resources the library lacks). \"dsp\" marks the effects the\n"
    "reference host runs with real signal processing (process needs one).\n";

const char* state_name(editor_readiness_t::status_t status) {
    switch (status) {
    case editor_readiness_t::status_t::ready: return "ready";
    case editor_readiness_t::status_t::pending: return "pending";
    case editor_readiness_t::status_t::missing_resources: return "missing";
    }
    return "?";
}

int run(const command_t& command, const std::vector<std::string>& arguments) {
    if (!arguments.empty())
        return usage_error(command, "unexpected argument '" + arguments.front() + "'");
    const qorui::penrig::CairoSupplier supplier(1.0f);
    qoraudiofiltersui::Initialize(&supplier);
    int counts[3] = {0, 0, 0};
    for (const auto& effect : qoraudiofiltersui::GetEffectCatalogue()) {
        const editor_readiness_t readiness = check_editor(effect);
        ++counts[int(readiness.status)];
        const bool dsp = qafhost::HasReferenceEffect(effect.name);
        std::cout << std::left << std::setw(24) << effect.name << effect.GetGuidText() << "  "
                  << char(effect.kind) << "  " << std::setw(8) << state_name(readiness.status)
                  << std::setw(5) << (dsp ? "dsp" : "-") << effect.resources;
        if (!readiness.missing.empty()) {
            std::cout << "  (missing";
            for (const std::string& name : readiness.missing)
                std::cout << " " << name;
            std::cout << ")";
        }
        std::cout << "\n";
    }
    std::cout << "# " << counts[0] << " ready, " << counts[1] << " pending, " << counts[2]
              << " missing resources; " << qafhost::GetReferenceEffectNames().size()
              << " with reference DSP (dsp: render, open and process run it)\n";
    qoraudiofiltersui::Terminate();
    return 0;
}

const command_registration_t registration(command_t{
    "list", "list the effects with their class GUIDs, kinds, states and resources", usage_text,
    &run});

} // namespace

} // namespace qafui::cli
