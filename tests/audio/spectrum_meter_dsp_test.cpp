#include "audio/dsp/spectrum_meter_dsp.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

using qoraudiotoolkit::kSpectrumTypeCriticalBands;
using qoraudiotoolkit::kSpectrumTypeLinear;
using qoraudiotoolkit::kSpectrumTypeThirdOctave;
using qoraudiotoolkit::SpectrumFrame;
using qoraudiotoolkit::SpectrumMeterDSP;
using qoraudiotoolkit::WindowType;
using qorcore::IntrusivePtr;

namespace {

constexpr float kRate = 48000.0f;

IntrusivePtr<SpectrumMeterDSP> MakeMeter(std::size_t channels = 1) {
    return qorcore::MakeIntrusive<SpectrumMeterDSP>(kRate, channels);
}

// Feeds a mono signal in blocks of 256, as a host would.
void Feed(SpectrumMeterDSP& meter, const std::vector<float>& signal) {
    for (std::size_t at = 0; at < signal.size(); at += 256) {
        const float* channel = signal.data() + at;
        meter.ProcessBlock(&channel, 1, std::min<std::size_t>(256, signal.size() - at));
    }
}

SpectrumFrame Read(SpectrumMeterDSP& meter) {
    SpectrumFrame frame;
    EXPECT_TRUE(meter.ReadSpectrum(frame));
    return frame;
}

std::size_t Loudest(const std::vector<float>& data) {
    return std::size_t(std::max_element(data.begin(), data.end()) - data.begin());
}

} // namespace

TEST(SpectrumMeterDSP, SharesTheBlockAndBandTablesOfThePainter) {
    EXPECT_EQ(SpectrumMeterDSP::GetFFTBlockSize(0), 512u);
    EXPECT_EQ(SpectrumMeterDSP::GetFFTBlockSize(6), 32768u);
    EXPECT_EQ(SpectrumMeterDSP::GetNumThirdOctaveBands(), 31u);
    EXPECT_EQ(SpectrumMeterDSP::GetNumCriticalBands(), 24u);
    auto meter = MakeMeter();
    EXPECT_EQ(meter->GetFFTSize(), 4096u);
    meter->SetFFTSizeIndex(99);
    EXPECT_EQ(meter->GetFFTSize(), 32768u);
    EXPECT_THROW(qorcore::MakeIntrusive<SpectrumMeterDSP>(0.0f, 1), std::invalid_argument);
    EXPECT_THROW(qorcore::MakeIntrusive<SpectrumMeterDSP>(std::nanf(""), 1), std::invalid_argument);
}

TEST(SpectrumMeterDSP, ASineOnABinCentreReadsItsAmplitudeInThatLineForEveryWindow) {
    for (unsigned int w = 0; w < qoraudiotoolkit::kNumWindowTypes; ++w) {
        SCOPED_TRACE(w);
        auto meter = MakeMeter();
        meter->SetWindowType(static_cast<WindowType>(w));
        // Line 100 of 4096 points: 1171.875 Hz.
        const double hz = 100.0 * kRate / 4096.0;
        Feed(*meter, audiotest::Sine(hz, 0.5, kRate, 9000));
        const SpectrumFrame frame = Read(*meter);
        EXPECT_EQ(frame.fftSize, 4096u);
        EXPECT_EQ(frame.type, kSpectrumTypeLinear);
        EXPECT_EQ(frame.count, 2048u);
        ASSERT_EQ(frame.data.size(), 2049u);
        EXPECT_EQ(Loudest(frame.data), 100u);
        EXPECT_NEAR(frame.data[100], 0.5f, 0.005f);
        // Far from the sine every window is far down.
        EXPECT_LT(audiotest::Decibels(frame.data[400]), -90.0);
    }
}

