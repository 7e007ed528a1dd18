#include "audio/dsp/graphic_eq.hpp"

#include "audio/dsp/triple_buffer.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <mutex>
#include <numbers>
#include <stdexcept>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;
using qoraudiotoolkit::Biquad;

namespace {

constexpr std::size_t kMaxChannels = 8;
constexpr std::size_t kChunk = 256;
constexpr double kGainSpan = 24.0;
constexpr double kRangeLow = 6.0;
constexpr double kRangeSpan = 18.0;
constexpr double kWidthLow = 0.5;
constexpr double kWidthSpan = 2.5;
// Bands half as wide again as their spacing: flat within 0.3 dB when neighbours agree, while
// alternating faders still need moderate section gains.
constexpr double kDefaultWidth = 1.5;
constexpr double kHighestCentre = 0.45; // of the rate
// Within a float step of 0 dB a gain is exactly unity, so the defaults change nothing.
constexpr double kUnityDecibels = 1e-5;
constexpr double kFloorDecibels = -400.0;
// The gain at which the overlap of the sections is probed, and the most a section may take.
constexpr double kProbeDecibels = 12.0;
constexpr double kSectionLimit = 48.0;
constexpr float kTiny = 1e-30f;
constexpr float kHuge = 1e30f;

constexpr const char* kOctaveLabels[] = {"31.5", "63", "125", "250", "500",
                                         "1k",   "2k", "4k",  "8k",  "16k"};
constexpr const char* kHalfOctaveLabels[] = {"31.5", "44",   "63",  "88",    "125",  "177",  "250",
                                             "355",  "500",  "710", "1k",    "1.4k", "2k",   "2.8k",
                                             "4k",   "5.6k", "8k",  "11.2k", "16k",  "22.4k"};
constexpr const char* kThirdOctaveLabels[] = {
    "25",   "31.5",  "40",  "50",  "63",   "80",  "100", "125",   "160",  "200",
    "250",  "315",   "400", "500", "630",  "800", "1k",  "1.25k", "1.6k", "2k",
    "2.5k", "3.15k", "4k",  "5k",  "6.3k", "8k",  "10k", "12.5k", "16k",  "20k"};

// Bands per octave, and the position of 1 kHz in the series.
int PerOctave(int bandCount) {
    return bandCount / 10;
}
int KiloIndex(int bandCount) {
    return bandCount == 30 ? 16 : 5 * PerOctave(bandCount);
}

std::vector<ParameterDescriptor> MakeParameters(int bandCount) {
    if (bandCount != 10 && bandCount != 20 && bandCount != 30)
        throw std::invalid_argument("GraphicEQ: 10, 20 or 30 bands");
    std::vector<ParameterDescriptor> p;
    for (int b = 0; b < bandCount; ++b)
        p.push_back({GraphicEQ::NominalLabel(bandCount, b) + " Hz", float(-kGainSpan),
                     float(kGainSpan), 0.5f, "dB"});
    p.push_back({"Master Gain", float(-kGainSpan), float(kGainSpan), 0.5f, "dB"});
    p.push_back({"Range", float(kRangeLow), float(kRangeLow + kRangeSpan), 1.0f, "dB"});
    p.push_back({"Width", float(kWidthLow), float(kWidthLow + kWidthSpan),
                 float((kDefaultWidth - kWidthLow) / kWidthSpan)});
    p.push_back({"Bypass", 0.0f, 1.0f, 0.0f});
    return p;
}

// x with a x = b for the square matrix a (row after row), by elimination with partial
// pivoting; a column without a usable pivot leaves its unknown at 0.
std::vector<double> Solve(std::vector<double> a, std::vector<double> b) {
    const std::size_t n = b.size();
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k + 1; i < n; ++i)
            if (std::abs(a[i * n + k]) > std::abs(a[pivot * n + k]))
                pivot = i;
        if (!(std::abs(a[pivot * n + k]) > 1e-12))
            continue;
        for (std::size_t j = 0; j < n; ++j)
            std::swap(a[k * n + j], a[pivot * n + j]);
        std::swap(b[k], b[pivot]);
        for (std::size_t i = k + 1; i < n; ++i) {
            const double f = a[i * n + k] / a[k * n + k];
            for (std::size_t j = k; j < n; ++j)
                a[i * n + j] -= f * a[k * n + j];
            b[i] -= f * b[k];
        }
    }
    std::vector<double> x(n, 0.0);
    for (std::size_t k = n; k-- > 0;) {
        if (!(std::abs(a[k * n + k]) > 1e-12))
            continue;
        double sum = b[k];
        for (std::size_t j = k + 1; j < n; ++j)
            sum -= a[k * n + j] * x[j];
        x[k] = sum / a[k * n + k];
    }
    return x;
}

