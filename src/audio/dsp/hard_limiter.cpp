#include "audio/dsp/hard_limiter.hpp"

#include "audio/dsp/dynamics_toolkit.hpp"

#include <algorithm>
#include <cmath>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;

namespace {

// Within a float step of 0 dB the input gain is exactly unity, so a quiet signal passes as it is.
constexpr double kUnityDecibels = 1e-5;

std::vector<ParameterDescriptor> MakeParameters() {
    std::vector<ParameterDescriptor> p(HardLimiter::kParameterCount);
    p[HardLimiter::kInputGain] = {"Input Gain", -24.0f, 24.0f, 0.5f, "dB"};
    p[HardLimiter::kCeiling] = {"Ceiling", -24.0f, 0.0f, float(23.9 / 24.0), "dB"};
    p[HardLimiter::kRelease] = {"Release", 1.0f, 1000.0f, float(99.0 / 999.0), "ms"};
    p[HardLimiter::kLookAhead] = {"Look-Ahead", 0.0f, float(HardLimiter::kMaxLookAheadMilliseconds),
                                  0.25f, "ms"};
    p[HardLimiter::kLinkChannels] = {"Link Channels", 0.0f, 1.0f, 1.0f};
    p[HardLimiter::kAutoRelease] = {"Auto Release", 0.0f, 1.0f, 0.0f};
    p[HardLimiter::kSoftKnee] = {"Soft Knee", 0.0f, 1.0f, 0.0f};
    return p;
}

std::size_t Samples(double milliseconds, double sampleRate) {
    return std::size_t(std::lround(milliseconds * sampleRate / 1000.0));
}

} // namespace

HardLimiter::HardLimiter(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount),
      limiter_(std::make_unique<dynamics::LookAheadLimiter>(
          Samples(kMaxLookAheadMilliseconds, GetSampleRate()), GetSampleRate())) {
    UpdateFromParameters();
    Apply();
}

HardLimiter::~HardLimiter() = default;

double HardLimiter::GetPlainSetting(int index) const {
    return settings_.at(std::size_t(index)).load(std::memory_order_acquire);
}

void HardLimiter::Decode(int index) {
    double plain = GetAppliedPlainValue(index);
    if (index >= kLinkChannels)
        plain = GetAppliedValue(index) > 0.5 ? 1.0 : 0.0;
    settings_[std::size_t(index)].store(plain, std::memory_order_release);
    generation_.fetch_add(1, std::memory_order_acq_rel);
}

void HardLimiter::ApplyParameter(int index) {
    Decode(index);
}

void HardLimiter::UpdateFromParameters() {
    for (int i = 0; i < kParameterCount; ++i)
        Decode(i);
}

std::size_t HardLimiter::GetLatencySamples() const {
    return Samples(GetPlainSetting(kLookAhead), GetSampleRate());
}

// The process thread: the newest settings, once per block.
void HardLimiter::Apply() {
    const unsigned int generation = generation_.load(std::memory_order_acquire);
    if (generation == applied_)
        return;
    applied_ = generation;
    const double inputDb = GetPlainSetting(kInputGain);
    inputGain_ = std::abs(inputDb) < kUnityDecibels ? 1.0 : dynamics::LinearFromDecibels(inputDb);
    limiter_->SetCeiling(GetPlainSetting(kCeiling));
    limiter_->SetRelease(GetPlainSetting(kRelease));
    limiter_->SetLookAhead(Samples(GetPlainSetting(kLookAhead), GetSampleRate()));
    limiter_->SetLinked(GetPlainSetting(kLinkChannels) > 0.5);
    limiter_->SetAutoRelease(GetPlainSetting(kAutoRelease) > 0.5);
    limiter_->SetKnee(GetPlainSetting(kSoftKnee) > 0.5 ? kSoftKneeDecibels : 0.0);
}

void HardLimiter::Reset() {
    Apply();
    limiter_->Reset();
}

void HardLimiter::Process(const float* const* inputs, float* const* outputs,
                          std::size_t channelCount, std::size_t frameCount) {
    Apply();
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);
    for (std::size_t c = 0; c < channels; ++c) {
        if (!inputs[c])
            std::fill_n(outputs[c], frameCount, 0.0f);
        else if (inputGain_ != 1.0)
            for (std::size_t i = 0; i < frameCount; ++i)
                outputs[c][i] = float(double(inputs[c][i]) * inputGain_);
        else if (outputs[c] != inputs[c])
            std::copy_n(inputs[c], frameCount, outputs[c]);
    }
    limiter_->Process(outputs, channels, frameCount);
    lastGain_.store(limiter_->GetLastGain(), std::memory_order_relaxed);
}

} // namespace qoraudiofilters
