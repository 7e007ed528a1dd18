#include "audio/dsp/loudness_meter.hpp"

#include "audio/dsp/triple_buffer.hpp"

#include <ebur128.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <mutex>
#include <vector>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

constexpr int kMode = EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA |
                      EBUR128_MODE_TRUE_PEAK | EBUR128_MODE_HISTOGRAM;
// The rates the library measures at; outside them it refuses to start.
constexpr double kLowestRate = 16.0;
constexpr double kHighestRate = 2822400.0;
constexpr std::size_t kChunk = 1024; // frames interleaved at a time
constexpr double kAbsoluteGate = -70.0;

std::vector<ParameterDescriptor> MakeParameters() {
    std::vector<ParameterDescriptor> p(LoudnessMeter::kParameterCount);
    p[LoudnessMeter::kTargetLevel] = {"Target Loudness", -36.0f, -6.0f, 13.0f / 30.0f, "LUFS"};
    p[LoudnessMeter::kMaxTruePeak] = {"Maximum True Peak", -12.0f, 3.0f, 11.0f / 15.0f, "dBTP"};
    // The editor's popup lists the +9 scale first: its first row is real 0.
    p[LoudnessMeter::kScale] = {"Scale", 0.0f, 1.0f, 0.0f};
    p[LoudnessMeter::kUnit] = {"Unit", 0.0f, 3.0f, 0.0f};
    p[LoudnessMeter::kLowLevelBelow] = {"Low Level Below", -30.0f, -6.0f, 0.5f, "LU"};
    return p;
}

int ChannelFor(qormediatypes::AudioChannelLabel label) {
    using namespace qormediatypes;
    switch (label) {
    case kAudioChannelLabelLeft: return EBUR128_LEFT;
    case kAudioChannelLabelRight: return EBUR128_RIGHT;
    case kAudioChannelLabelLFE: return EBUR128_UNUSED;
    case kAudioChannelLabelLeftSurround: return EBUR128_LEFT_SURROUND;
    case kAudioChannelLabelRightSurround: return EBUR128_RIGHT_SURROUND;
    case kAudioChannelLabelLeftSideSurround: return EBUR128_Mp090;
    case kAudioChannelLabelRightSideSurround: return EBUR128_Mm090;
    case kAudioChannelLabelCenterSurround: return EBUR128_Mp180;
    case kAudioChannelLabelMono: return EBUR128_DUAL_MONO;
    default: // the centre and channels without a known place count once
        return EBUR128_CENTER;
    }
}

float Floored(double value) {
    if (!(value > double(LoudnessMeter::kFloor)))
        return LoudnessMeter::kFloor;
    return float(std::min(value, double(FLT_MAX)));
}

// One writer; readers take turns under a mutex, so the buffer's one reader is whoever holds it.
class values_exchange_t {
public:
    void Publish(const LoudnessMeterValues& values) { buffer_.Publish(values); }

    LoudnessMeterValues Read() {
        std::lock_guard lock(mutex_);
        buffer_.Take();
        return buffer_.Current();
    }

private:
    TripleBuffer<LoudnessMeterValues> buffer_;
    std::mutex mutex_;
};

} // namespace

struct LoudnessMeter::state_t {
    state_t(double sampleRate, std::vector<int> map)
        : rate(std::isfinite(sampleRate) && sampleRate >= kLowestRate && sampleRate <= kHighestRate
                   ? static_cast<unsigned long>(std::lround(sampleRate))
                   : 0),
          channelMap(std::move(map)), interleaved(kChunk * channelMap.size()) {
        // The library's own counts: steps of a tenth of a second, rounded.
        step = std::max<std::uint64_t>(1, (rate + 5) / 10);
        shortTermFrames = 30 * step;
        rangeStepFrames = 10 * step;
        if (rate == 0)
            return;
        active = NewMeasurement();
        spare = NewMeasurement();
        spareFresh.store(spare != nullptr, std::memory_order_release);
        measuring = active != nullptr;
    }

    ~state_t() {
        if (active)
            ebur128_destroy(&active);
        if (spare)
            ebur128_destroy(&spare);
    }

    // The library's start rewrites its shared tables while other measurements may read them:
    // harmless, as it writes the same numbers every time.
    ebur128_state* NewMeasurement() const {
        ebur128_state* st = ebur128_init(unsigned(channelMap.size()), rate, kMode);
        if (!st)
            return nullptr;
        for (std::size_t c = 0; c < channelMap.size(); ++c)
            ebur128_set_channel(st, unsigned(c), channelMap[c]);
        return st;
    }

    // The process thread: swaps the fresh spare in, if there is one.
    void TakeSpare() {
        if (!spareFresh.load(std::memory_order_acquire))
            return;
        std::swap(active, spare);
        spareFresh.store(false, std::memory_order_release);
        waiting = false;
        frames = 0;
        rangeValid = false;
        maxShortTerm = -HUGE_VAL;
        slow = LoudnessMeterValues{};
    }

