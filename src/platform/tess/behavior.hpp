#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace qormarltess {

/// What a view runs after each refresh of its sheets: the pending visibility changes of its
/// `optional` panels, and what follows them (a new layout). Steps run in the order appended.
class behavior_t {
public:
    using step_t = std::function<void()>;

    void append(step_t step) { steps_m.push_back(std::move(step)); }
    /// Runs every step once. A step that runs the behaviour again (a layout that changes a cell)
    /// is not run recursively: the nested call returns at once.
    void operator()();
    std::size_t size() const noexcept { return steps_m.size(); }

private:
    std::vector<step_t> steps_m;
    bool running_m = false;
};

} // namespace qormarltess
