#include "audio/dsp/parametric_dynamics.hpp"

#include "audio/dsp/dynamics_toolkit.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qoraudiofilters {

using parametricdynamics::AutoGateState;
using parametricdynamics::MeterData;
using qoraudiofilterhost::ParameterDescriptor;

namespace {

constexpr std::size_t kMaxChannels = dynamics::LookAheadLimiter::kMaxChannels;
constexpr double kHighestFrequency = 0.49; // of the rate
constexpr double kShortestWindowMilliseconds = 5.0;
constexpr double kWindowPeriods = 8.0;
constexpr double kKeyWindowMilliseconds = 5.0;
constexpr double kGateOpenMilliseconds = 1.0;
constexpr double kLimiterReleaseMilliseconds = 50.0;
// A limiter off still delays, so the latency stays; its ceiling then lies out of reach.
constexpr double kLimiterOffCeiling = 60.0;
// The limiter holds the output down once its gain is this far under unity (0.05 dB).
constexpr double kLimitingGain = 0.994260;
// Within a float step of 0 dB a gain is exactly unity, so an untouched signal passes as it is.
constexpr double kUnityDecibels = 1e-5;
// The band is taken down by no more than this, so that it comes back in its release time
// after silence.
constexpr double kDeepestGain = -80.0;
// A reduction this small has arrived, and state this small is silence.
constexpr double kArrivedDecibels = 1e-9;
constexpr double kTiny = 1e-30;

std::vector<ParameterDescriptor> MakeParameters() {
    using P = ParametricDynamics;
    std::vector<ParameterDescriptor> p(P::kParameterCount);
    p[P::kFrequency] = {"Frequency", 20.0f, 20000.0f, float(980.0 / 19980.0), "Hz"};
    p[P::kQ] = {"Q", 0.1f, 10.0f, float(1.9 / 9.9)};
    p[P::kThreshold] = {"Threshold", -60.0f, 0.0f, 0.6f, "dB"};
    p[P::kRatio] = {"Ratio", 1.0f, 20.0f, float(2.0 / 19.0)};
    p[P::kKnee] = {"Knee", 0.0f, 24.0f, 0.25f, "dB"};
    p[P::kExpanderThreshold] = {"Expander Threshold", -80.0f, 0.0f, 0.25f, "dB"};
    p[P::kExpanderRatio] = {"Expander Ratio", 1.0f, 10.0f, 0.0f};
    p[P::kAttack] = {"Attack", 0.0f, 500.0f, 0.01f, "ms"};
    p[P::kRelease] = {"Release", 0.0f, 5000.0f, 0.02f, "ms"};
    p[P::kGateThreshold] = {"Gate Threshold", -100.0f, 0.0f, 0.3f, "dB"};
    p[P::kGateHold] = {"Gate Hold", 0.0f, 2000.0f, 0.025f, "ms"};
    p[P::kCeiling] = {"Ceiling", -24.0f, 0.0f, float(23.7 / 24.0), "dB"};
    p[P::kOutputGain] = {"Output Gain", -24.0f, 24.0f, 0.5f, "dB"};
    p[P::kGateEnable] = {"Auto Gate", 0.0f, 1.0f, 0.0f};
    p[P::kLimiterEnable] = {"Limiter", 0.0f, 1.0f, 1.0f};
    return p;
}

std::size_t Samples(double milliseconds, double sampleRate) {
    return std::size_t(std::lround(milliseconds * sampleRate / 1000.0));
}

double Gain(double decibels) {
    return std::abs(decibels) < kUnityDecibels ? 1.0 : dynamics::LinearFromDecibels(decibels);
}

// What shapes the band's static gain.
struct band_curve_t {
    double threshold = 0.0;
    double ratio = 1.0;
    double knee = 0.0;
    double expanderThreshold = 0.0;
    double expanderRatio = 1.0;

    double GainDecibels(double level) const {
        return std::max(kDeepestGain,
                        dynamics::CompressorGain(level, threshold, ratio, knee) +
                            dynamics::ExpanderGain(level, expanderThreshold, expanderRatio));
    }
};

// The band-pass of 0 dB and zero phase at its centre, whose complement x - b is the notch.
struct band_pass_t {
    double b0 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0; // b1 is 0

    static band_pass_t Design(double hz, double q, double sampleRate) {
        const double w = 2.0 * std::numbers::pi * hz / sampleRate;
        const double alpha = std::sin(w) / (2.0 * q);
        const double a0 = 1.0 + alpha;
        return {alpha / a0, -alpha / a0, -2.0 * std::cos(w) / a0, (1.0 - alpha) / a0};
    }
};

} // namespace

struct ParametricDynamics::state_t {
    state_t(double sampleRate)
        : rate(sampleRate), limiter(Samples(kLookAheadMilliseconds, sampleRate), sampleRate) {
        limiter.SetLookAhead(Samples(kLookAheadMilliseconds, sampleRate));
        limiter.SetRelease(kLimiterReleaseMilliseconds);
        for (dynamics::MeanSquare& key : keyPower)
            key.SetWindow(kKeyWindowMilliseconds, rate);
        gateOpenStep = 1.0 / std::max(1.0, kGateOpenMilliseconds * rate / 1000.0);
        gateCloseStep = 1.0 / std::max(1.0, kGateFadeMilliseconds * rate / 1000.0);
        Clear();
    }

