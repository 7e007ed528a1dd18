#pragma once

#include "platform/core/color_rgba.hpp"
#include "platform/core/high_precision_time.hpp"
#include "platform/core/rect.hpp"
#include "platform/core/signal.hpp"
#include "platform/rulers/ruler_base.hpp"
#include "platform/ui/ui_node.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace qorui {

enum class LevelMeterOrientation { kHorizontal = 0, kVertical = 1 };

/// What a meter shows. A gain-reduction meter grows from its top (or right) end down as the
/// gain falls below 1; the others grow from the bottom (or left) end.
enum class LevelMeterKind {
    kInput = 0,
    kOutput = 1,
    kMaster = 2,
    kGainReduction = 3,
    kLoudness = 4,
};

/// The look and scale of a level meter. Levels arrive as linear amplitudes and are shown in
/// decibels relative to `zeroRefValue`.
struct LevelMeterSettings {
    float minDB = -60.0f;
    float maxDB = 0.0f;
    bool showLED = false;           ///< lit segments instead of a solid bar
    bool showGradient = true;       ///< colours blend across the zones instead of changing at edges
    bool showValley = false;        ///< a mark at the lowest recent level
    bool useSpectrumColors = false; ///< a blue-to-red spectrum along the scale
    /// Zone starts in decibels relative to `maxDB` (so -3 starts 3 dB below the top).
    float cautionLevel = -12.0f;
    float warningLevel = -3.0f;
    float zeroRefValue = 1.0f;    ///< the linear amplitude shown as 0 dB
    float clippedRefLevel = 1.0f; ///< a linear level at or above this latches the clip indicator
    float peakHoldSeconds = 1.5f;
    float peakFallDBPerSecond = 20.0f;
};

/// A bank of level meters: groups of channels (one group per `AddMeter`) side by side, with a
/// decibel ruler, peak marks that hold and then fall on the window's clock, valley marks,
/// latching clip indicators above each channel, and an LED or bar look. Times come from
/// `HighPrecisionTime`, so a headless window's virtual clock drives the falls in tests.
class UI_LevelMeterView : public UI_Node {
public:
    /// A channel count below 0, or a kind outside the five, throws std::invalid_argument. A
    /// count of 0 makes no meter (add them with `AddMeter`).
    UI_LevelMeterView(int channels = 1,
                      LevelMeterOrientation orientation = LevelMeterOrientation::kVertical,
                      LevelMeterKind kind = LevelMeterKind::kInput, float width = 0.0f,
                      float height = 0.0f);

    // Meters
    /// A group of `channels` meters of `kind` (0 to 4) with a caption drawn beside it. A count
    /// below 1 or an unknown kind throws std::invalid_argument.
    void AddMeter(int channels, int kind, std::string label);
    void RemoveAllMeters();
    std::size_t GetMeterCount() const { return meters_.size(); }
    std::size_t GetChannelCount() const { return channels_.size(); }
    LevelMeterKind GetMeterKind(std::size_t meter) const;
    /// Lays out channels, ruler and captions in the current bounds.
    void ArrangeMeters();

    // Settings. Min not below max, or a non-finite number, throws std::invalid_argument.
    void SetSettings(const LevelMeterSettings& settings);
    const LevelMeterSettings& GetSettings() const { return settings_; }
    void SetOrientation(LevelMeterOrientation orientation);
    /// 0 horizontal, 1 vertical; other numbers throw std::invalid_argument.
    void SetOrientation(int orientation);
    LevelMeterOrientation GetOrientation() const { return orientation_; }
    void SetMinMaxDBValues(float minDB, float maxDB);
    float GetMinDBValue() const { return settings_.minDB; }
    float GetMaxDBValue() const { return settings_.maxDB; }
    void SetCautionAndWarningLevels(float caution, float warning);
    void SetCautionLevel(float caution);
    void SetWarningLevel(float warning);
    void SetClippedRefLevel(float level);
    void SetShowValley(bool show);
    void SetShowLED(bool show);
    void SetShowGradient(bool show);
    /// Colours of the warning, caution and normal zones, in place of the look's.
    void SetCustomColors(const qorcore::ColorRGBA& warning, const qorcore::ColorRGBA& caution,
                         const qorcore::ColorRGBA& normal);
    void ClearCustomColors();

    // Parts shown
    void SetShowRuler(bool show);
    bool GetShowRuler() const { return showRuler_; }
    void SetShowPeaks(bool show);
    bool GetShowPeaks() const { return showPeaks_; }
    void SetShowClipIndicators(bool show);
    bool GetShowClipIndicators() const { return showClip_; }
    void SetShowFrames(bool show);
    /// Gap between neighbouring channels in pixels; negative gives 0.
    void SetMeterGap(float gap);
    float GetMeterGap() const { return gap_; }
    /// A loudness reading that is not valid yet is drawn dimmed.
    void SetLoudnessValid(bool valid);
    bool IsLoudnessValid() const { return loudnessValid_; }

    // Ruler: a linear decibel ruler unless another is installed.
    RulerBase* GetRuler() const { return ruler_.get(); }
    /// Null throws std::invalid_argument.
    void SetRuler(IntrusivePtr<RulerBase> ruler);
    void SetRulerLabel1(std::string label);
    void SetRulerLabel2(std::string label);

