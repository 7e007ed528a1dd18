#include "platform/hostui/audio_filter_editor_view_base.hpp"

#include "platform/ui/ui_window.hpp"

#include <stdexcept>
#include <vector>

namespace qoraudiofilterhostui {

namespace {

void CollectFocusable(qorui::UI_Node& node, std::vector<qorui::UI_Node*>& out) {
    if (!node.IsVisible() || !node.IsEnabled())
        return;
    if (node.WantsKeyboardFocus())
        out.push_back(&node);
    for (const auto& child : node.GetChildren())
        CollectFocusable(*child, out);
}

} // namespace

AudioFilterEditorViewBase::AudioFilterEditorViewBase(std::shared_ptr<AudioFilter> filter)
    : filter_(std::move(filter)) {
    if (!filter_)
        throw std::invalid_argument("AudioFilterEditorViewBase: null filter");
}

AudioFilterEditorViewBase::~AudioFilterEditorViewBase() = default;

void AudioFilterEditorViewBase::OpenEditor() {
    open_ = true;
}

void AudioFilterEditorViewBase::CloseEditor() {
    open_ = false;
}

bool AudioFilterEditorViewBase::DispatchKeyboardFocus(bool forward) {
    qorui::UI_Window* window = GetWindow();
    if (!window || !IsShown())
        return false;
    std::vector<qorui::UI_Node*> nodes;
    CollectFocusable(*this, nodes);
    if (nodes.empty())
        return false;
    return window->SetFocusNode(forward ? nodes.front() : nodes.back());
}

bool AudioFilterEditorViewBase::WantsToDispatchKeyboardFocus() const {
    std::vector<qorui::UI_Node*> nodes;
    CollectFocusable(const_cast<AudioFilterEditorViewBase&>(*this), nodes);
    return !nodes.empty();
}

bool AudioFilterEditorViewBase::DispatchCurrentFocus() const {
    qorui::UI_Window* window = GetWindow();
    if (!window)
        return false;
    qorui::UI_Node* focus = window->GetFocusNode();
    return focus && (focus == this || IsAncestorOf(focus));
}

qorcore::RectT<float>
AudioFilterEditorViewBase::GetInverseScaledRect(const qorcore::RectT<float>& rect) const {
    const qorui::UI_Window* window = GetWindow();
    const float scale = window ? window->GetScaleFactor() : 1.0f;
    return {rect.x / scale, rect.y / scale, rect.width / scale, rect.height / scale};
}

void AudioFilterEditorViewBase::SendContentSizeChangedSignal() {
    contentSizeChanged_();
}

qorcore::Connection
AudioFilterEditorViewBase::ConnectContentSizeChanged(std::function<void()> slot) {
    return contentSizeChanged_.Connect(std::move(slot));
}

} // namespace qoraudiofilterhostui
