#include "audio/dsp/spectrum_meter_dsp.hpp"

#include "audio/dsp/real_fft.hpp"
#include "platform/host/audio_filter.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qoraudiotoolkit {

namespace {

constexpr unsigned int kFresh = 4;
constexpr unsigned int kIndexMask = 3;

// Edges of the 24 critical bands of hearing around the centres of the table.
constexpr std::array<float, 25> critical_band_edges{
    0,    100,  200,  300,  400,  510,  630,  770,  920,  1080, 1270,  1480, 1720,
    2000, 2320, 2700, 3150, 3700, 4400, 5300, 6400, 7700, 9500, 12000, 15500};

constexpr std::size_t kMaxBands = 31;

} // namespace

struct SpectrumMeterDSP::analysis_t {
    // A transform per offered size, all planned up front: the process thread plans nothing.
    std::array<std::unique_ptr<real_fft_t>, kNumFFTBlockSizes> transforms;
    // The latest samples of every channel, as many as the largest block.
    std::vector<std::vector<float>> history;
    std::size_t write = 0;
    std::size_t sinceHop = 0;
    std::size_t fedChannels = 1;

    // The settings in use.
    unsigned int sizeIndex = ~0u;
    WindowType window = WindowType::kHann;
    SpectrumType type = kSpectrumTypeLinear;
    double averageTime = 0.0;
    std::size_t size = 0;
    std::size_t hop = 1;
    std::vector<float> windowData;
    double windowSum = 1.0;
    double bandwidth = 1.0; // equivalent noise bandwidth in bins

    std::vector<double> power; // averaged power per bin, a full-scale sine at 1
    std::vector<double> framePower;
    bool averaged = false;

    // Bins [first, last) of each band; an empty range reads the power at `centre` bins.
    struct band_t {
        std::size_t first = 0;
        std::size_t last = 0;
        double centre = 0.0;
        bool aboveNyquist = false;
    };
    std::array<band_t, kMaxBands> bands;
    std::size_t bandCount = 0;

    std::uint64_t serial = 0;
};

SpectrumMeterDSP::SpectrumMeterDSP(float sampleRate, std::size_t channelCount)
    : sampleRate_(sampleRate),
      channelCount_(std::clamp<std::size_t>(channelCount, 1, kMaxChannels)),
      analysis_(std::make_unique<analysis_t>()) {
    if (!std::isfinite(sampleRate) || sampleRate <= 0.0f)
        throw std::invalid_argument("SpectrumMeterDSP: the sample rate must be above 0");
    const std::size_t largest = GetFFTBlockSize(kNumFFTBlockSizes - 1);
    analysis_t& a = *analysis_;
    for (unsigned int i = 0; i < kNumFFTBlockSizes; ++i)
        a.transforms[i] = std::make_unique<real_fft_t>(GetFFTBlockSize(i));
    a.history.assign(channelCount_, std::vector<float>(largest, 0.0f));
    a.windowData.resize(largest);
    a.power.resize(largest / 2 + 1);
    a.framePower.resize(largest / 2 + 1);
    for (SpectrumFrame& frame : frames_)
        frame.data.reserve(largest / 2 + 1);
    TakeOverSettings();
}

SpectrumMeterDSP::~SpectrumMeterDSP() = default;

void SpectrumMeterDSP::SetFFTSizeIndex(unsigned int index) {
    sizeIndex_.store(std::min(index, kNumFFTBlockSizes - 1), std::memory_order_release);
}

unsigned int SpectrumMeterDSP::GetFFTSizeIndex() const {
    return sizeIndex_.load(std::memory_order_acquire);
}

void SpectrumMeterDSP::SetWindowType(WindowType type) {
    windowType_.store(static_cast<unsigned int>(WindowTypeFromIndex(static_cast<unsigned>(type))),
                      std::memory_order_release);
}

WindowType SpectrumMeterDSP::GetWindowType() const {
    return static_cast<WindowType>(windowType_.load(std::memory_order_acquire));
}

void SpectrumMeterDSP::SetSpectrumType(SpectrumType type) {
    spectrumType_.store(type <= kSpectrumTypeCriticalBands ? type : kSpectrumTypeLinear,
                        std::memory_order_release);
}

SpectrumType SpectrumMeterDSP::GetSpectrumType() const {
    return static_cast<SpectrumType>(spectrumType_.load(std::memory_order_acquire));
}

void SpectrumMeterDSP::SetAverageTime(double seconds) {
    averageTime_.store(std::isfinite(seconds) && seconds > 0.0 ? seconds : 0.0,
                       std::memory_order_release);
}

double SpectrumMeterDSP::GetAverageTime() const {
    return averageTime_.load(std::memory_order_acquire);
}

