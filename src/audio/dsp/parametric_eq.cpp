#include "audio/dsp/parametric_eq.hpp"

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

namespace {

// Positions in the chain, in signal order; the passes take up to four sections each.
constexpr int kHighPassSlot = 0;
constexpr int kLowShelfSlot = 4;
constexpr int kFirstBandSlot = 5;
constexpr int kHighShelfSlot = 10;
constexpr int kLowPassSlot = 11;
constexpr int kSlotCount = 15;

constexpr std::size_t kMaxChannels = 8;
constexpr std::size_t kChunk = 256;

constexpr double kLowestFrequency = 20.0;
constexpr double kHighestFrequency = 0.49; // of the rate
constexpr double kQLow = 0.0001;
constexpr double kQSpan = 9999.9999;
constexpr double kQHigh = kQLow + kQSpan;
// The nearest float to the normalised 0 dB of the master gain decodes 3e-6 dB off; within a
// float step of 0 dB the master is exactly unity, so the defaults pass the signal untouched.
constexpr double kUnityDecibels = 1e-5;
constexpr double kFloorDecibels = -400.0;
constexpr double kDefaultBandHz[ParametricEQ::kBandCount] = {200, 500, 1000, 2000, 5000};

// State below this is silence, flushed before it turns denormal; above it something ran away
// (or a non-number came in), and the state is cleared.
constexpr double kTiny = 1e-30;
constexpr double kHuge = 1e30;

float NormalisedFrequency(double hz, double nyquist) {
    return nyquist > kLowestFrequency
               ? float(std::clamp((hz - kLowestFrequency) / (nyquist - kLowestFrequency), 0.0, 1.0))
               : 0.0f;
}

std::vector<ParameterDescriptor> MakeParameters(float sampleRate) {
    const double nyquist = 0.5 * double(sampleRate);
    const auto frequency = [&](std::string name, double hz) {
        return ParameterDescriptor{std::move(name), float(kLowestFrequency), float(nyquist),
                                   NormalisedFrequency(hz, nyquist), "Hz"};
    };
    const auto gain = [](std::string name) {
        return ParameterDescriptor{std::move(name), -48.0f, 48.0f, 0.5f, "dB"};
    };
    const auto toggle = [](std::string name, bool on) {
        return ParameterDescriptor{std::move(name), 0.0f, 1.0f, on ? 1.0f : 0.0f};
    };
    const auto slope = [](std::string name) {
        return ParameterDescriptor{std::move(name), 0.0f, 60.0f, 0.2f, "dB/oct"}; // 12 dB/oct
    };

    std::vector<ParameterDescriptor> p(ParametricEQ::kParameterCount);
    p[ParametricEQ::kLowShelfFrequency] = frequency("Low Shelf Frequency", 100.0);
    p[ParametricEQ::kLowShelfGain] = gain("Low Shelf Gain");
    p[ParametricEQ::kHighShelfFrequency] = frequency("High Shelf Frequency", 10000.0);
    p[ParametricEQ::kHighShelfGain] = gain("High Shelf Gain");
    for (int b = 0; b < ParametricEQ::kBandCount; ++b) {
        const std::string band = "Band " + std::to_string(b + 1);
        const double hz = kDefaultBandHz[b];
        p[std::size_t(ParametricEQ::BandFrequencyIndex(b))] = frequency(band + " Frequency", hz);
        p[std::size_t(ParametricEQ::BandQIndex(b))] = {band + " Q", float(kQLow), float(kQHigh),
                                                       float((2.0 - kQLow) / kQSpan)};
        p[std::size_t(ParametricEQ::BandGainIndex(b))] = gain(band + " Gain");
        p[std::size_t(ParametricEQ::BandEnableIndex(b))] = toggle(band + " Enable", true);
        p[std::size_t(ParametricEQ::BandWidthIndex(b))] = {
            band + " Width", float(kQLow), float(kQHigh), float((0.5 * hz - kQLow) / kQSpan), "Hz"};
    }
    p[ParametricEQ::kMasterGain] = {"Master Gain", -96.0f, 48.0f, float(96.0 / 144.0), "dB"};
    p[ParametricEQ::kConstantQ] = toggle("Constant Q", true);
    p[ParametricEQ::kLowShelfSecondOrder] = toggle("Low Shelf Second Order", true);
    p[ParametricEQ::kHighShelfSecondOrder] = toggle("High Shelf Second Order", true);
    p[ParametricEQ::kUltraQuiet] = toggle("Ultra-Quiet", false);
    p[ParametricEQ::kLowShelfEnable] = toggle("Low Shelf Enable", true);
    p[ParametricEQ::kHighShelfEnable] = toggle("High Shelf Enable", true);
    p[31] = toggle("Unused 31", false);
    p[ParametricEQ::kHighPassEnable] = toggle("High Pass Enable", false);
    p[ParametricEQ::kHighPassFrequency] = frequency("High Pass Frequency", 30.0);
    p[ParametricEQ::kHighPassSlope] = slope("High Pass Slope");
    p[ParametricEQ::kLowPassEnable] = toggle("Low Pass Enable", false);
    p[ParametricEQ::kLowPassFrequency] =
        frequency("Low Pass Frequency", std::min(18000.0, 0.9 * nyquist));
    p[ParametricEQ::kLowPassSlope] = slope("Low Pass Slope");
    p[43] = toggle("Unused 43", false);
    p[ParametricEQ::kLowFilterRange] = toggle("30 dB Range", false);
    return p;
}

// The stored values in plain units, by the rules of the editor's sheet.
class decoder_t {
public:
    explicit decoder_t(const ParametricEQ& eq)
        : eq_(eq), rate_(eq.GetSampleRate()), nyquist_(0.5 * rate_) {}

