#include "platform/rulers/ui_level_meter_view.hpp"

#include "platform/draw/penrig.hpp"
#include "platform/rulers/decibel_ruler.hpp"
#include "platform/skins/skins.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace qorui {

namespace {

using qorcore::ColorRGBA;

constexpr int kAnimationTimer = 1;
constexpr float kAnimationPeriod = 1.0f / 30.0f;
constexpr float kClipSize = 4.0f;     // clip indicator depth along the axis
constexpr float kClipGap = 1.0f;      // between the indicator and the bar
constexpr float kRulerWidth = 26.0f;  // a vertical ruler beside the meters
constexpr float kRulerHeight = 18.0f; // a horizontal ruler below them
constexpr float kCaptionSize = 12.0f;
constexpr float kLEDSegment = 3.0f;
constexpr float kLEDGap = 1.0f;

// The meter colours of one look; looked up, not branched on, while drawing.
struct MeterLook {
    ColorRGBA track;
    ColorRGBA frame;
    ColorRGBA normal;
    ColorRGBA caution;
    ColorRGBA warning;
    ColorRGBA gainReduction;
    ColorRGBA loudness;
    ColorRGBA invalid;
    ColorRGBA valley;
    ColorRGBA clipOff;
    ColorRGBA clipOn;
};

const MeterLook& GetMeterLook() {
    static const MeterLook classic{
        {0.16f, 0.16f, 0.17f, 1}, {0.42f, 0.42f, 0.44f, 1}, {0.30f, 0.78f, 0.36f, 1},
        {0.97f, 0.84f, 0.26f, 1}, {0.93f, 0.30f, 0.22f, 1}, {0.96f, 0.62f, 0.18f, 1},
        {0.33f, 0.62f, 0.92f, 1}, {0.45f, 0.45f, 0.47f, 1}, {0.55f, 0.75f, 0.98f, 1},
        {0.28f, 0.10f, 0.09f, 1}, {0.96f, 0.22f, 0.16f, 1}};
    static const MeterLook v7{
        {0.09f, 0.09f, 0.10f, 1}, {0.24f, 0.24f, 0.26f, 1}, {0.27f, 0.71f, 0.34f, 1},
        {0.96f, 0.82f, 0.27f, 1}, {0.93f, 0.32f, 0.24f, 1}, {0.94f, 0.56f, 0.16f, 1},
        {0.26f, 0.55f, 0.88f, 1}, {0.38f, 0.38f, 0.40f, 1}, {0.48f, 0.68f, 0.95f, 1},
        {0.22f, 0.08f, 0.07f, 1}, {0.94f, 0.24f, 0.18f, 1}};
    return skins::GetSkin() == skins::Skin::kV7 ? v7 : classic;
}

ColorRGBA Mix(const ColorRGBA& a, const ColorRGBA& b, float t) {
    t = std::clamp(t, 0.0f, 1.0f);
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t,
            a.blue + (b.blue - a.blue) * t, a.alpha + (b.alpha - a.alpha) * t};
}

// Blue at the bottom of the scale through green and yellow to red at the top.
ColorRGBA SpectrumColor(float t) {
    static const ColorRGBA stops[] = {{0.20f, 0.40f, 0.95f, 1},
                                      {0.15f, 0.80f, 0.85f, 1},
                                      {0.30f, 0.80f, 0.30f, 1},
                                      {0.97f, 0.84f, 0.25f, 1},
                                      {0.93f, 0.28f, 0.20f, 1}};
    t = std::clamp(t, 0.0f, 1.0f) * 4.0f;
    const int i = std::min(3, int(t));
    return Mix(stops[i], stops[i + 1], t - float(i));
}

bool Finite(float v) {
    return std::isfinite(v);
}

LevelMeterKind KindFromInt(int kind) {
    if (kind < 0 || kind > 4)
        throw std::invalid_argument("UI_LevelMeterView: a meter kind is 0 to 4");
    return LevelMeterKind(kind);
}

} // namespace

