#pragma once

// --param I=V and --value I=X: parameters set before an editor opens or a file is processed,
// by index or by name, normalised (--param) or in the parameter's plain unit (--value).

#include <string>
#include <vector>

namespace qoraudiofilterhost {
class ParameterStoreFilter;
}

namespace qafui::cli {

struct parameter_assignment_t {
    std::string option; ///< "--param" or "--value", as typed, for messages
    std::string target; ///< an index or a name
    std::string value;  ///< the number as typed
    bool plain = false; ///< --value: `value` is in the parameter's plain unit
};

/// Reads the text after --param or --value ("I=V"); the usage error, or "" when its form is
/// right. Whether the target and value fit the effect is known only once it exists.
std::string read_parameter_assignment(const std::string& option, const std::string& text,
                                      parameter_assignment_t& out);

/// The index of the parameter `target` names: a whole number below the count, or a name
/// compared without regard to case. Throws std::runtime_error naming the target.
int find_parameter(const qoraudiofilterhost::ParameterStoreFilter& filter,
                   const std::string& target);

/// Sets each parameter in order through `SetParameterValue`, as a user's change. Throws
/// std::runtime_error naming the first bad target or value; nothing is set then.
void apply_parameters(const std::vector<parameter_assignment_t>& assignments,
                      qoraudiofilterhost::ParameterStoreFilter& filter);

/// A parameter's plain value as a person reads it: the number and the unit, if it has one.
std::string plain_value_text(const qoraudiofilterhost::ParameterStoreFilter& filter, int index);

} // namespace qafui::cli
