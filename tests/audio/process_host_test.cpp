#include "audio/dsp/enable_spectrum_meter_message.hpp"
#include "audio/dsp/fft_filter.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/reference_effects.hpp"
#include "audio/host/test_signal_source.hpp"
#include "platform/core/main_thread_queue.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <thread>

using qafhost::ProcessHost;
using qafhost::TestSignalSource;
using qoraudiofilters::FFTFilter;

namespace {

constexpr float kRate = 48000.0f;

// Collects the host's output, channel 0.
struct Capture {
    std::mutex mutex;
    std::vector<float> samples;
    std::thread::id thread;
    ProcessHost::OutputTap Tap() {
        return [this](const float* const* channels, std::size_t, std::size_t frames) {
            std::lock_guard lock(mutex);
            thread = std::this_thread::get_id();
            samples.insert(samples.end(), channels[0], channels[0] + frames);
        };
    }
    std::vector<float> Take() {
        std::lock_guard lock(mutex);
        return std::exchange(samples, {});
    }
};

void SetFlatLevel(FFTFilter& filter, double decibels) {
    const float y = float(filter.GetFaderTranslator().GetNormalizedValue(decibels));
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 1.0f);
    filter.SetParameterValue(FFTFilter::PointYIndex(0), y);
    filter.SetParameterValue(FFTFilter::PointYIndex(1), y);
    filter.SetParameterQuietly(FFTFilter::kCurveWriteBracket, 0.0f);
}

} // namespace

TEST(ProcessHost, VirtualClockRunsWholeBlocksAndCarriesTheRest) {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    Capture capture;
    ProcessHost host(filter, {512, ProcessHost::Clock::kVirtual, capture.Tap()});
    EXPECT_EQ(host.GetSampleRate(), kRate);
    EXPECT_EQ(host.GetBlockSize(), 512u);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(host.GetProcessedFrames(), 0u) << "nothing runs between advances";
    host.Advance(1.0);
    EXPECT_EQ(host.GetProcessedFrames(), 93u * 512u); // 48000 / 512 = 93.75
    host.Advance(1.0);
    EXPECT_EQ(host.GetProcessedFrames(), 187u * 512u); // the quarter blocks add up
    host.Advance(0.0);
    EXPECT_EQ(host.GetProcessedFrames(), 187u * 512u);
    EXPECT_EQ(capture.Take().size(), 187u * 512u);
    EXPECT_NE(capture.thread, std::this_thread::get_id());
    EXPECT_EQ(capture.thread, host.GetProcessThreadId());
    EXPECT_THROW(host.Advance(-1.0), std::invalid_argument);
    EXPECT_THROW(host.Advance(std::nan("")), std::invalid_argument);
}

TEST(ProcessHost, RefusesWhatItCannotRun) {
    auto filter = std::make_shared<FFTFilter>(kRate, 1);
    EXPECT_THROW(ProcessHost(nullptr), std::invalid_argument);
    EXPECT_THROW(ProcessHost(filter, {0, ProcessHost::Clock::kVirtual, {}}), std::invalid_argument);
    EXPECT_THROW(ProcessHost(filter, {100000, ProcessHost::Clock::kVirtual, {}}),
                 std::invalid_argument);
}

TEST(ProcessHost, RealTimeClockRunsByItselfAndRefusesAdvance) {
    auto filter = std::make_shared<FFTFilter>(kRate, 1);
    ProcessHost host(filter, {256, ProcessHost::Clock::kRealTime, {}});
    EXPECT_THROW(host.Advance(0.1), std::logic_error);
    // Blocks come without anyone asking; how fast is no business of this test.
    for (int i = 0; i < 5000 && host.GetProcessedFrames() < 1024; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_GE(host.GetProcessedFrames(), 1024u);
}

TEST(ProcessHost, ParameterWritesReachTheRunningEffect) {
    auto filter = std::make_shared<FFTFilter>(kRate, 1);
    Capture capture;
    ProcessHost host(filter, {512, ProcessHost::Clock::kRealTime, capture.Tap()});
    host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kTones, kRate));
    // Written on this thread while the process thread runs; the level follows.
    SetFlatLevel(*filter, -12.0);
    const auto measure = [&] {
        capture.Take();
        // Past the filter's block and the crossfade, then a second of output.
        for (;;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            std::lock_guard lock(capture.mutex);
            if (capture.samples.size() >= 4096 + 48000)
                break;
        }
        const std::vector<float> out = capture.Take();
        return audiotest::Decibels(audiotest::AmplitudeAt(out, 1000.0, kRate, 8192, 38400));
    };
    EXPECT_NEAR(measure(), -18.0 - 12.0, 0.3);
    SetFlatLevel(*filter, 6.0);
    EXPECT_NEAR(measure(), -18.0 + 6.0, 0.3);
}