UI_LevelMeterView::UI_LevelMeterView(int channels, LevelMeterOrientation orientation,
                                     LevelMeterKind kind, float width, float height)
    : orientation_(orientation), kind_(KindFromInt(int(kind))),
      ruler_(qorcore::MakeIntrusive<DecibelRuler>()) {
    if (channels < 0)
        throw std::invalid_argument("UI_LevelMeterView: the channel count must not be negative");
    if (orientation != LevelMeterOrientation::kHorizontal &&
        orientation != LevelMeterOrientation::kVertical)
        throw std::invalid_argument("UI_LevelMeterView: unknown orientation");
    if (channels > 0)
        AddMeter(channels, int(kind), "");
    SetSize(width, height);
    ArrangeMeters();
}

// --- Meters ---------------------------------------------------------------------------------

void UI_LevelMeterView::AddMeter(int channels, int kind, std::string label) {
    const LevelMeterKind k = KindFromInt(kind);
    if (channels < 1)
        throw std::invalid_argument("UI_LevelMeterView::AddMeter: at least one channel");
    meters_.push_back({channels, k, std::move(label)});
    for (int i = 0; i < channels; ++i) {
        Channel c;
        c.meter = meters_.size() - 1;
        channels_.push_back(c);
    }
    ArrangeMeters();
}

void UI_LevelMeterView::RemoveAllMeters() {
    meters_.clear();
    channels_.clear();
    UpdateAnimation();
    EmitInvalidate();
}

LevelMeterKind UI_LevelMeterView::GetMeterKind(std::size_t meter) const {
    if (meter >= meters_.size())
        throw std::out_of_range("UI_LevelMeterView::GetMeterKind: no such meter");
    return meters_[meter].kind;
}

bool UI_LevelMeterView::GrowsFromTop(const Channel& c) const {
    return meters_[c.meter].kind == LevelMeterKind::kGainReduction;
}

void UI_LevelMeterView::ArrangeMeters() {
    const RectT<float> b = GetBounds();
    const bool captions = std::any_of(meters_.begin(), meters_.end(),
                                      [](const Meter& m) { return !m.label.empty(); });
    const float clip = showClip_ ? kClipSize + kClipGap : 0.0f;
    const std::size_t n = channels_.size();
    const float gaps = n > 1 ? gap_ * float(n - 1) : 0.0f;
    if (IsVertical()) {
        const float across = std::max(0.0f, b.width - (showRuler_ ? kRulerWidth : 0.0f));
        const float top = clip;
        const float bottom = std::max(top, b.height - (captions ? kCaptionSize : 0.0f));
        const float each = n ? std::max(1.0f, std::floor((across - gaps) / float(n))) : 0.0f;
        float x = 0;
        for (Channel& c : channels_) {
            c.rect = {x, top, each, bottom - top};
            c.clipRect = {x, 0, each, kClipSize};
            x += each + gap_;
        }
        const float rulerX = n ? x - gap_ + 3.0f : 0.0f;
        rulerRect_ = {rulerX, 0, std::max(0.0f, b.width - rulerX), b.height};
    } else {
        const float left = captions ? kCaptionSize * 2 : 0.0f;
        const float right = std::max(left, b.width - clip);
        const float across = std::max(0.0f, b.height - (showRuler_ ? kRulerHeight : 0.0f));
        const float each = n ? std::max(1.0f, std::floor((across - gaps) / float(n))) : 0.0f;
        float y = 0;
        for (Channel& c : channels_) {
            c.rect = {left, y, right - left, each};
            c.clipRect = {right + kClipGap, y, kClipSize, each};
            y += each + gap_;
        }
        const float rulerY = n ? y - gap_ + 1.0f : 0.0f;
        rulerRect_ = {0, rulerY, b.width, std::max(0.0f, b.height - rulerY)};
    }
    UpdateRuler();
    EmitInvalidate();
}

void UI_LevelMeterView::UpdateRuler() {
    ruler_->SetVertical(IsVertical());
    RectT<float> axis;
    if (!channels_.empty())
        axis = channels_.front().rect;
    if (IsVertical()) {
        ruler_->SetPixelRange(int(std::lround(axis.y)), int(std::lround(axis.y + axis.height)));
        ruler_->SetValueRange(settings_.maxDB, settings_.minDB);
    } else {
        ruler_->SetPixelRange(int(std::lround(axis.x)), int(std::lround(axis.x + axis.width)));
        ruler_->SetValueRange(settings_.minDB, settings_.maxDB);
    }
}