// The chain as plain data: every band's section (identity when flat or bypassed), with the
// coefficients rounded to float as the audio uses them, and the master gain.
struct design_t {
    std::array<Biquad, GraphicEQ::kMaxBands> sections{};
    double gain = 1.0;

    double ResponseDecibels(double hz, double rate, int count) const {
        double magnitude = std::abs(gain);
        for (int b = 0; b < count; ++b)
            magnitude *= std::abs(sections[std::size_t(b)].Response(hz, rate));
        if (std::isnan(magnitude))
            return magnitude;
        return std::max(20.0 * std::log10(magnitude), kFloorDecibels);
    }

    friend bool operator==(const design_t&, const design_t&) = default;
};

using exchange_t = TripleBuffer<design_t>;

// The sections in float, direct form I: the history of each point of the chain (its input and
// every section's output) per channel. The structure never changes, so a new chain can take
// over an old one's history as it is.
class chain_t {
public:
    void Load(const design_t& design, int count) {
        count_ = count;
        for (int b = 0; b < count; ++b) {
            const Biquad& s = design.sections[std::size_t(b)];
            coefficients_[std::size_t(b)] = {float(s.b0), float(s.b1), float(s.b2), float(s.a1),
                                             float(s.a2)};
        }
        gain_ = float(design.gain);
        design_ = design;
    }
    const design_t& GetDesign() const { return design_; }

    void Clear() { history_ = {}; }
    void Inherit(const chain_t& from) { history_ = from.history_; }

    void Run(const float* in, float* out, std::size_t channel, std::size_t frames) {
        auto& h = history_[channel];
        for (std::size_t i = 0; i < frames; ++i) {
            float x = in[i];
            float inZ1 = h[0][0];
            float inZ2 = h[0][1];
            h[0][0] = x;
            h[0][1] = inZ1;
            for (int b = 0; b < count_; ++b) {
                const auto& c = coefficients_[std::size_t(b)];
                const float outZ1 = h[std::size_t(b) + 1][0];
                const float outZ2 = h[std::size_t(b) + 1][1];
                const float y = c[0] * x + c[1] * inZ1 + c[2] * inZ2 - c[3] * outZ1 - c[4] * outZ2;
                h[std::size_t(b) + 1][0] = y;
                h[std::size_t(b) + 1][1] = outZ1;
                x = y;
                inZ1 = outZ1;
                inZ2 = outZ2;
            }
            out[i] = x * gain_;
        }
        // Flush what would turn denormal; clear what ran away (an input that is no number).
        for (int p = 0; p <= count_; ++p) {
            for (float& v : h[std::size_t(p)]) {
                const float magnitude = std::abs(v);
                if (!(magnitude < kHuge)) {
                    h = {};
                    return;
                }
                if (magnitude < kTiny)
                    v = 0.0f;
            }
        }
    }

private:
    int count_ = 0;
    std::array<std::array<float, 5>, GraphicEQ::kMaxBands> coefficients_{};
    float gain_ = 1.0f;
    design_t design_;
    std::array<std::array<std::array<float, 2>, GraphicEQ::kMaxBands + 1>, kMaxChannels> history_{};
};

} // namespace

