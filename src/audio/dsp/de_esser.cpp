#include "audio/dsp/de_esser.hpp"

#include "audio/dsp/biquad.hpp"
#include "audio/dsp/dynamics_toolkit.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <numbers>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;
using qoraudiotoolkit::Biquad;

namespace {

constexpr std::size_t kMaxChannels = 8;
constexpr double kDecibelsToLog = std::numbers::ln10 / 20.0;
// The band stays below this share of the rate, where the design still holds.
constexpr double kHighestCentreShare = 0.45;

// Band only, -30 dB, off, 7000 Hz, 4000 Hz.
constexpr float kDefaults[DeEsser::kParameterCount] = {1.0f, 50.0f / 80.0f, 0.0f,
                                                       6500.0f / 11500.0f, 3900.0f / 7400.0f};

std::vector<ParameterDescriptor> MakeParameters() {
    std::vector<ParameterDescriptor> p(DeEsser::kParameterCount);
    p[DeEsser::kMode] = {"Mode", 0.0f, 1.0f, kDefaults[DeEsser::kMode], ""};
    p[DeEsser::kThreshold] = {"Threshold", -80.0f, 0.0f, kDefaults[DeEsser::kThreshold], "dB"};
    p[DeEsser::kOutputSibilanceOnly] = {"Output Sibilance Only", 0.0f, 1.0f,
                                        kDefaults[DeEsser::kOutputSibilanceOnly], ""};
    p[DeEsser::kCenterFrequency] = {"Center Frequency", 500.0f, 12000.0f,
                                    kDefaults[DeEsser::kCenterFrequency], "Hz"};
    p[DeEsser::kBandwidth] = {"Bandwidth", 100.0f, 7500.0f, kDefaults[DeEsser::kBandwidth], "Hz"};
    return p;
}

/// A band-pass of 0 dB at the centre, -3 dB `bandwidth` apart: the side chain, and the band
/// that the band-only mode splits out (its complement, input minus band, is a notch).
Biquad BandPass(double centre, double bandwidth, double sampleRate) {
    const double hz = std::clamp(centre, 1.0, kHighestCentreShare * sampleRate);
    const double q = std::max(0.1, hz / std::max(1.0, bandwidth));
    const double w = 2.0 * std::numbers::pi * hz / sampleRate;
    const double alpha = std::sin(w) / (2.0 * q);
    const double a0 = 1.0 + alpha;
    Biquad b;
    b.b0 = alpha / a0;
    b.b1 = 0.0;
    b.b2 = -alpha / a0;
    b.a1 = -2.0 * std::cos(w) / a0;
    b.a2 = (1.0 - alpha) / a0;
    return b;
}

} // namespace

struct DeEsser::state_t {
    explicit state_t(double sampleRate) : rate(sampleRate) {
        applied.fill(std::numeric_limits<double>::quiet_NaN());
        for (auto& m : meanSquares)
            m.SetWindow(kDetectorWindowMilliseconds, rate);
        smoother.SetTimes(kAttackMilliseconds, kReleaseMilliseconds, rate);
    }

    // The process thread: takes the newest settings and redesigns the band when it moved.
    void Take() {
        bool bandChanged = false;
        for (std::size_t k = 0; k < applied.size(); ++k) {
            const double value = plain[k].load(std::memory_order_relaxed);
            if (value != applied[k]) {
                bandChanged |= k == kCenterFrequency || k == kBandwidth;
                applied[k] = value;
            }
        }
        if (bandChanged)
            band = BandPass(applied[kCenterFrequency], applied[kBandwidth], rate);
    }

    double rate;
    std::array<std::atomic<double>, kParameterCount> plain{};

    // The process thread's.
    std::array<double, kParameterCount> applied{};
    Biquad band;
    std::array<std::array<double, 2>, kMaxChannels> filterState{}; // transposed direct form II
    std::array<dynamics::MeanSquare, kMaxChannels> meanSquares;
    dynamics::AttackRelease smoother; // the reduction in dB, positive

    std::atomic<float> gainReduction{0.0f};
};

DeEsser::DeEsser(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount),
      state_(std::make_unique<state_t>(double(GetSampleRate()))) {
    Publish();
}

DeEsser::~DeEsser() = default;

void DeEsser::Publish() {
    for (int k = 0; k < kParameterCount; ++k)
        state_->plain[std::size_t(k)].store(GetAppliedPlainValue(k), std::memory_order_relaxed);
}

float DeEsser::GetGainReduction() const {
    return state_->gainReduction.load(std::memory_order_relaxed);
}

double DeEsser::GetStaticReduction(double bandDb) const {
    if (std::isnan(bandDb))
        return bandDb;
    return dynamics::CompressorGain(
        bandDb, state_->plain[kThreshold].load(std::memory_order_relaxed), kRatio);
}

qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>
DeEsser::SwapSpectrumMeter(qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter) {
    meter_.swap(meter);
    return meter;
}

void DeEsser::UpdateFromParameters() {
    Publish();
}

void DeEsser::Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                      std::size_t frameCount) {
    if (meter_)
        meter_->ProcessBlock(inputs, channelCount, frameCount);
    const std::size_t channels =
        std::min(PassExtraChannels(inputs, outputs, channelCount, frameCount), kMaxChannels);
    state_t& s = *state_;
    s.Take();
    const Biquad& f = s.band;
    const double threshold = s.applied[kThreshold];
    const bool bandOnly = s.applied[kMode] >= 0.5;
    const bool sibilanceOnly = s.applied[kOutputSibilanceOnly] >= 0.5;
    std::array<double, kMaxChannels> dry{};
    std::array<double, kMaxChannels> band{};
    for (std::size_t i = 0; i < frameCount; ++i) {
        double loudest = 0.0;
        for (std::size_t c = 0; c < channels; ++c) {
            const float in = inputs[c] ? inputs[c][i] : 0.0f;
            const double x = std::isfinite(in) ? double(in) : 0.0;
            auto& z = s.filterState[c];
            const double y = f.b0 * x + z[0];
            z[0] = f.b1 * x - f.a1 * y + z[1];
            z[1] = f.b2 * x - f.a2 * y;
            dry[c] = x;
            band[c] = y;
            loudest = std::max(loudest, s.meanSquares[c].Process(y));
        }
        const double levelDb =
            loudest > 0.0 ? 10.0 * std::log10(loudest) : dynamics::kFloorDecibels;
        const double reduction =
            s.smoother.Process(-dynamics::CompressorGain(levelDb, threshold, kRatio));
        const double gain = std::exp(-reduction * kDecibelsToLog);
        for (std::size_t c = 0; c < channels; ++c) {
            double out;
            if (sibilanceOnly)
                out = band[c];
            else if (bandOnly)
                out = dry[c] + (gain - 1.0) * band[c]; // rest + gain * band
            else
                out = dry[c] * gain;
            outputs[c][i] = float(out);
        }
    }
    // A rate of denormals or a NaN that slipped in must not stick in the filters.
    for (std::size_t c = 0; c < channels; ++c)
        for (double& z : s.filterState[c])
            if (!std::isfinite(z) || std::fabs(z) < 1e-30)
                z = 0.0;
    s.gainReduction.store(float(-s.smoother.GetValue()), std::memory_order_relaxed);
}

void DeEsser::Reset() {
    state_t& s = *state_;
    for (auto& z : s.filterState)
        z = {0.0, 0.0};
    for (auto& m : s.meanSquares)
        m.Reset();
    s.smoother.Reset(0.0);
    s.gainReduction.store(0.0f, std::memory_order_relaxed);
}

} // namespace qoraudiofilters
