#pragma once

#include "audio/dsp/loudness_meter.hpp"
#include "framework/marl_tess_audio_filter_editor_view.hpp"
#include "platform/core/connection.hpp"

#include <memory>
#include <string>

namespace qorui {
class UI_Button;
class UI_LevelMeterView;
class UI_StaticText;
} // namespace qorui

namespace qoraudiofilters {
class LoudnessMeterMessage;
}

namespace qoraudiofiltersui {

/// The editor of the loudness meter: momentary, short-term, its maximum, integrated, loudness
/// range and true peak, in absolute or relative units, on three loudness meters and a true-peak
/// meter. Every value comes from the filter; the view formats text, sets the meters' scales
/// around the target, and runs a reset. Its sheet is empty: the layout "LOUDNESSMETER" carries
/// its own cells, and its controls are bound through the layout's parameter map.
///
/// Parameters (real values through their infos): 0 target (LUFS), 1 maximum true peak (dBTP),
/// 2 scale (0 the +9 scale, 1 the +18 scale), 3 unit (0 LUFS, 1 LKFS, 2 LU/LUFS, 3 LU/LKFS),
/// 4 low level (LU below the top of the scale).
class LoudnessMeterEditorView : public MarlTessAudioFilterEditorView {
public:
    static constexpr float kNoValue = -300.0f;

    /// A filter that is not a `LoudnessMeter`, or a layout without the meter's controls, throws
    /// the null-pointer exception.
    static IntrusivePtr<LoudnessMeterEditorView> Create(std::shared_ptr<AudioFilter> filter);

    /// The values shown, rounded as the texts show them (for tests and hosts).
    const qoraudiofilters::LoudnessMeterValues& GetShownValues() const { return shown_; }
    float GetHeldTruePeak() const { return heldTruePeak_; }

    /// One decimal down to -100 and whole numbers below, halves away from zero.
    static float RoundForDisplay(float value);
    /// The ruler of a loudness meter: from `min` to `max` by `step`, with the target standing
    /// on it in place of the nearest tick below it (when it lies within the range).
    static std::vector<double> RulerValues(float min, float max, float step, float target);

protected:
    explicit LoudnessMeterEditorView(std::shared_ptr<AudioFilter> filter);
    ~LoudnessMeterEditorView() override;

    void OnThemeChanged() override;

private:
    void UpdateFromValues(const qoraudiofilters::LoudnessMeterValues& values, bool force);
    void SetNumberText(qorui::UI_StaticText& control, float value, bool valid, bool over);
    void UpdateScale();
    void UpdateUnitTexts();
    void UpdateCaptionColors();
    void Reset();
    void OnResetCompleted();
    void EnableMeter();
    void DisableMeter();
    float RealValue(int index) const;

    template <class T>
    T& Control(const char* identifier) const;

    qoraudiofilters::LoudnessMeter* meter_ = nullptr;
    std::shared_ptr<qoraudiofilters::LoudnessMeter> meterShared_;
    std::shared_ptr<qoraudiofilters::LoudnessMeterMessage> message_;
    qorcore::ScopedConnection messageConnection_;
    qorcore::ScopedConnection resetConnection_;

    qorui::UI_LevelMeterView* levelMeter_ = nullptr;
    qorui::UI_LevelMeterView* shortTermMeter_ = nullptr;
    qorui::UI_LevelMeterView* integratedMeter_ = nullptr;
    qorui::UI_LevelMeterView* momentaryMeter_ = nullptr;
    std::vector<qorui::UI_StaticText*> captions_;
    qorui::UI_StaticText* shortTerm_ = nullptr;
    qorui::UI_StaticText* maxShortTerm_ = nullptr;
    qorui::UI_StaticText* integrated_ = nullptr;
    qorui::UI_StaticText* loudnessRange_ = nullptr;
    qorui::UI_StaticText* truePeak_ = nullptr;
    qorui::UI_Button* resetButton_ = nullptr;
    std::vector<qorui::UI_StaticText*> unitTexts_;

    bool relativeUnits_ = false;
    float target_ = -23.0f;
    float maxTruePeak_ = -1.0f;
    int scale_ = 0;
    int unit_ = 0;
    float lowLevel_ = -18.0f;
    float heldTruePeak_ = kNoValue;
    qoraudiofilters::LoudnessMeterValues shown_;
    std::string infinityText_;
};

} // namespace qoraudiofiltersui
