#include "audio/dsp/enable_spectrum_meter_message.hpp"
#include "audio/dsp/fft_filter.hpp"
#include "audio/dsp/spectrum_meter_message.hpp"
#include "audio/host/process_host.hpp"
#include "audio/host/test_signal_source.hpp"
#include "platform/core/main_thread_queue.hpp"

#include "audio_test_helpers.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <thread>

using qafhost::ProcessHost;
using qafhost::TestSignalSource;
using qoraudiofilters::FFTFilter;
using qoraudiotoolkit::EnableSpectrumMeterMessage;
using qoraudiotoolkit::SpectrumMeterDSP;
using qoraudiotoolkit::SpectrumMeterMessage;
using qoraudiotoolkit::SpectrumType;
using qorcore::IntrusivePtr;
using EnableFFTFilterMeter = EnableSpectrumMeterMessage<FFTFilter>;

namespace {

constexpr float kRate = 48000.0f;

std::size_t Pump() {
    return qorcore::MainThreadQueue::Get().RunPending();
}

// Where meters died.
struct Releases {
    std::mutex mutex;
    std::vector<std::thread::id> threads;
    std::vector<std::thread::id> Get() {
        std::lock_guard lock(mutex);
        return threads;
    }
};

class RecordingMeter : public SpectrumMeterDSP {
public:
    explicit RecordingMeter(std::shared_ptr<Releases> releases)
        : SpectrumMeterDSP(kRate, 1), releases_(std::move(releases)) {}

protected:
    ~RecordingMeter() override {
        std::lock_guard lock(releases_->mutex);
        releases_->threads.push_back(std::this_thread::get_id());
    }

private:
    std::shared_ptr<Releases> releases_;
};

// What a spectrum graph does with the protocol: a meter switched on at construction, its
// spectra forwarded to its painter (here: the last spectrum kept), and switched off first thing
// in the destructor.
class Graph {
public:
    explicit Graph(std::shared_ptr<FFTFilter> filter)
        : filter_(std::move(filter)), lines_(std::make_shared<std::size_t>(0)),
          calls_(std::make_shared<int>(0)) {
        EnableMeter(true);
    }
    ~Graph() { EnableMeter(false); }

    void EnableMeter(bool enable) {
        IntrusivePtr<SpectrumMeterDSP> meter = EnableFFTFilterMeter::Post(filter_, enable);
        if (meter) {
            meter_ = meter;
            message_ = std::make_shared<SpectrumMeterMessage>(meter);
            auto lines = lines_;
            auto calls = calls_;
            connection_ = message_->ConnectMeterDataChanged(
                [lines, calls](unsigned int, const std::vector<float>& data, unsigned int,
                               SpectrumType, bool) {
                    ++*calls;
                    *lines = data.size();
                });
            filter_->Post(message_);
        } else {
            message_.reset();
            connection_.Disconnect();
        }
    }

    const IntrusivePtr<SpectrumMeterDSP>& GetMeter() const { return meter_; }
    std::shared_ptr<int> GetCalls() const { return calls_; }
    std::size_t GetLineCount() const { return *lines_; }

private:
    std::shared_ptr<FFTFilter> filter_;
    std::shared_ptr<std::size_t> lines_;
    IntrusivePtr<SpectrumMeterDSP> meter_;
    std::shared_ptr<SpectrumMeterMessage> message_;
    qorcore::ScopedConnection connection_;
    std::shared_ptr<int> calls_;
};

// A message that writes down where and in what order its two halves ran.
struct Trail {
    std::mutex mutex;
    std::vector<std::pair<std::string, std::thread::id>> steps;
    void Add(std::string step) {
        std::lock_guard lock(mutex);
        steps.emplace_back(std::move(step), std::this_thread::get_id());
    }
};

class TrailMessage : public qoraudiofilterhost::Message {
public:
    TrailMessage(std::string name, std::shared_ptr<Trail> trail)
        : name_(std::move(name)), trail_(std::move(trail)) {}
    void ExecuteOnProcessThread() override { trail_->Add(name_ + " process"); }
    void ExecuteOnMainThread() override { trail_->Add(name_ + " main"); }

private:
    std::string name_;
    std::shared_ptr<Trail> trail_;
};

class MeterProtocol : public testing::Test {
protected:
    void SetUp() override { Pump(); }
    void TearDown() override { Pump(); }