// --- Settings -------------------------------------------------------------------------------

void UI_LevelMeterView::SetSettings(const LevelMeterSettings& s) {
    if (!Finite(s.minDB) || !Finite(s.maxDB) || !(s.minDB < s.maxDB))
        throw std::invalid_argument("UI_LevelMeterView: min dB must be below max dB");
    if (!Finite(s.cautionLevel) || !Finite(s.warningLevel) || !Finite(s.zeroRefValue) ||
        !(s.zeroRefValue > 0) || !Finite(s.clippedRefLevel) || !Finite(s.peakHoldSeconds) ||
        s.peakHoldSeconds < 0 || !Finite(s.peakFallDBPerSecond) || s.peakFallDBPerSecond < 0)
        throw std::invalid_argument("UI_LevelMeterView: a setting is not a valid number");
    settings_ = s;
    UpdateRuler();
    UpdateAnimation();
    EmitInvalidate();
}

void UI_LevelMeterView::SetOrientation(LevelMeterOrientation orientation) {
    SetOrientation(int(orientation));
}

void UI_LevelMeterView::SetOrientation(int orientation) {
    if (orientation != 0 && orientation != 1)
        throw std::invalid_argument("UI_LevelMeterView::SetOrientation: 0 or 1");
    orientation_ = LevelMeterOrientation(orientation);
    ArrangeMeters();
}

void UI_LevelMeterView::SetMinMaxDBValues(float minDB, float maxDB) {
    LevelMeterSettings s = settings_;
    s.minDB = minDB;
    s.maxDB = maxDB;
    SetSettings(s);
}

void UI_LevelMeterView::SetCautionAndWarningLevels(float caution, float warning) {
    LevelMeterSettings s = settings_;
    s.cautionLevel = caution;
    s.warningLevel = warning;
    SetSettings(s);
}

void UI_LevelMeterView::SetCautionLevel(float caution) {
    SetCautionAndWarningLevels(caution, settings_.warningLevel);
}

void UI_LevelMeterView::SetWarningLevel(float warning) {
    SetCautionAndWarningLevels(settings_.cautionLevel, warning);
}

void UI_LevelMeterView::SetClippedRefLevel(float level) {
    LevelMeterSettings s = settings_;
    s.clippedRefLevel = level;
    SetSettings(s);
}

void UI_LevelMeterView::SetShowValley(bool show) {
    settings_.showValley = show;
    UpdateAnimation();
    EmitInvalidate();
}

void UI_LevelMeterView::SetShowLED(bool show) {
    settings_.showLED = show;
    EmitInvalidate();
}

void UI_LevelMeterView::SetShowGradient(bool show) {
    settings_.showGradient = show;
    EmitInvalidate();
}

void UI_LevelMeterView::SetCustomColors(const ColorRGBA& warning, const ColorRGBA& caution,
                                        const ColorRGBA& normal) {
    customColors_ = Zones{normal, caution, warning};
    EmitInvalidate();
}

void UI_LevelMeterView::ClearCustomColors() {
    customColors_.reset();
    EmitInvalidate();
}

void UI_LevelMeterView::SetShowRuler(bool show) {
    showRuler_ = show;
    ArrangeMeters();
}

void UI_LevelMeterView::SetShowPeaks(bool show) {
    showPeaks_ = show;
    UpdateAnimation();
    EmitInvalidate();
}

void UI_LevelMeterView::SetShowClipIndicators(bool show) {
    showClip_ = show;
    ArrangeMeters();
}

void UI_LevelMeterView::SetShowFrames(bool show) {
    showFrames_ = show;
    EmitInvalidate();
}

void UI_LevelMeterView::SetMeterGap(float gap) {
    gap_ = Finite(gap) ? std::max(0.0f, gap) : 0.0f;
    ArrangeMeters();
}

void UI_LevelMeterView::SetLoudnessValid(bool valid) {
    if (valid == loudnessValid_)
        return;
    loudnessValid_ = valid;
    EmitInvalidate();
}

