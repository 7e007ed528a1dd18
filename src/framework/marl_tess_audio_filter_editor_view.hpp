#pragma once

#include "core/any_regular.hpp"
#include "framework/audio_filter_editor_view_base.hpp"
#include "platform/core/connection.hpp"
#include "platform/host/i_audio_filter_host.hpp"
#include "platform/tess/ui_qor_tess_root.hpp"

#include <functional>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qorui {
class UI_Slider;
class UI_Checkbox;
class UI_RadioGroup;
class UI_HotTextNumber;
class UI_Popup;
class UI_Knob;
class UI_Button;
class UI_ControlChangedMessage;
class UI_InteractiveControlChangedMessage;
namespace penrig {
class SupplierInterface;
}
} // namespace qorui

namespace vorlen {
class sheet_t;
class virtual_machine_t;
} // namespace vorlen

namespace qoraudiofiltersui {

class EditNumber;
class ResourceManager;
using qorcore::IntrusivePtr;
using qorui::UI_Node;

/// The editor made from two text resources: a sheet script that models the effect's
/// parameters and a layout script that places controls bound to the sheet. The view feeds the
/// filter's parameters into the input cells "in" + i (with "sample_rate", "current_duration",
/// "time_format" and "suspended"), and the output cells "out" + i back into parameter changes.
///
/// Two guards stop feedback: while the view itself writes the sheet (`inSync`) the outputs are
/// ignored, and an output equal to the filter's value is not written again.
class MarlTessAudioFilterEditorView : public AudioFilterEditorViewBase {
public:
    /// Builds the view and lays it out. A script error passes through; a missing resource
    /// leaves its text empty and the editor without that part.
    static IntrusivePtr<MarlTessAudioFilterEditorView>
    Create(std::shared_ptr<AudioFilter> filter, const qorui::penrig::SupplierInterface* supplier,
           std::string resourceName, ResourceManager* resourceManager, bool hasSheet);

    IntrusivePtr<qormarltess::UI_QORTessRoot> GetTessRoot() const;
    const std::shared_ptr<vorlen::sheet_t>& GetSheet() const { return sheet_; }

    /// Sets the press flag on a press anywhere in the view, the controls' own included; the
    /// flag is what opens edit gestures on the way to the filter.
    void UI_PressInside(qorui::UI_Node& target) override;

    /// Ends every open gesture of the filter; for a control that lets go outside the normal
    /// message path.
    void ControlReleased();

    /// The sheet language's `trace`: hands the value on, and traces it.
    vorlen::any_regular_t Trace(const vorlen::any_regular_t& value);

    // Parameter binding by control identifier, without the sheet. Each finds the control,
    // registers both directions, sets the control once and returns it; a missing control
    // raises the null-pointer exception.
    IntrusivePtr<EditNumber> HookupEditNumber(const char* identifier, int index);
    IntrusivePtr<qorui::UI_Slider> HookupSlider(const char* identifier, int index);
    IntrusivePtr<qorui::UI_Checkbox> HookupCheckbox(const char* identifier, int index);
    IntrusivePtr<qorui::UI_RadioGroup> HookupRadioGroup(const char* identifier, int index);
    IntrusivePtr<qorui::UI_HotTextNumber> HookupHotTextNumber(const char* identifier, int index);
    IntrusivePtr<qorui::UI_Popup> HookupPopup(const char* identifier, int index);
    IntrusivePtr<qorui::UI_Knob> HookupKnob(const char* identifier, int index);
    IntrusivePtr<qorui::UI_Button> HookupButton(const char* identifier, int index);

protected:
    MarlTessAudioFilterEditorView(std::shared_ptr<AudioFilter> filter,
                                  const qorui::penrig::SupplierInterface* supplier,
                                  std::string resourceName, ResourceManager* resourceManager,
                                  bool hasSheet);
    ~MarlTessAudioFilterEditorView() override;

    /// Hangs the root in the view and takes its size; nothing without a root.
    void CreateLayout();
    /// Solves the layout again; a new size is taken and announced to the host.
    void RecalcLayout();
    void SyncParameters() override;
    virtual void OnThemeChanged() {}