TEST(SpectrumMeterDSP, BlockSizeSetsTheLineSpacing) {
    auto meter = MakeMeter();
    meter->SetFFTSizeIndex(0); // 512 points, 93.75 Hz a line
    Feed(*meter, audiotest::Sine(3000.0, 1.0, kRate, 4000));
    SpectrumFrame frame = Read(*meter);
    EXPECT_EQ(frame.fftSize, 512u);
    EXPECT_EQ(frame.count, 256u);
    EXPECT_EQ(Loudest(frame.data), 32u); // 3000 / 93.75
    EXPECT_NEAR(frame.data[32], 1.0f, 0.01f);

    meter->SetFFTSizeIndex(4); // 8192 points
    Feed(*meter, audiotest::Sine(3000.0, 1.0, kRate, 9000));
    frame = Read(*meter);
    EXPECT_EQ(frame.fftSize, 8192u);
    EXPECT_EQ(Loudest(frame.data), 512u);
}

TEST(SpectrumMeterDSP, BandsHoldTheSinesLevelInTheBandOfItsFrequency) {
    struct Case {
        qoraudiotoolkit::SpectrumType type;
        double hz;
        std::size_t band;
    };
    // 1 kHz is third-octave band 17 and critical band 8; 165 Hz falls in third-octave band 9
    // (160 Hz) and critical band 1 (150 Hz); off-centre sines still give their whole level.
    for (const Case& c :
         {Case{kSpectrumTypeThirdOctave, 1000.0, 17}, Case{kSpectrumTypeThirdOctave, 165.0, 9},
          Case{kSpectrumTypeCriticalBands, 1000.0, 8},
          Case{kSpectrumTypeCriticalBands, 165.0, 1}}) {
        SCOPED_TRACE(c.hz);
        auto meter = MakeMeter();
        meter->SetSpectrumType(c.type);
        meter->SetFFTSizeIndex(4);
        Feed(*meter, audiotest::Sine(c.hz, 0.25, kRate, 12000));
        const SpectrumFrame frame = Read(*meter);
        EXPECT_EQ(frame.type, c.type);
        const std::size_t bands = c.type == kSpectrumTypeThirdOctave ? 31 : 24;
        EXPECT_EQ(frame.count, bands);
        ASSERT_EQ(frame.data.size(), bands);
        EXPECT_EQ(Loudest(frame.data), c.band);
        EXPECT_NEAR(audiotest::Decibels(frame.data[c.band]), audiotest::Decibels(0.25), 0.5);
    }
}

TEST(SpectrumMeterDSP, NarrowLowBandsReadTheLineAtTheirCentre) {
    // At 512 points a line is 93.75 Hz wide, wider than the 20 Hz band: the band takes the
    // level of the spectrum at its centre, which a 20 Hz sine fills.
    auto meter = MakeMeter();
    meter->SetSpectrumType(kSpectrumTypeThirdOctave);
    meter->SetFFTSizeIndex(0);
    Feed(*meter, audiotest::Sine(20.0, 1.0, kRate, 4800));
    const SpectrumFrame frame = Read(*meter);
    EXPECT_GT(audiotest::Decibels(frame.data[0]), -6.0);
    EXPECT_LT(audiotest::Decibels(frame.data[30]), -60.0);
}

TEST(SpectrumMeterDSP, BandsAboveNyquistStayEmpty) {
    auto meter = qorcore::MakeIntrusive<SpectrumMeterDSP>(22050.0f, 1);
    meter->SetSpectrumType(kSpectrumTypeThirdOctave);
    std::vector<float> noise(8000);
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = float((i * 7919 % 1000) / 1000.0 - 0.5);
    Feed(*meter, noise);
    const SpectrumFrame frame = Read(*meter);
    EXPECT_GT(frame.data[20], 0.0f); // 2 kHz
    EXPECT_EQ(frame.data[30], 0.0f); // 20 kHz lies above 11025 Hz
    EXPECT_EQ(frame.data[29], 0.0f); // 16 kHz too
}