void UI_LevelMeterView::SetRuler(IntrusivePtr<RulerBase> ruler) {
    if (!ruler)
        throw std::invalid_argument("UI_LevelMeterView::SetRuler: null ruler");
    ruler_ = std::move(ruler);
    UpdateRuler();
    EmitInvalidate();
}

void UI_LevelMeterView::SetRulerLabel1(std::string label) {
    ruler_->SetLabel1(std::move(label));
    EmitInvalidate();
}

void UI_LevelMeterView::SetRulerLabel2(std::string label) {
    ruler_->SetLabel2(std::move(label));
    EmitInvalidate();
}

// --- Levels ---------------------------------------------------------------------------------

float UI_LevelMeterView::ClampDB(float dB) const {
    if (std::isnan(dB))
        return settings_.minDB;
    return std::clamp(dB, settings_.minDB, settings_.maxDB);
}

float UI_LevelMeterView::MarkNow(const Channel& c, float held, TimeStamp since, bool louder,
                                 TimeStamp now) const {
    // "More" is up the scale for a level and down it for a gain reduction.
    const float more = GrowsFromTop(c) ? -1.0f : 1.0f;
    const float base = GrowsFromTop(c) ? settings_.maxDB : settings_.minDB;
    const float level = c.hasLevel ? ClampDB(c.level) : base;
    const double elapsed =
        now > since ? qorcore::HighPrecisionTime::ConvertToSeconds(now - since) : 0.0;
    const double moving = std::max(0.0, elapsed - double(settings_.peakHoldSeconds));
    const float moved = float(moving * double(settings_.peakFallDBPerSecond));
    if (louder) {
        const float v = held - more * moved;
        return more * v < more * level ? level : v;
    }
    const float v = held + more * moved;
    return more * v > more * level ? level : v;
}

void UI_LevelMeterView::ApplyLevel(Channel& c, float linear, TimeStamp now) {
    if (std::isnan(linear)) {
        c.hasLevel = false;
        return;
    }
    const bool gainReduction = GrowsFromTop(c);
    if (!gainReduction && linear >= settings_.clippedRefLevel && !c.clipped) {
        c.clipped = true;
    }
    const float ratio = std::max(0.0f, linear) / settings_.zeroRefValue;
    c.level = ratio > 0 ? 20.0f * std::log10(ratio) : -std::numeric_limits<float>::infinity();
    c.hasLevel = true;
    const float level = ClampDB(c.level);
    const float more = gainReduction ? -1.0f : 1.0f;
    if (!c.hasPeak || more * level >= more * MarkNow(c, c.peak, c.peakTime, true, now)) {
        c.peak = level;
        c.peakTime = now;
        c.hasPeak = true;
    }
    if (!c.hasValley || more * level <= more * MarkNow(c, c.valley, c.valleyTime, false, now)) {
        c.valley = level;
        c.valleyTime = now;
        c.hasValley = true;
    }
}

std::vector<float> UI_LevelMeterView::SnapshotMarks() const {
    std::vector<float> marks;
    marks.reserve(channels_.size() * 5);
    for (std::size_t i = 0; i < channels_.size(); ++i) {
        const Channel& c = channels_[i];
        marks.push_back(c.hasLevel ? GetLevelDB(i) : std::numeric_limits<float>::quiet_NaN());
        marks.push_back(c.hasPeak ? std::round(GetPeakDB(i) * 100) : -1e9f);
        marks.push_back(c.hasValley ? std::round(GetValleyDB(i) * 100) : -1e9f);
        marks.push_back(c.clipped ? 1.0f : 0.0f);
    }
    return marks;
}

