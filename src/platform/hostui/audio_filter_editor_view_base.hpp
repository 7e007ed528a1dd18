#pragma once

#include "platform/core/connection.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/signal.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/ui/ui_sub_view.hpp"

#include <functional>
#include <memory>

namespace qoraudiofilterhostui {

using qoraudiofilterhost::AudioFilter;

/// The host's base of every effect editor: a sub-view that keeps its filter, is told when the
/// panel opens and closes, hands keyboard focus to and from the host and reports its content
/// size.
class AudioFilterEditorViewBase : public qorui::UI_SubView {
public:
    /// A null filter throws std::invalid_argument.
    explicit AudioFilterEditorViewBase(std::shared_ptr<AudioFilter> filter);

    std::shared_ptr<AudioFilter> GetAudioFilter() const { return filter_; }

    /// Called by the host when the panel opens and closes; subclasses extend them.
    virtual void OpenEditor();
    virtual void CloseEditor();
    bool IsEditorOpen() const { return open_; }

    /// Gives the keyboard focus to the first (`forward`) or last node of the editor that takes
    /// it; false when none does or the editor is in no window.
    virtual bool DispatchKeyboardFocus(bool forward);
    /// Whether some node of the editor takes the keyboard focus.
    virtual bool WantsToDispatchKeyboardFocus() const;
    /// Whether the focus is inside the editor now.
    virtual bool DispatchCurrentFocus() const;

    virtual bool CanScrollContent() const { return false; }
    virtual bool CanResizeContent() const { return false; }
    /// The content's rectangle in the editor's own coordinates.
    virtual qorcore::RectT<float> GetContentRect() const { return GetBounds(); }
    /// `rect` divided by the window's scale factor (unchanged outside a window).
    virtual qorcore::RectT<float> GetInverseScaledRect(const qorcore::RectT<float>& rect) const;

    void SendContentSizeChangedSignal();
    [[nodiscard]] qorcore::Connection ConnectContentSizeChanged(std::function<void()> slot);

protected:
    ~AudioFilterEditorViewBase() override;

private:
    std::shared_ptr<AudioFilter> filter_;
    qorcore::Signal<void()> contentSizeChanged_;
    bool open_ = false;
};

} // namespace qoraudiofilterhostui
