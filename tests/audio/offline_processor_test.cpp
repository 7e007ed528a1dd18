#include "audio/dsp/fft_filter.hpp"
#include "audio/host/offline_processor.hpp"
#include "audio/host/sound_file_reader.hpp"
#include "audio/host/sound_file_writer.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

using qafhost::OfflineProcessor;
using qafhost::SoundFileReader;
using qafhost::SoundFileWriter;
using qoraudiofilters::FFTFilter;

namespace {

constexpr float kRate = 48000.0f;
constexpr double kNyquist = 24000.0;

// A folder of the test's own, removed with it.
class OfflineFiles : public testing::Test {
protected:
    void SetUp() override {
        folder_ = std::filesystem::temp_directory_path() /
                  ("qafui_offline_" + std::to_string(::getpid()) + "_" +
                   testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    // Interleaved samples into a file, with libsndfile alone.
    void WriteFile(const std::string& path, int format, std::size_t channels,
                   const std::vector<float>& interleaved) const {
        SF_INFO info{};
        info.samplerate = int(kRate);
        info.channels = int(channels);
        info.format = format;
        SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
        ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
        sf_writef_float(file, interleaved.data(), sf_count_t(interleaved.size() / channels));
        sf_close(file);
    }

    // The file through the effect, file to file as the program runs it; what came out.
    std::vector<float>
    ProcessFile(const std::string& in, const std::string& out, std::size_t block,
                const std::vector<std::pair<int, float>>& parameters = {}) const {
        SoundFileReader reader(in);
        OfflineProcessor processor("FFTFilter", reader.GetSampleRate(), reader.GetChannelCount(),
                                   block);
        for (const auto& [index, value] : parameters)
            processor.GetEffect()->SetParameterValue(index, value);
        SoundFileWriter writer(out, reader.GetFormat(), reader.GetSampleRate(),
                               reader.GetChannelCount());
        processor.Run([&](float* to, std::size_t n) { return reader.Read(to, n); },
                      [&](const float* from, std::size_t n) { writer.Write(from, n); });
        writer.Commit();
        SoundFileReader result(out);
        EXPECT_EQ(result.GetFormat(), reader.GetFormat());
        std::vector<float> samples(result.GetFrameCount() * result.GetChannelCount());
        EXPECT_EQ(result.Read(samples.data(), result.GetFrameCount()), result.GetFrameCount());
        return samples;
    }

    std::filesystem::path folder_;
};

std::vector<float> Broadband(std::size_t frames, std::size_t channels) {
    std::vector<float> out(frames * channels);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] =
            float(0.4 * std::sin(0.37 * double(i * i % 4099)) + 0.2 * std::sin(0.05 * double(i)));
    return out;
}

double Rms(const std::vector<float>& signal, std::size_t first, std::size_t count) {
    double sum = 0.0;
    for (std::size_t i = first; i < first + count; ++i)
        sum += double(signal[i]) * signal[i];
    return std::sqrt(sum / double(count));
}

} // namespace

TEST_F(OfflineFiles, AFlatCurveIsTransparentAndEveryBlockSizeGivesTheSameResult) {
    // An odd length, so that no block size divides it.
    const std::vector<float> input = Broadband(20011, 2);
    WriteFile(Path("in.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 2, input);
    const std::vector<float> reference = ProcessFile(Path("in.wav"), Path("out.wav"), 512);
    ASSERT_EQ(reference.size(), input.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < input.size(); ++i)
        worst = std::max(worst, double(std::abs(reference[i] - input[i])));
    EXPECT_LT(worst, 2e-5) << "lined up with the input, no lag";
    for (std::size_t block : {1u, 7u, 4096u, 65536u}) {
        SCOPED_TRACE(block);
        const std::vector<float> out = ProcessFile(Path("in.wav"), Path("out.wav"), block);
        ASSERT_EQ(out.size(), input.size());
        for (std::size_t i = 0; i < out.size(); ++i)
            ASSERT_NEAR(out[i], reference[i], 1e-6) << "at " << i;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 2)
        << "in.wav and out.wav, nothing left over";
}

TEST_F(OfflineFiles, ALoweredPointAttenuatesSinesAsTheEffectReportsItsResponse) {
    // A notch of -24 dB at 1 kHz on straight segments from 0 dB at 20 Hz and at Nyquist.
    FFTFilter curve(kRate, 1);
    const float low = float(curve.GetFaderTranslator().GetNormalizedValue(-24.0));
    const std::vector<std::pair<int, float>> parameters{
        {FFTFilter::kPointCount, 3.0f / 128.0f},
        {FFTFilter::PointXIndex(2), float(1000.0 / kNyquist)},
        {FFTFilter::PointYIndex(2), low}};
    for (const auto& [index, value] : parameters)
        curve.SetParameterValue(index, value);
    struct Case {
        double hz;
        double curveDecibels; // NaN where only the reported response says
    };
    for (const Case& c : {Case{1000.0, -24.0}, Case{200.0, NAN}, Case{5000.0, NAN}}) {
        SCOPED_TRACE(c.hz);
        curve.SetParameterValue(FFTFilter::kVisibleRangeLow, float(c.hz / kNyquist));
        std::vector<float> response;
        ASSERT_EQ(curve.GetResponseCurve(0, 8, response), 1);
        const double reported = curve.GetFaderTranslator().GetDecibelValue(response[0]);
        // The report interpolates between bin centres, which rounds the tip of the notch off.
        if (!std::isnan(c.curveDecibels)) {
            EXPECT_NEAR(reported, c.curveDecibels, 0.1);
        }

        const std::vector<float> sine = audiotest::Sine(c.hz, 0.5, kRate, 48000);
        WriteFile(Path("sine.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1, sine);
        const std::vector<float> out =
            ProcessFile(Path("sine.wav"), Path("out.wav"), 512, parameters);
        ASSERT_EQ(out.size(), sine.size());
        // Away from the ends, where the blocks see silence beyond the signal.
        const double gain = Rms(out, 8192, 31616) / Rms(sine, 8192, 31616);
        EXPECT_NEAR(audiotest::Decibels(gain), reported, 0.3);
    }
}

TEST(OfflineProcessor, SettingsMadeBeforeARunAreHeardFromItsFirstSample) {
    // A new FFT size fades in over thousands of samples while the effect runs live; offline
    // the whole output has it, here a flat -12 dB with a block of 1024.
    OfflineProcessor processor("FFTFilter", kRate, 1, 300);
    auto& effect = *processor.GetEffect();
    const float level =
        float(static_cast<FFTFilter&>(effect).GetFaderTranslator().GetNormalizedValue(-12.0));
    effect.SetParameterValue(FFTFilter::kFFTSize, FFTFilter::EncodeFFTSize(1024));
    effect.SetParameterValue(FFTFilter::PointYIndex(0), level);
    effect.SetParameterValue(FFTFilter::PointYIndex(1), level);
    const std::vector<float> input = Broadband(10000, 1);
    const std::vector<float> first = processor.Run(input);
    EXPECT_EQ(effect.GetLatencySamples(), 1024u);
    ASSERT_EQ(first.size(), input.size());
    const float gain = float(std::pow(10.0, -12.0 / 20.0));
    for (std::size_t i = 0; i < input.size(); ++i)
        ASSERT_NEAR(first[i], input[i] * gain, 2e-5) << "at " << i;
    EXPECT_EQ(processor.Run(input), first) << "a second run starts as clear as the first";
}

TEST(OfflineProcessor, RefusesWhatItCannotRunNamingTheValue) {
    struct Case {
        std::size_t channels;
        std::size_t block;
        const char* message;
    };
    for (const Case& c : {Case{2, 0, "block size 0"}, Case{2, 65537, "block size 65537"},
                          Case{0, 512, "0 channels"}, Case{9, 512, "9 channels"}}) {
        try {
            OfflineProcessor processor("FFTFilter", kRate, c.channels, c.block);
            ADD_FAILURE() << "no error for " << c.message;
        } catch (const std::invalid_argument& error) {
            EXPECT_NE(std::string(error.what()).find(c.message), std::string::npos) << error.what();
        }
    }
    try {
        OfflineProcessor processor("AdaptiveNoiseReduction", kRate, 2);
        ADD_FAILURE() << "no error for an effect without DSP";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "AdaptiveNoiseReduction: the reference host has no DSP for this effect");
    }
    EXPECT_THROW(OfflineProcessor(nullptr), std::invalid_argument);
    OfflineProcessor stereo("FFTFilter", kRate, 2);
    EXPECT_THROW(stereo.Run(std::vector<float>(3, 0.0f)), std::invalid_argument);
}

TEST_F(OfflineFiles, AnUnfinishedFileLeavesNothingAndTheOldOneStays) {
    const std::string path = Path("kept.wav");
    std::ofstream(path) << "old";
    {
        SoundFileWriter writer(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, kRate, 1);
        const std::vector<float> samples(1000, 0.25f);
        writer.Write(samples.data(), samples.size());
    }
    std::ifstream kept(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 1);

    // Committed, it replaces the old file; integer samples clip rather than wrap.
    SoundFileWriter writer(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, kRate, 1);
    const std::vector<float> loud{1.5f, -1.5f, 0.5f};
    writer.Write(loud.data(), loud.size());
    writer.Commit();
    SoundFileReader reader(path);
    EXPECT_EQ(reader.GetFormat(), SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::vector<float> back(3);
    ASSERT_EQ(reader.Read(back.data(), 3), 3u);
    EXPECT_GT(back[0], 0.999f);
    EXPECT_LT(back[1], -0.999f);
    EXPECT_NEAR(back[2], 0.5f, 1e-4);

    for (const auto& [where, format] :
         {std::pair{Path("no/such/folder/x.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT},
          std::pair{Path("x.wav"), 0x7ff0000 | SF_FORMAT_FLOAT}}) {
        try {
            SoundFileWriter bad(where, format, kRate, 1);
            ADD_FAILURE() << "no error for " << where;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("cannot write \"" + where + "\""),
                      std::string::npos)
                << error.what();
        }
    }
    EXPECT_THROW(SoundFileReader(Path("none.wav")), std::runtime_error);
}
