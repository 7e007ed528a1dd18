#include "audio/host/test_signal_source.hpp"

#include <cmath>
#include <numbers>
#include <stdexcept>

namespace qafhost {

namespace {

constexpr std::uint32_t kSeed = 0x2545F491u;
constexpr double kTwoPi = 2.0 * std::numbers::pi;
// The pink filter below turns uniform white noise into pink noise of about -5 dB RMS (measured
// over ten seconds); this brings it to -20 dB.
constexpr double kPinkScale = 0.0562;

} // namespace

TestSignalSource::TestSignalSource(Kind kind, float sampleRate, std::size_t channelCount)
    : kind_(kind), sampleRate_(sampleRate), channelCount_(channelCount == 0 ? 1 : channelCount) {
    if (!std::isfinite(sampleRate) || sampleRate <= 0.0f)
        throw std::invalid_argument("TestSignalSource: the sample rate must be above 0");
    Rewind();
}

void TestSignalSource::Rewind() {
    frame_ = 0;
    sweepPhase_ = 0.0;
    random_ = kSeed;
    pink_.fill(0.0);
}

double TestSignalSource::SweepFrequencyAt(double seconds) {
    const double t = std::fmod(seconds, kSweepSeconds) / kSweepSeconds;
    return kSweepLow * std::pow(kSweepHigh / kSweepLow, t);
}

float TestSignalSource::NextNoise() {
    // xorshift32: white and uniform in -1..1.
    random_ ^= random_ << 13;
    random_ ^= random_ >> 17;
    random_ ^= random_ << 5;
    const double white = double(random_) / 2147483648.0 - 1.0;
    // Filtered to fall by 3 dB an octave, with the usual sum of first-order sections.
    std::array<double, 7>& b = pink_;
    b[0] = 0.99886 * b[0] + white * 0.0555179;
    b[1] = 0.99332 * b[1] + white * 0.0750759;
    b[2] = 0.96900 * b[2] + white * 0.1538520;
    b[3] = 0.86650 * b[3] + white * 0.3104856;
    b[4] = 0.55000 * b[4] + white * 0.5329522;
    b[5] = -0.7616 * b[5] - white * 0.0168980;
    const double pink = b[0] + b[1] + b[2] + b[3] + b[4] + b[5] + b[6] + white * 0.5362;
    b[6] = white * 0.115926;
    return float(pink * kPinkScale);
}

float TestSignalSource::Next() {
    const double rate = double(sampleRate_);
    const double seconds = double(frame_) / rate;
    double value = 0.0;
    if (kind_ == Kind::kPinkNoise || kind_ == Kind::kMix)
        value += NextNoise();
    if (kind_ == Kind::kSweep || kind_ == Kind::kMix) {
        // The phase is summed sample by sample, so the sweep stays continuous when it starts
        // again at the bottom.
        value += std::pow(10.0, -12.0 / 20.0) * std::sin(sweepPhase_);
        sweepPhase_ = std::fmod(sweepPhase_ + kTwoPi * SweepFrequencyAt(seconds) / rate, kTwoPi);
    }
    if (kind_ == Kind::kTones || kind_ == Kind::kMix) {
        for (double hz : kToneFrequencies)
            value += std::pow(10.0, -18.0 / 20.0) * std::sin(kTwoPi * std::fmod(hz * seconds, 1.0));
    }
    ++frame_;
    return float(value);
}

void TestSignalSource::Read(float* const* channels, std::size_t channelCount,
                            std::size_t frameCount) {
    for (std::size_t i = 0; i < frameCount; ++i) {
        const float value = Next();
        for (std::size_t c = 0; c < channelCount; ++c)
            if (channels[c])
                channels[c][i] = value;
    }
}

} // namespace qafhost