    void Measure(const float* const* inputs, std::size_t given, std::size_t frameCount) {
        if (waiting)
            TakeSpare();
        if (!active || waiting || frameCount == 0)
            return;
        const std::size_t channels = channelMap.size();
        for (std::size_t done = 0; done < frameCount;) {
            // Chunks end at the library's steps, where its blocks close.
            const std::size_t n = std::min<std::size_t>(
                {frameCount - done, kChunk, std::size_t(step - frames % step)});
            for (std::size_t c = 0; c < channels; ++c) {
                const float* from = c < given && inputs[c] ? inputs[c] + done : nullptr;
                for (std::size_t i = 0; i < n; ++i) {
                    const float x = from ? from[i] : 0.0f;
                    interleaved[i * channels + c] = std::isfinite(x) ? x : 0.0f;
                }
            }
            ebur128_add_frames_float(active, interleaved.data(), n);
            frames += n;
            done += n;
            if (frames % step == 0)
                Step();
        }
        Publish();
    }

    // At a step: the readings that change only there. The short-term reading costs a sum over
    // its 3 s, too much for every block; the integrated loudness and the range change only as
    // blocks close.
    void Step() {
        double value = -HUGE_VAL;
        slow.shortTermValid = frames >= shortTermFrames;
        if (ebur128_loudness_shortterm(active, &value) == EBUR128_SUCCESS) {
            slow.shortTerm = Floored(value);
            if (slow.shortTermValid && value > maxShortTerm)
                maxShortTerm = value;
            // The range takes a 3 s block every second from the third on, if above the gate.
            if (slow.shortTermValid && (frames - shortTermFrames) % rangeStepFrames == 0 &&
                value >= kAbsoluteGate)
                rangeValid = true;
        }
        slow.maxShortTerm = Floored(maxShortTerm);
        value = -HUGE_VAL;
        slow.integratedValid =
            ebur128_loudness_global(active, &value) == EBUR128_SUCCESS && std::isfinite(value);
        slow.integrated = slow.integratedValid ? Floored(value) : LoudnessMeter::kFloor;
        value = 0.0;
        slow.rangeValid =
            rangeValid && ebur128_loudness_range(active, &value) == EBUR128_SUCCESS && value >= 0.0;
        slow.loudnessRange = slow.rangeValid ? float(std::min(value, double(FLT_MAX))) : 0.0f;
    }

    void Publish() {
        LoudnessMeterValues v = slow;
        double value = -HUGE_VAL;
        if (ebur128_loudness_momentary(active, &value) == EBUR128_SUCCESS)
            v.momentary = Floored(value);
        double peak = 0.0;
        for (std::size_t c = 0; c < channelMap.size(); ++c) {
            value = 0.0;
            if (ebur128_true_peak(active, unsigned(c), &value) == EBUR128_SUCCESS && value > peak)
                peak = value;
        }
        v.truePeak = Floored(20.0 * std::log10(peak));
        values.Publish(v);
    }

    // Fixed at the start.
    unsigned long rate;
    std::vector<int> channelMap;
    std::uint64_t step = 0;
    std::uint64_t shortTermFrames = 0;
    std::uint64_t rangeStepFrames = 0;
    bool measuring = false;

    // The spare belongs to the process thread while `spareFresh` is true, to the main side
    // (under `spareMutex`) while it is false.
    std::mutex spareMutex;
    ebur128_state* spare = nullptr;
    std::atomic<bool> spareFresh{false};

    // The process thread's.
    ebur128_state* active = nullptr;
    bool waiting = false;     // a reset found no fresh spare
    std::uint64_t frames = 0; // measured since the reset
    bool rangeValid = false;
    double maxShortTerm = -HUGE_VAL;
    LoudnessMeterValues slow; // as of the last step
    std::vector<float> interleaved;

    mutable values_exchange_t values;
};

LoudnessMeter::LoudnessMeter(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount) {
    const std::vector<qormediatypes::AudioBusDescription> buses = GetInputBuses();
    std::vector<int> map;
    for (qormediatypes::AudioChannelLabel label : buses.front().channelLabels)
        map.push_back(ChannelFor(label));
    state_ = std::make_unique<state_t>(double(GetSampleRate()), std::move(map));
}

LoudnessMeter::~LoudnessMeter() = default;

LoudnessMeterValues LoudnessMeter::GetLoudnessMeterValues() const {
    return state_->values.Read();
}

bool LoudnessMeter::IsMeasuring() const {
    return state_->measuring;
}

void LoudnessMeter::ResetOnProcessThread() {
    state_t& s = *state_;
    if (!s.waiting && s.frames == 0)
        return; // nothing measured since the start
    s.waiting = true;
    s.values.Publish(LoudnessMeterValues{});
    s.TakeSpare();
}

void LoudnessMeter::PrepareNextReset() {
    state_t& s = *state_;
    std::lock_guard lock(s.spareMutex);
    if (s.rate == 0 || s.spareFresh.load(std::memory_order_acquire))
        return;
    if (s.spare)
        ebur128_destroy(&s.spare);
    s.spare = s.NewMeasurement();
    if (s.spare)
        s.spareFresh.store(true, std::memory_order_release);
}

void LoudnessMeter::Process(const float* const* inputs, float* const* outputs,
                            std::size_t channelCount, std::size_t frameCount) {
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);
    for (std::size_t c = 0; c < channels; ++c) {
        if (!inputs[c])
            std::fill_n(outputs[c], frameCount, 0.0f);
        else if (outputs[c] != inputs[c])
            std::copy_n(inputs[c], frameCount, outputs[c]);
    }
    // The outputs hold the input now, whether or not they are the same buffers.
    state_->Measure(outputs, channels, frameCount);
}

void LoudnessMeter::Reset() {
    ResetOnProcessThread();
}

void LoudnessMeter::UpdateFromParameters() {
    PrepareNextReset();
}

} // namespace qoraudiofilters
