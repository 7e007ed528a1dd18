#include "audio/dsp/single_band_dynamics.hpp"

#include "audio/dsp/dynamics_toolkit.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

constexpr std::size_t kMaxChannels = 8;
constexpr double kDecibelsToLog = std::numbers::ln10 / 20.0;
// The slow path of auto smoothing follows this many times slower than the set release.
constexpr double kSlowReleaseFactor = 4.0;

constexpr float Ratio(float ratio) {
    return (ratio - 1.0f) / 29.0f;
}
constexpr float Threshold(float decibels) {
    return (decibels + 60.0f) / 60.0f;
}
constexpr float Attack(float milliseconds) {
    return milliseconds / 500.0f;
}
constexpr float Release(float milliseconds) {
    return milliseconds / 5000.0f;
}

std::vector<ParameterDescriptor> MakeParameters() {
    // Limiter 30:1 at -1 dB, compressor 4:1 at -20 dB, gate 10:1 at -50 dB.
    const struct {
        const char* name;
        float ratio, threshold, attack, release;
    } stages[] = {{"Limiter", Ratio(30.0f), Threshold(-1.0f), Attack(0.0f), Release(100.0f)},
                  {"Compressor", Ratio(4.0f), Threshold(-20.0f), Attack(10.0f), Release(200.0f)},
                  {"Gate", Ratio(10.0f), Threshold(-50.0f), Attack(1.0f), Release(100.0f)}};
    std::vector<ParameterDescriptor> p(SingleBandDynamics::kParameterCount);
    for (int s = 0; s < 3; ++s) {
        const std::string name = stages[s].name;
        p[std::size_t(SingleBandDynamics::RatioIndex(s))] = {name + " Ratio", 1.0f, 30.0f,
                                                             stages[s].ratio, ":1"};
        p[std::size_t(SingleBandDynamics::ThresholdIndex(s))] = {name + " Threshold", -60.0f, 0.0f,
                                                                 stages[s].threshold, "dB"};
        p[std::size_t(SingleBandDynamics::AttackIndex(s))] = {name + " Attack", 0.0f, 500.0f,
                                                              stages[s].attack, "ms"};
        p[std::size_t(SingleBandDynamics::ReleaseIndex(s))] = {name + " Release", 0.0f, 5000.0f,
                                                               stages[s].release, "ms"};
    }
    p[SingleBandDynamics::kOutputGain] = {"Output Gain", -30.0f, 30.0f, 0.5f, "dB"};
    p[SingleBandDynamics::kAutoMakeupGain] = {"Auto Make-Up Gain", 0.0f, 1.0f, 0.0f};
    p[SingleBandDynamics::kRMSDetection] = {"RMS Detection", 0.0f, 1.0f, 0.0f};
    p[SingleBandDynamics::kAutoSmoothing] = {"Auto Smoothing", 0.0f, 1.0f, 0.0f};
    return p;
}

using Settings = std::array<double, SingleBandDynamics::kParameterCount>;

double Value(const Settings& s, int index) {
    return s[std::size_t(index)];
}
bool On(const Settings& s, int index) {
    return s[std::size_t(index)] >= 0.5;
}

double GateGain(const Settings& s, double level) {
    using D = SingleBandDynamics;
    return std::max(D::kGateFloor, dynamics::ExpanderGain(level, Value(s, D::kGateThreshold),
                                                          Value(s, D::kGateRatio)));
}

double CompressorReduction(const Settings& s, double level) {
    using D = SingleBandDynamics;
    return -dynamics::CompressorGain(level, Value(s, D::kCompressorThreshold),
                                     Value(s, D::kCompressorRatio));
}

double LimiterReduction(const Settings& s, double level) {
    using D = SingleBandDynamics;
    return -dynamics::CompressorGain(level, Value(s, D::kLimiterThreshold),
                                     Value(s, D::kLimiterRatio));
}

double MakeupGain(const Settings& s) {
    return On(s, SingleBandDynamics::kAutoMakeupGain) ? CompressorReduction(s, 0.0) : 0.0;
}

/// A reduction (0 or above) smoothed by the stage's times, and by the slow path of auto
/// smoothing beside it.
class reduction_smoother_t {
public:
    void SetTimes(double attack, double release, double rate) {
        fast_.SetTimes(attack, release, rate);
        slow_.SetTimes(kSlowReleaseFactor * release, kSlowReleaseFactor * release, rate);
    }
    void Reset() {
        fast_.Reset(0.0);
        slow_.Reset(0.0);
    }
    double Process(double reduction, bool automatic) {
        const double fast = fast_.Process(reduction);
        const double slow = slow_.Process(reduction);
        return automatic ? std::max(fast, slow) : fast;
    }

private:
    dynamics::AttackRelease fast_;
    dynamics::AttackRelease slow_;
};

} // namespace