    void Clear() {
        for (auto& h : history)
            h = {};
        for (dynamics::MeanSquare& power : bandPower)
            power.Reset();
        for (dynamics::MeanSquare& key : keyPower)
            key.Reset();
        reduction.Reset(0.0);
        gateOpen = true;
        below = 0;
        gateGain = 1.0;
        limiter.Reset();
    }

    // Between blocks: what would turn denormal goes, what ran away starts again.
    void Settle(std::size_t channels) {
        for (std::size_t c = 0; c < channels; ++c) {
            for (double& v : history[c]) {
                if (!std::isfinite(v)) {
                    history[c] = {};
                    break;
                }
                if (std::abs(v) < kTiny)
                    v = 0.0;
            }
        }
    }

    double rate;
    // Settings in force.
    unsigned int applied = ~0u;
    band_pass_t bandPass;
    band_curve_t curve;
    double outputGain = 1.0;
    bool gateOn = false;
    bool limiterOn = true;
    double gateOpenPower = 0.0;
    double gateClosePower = 0.0;
    std::size_t holdSamples = 0;
    // Signal.
    std::array<std::array<double, 4>, kMaxChannels> history{}; // x[n-1], x[n-2], b[n-1], b[n-2]
    std::array<dynamics::MeanSquare, kMaxChannels> bandPower;
    std::array<dynamics::MeanSquare, kMaxChannels> keyPower;
    dynamics::AttackRelease reduction; // of the band, in dB, 0 or above
    double gateGain = 1.0;             // ramps straight to 1 and to 0
    double gateOpenStep = 1.0;
    double gateCloseStep = 1.0;
    bool gateOpen = true;
    std::size_t below = 0;
    dynamics::LookAheadLimiter limiter;
    // Meter readings since they were taken last.
    MeterData gathered;
};

ParametricDynamics::ParametricDynamics(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount),
      state_(std::make_unique<state_t>(double(GetSampleRate()))) {
    UpdateFromParameters();
}

ParametricDynamics::~ParametricDynamics() = default;

double ParametricDynamics::GetPlainSetting(int index) const {
    return settings_.at(std::size_t(index)).load(std::memory_order_acquire);
}

void ParametricDynamics::Decode(int index) {
    double plain = GetAppliedPlainValue(index);
    if (index >= kGateEnable)
        plain = GetAppliedValue(index) > 0.5 ? 1.0 : 0.0;
    settings_[std::size_t(index)].store(plain, std::memory_order_release);
    generation_.fetch_add(1, std::memory_order_acq_rel);
}

void ParametricDynamics::ApplyParameter(int index) {
    Decode(index);
}

void ParametricDynamics::UpdateFromParameters() {
    for (int i = 0; i < kParameterCount; ++i)
        Decode(i);
}

double ParametricDynamics::GetBandGainDecibels(double bandLevelDecibels) const {
    const band_curve_t curve{GetPlainSetting(kThreshold), GetPlainSetting(kRatio),
                             GetPlainSetting(kKnee), GetPlainSetting(kExpanderThreshold),
                             GetPlainSetting(kExpanderRatio)};
    return curve.GainDecibels(bandLevelDecibels);
}

double ParametricDynamics::GetStaticOutputDecibels(double inputDecibels) const {
    if (std::isnan(inputDecibels))
        return inputDecibels;
    return inputDecibels + GetBandGainDecibels(inputDecibels) + GetPlainSetting(kOutputGain);
}

AutoGateState ParametricDynamics::GetAutoGateState() const {
    return AutoGateState(gateState_.load(std::memory_order_acquire));
}

bool ParametricDynamics::IsLimiting() const {
    return limiting_.load(std::memory_order_acquire);
}

void ParametricDynamics::SetMeterActive(bool active) {
    meterActive_.store(active, std::memory_order_release);
}

bool ParametricDynamics::IsMeterActive() const {
    return meterActive_.load(std::memory_order_acquire);
}

MeterData ParametricDynamics::TakeMeterData() {
    MeterData data = state_->gathered;
    state_->gathered = MeterData{};
    state_->gathered.gate = data.gate = GetAutoGateState();
    return data;
}

std::size_t ParametricDynamics::GetLatencySamples() const {
    return state_->limiter.GetLookAhead();
}

void ParametricDynamics::Reset() {
    state_->Clear();
}

