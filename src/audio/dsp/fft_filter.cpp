#include "audio/dsp/fft_filter.hpp"

#include "audio/dsp/real_fft.hpp"
#include "audio/dsp/spline.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>

namespace qoraudiofilters {

using qoraudiotoolkit::WindowType;

namespace {

constexpr double kSizeSpan = 32736.0;
constexpr std::size_t kRetiredCapacity = 16;
constexpr float kDefaultPointLevel = 0.75f; // 0 dB on the fader law

std::vector<qoraudiofilterhost::ParameterDescriptor> MakeParameters(float sampleRate) {
    const float nyquist = 0.5f * sampleRate;
    std::vector<qoraudiofilterhost::ParameterDescriptor> parameters(FFTFilter::kParameterCount);
    parameters[FFTFilter::kSplineCurves] = {"Spline Curves", 0.0f, 1.0f, 0.0f};
    parameters[FFTFilter::kFFTSize] = {
        "FFT Size", float(FFTFilter::kMinFFTSize), float(FFTFilter::kMaxFFTSize),
        FFTFilter::EncodeFFTSize(FFTFilter::kDefaultFFTSize), "points"};
    parameters[FFTFilter::kWindowType] = {"Window", 0.0f, 8.0f,
                                          FFTFilter::EncodeWindowType(WindowType::kHann)};
    parameters[FFTFilter::kCurveWriteBracket] = {"Curve Write", 0.0f, 1.0f, 0.0f};
    parameters[FFTFilter::kScale] = {"Scale", 0.0f, 1.0f, 0.0f};
    parameters[FFTFilter::kVisibleRangeLow] = {"Visible Low", 0.0f, nyquist, 20.0f / nyquist, "Hz"};
    parameters[FFTFilter::kVisibleRangeHigh] = {"Visible High", 0.0f, nyquist, 1.0f, "Hz"};
    parameters[7] = {"Unused 7", 0.0f, 1.0f, 0.0f};
    parameters[8] = {"Unused 8", 0.0f, 1.0f, 0.0f};
    parameters[FFTFilter::kPointCount] = {"Point Count", 0.0f, float(FFTFilter::kMaxPoints),
                                          2.0f / float(FFTFilter::kMaxPoints)};
    for (int i = 0; i < FFTFilter::kMaxPoints; ++i) {
        const std::string number = std::to_string(i + 1);
        float x = 0.0f;
        if (i == 0)
            x = 20.0f / nyquist;
        else if (i == 1)
            x = 1.0f;
        parameters[std::size_t(FFTFilter::PointXIndex(i))] = {"Point " + number + " Frequency",
                                                              0.0f, nyquist, x, "Hz"};
        parameters[std::size_t(FFTFilter::PointYIndex(i))] = {"Point " + number + " Level", 0.0f,
                                                              1.0f, kDefaultPointLevel};
    }
    return parameters;
}

// Whether a quiet write of the parameter changes what is heard; the visible range does not.
bool ShapesSound(int index) {
    return index != FFTFilter::kVisibleRangeLow && index != FFTFilter::kVisibleRangeHigh &&
           index != 7 && index != 8;
}

} // namespace

// Bin gains for one size and window, and, when the size or window differ from the kernel before
// it, the blocks that run them.
struct FFTFilter::kernel_t {
    unsigned int size = 0;
    WindowType window = WindowType::kHann;
    std::vector<float> gains;
    std::unique_ptr<engine_t> engine;
};

// Overlapped blocks of one size and window for every channel. `pending` samples of the present
// hop have gone in (and out); at a full hop the block is transformed.
struct FFTFilter::engine_t {
    engine_t(unsigned int blockSize, WindowType windowType, std::size_t channels)
        : size(blockSize), hop(blockSize / 4), fft(blockSize) {
        window = qoraudiotoolkit::MakeWindow(windowType, size);
        synthesis.resize(size);
        // Each output sample is the sum of four overlapping blocks, each windowed twice;
        // dividing by the summed squares there makes the whole an identity for flat gains.
        // The inverse transform's factor of `size` goes in here too.
        for (std::size_t n = 0; n < size; ++n) {
            double squares = 0.0;
            for (std::size_t j = n % hop; j < size; j += hop)
                squares += double(window[j]) * window[j];
            synthesis[n] = squares > 0.0 ? float(window[n] / (squares * double(size))) : 0.0f;
        }
        input.assign(channels, std::vector<float>(size, 0.0f));
        output.assign(channels, std::vector<float>(size, 0.0f));
        ready.assign(channels, std::vector<float>(hop, 0.0f));
    }

