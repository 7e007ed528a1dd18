#pragma once

#include "audio/dsp/reference_effect.hpp"
#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/ref_counted_object.hpp"
#include "platform/host/message.hpp"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace qoraudiotoolkit {
class LevelMeterDSP;
}

namespace qoraudiofilters {

/// Four bands split at three crossover frequencies, a compressor on each, an output gain and a
/// brick-wall limiter.
///
/// The split is a tree of fourth-order Linkwitz-Riley crossovers: the middle crossover first,
/// then the low one on its low side and the high one on its high side. Each side passes the
/// allpass of the other side's crossover (the sum of a Linkwitz-Riley pair), so that all four
/// bands carry the same phase and, at unity, sum to the input through an allpass: a flat
/// magnitude. Each band's compressor detects the peak of its loudest channel (the channels
/// are compressed alike), applies the static curve with the attack and release smoothing the
/// reduction, then the band's gain. A bypassed band passes as split, without compression or
/// gain. When any band is soloed, only soloed bands reach the output.
///
/// Parameters (normalised 0..1; NaN reads as the default): 0 output gain -18..18 dB; per band b
/// 1+b threshold -60..0 dB, 5+b ratio 1..30, 9+b attack 0..500 ms, 13+b release 0..5000 ms,
/// 17+b gain -18..18 dB, 24+b bypass, 28+b solo; 22 spectra of the bands' inputs (else their
/// outputs); 23 link band controls (an editor's matter); 33..35 crossovers, Hz = value * 19980
/// + 20 (held in order, a tenth of an octave apart); 47 limiter threshold -30..0 dB: peaks
/// above it are limited and the limited signal is raised to the margin; 48 margin -12..0 dB:
/// the output's ceiling; 50 limiter attack 0..10 ms, its look-ahead; 51 limiter release
/// 1..1000 ms; 52 limiter bypass; 57 limiter mode in quarters: 1 (0.25) a brick wall with a
/// hard knee, else a 3 dB soft knee with automatic release. No mode lets a peak pass the
/// margin. Other indices are kept and unused.
///
/// Threads: parameter writes decode into atomics that the process thread takes at each block;
/// it never locks, allocates or frees. Meters are installed by `EnableMetersMessage`.
class MultiBandCompressor : public ReferenceEffect {
public:
    static constexpr int kBandCount = 4;
    enum ParameterIndex : int {
        kOutputGain = 0,
        kThreshold = 1,
        kRatio = 5,
        kAttack = 9,
        kRelease = 13,
        kGain = 17,
        kSpectrumOnInput = 22,
        kLinkBandControls = 23,
        kBypass = 24,
        kSolo = 28,
        kCrossOver = 33,
        kLimiterThreshold = 47,
        kLimiterMargin = 48,
        kLimiterAttack = 50,
        kLimiterRelease = 51,
        kLimiterBypass = 52,
        kBrickwallLimiter = 57,
    };
    static constexpr int kParameterCount = 58;
    static constexpr float kMinFrequency = 20.0f;
    static constexpr float kMaxFrequency = 20000.0f;
    static constexpr double kDetectorReleaseMilliseconds = 50.0;
    static constexpr double kMaxLookAheadMilliseconds = 10.0;

    /// The three crossover frequencies as the parameters hold them, for the main thread.
    class CrossOver : public qorcore::RefCountedObject {
    public:
        /// Fills three frequencies in Hz, low to high.
        void GetCutoffs(std::vector<float>& cutoffs) const;
        /// `frequency` moved so that cutoff `index` keeps at least `minimumGap` octaves from
        /// its neighbours in `cutoffs`, and stays within 20..20000 Hz. An index out of range or
        /// a frequency that is no number gives the cutoff as it is (NaN for no cutoff).
        static float TrimCutoffFreq(const std::vector<float>& cutoffs, int index, float frequency,
                                    float minimumGap);

    private:
        friend class MultiBandCompressor;
        std::array<std::atomic<float>, 3> cutoffs_{};
    };

    /// The meters of one editor: the spectrum of each band and the output's levels.
    struct Meters {
        bool enabled = false;
        std::vector<qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>> bands;
        std::shared_ptr<qoraudiotoolkit::LevelMeterDSP> output;
    };

    /// Installs a new set of meters on the process thread (or none), handing the old set back
    /// to the main thread, where it is released.
    class EnableMetersMessage : public qoraudiofilterhost::Message {
    public:
        EnableMetersMessage(std::shared_ptr<MultiBandCompressor> filter, bool enable);
        ~EnableMetersMessage() override;
        void ExecuteOnProcessThread() override;
        void ExecuteOnMainThread() override;
        const Meters& GetMeters() const { return meters_; }

        /// Posts a message that starts (or stops) metering and returns its meters (none when
        /// stopping). A null filter returns no meters.
        static Meters CreateAndPost(const std::shared_ptr<MultiBandCompressor>& filter,
                                    bool enable);

    private:
        std::shared_ptr<MultiBandCompressor> filter_;
        Meters meters_;
        std::array<qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>, kBandCount> swap_;
        std::shared_ptr<qoraudiotoolkit::LevelMeterDSP> swapOutput_;
    };

    explicit MultiBandCompressor(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~MultiBandCompressor() override;

    qorcore::IntrusivePtr<CrossOver> GetCrossOver() const { return crossOver_; }
    /// The peak of each channel of band `band`'s input since the last call, linear; channels
    /// past the effect's, or a band out of range, read 0.
    void GetLevels(int band, float* levels, std::size_t count);
    /// The compressor's gain change of `band` now, in dB (0 or below); 0 out of range.
    float GetGainReduction(int band) const;
    /// The smallest gain the limiter applied in the last block, in dB.
    float GetLimiterReduction() const;
    /// The gain in dB that band `band`'s compressor settles on for a steady peak level
    /// `inputDb`, band gain included (the split not included).
    double GetStaticBandGainDecibels(int band, double inputDb) const;

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    std::size_t GetLatencySamples() const override;
    void UpdateFromParameters() override;

private:
    struct state_t;

    void Publish();
    /// The process thread: exchanges the installed meters with the given ones.
    void SwapMeters(
        std::array<qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>, kBandCount>& bands,
        std::shared_ptr<qoraudiotoolkit::LevelMeterDSP>& output);

    qorcore::IntrusivePtr<CrossOver> crossOver_;
    std::unique_ptr<state_t> state_;
};

} // namespace qoraudiofilters