    double Value(int index) const { return eq_.GetAppliedValue(index); }
    bool On(int index) const { return Value(index) > 0.5; }
    double Frequency(int index) const {
        const double hz = Value(index) * (nyquist_ - kLowestFrequency) + kLowestFrequency;
        return std::clamp(hz, 1e-6 * rate_, kHighestFrequency * rate_);
    }
    double Gain(int index) const { return Value(index) * 96.0 - 48.0; }
    double Q(int index) const { return Value(index) * kQSpan + kQLow; }
    double MasterGain() const {
        const double decibels = Value(ParametricEQ::kMasterGain) * 144.0 - 96.0;
        return std::abs(decibels) < kUnityDecibels ? 1.0 : std::pow(10.0, decibels / 20.0);
    }
    int Order(int index) const {
        return int(
            std::clamp(std::lround(Value(index) * 10.0), 1L, long(ParametricEQ::kMaxPassOrder)));
    }
    double Rate() const { return rate_; }

private:
    const ParametricEQ& eq_;
    double rate_;
    double nyquist_;
};

// A chain as plain data: the sections in signal order with their positions, and the master
// gain. Without Ultra-Quiet the coefficients are those rounded to float that the audio uses.
struct design_t {
    int count = 0;
    std::array<int, kSlotCount> slots{};
    std::array<Biquad, kSlotCount> sections{};
    double gain = 1.0;
    bool precise = false;