    // The families of direct binding: a user change, a parameter change, and the update of the
    // control from the parameter. Effects override them to add their own logic.
    virtual void UpdateEditNumber(IntrusivePtr<EditNumber> control, int index);
    virtual void OnEditNumberParameterChanged(int index, IntrusivePtr<EditNumber> control);
    virtual void
    OnEditNumberInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                  IntrusivePtr<EditNumber> control, int index);
    virtual void
    OnSliderInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                              IntrusivePtr<qorui::UI_Slider> control, int index);
    virtual void OnSliderParameterChanged(int index, IntrusivePtr<qorui::UI_Slider> control);
    virtual void UpdateSlider(IntrusivePtr<qorui::UI_Slider> control, int index);
    virtual void OnCheckboxChanged(const qorui::UI_ControlChangedMessage& message,
                                   IntrusivePtr<qorui::UI_Checkbox> control, int index);
    virtual void OnCheckboxParameterChanged(int index, IntrusivePtr<qorui::UI_Checkbox> control);
    virtual void UpdateCheckbox(IntrusivePtr<qorui::UI_Checkbox> control, int index);
    virtual void OnButtonChanged(const qorui::UI_ControlChangedMessage& message,
                                 IntrusivePtr<qorui::UI_Button> control, int index);
    virtual void OnButtonParameterChanged(int index, IntrusivePtr<qorui::UI_Button> control);
    virtual void UpdateButton(IntrusivePtr<qorui::UI_Button> control, int index);
    virtual void OnRadioGroupChanged(const qorui::UI_ControlChangedMessage& message,
                                     IntrusivePtr<qorui::UI_RadioGroup> control, int index);
    virtual void OnRadioGroupParameterChanged(int index,
                                              IntrusivePtr<qorui::UI_RadioGroup> control);
    virtual void UpdateRadioGroup(IntrusivePtr<qorui::UI_RadioGroup> control, int index);
    virtual void OnPopupChanged(const qorui::UI_ControlChangedMessage& message,
                                IntrusivePtr<qorui::UI_Popup> control, int index);
    virtual void OnPopupParameterChanged(int index, IntrusivePtr<qorui::UI_Popup> control);
    virtual void UpdatePopup(IntrusivePtr<qorui::UI_Popup> control, int index);
    virtual void UpdateHotTextNumber(IntrusivePtr<qorui::UI_HotTextNumber> control, int index);
    virtual void OnHotTextNumberParameterChanged(int index,
                                                 IntrusivePtr<qorui::UI_HotTextNumber> control);
    virtual void
    OnHotTextNumberInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                     IntrusivePtr<qorui::UI_HotTextNumber> control, int index);
    virtual void UpdateKnob(IntrusivePtr<qorui::UI_Knob> control, int index);
    virtual void OnKnobParameterChanged(int index, IntrusivePtr<qorui::UI_Knob> control);
    virtual void OnKnobInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                         IntrusivePtr<qorui::UI_Knob> control, int index);

    // The function pack and reflected variables of both scripts' machines.
    void InitStandardFunctionPack();
    void InitStandardReflectedVariableSet();
    /// The pack, and as variable lookup `StandardReflectedVariableSet` bound to `sheet`.
    void SetupVirtualMachine(vorlen::sheet_t& sheet);
    vorlen::any_regular_t StandardReflectedVariableSet(vorlen::name_t name, vorlen::sheet_t* sheet);
    vorlen::any_regular_t CustomReflectedVariableSet(vorlen::name_t name, vorlen::sheet_t* sheet);
    vorlen::any_regular_t GetCustomFloatData(const vorlen::dictionary_t& arguments);
    vorlen::any_regular_t GetCustomDoubleData(const vorlen::dictionary_t& arguments);
    vorlen::any_regular_t GetChannelName(const vorlen::any_regular_t& value, bool abbreviate,
                                         bool input);
    vorlen::any_regular_t GetChannelNameArray(bool abbreviate, bool input);

    /// The user path's gesture: the same steps for every interactive family.
    void SendInteractiveChange(int changeMessage, int index, float normalised);

private:
    using ArrayFunction = std::function<vorlen::any_regular_t(const vorlen::array_t&)>;
    using DictionaryFunction = std::function<vorlen::any_regular_t(const vorlen::dictionary_t&)>;

    void OnParameterChanged(const vorlen::any_regular_t& value, int index);
    void AutoHookupParameterMap();
    void WriteStandardCells();
    IntrusivePtr<qorui::UI_Node> FindControl(const char* identifier) const;
    /// The two directions every Hookup registers: the control's notification to `onChange`
    /// (interactive or not, by the message it takes) and a parameter observer to
    /// `onParameter`. Raises the null-pointer exception when the control is missing or of
    /// another class.
    template <typename Control, typename Message>
    IntrusivePtr<Control> ConnectControl(
        const char* identifier, const char* className, int index,
        void (MarlTessAudioFilterEditorView::*onChange)(const Message&, IntrusivePtr<Control>, int),
        void (MarlTessAudioFilterEditorView::*onParameter)(int, IntrusivePtr<Control>));
    std::shared_ptr<qoraudiofilterhost::AudioFilterParameterInfo> GetInfo(int index) const;

    std::list<std::shared_ptr<std::function<void()>>> onThemeChanged_;
    qorcore::ScopedConnection themeConnection_;
    int lastDirtyCount_ = -1;
    IntrusivePtr<qormarltess::UI_QORTessRoot> root_;
    std::shared_ptr<vorlen::sheet_t> sheet_;
    bool inSync_ = false;
    std::vector<std::pair<vorlen::name_t, ArrayFunction>> arrayFunctions_;
    std::vector<std::pair<vorlen::name_t, DictionaryFunction>> dictionaryFunctions_;
    std::vector<vorlen::name_t> reflectedVariables_;
    vorlen::dictionary_t timeFormat_;
    bool timeFormatDirty_ = false;
    bool lastSuspended_ = false;
    bool pointerPressed_ = false;
    bool hasSheet_;
    std::set<int> editedParameters_;
    qoraudiofilterhost::TimeDisplayInfo timeDisplayInfo_;
};

} // namespace qoraudiofiltersui
