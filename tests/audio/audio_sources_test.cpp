#include "audio/dsp/spectrum_meter_dsp.hpp"
#include "audio/host/file_source.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/reference_effects.hpp"
#include "audio/host/test_signal_source.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numeric>

using qafhost::FileSource;
using qafhost::TestSignalSource;

namespace {

constexpr float kRate = 48000.0f;

std::vector<float> ReadMono(qafhost::AudioSource& source, std::size_t frames) {
    std::vector<float> out(frames);
    float* channel = out.data();
    source.Read(&channel, 1, frames);
    return out;
}

double Rms(const std::vector<float>& signal) {
    double sum = 0.0;
    for (float s : signal)
        sum += double(s) * s;
    return std::sqrt(sum / double(signal.size()));
}

// A WAV file of its own, removed with the test.
class WavFile {
public:
    WavFile(const std::string& name, int rate, const std::vector<std::vector<float>>& channels)
        : path_((std::filesystem::temp_directory_path() /
                 (name + "_" + std::to_string(::getpid()) + ".wav"))
                    .string()) {
        SF_INFO info{};
        info.samplerate = rate;
        info.channels = int(channels.size());
        info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        SNDFILE* file = sf_open(path_.c_str(), SFM_WRITE, &info);
        if (!file)
            throw std::runtime_error(sf_strerror(nullptr));
        std::vector<float> interleaved;
        for (std::size_t i = 0; i < channels[0].size(); ++i)
            for (const auto& channel : channels)
                interleaved.push_back(channel[i]);
        sf_writef_float(file, interleaved.data(), sf_count_t(channels[0].size()));
        sf_close(file);
    }
    ~WavFile() { std::filesystem::remove(path_); }
    const std::string& GetPath() const { return path_; }

private:
    std::string path_;
};

} // namespace

TEST(TestSignalSource, TonesAreThereAtTheirLevels) {
    TestSignalSource tones(TestSignalSource::Kind::kTones, kRate);
    const std::vector<float> out = ReadMono(tones, 48000);
    for (double hz : TestSignalSource::kToneFrequencies)
        EXPECT_NEAR(audiotest::Decibels(audiotest::AmplitudeAt(out, hz, kRate, 0, 48000)), -18.0,
                    0.01)
            << hz;
    EXPECT_LT(audiotest::AmplitudeAt(out, 2000.0, kRate, 0, 48000), 1e-4);
}

TEST(TestSignalSource, PinkNoiseHasEqualPowerInEveryThirdOctave) {
    TestSignalSource noise(TestSignalSource::Kind::kPinkNoise, kRate);
    const std::vector<float> out = ReadMono(noise, 480000);
    EXPECT_NEAR(audiotest::Decibels(Rms(out)), -20.0, 1.0);
    auto meter = qorcore::MakeIntrusive<qoraudiotoolkit::SpectrumMeterDSP>(kRate, 1);
    meter->SetSpectrumType(qoraudiotoolkit::kSpectrumTypeThirdOctave);
    meter->SetFFTSizeIndex(6);
    meter->SetAverageTime(100.0);
    const float* channel = out.data();
    meter->ProcessBlock(&channel, 1, out.size());
    qoraudiotoolkit::SpectrumFrame frame;
    ASSERT_TRUE(meter->ReadSpectrum(frame));
    // From 100 Hz to 10 kHz (bands 7 to 27) the bands stay within a few decibels of each
    // other; white noise would rise by 20 dB over that span.
    const double reference = audiotest::Decibels(frame.data[17]);
    for (std::size_t band = 7; band <= 27; ++band)
        EXPECT_NEAR(audiotest::Decibels(frame.data[band]), reference, 2.5) << band;
}

