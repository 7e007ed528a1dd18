#include "audio/dsp/fft_filter.hpp"
#include "audio/host/offline_processor.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/sound_output.hpp"
#include "audio/host/test_signal_source.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>
#include <unistd.h>

using qafhost::ProcessHost;
using qafhost::SoundOutput;
using qafhost::TestSignalSource;
using qoraudiofilters::FFTFilter;

namespace {

constexpr float kRate = 48000.0f;

// An environment variable set for the test's length; SDL reads its driver from there.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::string& value) : name_(name) {
        if (const char* old = std::getenv(name))
            old_ = old;
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedEnvironment() {
        if (old_)
            ::setenv(name_, old_->c_str(), 1);
        else
            ::unsetenv(name_);
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

std::shared_ptr<FFTFilter> ShapedFilter() {
    auto filter = std::make_shared<FFTFilter>(kRate, 2);
    filter->SetParameterValue(FFTFilter::PointYIndex(0),
                              float(filter->GetFaderTranslator().GetNormalizedValue(-18.0)));
    return filter;
}

} // namespace

// SDL's disk driver writes what the device plays to a file, in the device's format (float,
// interleaved), at about the pace of a real device.
TEST(SoundOutput, PlaysWhatTheHostMakesSampleForSampleAndCountsTheUnderrunWhenItStops) {
    const std::string raw = (std::filesystem::temp_directory_path() /
                             ("qafui_sound_" + std::to_string(::getpid()) + ".raw"))
                                .string();
    const ScopedEnvironment driver("SDL_AUDIODRIVER", "disk");
    const ScopedEnvironment file("SDL_DISKAUDIOFILE", raw);
    constexpr std::size_t kFrames = 46 * 512; // what Advance(0.5) runs in whole blocks
    std::size_t latency = 0;
    {
        SoundOutput output(kRate, 2, {.deviceFrames = 1024, .bufferFrames = 32768});
        EXPECT_EQ(output.GetDriverName(), "disk");
        auto filter = ShapedFilter();
        {
            ProcessHost host(filter, {512, ProcessHost::Clock::kVirtual, output.MakeTap()});
            host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kMix, kRate));
            host.Advance(0.5);
            latency = filter->GetLatencySamples();
        }
        // The producer has stopped: the device plays the ring out, then comes up short.
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (output.GetUnderrunCount() == 0 && std::chrono::steady_clock::now() < until)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(output.GetUnderrunCount(), 1u);
        EXPECT_EQ(output.GetPlayedFrames(), kFrames);
        EXPECT_EQ(output.GetDroppedFrames(), 0u);
    }

    std::ifstream in(raw, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
    std::vector<float> played(bytes.size() / sizeof(float));
    std::memcpy(played.data(), bytes.data(), played.size() * sizeof(float));
    std::filesystem::remove(raw);

    // The same signal offline: lined up with its input, so the host's output lags it by the
    // latency and the device's by its leading silence too.
    TestSignalSource signal(TestSignalSource::Kind::kMix, kRate);
    std::vector<float> left(kFrames), right(kFrames), interleaved;
    float* channels[] = {left.data(), right.data()};
    signal.Read(channels, 2, kFrames);
    for (std::size_t i = 0; i < kFrames; ++i)
        interleaved.insert(interleaved.end(), {left[i], right[i]});
    qafhost::OfflineProcessor offline(ShapedFilter());
    const std::vector<float> expected = offline.Run(interleaved);
    ASSERT_GT(kFrames, latency);
    const std::size_t window = 2 * (kFrames - latency); // what the host played of it

    // Where the first 32 samples turn up, then all of them there.
    const auto matches = [&](std::size_t at, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            if (std::abs(played[at + i] - expected[i]) > 1e-5f)
                return false;
        return true;
    };
    std::optional<std::size_t> start;
    for (std::size_t at = 0; !start && at + window <= played.size(); at += 2)
        if (matches(at, 32))
            start = at;
    ASSERT_TRUE(start) << "the device never played the effect's output";
    EXPECT_TRUE(matches(*start, window)) << "from sample " << *start;
}

TEST(SoundOutput, BlocksThatDoNotFitAreDroppedAndNoDriverIsExplained) {
    const std::string raw = (std::filesystem::temp_directory_path() /
                             ("qafui_sound_drop_" + std::to_string(::getpid()) + ".raw"))
                                .string();
    {
        const ScopedEnvironment driver("SDL_AUDIODRIVER", "disk");
        const ScopedEnvironment file("SDL_DISKAUDIOFILE", raw);
        SoundOutput output(kRate, 1,
                           {.deviceFrames = 256, .bufferFrames = 4096, .startFrames = 512});
        const std::vector<float> block(10000, 0.1f);
        const float* channel = block.data();
        output.Push(&channel, 1, block.size());
        EXPECT_EQ(output.GetDroppedFrames(), 10000u - 4096u);
    }
    std::filesystem::remove(raw);
    const ScopedEnvironment driver("SDL_AUDIODRIVER", "no_such_driver");
    try {
        SoundOutput output(kRate, 2);
        ADD_FAILURE() << "a device without a driver";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()), "");
    }
    EXPECT_THROW(SoundOutput(kRate, 2, {.bufferFrames = 1024, .startFrames = 2048}),
                 std::invalid_argument);
}
