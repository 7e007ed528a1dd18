#include "audio/dsp/gain_reduction_meter_message.hpp"
#include "audio/dsp/level_meter_message.hpp"
#include "audio/dsp/loudness_meter_message.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "platform/core/main_thread_queue.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

using qafhost::ProcessHost;
using Tones = qafhost::TestSignalSource;
using qoraudiofilters::LoudnessMeter;
using qoraudiofilters::LoudnessMeterMessage;
using qoraudiofilters::LoudnessMeterResetMessage;
using qoraudiofilters::LoudnessMeterValues;
using qoraudiotoolkit::GainReductionMeterMessage;
using qoraudiotoolkit::LevelMeterMessage;
using Target = std::weak_ptr<qoraudiofilterhost::AudioFilter>;

namespace {

constexpr float kRate = 48000.0f;

class MeterMessages : public testing::Test {
protected:
    void TearDown() override { Pump(); }
    static std::size_t Pump() { return qorcore::MainThreadQueue::Get().RunPending(); }
    void Run(int rounds, bool sine = true) {
        host_->SetSource(sine ? std::make_unique<Tones>(Tones::Kind::kTones, kRate) : nullptr);
        for (int i = 0; i < rounds; ++i) {
            host_->Advance(0.05);
            Pump();
        }
    }
    // Counts calls, which must come on the main thread.
    static std::function<void()> Counter(int& count) {
        return [&count, main = std::this_thread::get_id()] {
            EXPECT_EQ(std::this_thread::get_id(), main);
            ++count;
        };
    }

    std::shared_ptr<LoudnessMeter> meter_ = std::make_shared<LoudnessMeter>(kRate, 2);
    std::unique_ptr<ProcessHost> host_ = std::make_unique<ProcessHost>(meter_);
};

} // namespace

TEST_F(MeterMessages, LoudnessArrivesWhileListenedToAndResetsCompleteOnTheMainThread) {
    auto message = std::make_shared<LoudnessMeterMessage>(meter_.get());
    int deliveries = 0, resets = 0;
    qorcore::ScopedConnection connection = message->ConnectMeterDataChanged(Counter(deliveries));
    meter_->Post(message);
    Run(20);
    EXPECT_EQ(deliveries, 20) << "one a round";
    // Each reset clears and prepares the next: after three the meter still measures.
    for (int round = 1; round <= 3; ++round) {
        EXPECT_GT(message->GetLoudnessMeterValues().momentary, -20.0) << "three tones at -18 dB";
        Run(10, false);
        auto reset = std::make_shared<LoudnessMeterResetMessage>(meter_.get());
        const qorcore::ScopedConnection completed = reset->ConnectResetCompleted(Counter(resets));
        meter_->Post(reset);
        Run(1, false);
        EXPECT_EQ(resets, round);
        const LoudnessMeterValues& v = message->GetLoudnessMeterValues();
        EXPECT_TRUE(v.maxShortTerm == v.truePeak && v.truePeak == LoudnessMeter::kFloor);
        EXPECT_FALSE(v.integratedValid);
        Run(10);
    }
    connection = qorcore::ScopedConnection();
    const int before = deliveries;
    Run(5);
    EXPECT_EQ(deliveries, before) << "nobody listens any more";
    EXPECT_EQ(meter_->GetPostedMessageCount(), 0u) << "the message stopped posting itself";

    // A meter gone while the main-thread halves wait: no delivery, the reset still completes.
    connection = message->ConnectMeterDataChanged(Counter(deliveries));
    auto reset = std::make_shared<LoudnessMeterResetMessage>(meter_.get());
    const qorcore::ScopedConnection completed = reset->ConnectResetCompleted(Counter(resets));
    meter_->Post(message);
    meter_->Post(reset);
    host_->Advance(0.02);
    host_.reset();
    meter_.reset();
    EXPECT_EQ(Pump(), 2u);
    EXPECT_EQ(deliveries, before);
    EXPECT_EQ(resets, 4);
    EXPECT_THROW(LoudnessMeterMessage(nullptr), std::invalid_argument);
    EXPECT_THROW(LoudnessMeterResetMessage(nullptr), std::invalid_argument);
}

