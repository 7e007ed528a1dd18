#pragma once

#include "platform/hostui/audio_filter_editor_view_base.hpp"

#include <functional>
#include <memory>
#include <vector>

namespace qoraudiofiltersui {

using qoraudiofilterhost::AudioFilter;

/// The base of every editor of this library. While the view hangs in a window that receives
/// events it keeps a timer of 0.01 seconds; each tick compares the filter's parameter values
/// with what the observers last saw and tells them about differences. Editors get no push for
/// a parameter: they poll.
class AudioFilterEditorViewBase : public qoraudiofilterhostui::AudioFilterEditorViewBase {
public:
    /// Starts no timer. A null filter throws std::invalid_argument.
    explicit AudioFilterEditorViewBase(std::shared_ptr<AudioFilter> filter);

    /// Called once by the factory after construction; empty here.
    virtual void Init() {}

    /// Synchronises when the id is this view's timer; true in every case.
    bool UI_DoTimerNotify(int timerId) override;
    /// Checks the timer on every tree change, then passes the change on.
    void UI_NodeChanged(NodeChange change) override;

    /// The running timer's id; 0 when none runs.
    int GetTimerID() const { return timerID_; }
    std::size_t GetParameterObserverCount() const { return parameterObservers_.size(); }

protected:
    ~AudioFilterEditorViewBase() override;

    /// One tick: see the source for the exact order of calls.
    virtual void SyncParameters();
    /// Reads the current value as the last seen one and appends the observer; it is not called
    /// now. Several observers may watch one index, each with its own last value.
    void AddParameterObserver(int index, std::function<void()> observer);
    /// While false, ticks still take over new values but call no observer.
    void SetAllowObserverNotificationDuringSyncParameters(bool allow);
    /// Starts the timer when the view has a parent that receives events and none runs; stops it
    /// when there is no such parent and one runs.
    void CheckTimer();

    const std::shared_ptr<AudioFilter>& GetFilter() const { return filter_; }

private:
    struct ParameterObserver {
        int index;
        float lastValue;
        std::function<void()> observer;
    };

    std::shared_ptr<AudioFilter> filter_;
    int timerID_ = 0;
    std::vector<ParameterObserver> parameterObservers_;
    bool allowObserverNotificationDuringSyncParameters_ = true;
};

} // namespace qoraudiofiltersui