void UI_LevelMeterView::CommitLevels(bool force, const std::vector<float>& before) {
    const std::vector<float> after = SnapshotMarks();
    bool changed = before.size() != after.size();
    bool clipChanged = false;
    for (std::size_t i = 0; !changed && i < after.size(); ++i) {
        const bool same = before[i] == after[i] || (std::isnan(before[i]) && std::isnan(after[i]));
        changed = !same;
    }
    for (std::size_t i = 3; i < after.size() && i < before.size(); i += 4)
        clipChanged = clipChanged || before[i] != after[i];
    UpdateAnimation();
    if (changed || force) {
        // A new level redraws the bars and their clip lights; the ruler and the labels stay.
        RectT<float> dirty;
        for (const Channel& c : channels_)
            for (const RectT<float>& part : {c.rect, c.clipRect})
                if (part.width > 0 && part.height > 0)
                    dirty = dirty.width > 0 ? dirty.Union(part) : part;
        // Kept off the ruler, so that the repaint needs no label shaped again.
        if (dirty.width > 0 && showRuler_ && dirty.Intersects(rulerRect_)) {
            if (IsVertical())
                dirty =
                    rulerRect_.x > dirty.x
                        ? RectT<float>::FromEdges(dirty.x, dirty.y, rulerRect_.x, dirty.Bottom())
                        : RectT<float>::FromEdges(rulerRect_.Right(), dirty.y, dirty.Right(),
                                                  dirty.Bottom());
            else
                dirty = rulerRect_.y > dirty.y
                            ? RectT<float>::FromEdges(dirty.x, dirty.y, dirty.Right(), rulerRect_.y)
                            : RectT<float>::FromEdges(dirty.x, rulerRect_.Bottom(), dirty.Right(),
                                                      dirty.Bottom());
        }
        if (dirty.width > 0 && dirty.height > 0)
            EmitInvalidate(dirty);
        else
            EmitInvalidate();
    }
    if (clipChanged)
        clipChanged_(IsAnyClipped());
}

void UI_LevelMeterView::MakeGainReductionMeter() {
    RemoveAllMeters();
    SetShowPeaks(true);
    SetShowValley(false);
    SetShowClipIndicators(false);
    AddMeter(1, int(LevelMeterKind::kGainReduction), "");
    ArrangeMeters();
    SetLevel(1.0f, true);
}

void UI_LevelMeterView::MakeOutputMeter(std::size_t channels) {
    channels = std::max<std::size_t>(1, channels);
    RemoveAllMeters();
    AddMeter(int(channels), int(LevelMeterKind::kOutput), "");
    ArrangeMeters();
    const float floor = float(std::pow(10.0, double(GetMinDBValue()) / 20.0));
    SetLevel(std::vector<float>(channels, floor), true);
}

void UI_LevelMeterView::SetLevel(float level, bool force) {
    const std::vector<float> before = SnapshotMarks();
    const TimeStamp now = qorcore::HighPrecisionTime::GetCurrentTimeStamp();
    for (Channel& c : channels_)
        ApplyLevel(c, level, now);
    CommitLevels(force, before);
}

void UI_LevelMeterView::SetLevel(const std::vector<float>& levels, bool force) {
    SetLevel(levels.data(), levels.size(), force);
}

void UI_LevelMeterView::SetLevel(const std::vector<float>& levels, std::size_t count, bool force) {
    SetLevel(levels.data(), std::min(count, levels.size()), force);
}

void UI_LevelMeterView::SetLevel(const float* levels, std::size_t count, bool force) {
    if (!levels && count > 0)
        throw std::invalid_argument("UI_LevelMeterView::SetLevel: null levels");
    const std::vector<float> before = SnapshotMarks();
    const TimeStamp now = qorcore::HighPrecisionTime::GetCurrentTimeStamp();
    for (std::size_t i = 0; i < count && i < channels_.size(); ++i)
        ApplyLevel(channels_[i], levels[i], now);
    CommitLevels(force, before);
}

void UI_LevelMeterView::ResetPeaksAndValleys() {
    for (Channel& c : channels_) {
        c.hasPeak = false;
        c.hasValley = false;
    }
    UpdateAnimation();
    EmitInvalidate();
}

void UI_LevelMeterView::ResetClippedStates() {
    const bool any = IsAnyClipped();
    for (Channel& c : channels_)
        c.clipped = false;
    EmitInvalidate();
    if (any)
        clipChanged_(false);
}

UI_LevelMeterView::Channel& UI_LevelMeterView::ChannelAt(std::size_t channel) {
    if (channel >= channels_.size())
        throw std::out_of_range("UI_LevelMeterView: no such channel");
    return channels_[channel];
}