void SpectrumMeterDSP::SetOverlap(double fraction) {
    overlap_.store(fraction >= 0.0 ? std::min(fraction, kMaxOverlap) : kAutomaticOverlap,
                   std::memory_order_release);
}

double SpectrumMeterDSP::GetOverlap() const {
    return overlap_.load(std::memory_order_acquire);
}

std::size_t SpectrumMeterDSP::HopSamples(std::size_t size, double overlap) const {
    const double hop = overlap >= 0.0
                           ? std::round(double(size) * (1.0 - overlap))
                           : std::min(double(size) / 2.0, std::floor(double(sampleRate_) / 30.0));
    return std::max<std::size_t>(1, std::size_t(hop));
}

double SpectrumMeterDSP::GetHopSeconds() const {
    return double(HopSamples(GetFFTSize(), GetOverlap())) / double(sampleRate_);
}

void SpectrumMeterDSP::TakeOverSettings() {
    analysis_t& a = *analysis_;
    const unsigned int sizeIndex = GetFFTSizeIndex();
    const WindowType window = GetWindowType();
    const SpectrumType type = GetSpectrumType();
    a.averageTime = GetAverageTime();
    // A new hop alone keeps the averages: the analyses just come at another pace.
    const std::size_t hop = HopSamples(GetFFTBlockSize(sizeIndex), GetOverlap());
    if (hop != a.hop) {
        a.hop = hop;
        a.sinceHop = std::min(a.sinceHop, a.hop - 1);
    }
    if (sizeIndex == a.sizeIndex && window == a.window && type == a.type)
        return;
    const bool shapeChanged = sizeIndex != a.sizeIndex || window != a.window;
    a.sizeIndex = sizeIndex;
    a.window = window;
    a.type = type;
    a.size = GetFFTBlockSize(sizeIndex);
    if (shapeChanged) {
        FillWindow(window, a.windowData.data(), a.size);
        double sum = 0.0;
        double squares = 0.0;
        for (std::size_t i = 0; i < a.size; ++i) {
            sum += a.windowData[i];
            squares += double(a.windowData[i]) * a.windowData[i];
        }
        a.windowSum = sum > 0.0 ? sum : 1.0;
        a.bandwidth = sum > 0.0 ? double(a.size) * squares / (sum * sum) : 1.0;
    }
    BuildBands();
    a.averaged = false;
    a.sinceHop = std::min(a.sinceHop, a.hop - 1);
}

void SpectrumMeterDSP::BuildBands() {
    analysis_t& a = *analysis_;
    a.bandCount = 0;
    if (a.type == kSpectrumTypeLinear)
        return;
    const double binHz = double(sampleRate_) / double(a.size);
    const std::size_t bins = a.size / 2 + 1;
    const bool third = a.type == kSpectrumTypeThirdOctave;
    a.bandCount = std::min(kMaxBands, third ? GetNumThirdOctaveBands() : GetNumCriticalBands());
    for (std::size_t b = 0; b < a.bandCount; ++b) {
        const double centre = third ? GetThirdOctaveBand(b) : GetCriticalBand(b);
        const double low = third ? centre * std::pow(2.0, -1.0 / 6.0) : critical_band_edges[b];
        const double high = third ? centre * std::pow(2.0, 1.0 / 6.0) : critical_band_edges[b + 1];
        analysis_t::band_t& band = a.bands[b];
        band.first = std::min(bins, std::size_t(std::ceil(low / binHz)));
        band.last = std::min(bins, std::size_t(std::ceil(high / binHz)));
        band.centre = centre / binHz;
        band.aboveNyquist = low >= 0.5 * double(sampleRate_);
    }
}

void SpectrumMeterDSP::ProcessBlock(const float* const* channels, std::size_t channelCount,
                                    std::size_t frameCount) {
    analysis_t& a = *analysis_;
    const std::size_t fed = std::min(channelCount, channelCount_);
    a.fedChannels = std::max<std::size_t>(1, fed);
    const std::size_t length = a.history.front().size();
    std::size_t done = 0;
    while (done < frameCount) {
        const std::size_t chunk = std::min(frameCount - done, a.hop - a.sinceHop);
        for (std::size_t c = 0; c < a.fedChannels; ++c) {
            const float* source = c < fed && channels ? channels[c] : nullptr;
            std::vector<float>& history = a.history[c];
            std::size_t at = a.write;
            for (std::size_t i = 0; i < chunk; ++i) {
                history[at] = source ? source[done + i] : 0.0f;
                if (++at == length)
                    at = 0;
            }
        }
        a.write = (a.write + chunk) % length;
        a.sinceHop += chunk;
        done += chunk;
        if (a.sinceHop >= a.hop) {
            a.sinceHop = 0;
            Analyse();
        }
    }
}