struct GraphicEQ::state_t {
    state_t(double sampleRate, int bandCount)
        : count(bandCount),
          fade(std::max<std::size_t>(1, std::size_t(std::lround(kCrossfadeSeconds * sampleRate)))),
          scratch(2 * kChunk) {
        for (std::size_t i = 0; i < fade.size(); ++i)
            fade[i] = float(
                0.5 - 0.5 * std::cos(std::numbers::pi * (double(i) + 0.5) / double(fade.size())));
        for (chain_t& chain : chains)
            chain.Load(published, count);
    }

    void TakeOver() {
        const design_t* design = exchange.Take();
        if (!design || *design == chains[current].GetDesign())
            return;
        chain_t& coming = chains[1 - current];
        coming.Load(*design, count);
        coming.Inherit(chains[current]);
        fading = true;
        fadeAt = 0;
    }

    int count;
    mutable std::mutex mutex; // main side
    design_t published;
    exchange_t exchange;

    // The process thread's.
    std::array<chain_t, 2> chains;
    std::size_t current = 0;
    bool fading = false;
    std::size_t fadeAt = 0;
    std::vector<float> fade; // the coming chain's weight, sample by sample
    std::vector<float> scratch;
};

GraphicEQ::GraphicEQ(int bandCount, float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(bandCount), sampleRate, channelCount), bandCount_(bandCount),
      state_(std::make_unique<state_t>(sampleRate, bandCount)) {
    Rebuild();
    Reset();
}

GraphicEQ::~GraphicEQ() = default;

std::string GraphicEQ::NominalLabel(int bandCount, int band) {
    if (band < 0 || band >= bandCount)
        return {};
    switch (bandCount) {
    case 10: return kOctaveLabels[band];
    case 20: return kHalfOctaveLabels[band];
    case 30: return kThirdOctaveLabels[band];
    default: return {};
    }
}

double GraphicEQ::GetBandCentre(int band) const {
    const double exact =
        1000.0 * std::exp2(double(band - KiloIndex(bandCount_)) / double(PerOctave(bandCount_)));
    return std::min(exact, kHighestCentre * GetSampleRate());
}

void GraphicEQ::UpdateFromParameters() {
    Rebuild();
}

// The quality of band `band` for `octaves` between its half-gain frequencies. The bilinear
// transform narrows bands towards Nyquist; the analog band is widened by w0 / sin(w0) so that
// the digital band keeps its width in octaves.
double GraphicEQ::BandQ(int band, double octaves) const {
    const double w0 = 2.0 * std::numbers::pi * GetBandCentre(band) / GetSampleRate();
    return 0.5 / std::sinh(0.5 * std::numbers::ln2 * octaves * w0 / std::sin(w0));
}

// Neighbouring sections overlap, so each section's own gain differs from its fader: the gains
// are solved so that the chain's response at every centre is that centre's fader. The sections'
// dB responses add up and are nearly proportional to their gains, so a linear solve on the
// response per dB, refined twice against the true responses, lands within a small fraction of a
// dB.
std::vector<double> GraphicEQ::SectionGains(const std::vector<double>& targets,
                                            double octaves) const {
    const std::size_t n = targets.size();
    std::vector<double> gains(n, 0.0);
    if (std::all_of(targets.begin(), targets.end(), [](double t) { return t == 0.0; }))
        return gains;
    const double rate = GetSampleRate();
    const auto decibels = [&](std::size_t band, double gain, std::size_t at) {
        const Biquad s =
            Biquad::Peaking(GetBandCentre(int(band)), BandQ(int(band), octaves), gain, rate);
        return 20.0 * std::log10(std::abs(s.Response(GetBandCentre(int(at)), rate)));
    };
    std::vector<double> slope(n * n); // row: centre, column: band
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
            slope[i * n + j] = decibels(j, kProbeDecibels, i) / kProbeDecibels;
    std::vector<double> error = targets;
    for (int pass = 0; pass < 3; ++pass) {
        const std::vector<double> step = Solve(slope, error);
        for (std::size_t j = 0; j < n; ++j)
            gains[j] = std::clamp(gains[j] + step[j], -kSectionLimit, kSectionLimit);
        for (std::size_t i = 0; i < n; ++i) {
            double total = 0.0;
            for (std::size_t j = 0; j < n; ++j)
                total += decibels(j, gains[j], i);
            error[i] = targets[i] - total;
        }
    }
    return gains;
}