    static design_t FromParameters(const ParametricEQ& eq) {
        const decoder_t d(eq);
        const double rate = d.Rate();
        design_t design;
        design.precise = d.On(ParametricEQ::kUltraQuiet);
        design.gain = d.MasterGain();
        if (!design.precise)
            design.gain = double(float(design.gain));

        const auto pass = [&](bool high, int slot, int frequency, int slope) {
            const int order = d.Order(slope);
            const double hz = d.Frequency(frequency);
            for (int k = 0; k < order / 2; ++k) {
                const double q = Biquad::ButterworthQ(order, k);
                design.Add(slot + k,
                           high ? Biquad::HighPass(hz, q, rate) : Biquad::LowPass(hz, q, rate));
            }
            if (order % 2 != 0)
                design.Add(slot + order / 2, high ? Biquad::FirstOrderHighPass(hz, rate)
                                                  : Biquad::FirstOrderLowPass(hz, rate));
        };
        if (d.On(ParametricEQ::kHighPassEnable))
            pass(true, kHighPassSlot, ParametricEQ::kHighPassFrequency,
                 ParametricEQ::kHighPassSlope);
        if (d.On(ParametricEQ::kLowShelfEnable))
            design.Add(kLowShelfSlot,
                       Biquad::LowShelf(d.Frequency(ParametricEQ::kLowShelfFrequency),
                                        d.Gain(ParametricEQ::kLowShelfGain), rate,
                                        d.On(ParametricEQ::kLowShelfSecondOrder)));
        for (int b = 0; b < ParametricEQ::kBandCount; ++b) {
            if (!d.On(ParametricEQ::BandEnableIndex(b)))
                continue;
            const double hz = d.Frequency(ParametricEQ::BandFrequencyIndex(b));
            const double q = d.On(ParametricEQ::kConstantQ)
                                 ? d.Q(ParametricEQ::BandQIndex(b))
                                 : hz / d.Q(ParametricEQ::BandWidthIndex(b));
            design.Add(kFirstBandSlot + b,
                       Biquad::Peaking(hz, std::clamp(q, kQLow, kQHigh),
                                       d.Gain(ParametricEQ::BandGainIndex(b)), rate));
        }
        if (d.On(ParametricEQ::kHighShelfEnable))
            design.Add(kHighShelfSlot,
                       Biquad::HighShelf(d.Frequency(ParametricEQ::kHighShelfFrequency),
                                         d.Gain(ParametricEQ::kHighShelfGain), rate,
                                         d.On(ParametricEQ::kHighShelfSecondOrder)));
        if (d.On(ParametricEQ::kLowPassEnable))
            pass(false, kLowPassSlot, ParametricEQ::kLowPassFrequency, ParametricEQ::kLowPassSlope);
        return design;
    }

    void Add(int slot, const Biquad& section) {
        const Biquad used = precise ? section : section.RoundedToFloat();
        if (used.IsIdentity())
            return;
        slots[std::size_t(count)] = slot;
        sections[std::size_t(count)] = used;
        ++count;
    }

    double ResponseDecibels(double hz, double sampleRate) const {
        double magnitude = std::abs(gain);
        for (int k = 0; k < count; ++k)
            magnitude *= std::abs(sections[std::size_t(k)].Response(hz, sampleRate));
        if (std::isnan(magnitude))
            return magnitude;
        return std::max(20.0 * std::log10(magnitude), kFloorDecibels);
    }

    friend bool operator==(const design_t&, const design_t&) = default;
};

using exchange_t = TripleBuffer<design_t>;

template <class T>
struct lanes_t;
template <>
struct lanes_t<float> {
    typedef float vector_t __attribute__((vector_size(16)));
};
template <>
struct lanes_t<double> {
    typedef double vector_t __attribute__((vector_size(16)));
};

// The sections of a chain in precision T, run in direct form I on groups of channels side by
// side in the lanes of a vector. The signal history is kept once per point of the chain (its
// input and the output of each section), since each section's input is its predecessor's output.
template <class T>
class bank_t {
public:
    using vector_t = typename lanes_t<T>::vector_t;
    static constexpr std::size_t kLanes = sizeof(vector_t) / sizeof(T);
    static constexpr std::size_t kGroups = kMaxChannels / kLanes;

    void Load(const design_t& design) {
        count_ = design.count;
        for (int k = 0; k < count_; ++k) {
            const Biquad& s = design.sections[std::size_t(k)];
            sections_[std::size_t(k)] = {Splat(s.b0), Splat(s.b1), Splat(s.b2), Splat(s.a1),
                                         Splat(s.a2)};
        }
        gain_ = Splat(design.gain);
    }