const UI_LevelMeterView::Channel& UI_LevelMeterView::ChannelAt(std::size_t channel) const {
    if (channel >= channels_.size())
        throw std::out_of_range("UI_LevelMeterView: no such channel");
    return channels_[channel];
}

float UI_LevelMeterView::GetLevelDB(std::size_t channel) const {
    const Channel& c = ChannelAt(channel);
    if (!c.hasLevel)
        return GrowsFromTop(c) ? settings_.maxDB : settings_.minDB;
    return ClampDB(c.level);
}

float UI_LevelMeterView::GetPeakDB(std::size_t channel) const {
    const Channel& c = ChannelAt(channel);
    if (!c.hasPeak)
        return GetLevelDB(channel);
    return MarkNow(c, c.peak, c.peakTime, true, qorcore::HighPrecisionTime::GetCurrentTimeStamp());
}

float UI_LevelMeterView::GetValleyDB(std::size_t channel) const {
    const Channel& c = ChannelAt(channel);
    if (!c.hasValley)
        return GetLevelDB(channel);
    return MarkNow(c, c.valley, c.valleyTime, false,
                   qorcore::HighPrecisionTime::GetCurrentTimeStamp());
}

bool UI_LevelMeterView::IsClipped(std::size_t channel) const {
    return ChannelAt(channel).clipped;
}

bool UI_LevelMeterView::IsAnyClipped() const {
    return std::any_of(channels_.begin(), channels_.end(),
                       [](const Channel& c) { return c.clipped; });
}

RectT<float> UI_LevelMeterView::GetChannelRect(std::size_t channel) const {
    return ChannelAt(channel).rect;
}

RectT<float> UI_LevelMeterView::GetClipIndicatorRect(std::size_t channel) const {
    return showClip_ ? ChannelAt(channel).clipRect : RectT<float>{};
}

float UI_LevelMeterView::PositionOf(float dB) const {
    // Whole pixels keep bar ends crisp at every scale.
    return float(std::round(ruler_->GetPixelFromValueF(ClampDB(dB))));
}

RectT<float> UI_LevelMeterView::GetBarRect(std::size_t channel, float dB) const {
    const Channel& c = ChannelAt(channel);
    const RectT<float>& r = c.rect;
    const float p = PositionOf(dB);
    const bool fromTop = GrowsFromTop(c);
    if (IsVertical()) {
        if (fromTop)
            return {r.x, r.y, r.width, std::max(0.0f, p - r.y)};
        return {r.x, p, r.width, std::max(0.0f, r.y + r.height - p)};
    }
    if (fromTop)
        return {p, r.y, std::max(0.0f, r.x + r.width - p), r.height};
    return {r.x, r.y, std::max(0.0f, p - r.x), r.height};
}

// --- Animation ------------------------------------------------------------------------------

void UI_LevelMeterView::UpdateAnimation() {
    // The timer runs only while a mark is still on its way to the level.
    bool moving = false;
    for (std::size_t i = 0; i < channels_.size() && !moving; ++i) {
        const Channel& c = channels_[i];
        const float level = GetLevelDB(i);
        moving = (showPeaks_ && c.hasPeak && GetPeakDB(i) != level) ||
                 (settings_.showValley && c.hasValley && GetValleyDB(i) != level);
    }
    if (moving && !animating_)
        animating_ = UI_InstallTimer(kAnimationPeriod, kAnimationTimer);
    else if (!moving && animating_) {
        UI_RemoveTimer(kAnimationTimer);
        animating_ = false;
    }
}

bool UI_LevelMeterView::UI_DoTimerNotify(int timerId) {
    if (timerId != kAnimationTimer)
        return UI_Node::UI_DoTimerNotify(timerId);
    EmitInvalidate();
    UpdateAnimation();
    return true;
}

void UI_LevelMeterView::UI_NodeChanged(NodeChange change) {
    UI_Node::UI_NodeChanged(change);
    if (change == kNodeChangeWindowChanged) {
        animating_ = false; // a window change drops the node's timers
        UpdateAnimation();
    }
}

void UI_LevelMeterView::UI_SizeChanged() {
    UI_Node::UI_SizeChanged();
    ArrangeMeters();
}

