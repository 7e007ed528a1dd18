#include "audio/dsp/spectrum_meter.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace qoraudiofilters {

using qoraudiofilterhost::ParameterDescriptor;
using qoraudiotoolkit::SpectrumMeterDSP;
using qoraudiotoolkit::WindowType;

namespace {

// The mix is made and fed in chunks of this many frames.
constexpr std::size_t kChunk = 512;

constexpr unsigned int kDefaultSizeRow = 3; // 4096 points
constexpr unsigned int kDefaultWindowRow = 4;
constexpr double kDefaultOverlapPercent = 50.0;
constexpr double kDefaultWindowSizeMilliseconds = 500.0;
constexpr double kDefaultPeakHoldMilliseconds = 1000.0;

constexpr std::array<WindowType, SpectrumMeter::kWindowRows> kWindows{
    WindowType::kHamming,        WindowType::kBlackman, WindowType::kTriangular,
    WindowType::kKaiser140,      WindowType::kHann,     WindowType::kGaussian,
    WindowType::kBlackmanHarris, WindowType::kKaiser180};

std::vector<ParameterDescriptor> MakeParameters() {
    const auto toggle = [](std::string name, bool on) {
        return ParameterDescriptor{std::move(name), 0.0f, 1.0f, on ? 1.0f : 0.0f};
    };
    // Popups show a row per plain value, so their ranges start at 0.
    const auto rows = [](std::string name, int count, unsigned int row) {
        return ParameterDescriptor{std::move(name), 0.0f, float(count - 1),
                                   float(row) / float(count - 1)};
    };
    std::vector<ParameterDescriptor> p(SpectrumMeter::kParameterCount);
    p[SpectrumMeter::kFFTSize] = rows("FFT Size", SpectrumMeter::kFFTSizeRows, kDefaultSizeRow);
    p[SpectrumMeter::kSpectrumType] = rows("Spectrum Type", 3, 0);
    p[SpectrumMeter::kWindow] = rows("FFT Window", SpectrumMeter::kWindowRows, kDefaultWindowRow);
    p[SpectrumMeter::kOverlap] = {"Overlap", 0.0f, float(SpectrumMeter::kMaxOverlapPercent),
                                  float(kDefaultOverlapPercent / SpectrumMeter::kMaxOverlapPercent),
                                  "%"};
    p[SpectrumMeter::kWindowSize] = {
        "Window Size", 0.0f, float(SpectrumMeter::kMaxWindowSizeMilliseconds),
        float(kDefaultWindowSizeMilliseconds / SpectrumMeter::kMaxWindowSizeMilliseconds), "ms"};
    p[SpectrumMeter::kFlipChannelPhase] = toggle("Flip Channel Phase", false);
    p[SpectrumMeter::kPeakHoldTime] = {
        "Peak Hold Time", float(SpectrumMeter::kMinPeakHoldMilliseconds),
        float(SpectrumMeter::kMaxPeakHoldMilliseconds),
        float((kDefaultPeakHoldMilliseconds - SpectrumMeter::kMinPeakHoldMilliseconds) /
              (SpectrumMeter::kMaxPeakHoldMilliseconds - SpectrumMeter::kMinPeakHoldMilliseconds)),
        "ms"};
    p[SpectrumMeter::kFill] = toggle("Fill", true);
    p[SpectrumMeter::kShowPeakHold] = toggle("Show Peak Hold", true);
    p[SpectrumMeter::kLogScale] = toggle("Log Scale", true);
    return p;
}

unsigned int Row(double value, int count) {
    return unsigned(std::lround(value * double(count - 1)));
}

} // namespace

WindowType SpectrumMeter::WindowOfRow(unsigned int row) {
    return row < kWindows.size() ? kWindows[row] : WindowType::kHann;
}

SpectrumMeter::SpectrumMeter(float sampleRate, std::size_t channelCount)
    : ReferenceEffect(MakeParameters(), sampleRate, channelCount),
      meter_(qorcore::MakeIntrusive<SpectrumMeterDSP>(sampleRate, 1)), mix_(kChunk, 0.0f) {
    ApplySettings();
}

SpectrumMeter::~SpectrumMeter() = default;

const qorcore::IntrusivePtr<SpectrumMeterDSP>& SpectrumMeter::GetSpectrumMeter() const {
    return meter_;
}

void SpectrumMeter::SetMeterActive(bool active) {
    meterActive_.store(active, std::memory_order_release);
}

bool SpectrumMeter::IsMeterActive() const {
    return meterActive_.load(std::memory_order_acquire);
}

void SpectrumMeter::UpdateFromParameters() {
    ApplySettings();
}

double SpectrumMeter::Value(int index) const {
    return GetAppliedValue(index);
}

void SpectrumMeter::ApplySettings() {
    meter_->SetFFTSizeIndex(Row(Value(kFFTSize), kFFTSizeRows));
    meter_->SetSpectrumType(
        static_cast<qoraudiotoolkit::SpectrumType>(Row(Value(kSpectrumType), 3)));
    meter_->SetWindowType(WindowOfRow(Row(Value(kWindow), kWindowRows)));
    meter_->SetOverlap(Value(kOverlap) * kMaxOverlapPercent / 100.0);
    // An exponential average over half the window smooths as a plain one over the whole.
    meter_->SetAverageTime(Value(kWindowSize) * kMaxWindowSizeMilliseconds / 2000.0);
    flip_.store(Value(kFlipChannelPhase) >= 0.5, std::memory_order_release);
}

void SpectrumMeter::Reset() {
    meter_->Reset();
}

void SpectrumMeter::Process(const float* const* inputs, float* const* outputs,
                            std::size_t channelCount, std::size_t frameCount) {
    const std::size_t channels = PassExtraChannels(inputs, outputs, channelCount, frameCount);
    if (channels > 0 && meterActive_.load(std::memory_order_acquire)) {
        const bool flip = flip_.load(std::memory_order_acquire);
        const float share = 1.0f / float(channels);
        float* mix = mix_.data();
        for (std::size_t done = 0; done < frameCount; done += kChunk) {
            const std::size_t n = std::min(kChunk, frameCount - done);
            std::fill_n(mix, n, 0.0f);
            for (std::size_t c = 0; c < channels; ++c) {
                if (!inputs[c])
                    continue;
                const float gain = flip && c == 1 ? -share : share;
                const float* in = inputs[c] + done;
                for (std::size_t i = 0; i < n; ++i)
                    mix[i] += gain * in[i];
            }
            // A value that is no number would stay in the averages for good: it reads as silence.
            for (std::size_t i = 0; i < n; ++i)
                if (!std::isfinite(mix[i]))
                    mix[i] = 0.0f;
            const float* fed = mix;
            meter_->ProcessBlock(&fed, 1, n);
        }
    }
    for (std::size_t c = 0; c < channels; ++c) {
        if (!inputs[c])
            std::fill_n(outputs[c], frameCount, 0.0f);
        else if (outputs[c] != inputs[c])
            std::memmove(outputs[c], inputs[c], frameCount * sizeof(float));
    }
}

} // namespace qoraudiofilters