void SpectrumMeterDSP::Reset() {
    analysis_t& a = *analysis_;
    for (std::vector<float>& history : a.history)
        std::fill(history.begin(), history.end(), 0.0f);
    a.sinceHop = 0;
    a.averaged = false;
}

void SpectrumMeterDSP::Analyse() {
    TakeOverSettings();
    analysis_t& a = *analysis_;
    real_fft_t& fft = *a.transforms[a.sizeIndex];
    const std::size_t size = a.size;
    const std::size_t bins = size / 2 + 1;
    const std::size_t length = a.history.front().size();
    std::fill_n(a.framePower.begin(), bins, 0.0);
    // A sine of amplitude 1 on a bin centre gives |X| = sum(w) / 2 there.
    const double scale = 2.0 / a.windowSum;
    for (std::size_t c = 0; c < a.fedChannels; ++c) {
        const std::vector<float>& history = a.history[c];
        float* time = fft.GetTimeData();
        std::size_t at = (a.write + length - size) % length;
        for (std::size_t i = 0; i < size; ++i) {
            time[i] = history[at] * a.windowData[i];
            if (++at == length)
                at = 0;
        }
        fft.Forward();
        const std::complex<float>* spectrum = fft.GetSpectrum();
        for (std::size_t k = 0; k < bins; ++k) {
            const double edge = k == 0 || k == bins - 1 ? 0.5 : 1.0;
            const double magnitude = std::abs(spectrum[k]) * scale * edge;
            a.framePower[k] += magnitude * magnitude;
        }
    }
    const double perChannel = 1.0 / double(a.fedChannels);
    const double keep = a.averageTime > 0.0 && a.averaged
                            ? std::exp(-(double(a.hop) / double(sampleRate_)) / a.averageTime)
                            : 0.0;
    for (std::size_t k = 0; k < bins; ++k)
        a.power[k] = keep * a.power[k] + (1.0 - keep) * a.framePower[k] * perChannel;
    a.averaged = true;
    Publish();
}

void SpectrumMeterDSP::Publish() {
    analysis_t& a = *analysis_;
    SpectrumFrame& frame = frames_[back_];
    frame.fftSize = unsigned(a.size);
    frame.type = a.type;
    frame.serial = ++a.serial;
    const std::size_t bins = a.size / 2 + 1;
    if (a.type == kSpectrumTypeLinear) {
        frame.count = unsigned(a.size / 2);
        frame.data.resize(bins);
        for (std::size_t k = 0; k < bins; ++k)
            frame.data[k] = float(std::sqrt(a.power[k]));
    } else {
        frame.count = unsigned(a.bandCount);
        frame.data.resize(a.bandCount);
        for (std::size_t b = 0; b < a.bandCount; ++b) {
            const analysis_t::band_t& band = a.bands[b];
            double power = 0.0;
            if (band.aboveNyquist) {
                power = 0.0;
            } else if (band.first < band.last) {
                // A sine's power is spread over the window's bandwidth; summing the band's
                // lines and dividing by it gives the sine's power again.
                for (std::size_t k = band.first; k < band.last; ++k)
                    power += a.power[k];
                power /= a.bandwidth;
            } else {
                // A band narrower than a line: read the line power at its centre.
                const double at = std::min(band.centre, double(bins - 1));
                const std::size_t k = std::size_t(at);
                const double t = at - double(k);
                power = k + 1 < bins ? a.power[k] * (1.0 - t) + a.power[k + 1] * t : a.power[k];
            }
            frame.data[b] = float(std::sqrt(power));
        }
    }
    back_ = middle_.exchange(back_ | kFresh, std::memory_order_acq_rel) & kIndexMask;
}

bool SpectrumMeterDSP::ReadSpectrum(SpectrumFrame& out) {
    if (middle_.load(std::memory_order_acquire) & kFresh)
        front_ = middle_.exchange(front_, std::memory_order_acq_rel) & kIndexMask;
    const SpectrumFrame& frame = frames_[front_];
    if (frame.serial == 0 || frame.serial == out.serial)
        return false;
    out.fftSize = frame.fftSize;
    out.type = frame.type;
    out.count = frame.count;
    out.serial = frame.serial;
    out.data.assign(frame.data.begin(), frame.data.end());
    return true;
}

void SpectrumMeterDSP::SetMessageTarget(std::weak_ptr<qoraudiofilterhost::AudioFilter> target) {
    messageTarget_ = std::move(target);
}

std::shared_ptr<qoraudiofilterhost::AudioFilter> SpectrumMeterDSP::GetMessageTarget() const {
    return messageTarget_.lock();
}

} // namespace qoraudiotoolkit