void GraphicEQ::Rebuild() {
    design_t design;
    if (GetAppliedValue(BypassIndex()) <= 0.5) {
        const double rate = GetSampleRate();
        const double range = GetAppliedValue(RangeIndex()) * kRangeSpan + kRangeLow;
        const double octaves =
            (GetAppliedValue(WidthIndex()) * kWidthSpan + kWidthLow) / PerOctave(bandCount_);
        std::vector<double> targets(std::size_t(bandCount_), 0.0);
        for (int b = 0; b < bandCount_; ++b)
            targets[std::size_t(b)] =
                std::clamp(GetAppliedValue(b) * 2.0 * kGainSpan - kGainSpan, -range, range);
        const std::vector<double> gains = SectionGains(targets, octaves);
        for (int b = 0; b < bandCount_; ++b) {
            const double decibels = gains[std::size_t(b)];
            if (std::abs(decibels) >= kUnityDecibels)
                design.sections[std::size_t(b)] =
                    Biquad::Peaking(GetBandCentre(b), BandQ(b, octaves), decibels, rate)
                        .RoundedToFloat();
        }
        const double master = GetAppliedValue(MasterGainIndex()) * 2.0 * kGainSpan - kGainSpan;
        if (std::abs(master) >= kUnityDecibels)
            design.gain = double(float(std::pow(10.0, master / 20.0)));
    }
    std::lock_guard lock(state_->mutex);
    if (design == state_->published)
        return;
    state_->published = design;
    state_->exchange.Publish(design);
}

double GraphicEQ::GetResponseDecibels(double hz) const {
    std::lock_guard lock(state_->mutex);
    return state_->published.ResponseDecibels(hz, GetSampleRate(), bandCount_);
}

void GraphicEQ::Reset() {
    state_t& s = *state_;
    if (s.fading) {
        s.current = 1 - s.current;
        s.fading = false;
    }
    if (const design_t* design = s.exchange.Take())
        s.chains[s.current].Load(*design, s.count);
    s.chains[s.current].Clear();
}

void GraphicEQ::Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                        std::size_t frameCount) {
    state_t& s = *state_;
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);
    float* heard = s.scratch.data();
    float* coming = s.scratch.data() + kChunk;
    std::size_t done = 0;
    while (done < frameCount) {
        if (!s.fading)
            s.TakeOver();
        std::size_t n = std::min(frameCount - done, kChunk);
        if (s.fading)
            n = std::min(n, s.fade.size() - s.fadeAt);
        for (std::size_t c = 0; c < channels; ++c) {
            float* out = outputs[c] + done;
            // A null input is silence: run the zeros through the output buffer.
            const float* in = inputs[c] ? inputs[c] + done : out;
            if (!inputs[c])
                std::fill(out, out + n, 0.0f);
            if (!s.fading) {
                s.chains[s.current].Run(in, out, c, n);
                continue;
            }
            s.chains[s.current].Run(in, heard, c, n);
            s.chains[1 - s.current].Run(in, coming, c, n);
            const float* weights = s.fade.data() + s.fadeAt;
            for (std::size_t i = 0; i < n; ++i)
                out[i] = heard[i] + weights[i] * (coming[i] - heard[i]);
        }
        if (s.fading) {
            s.fadeAt += n;
            if (s.fadeAt == s.fade.size()) {
                s.current = 1 - s.current;
                s.fading = false;
            }
        }
        done += n;
    }
}

} // namespace qoraudiofilters
