#pragma once

#include "audio/host/audio_source.hpp"

#include <array>
#include <cstdint>

namespace qafhost {

/// The built-in test signal: pink noise, a slow sine sweep, a few steady tones, or all three
/// mixed. The same in every channel and the same on every run, so rendered pictures repeat.
class TestSignalSource : public AudioSource {
public:
    enum class Kind { kPinkNoise, kSweep, kTones, kMix };

    /// Pink noise at -20 dB RMS; the sweep at -12 dB runs from 20 Hz to 20 kHz on a logarithmic
    /// path in `kSweepSeconds` and starts again; tones at 100 Hz, 1 kHz and 5 kHz, each at
    /// -18 dB. The mix adds the three at those levels.
    static constexpr double kSweepSeconds = 20.0;
    static constexpr double kSweepLow = 20.0;
    static constexpr double kSweepHigh = 20000.0;
    static constexpr std::array<double, 3> kToneFrequencies{100.0, 1000.0, 5000.0};

    /// A rate that is not a positive finite number throws std::invalid_argument.
    TestSignalSource(Kind kind, float sampleRate, std::size_t channelCount = 2);

    Kind GetKind() const { return kind_; }
    float GetSampleRate() const override { return sampleRate_; }
    std::size_t GetChannelCount() const override { return channelCount_; }
    void Read(float* const* channels, std::size_t channelCount, std::size_t frameCount) override;
    void Rewind() override;

    /// The sweep's frequency at a time from its start.
    static double SweepFrequencyAt(double seconds);

private:
    float Next();
    float NextNoise();

    Kind kind_;
    float sampleRate_;
    std::size_t channelCount_;
    std::uint64_t frame_ = 0;
    double sweepPhase_ = 0.0;
    std::uint32_t random_ = 0;
    std::array<double, 7> pink_{};
};

} // namespace qafhost
