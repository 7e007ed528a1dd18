#pragma once

#include "audio/dsp/reference_effect.hpp"
#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "audio/dsp/window_function.hpp"
#include "platform/core/intrusive_ptr.hpp"

#include <atomic>
#include <cstddef>
#include <vector>

namespace qoraudiofilters {

/// The spectrum analyser: the audio passes unchanged, bit for bit, while its own
/// `SpectrumMeterDSP`, fed from the process thread while the meter is active, analyses it.
///
/// What is analysed is one signal, the average of the effect's channels. With "Flip Channel
/// Phase" the second channel is inverted first, so the meter shows what the channels do not
/// have in common: a sound equal in both channels (a mono signal) vanishes, an antiphase pair
/// shows at full level, and a stereo mix shows its sides. Without it, a sound in both channels
/// reads its level, a sound in one channel 6 dB below it, and an antiphase pair vanishes.
/// Samples of the mix that are not finite numbers are analysed as silence.
///
/// Parameters (normalised 0..1; plain values through the descriptors):
///  0 FFT size: popup row 0..4 = 512, 1024, 2048, 4096, 8192 points (v * 4, rounded);
///  1 spectrum type: 0 linear, 1 third octaves, 2 critical bands (v * 2, rounded);
///  2 window: popup row 0..7 (v * 7, rounded), see `WindowOfRow`;
///  3 overlap: 0..75 % of the block shared by two analyses in a row (v * 75); the hop is the
///    rest of the block, so 0 % analyses size / rate times a second, 75 % four times as often;
///  4 window size: the time over which the spectrum is averaged, 0..5000 ms (v * 5000); the
///    power of each line is averaged exponentially with a time constant of half the window,
///    which smooths noise as much as a plain average over the window would; 0 shows every
///    analysis as it comes;
///  5 flip channel phase (on at 0.5 and above);
///  6 peak hold time, 1..5000 ms; 7 fill; 8 show peak hold; 9 logarithmic frequency scale:
///    the editor's drawing only, the analysis ignores them.
/// Values outside 0..1 are limited to it; a value that is not a number reads as the default.
///
/// Threads: parameter writes hand the analysis settings to the meter through its atomics; the
/// process thread never locks, allocates or frees.
class SpectrumMeter : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kFFTSize = 0,
        kSpectrumType = 1,
        kWindow = 2,
        kOverlap = 3,
        kWindowSize = 4,
        kFlipChannelPhase = 5,
        kPeakHoldTime = 6,
        kFill = 7,
        kShowPeakHold = 8,
        kLogScale = 9,
    };
    static constexpr int kParameterCount = 10;
    static constexpr int kFFTSizeRows = 5;
    static constexpr int kWindowRows = 8;
    static constexpr double kMaxOverlapPercent = 75.0;
    static constexpr double kMaxWindowSizeMilliseconds = 5000.0;
    static constexpr double kMinPeakHoldMilliseconds = 1.0;
    static constexpr double kMaxPeakHoldMilliseconds = 5000.0;

    /// The window of a row of the window popup: Hamming, Blackman, Bartlett, Kaiser (140 dB),
    /// Hann, Gaussian, Blackman-Harris, Kaiser (180 dB); rows past the last give Hann.
    static qoraudiotoolkit::WindowType WindowOfRow(unsigned int row);

    /// Rate and channel count as for `ReferenceEffect`.
    explicit SpectrumMeter(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~SpectrumMeter() override;

    /// The meter the effect owns from its creation; it sees one channel, the mix described
    /// above.
    const qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>& GetSpectrumMeter() const;
    /// Main thread: feed (or stop feeding) that meter from the process thread.
    void SetMeterActive(bool active);
    bool IsMeterActive() const;

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    void UpdateFromParameters() override;

private:
    /// Hands the analysis settings of the stored values to the meter.
    void ApplySettings();
    /// The stored value of a parameter, limited to 0..1; not a number reads as its default.
    double Value(int index) const;

    std::atomic<bool> meterActive_{false};
    std::atomic<bool> flip_{false};
    qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter_;
    std::vector<float> mix_; // the process thread's, one chunk of the analysed signal
};

} // namespace qoraudiofilters