    void Clear() {
        for (auto& group : history_)
            for (auto& point : group)
                point[0] = point[1] = vector_t{};
    }

    double Get(std::size_t channel, int point, int delay) const {
        return double(history_[channel / kLanes][point][delay][channel % kLanes]);
    }
    void Set(std::size_t channel, int point, int delay, double value) {
        history_[channel / kLanes][point][delay][channel % kLanes] = T(value);
    }

    // `in` and `out` hold a pointer for every lane of `groups` groups.
    void Run(const float* const* in, float* const* out, std::size_t groups, std::size_t frames) {
        for (std::size_t g = 0; g < groups; ++g) {
            const float* const* from = in + g * kLanes;
            float* const* to = out + g * kLanes;
            vector_t(*h)[2] = history_[g];
            for (std::size_t i = 0; i < frames; ++i) {
                vector_t x = Gather(from, i);
                vector_t inZ1 = h[0][0];
                vector_t inZ2 = h[0][1];
                h[0][0] = x;
                h[0][1] = inZ1;
                for (int k = 0; k < count_; ++k) {
                    const section_t& s = sections_[std::size_t(k)];
                    const vector_t outZ1 = h[k + 1][0];
                    const vector_t outZ2 = h[k + 1][1];
                    const vector_t y =
                        s.b0 * x + s.b1 * inZ1 + s.b2 * inZ2 - s.a1 * outZ1 - s.a2 * outZ2;
                    h[k + 1][0] = y;
                    h[k + 1][1] = outZ1;
                    x = y;
                    inZ1 = outZ1;
                    inZ2 = outZ2;
                }
                x *= gain_;
                for (std::size_t l = 0; l < kLanes; ++l)
                    to[l][i] = float(x[l]);
            }
        }
    }

    // Between chunks: flushes what would turn denormal, clears what ran away.
    void Settle(std::size_t groups) {
        for (std::size_t g = 0; g < groups; ++g) {
            for (int p = 0; p <= count_; ++p) {
                for (vector_t& v : history_[g][p]) {
                    for (std::size_t l = 0; l < kLanes; ++l) {
                        const double magnitude = std::abs(double(v[l]));
                        if (!(magnitude < kHuge)) {
                            Clear();
                            return;
                        }
                        if (magnitude < kTiny)
                            v[l] = T(0);
                    }
                }
            }
        }
    }

private:
    struct section_t {
        vector_t b0, b1, b2, a1, a2;
    };

    // Lanes put together in registers: written one by one they would go through memory, and
    // the wide load after narrow stores stalls.
    static vector_t Gather(const float* const* from, std::size_t i) {
        if constexpr (kLanes == 4)
            return vector_t{from[0][i], from[1][i], from[2][i], from[3][i]};
        else
            return vector_t{T(from[0][i]), T(from[1][i])};
    }

    static vector_t Splat(double value) {
        vector_t v{};
        for (std::size_t l = 0; l < kLanes; ++l)
            v[l] = T(value);
        return v;
    }

    int count_ = 0;
    std::array<section_t, kSlotCount> sections_{};
    vector_t gain_{};
    vector_t history_[kGroups][kSlotCount + 1][2]{};
};

// A design and the state that runs it, in the precision the design asks for.
class chain_t {
public:
    const design_t& GetDesign() const { return design_; }

    void Load(const design_t& design) {
        design_ = design;
        if (design.precise)
            double_.Load(design);
        else
            single_.Load(design);
    }

    void Clear() {
        single_.Clear();
        double_.Clear();
    }

