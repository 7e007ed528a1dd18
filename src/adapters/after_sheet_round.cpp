#include "adapters/after_sheet_round.hpp"

#include "platform/tess/ui_tess_view_holder.hpp"

#include <utility>

namespace qoraudiofiltersui {

AfterSheetRound::AfterSheetRound(const qormarltess::FactoryToken& token)
    : tasks_(std::make_shared<Tasks>()) {
    qormarltess::UI_TessViewHolder* holder = &token.GetViewHolder();
    std::weak_ptr<Tasks> weak = tasks_;
    // The holder owns the behaviour, so it outlives the step.
    holder->GetRootBehavior().append([weak, holder] {
        const std::shared_ptr<Tasks> tasks = weak.lock();
        if (!tasks || tasks->empty())
            return;
        Tasks now;
        now.swap(*tasks);
        for (auto& task : now)
            task();
        // The behaviour does not run again while it runs: the panels our writes show or hide
        // are ours to bring up to date.
        holder->GetVisibleChangeQueue().Process();
    });
}

AfterSheetRound::~AfterSheetRound() = default;

void AfterSheetRound::Post(std::function<void()> task) {
    if (task)
        tasks_->push_back(std::move(task));
}

} // namespace qoraudiofiltersui
