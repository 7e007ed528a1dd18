#pragma once

#include "effects/fft_filter_graph.hpp"
#include "framework/audio_filter_editor_xml_view.hpp"

#include <array>
#include <cstdint>

namespace qorui {
class UI_Checkbox;
class UI_DisclosureTriangleButton;
class UI_PictureButton;
class UI_Popup;
} // namespace qorui

namespace qoraudiofiltersui {

using qorcore::IntrusivePtr;

/// The editor of the FFT filter: the archived panel "FFTFilter" around an `FFTFilterGraph`, with
/// the scale, the splines, a reset button and, behind the "Advanced" triangle, the FFT size and
/// the window. The advanced section always opens closed; opening it makes the editor taller by
/// the section's height.
///
/// Parameters: 0 splines (on at 0.5 and above), 1 the FFT size ((size - 32) / 32736), 2 the
/// window (index / 8), 4 the scale (1 linear, 0 logarithmic); the graph keeps the rest.
class FFTFilterEditorView : public AudioFilterEditorXMLView {
public:
    static constexpr int kSplinesParameter = 0;
    static constexpr int kFFTSizeParameter = 1;
    static constexpr int kWindowTypeParameter = 2;
    static constexpr int kScaleParameter = FFTFilterGraph::kScaleParameter;
    /// The FFT sizes the popup offers, in its order.
    static constexpr std::array<std::int32_t, 11> kFFTSizes = {32,   64,   128,  256,   512,  1024,
                                                               2048, 4096, 8192, 16384, 32768};
    static constexpr int kWindowTypeCount = 8;

    /// Makes the editor and loads its panel (`Init`). A null filter throws
    /// std::invalid_argument.
    static IntrusivePtr<FFTFilterEditorView> Create(std::shared_ptr<AudioFilter> filter);

    /// The graph of the panel when it made one, else null (an archive without its place).
    const IntrusivePtr<FFTFilterGraph>& GetGraph() const { return graph_; }

    qorcore::IntrusivePtr<qorui::UI_Node> CreateCustomNode(const std::string& name) const override;

protected:
    FFTFilterEditorView(ResourceManager* resourceManager, std::shared_ptr<AudioFilter> filter);
    ~FFTFilterEditorView() override;

    void SyncParameters() override;
    void ConnectControls() override;

private:
    // Control from parameter.
    void UpdateModePopup();
    void UpdateSplinesCheckBox();
    void UpdateFFTSizePopup();
    void UpdateWindowTypePopup();
    // Parameter from control.
    void OnLinearLogPopupChanged();
    void OnSplinesCheckboxChanged();
    void OnFFTSizePopupChanged();
    void OnWindowTypePopupChanged();
    void OnResetButtonChanged();
    void OnAdvancedButtonChangedInteractively(int changeMessage);
    /// Shows or hides the advanced section as the triangle says, resizing the editor.
    void UpdateAdvancedSection();
    /// Writes a parameter and lets the graph read the curve again, as every control does.
    void WriteParameter(int index, float value);

    IntrusivePtr<FFTFilterGraph> graph_;
    IntrusivePtr<qorui::UI_Popup> linearLogPopup_;
    IntrusivePtr<qorui::UI_Checkbox> splinesCheckbox_;
    IntrusivePtr<qorui::UI_DisclosureTriangleButton> advancedButton_;
    IntrusivePtr<qorui::UI_Popup> fftSizePopup_;
    IntrusivePtr<qorui::UI_Popup> windowTypePopup_;
    IntrusivePtr<qorui::UI_PictureButton> resetButton_;
    IntrusivePtr<qorui::UI_SubView> advancedSection_;
};

} // namespace qoraudiofiltersui
