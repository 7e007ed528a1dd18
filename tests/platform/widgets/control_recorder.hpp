#pragma once

#include "platform/widgets/ui_interactive_control_view.hpp"

#include <vector>

namespace qafui_testing {

/// Listens to a control and keeps what it said: the interactive change messages in order, with
/// the value at each, and how many plain changed messages came.
struct ControlRecorder {
    explicit ControlRecorder(qorui::UI_ControlView& control) {
        control.NotifyWhenChanged([this](const qorui::UI_ControlChangedMessage& m) {
            ++changed;
            changedValues.push_back(m.GetSender()->GetValue());
        });
        if (auto* interactive = dynamic_cast<qorui::UI_InteractiveControlView*>(&control))
            interactive->NotifyWhenChangedInteractively(
                [this](const qorui::UI_InteractiveControlChangedMessage& m) {
                    messages.push_back(m.GetChangeMessage());
                    values.push_back(m.GetSender()->GetValue());
                });
    }

    /// The messages with runs of continues folded into one, e.g. {0, 1, 2}.
    std::vector<int> Folded() const {
        std::vector<int> out;
        for (int m : messages)
            if (out.empty() || !(m == 1 && out.back() == 1))
                out.push_back(m);
        return out;
    }
    void Clear() {
        messages.clear();
        values.clear();
        changed = 0;
        changedValues.clear();
    }

    std::vector<int> messages;
    std::vector<double> values;
    int changed = 0;
    std::vector<double> changedValues;
};

} // namespace qafui_testing
