#pragma once

#include "platform/tess/factory_token.hpp"

#include <functional>
#include <memory>
#include <vector>

namespace qormarltess {
class UI_TessViewHolder;
}

namespace qoraudiofiltersui {

/// Work of an adapter that must wait until the sheets have finished their round. A monitor runs
/// inside the sheet's update; a cell written from there would start a round inside the round,
/// and the monitors still to come would miss their changes. Tasks posted here run with the
/// view's behaviour, which runs after each refresh of its sheets, and the visibility changes
/// their writes cause follow at once.
///
/// The step stays with the view after the adapter has gone, and then does nothing.
class AfterSheetRound {
public:
    explicit AfterSheetRound(const qormarltess::FactoryToken& token);
    ~AfterSheetRound();
    AfterSheetRound(const AfterSheetRound&) = delete;
    AfterSheetRound& operator=(const AfterSheetRound&) = delete;

    void Post(std::function<void()> task);
    bool HasPending() const { return !tasks_->empty(); }

private:
    using Tasks = std::vector<std::function<void()>>;
    std::shared_ptr<Tasks> tasks_;
};

} // namespace qoraudiofiltersui