    std::size_t Room() const { return hop - pending; }

    void Push(std::size_t channel, const float* source, std::size_t count) {
        float* to = input[channel].data() + (size - hop + pending);
        if (source)
            std::copy_n(source, count, to);
        else
            std::fill_n(to, count, 0.0f);
    }

    void Pull(std::size_t channel, float* to, std::size_t count) const {
        std::copy_n(ready[channel].data() + pending, count, to);
    }

    void Advance(std::size_t count, const std::vector<float>& gains) {
        pending += count;
        if (pending < hop)
            return;
        pending = 0;
        for (std::size_t c = 0; c < input.size(); ++c)
            Hop(c, gains);
    }

    void Hop(std::size_t channel, const std::vector<float>& gains) {
        std::vector<float>& in = input[channel];
        std::vector<float>& out = output[channel];
        float* time = fft.GetTimeData();
        for (std::size_t n = 0; n < size; ++n)
            time[n] = in[n] * window[n];
        fft.Forward();
        std::complex<float>* spectrum = fft.GetSpectrum();
        const std::size_t bins = fft.GetBinCount();
        for (std::size_t k = 0; k < bins; ++k)
            spectrum[k] *= gains[k];
        fft.Inverse();
        for (std::size_t n = 0; n < size; ++n)
            out[n] += time[n] * synthesis[n];
        std::copy_n(out.begin(), hop, ready[channel].begin());
        std::copy(out.begin() + std::ptrdiff_t(hop), out.end(), out.begin());
        std::fill(out.end() - std::ptrdiff_t(hop), out.end(), 0.0f);
        std::copy(in.begin() + std::ptrdiff_t(hop), in.end(), in.begin());
    }

    void Clear() {
        for (auto* buffers : {&input, &output, &ready})
            for (std::vector<float>& buffer : *buffers)
                std::fill(buffer.begin(), buffer.end(), 0.0f);
        pending = 0;
    }

    std::size_t size;
    std::size_t hop;
    std::vector<float> window;
    std::vector<float> synthesis;
    qoraudiotoolkit::real_fft_t fft;
    std::vector<std::vector<float>> input;
    std::vector<std::vector<float>> output;
    std::vector<std::vector<float>> ready;
    std::size_t pending = 0;
};

// What the process thread owns: the kernel heard, the one coming in, and the queue of kernels
// it is done with, emptied by the main side.
struct FFTFilter::process_state_t {
    enum class Phase { kSteady, kPriming, kFading };

    process_state_t(std::size_t channels, double sampleRate)
        : fadeLength(std::max<std::size_t>(1, std::size_t(kCrossfadeSeconds * sampleRate))) {
        const std::size_t largestHop = kMaxFFTSize / 4;
        current.assign(channels, std::vector<float>(largestHop, 0.0f));
        coming.assign(channels, std::vector<float>(largestHop, 0.0f));
    }

    bool Retire(kernel_t* kernel) {
        const std::size_t tail = retiredTail.load(std::memory_order_relaxed);
        const std::size_t next = (tail + 1) % kRetiredCapacity;
        if (next == retiredHead.load(std::memory_order_acquire))
            return false;
        retired[tail] = kernel;
        retiredTail.store(next, std::memory_order_release);
        return true;
    }

    std::size_t RetiredRoom() const {
        const std::size_t tail = retiredTail.load(std::memory_order_relaxed);
        const std::size_t head = retiredHead.load(std::memory_order_acquire);
        return kRetiredCapacity - 1 - (tail + kRetiredCapacity - head) % kRetiredCapacity;
    }

    kernel_t* heard = nullptr;
    kernel_t* incoming = nullptr;
    Phase phase = Phase::kSteady;
    std::size_t remaining = 0; // of the priming or the fade
    std::size_t fadeLength;
    std::vector<std::vector<float>> current; // per channel, a hop of output at most
    std::vector<std::vector<float>> coming;

    // The block size of the heard kernel, for the main side to read.
    std::atomic<std::size_t> latency{0};