    // Starts from the signal history of `from`: each point takes the old signal at the same
    // place in the chain, that is after the last old section at or before its position (a
    // section new to the chain starts as if it had always passed the signal unchanged).
    void Inherit(const chain_t& from, std::size_t channels) {
        const design_t& old = from.design_;
        std::array<int, kSlotCount> after{};
        for (int slot = 0, k = 0; slot < kSlotCount; ++slot) {
            while (k < old.count && old.slots[std::size_t(k)] <= slot)
                ++k;
            after[std::size_t(slot)] = k;
        }
        Clear();
        for (std::size_t c = 0; c < channels; ++c) {
            for (int delay = 0; delay < 2; ++delay) {
                Set(c, 0, delay, from.Get(c, 0, delay));
                for (int k = 0; k < design_.count; ++k)
                    Set(c, k + 1, delay,
                        from.Get(c, after[std::size_t(design_.slots[std::size_t(k)])], delay));
            }
        }
    }

    void Run(const float* const* in, float* const* out, std::size_t channels, std::size_t frames) {
        if (design_.precise)
            RunIn(double_, in, out, channels, frames);
        else
            RunIn(single_, in, out, channels, frames);
    }

private:
    template <class Bank>
    static void RunIn(Bank& bank, const float* const* in, float* const* out, std::size_t channels,
                      std::size_t frames) {
        const std::size_t groups = (channels + Bank::kLanes - 1) / Bank::kLanes;
        bank.Run(in, out, groups, frames);
        bank.Settle(groups);
    }

    double Get(std::size_t channel, int point, int delay) const {
        return design_.precise ? double_.Get(channel, point, delay)
                               : single_.Get(channel, point, delay);
    }
    void Set(std::size_t channel, int point, int delay, double value) {
        if (design_.precise)
            double_.Set(channel, point, delay, value);
        else
            single_.Set(channel, point, delay, value);
    }

    design_t design_;
    bank_t<float> single_;
    bank_t<double> double_;
};

} // namespace

struct ParametricEQ::state_t {
    explicit state_t(double sampleRate)
        : fade(std::max<std::size_t>(1, std::size_t(std::lround(kCrossfadeSeconds * sampleRate)))),
          zeros(kChunk, 0.0f), discard(kChunk), scratch(2 * kMaxChannels * kChunk) {
        for (std::size_t i = 0; i < fade.size(); ++i)
            fade[i] = float(
                0.5 - 0.5 * std::cos(std::numbers::pi * (double(i) + 0.5) / double(fade.size())));
        // The empty chain, until a design differs from it.
        for (chain_t& chain : chains)
            chain.Load(published);
    }

    // Takes over the newest design, unless it is the one heard; the new chain is faded in.
    void TakeOver(std::size_t channels) {
        const design_t* design = exchange.Take();
        if (!design || *design == chains[current].GetDesign())
            return;
        chain_t& coming = chains[1 - current];
        coming.Load(*design);
        coming.Inherit(chains[current], channels);
        fading = true;
        fadeAt = 0;
    }

    // Main side, under `mutex`.
    mutable std::mutex mutex;
    design_t published;

    exchange_t exchange;

    // The process thread's.
    std::array<chain_t, 2> chains;
    std::size_t current = 0;
    bool fading = false;
    std::size_t fadeAt = 0;
    std::vector<float> fade; // the weight of the coming chain, sample by sample
    std::vector<float> zeros;
    std::vector<float> discard;
    std::vector<float> scratch; // the two chains' outputs during a fade
};

ParametricEQ::ParametricEQ(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(sampleRate), sampleRate, channelCount),
      state_(std::make_unique<state_t>(sampleRate)),
      meter_(qorcore::MakeIntrusive<qoraudiotoolkit::SpectrumMeterDSP>(sampleRate,
                                                                       GetChannelCount())) {
    Rebuild();
    Reset();
}

ParametricEQ::~ParametricEQ() = default;

const qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>&
ParametricEQ::GetSpectrumMeter() const {
    return meter_;
}

void ParametricEQ::SetMeterActive(bool active) {
    meterActive_.store(active, std::memory_order_release);
}