struct SingleBandDynamics::state_t {
    explicit state_t(double sampleRate) : rate(sampleRate) {
        applied.fill(std::numeric_limits<double>::quiet_NaN());
    }

    Settings Published() const {
        Settings s;
        for (std::size_t k = 0; k < s.size(); ++k)
            s[k] = plain[k].load(std::memory_order_relaxed);
        return s;
    }

    // The process thread: takes the newest settings, and the times that follow from them.
    void Take() {
        const Settings now = Published();
        if (now != applied) {
            applied = now;
            peak.SetTimes(0.0, kDetectorReleaseMilliseconds, rate);
            meanSquare.SetWindow(kDetectorReleaseMilliseconds, rate);
            gate.SetTimes(Value(now, kGateAttack), Value(now, kGateRelease), rate);
            compressor.SetTimes(Value(now, kCompressorAttack), Value(now, kCompressorRelease),
                                rate);
            limiter.SetTimes(Value(now, kLimiterAttack), Value(now, kLimiterRelease), rate);
            makeup.SetTimes(kGainSmoothingMilliseconds, kGainSmoothingMilliseconds, rate);
            output.SetTimes(kGainSmoothingMilliseconds, kGainSmoothingMilliseconds, rate);
        }
        if (fresh) {
            makeup.Reset(MakeupGain(applied));
            output.Reset(Value(applied, kOutputGain));
            fresh = false;
        }
    }

    void Clear() {
        peak.Reset(0.0);
        meanSquare.Reset();
        gate.Reset(0.0);
        compressor.Reset();
        limiter.Reset();
        fresh = true;
    }

    double rate;
    // Written by the main side, read by the process thread.
    std::array<std::atomic<double>, kParameterCount> plain{};

    // The process thread's.
    Settings applied{};
    dynamics::AttackRelease peak;
    dynamics::MeanSquare meanSquare;
    dynamics::AttackRelease gate; // on the gate's gain: rising opens
    reduction_smoother_t compressor;
    reduction_smoother_t limiter;
    dynamics::AttackRelease makeup;
    dynamics::AttackRelease output;
    bool fresh = true;

    // Readings for the meters.
    std::atomic<float> gainReduction{0.0f};
    std::atomic<float> level{float(dynamics::kFloorDecibels)};
    std::array<std::atomic<float>, kMaxChannels> peaks{};
};

SingleBandDynamics::SingleBandDynamics(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount),
      state_(std::make_unique<state_t>(double(GetSampleRate()))) {
    Publish();
}

SingleBandDynamics::~SingleBandDynamics() = default;

void SingleBandDynamics::Publish() {
    for (int k = 0; k < kParameterCount; ++k)
        state_->plain[std::size_t(k)].store(GetAppliedPlainValue(k), std::memory_order_relaxed);
}

float SingleBandDynamics::Plain(int index) const {
    return float(state_->plain[std::size_t(index)].load(std::memory_order_relaxed));
}

float SingleBandDynamics::GetLimThreshold() const {
    return Plain(kLimiterThreshold);
}
float SingleBandDynamics::GetCompThreshold() const {
    return Plain(kCompressorThreshold);
}
float SingleBandDynamics::GetGateThreshold() const {
    return Plain(kGateThreshold);
}
float SingleBandDynamics::GetLimRatio() const {
    return Plain(kLimiterRatio);
}
float SingleBandDynamics::GetCompRatio() const {
    return Plain(kCompressorRatio);
}
float SingleBandDynamics::GetGateRatio() const {
    return Plain(kGateRatio);
}
float SingleBandDynamics::GetOutputGain() const {
    return Plain(kOutputGain);
}
float SingleBandDynamics::GetMakeupGain() const {
    return float(MakeupGain(state_->Published()));
}

void SingleBandDynamics::SetThreshold(int stage, float decibels) {
    if (std::isnan(decibels))
        return;
    const int index = ThresholdIndex(stage);
    const ParameterDescriptor& d = GetDescriptor(index);
    const float normalised = (decibels - d.plainAtZero) / (d.plainAtOne - d.plainAtZero);
    SetParameterValue(index, std::clamp(normalised, 0.0f, 1.0f));
}

void SingleBandDynamics::SetLimThreshold(float decibels) {
    SetThreshold(kLimiter, decibels);
}
void SingleBandDynamics::SetCompThreshold(float decibels) {
    SetThreshold(kCompressor, decibels);
}
void SingleBandDynamics::SetGateThreshold(float decibels) {
    SetThreshold(kGate, decibels);
}

double SingleBandDynamics::GetStaticOutputDecibels(double inputDb) const {
    if (std::isnan(inputDb))
        return inputDb;
    const Settings s = state_->Published();
    const double gate = GateGain(s, inputDb);
    const double compressor = CompressorReduction(s, inputDb);
    const double makeup = MakeupGain(s);
    const double limiter = LimiterReduction(s, inputDb + gate - compressor + makeup);
    return inputDb + gate - compressor + makeup - limiter + Value(s, kOutputGain);
}

