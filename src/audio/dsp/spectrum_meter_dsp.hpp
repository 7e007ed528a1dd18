#pragma once

#include "audio/dsp/window_function.hpp"
#include "graphs/scales/spectrum_band_tables.hpp"
#include "platform/core/intrusive_ptr.hpp"
#include "platform/core/ref_counted_object.hpp"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qoraudiofilterhost {
class AudioFilter;
}

namespace qoraudiotoolkit {

class real_fft_t;

/// What a spectrum holds: one amplitude per FFT line, or one per band. The values are those of
/// `SpectrumDraw`'s band modes, so a spectrum can be handed to it as it comes.
enum SpectrumType : unsigned int {
    kSpectrumTypeLinear = 0,
    kSpectrumTypeThirdOctave = 1,
    kSpectrumTypeCriticalBands = 2,
};

/// One published analysis: the transform size it came from, its kind, and `count` amplitudes
/// (linear, a full-scale sine reads 1). Linear spectra have size / 2 + 1 values from 0 Hz to
/// Nyquist and a count of size / 2, the number of lines the painter spreads over 0..Nyquist;
/// band spectra have one value per band of the table.
struct SpectrumFrame {
    unsigned int fftSize = 0;
    SpectrumType type = kSpectrumTypeLinear;
    unsigned int count = 0;
    std::vector<float> data;
    /// Raised with every analysis, so a reader can tell a new frame from an old one.
    std::uint64_t serial = 0;
};

/// The live spectrum analyser of the effects. The process thread feeds it blocks of audio
/// (`ProcessBlock`); every hop it windows the latest block of the chosen size, transforms it,
/// averages the power of each line over time, and publishes the result. The main thread reads
/// the newest published spectrum (`ReadSpectrum`), usually through a `SpectrumMeterMessage`.
///
/// The two threads share no lock: results pass through three buffers whose roles are swapped
/// by one atomic exchange, and settings are atomics that the process thread takes over at its
/// next analysis. All memory, and every transform plan, is made in the constructor, so feeding
/// allocates nothing. The count is atomic; a meter must be released on the main thread (the
/// meter messages see to that), since its buffers are large.
///
/// The block-size and band tables are those of `SpectrumBandTables`.
class SpectrumMeterDSP : public qorcore::RefCountedObject, public SpectrumBandTables {
public:
    static constexpr unsigned int kDefaultFFTSizeIndex = 3; // 4096 points
    static constexpr unsigned int kMaxChannels = 32;

    /// A rate that is not a positive finite number throws std::invalid_argument; the channel
    /// count is limited to 1..kMaxChannels.
    SpectrumMeterDSP(float sampleRate, std::size_t channelCount);

    float GetSampleRate() const { return sampleRate_; }
    std::size_t GetChannelCount() const { return channelCount_; }

    // Settings, from any thread; the analysis takes them over at its next hop. A change of
    // size, window or kind restarts the averaging.
    /// Index into `GetFFTBlockSize`; indexes past the last are limited to it.
    void SetFFTSizeIndex(unsigned int index);
    unsigned int GetFFTSizeIndex() const;
    unsigned int GetFFTSize() const { return GetFFTBlockSize(GetFFTSizeIndex()); }
    void SetWindowType(WindowType type);
    WindowType GetWindowType() const;
    void SetSpectrumType(SpectrumType type);
    SpectrumType GetSpectrumType() const;
    /// Time constant of the exponential averaging of power, in seconds; 0 (or anything not a
    /// positive number) shows each analysis as it is.
    void SetAverageTime(double seconds);
    double GetAverageTime() const;

    /// The share of a block that two analyses in a row have in common, 0 to `kMaxOverlap`
    /// (limited to it): the hop is the rest of the block, at least one sample. A negative value
    /// or one that is not a number (the default, `kAutomaticOverlap`) keeps the automatic hop.
    void SetOverlap(double fraction);
    /// The overlap set, or `kAutomaticOverlap`.
    double GetOverlap() const;
    static constexpr double kAutomaticOverlap = -1.0;
    static constexpr double kMaxOverlap = 0.9375;

    /// Seconds between two analyses for the present size and overlap; the automatic hop is half
    /// a block, at most 1/30 s.
    double GetHopSeconds() const;

    // The process thread
    /// Feeds `frameCount` samples of each channel. Channels past the meter's count are ignored;
    /// null channel pointers count as silence.
    void ProcessBlock(const float* const* channels, std::size_t channelCount,
                      std::size_t frameCount);
    /// Forgets the signal and the averages.
    void Reset();

    // The main thread
    /// Copies the newest published spectrum into `out` when there is one that `out` has not
    /// seen yet (by serial); false leaves `out` as it was. `out.data` keeps its capacity.
    bool ReadSpectrum(SpectrumFrame& out);

    /// The filter to which a `SpectrumMeterMessage` of this meter posts itself again after each
    /// delivery, so that data keeps coming for as long as someone listens. Main thread only; set
    /// by whoever makes the meter for a filter.
    void SetMessageTarget(std::weak_ptr<qoraudiofilterhost::AudioFilter> target);
    std::shared_ptr<qoraudiofilterhost::AudioFilter> GetMessageTarget() const;

protected:
    ~SpectrumMeterDSP() override;

private:
    struct analysis_t;

    void Analyse();
    void Publish();
    void TakeOverSettings();
    void BuildBands();
    /// Samples between two analyses of blocks of `size` at `overlap`.
    std::size_t HopSamples(std::size_t size, double overlap) const;

    float sampleRate_;
    std::size_t channelCount_;
    std::weak_ptr<qoraudiofilterhost::AudioFilter> messageTarget_;

    std::atomic<unsigned int> sizeIndex_{kDefaultFFTSizeIndex};
    std::atomic<unsigned int> windowType_{static_cast<unsigned int>(WindowType::kHann)};
    std::atomic<unsigned int> spectrumType_{kSpectrumTypeLinear};
    std::atomic<double> averageTime_{0.0};
    std::atomic<double> overlap_{kAutomaticOverlap};

    // Process thread state.
    std::unique_ptr<analysis_t> analysis_;

    // Hand-over: the writer owns `back_`, the reader `front_`, and the third index lives in
    // `middle_` with a fresh flag.
    std::array<SpectrumFrame, 3> frames_;
    unsigned int back_ = 0;
    unsigned int front_ = 1;
    std::atomic<unsigned int> middle_{2};
};

} // namespace qoraudiotoolkit