    std::shared_ptr<FFTFilter> filter_ = std::make_shared<FFTFilter>(kRate, 1);
};

} // namespace

TEST_F(MeterProtocol, EnablingReleasesThePreviousMeterOnTheMainThread) {
    auto releases = std::make_shared<Releases>();
    // Installed before the process thread runs.
    EXPECT_EQ(filter_->SwapSpectrumMeter(qorcore::MakeIntrusive<RecordingMeter>(releases)),
              nullptr);
    ProcessHost host(filter_);
    IntrusivePtr<SpectrumMeterDSP> created = EnableFFTFilterMeter::Post(filter_, true);
    ASSERT_TRUE(created);
    EXPECT_EQ(created->GetSampleRate(), kRate);
    EXPECT_EQ(created->GetChannelCount(), 1u);
    EXPECT_EQ(created->GetMessageTarget(), filter_);
    host.Advance(0.02);
    EXPECT_TRUE(releases->Get().empty()) << "the old meter waits in the message";
    EXPECT_GE(Pump(), 1u);
    ASSERT_EQ(releases->Get().size(), 1u);
    EXPECT_EQ(releases->Get()[0], std::this_thread::get_id());
    EXPECT_NE(releases->Get()[0], host.GetProcessThreadId());
    // The new meter is fed from now on.
    host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kTones, kRate));
    host.Advance(0.2);
    qoraudiotoolkit::SpectrumFrame frame;
    EXPECT_TRUE(created->ReadSpectrum(frame));
}

TEST_F(MeterProtocol, DisablingReleasesTheInstalledMeterOnTheMainThread) {
    auto releases = std::make_shared<Releases>();
    filter_->SwapSpectrumMeter(qorcore::MakeIntrusive<RecordingMeter>(releases));
    ProcessHost host(filter_);
    EXPECT_EQ(EnableFFTFilterMeter::Post(filter_, false), nullptr);
    for (int i = 0; i < 20; ++i) {
        host.Advance(0.005);
        Pump();
    }
    ASSERT_EQ(releases->Get().size(), 1u);
    EXPECT_EQ(releases->Get()[0], std::this_thread::get_id());
}