namespace {

SingleBandDynamics::DisplayRange Limited(SingleBandDynamics::DisplayRange range,
                                         SingleBandDynamics::DisplayRange bounds) {
    range.low = std::max(range.low, bounds.low);
    range.high = std::min(range.high, bounds.high);
    return range;
}

bool Usable(SingleBandDynamics::DisplayRange range) {
    return std::isfinite(range.low) && std::isfinite(range.high) && range.low < range.high;
}

} // namespace

void SingleBandDynamics::SetHorizontalDisplayRange(DisplayRange range) {
    if (Usable(range) && Usable(Limited(range, kHorizontalBounds)))
        horizontal_ = Limited(range, kHorizontalBounds);
}

void SingleBandDynamics::SetVerticalDisplayRange(DisplayRange range) {
    if (Usable(range) && Usable(Limited(range, kVerticalBounds)))
        vertical_ = Limited(range, kVerticalBounds);
}

void SingleBandDynamics::SetMeterActive(bool active) {
    meterActive_.store(active, std::memory_order_release);
}

bool SingleBandDynamics::IsMeterActive() const {
    return meterActive_.load(std::memory_order_acquire);
}

float SingleBandDynamics::GetGainReduction() const {
    return state_->gainReduction.load(std::memory_order_relaxed);
}

float SingleBandDynamics::GetDetectedLevel() const {
    return state_->level.load(std::memory_order_relaxed);
}

void SingleBandDynamics::ReadOutputLevels(float* levels, std::size_t count) {
    if (!levels)
        return;
    for (std::size_t c = 0; c < count; ++c)
        levels[c] = c < std::min(GetChannelCount(), kMaxChannels)
                        ? state_->peaks[c].exchange(0.0f, std::memory_order_relaxed)
                        : 0.0f;
}

void SingleBandDynamics::UpdateFromParameters() {
    Publish();
}

void SingleBandDynamics::Process(const float* const* inputs, float* const* outputs,
                                 std::size_t channelCount, std::size_t frameCount) {
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);
    state_t& s = *state_;
    s.Take();
    const Settings& a = s.applied;
    const bool rms = On(a, kRMSDetection);
    const bool automatic = On(a, kAutoSmoothing);
    const double makeupTarget = MakeupGain(a);
    const double outputTarget = Value(a, kOutputGain);
    double level = double(s.level.load(std::memory_order_relaxed));
    double reduction = 0.0;
    for (std::size_t i = 0; i < frameCount; ++i) {
        double peak = 0.0;
        for (std::size_t c = 0; c < channels; ++c) {
            const double v = inputs[c] ? double(inputs[c][i]) : 0.0;
            if (std::isfinite(v))
                peak = std::max(peak, std::fabs(v));
        }
        // Both detectors run, so that a switch between them finds the other one ready.
        const double envelope = s.peak.Process(peak);
        const double meanSquare = s.meanSquare.Process(peak);
        if (rms)
            level = meanSquare > 0.0
                        ? std::max(dynamics::kFloorDecibels, 10.0 * std::log10(meanSquare))
                        : dynamics::kFloorDecibels;
        else
            level = dynamics::DecibelsFromLinear(envelope);

        const double gate = s.gate.Process(GateGain(a, level));
        const double compressor = s.compressor.Process(CompressorReduction(a, level), automatic);
        const double makeup = s.makeup.Process(makeupTarget);
        const double limiter =
            s.limiter.Process(LimiterReduction(a, level + gate - compressor + makeup), automatic);
        reduction = gate - compressor - limiter;
        const double gain =
            std::exp((reduction + makeup + s.output.Process(outputTarget)) * kDecibelsToLog);
        for (std::size_t c = 0; c < channels; ++c) {
            const float v = inputs[c] ? inputs[c][i] : 0.0f;
            outputs[c][i] = std::isfinite(v) ? float(double(v) * gain) : 0.0f;
        }
    }
    if (meterActive_.load(std::memory_order_acquire)) {
        for (std::size_t c = 0; c < channels; ++c) {
            float peak = 0.0f;
            for (std::size_t i = 0; i < frameCount; ++i)
                peak = std::max(peak, std::fabs(outputs[c][i]));
            std::atomic<float>& held = s.peaks[c];
            if (peak > held.load(std::memory_order_relaxed))
                held.store(peak, std::memory_order_relaxed);
        }
    }
    if (frameCount > 0) {
        s.gainReduction.store(float(reduction), std::memory_order_relaxed);
        s.level.store(float(level), std::memory_order_relaxed);
    }
}

void SingleBandDynamics::Reset() {
    state_->Clear();
    state_->gainReduction.store(0.0f, std::memory_order_relaxed);
    state_->level.store(float(dynamics::kFloorDecibels), std::memory_order_relaxed);
}

} // namespace qoraudiofilters
