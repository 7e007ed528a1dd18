#pragma once

#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "platform/core/color_rgba.hpp"
#include "platform/core/connection.hpp"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace qorui {
class UI_Button;
class UI_Checkbox;
class UI_LevelMeterView;
class UI_Slider;
} // namespace qorui
namespace qoraudiotoolkit {
class GainReductionMeterMessage;
class LevelMeterDSP;
class LevelMeterDSPMessage;
class LevelMeterMessage;
class SpectrumMeterMessage;
} // namespace qoraudiotoolkit
namespace qoraudiofilters {
class MultiBandCompressor;
}

namespace qoraudiofiltersui {

class ColorView;
class CurveEditor;
class MultiBandCompressorCutoffOverlay;
class SpectrumDraw;

/// The editor of the multiband compressor on the sheet and layout "MULTIBANDCOMPRESSOR", which
/// inserts the layout "COMPRESSORBAND" once for each of the four bands. The controls are hooked
/// to the effect by identifier. The graph shows a live spectrum of each band in the band's
/// colour, under an overlay with the three draggable crossovers; each band has its swatch
/// (greyed when bypassed or silenced by another's solo), its input and gain-reduction meters.
/// With "Link Band Controls" on, moving one band's control moves the same control of the
/// others by the same normalised step.
class MultiBandCompressorEditorView : public MarlTessAudioFilterEditorView {
public:
    static constexpr int kBandCount = 4;
    /// The colours of the bands, for spectra and swatches.
    static const std::array<qorcore::ColorRGBA, kBandCount> kBandColors;

    /// A filter that is not a `MultiBandCompressor`, or a layout without the controls, throws
    /// the null-pointer exception.
    static IntrusivePtr<MultiBandCompressorEditorView> Create(std::shared_ptr<AudioFilter> filter);

    CurveEditor& GetCurveEditor() const { return *curveEditor_; }
    MultiBandCompressorCutoffOverlay& GetOverlay() const { return *overlay_; }
    /// What the swatch of band `band` shows now.
    qorcore::ColorRGBA GetSwatchColor(int band) const;
    /// The output meter the filter feeds while the editor is open.
    std::weak_ptr<qoraudiotoolkit::LevelMeterDSP> GetOutputLevelMeter() const {
        return outputLevelMeter_;
    }

protected:
    explicit MultiBandCompressorEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the meters before anything else goes.
    ~MultiBandCompressorEditorView() override;

    void OnEditNumberParameterChanged(int index, IntrusivePtr<EditNumber> control) override;
    void OnEditNumberInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                       IntrusivePtr<EditNumber> control, int index) override;
    void OnSliderInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                   IntrusivePtr<qorui::UI_Slider> control, int index) override;
    void OnThemeChanged() override;
    /// The faders run 0..1 with the parameter's top at their top.
    void UpdateSlider(IntrusivePtr<qorui::UI_Slider> control, int index) override;

private:
    struct BandSpectrum {
        IntrusivePtr<SpectrumDraw> draw;
        std::shared_ptr<qoraudiotoolkit::SpectrumMeterMessage> message;
        qorcore::ScopedConnection connection;
    };
    struct BandControls {
        IntrusivePtr<ColorView> swatch;
        IntrusivePtr<qorui::UI_Button> solo;
        IntrusivePtr<qorui::UI_Button> bypass;
        IntrusivePtr<qorui::UI_LevelMeterView> levelMeter;
        IntrusivePtr<qorui::UI_Slider> thresholdSlider;
        IntrusivePtr<qorui::UI_LevelMeterView> gainReductionMeter;
        IntrusivePtr<EditNumber> threshold;
        IntrusivePtr<EditNumber> gain;
        IntrusivePtr<EditNumber> ratio;
        IntrusivePtr<EditNumber> attack;
        IntrusivePtr<EditNumber> release;
        std::shared_ptr<qoraudiotoolkit::LevelMeterMessage> levelMessage;
        std::shared_ptr<qoraudiotoolkit::GainReductionMeterMessage> gainReductionMessage;
        qorcore::ScopedConnection levelConnection;
        qorcore::ScopedConnection gainReductionConnection;
    };

    void UpdateBandColors();
    void UpdateCrossoverLimits();
    void UpdateBrickwallCheckbox();
    void ApplyLink(int index, float delta);
    void EnableMeters(bool enable);
    void UpdateGridColor();

    std::shared_ptr<qoraudiofilters::MultiBandCompressor> filter_;
    IntrusivePtr<CurveEditor> curveEditor_;
    IntrusivePtr<MultiBandCompressorCutoffOverlay> overlay_;
    std::vector<BandSpectrum> bandSpectra_;
    std::vector<IntrusivePtr<EditNumber>> crossovers_;
    std::vector<BandControls> bands_;
    IntrusivePtr<qorui::UI_Slider> gainSlider_;
    IntrusivePtr<qorui::UI_LevelMeterView> levelMeter_;
    IntrusivePtr<EditNumber> gain_;
    IntrusivePtr<qorui::UI_Button> limiterBypass_;
    IntrusivePtr<EditNumber> limiterThreshold_;
    IntrusivePtr<EditNumber> limiterMargin_;
    IntrusivePtr<EditNumber> limiterAttack_;
    IntrusivePtr<EditNumber> limiterRelease_;
    IntrusivePtr<qorui::UI_Checkbox> spectrumOnInput_;
    IntrusivePtr<qorui::UI_Checkbox> brickwallLimiter_;
    IntrusivePtr<qorui::UI_Checkbox> linkBandControls_;
    std::shared_ptr<qoraudiotoolkit::LevelMeterDSPMessage> outputMessage_;
    qorcore::ScopedConnection outputConnection_;
    std::weak_ptr<qoraudiotoolkit::LevelMeterDSP> outputLevelMeter_;
    std::uint8_t inLimitUpdate_ = 0;
};

} // namespace qoraudiofiltersui