// The reading functions run on the process thread once a trip; the readings arrive on the main
// thread in order until the slot goes. Without a target a message delivers once.
TEST_F(MeterMessages, LevelsAndReductionsAreReadOnTheProcessThreadAndArriveInOrder) {
    int reads = 0;
    const auto read = [&] {
        EXPECT_EQ(std::this_thread::get_id(), host_->GetProcessThreadId());
        return float(++reads);
    };
    std::vector<float> seen;
    const auto note = [&seen, main = std::this_thread::get_id()](float value) {
        EXPECT_EQ(std::this_thread::get_id(), main);
        seen.push_back(value);
    };
    for (const bool targeted : {true, false}) {
        const Target target = targeted ? Target(meter_) : Target();
        auto level = std::make_shared<LevelMeterMessage>(
            target, [&](float* out, std::size_t count) { std::fill_n(out, count, read()); }, 2);
        auto gain = std::make_shared<GainReductionMeterMessage>(target, read);
        const qorcore::ScopedConnection a =
            level->ConnectMeterDataChanged([&](const std::vector<float>& values) {
                EXPECT_EQ(values, std::vector<float>(2, values[0]));
                note(values[0]);
            });
        const qorcore::ScopedConnection b = gain->ConnectMeterDataChanged(note);
        meter_->Post(level);
        meter_->Post(gain);
        seen.clear();
        Run(10);
        EXPECT_EQ(seen.size(), targeted ? 20u : 2u);
        EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()) && seen.back() == float(reads));
    }
    Run(2);
    EXPECT_EQ(meter_->GetPostedMessageCount(), 0u) << "none posts itself once nobody listens";
    EXPECT_THROW(LevelMeterMessage(meter_, nullptr, 1), std::invalid_argument);
    EXPECT_THROW(GainReductionMeterMessage(meter_, nullptr), std::invalid_argument);
}

// For the thread sanitizer: the process thread publishes and resets while two threads read,
// deliver and prepare resets. A torn reading could read louder than the tones can be.
TEST_F(MeterMessages, ReadsAndResetsWhileTheProcessThreadRuns) {
    host_.reset();
    host_ = std::make_unique<ProcessHost>(
        meter_, ProcessHost::Options{64, ProcessHost::Clock::kRealTime, {}});
    host_->SetSource(std::make_unique<Tones>(Tones::Kind::kTones, kRate));
    std::atomic<bool> done{false};
    std::atomic<int> bad{0};
    const auto check = [&](const LoudnessMeterValues& v) {
        for (float reading : {v.momentary, v.shortTerm, v.maxShortTerm, v.integrated, v.truePeak})
            bad += !(reading >= LoudnessMeter::kFloor && reading < -5.0f);
        bad += v.integratedValid == (v.integrated == LoudnessMeter::kFloor);
    };
    std::thread reader([&] {
        while (!done)
            check(meter_->GetLoudnessMeterValues());
    });
    auto message = std::make_shared<LoudnessMeterMessage>(meter_.get());
    const qorcore::ScopedConnection connection =
        message->ConnectMeterDataChanged([&] { check(message->GetLoudnessMeterValues()); });
    meter_->Post(message);
    int resets = 0;
    for (int round = 0; round < 20; ++round) {
        auto reset = std::make_shared<LoudnessMeterResetMessage>(meter_.get());
        const qorcore::ScopedConnection completed = reset->ConnectResetCompleted([&] { ++resets; });
        meter_->Post(reset);
        while (resets == round) {
            Pump();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    done = true;
    reader.join();
    host_.reset();
    EXPECT_GT(message->GetDeliveryCount(), 0u);
    EXPECT_EQ(bad, 0);
}