bool UI_LevelMeterView::UI_DoMouseEvent(const MouseEvent& event) {
    // A click on a clip indicator clears them all, as on a hardware meter.
    if (showClip_ && event.IsAction(PointerAction::kPress) && event.IsButton(MouseButton::kLeft)) {
        for (const Channel& c : channels_) {
            if (c.clipRect.Contains(event.GetPosition())) {
                ResetClippedStates();
                return true;
            }
        }
    }
    return UI_Node::UI_DoMouseEvent(event);
}

// --- Drawing --------------------------------------------------------------------------------

UI_LevelMeterView::Zones UI_LevelMeterView::GetZones() const {
    if (customColors_)
        return *customColors_;
    const MeterLook& look = GetMeterLook();
    return {look.normal, look.caution, look.warning};
}

ColorRGBA UI_LevelMeterView::ColorAt(float dB, const Channel& c) const {
    const MeterLook& look = GetMeterLook();
    const LevelMeterKind kind = meters_[c.meter].kind;
    if (kind == LevelMeterKind::kLoudness && !loudnessValid_)
        return look.invalid;
    if (kind == LevelMeterKind::kGainReduction && !customColors_)
        return look.gainReduction;
    const float span = settings_.maxDB - settings_.minDB;
    if (settings_.useSpectrumColors)
        return SpectrumColor((dB - settings_.minDB) / span);
    Zones z = GetZones();
    const float caution = settings_.maxDB + settings_.cautionLevel;
    const float warning = settings_.maxDB + settings_.warningLevel;
    // Loudness reads against a target: below the caution level it is too low, between the
    // two it is in range, above the warning level too loud.
    if (kind == LevelMeterKind::kLoudness)
        return dB >= warning   ? z.warning
               : dB >= caution ? z.normal
                               : (customColors_ ? z.caution : look.loudness);
    if (!settings_.showGradient)
        return dB >= warning ? z.warning : dB >= caution ? z.caution : z.normal;
    if (dB < caution)
        return z.normal;
    if (dB < warning)
        return Mix(z.normal, z.caution, (dB - caution) / std::max(1e-3f, warning - caution));
    return Mix(z.caution, z.warning, (dB - warning) / std::max(1e-3f, settings_.maxDB - warning));
}

void UI_LevelMeterView::DrawMark(Penrig& penrig, const Channel& c, float dB,
                                 const ColorRGBA& color) const {
    // A two-pixel mark on the loud side of its position, inside the channel.
    const RectT<float>& r = c.rect;
    const float p = PositionOf(dB);
    const bool fromTop = GrowsFromTop(c);
    RectT<float> mark;
    if (IsVertical()) {
        const float y = std::clamp(fromTop ? p - 2.0f : p, r.y, r.y + r.height - 2.0f);
        mark = {r.x, y, r.width, 2.0f};
    } else {
        const float x = std::clamp(fromTop ? p : p - 2.0f, r.x, r.x + r.width - 2.0f);
        mark = {x, r.y, 2.0f, r.height};
    }
    penrig.FillRect(mark, color);
}