TEST_F(MeterProtocol, ManySwitchesNeverReleaseAMeterOnTheProcessThread) {
    // Enable and disable messages race with the process thread's blocks; whoever holds a
    // meter last, it goes on the main thread.
    auto releases = std::make_shared<Releases>();
    std::thread::id processThread;
    {
        ProcessHost host(filter_, {64, ProcessHost::Clock::kRealTime, {}});
        processThread = host.GetProcessThreadId();
        for (int round = 0; round < 200; ++round) {
            auto meter = qorcore::MakeIntrusive<RecordingMeter>(releases);
            filter_->Post(std::make_shared<EnableFFTFilterMeter>(filter_, round % 2 == 0));
            // A hand-made swap of a recording meter, in the protocol's own way.
            struct Install : qoraudiofilterhost::Message {
                ~Install() override { qoraudiotoolkit::ReleaseMeterOnMainThread(swap); }
                std::shared_ptr<FFTFilter> filter;
                IntrusivePtr<SpectrumMeterDSP> swap;
                void ExecuteOnProcessThread() override {
                    IntrusivePtr<SpectrumMeterDSP> meter = swap;
                    swap = filter->SwapSpectrumMeter(std::move(meter));
                }
                void ExecuteOnMainThread() override { swap.reset(); }
            };
            auto install = std::make_shared<Install>();
            install->filter = filter_;
            install->swap = std::move(meter);
            filter_->Post(std::move(install));
            Pump();
            if (round % 16 == 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        // Stop the feed, then let every message finish.
        EnableFFTFilterMeter::Post(filter_, false);
        while (filter_->GetPostedMessageCount() != 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Pump();
    EXPECT_EQ(releases->Get().size(), 200u);
    for (std::thread::id id : releases->Get())
        ASSERT_NE(id, processThread);
}

TEST_F(MeterProtocol, SpectraReachAPainterOnTheMainThreadForAsLongAsSomeoneListens) {
    ProcessHost host(filter_);
    host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kTones, kRate));
    auto graph = std::make_unique<Graph>(filter_);
    const auto calls = graph->GetCalls();
    for (int i = 0; i < 10; ++i) {
        host.Advance(0.05);
        Pump();
    }
    EXPECT_GE(*calls, 8) << "one spectrum per round once the meter is in";
    // The painter took the lines: one a bin of the meter's 4096-point transform, 0 Hz to
    // Nyquist.
    EXPECT_EQ(graph->GetLineCount(), 4096u / 2 + 1);
    // The meter shows the 1 kHz tone at its -18 dB.
    qoraudiotoolkit::SpectrumFrame frame;
    ASSERT_TRUE(graph->GetMeter()->ReadSpectrum(frame));
    EXPECT_NEAR(
        audiotest::Decibels(*std::max_element(frame.data.begin() + 80, frame.data.begin() + 90)),
        -18.0, 1.5);

    const IntrusivePtr<SpectrumMeterDSP> meter = graph->GetMeter();
    graph.reset();
    const int before = *calls;
    for (int i = 0; i < 10; ++i) {
        host.Advance(0.05);
        Pump();
    }
    EXPECT_EQ(*calls, before) << "nobody listens any more";
    EXPECT_EQ(filter_->GetPostedMessageCount(), 0u) << "the meter message stopped posting itself";
    EXPECT_EQ(meter->GetRefCount(), 1) << "only this test still holds the meter";
}

TEST_F(MeterProtocol, APostedEnableCompletesAfterItsPosterIsGone) {
    ProcessHost host(filter_);
    IntrusivePtr<SpectrumMeterDSP> meter;
    std::shared_ptr<int> calls;
    {
        Graph graph(filter_);
        meter = graph.GetMeter();
        calls = graph.GetCalls();
    } // gone before the process thread saw any of its messages
    EXPECT_EQ(filter_->GetPostedMessageCount(), 3u);
    host.Advance(0.02);
    Pump();
    host.Advance(0.02);
    Pump();
    EXPECT_EQ(*calls, 0);
    EXPECT_EQ(filter_->GetPostedMessageCount(), 0u);
    EXPECT_EQ(meter->GetRefCount(), 1);
    EXPECT_EQ(filter_->SwapSpectrumMeter(nullptr), nullptr) << "switched off again";
}

TEST_F(MeterProtocol, AMessageForAMeterWithoutTargetDeliversOnce) {
    ProcessHost host(filter_);
    auto meter = qorcore::MakeIntrusive<SpectrumMeterDSP>(kRate, 1);
    filter_->SwapSpectrumMeter(meter); // the process thread waits for Advance
    host.SetSource(std::make_unique<TestSignalSource>(TestSignalSource::Kind::kTones, kRate));
    host.Advance(0.2);
    auto message = std::make_shared<SpectrumMeterMessage>(meter);
    int calls = 0;
    auto connection =
        message->ConnectMeterDataChanged([&](unsigned int, const std::vector<float>&, unsigned int,
                                             SpectrumType, bool) { ++calls; });
    filter_->Post(message);
    for (int i = 0; i < 5; ++i) {
        host.Advance(0.05);
        Pump();
    }
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(message->GetDeliveryCount(), 1u);
    EXPECT_THROW(SpectrumMeterMessage(nullptr), std::invalid_argument);
    EXPECT_THROW(EnableFFTFilterMeter(nullptr, true), std::invalid_argument);
    filter_->SwapSpectrumMeter(nullptr);
}

TEST_F(MeterProtocol, MessagesRunInPostingOrderOnTheirThreads) {
    ProcessHost host(filter_);
    auto trail = std::make_shared<Trail>();
    for (const char* name : {"a", "b", "c"})
        filter_->Post(std::make_shared<TrailMessage>(name, trail));
    host.Advance(512.0 / kRate); // one block
    filter_->Post(std::make_shared<TrailMessage>("d", trail));
    EXPECT_EQ(Pump(), 3u);
    host.Advance(512.0 / kRate);
    EXPECT_EQ(Pump(), 1u);
    const std::vector<std::string> order{"a process", "b process", "c process", "a main",
                                         "b main",    "c main",    "d process", "d main"};
    ASSERT_EQ(trail->steps.size(), order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(trail->steps[i].first, order[i]);
        const bool main = order[i].ends_with("main");
        EXPECT_EQ(trail->steps[i].second,
                  main ? std::this_thread::get_id() : host.GetProcessThreadId())
            << order[i];
    }
}
