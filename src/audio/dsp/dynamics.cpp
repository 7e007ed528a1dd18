#include "audio/dsp/dynamics.hpp"

#include "audio/dsp/biquad.hpp"
#include "audio/dsp/dynamics_toolkit.hpp"
#include "audio/dsp/spline.hpp"
#include "audio/dsp/triple_buffer.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <numbers>
#include <string>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;
using qoraudiotoolkit::Biquad;
namespace dyn = qoraudiofilters::dynamics;

namespace {

constexpr std::size_t kMaxChannels = 8;
constexpr double kLowestFrequency = 20.0;
// A low pass this close to Nyquist would pass everything anyway, and the design needs room.
constexpr double kHighestFrequency = 0.49; // of the rate
constexpr double kMaxGainDecibels = 100.0;
constexpr int kMaxResponsePoints = 65536;

using Point = std::array<double, 2>;

std::vector<ParameterDescriptor> MakeParameters(float sampleRate) {
    const float nyquist = 0.5f * sampleRate;
    const auto toggle = [](const char* name, bool on) {
        return ParameterDescriptor{name, 0.0f, 1.0f, on ? 1.0f : 0.0f};
    };
    const auto level = [](std::string name, double decibels) {
        return ParameterDescriptor{std::move(name), -100.0f, 0.0f, float(decibels / 100.0 + 1.0),
                                   "dB"};
    };
    std::vector<ParameterDescriptor> p(Dynamics::kParameterCount);
    p[Dynamics::kParameterIndex_AttackTime] = {"Detector Attack", 0.0f, 500.0f, 0.002f, "ms"};
    p[Dynamics::kParameterIndex_ReleaseTime] = {"Detector Release", 0.0f, 2000.0f, 0.05f, "ms"};
    p[Dynamics::kParameterIndex_EnvelopeAttackTime] = {"Gain Attack", 0.0f, 500.0f, 0.02f, "ms"};
    p[Dynamics::kParameterIndex_EnvelopeGainReleaseTime] = {"Gain Release", 0.0f, 2000.0f, 0.1f,
                                                            "ms"};
    p[Dynamics::kParameterIndex_LookAhead] = {"Look-Ahead", 0.0f, 500.0f, 0.0f, "ms"};
    p[Dynamics::kParameterIndex_InputGainDB] = {"Input Gain", -48.0f, 48.0f, 0.5f, "dB"};
    p[Dynamics::kParameterIndex_OutputGainDB] = {"Output Gain", -48.0f, 48.0f, 0.5f, "dB"};
    p[Dynamics::kParameterIndex_LoFreq] = {"Low Cutoff", float(kLowestFrequency), nyquist, 0.0f,
                                           "Hz"};
    p[Dynamics::kParameterIndex_HiFreq] = {"High Cutoff", float(kLowestFrequency), nyquist, 1.0f,
                                           "Hz"};
    p[Dynamics::kParameterIndex_Lock] = toggle("Lock", false);
    p[Dynamics::kPointCount] = {"Point Count", 0.0f, 7.0f, 3.0f / 7.0f};
    p[Dynamics::kParameterIndex_CompJoint] = toggle("Link Channels", true);
    p[Dynamics::kParameterIndex_RMS] = toggle("RMS", false);
    p[Dynamics::kParameterIndex_Envelope] = toggle("Envelope", false);
    p[Dynamics::kParameterIndex_Splines] = toggle("Spline Curves", false);
    p[Dynamics::kParameterIndex_DoingNoiseGate] = toggle("Noise Gate", false);
    p[Dynamics::kCurrentTab] = toggle("Current Tab", false);
    // The identity: (-100, -100), (-20, -20), then 0 dB for the rest.
    const double defaults[Dynamics::kMaxPointCount] = {-100.0, -20.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    for (int i = 0; i < Dynamics::kMaxPointCount; ++i) {
        const std::string point = "Point " + std::to_string(i + 1);
        p[std::size_t(Dynamics::PointInputIndex(i))] = level(point + " Input", defaults[i]);
        p[std::size_t(Dynamics::PointOutputIndex(i))] = level(point + " Output", defaults[i]);
    }
    p[Dynamics::kMakeUpGain] = {"Make-Up Gain", 0.0f, 100.0f, 0.0f, "dB"};
    return p;
}

/// The transfer curve in dB, as the process thread and the graph read it.
class curve_t {
public:
    /// Main thread: sorts the points, decides on the spline and finds the gate's threshold.
    void Set(std::vector<Point> points, bool splines, bool gate) {
        std::stable_sort(points.begin(), points.end(),
                         [](const Point& a, const Point& b) { return a[0] < b[0]; });
        points_ = std::move(points);
        bool rising = points_.size() >= 3;
        for (std::size_t i = 1; i < points_.size(); ++i)
            rising = rising && points_[i][0] > points_[i - 1][0];
        useSpline_ = splines && rising;
        spline_ = qoraudiotoolkit::Spline();
        if (useSpline_) {
            std::vector<double> x, y;
            for (const Point& point : points_) {
                x.push_back(point[0]);
                y.push_back(point[1]);
            }
            spline_ = qoraudiotoolkit::Spline(std::move(x), std::move(y));
        }
        // A segment that expands more steeply than a gate's ratio marks its threshold: the
        // highest such segment's top.
        gateBelow_ = -HUGE_VAL;
        for (std::size_t i = 1; gate && i < points_.size(); ++i) {
            const double run = points_[i][0] - points_[i - 1][0];
            const double rise = points_[i][1] - points_[i - 1][1];
            if (rise > Dynamics::kGateSlope * run && rise > 0.0)
                gateBelow_ = std::max(gateBelow_, points_[i][0]);
        }
    }

    /// The output level for a detector level; -300 dB where gated.
    double Output(double level) const {
        if (points_.empty() || std::isnan(level))
            return level;
        if (level < gateBelow_)
            return dyn::kFloorDecibels;
        // Below the first point its gain holds.
        const double at = std::max(level, points_.front()[0]);
        double out = 0.0;
        if (useSpline_ && at <= points_.back()[0])
            out = spline_.Evaluate(at);
        else
            out = dyn::TransferCurveOutput(points_, at);
        return out + (level - at);
    }

    /// The gain in dB for a detector level, within the limits the processor keeps.
    double Gain(double level) const {
        const double gain = Output(level) - level;
        return std::clamp(std::isnan(gain) ? 0.0 : gain, dyn::kFloorDecibels, kMaxGainDecibels);
    }

private:
    std::vector<Point> points_;
    qoraudiotoolkit::Spline spline_;
    bool useSpline_ = false;
    double gateBelow_ = -HUGE_VAL;
};

/// Everything the process thread needs, decoded once on the writing thread.
struct settings_t {
    std::array<double, Dynamics::kParameterCount> values{};
    double detectorAttack = 0.0, detectorRelease = 0.0; // ms
    double gainAttack = 0.0, gainRelease = 0.0;         // ms
    std::size_t lookAhead = 0;                          // samples
    double inputGain = 1.0, outputGain = 1.0;           // linear; the output with the make-up
    bool link = true, rms = false;
    bool highPass = false, lowPass = false;
    Biquad highPassSection, lowPassSection;
    curve_t curve;

    static settings_t FromParameters(const Dynamics& effect) {
        settings_t s;
        for (int i = 0; i < Dynamics::kParameterCount; ++i)
            s.values[std::size_t(i)] = effect.GetAppliedValue(i);
        const auto v = [&s](int index) {
            return s.values[std::size_t(index)];
        };
        const double rate = effect.GetSampleRate();
        const double nyquist = 0.5 * rate;
        s.detectorAttack = v(Dynamics::kParameterIndex_AttackTime) * 500.0;
        s.detectorRelease = v(Dynamics::kParameterIndex_ReleaseTime) * 2000.0;
        s.gainAttack = v(Dynamics::kParameterIndex_EnvelopeAttackTime) * 500.0;
        s.gainRelease = v(Dynamics::kParameterIndex_EnvelopeGainReleaseTime) * 2000.0;
        s.lookAhead = std::size_t(std::lround(v(Dynamics::kParameterIndex_LookAhead) *
                                              Dynamics::kMaxLookAheadSeconds * rate));
        s.inputGain = dyn::LinearFromDecibels(v(Dynamics::kParameterIndex_InputGainDB) * 96 - 48);
        s.outputGain = dyn::LinearFromDecibels(v(Dynamics::kParameterIndex_OutputGainDB) * 96 - 48 +
                                               v(Dynamics::kMakeUpGain) * 100);
        s.link = v(Dynamics::kParameterIndex_CompJoint) > 0.5;
        s.rms = v(Dynamics::kParameterIndex_RMS) > 0.5;

        const auto hz = [&](int index) {
            return v(index) * (nyquist - kLowestFrequency) + kLowestFrequency;
        };
        const double low = hz(Dynamics::kParameterIndex_LoFreq);
        const double high = hz(Dynamics::kParameterIndex_HiFreq);
        const double top = kHighestFrequency * rate;
        const double q = std::numbers::sqrt2 / 2.0;
        s.highPass = low > kLowestFrequency;
        if (s.highPass)
            s.highPassSection = Biquad::HighPass(std::min(low, top), q, rate);
        s.lowPass = high < top;
        if (s.lowPass)
            s.lowPassSection = Biquad::LowPass(std::max(high, 1e-6 * rate), q, rate);

        const int count =
            std::clamp(int(v(Dynamics::kPointCount) * 7.0 + 0.5), 0, Dynamics::kMaxPointCount);
        std::vector<Point> points;
        for (int i = 0; i < count; ++i)
            points.push_back({(v(Dynamics::PointInputIndex(i)) - 1.0) * 100.0,
                              (v(Dynamics::PointOutputIndex(i)) - 1.0) * 100.0});
        s.curve.Set(std::move(points), v(Dynamics::kParameterIndex_Splines) > 0.5,
                    v(Dynamics::kParameterIndex_DoingNoiseGate) > 0.5);
        return s;
    }
};

using handover_t = TripleBuffer<settings_t>;

struct section_state_t {
    double z1 = 0.0, z2 = 0.0;

    // Transposed direct form II.
    double Run(const Biquad& b, double x) {
        const double y = b.b0 * x + z1;
        z1 = b.b1 * x - b.a1 * y + z2;
        z2 = b.b2 * x - b.a2 * y;
        return y;
    }
};

/// One channel's running state.
struct channel_t {
    explicit channel_t(std::size_t delayCapacity) : delay(delayCapacity) {}

    void Clear() {
        highPass = lowPass = section_state_t{};
        detector.Reset(0.0);
        meanSquare.Reset();
        reduction.Reset(0.0);
        delay.Clear();
        level = meterLevel = 0.0;
    }

    section_state_t highPass, lowPass;
    dyn::AttackRelease detector;
    dyn::MeanSquare meanSquare;
    dyn::AttackRelease reduction; // dB, positive while the gain is below 1
    dyn::DelayLine delay;
    double level = 0.0;      // the detector's, linear
    double meterLevel = 0.0; // its highest since the meter read
};

} // namespace

struct Dynamics::state_t {
    state_t(double sampleRate, std::size_t channelCount) : rate(sampleRate) {
        const auto capacity = std::size_t(std::ceil(kMaxLookAheadSeconds * sampleRate));
        channels.reserve(channelCount);
        for (std::size_t c = 0; c < channelCount; ++c)
            channels.emplace_back(capacity);
    }