TEST(TestSignalSource, SweepClimbsSlowlyAndTheSignalRepeatsFromTheStart) {
    EXPECT_DOUBLE_EQ(TestSignalSource::SweepFrequencyAt(0.0), 20.0);
    EXPECT_NEAR(TestSignalSource::SweepFrequencyAt(10.0), 632.456, 0.01);
    EXPECT_NEAR(TestSignalSource::SweepFrequencyAt(20.0 + 10.0), 632.456, 0.01);
    TestSignalSource sweep(TestSignalSource::Kind::kSweep, kRate);
    std::vector<float> out = ReadMono(sweep, 48000 * 10 + 4800);
    // Around ten seconds the sweep is near 632 Hz: count its zero crossings over 0.1 s.
    int crossings = 0;
    for (std::size_t i = 48000 * 10 - 2400 + 1; i < 48000 * 10 + 2400; ++i)
        crossings += (out[i - 1] < 0.0f) != (out[i] < 0.0f);
    EXPECT_NEAR(crossings / 2.0 / 0.1, 632.0, 15.0);
    EXPECT_NEAR(*std::max_element(out.begin(), out.end()), 0.251, 0.001);

    TestSignalSource mix(TestSignalSource::Kind::kMix, kRate);
    const std::vector<float> first = ReadMono(mix, 1000);
    mix.Rewind();
    EXPECT_EQ(ReadMono(mix, 1000), first);
    TestSignalSource again(TestSignalSource::Kind::kMix, kRate, 3);
    std::vector<float> a(100), b(100), c(100);
    float* three[] = {a.data(), b.data(), c.data()};
    again.Read(three, 3, 100);
    EXPECT_EQ(a, std::vector<float>(first.begin(), first.begin() + 100));
    EXPECT_EQ(a, c);
    EXPECT_THROW(TestSignalSource(TestSignalSource::Kind::kMix, 0.0f), std::invalid_argument);
}

TEST(FileSource, PlaysAWavFileAtTheHostsRateInALoop) {
    const WavFile wav("qafui_file_source", 44100,
                      {audiotest::Sine(1000.0, 0.5, 44100.0, 44100),
                       audiotest::Sine(2000.0, 0.25, 44100.0, 44100)});
    FileSource source(wav.GetPath(), kRate);
    EXPECT_EQ(source.GetChannelCount(), 2u);
    EXPECT_EQ(source.GetFrameCount(), 44100u);
    EXPECT_EQ(source.GetFileSampleRate(), 44100.0f);
    EXPECT_EQ(source.GetSampleRate(), kRate);
    std::vector<float> left(96000), right(96000), third(96000);
    float* channels[] = {left.data(), right.data(), third.data()};
    source.Read(channels, 3, 96000);
    // Converted to 48 kHz, the tones keep their pitch, also in the second time round.
    EXPECT_NEAR(audiotest::AmplitudeAt(left, 1000.0, kRate, 0, 48000), 0.5, 0.002);
    EXPECT_NEAR(audiotest::AmplitudeAt(right, 2000.0, kRate, 0, 48000), 0.25, 0.002);
    EXPECT_NEAR(audiotest::AmplitudeAt(left, 1000.0, kRate, 48000, 48000), 0.5, 0.002);
    EXPECT_EQ(third, right) << "a missing channel repeats the last";
    EXPECT_LT(audiotest::LargestStep(left), 2.0 * std::numbers::pi * 1000.0 / kRate * 0.5 * 1.01)
        << "no jump where the loop joins";
    source.Rewind();
    EXPECT_EQ(ReadMono(source, 480), std::vector<float>(left.begin(), left.begin() + 480));
}

TEST(FileSource, FeedsTheHost) {
    const WavFile wav("qafui_file_host", 48000, {audiotest::Sine(1000.0, 0.5, 48000.0, 4800)});
    auto effect = qafhost::CreateReferenceEffect("FFTFilter", kRate, 2);
    std::vector<float> captured;
    qafhost::ProcessHost host(
        effect, {512, qafhost::ProcessHost::Clock::kVirtual,
                 [&](const float* const* channels, std::size_t count, std::size_t frames) {
                     ASSERT_EQ(count, 2u);
                     captured.insert(captured.end(), channels[1], channels[1] + frames);
                 }});
    host.SetSource(std::make_unique<FileSource>(wav.GetPath(), kRate));
    host.Advance(1.0);
    EXPECT_NEAR(audiotest::AmplitudeAt(captured, 1000.0, kRate, 8192, 38400), 0.5, 0.001)
        << "the mono file in both channels, through the flat filter";
}

TEST(FileSource, UnreadableFilesAreRefusedWithTheirName) {
    const std::string missing = "/nonexistent/qafui/none.wav";
    try {
        FileSource source(missing, kRate);
        FAIL() << "no error";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find(missing), std::string::npos) << error.what();
    }
    const std::string text =
        (std::filesystem::temp_directory_path() / ("qafui_not_audio_" + std::to_string(::getpid())))
            .string();
    std::ofstream(text) << "this is no audio file\n";
    EXPECT_THROW(FileSource(text, kRate), std::runtime_error);
    std::filesystem::remove(text);
    const WavFile empty("qafui_empty", 48000, {std::vector<float>{}});
    EXPECT_THROW(FileSource(empty.GetPath(), kRate), std::runtime_error);
    const WavFile wav("qafui_rate", 48000, {std::vector<float>(10, 0.0f)});
    EXPECT_THROW(FileSource(wav.GetPath(), std::nanf("")), std::invalid_argument);
}