    std::array<kernel_t*, kRetiredCapacity> retired{};
    std::atomic<std::size_t> retiredHead{0}; // main side
    std::atomic<std::size_t> retiredTail{0}; // process side
};

float FFTFilter::EncodeFFTSize(unsigned int size) {
    const unsigned int exact = DecodeFFTSize(float((double(size) - kMinFFTSize) / kSizeSpan));
    float value = float((double(exact) - kMinFFTSize) / kSizeSpan);
    // Nudge up until truncation, in float and in double, gives the size back.
    for (int guard = 0; guard < 16; ++guard) {
        const float inFloat = value * float(kSizeSpan) + float(kMinFFTSize);
        const double inDouble = double(value) * kSizeSpan + kMinFFTSize;
        if (unsigned(inFloat) >= exact && unsigned(inDouble) >= exact)
            break;
        value = std::nextafter(value, 2.0f);
    }
    return value;
}

unsigned int FFTFilter::DecodeFFTSize(float value) {
    if (std::isnan(value))
        return kDefaultFFTSize;
    const double size = double(value) * kSizeSpan + kMinFFTSize;
    if (!(size > kMinFFTSize))
        return kMinFFTSize;
    if (!(size < kMaxFFTSize))
        return kMaxFFTSize;
    return 1u << unsigned(std::lround(std::log2(size)));
}

float FFTFilter::EncodeWindowType(WindowType type) {
    return float(static_cast<unsigned int>(type)) * 0.125f;
}

WindowType FFTFilter::DecodeWindowType(float value) {
    if (std::isnan(value))
        return WindowType::kHann;
    const double index = std::clamp(std::trunc(double(value) * 8.0), 0.0, 7.0);
    return qoraudiotoolkit::WindowTypeFromIndex(unsigned(index));
}

FFTFilter::FFTFilter(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(sampleRate), sampleRate, channelCount),
      fader_(0.75, 15.0, 15.0),
      process_(std::make_unique<process_state_t>(GetChannelCount(), sampleRate)) {
    Rebuild();
    // The first kernel is heard at once; there is nothing to fade from.
    kernel_t* first = mailbox_.exchange(nullptr);
    process_->heard = first;
    process_->latency.store(first->size);
}

FFTFilter::~FFTFilter() {
    delete mailbox_.exchange(nullptr);
    delete process_->heard;
    delete process_->incoming;
    CollectRetired();
}

void FFTFilter::SetParameterValue(int index, float value) {
    ParameterStoreFilter::SetParameterValue(index, value);
    UpdateFromParameters();
}

void FFTFilter::SetParameterQuietly(int index, float value) {
    ParameterStoreFilter::SetParameterQuietly(index, value);
    if (ShapesSound(index))
        quietCount_.fetch_add(1, std::memory_order_acq_rel);
    UpdateFromParameters();
}

void FFTFilter::UpdateFromParameters() {
    if (IsStale()) {
        Rebuild();
        return;
    }
    std::lock_guard lock(mutex_);
    CollectRetired();
}

bool FFTFilter::IsStale() const {
    std::lock_guard lock(mutex_);
    return builtDirtyCount_ != GetParameterDirtyCount() ||
           builtQuietCount_ != quietCount_.load(std::memory_order_acquire);
}

void FFTFilter::Rebuild() {
    std::lock_guard lock(mutex_);
    // Taken before the values are read: a write that lands meanwhile leaves the filter stale.
    const int dirty = GetParameterDirtyCount();
    const unsigned int quiet = quietCount_.load(std::memory_order_acquire);
    if (GetParameterValue(kCurveWriteBracket) >= 0.5f)
        return;
    builtDirtyCount_ = dirty;
    builtQuietCount_ = quiet;

    const double sampleRate = GetSampleRate();
    const double nyquist = 0.5 * sampleRate;
    const bool splines = GetParameterValue(kSplineCurves) >= 0.5f;
    const bool logarithmic = !(GetParameterValue(kScale) >= 0.5f);
    const unsigned int size = DecodeFFTSize(GetParameterValue(kFFTSize));
    const WindowType window = DecodeWindowType(GetParameterValue(kWindowType));
    const float countValue = GetParameterValue(kPointCount);
    const int count =
        std::isnan(countValue)
            ? 0
            : int(std::clamp(std::trunc(double(countValue) * kMaxPoints), 0.0, double(kMaxPoints)));

    // The points in the space of the frequency scale, sorted, one per position.
    const auto place = [&](double hz) {
        return logarithmic ? std::log(std::max(hz, 1.0)) : hz;
    };
    std::vector<std::pair<double, double>> points;
    points.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i) {
        const float x = GetParameterValue(PointXIndex(i));
        const float y = GetParameterValue(PointYIndex(i));
        if (std::isnan(x) || std::isnan(y))
            continue;
        points.emplace_back(place(std::clamp(double(x), 0.0, 1.0) * nyquist),
                            std::clamp(double(y), 0.0, 1.0));
    }
    std::stable_sort(points.begin(), points.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<double> xs, ys;
    for (const auto& [x, y] : points) {
        // Of two points at one position the later one counts.
        if (!xs.empty() && !(x > xs.back())) {
            ys.back() = y;
            continue;
        }
        xs.push_back(x);
        ys.push_back(y);
    }

    auto kernel = std::make_unique<kernel_t>();
    kernel->size = size;
    kernel->window = window;
    kernel->gains.assign(size / 2 + 1, 1.0f);
    if (!xs.empty()) {
        const qoraudiotoolkit::Spline spline =
            splines ? qoraudiotoolkit::Spline(xs, ys) : qoraudiotoolkit::Spline();
        for (std::size_t k = 0; k < kernel->gains.size(); ++k) {
            const double at = place(double(k) * sampleRate / double(size));
            double y;
            if (splines) {
                y = spline.Evaluate(at);
            } else if (!(at > xs.front())) {
                y = ys.front();
            } else if (!(at < xs.back())) {
                y = ys.back();
            } else {
                const std::size_t i =
                    std::size_t(std::upper_bound(xs.begin(), xs.end(), at) - xs.begin());
                const double t = (at - xs[i - 1]) / (xs[i] - xs[i - 1]);
                y = ys[i - 1] + t * (ys[i] - ys[i - 1]);
            }
            const double decibels = fader_.GetDecibelValue(std::clamp(y, 0.0, 1.0));
            kernel->gains[k] = float(std::pow(10.0, decibels / 20.0));
        }
    }
    if (size != publishedSize_ || window != publishedWindow_)
        kernel->engine = std::make_unique<engine_t>(size, window, GetChannelCount());
    publishedSize_ = size;
    publishedWindow_ = window;
    publishedGains_ = kernel->gains;
    Publish(std::move(kernel));
    CollectRetired();
}

void FFTFilter::Publish(std::unique_ptr<kernel_t> kernel) {
    // Take back what the process thread has not taken yet; its blocks still fit the new gains
    // when those come without blocks of their own.
    std::unique_ptr<kernel_t> untaken(mailbox_.exchange(nullptr, std::memory_order_acq_rel));
    if (untaken && untaken->engine && !kernel->engine)
        kernel->engine = std::move(untaken->engine);
    mailbox_.store(kernel.release(), std::memory_order_release);
}

// Under `mutex_`, but in the destructor.
void FFTFilter::CollectRetired() {
    process_state_t& p = *process_;
    std::size_t head = p.retiredHead.load(std::memory_order_relaxed);
    while (head != p.retiredTail.load(std::memory_order_acquire)) {
        delete p.retired[head];
        p.retired[head] = nullptr;
        head = (head + 1) % kRetiredCapacity;
        p.retiredHead.store(head, std::memory_order_release);
    }
}

int FFTFilter::GetResponseCurve(int channel, int pointCount, std::vector<float>& out) {
    if (channel < 0 || std::size_t(channel) >= GetChannelCount() || pointCount < 1 ||
        pointCount > 65536)
        return 0;
    UpdateFromParameters();
    const double sampleRate = GetSampleRate();
    const double nyquist = 0.5 * sampleRate;
    const bool logarithmic = !(GetParameterValue(kScale) >= 0.5f);
    double low = double(GetParameterValue(kVisibleRangeLow)) * nyquist;
    double high = double(GetParameterValue(kVisibleRangeHigh)) * nyquist;
    if (!(low >= 0.0 && high <= nyquist && high > low)) {
        low = 20.0;
        high = nyquist;
    }
    if (logarithmic)
        low = std::max(low, std::min(1.0, 0.5 * high));
    std::lock_guard lock(mutex_);
    const std::vector<float>& gains = publishedGains_;
    const double binsPerHz = double(publishedSize_) / sampleRate;
    out.resize(std::size_t(pointCount));
    for (int i = 0; i < pointCount; ++i) {
        // Sample i sits where the graph draws it: i / pointCount across the axis.
        const double t = double(i) / double(pointCount);
        const double hz = logarithmic ? low * std::pow(high / low, t) : low + t * (high - low);
        const double at = std::clamp(hz * binsPerHz, 0.0, double(gains.size() - 1));
        const std::size_t k = std::min(std::size_t(at), gains.size() - 1);
        const double frac = at - double(k);
        const double gain =
            k + 1 < gains.size() ? gains[k] * (1.0 - frac) + gains[k + 1] * frac : gains[k];
        out[std::size_t(i)] = float(fader_.GetNormalizedValue(20.0 * std::log10(gain)));
    }
    return 1;
}

unsigned int FFTFilter::GetFFTSize() const {
    std::lock_guard lock(mutex_);
    return publishedSize_;
}

WindowType FFTFilter::GetWindowType() const {
    std::lock_guard lock(mutex_);
    return publishedWindow_;
}

std::vector<float> FFTFilter::GetBinGains() const {
    std::lock_guard lock(mutex_);
    return publishedGains_;
}

std::size_t FFTFilter::GetLatencySamples() const {
    return process_->latency.load(std::memory_order_acquire);
}

qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP>
FFTFilter::SwapSpectrumMeter(qorcore::IntrusivePtr<qoraudiotoolkit::SpectrumMeterDSP> meter) {
    meter_.swap(meter);
    return meter;
}

void FFTFilter::Reset() {
    process_state_t& p = *process_;
    if (p.incoming) {
        // Nothing to fade from once the signal is forgotten.
        if (!p.Retire(p.heard))
            return;
        p.heard = std::exchange(p.incoming, nullptr);
        p.phase = process_state_t::Phase::kSteady;
        p.latency.store(p.heard->size, std::memory_order_release);
    }
    p.heard->engine->Clear();
}

void FFTFilter::Process(const float* const* inputs, float* const* outputs, std::size_t channelCount,
                        std::size_t frameCount) {
    process_state_t& p = *process_;
    if (meter_)
        meter_->ProcessBlock(inputs, channelCount, frameCount);
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);