    // Levels, linear amplitudes. NaN means "no level": the bar empties and marks stay.
    // `force` repaints even when nothing visible changed.
    void SetLevel(float level, bool force = false);
    /// One value per channel across all meters in order; extra values are ignored and missing
    /// ones leave their channels alone.
    void SetLevel(const std::vector<float>& levels, bool force = false);
    void SetLevel(const float* levels, std::size_t count, bool force = false);
    void SetLevel(const std::vector<float>& levels, std::size_t count, bool force);
    void ResetPeaksAndValleys();
    void ResetClippedStates();

    /// One gain-reduction bar with peak marks and without valley or clip lights, standing at no
    /// reduction: how every dynamics editor shows gain reduction.
    void MakeGainReductionMeter();
    /// An output meter of `channels` bars (at least one), each standing at the bottom of its
    /// scale until levels come.
    void MakeOutputMeter(std::size_t channels);

    // State, for editors and tests. Channel indices past the end throw std::out_of_range.
    /// The shown level in dB, clamped to the range; min dB when there is none.
    float GetLevelDB(std::size_t channel) const;
    /// The peak mark now, after hold and fall.
    float GetPeakDB(std::size_t channel) const;
    float GetValleyDB(std::size_t channel) const;
    bool IsClipped(std::size_t channel) const;
    bool IsAnyClipped() const;
    /// Where a channel's bar is drawn, in local coordinates.
    RectT<float> GetChannelRect(std::size_t channel) const;
    /// The part of the channel rect the bar fills for `dB` (the whole bar of the level).
    RectT<float> GetBarRect(std::size_t channel, float dB) const;
    RectT<float> GetClipIndicatorRect(std::size_t channel) const;
    /// Runs when a clip indicator latches or all are reset.
    qorcore::Signal<void(bool anyClipped)>& GetClipStateChangedSignal() { return clipChanged_; }

    // Overrides
    void UI_Draw(Penrig* penrig) override;
    bool UI_DoMouseEvent(const MouseEvent& event) override;
    bool UI_DoTimerNotify(int timerId) override;
    void UI_SizeChanged() override;
    void UI_NodeChanged(NodeChange change) override;

private:
    using TimeStamp = qorcore::HighPrecisionTime::TimeStamp;
    struct Meter {
        int channels;
        LevelMeterKind kind;
        std::string label;
    };
    struct Channel {
        std::size_t meter = 0;
        float level = 0.0f; ///< dB, -inf for none
        float peak = 0.0f;  ///< dB when latched
        TimeStamp peakTime = 0;
        float valley = 0.0f;
        TimeStamp valleyTime = 0;
        bool hasLevel = false;
        bool hasPeak = false;
        bool hasValley = false;
        bool clipped = false;
        RectT<float> rect;
        RectT<float> clipRect;
    };
    struct Zones {
        qorcore::ColorRGBA normal, caution, warning;
    };

    bool IsVertical() const { return orientation_ == LevelMeterOrientation::kVertical; }
    bool GrowsFromTop(const Channel& c) const;
    Channel& ChannelAt(std::size_t channel);
    const Channel& ChannelAt(std::size_t channel) const;
    void ApplyLevel(Channel& c, float linear, TimeStamp now);
    /// A mark `held` at `since`, moved toward the level once the hold is over; `louder` says
    /// whether the mark sits on the loud side of the level (peaks) or the quiet side (valleys).
    float MarkNow(const Channel& c, float held, TimeStamp since, bool louder, TimeStamp now) const;
    float ClampDB(float dB) const;
    float PositionOf(float dB) const;
    void UpdateRuler();
    void UpdateAnimation();
    void CommitLevels(bool force, const std::vector<float>& before);
    std::vector<float> SnapshotMarks() const;
    Zones GetZones() const;
    qorcore::ColorRGBA ColorAt(float dB, const Channel& c) const;
    void DrawChannel(Penrig& penrig, const Channel& c, TimeStamp now) const;
    void DrawMark(Penrig& penrig, const Channel& c, float dB,
                  const qorcore::ColorRGBA& color) const;

    LevelMeterSettings settings_;
    LevelMeterOrientation orientation_;
    LevelMeterKind kind_;
    std::vector<Meter> meters_;
    std::vector<Channel> channels_;
    IntrusivePtr<RulerBase> ruler_;
    RectT<float> rulerRect_;
    std::optional<Zones> customColors_;
    bool showRuler_ = true;
    bool showPeaks_ = true;
    bool showClip_ = true;
    bool showFrames_ = true;
    bool loudnessValid_ = true;
    bool animating_ = false;
    float gap_ = 2.0f;
    qorcore::Signal<void(bool)> clipChanged_;
};

namespace controls {
using ::qorui::LevelMeterKind;
using ::qorui::LevelMeterOrientation;
using ::qorui::LevelMeterSettings;
using ::qorui::UI_LevelMeterView;
} // namespace controls

namespace ui {
using ::qorui::UI_LevelMeterView;
}

} // namespace qorui