bool ParametricEQ::IsMeterActive() const {
    return meterActive_.load(std::memory_order_acquire);
}

void ParametricEQ::UpdateFromParameters() {
    Rebuild();
}

void ParametricEQ::Rebuild() {
    std::lock_guard lock(state_->mutex);
    const design_t design = design_t::FromParameters(*this);
    if (design == state_->published)
        return;
    state_->published = design;
    state_->exchange.Publish(design);
}

int ParametricEQ::GetCustomFloatData(int index, int size, std::vector<float>& out) {
    if (index != 0 || size < 0 || size > 65536)
        return 0;
    if (size == 0) {
        out.clear();
        return 0;
    }
    design_t design;
    {
        std::lock_guard lock(state_->mutex);
        design = state_->published;
    }
    const double rate = GetSampleRate();
    const double span = 0.5 * rate / kLowestFrequency;
    out.resize(std::size_t(size));
    for (int i = 0; i < size; ++i) {
        const double hz = kLowestFrequency * std::pow(span, double(i) / double(size));
        out[std::size_t(i)] = float(design.ResponseDecibels(hz, rate));
    }
    return size;
}

double ParametricEQ::GetResponseDecibels(double hz) const {
    std::lock_guard lock(state_->mutex);
    return state_->published.ResponseDecibels(hz, GetSampleRate());
}

std::vector<Biquad> ParametricEQ::GetSections() const {
    std::lock_guard lock(state_->mutex);
    const design_t& design = state_->published;
    return {design.sections.begin(), design.sections.begin() + design.count};
}

double ParametricEQ::GetOutputGain() const {
    std::lock_guard lock(state_->mutex);
    return state_->published.gain;
}

void ParametricEQ::Reset() {
    state_t& s = *state_;
    if (s.fading) {
        s.current = 1 - s.current;
        s.fading = false;
    }
    // Nothing to fade from once the signal is forgotten.
    if (const design_t* design = s.exchange.Take())
        s.chains[s.current].Load(*design);
    s.chains[s.current].Clear();
}

void ParametricEQ::Process(const float* const* inputs, float* const* outputs,
                           std::size_t channelCount, std::size_t frameCount) {
    state_t& s = *state_;
    if (meterActive_.load(std::memory_order_acquire))
        meter_->ProcessBlock(inputs, channelCount, frameCount);
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);

    const float* in[kMaxChannels];
    float* out[kMaxChannels];
    float* heardOut[kMaxChannels];
    float* comingOut[kMaxChannels];
    for (std::size_t c = 0; c < kMaxChannels; ++c) {
        heardOut[c] = c < channels ? s.scratch.data() + c * kChunk : s.discard.data();
        comingOut[c] =
            c < channels ? s.scratch.data() + (kMaxChannels + c) * kChunk : s.discard.data();
    }
    std::size_t done = 0;
    while (done < frameCount) {
        if (!s.fading)
            s.TakeOver(GetChannelCount());
        std::size_t n = std::min(frameCount - done, kChunk);
        if (s.fading)
            n = std::min(n, s.fade.size() - s.fadeAt);
        for (std::size_t c = 0; c < kMaxChannels; ++c) {
            in[c] = c < channels && inputs[c] ? inputs[c] + done : s.zeros.data();
            out[c] = c < channels ? outputs[c] + done : s.discard.data();
        }
        chain_t& heard = s.chains[s.current];
        if (!s.fading) {
            heard.Run(in, out, channels, n);
        } else {
            chain_t& coming = s.chains[1 - s.current];
            heard.Run(in, heardOut, channels, n);
            coming.Run(in, comingOut, channels, n);
            const float* weights = s.fade.data() + s.fadeAt;
            for (std::size_t c = 0; c < channels; ++c)
                for (std::size_t i = 0; i < n; ++i)
                    out[c][i] = heardOut[c][i] + weights[i] * (comingOut[c][i] - heardOut[c][i]);
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
