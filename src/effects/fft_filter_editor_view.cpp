#include "effects/fft_filter_editor_view.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/image_provider.hpp"
#include "framework/library.hpp"
#include "platform/core/null_pointer_exception.hpp"
#include "platform/widgets/ui_checkbox.hpp"
#include "platform/widgets/ui_disclosure_triangle_button.hpp"
#include "platform/widgets/ui_picture_button.hpp"
#include "platform/widgets/ui_popup.hpp"

#include <cmath>
#include <string>

namespace qoraudiofiltersui {

namespace {

constexpr const char* kGraphID = "FFTFilterGraph";
constexpr double kFFTSizeSpan = 32736.0; // the largest size less the smallest
constexpr float kWindowTypeStep = 0.125f;

const EditorClassRegistration registration("FFTFilter", [](std::shared_ptr<AudioFilter> filter) {
    return IntrusivePtr<AudioFilterEditorViewBase>(FFTFilterEditorView::Create(std::move(filter)));
});

/// A node of the loaded panel by id and class; null when there is none of that class.
template <class T>
IntrusivePtr<T> FindControl(const qorui::UI_NodeBuilder::NodeMap& nodes, const char* id) {
    const auto found = nodes.find(id);
    if (found == nodes.end())
        return nullptr;
    return IntrusivePtr<T>(dynamic_cast<T*>(found->second.get()));
}

/// The control, or the null-pointer exception when the panel lacks it.
template <class T>
T& Use(const IntrusivePtr<T>& control, const char* id) {
    return *qorcore::config::ThrowIfNull(control.get(), id);
}

/// Whole units of a value, as the parameters encode them; NaN and the far ends give `fallback`.
long Truncate(double value, long fallback) {
    if (!(std::abs(value) < 1e9))
        return fallback;
    return long(value);
}

} // namespace

IntrusivePtr<FFTFilterEditorView> FFTFilterEditorView::Create(std::shared_ptr<AudioFilter> filter) {
    IntrusivePtr<FFTFilterEditorView> view(
        new FFTFilterEditorView(GetLibraryResourceManager(), std::move(filter)));
    view->Init();
    return view;
}

FFTFilterEditorView::FFTFilterEditorView(ResourceManager* resourceManager,
                                         std::shared_ptr<AudioFilter> filter)
    : AudioFilterEditorXMLView(resourceManager, "FFTFilter", std::move(filter)) {
    AddParameterObserver(kScaleParameter, [this] { UpdateModePopup(); });
    AddParameterObserver(kSplinesParameter, [this] { UpdateSplinesCheckBox(); });
    AddParameterObserver(kFFTSizeParameter, [this] { UpdateFFTSizePopup(); });
    AddParameterObserver(kWindowTypeParameter, [this] { UpdateWindowTypePopup(); });
}

FFTFilterEditorView::~FFTFilterEditorView() = default;

qorcore::IntrusivePtr<qorui::UI_Node>
FFTFilterEditorView::CreateCustomNode(const std::string& name) const {
    IntrusivePtr<qorui::UI_Node> node = AudioFilterEditorXMLView::CreateCustomNode(name);
    if (name == kGraphID)
        return IntrusivePtr<qorui::UI_Node>(new FFTFilterGraph(GetAudioFilter()));
    return node;
}

void FFTFilterEditorView::SyncParameters() {
    AudioFilterEditorXMLView::SyncParameters();
    if (graph_)
        graph_->SyncParameters();
}

void FFTFilterEditorView::ConnectControls() {
    AudioFilterEditorXMLView::ConnectControls();
    const qorui::UI_NodeBuilder::NodeMap& nodes = GetNodeMap();
    graph_ = FindControl<FFTFilterGraph>(nodes, kGraphID);
    linearLogPopup_ = FindControl<qorui::UI_Popup>(nodes, "LinearLogMode");
    splinesCheckbox_ = FindControl<qorui::UI_Checkbox>(nodes, "SplineCurves");
    advancedButton_ = FindControl<qorui::UI_DisclosureTriangleButton>(nodes, "Advanced");
    fftSizePopup_ = FindControl<qorui::UI_Popup>(nodes, "FFTSize");
    windowTypePopup_ = FindControl<qorui::UI_Popup>(nodes, "WindowType");
    resetButton_ = FindControl<qorui::UI_PictureButton>(nodes, "ResetButton");
    advancedSection_ = FindControl<qorui::UI_SubView>(nodes, "AdvancedSection");

    qorui::UI_Popup& sizes = Use(fftSizePopup_, "FFTSize");
    sizes.DeleteAllItems();
    for (const std::int32_t size : kFFTSizes)
        sizes.AddItem(std::to_string(size));

    UpdateModePopup();
    UpdateSplinesCheckBox();
    UpdateFFTSizePopup();
    UpdateWindowTypePopup();

    Use(linearLogPopup_, "LinearLogMode").NotifyWhenChanged([this](const auto&) {
        OnLinearLogPopupChanged();
    });
    Use(splinesCheckbox_, "SplineCurves").NotifyWhenChanged([this](const auto&) {
        OnSplinesCheckboxChanged();
    });
    Use(advancedButton_, "Advanced")
        .NotifyWhenChangedInteractively(
            [this](const qorui::UI_InteractiveControlChangedMessage& message) {
                OnAdvancedButtonChangedInteractively(message.GetChangeMessage());
            });
    sizes.NotifyWhenChanged([this](const auto&) { OnFFTSizePopupChanged(); });
    Use(windowTypePopup_, "WindowType").NotifyWhenChanged([this](const auto&) {
        OnWindowTypePopupChanged();
    });
    qorui::UI_PictureButton& reset = Use(resetButton_, "ResetButton");
    reset.NotifyWhenChanged([this](const auto&) { OnResetButtonChanged(); });
    if (const ImageProvider* images = GetLibraryImageProvider())
        reset.SetImageSupplyFunction(
            [images](const std::string& name) { return images->GetImage(name); });

    Use(advancedButton_, "Advanced").SetValue(false);
    UpdateAdvancedSection();
}

// ---------------------------------------------------------------------------------------------
// Control from parameter

void FFTFilterEditorView::UpdateModePopup() {
    const bool linear = GetFilter()->GetParameterValue(kScaleParameter) >= 0.5f;
    // The popup lists "Linear" first, the parameter says 1 for it.
    Use(linearLogPopup_, "LinearLogMode").SetValue(linear ? 0.0 : 1.0);
}

void FFTFilterEditorView::UpdateSplinesCheckBox() {
    Use(splinesCheckbox_, "SplineCurves")
        .SetValue(GetFilter()->GetParameterValue(kSplinesParameter) >= 0.5f);
}

void FFTFilterEditorView::UpdateFFTSizePopup() {
    const double value = GetFilter()->GetParameterValue(kFFTSizeParameter);
    // The parameter is a 32-bit float: 128 comes back as 127.99999 and would truncate to 127.
    // A thousandth of a point is far below any step between sizes, and far above that error.
    constexpr double kFloatSlack = 1e-3;
    const long size = Truncate(value * kFFTSizeSpan + kFFTSizes.front() + kFloatSlack, 0);
    // By text, so that a value between two sizes chooses none.
    Use(fftSizePopup_, "FFTSize").SetValueString(std::to_string(size));
}

void FFTFilterEditorView::UpdateWindowTypePopup() {
    const double value = GetFilter()->GetParameterValue(kWindowTypeParameter);
    Use(windowTypePopup_, "WindowType").SetValue(double(Truncate(value * kWindowTypeCount, -1)));
}

// ---------------------------------------------------------------------------------------------
// Parameter from control

void FFTFilterEditorView::WriteParameter(int index, float value) {
    GetFilter()->SetParameterValue(index, value);
    if (graph_)
        graph_->UpdateGraph();
}

void FFTFilterEditorView::OnLinearLogPopupChanged() {
    const int index = Use(linearLogPopup_, "LinearLogMode").GetSelectedIndex();
    WriteParameter(kScaleParameter, index == 0 ? 1.0f : 0.0f);
}

void FFTFilterEditorView::OnSplinesCheckboxChanged() {
    WriteParameter(kSplinesParameter,
                   Use(splinesCheckbox_, "SplineCurves").IsChecked() ? 1.0f : 0.0f);
}

void FFTFilterEditorView::OnFFTSizePopupChanged() {
    const int index = Use(fftSizePopup_, "FFTSize").GetSelectedIndex();
    if (index >= 0 && index < int(kFFTSizes.size())) {
        const double size = kFFTSizes[std::size_t(index)];
        GetFilter()->SetParameterValue(kFFTSizeParameter,
                                       float((size - kFFTSizes.front()) / kFFTSizeSpan));
    }
    // A row past the table writes nothing, but the curve is read again all the same.
    if (graph_)
        graph_->UpdateGraph();
}

void FFTFilterEditorView::OnWindowTypePopupChanged() {
    int index = Use(windowTypePopup_, "WindowType").GetSelectedIndex();
    if (index < 0 || index >= kWindowTypeCount)
        index = 0;
    WriteParameter(kWindowTypeParameter, float(index) * kWindowTypeStep);
}

void FFTFilterEditorView::OnResetButtonChanged() {
    Use(graph_, kGraphID).ResetPoints();
}

void FFTFilterEditorView::OnAdvancedButtonChangedInteractively(int changeMessage) {
    if (changeMessage == qorui::kInteractiveChangeContinue ||
        changeMessage == qorui::kInteractiveChangeFinish)
        UpdateAdvancedSection();
}

void FFTFilterEditorView::UpdateAdvancedSection() {
    qorui::UI_SubView& section = Use(advancedSection_, "AdvancedSection");
    const bool want = Use(advancedButton_, "Advanced").IsOpen();
    if (want == section.IsVisible())
        return;
    section.UI_SetVisible(want);
    const float height = section.GetFrame().height;
    const qorcore::RectT<float> bounds = GetBounds();
    SetSize(bounds.width, std::max(0.0f, bounds.height + (want ? height : -height)));
    SendContentSizeChangedSignal();
}

} // namespace qoraudiofiltersui
