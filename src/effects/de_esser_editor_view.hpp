#pragma once

#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "platform/core/connection.hpp"

#include <memory>

namespace qorui {
class UI_LevelMeterView;
class UI_RadioButton;
} // namespace qorui
namespace qoraudiofilters {
class DeEsser;
}
namespace qoraudiotoolkit {
class GainReductionMeterMessage;
class SpectrumMeterMessage;
} // namespace qoraudiotoolkit

namespace qoraudiofiltersui {

class CurveEditor;
class DeEsserCutoffOverlay;
class SpectrumDraw;

/// The de-esser's editor on the sheet and layout "DEESSER": the input spectrum on a graph of
/// 20..20000 Hz with the sibilant band over it (`DeEsserCutoffOverlay`, whose edges drag),
/// the "Broadband" and "Multiband" choice, threshold, centre and width hooked by identifier,
/// and a gain-reduction meter. Both meters run from construction to destruction.
class DeEsserEditorView : public MarlTessAudioFilterEditorView {
public:
    static constexpr int kModeParameter = 0;
    static constexpr int kThresholdParameter = 1;
    static constexpr int kOutputSibilanceOnlyParameter = 2;
    static constexpr int kCenterParameter = 3;
    static constexpr int kBandwidthParameter = 4;

    /// A filter that is not a `DeEsser`, or a layout without the controls, throws the
    /// null-pointer exception.
    static IntrusivePtr<DeEsserEditorView> Create(std::shared_ptr<AudioFilter> filter);

    CurveEditor* GetCurveEditor() const { return curveEditor_.get(); }
    DeEsserCutoffOverlay* GetOverlay() const { return overlay_.get(); }
    SpectrumDraw* GetSpectrumDraw() const { return spectrumDraw_.get(); }
    bool IsSpectrumMeterEnabled() const { return spectrumMessage_ != nullptr; }

protected:
    explicit DeEsserEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the meters before anything else goes.
    ~DeEsserEditorView() override;

    void OnThemeChanged() override;

private:
    void SetupMeter();
    void OnModeChanged(bool multiband);
    void UpdateMode();
    void EnableMeters();
    void DisableMeters();

    std::shared_ptr<qoraudiofilters::DeEsser> filter_;
    IntrusivePtr<DeEsserCutoffOverlay> overlay_;
    IntrusivePtr<CurveEditor> curveEditor_;
    IntrusivePtr<qorui::UI_RadioButton> broadband_;
    IntrusivePtr<qorui::UI_RadioButton> multiband_;
    qorui::UI_LevelMeterView* meter_ = nullptr;
    IntrusivePtr<SpectrumDraw> spectrumDraw_;
    std::shared_ptr<qoraudiotoolkit::SpectrumMeterMessage> spectrumMessage_;
    std::shared_ptr<qoraudiotoolkit::GainReductionMeterMessage> gainReductionMessage_;
    qorcore::ScopedConnection spectrumConnection_;
    qorcore::ScopedConnection gainReductionConnection_;
};

} // namespace qoraudiofiltersui
