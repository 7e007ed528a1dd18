#include "framework/audio_filter_editor_view_base.hpp"

#include "platform/host/multi_channel_audio_filter_base.hpp"
#include "platform/ui/ui_node_manager.hpp"

namespace qoraudiofiltersui {

namespace {

// 100 ticks a second at most.
constexpr float kPollPeriodSeconds = 0.01f;

} // namespace

AudioFilterEditorViewBase::AudioFilterEditorViewBase(std::shared_ptr<AudioFilter> filter)
    : qoraudiofilterhostui::AudioFilterEditorViewBase(filter), filter_(std::move(filter)) {}

AudioFilterEditorViewBase::~AudioFilterEditorViewBase() {
    if (timerID_ != 0)
        UI_RemoveTimer(timerID_, false);
    timerID_ = 0;
}

bool AudioFilterEditorViewBase::UI_DoTimerNotify(int timerId) {
    if (timerId == timerID_)
        SyncParameters();
    // A foreign id is swallowed too.
    return true;
}

void AudioFilterEditorViewBase::UI_NodeChanged(NodeChange change) {
    switch (change) {
    case kNodeChangeParentSet:
    case kNodeChangeAddedToParent:
    case kNodeChangeRemovedFromParent:
    case kNodeChangeWindowChanged:
    case kNodeChangeVisibilityChanged: CheckTimer(); break;
    }
    qoraudiofilterhostui::AudioFilterEditorViewBase::UI_NodeChanged(change);
}

void AudioFilterEditorViewBase::CheckTimer() {
    qorui::UI_Node* recipient = UI_GetParentEventRecipientNode();
    if (!recipient && timerID_ != 0) {
        UI_RemoveTimer(timerID_, true);
        timerID_ = 0;
    } else if (recipient && timerID_ == 0) {
        timerID_ = qorui::UI_NodeManager::Get().GetUniqueTimerID();
        UI_InstallTimer(kPollPeriodSeconds, timerID_);
    }
}

void AudioFilterEditorViewBase::SyncParameters() {
    filter_->PrepareParameterSync();
    const auto* multiChannel =
        dynamic_cast<const qoraudiofilterhost::MultiChannelAudioFilterBase*>(filter_.get());
    // The size is read afresh on every round: an observer may register another.
    for (std::size_t i = 0; i < parameterObservers_.size(); ++i) {
        const int index = parameterObservers_[i].index;
        float value = filter_->GetParameterValue(index);
        if (multiChannel) {
            float other = value;
            if (multiChannel->GetOverrideParameterValue(index, &other) && other != value)
                value = other;
        }
        // No tolerance; NaN is never equal, so it fires on every tick.
        if (!(value != parameterObservers_[i].lastValue))
            continue;
        parameterObservers_[i].lastValue = value;
        filter_->SetParameterQuietly(index, value);
        if (allowObserverNotificationDuringSyncParameters_) {
            // A copy: registering from inside may move the vector under the running observer.
            const std::function<void()> observer = parameterObservers_[i].observer;
            observer();
        }
    }
}

void AudioFilterEditorViewBase::AddParameterObserver(int index, std::function<void()> observer) {
    const float value = filter_->GetParameterValue(index);
    parameterObservers_.push_back({index, value, std::move(observer)});
}

void AudioFilterEditorViewBase::SetAllowObserverNotificationDuringSyncParameters(bool allow) {
    allowObserverNotificationDuringSyncParameters_ = allow;
}

} // namespace qoraudiofiltersui