    // The process thread takes the newest settings, keeping the signal's state.
    void TakeOver() {
        const settings_t* next = handover.Take();
        if (!next)
            return;
        const bool delayChanged = !current || current->lookAhead != next->lookAhead;
        current = next;
        for (channel_t& channel : channels) {
            channel.detector.SetTimes(current->detectorAttack, current->detectorRelease, rate);
            channel.meanSquare.SetWindow(kRMSWindowMilliseconds, rate);
            channel.reduction.SetTimes(current->gainAttack, current->gainRelease, rate);
            if (delayChanged) {
                channel.delay.SetDelay(current->lookAhead);
                channel.delay.Clear();
            }
        }
    }

    // Main side, under `mutex`.
    std::mutex mutex;
    settings_t published;
    bool hasPublished = false;

    handover_t handover;

    // The process thread's.
    double rate;
    const settings_t* current = nullptr;
    std::vector<channel_t> channels;
    double gain = 1.0;      // the curve's gain at the last sample, linear
    double meterGain = 1.0; // its smallest since the meter read
};

Dynamics::Dynamics(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(sampleRate), sampleRate, channelCount),
      state_(std::make_unique<state_t>(sampleRate, GetChannelCount())) {
    Rebuild();
    Reset();
}

Dynamics::~Dynamics() = default;

void Dynamics::UpdateFromParameters() {
    Rebuild();
}

void Dynamics::Rebuild() {
    std::lock_guard lock(state_->mutex);
    settings_t settings = settings_t::FromParameters(*this);
    if (state_->hasPublished && settings.values == state_->published.values)
        return;
    latency_.store(settings.lookAhead, std::memory_order_release);
    state_->handover.Publish(settings);
    state_->published = std::move(settings);
    state_->hasPublished = true;
}

std::size_t Dynamics::GetLatencySamples() const {
    return latency_.load(std::memory_order_acquire);
}

double Dynamics::GetCurveOutputDecibels(double inputDecibels) const {
    std::lock_guard lock(state_->mutex);
    return inputDecibels + state_->published.curve.Gain(inputDecibels);
}

int Dynamics::GetResponseCurve(int channel, int pointCount, std::vector<float>& out) {
    return channel == 0 ? SampleCurve(pointCount, out) : 0;
}

int Dynamics::GetCustomFloatData(int index, int size, std::vector<float>& out) {
    return index == 0 ? SampleCurve(size, out) : 0;
}

int Dynamics::SampleCurve(int pointCount, std::vector<float>& out) const {
    if (pointCount < 1 || pointCount > kMaxResponsePoints)
        return 0;
    std::lock_guard lock(state_->mutex);
    const curve_t& curve = state_->published.curve;
    out.resize(std::size_t(pointCount));
    for (int i = 0; i < pointCount; ++i) {
        const double level = kCurveStart + (kCurveEnd - kCurveStart) * i / pointCount;
        out[std::size_t(i)] = float(level + curve.Gain(level));
    }
    return pointCount;
}

void Dynamics::ReadMeters(float& gain, float* levels, std::size_t count) {
    state_t& s = *state_;
    gain = float(s.meterGain);
    s.meterGain = s.gain;
    for (std::size_t c = 0; c < count; ++c) {
        if (c < s.channels.size()) {
            levels[c] = float(s.channels[c].meterLevel);
            s.channels[c].meterLevel = s.channels[c].level;
        } else {
            levels[c] = 0.0f;
        }
    }
}

void Dynamics::Reset() {
    state_t& s = *state_;
    s.TakeOver();
    for (channel_t& channel : s.channels)
        channel.Clear();
    s.gain = s.meterGain = 1.0;
}

void Dynamics::Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                       std::size_t frameCount) {
    state_t& s = *state_;
    s.TakeOver();
    const settings_t& set = *s.current;
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);
    double signal[kMaxChannels];
    double gains[kMaxChannels];
    for (std::size_t i = 0; i < frameCount; ++i) {
        double loudest = 0.0;
        for (std::size_t c = 0; c < channels; ++c) {
            channel_t& ch = s.channels[c];
            const float in = inputs[c] ? inputs[c][i] : 0.0f;
            const double x = std::isfinite(in) ? double(in) * set.inputGain : 0.0;
            signal[c] = x;
            double side = x;
            if (set.highPass)
                side = ch.highPass.Run(set.highPassSection, side);
            if (set.lowPass)
                side = ch.lowPass.Run(set.lowPassSection, side);
            const double magnitude =
                set.rms ? std::sqrt(ch.meanSquare.Process(side)) : std::fabs(side);
            ch.level = ch.detector.Process(magnitude);
            ch.meterLevel = std::max(ch.meterLevel, ch.level);
            loudest = std::max(loudest, ch.level);
        }
        if (set.link && channels > 0) {
            const double reduction = -set.curve.Gain(dyn::DecibelsFromLinear(loudest));
            const double gain =
                dyn::LinearFromDecibels(-s.channels[0].reduction.Process(reduction));
            std::fill_n(gains, channels, gain);
        } else {
            for (std::size_t c = 0; c < channels; ++c) {
                channel_t& ch = s.channels[c];
                const double reduction = -set.curve.Gain(dyn::DecibelsFromLinear(ch.level));
                gains[c] = dyn::LinearFromDecibels(-ch.reduction.Process(reduction));
            }
        }
        double smallest = HUGE_VAL;
        for (std::size_t c = 0; c < channels; ++c) {
            const double delayed = s.channels[c].delay.Process(float(signal[c]));
            outputs[c][i] = float(delayed * gains[c] * set.outputGain);
            smallest = std::min(smallest, gains[c]);
        }
        if (channels > 0) {
            s.gain = smallest;
            s.meterGain = std::min(s.meterGain, smallest);
        }
    }
}

} // namespace qoraudiofilters