void UI_LevelMeterView::DrawChannel(Penrig& penrig, const Channel& c, TimeStamp now) const {
    const MeterLook& look = GetMeterLook();
    const RectT<float>& r = c.rect;
    if (r.IsEmpty())
        return;
    penrig.FillRect(r, look.track);
    const bool fromTop = GrowsFromTop(c);
    const float base = fromTop ? settings_.maxDB : settings_.minDB;
    const float level = c.hasLevel ? ClampDB(c.level) : base;
    const float basePos = PositionOf(base);
    const float levelPos = PositionOf(level);
    const float length = std::abs(levelPos - basePos);
    const float total = IsVertical() ? r.height : r.width;
    // Steps away from the base end: positive along the axis for a horizontal meter's level and
    // a vertical gain reduction, negative for the others.
    const bool increasing = IsVertical() ? fromTop : !fromTop;
    const float dir = increasing ? 1.0f : -1.0f;
    auto spanRect = [&](float from, float to) {
        const float a = basePos + dir * from;
        const float b = basePos + dir * to;
        const float lo = std::min(a, b);
        const float hi = std::max(a, b);
        return IsVertical() ? RectT<float>{r.x, lo, r.width, hi - lo}
                            : RectT<float>{lo, r.y, hi - lo, r.height};
    };
    auto dbAt = [&](float offset) {
        return float(ruler_->GetValueFromPixelF(double(basePos + dir * offset)));
    };
    if (settings_.showLED) {
        for (float s = 0; s + kLEDSegment <= total + 0.01f; s += kLEDSegment + kLEDGap) {
            const ColorRGBA color = ColorAt(dbAt(s + kLEDSegment * 0.5f), c);
            const bool lit = s + kLEDSegment * 0.5f < length;
            penrig.FillRect(spanRect(s, s + kLEDSegment),
                            lit ? color : Mix(look.track, color, 0.2f));
        }
    } else if (length > 0) {
        // One strip per device pixel for a gradient; whole zones otherwise.
        const float step = settings_.showGradient ? 1.0f / penrig.GetScaleFactor() : length;
        if (settings_.showGradient || settings_.useSpectrumColors) {
            for (float s = 0; s < length; s += step) {
                const float e = std::min(length, s + step);
                penrig.FillRect(spanRect(s, e), ColorAt(dbAt((s + e) * 0.5f), c));
            }
        } else {
            float s = 0;
            while (s < length) {
                // Walk to the end of the zone the strip starts in.
                const ColorRGBA color = ColorAt(dbAt(s + 0.5f), c);
                float e = s + 1.0f;
                while (e < length && ColorAt(dbAt(e + 0.5f), c) == color)
                    e += 1.0f;
                e = std::min(e, length);
                penrig.FillRect(spanRect(s, e), color);
                s = e;
            }
        }
    }
    if (settings_.showValley && c.hasValley) {
        const float v = MarkNow(c, c.valley, c.valleyTime, false, now);
        if (v != level)
            DrawMark(penrig, c, v, look.valley);
    }
    if (showPeaks_ && c.hasPeak) {
        const float p = MarkNow(c, c.peak, c.peakTime, true, now);
        if (p != base)
            DrawMark(penrig, c, p, ColorAt(p, c));
    }
    if (showFrames_)
        penrig.FrameRect(r, look.frame);
    if (showClip_ && !fromTop) {
        penrig.FillRect(c.clipRect, c.clipped ? look.clipOn : look.clipOff);
        if (showFrames_)
            penrig.FrameRect(c.clipRect, look.frame);
    }
}

void UI_LevelMeterView::UI_Draw(Penrig* penrig) {
    if (!penrig)
        return;
    const TimeStamp now = qorcore::HighPrecisionTime::GetCurrentTimeStamp();
    // A new level dirties only the bars: the ruler's labels are shaped only when the paint
    // reaches them.
    const RectT<float> clip = penrig->GetClipBounds();
    for (const Channel& c : channels_)
        DrawChannel(*penrig, c, now);
    if (showRuler_ && !channels_.empty() && clip.Intersects(rulerRect_)) {
        const RectT<int> rect{int(std::floor(rulerRect_.x)), int(std::floor(rulerRect_.y)),
                              int(std::ceil(rulerRect_.width)), int(std::ceil(rulerRect_.height))};
        ruler_->Draw(penrig, rect);
    }
    // Captions under (or left of) each group.
    if (!channels_.empty()) {
        Penrig::StateSaver saver(*penrig);
        penrig->SetFont(penrig::Font(9.0f));
        penrig->SetColor(skins::GetPalette().rulerText);
        std::size_t first = 0;
        for (const Meter& m : meters_) {
            const RectT<float> a = channels_[first].rect;
            const RectT<float> z = channels_[first + std::size_t(m.channels) - 1].rect;
            first += std::size_t(m.channels);
            if (m.label.empty())
                continue;
            if (IsVertical())
                penrig->DrawText(m.label, {a.x, a.y + a.height, z.x + z.width - a.x, kCaptionSize},
                                 penrig::HorizontalAlignment::kCenter);
            else
                penrig->DrawText(m.label, {0, a.y, a.x - 2.0f, z.y + z.height - a.y},
                                 penrig::HorizontalAlignment::kRight);
        }
    }
    UI_Node::UI_Draw(penrig);
}

} // namespace qorui