void ParametricDynamics::Process(const float* const* inputs, float* const* outputs,
                                 std::size_t channelCount, std::size_t frameCount) {
    state_t& s = *state_;
    const unsigned int generation = generation_.load(std::memory_order_acquire);
    if (generation != s.applied) {
        s.applied = generation;
        const double rate = s.rate;
        const double hz = std::clamp(GetPlainSetting(kFrequency), 1.0, kHighestFrequency * rate);
        s.bandPass = band_pass_t::Design(hz, std::max(GetPlainSetting(kQ), 0.01), rate);
        const double window = std::max(kShortestWindowMilliseconds, 1000.0 * kWindowPeriods / hz);
        for (dynamics::MeanSquare& power : s.bandPower)
            power.SetWindow(window, rate);
        s.curve = {GetPlainSetting(kThreshold), GetPlainSetting(kRatio), GetPlainSetting(kKnee),
                   GetPlainSetting(kExpanderThreshold), GetPlainSetting(kExpanderRatio)};
        s.reduction.SetTimes(GetPlainSetting(kAttack), GetPlainSetting(kRelease), rate);
        s.outputGain = Gain(GetPlainSetting(kOutputGain));
        s.gateOn = GetPlainSetting(kGateEnable) > 0.5;
        const double gate = GetPlainSetting(kGateThreshold);
        s.gateOpenPower = std::pow(10.0, gate / 10.0);
        s.gateClosePower = std::pow(10.0, (gate - kGateHysteresisDecibels) / 10.0);
        s.holdSamples = Samples(GetPlainSetting(kGateHold), rate);
        s.limiterOn = GetPlainSetting(kLimiterEnable) > 0.5;
        s.limiter.SetCeiling(s.limiterOn ? GetPlainSetting(kCeiling) : kLimiterOffCeiling);
    }

    const std::size_t channels =
        std::min(PassExtraChannels(inputs, outputs, channelCount, frameCount), kMaxChannels);
    const bool metering = meterActive_.load(std::memory_order_acquire);
    const band_pass_t bp = s.bandPass;
    double loudest = 0.0;
    double deepest = 0.0;
    for (std::size_t i = 0; i < frameCount; ++i) {
        double x[kMaxChannels];
        double band[kMaxChannels];
        double power = 0.0;
        double key = 0.0;
        for (std::size_t c = 0; c < channels; ++c) {
            const float in = inputs[c] ? inputs[c][i] : 0.0f;
            x[c] = std::isfinite(in) ? double(in) : 0.0;
            std::array<double, 4>& h = s.history[c];
            band[c] = bp.b0 * x[c] + bp.b2 * h[1] - bp.a1 * h[2] - bp.a2 * h[3];
            h = {x[c], h[0], band[c], h[2]};
            // Silence decays to nothing rather than through denormal numbers.
            const double p = s.bandPower[c].Process(band[c]);
            if (p < kTiny)
                s.bandPower[c].Reset();
            power = std::max(power, p);
            if (s.gateOn) {
                const double k = s.keyPower[c].Process(x[c]);
                if (k < kTiny)
                    s.keyPower[c].Reset();
                key = std::max(key, k);
            }
        }
        loudest = std::max(loudest, power);

        // A sine's mean square is half its peak's square: the level reads the peak.
        const double level = dynamics::DecibelsFromLinear(std::sqrt(2.0 * power));
        double reduction = s.reduction.Process(-s.curve.GainDecibels(level));
        if (reduction < kArrivedDecibels && reduction > -kArrivedDecibels) {
            reduction = 0.0;
            s.reduction.Reset(0.0);
        }
        deepest = std::max(deepest, reduction);
        const double g = reduction == 0.0 ? 1.0 : dynamics::LinearFromDecibels(-reduction);

        double gate = 1.0;
        if (s.gateOn) {
            const double keyPower = 2.0 * key;
            if (keyPower >= s.gateOpenPower) {
                s.gateOpen = true;
                s.below = 0;
            } else if (s.gateOpen && keyPower < s.gateClosePower) {
                if (++s.below > s.holdSamples)
                    s.gateOpen = false;
            } else {
                s.below = 0;
            }
            s.gateGain = s.gateOpen ? std::min(1.0, s.gateGain + s.gateOpenStep)
                                    : std::max(0.0, s.gateGain - s.gateCloseStep);
            gate = s.gateGain;
        }

        const double gain = gate * s.outputGain;
        for (std::size_t c = 0; c < channels; ++c) {
            const double y = g == 1.0 ? x[c] : x[c] + (g - 1.0) * band[c];
            outputs[c][i] = float(gain == 1.0 ? y : y * gain);
        }
    }
    s.Settle(channels);
    s.limiter.Process(outputs, channels, frameCount);

    const AutoGateState gate = !s.gateOn    ? AutoGateState::kOff
                               : s.gateOpen ? AutoGateState::kOpen
                                            : AutoGateState::kClosed;
    // Switched off, the limiter lets its gain recover smoothly, which is no limiting.
    const double limiterGain = s.limiterOn ? s.limiter.GetLastGain() : 1.0;
    gateState_.store(int(gate), std::memory_order_release);
    limiting_.store(limiterGain < kLimitingGain, std::memory_order_release);
    if (metering) {
        MeterData& m = s.gathered;
        m.bandLevel =
            std::max(m.bandLevel, float(dynamics::DecibelsFromLinear(std::sqrt(2.0 * loudest))));
        m.gainChange = std::min(m.gainChange, float(-deepest));
        m.gate = gate;
        m.limiting = m.limiting || limiterGain < kLimitingGain;
    }
}

} // namespace qoraudiofilters
