// The direct binding of controls to parameters by identifier, without the sheet: the Hookup,
// On...Changed, On...InteractiveChange, On...ParameterChanged and Update... families of
// MarlTessAudioFilterEditorView, and the automatic hookup by a layout's parameter map.

#include "framework/marl_tess_audio_filter_editor_view.hpp"

#include "controls/edit_number.hpp"

#include "platform/core/null_pointer_exception.hpp"
#include "platform/host/audio_filter.hpp"
#include "platform/host/audio_filter_parameter_info.hpp"
#include "platform/skins/skins.hpp"
#include "platform/tess/ui_tess.hpp"
#include "platform/widgets/ui_button.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_hot_text_number.hpp"
#include "platform/widgets/ui_knob.hpp"
#include "platform/widgets/ui_popup.hpp"
#include "platform/widgets/ui_radio_group.hpp"
#include "platform/widgets/ui_slider.hpp"
#include "sheet/sheet.hpp"

#include <cmath>
#include <cstdint>
#include <type_traits>

namespace qoraudiofiltersui {

namespace {

using qorui::UI_ControlChangedMessage;
using qorui::UI_InteractiveControlChangedMessage;
using vorlen::any_regular_t;
using vorlen::name_t;

/// Popups and radio groups hold an item index: the parameter's plain value.
double ItemFromParameter(float p, float plainOfOne) {
    return double(std::int64_t(std::round(double(p) * double(plainOfOne))));
}

} // namespace

IntrusivePtr<qorui::UI_Node>
MarlTessAudioFilterEditorView::FindControl(const char* identifier) const {
    if (!root_)
        qorcore::config::DoThrowNullPtrException("UI_QORTessRoot");
    return root_->GetTessViewHolder().GetControl(identifier ? identifier : "");
}

template <typename Control, typename Message>
IntrusivePtr<Control> MarlTessAudioFilterEditorView::ConnectControl(
    const char* identifier, const char* className, int index,
    void (MarlTessAudioFilterEditorView::*onChange)(const Message&, IntrusivePtr<Control>, int),
    void (MarlTessAudioFilterEditorView::*onParameter)(int, IntrusivePtr<Control>)) {
    auto* raw = dynamic_cast<Control*>(FindControl(identifier).get());
    if (!raw)
        qorcore::config::DoThrowNullPtrException(className);
    // The control's notification holds a raw back reference: a control never outlives its view.
    auto changed = [this, raw, index, onChange](const Message& message) {
        (this->*onChange)(message, IntrusivePtr<Control>(raw), index);
    };
    if constexpr (std::is_same_v<Message, UI_InteractiveControlChangedMessage>)
        raw->NotifyWhenChangedInteractively(changed);
    else
        raw->NotifyWhenChanged(changed);
    AddParameterObserver(index, [this, raw, index, onParameter] {
        (this->*onParameter)(index, IntrusivePtr<Control>(raw));
    });
    return IntrusivePtr<Control>(raw);
}

std::shared_ptr<qoraudiofilterhost::AudioFilterParameterInfo>
MarlTessAudioFilterEditorView::GetInfo(int index) const {
    return GetFilter()->GetParameterInfo(index);
}

void MarlTessAudioFilterEditorView::SendInteractiveChange(int changeMessage, int index,
                                                          float normalised) {
    AudioFilter& filter = *GetFilter();
    switch (changeMessage) {
    case qorui::kInteractiveChangeBegin:
        if (!filter.IsParameterBeingEdited(index))
            filter.BeginParameterEdit(index);
        filter.SetParameterValue(index, normalised);
        break;
    case qorui::kInteractiveChangeContinue:
        filter.SetParameterValue(index, normalised);
        // Sheet and display follow the drag without waiting for a tick.
        SyncParameters();
        break;
    case qorui::kInteractiveChangeFinish:
    case qorui::kInteractiveChangeCancel:
        filter.SetParameterValue(index, normalised);
        filter.EndParameterEdit(index);
        break;
    default: break;
    }
}

// Edit number: plain values; the hookup gives it the parameter's range.

IntrusivePtr<EditNumber> MarlTessAudioFilterEditorView::HookupEditNumber(const char* identifier,
                                                                         int index) {
    auto control = ConnectControl<EditNumber, UI_InteractiveControlChangedMessage>(
        identifier, "EditNumber", index,
        &MarlTessAudioFilterEditorView::OnEditNumberInteractiveChange,
        &MarlTessAudioFilterEditorView::OnEditNumberParameterChanged);
    if (const auto info = GetInfo(index))
        control->SetMinMaxValue(info->PlainFromNormalised(0.0f), info->PlainFromNormalised(1.0f),
                                info->PlainFromNormalised(GetFilter()->GetParameterValue(index)));
    UpdateEditNumber(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnEditNumberInteractiveChange(
    const UI_InteractiveControlChangedMessage& message, IntrusivePtr<EditNumber> control,
    int index) {
    const auto info = GetInfo(index);
    if (!info)
        return;
    SendInteractiveChange(message.GetChangeMessage(), index,
                          info->NormalisedFromPlain(float(control->GetValue())));
}

void MarlTessAudioFilterEditorView::OnEditNumberParameterChanged(int index,
                                                                 IntrusivePtr<EditNumber> control) {
    UpdateEditNumber(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdateEditNumber(IntrusivePtr<EditNumber> control, int index) {
    if (const auto info = GetInfo(index))
        control->SetValue(double(info->PlainFromNormalised(GetFilter()->GetParameterValue(index))));
}

// Slider: runs from the parameter's top at its low end, against the knob.

IntrusivePtr<qorui::UI_Slider> MarlTessAudioFilterEditorView::HookupSlider(const char* identifier,
                                                                           int index) {
    auto control = ConnectControl<qorui::UI_Slider, UI_InteractiveControlChangedMessage>(
        identifier, "UI_Slider", index, &MarlTessAudioFilterEditorView::OnSliderInteractiveChange,
        &MarlTessAudioFilterEditorView::OnSliderParameterChanged);
    UpdateSlider(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnSliderInteractiveChange(
    const UI_InteractiveControlChangedMessage& message, IntrusivePtr<qorui::UI_Slider> control,
    int index) {
    const auto info = GetInfo(index);
    if (!info)
        return;
    const float min = info->PlainFromNormalised(0.0f);
    const float max = info->PlainFromNormalised(1.0f);
    const float normalised = (max - float(control->GetValue())) / (max - min);
    SendInteractiveChange(message.GetChangeMessage(), index, normalised);
}

void MarlTessAudioFilterEditorView::OnSliderParameterChanged(
    int index, IntrusivePtr<qorui::UI_Slider> control) {
    UpdateSlider(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdateSlider(IntrusivePtr<qorui::UI_Slider> control,
                                                 int index) {
    const auto info = GetInfo(index);
    if (!info)
        return;
    const float min = info->PlainFromNormalised(0.0f);
    const float max = info->PlainFromNormalised(1.0f);
    control->SetValue(double(max - GetFilter()->GetParameterValue(index) * (max - min)));
}

// Checkbox and button: on at 0.5 and above; one write, no gesture.

IntrusivePtr<qorui::UI_Checkbox>
MarlTessAudioFilterEditorView::HookupCheckbox(const char* identifier, int index) {
    auto control = ConnectControl<qorui::UI_Checkbox, UI_ControlChangedMessage>(
        identifier, "UI_Checkbox", index, &MarlTessAudioFilterEditorView::OnCheckboxChanged,
        &MarlTessAudioFilterEditorView::OnCheckboxParameterChanged);
    UpdateCheckbox(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnCheckboxChanged(const UI_ControlChangedMessage&,
                                                      IntrusivePtr<qorui::UI_Checkbox> control,
                                                      int index) {
    GetFilter()->SetParameterValue(index, control->GetValue() == 1.0 ? 1.0f : 0.0f);
}

void MarlTessAudioFilterEditorView::OnCheckboxParameterChanged(
    int index, IntrusivePtr<qorui::UI_Checkbox> control) {
    UpdateCheckbox(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdateCheckbox(IntrusivePtr<qorui::UI_Checkbox> control,
                                                   int index) {
    control->SetValue(GetFilter()->GetParameterValue(index) >= 0.5f);
}

IntrusivePtr<qorui::UI_Button> MarlTessAudioFilterEditorView::HookupButton(const char* identifier,
                                                                           int index) {
    auto control = ConnectControl<qorui::UI_Button, UI_ControlChangedMessage>(
        identifier, "UI_Button", index, &MarlTessAudioFilterEditorView::OnButtonChanged,
        &MarlTessAudioFilterEditorView::OnButtonParameterChanged);
    if (qorui::skins::IsRunningV7OrBeyond())
        control->GetComponents().SetVariant(0);
    UpdateButton(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnButtonChanged(const UI_ControlChangedMessage&,
                                                    IntrusivePtr<qorui::UI_Button> control,
                                                    int index) {
    GetFilter()->SetParameterValue(index, control->GetValue() == 1.0 ? 1.0f : 0.0f);
}

void MarlTessAudioFilterEditorView::OnButtonParameterChanged(
    int index, IntrusivePtr<qorui::UI_Button> control) {
    UpdateButton(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdateButton(IntrusivePtr<qorui::UI_Button> control,
                                                 int index) {
    control->SetValue(GetFilter()->GetParameterValue(index) >= 0.5f ? 1.0 : 0.0);
}

// Radio group and popup: the item index is the parameter's plain value.

IntrusivePtr<qorui::UI_RadioGroup>
MarlTessAudioFilterEditorView::HookupRadioGroup(const char* identifier, int index) {
    auto control = ConnectControl<qorui::UI_RadioGroup, UI_ControlChangedMessage>(
        identifier, "UI_RadioGroup", index, &MarlTessAudioFilterEditorView::OnRadioGroupChanged,
        &MarlTessAudioFilterEditorView::OnRadioGroupParameterChanged);
    UpdateRadioGroup(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnRadioGroupChanged(const UI_ControlChangedMessage&,
                                                        IntrusivePtr<qorui::UI_RadioGroup> control,
                                                        int index) {
    const auto info = GetInfo(index);
    if (!info)
        return;
    const float top = info->PlainFromNormalised(1.0f);
    if (top > 0.0f)
        GetFilter()->SetParameterValue(index, float(control->GetValue()) / top);
}

void MarlTessAudioFilterEditorView::OnRadioGroupParameterChanged(
    int index, IntrusivePtr<qorui::UI_RadioGroup> control) {
    UpdateRadioGroup(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdateRadioGroup(IntrusivePtr<qorui::UI_RadioGroup> control,
                                                     int index) {
    if (const auto info = GetInfo(index))
        control->SetValue(ItemFromParameter(GetFilter()->GetParameterValue(index),
                                            info->PlainFromNormalised(1.0f)));
}

IntrusivePtr<qorui::UI_Popup> MarlTessAudioFilterEditorView::HookupPopup(const char* identifier,
                                                                         int index) {
    auto control = ConnectControl<qorui::UI_Popup, UI_ControlChangedMessage>(
        identifier, "UI_Popup", index, &MarlTessAudioFilterEditorView::OnPopupChanged,
        &MarlTessAudioFilterEditorView::OnPopupParameterChanged);
    UpdatePopup(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnPopupChanged(const UI_ControlChangedMessage&,
                                                   IntrusivePtr<qorui::UI_Popup> control,
                                                   int index) {
    const auto info = GetInfo(index);
    if (!info)
        return;
    const float top = info->PlainFromNormalised(1.0f);
    if (top > 0.0f)
        GetFilter()->SetParameterValue(index, float(control->GetValue()) / top);
}

void MarlTessAudioFilterEditorView::OnPopupParameterChanged(int index,
                                                            IntrusivePtr<qorui::UI_Popup> control) {
    UpdatePopup(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdatePopup(IntrusivePtr<qorui::UI_Popup> control, int index) {
    if (const auto info = GetInfo(index))
        control->SetValue(ItemFromParameter(GetFilter()->GetParameterValue(index),
                                            info->PlainFromNormalised(1.0f)));
}

// Hot text number: plain values, limited to the parameter's range.

IntrusivePtr<qorui::UI_HotTextNumber>
MarlTessAudioFilterEditorView::HookupHotTextNumber(const char* identifier, int index) {
    auto control = ConnectControl<qorui::UI_HotTextNumber, UI_InteractiveControlChangedMessage>(
        identifier, "UI_HotTextNumber", index,
        &MarlTessAudioFilterEditorView::OnHotTextNumberInteractiveChange,
        &MarlTessAudioFilterEditorView::OnHotTextNumberParameterChanged);
    if (const auto info = GetInfo(index)) {
        control->SetMinValue(info->PlainFromNormalised(0.0f));
        control->SetMaxValue(info->PlainFromNormalised(1.0f));
    }
    UpdateHotTextNumber(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnHotTextNumberInteractiveChange(
    const UI_InteractiveControlChangedMessage& message,
    IntrusivePtr<qorui::UI_HotTextNumber> control, int index) {
    const auto info = GetInfo(index);
    if (!info)
        return;
    SendInteractiveChange(message.GetChangeMessage(), index,
                          info->NormalisedFromPlain(float(control->GetValue())));
}

void MarlTessAudioFilterEditorView::OnHotTextNumberParameterChanged(
    int index, IntrusivePtr<qorui::UI_HotTextNumber> control) {
    UpdateHotTextNumber(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdateHotTextNumber(
    IntrusivePtr<qorui::UI_HotTextNumber> control, int index) {
    if (const auto info = GetInfo(index))
        control->SetValue(double(info->PlainFromNormalised(GetFilter()->GetParameterValue(index))));
}

// Knob: in its own range.

IntrusivePtr<qorui::UI_Knob> MarlTessAudioFilterEditorView::HookupKnob(const char* identifier,
                                                                       int index) {
    auto control = ConnectControl<qorui::UI_Knob, UI_InteractiveControlChangedMessage>(
        identifier, "UI_Knob", index, &MarlTessAudioFilterEditorView::OnKnobInteractiveChange,
        &MarlTessAudioFilterEditorView::OnKnobParameterChanged);
    UpdateKnob(control, index);
    return control;
}

void MarlTessAudioFilterEditorView::OnKnobInteractiveChange(
    const UI_InteractiveControlChangedMessage& message, IntrusivePtr<qorui::UI_Knob> control,
    int index) {
    if (!GetInfo(index))
        return;
    const float min = float(control->GetMinValue());
    const float max = float(control->GetMaxValue());
    if (!(max - min > 0.0f))
        return;
    SendInteractiveChange(message.GetChangeMessage(), index,
                          (float(control->GetValue()) - min) / (max - min));
}

void MarlTessAudioFilterEditorView::OnKnobParameterChanged(int index,
                                                           IntrusivePtr<qorui::UI_Knob> control) {
    UpdateKnob(std::move(control), index);
}

void MarlTessAudioFilterEditorView::UpdateKnob(IntrusivePtr<qorui::UI_Knob> control, int index) {
    if (!GetInfo(index))
        return;
    const double min = control->GetMinValue();
    const double max = control->GetMaxValue();
    control->SetValue(min + double(GetFilter()->GetParameterValue(index)) * (max - min));
}

void MarlTessAudioFilterEditorView::AutoHookupParameterMap() {
    if (!root_)
        return;
    const auto& layoutSheet = root_->GetTessViewHolder().layoutSheet;
    const name_t mapName("__qoraudiofilter_parameter_map");
    if (!layoutSheet || !layoutSheet->has_output(mapName))
        return;
    const vorlen::array_t map = layoutSheet->get(mapName).cast<vorlen::array_t>();
    for (const any_regular_t& element : map) {
        const auto& entry = element.cast<vorlen::dictionary_t>();
        std::string identifier;
        double parameter = 0;
        const auto idFound = entry.find(name_t("identifier"));
        const auto parameterFound = entry.find(name_t("parameter"));
        if (idFound == entry.end() || !idFound->second.is<std::string>() ||
            parameterFound == entry.end() || !parameterFound->second.is<double>())
            continue;
        identifier = idFound->second.cast<std::string>();
        parameter = parameterFound->second.cast<double>();
        const int index = int(parameter);
        const IntrusivePtr<qorui::UI_Node> control = FindControl(identifier.c_str());
        if (!control)
            continue;
        UI_Node* node = control.get();
        if (dynamic_cast<EditNumber*>(node))
            HookupEditNumber(identifier.c_str(), index);
        else if (dynamic_cast<qorui::UI_Slider*>(node))
            HookupSlider(identifier.c_str(), index);
        else if (dynamic_cast<qorui::UI_Checkbox*>(node))
            HookupCheckbox(identifier.c_str(), index);
        else if (dynamic_cast<qorui::UI_RadioGroup*>(node))
            HookupRadioGroup(identifier.c_str(), index);
        else if (dynamic_cast<qorui::UI_HotTextNumber*>(node))
            HookupHotTextNumber(identifier.c_str(), index);
        else if (dynamic_cast<qorui::UI_Popup*>(node))
            HookupPopup(identifier.c_str(), index);
        else if (dynamic_cast<qorui::UI_Knob*>(node))
            HookupKnob(identifier.c_str(), index);
        else if (dynamic_cast<qorui::UI_Button*>(node))
            HookupButton(identifier.c_str(), index);
    }
}

} // namespace qoraudiofiltersui
