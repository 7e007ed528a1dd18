#pragma once

#include "audio/dsp/reference_effect.hpp"
#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "audio/dsp/window_function.hpp"
#include "platform/core/fader_translator.hpp"
#include "platform/core/intrusive_ptr.hpp"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace qoraudiofilters {

/// The FFT filter: shapes a signal with a freely drawn magnitude curve.
///
/// The curve is a list of up to 128 points (frequency / Nyquist, fader position), joined by
/// straight segments or a natural cubic spline in the space of the editor's frequency scale
/// (logarithmic or linear), read at the centre of every FFT bin. The signal is cut into blocks
/// of the FFT size with a hop of a quarter block, each windowed, transformed, multiplied by the
/// bin gains, transformed back, windowed again and overlapped; dividing by the summed squared
/// windows makes a flat curve pass the signal unchanged whatever the window. The output lags
/// the input by one block.
///
/// Parameters (normalised 0..1):
///  0 spline curves (on when >= 0.5); 1 FFT size ((size - 32) / 32736, the nearest power of
///  two from 32 to 32768); 2 window type (index * 0.125, see `WindowType`); 3 curve-write
///  bracket (while >= 0.5, point writes wait for the bracket to close); 4 scale (linear when
///  >= 0.5, else logarithmic); 5, 6 visible range low and high (Hz / Nyquist), over which
///  `GetResponseCurve` samples; 7, 8 unused; 9 point count (count / 128); 10 + 2i, 11 + 2i the
///  frequency (Hz / Nyquist) and level (fader position, 0 dB at 0.75, +15 dB at the top) of
///  point i. Values that are not numbers, and points with such coordinates, are left out; the
///  points are sorted by frequency; an empty curve passes the signal unchanged.
///
/// Writes from the editor build new bin gains on the writing thread and hand them to the
/// process thread through a one-slot mailbox; the process thread never reads a parameter, takes
/// no lock and frees nothing: what it replaces goes back through a queue and is freed on the
/// next write or update. A change of FFT size or window crossfades from the old blocks to the
/// new ones, so it makes no click.
class FFTFilter : public ReferenceEffect {
public:
    enum ParameterIndex : int {
        kSplineCurves = 0,
        kFFTSize = 1,
        kWindowType = 2,
        kCurveWriteBracket = 3,
        kScale = 4,
        kVisibleRangeLow = 5,
        kVisibleRangeHigh = 6,
        kPointCount = 9,
        kFirstPoint = 10,
    };
    static constexpr int kMaxPoints = 128;
    static constexpr int kParameterCount = kFirstPoint + 2 * kMaxPoints;
    static constexpr unsigned int kMinFFTSize = 32;
    static constexpr unsigned int kMaxFFTSize = 32768;
    static constexpr unsigned int kDefaultFFTSize = 4096;
    /// Length of the crossfade after a change of FFT size or window.
    static constexpr double kCrossfadeSeconds = 0.02;

    static constexpr int PointXIndex(int point) { return kFirstPoint + 2 * point; }
    static constexpr int PointYIndex(int point) { return kFirstPoint + 2 * point + 1; }

    /// Encodings of parameters 1 and 2. Encode gives a value that decodes to the size (or
    /// index) again, by truncation as well as by rounding. Decode takes any float: the size is
    /// the power of two nearest to value * 32736 + 32, limited to 32..32768, the index the
    /// truncation of value * 8 limited to 0..7; NaN gives the defaults (4096 points, Hann).
    static float EncodeFFTSize(unsigned int size);
    static unsigned int DecodeFFTSize(float value);
    static float EncodeWindowType(qoraudiotoolkit::WindowType type);
    static qoraudiotoolkit::WindowType DecodeWindowType(float value);

    /// Starts with two points at 0 dB, at 20 Hz and at Nyquist, logarithmic scale, 4096 points,
    /// Hann window. Rate and channel count as for `ReferenceEffect`.
    explicit FFTFilter(float sampleRate = 48000.0f, std::size_t channelCount = 2);
    ~FFTFilter() override;

    // AudioFilter
    void SetParameterValue(int index, float value) override;
    void SetParameterQuietly(int index, float value) override;
    /// The response the filter applies, at `pointCount` frequencies spread over the visible
    /// range (parameters 5 and 6) like the editor's frequency axis (parameter 4), as fader
    /// positions: the bin gains in use, interpolated linearly between bin centres. 0 (and `out`
    /// untouched) for a channel outside the filter's channels or a point count outside
    /// 1..65536.
    int GetResponseCurve(int channel, int pointCount, std::vector<float>& out) override;

    // ReferenceEffect
    void Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                 std::size_t frameCount) override;
    void Reset() override;
    std::size_t GetLatencySamples() const override;
    void UpdateFromParameters() override;

    /// The process thread: installs `meter` (or none), which is then fed with every input block,
    /// and returns the meter it had. Nothing is released here: the old meter changes hands.
    qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>
    SwapSpectrumMeter(qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter);

    /// The fader law of the levels: 0 dB at 0.75, 15 dB at the top.
    const qorcore::FaderTranslator<double>& GetFaderTranslator() const { return fader_; }

    /// The settings and bin gains last handed to the process thread (the main side's copy).
    unsigned int GetFFTSize() const;
    qoraudiotoolkit::WindowType GetWindowType() const;
    std::vector<float> GetBinGains() const;

private:
    struct kernel_t;
    struct engine_t;
    struct process_state_t;

    /// Builds new gains from the parameters and hands them over, unless the bracket is open.
    void Rebuild();
    void Publish(std::unique_ptr<kernel_t> kernel);
    void CollectRetired();
    void SaveVersion();
    bool IsStale() const;

    qorcore::FaderTranslator<double> fader_;

    // Main side, under `mutex_`.
    mutable std::mutex mutex_;
    unsigned int publishedSize_ = 0;
    qoraudiotoolkit::WindowType publishedWindow_ = qoraudiotoolkit::WindowType::kHann;
    std::vector<float> publishedGains_;
    int builtDirtyCount_ = -1;
    unsigned int builtQuietCount_ = 0;
    std::atomic<unsigned int> quietCount_{0};

    // Between the threads.
    std::atomic<kernel_t*> mailbox_{nullptr};
    std::unique_ptr<process_state_t> process_;

    // The process thread's.
    qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter_;
};

} // namespace qoraudiofilters
