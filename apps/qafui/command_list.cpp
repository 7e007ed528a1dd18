// qafui list: the 36 effects whose editors the library registers, one a line: name, class GUID,
// kind (G, L, S, X) and the resources the editor reads.

#include "command.hpp"

#include "framework/effect_catalogue.hpp"

#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

namespace qafui::cli {

namespace {

const char usage_text[] =
    "usage: qafui list\n"
    "\n"
    "Prints the effects whose editors the library registers, one a line:\n"
    "name, class GUID, kind and resources. Kinds: G generic sheet and layout,\n"
    "L layout only, S a sheet-driven class of its own, X an archived-node\n"
    "class. An editor marked \"(pending)\" answers with an empty editor until\n"
    "its view class is built.\n";

int run(const command_t& command, const std::vector<std::string>& arguments) {
    if (!arguments.empty())
        return usage_error(command, "unexpected argument '" + arguments.front() + "'");
    int pending = 0;
    for (const auto& effect : qoraudiofiltersui::GetEffectCatalogue()) {
        const bool built = qoraudiofiltersui::IsEditorClassBuilt(effect);
        pending += built ? 0 : 1;
        std::cout << std::left << std::setw(24) << effect.name << effect.GetGuidText() << "  "
                  << char(effect.kind) << "  " << effect.resources << (built ? "" : "  (pending)")
                  << "\n";
    }
    if (pending != 0)
        std::cout << "# " << pending
                  << " editors marked (pending) answer with an empty editor until their view "
                     "class is built\n";
    return 0;
}

const command_registration_t registration(command_t{
    "list", "list the effects with their class GUIDs, kinds and resources", usage_text, &run});

} // namespace

} // namespace qafui::cli
