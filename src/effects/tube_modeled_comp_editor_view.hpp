#pragma once

#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "platform/core/connection.hpp"

#include <memory>
#include <vector>

namespace qorui {
class UI_LevelMeterView;
}
namespace qoraudiofilters {
class SingleBandCompressor;
}
namespace qoraudiotoolkit {
class GainReductionMeterMessage;
class LevelMeterMessage;
} // namespace qoraudiotoolkit

namespace qoraudiofiltersui {

/// The editor of the tube-modelled compressor, without a graph, on the sheet and layout
/// "TUBEMODELEDCOMPRESSOR": threshold, ratio, attack, release and output gain hooked to the
/// effect by identifier, a fader beside the meters for the output gain, a gain-reduction meter
/// and one output meter per channel, fed from the effect's `GetGainReduction` and `GetLevels`.
/// The fader and the output gain's number move together during a drag, not a tick later.
class TubeModeledCompEditorView : public MarlTessAudioFilterEditorView {
public:
    /// A filter that is not a `SingleBandCompressor` (the tube compressor is one), or a layout
    /// without the controls, throws the null-pointer exception.
    static IntrusivePtr<TubeModeledCompEditorView> Create(std::shared_ptr<AudioFilter> filter);

protected:
    explicit TubeModeledCompEditorView(std::shared_ptr<AudioFilter> filter);
    /// Stops the meters before anything else goes.
    ~TubeModeledCompEditorView() override;

    void OnEditNumberInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                       IntrusivePtr<EditNumber> control, int index) override;
    void UpdateEditNumber(IntrusivePtr<EditNumber> control, int index) override;
    // The fader: its top is the highest gain.
    void OnSliderInteractiveChange(const qorui::UI_InteractiveControlChangedMessage& message,
                                   IntrusivePtr<qorui::UI_Slider> control, int index) override;
    void UpdateSlider(IntrusivePtr<qorui::UI_Slider> control, int index) override;

private:
    void SetupMeters();
    void EnableMeters();
    void DisableMeters();

    std::shared_ptr<qoraudiofilters::SingleBandCompressor> compressor_;
    IntrusivePtr<EditNumber> outputGainNumber_;
    IntrusivePtr<qorui::UI_Slider> outputGainSlider_;
    qorui::UI_LevelMeterView* gainReductionMeter_ = nullptr;
    qorui::UI_LevelMeterView* outputMeter_ = nullptr;
    std::shared_ptr<qoraudiotoolkit::GainReductionMeterMessage> gainReductionMessage_;
    std::shared_ptr<qoraudiotoolkit::LevelMeterMessage> levelMessage_;
    qorcore::ScopedConnection gainReductionConnection_;
    qorcore::ScopedConnection levelConnection_;
};

} // namespace qoraudiofiltersui
