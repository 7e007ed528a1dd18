#include "platform/tess/behavior.hpp"

namespace qormarltess {

void behavior_t::operator()() {
    if (running_m)
        return;
    running_m = true;
    try {
        // By index: a step may append another.
        for (std::size_t i = 0; i != steps_m.size(); ++i)
            steps_m[i]();
    } catch (...) {
        running_m = false;
        throw;
    }
    running_m = false;
}

} // namespace qormarltess
