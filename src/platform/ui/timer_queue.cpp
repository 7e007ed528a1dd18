#include "platform/ui/timer_queue.hpp"

#include "platform/ui/ui_node.hpp"

#include <algorithm>

namespace qorui {

void TimerQueue::Install(UI_Node* node, int id, TimeStamp period, TimeStamp now) {
    Remove(node, id);
    entries_.push_back(
        {qorcore::IntrusivePtr<UI_Node>(node), id, period, now + period, nextSequence_++});
}

bool TimerQueue::Remove(const UI_Node* node, int id) {
    return std::erase_if(entries_,
                         [&](const Entry& e) { return e.node.get() == node && e.id == id; }) > 0;
}

std::size_t TimerQueue::RemoveSubtree(const UI_Node* root) {
    return std::erase_if(entries_, [&](const Entry& e) {
        return e.node.get() == root || root->IsAncestorOf(e.node.get());
    });
}

bool TimerQueue::Has(const UI_Node* node, int id) const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& e) { return e.node.get() == node && e.id == id; });
}

std::optional<TimerQueue::TimeStamp> TimerQueue::GetNextDue() const {
    std::optional<TimeStamp> next;
    for (const auto& e : entries_)
        if (!next || e.due < *next)
            next = e.due;
    return next;
}

std::optional<std::pair<qorcore::IntrusivePtr<UI_Node>, int>> TimerQueue::TakeDue(TimeStamp now,
                                                                                  bool catchUp) {
    Entry* best = nullptr;
    for (auto& e : entries_)
        if (e.due <= now &&
            (!best || e.due < best->due || (e.due == best->due && e.sequence < best->sequence)))
            best = &e;
    if (!best)
        return std::nullopt;
    best->due += best->period;
    if (!catchUp && best->due <= now)
        best->due = now + best->period;
    return std::make_pair(best->node, best->id);
}

} // namespace qorui