TEST(ProcessHost, SuspendedEffectsPassTheSignalAndStillRunMessages) {
    auto filter = std::make_shared<FFTFilter>(kRate, 1);
    SetFlatLevel(*filter, -40.0);
    Capture capture;
    ProcessHost host(filter, {480, ProcessHost::Clock::kVirtual, capture.Tap()});
    host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kTones, kRate));
    std::vector<bool> signalled;
    auto connection =
        filter->GetSignals().ConnectSuspendedStateChanged([&](bool s) { signalled.push_back(s); });

    host.Advance(0.5);
    std::vector<float> out = capture.Take();
    EXPECT_NEAR(audiotest::Decibels(audiotest::AmplitudeAt(out, 1000.0, kRate, 9600, 9600)), -58.0,
                0.5);

    host.SetSuspended(true);
    EXPECT_TRUE(host.IsSuspended());
    auto meter = qoraudiotoolkit::EnableSpectrumMeterMessage<FFTFilter>::Post(filter, true);
    host.Advance(0.5);
    out = capture.Take();
    EXPECT_NEAR(audiotest::Decibels(audiotest::AmplitudeAt(out, 1000.0, kRate, 0, 24000)), -18.0,
                0.01)
        << "the source as it is";
    EXPECT_EQ(filter->GetPostedMessageCount(), 0u) << "the enable message ran";
    qoraudiotoolkit::SpectrumFrame frame;
    EXPECT_FALSE(meter->ReadSpectrum(frame)) << "a suspended effect feeds no meter";

    host.SetSuspended(false);
    host.SetSuspended(false);
    host.Advance(0.5);
    EXPECT_TRUE(meter->ReadSpectrum(frame));
    EXPECT_EQ(signalled, (std::vector<bool>{true, false}));
    qorcore::MainThreadQueue::Get().RunPending();
    qoraudiotoolkit::EnableSpectrumMeterMessage<FFTFilter>::Post(filter, false);
    host.Advance(0.02);
    qorcore::MainThreadQueue::Get().RunPending();
}

TEST(ProcessHost, SourcesCanBeSwappedWhileRunning) {
    auto filter = std::make_shared<FFTFilter>(kRate, 1);
    Capture capture;
    ProcessHost host(filter, {512, ProcessHost::Clock::kVirtual, capture.Tap()});
    host.Advance(0.2);
    std::vector<float> out = capture.Take();
    EXPECT_EQ(*std::max_element(out.begin(), out.end()), 0.0f) << "silence without a source";
    host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kTones, kRate));
    // Replaced before the process thread took it.
    host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kSweep, kRate));
    host.Advance(0.5);
    out = capture.Take();
    EXPECT_LT(audiotest::AmplitudeAt(out, 1000.0, kRate, 8192, 4800), 0.01) << "no tones";
    EXPECT_GT(*std::max_element(out.begin(), out.end()), 0.2f) << "the sweep";
    host.SetSource(nullptr);
    host.Advance(0.5);
    out = capture.Take();
    EXPECT_EQ(*std::max_element(out.end() - 4800, out.end()), 0.0f) << "silence again";
}

TEST(ReferenceEffects, AreMadeByTheirCatalogueNames) {
    const std::vector<std::string> names = qafhost::GetReferenceEffectNames();
    EXPECT_NE(std::find(names.begin(), names.end(), "FFTFilter"), names.end());
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    auto effect = qafhost::CreateReferenceEffect("FFTFilter", 44100.0f, 1);
    ASSERT_TRUE(effect);
    EXPECT_NE(std::dynamic_pointer_cast<FFTFilter>(effect), nullptr);
    EXPECT_EQ(effect->GetSampleRate(), 44100.0f);
    EXPECT_EQ(effect->GetNumberOfInputChannels(), 1u);
    EXPECT_EQ(qafhost::CreateReferenceEffect("NoSuchEffect", 44100.0f, 1), nullptr);
    EXPECT_THROW(qafhost::CreateReferenceEffect("FFTFilter", -1.0f, 1), std::invalid_argument);
}