    std::size_t done = 0;
    while (done < frameCount) {
        // Take over new gains or blocks; two places in the queue of the retired are kept free
        // for what taking over and ending a fade may put there.
        if (p.phase != process_state_t::Phase::kFading && p.RetiredRoom() >= 2) {
            if (kernel_t* kernel = mailbox_.exchange(nullptr, std::memory_order_acq_rel)) {
                if (kernel->engine) {
                    if (p.incoming)
                        p.Retire(p.incoming);
                    p.incoming = kernel;
                    p.phase = process_state_t::Phase::kPriming;
                    // Until the new blocks have seen enough of the signal, they stay unheard.
                    p.remaining = 2 * std::size_t(kernel->size);
                } else {
                    kernel_t*& target = p.incoming ? p.incoming : p.heard;
                    kernel->engine = std::move(target->engine);
                    p.Retire(target);
                    target = kernel;
                }
            }
        }
        engine_t& heard = *p.heard->engine;
        engine_t* incoming = p.incoming ? p.incoming->engine.get() : nullptr;
        std::size_t chunk = std::min(frameCount - done, heard.Room());
        if (incoming)
            chunk = std::min({chunk, incoming->Room(), p.remaining});

        for (std::size_t c = 0; c < channels; ++c) {
            const float* source = inputs[c] ? inputs[c] + done : nullptr;
            heard.Push(c, source, chunk);
            if (incoming)
                incoming->Push(c, source, chunk);
        }
        for (std::size_t c = 0; c < channels; ++c) {
            float* to = outputs[c] + done;
            if (p.phase == process_state_t::Phase::kFading) {
                heard.Pull(c, p.current[c].data(), chunk);
                incoming->Pull(c, p.coming[c].data(), chunk);
                const std::size_t start = p.fadeLength - p.remaining;
                for (std::size_t i = 0; i < chunk; ++i) {
                    const double t = double(start + i) / double(p.fadeLength);
                    const float in = float(0.5 - 0.5 * std::cos(std::numbers::pi * t));
                    to[i] = p.current[c][i] * (1.0f - in) + p.coming[c][i] * in;
                }
            } else {
                heard.Pull(c, to, chunk);
            }
        }
        // Engines with fewer channels than the filter's never exist; channels not given here
        // keep silence in their blocks.
        for (std::size_t c = channels; c < GetChannelCount(); ++c) {
            heard.Push(c, nullptr, chunk);
            if (incoming)
                incoming->Push(c, nullptr, chunk);
        }
        heard.Advance(chunk, p.heard->gains);
        if (incoming)
            incoming->Advance(chunk, p.incoming->gains);
        done += chunk;

        if (incoming) {
            p.remaining -= chunk;
            if (p.remaining == 0) {
                if (p.phase == process_state_t::Phase::kPriming) {
                    p.phase = process_state_t::Phase::kFading;
                    p.remaining = p.fadeLength;
                } else {
                    p.Retire(p.heard);
                    p.heard = std::exchange(p.incoming, nullptr);
                    p.phase = process_state_t::Phase::kSteady;
                    p.latency.store(p.heard->size, std::memory_order_release);
                }
            }
        }
    }
}

} // namespace qoraudiofilters