TEST(SpectrumMeterDSP, AveragingLetsALevelDecayAtItsTimeConstant) {
    auto plain = MakeMeter();
    auto averaged = MakeMeter();
    averaged->SetAverageTime(0.5);
    EXPECT_DOUBLE_EQ(averaged->GetAverageTime(), 0.5);
    const double hz = 100.0 * kRate / 4096.0;
    for (auto* meter : {plain.get(), averaged.get()}) {
        Feed(*meter, audiotest::Sine(hz, 1.0, kRate, 9600));
        Feed(*meter, std::vector<float>(9600, 0.0f)); // the last blocks hold silence only
    }
    EXPECT_LT(Read(*plain).data[100], 1e-6f);
    const float before = Read(*averaged).data[100];
    EXPECT_GT(before, 0.3f);
    // Over one more hop of silence the power falls by e^(-hop / 0.5 s), the amplitude by the
    // square root of that.
    Feed(*averaged, std::vector<float>(1600, 0.0f));
    const float after = Read(*averaged).data[100];
    EXPECT_NEAR(after / before, std::exp(-0.5 * (1600.0 / 48000.0) / 0.5), 1e-4);
    averaged->SetAverageTime(-1.0);
    EXPECT_EQ(averaged->GetAverageTime(), 0.0);
}

TEST(SpectrumMeterDSP, ChannelsAreAveragedByPower) {
    auto meter = MakeMeter(2);
    const double hz = 100.0 * kRate / 4096.0;
    const std::vector<float> left = audiotest::Sine(hz, 1.0, kRate, 8192);
    const std::vector<float> right(8192, 0.0f);
    const float* channels[] = {left.data(), right.data()};
    meter->ProcessBlock(channels, 2, 8192);
    const SpectrumFrame frame = Read(*meter);
    EXPECT_NEAR(audiotest::Decibels(frame.data[100]), -3.0103, 0.05);
    // A null channel pointer is silence; channels past the meter's count are ignored.
    const float* three[] = {left.data(), nullptr, left.data()};
    meter->ProcessBlock(three, 3, 8192);
    EXPECT_NEAR(audiotest::Decibels(Read(*meter).data[100]), -3.0103, 0.05);
}

TEST(SpectrumMeterDSP, ASpectrumIsReadOncePerAnalysisAndResetForgetsTheSignal) {
    auto meter = MakeMeter();
    SpectrumFrame frame;
    EXPECT_FALSE(meter->ReadSpectrum(frame)) << "nothing analysed yet";
    // A hop is 1/30 s at most: 1600 samples at 48 kHz.
    EXPECT_NEAR(meter->GetHopSeconds(), 1600.0 / 48000.0, 1e-9);
    Feed(*meter, audiotest::Sine(1000.0, 1.0, kRate, 1600));
    EXPECT_TRUE(meter->ReadSpectrum(frame));
    const auto serial = frame.serial;
    EXPECT_FALSE(meter->ReadSpectrum(frame)) << "no new analysis";
    Feed(*meter, audiotest::Sine(1000.0, 1.0, kRate, 3200));
    EXPECT_TRUE(meter->ReadSpectrum(frame));
    EXPECT_EQ(frame.serial, serial + 2) << "the newest of two analyses";
    // A second reader with its own frame still gets the newest spectrum.
    SpectrumFrame other;
    EXPECT_TRUE(meter->ReadSpectrum(other));
    EXPECT_EQ(other.serial, frame.serial);

    meter->Reset();
    Feed(*meter, std::vector<float>(1600, 0.0f));
    EXPECT_TRUE(meter->ReadSpectrum(frame));
    EXPECT_EQ(*std::max_element(frame.data.begin(), frame.data.end()), 0.0f);
}

TEST(SpectrumMeterDSP, ChangingTheKindRestartsFromTheSignalHeld) {
    auto meter = MakeMeter();
    meter->SetAverageTime(10.0);
    Feed(*meter, audiotest::Sine(1000.0, 1.0, kRate, 8000));
    meter->SetSpectrumType(kSpectrumTypeThirdOctave);
    EXPECT_EQ(meter->GetSpectrumType(), kSpectrumTypeThirdOctave);
    Feed(*meter, audiotest::Sine(1000.0, 1.0, kRate, 1600));
    const SpectrumFrame frame = Read(*meter);
    EXPECT_EQ(frame.type, kSpectrumTypeThirdOctave);
    // No average carried over from the lines: the level is there at once.
    EXPECT_NEAR(audiotest::Decibels(frame.data[17]), 0.0, 0.5);
    meter->SetSpectrumType(static_cast<qoraudiotoolkit::SpectrumType>(7));
    EXPECT_EQ(meter->GetSpectrumType(), kSpectrumTypeLinear);
}
