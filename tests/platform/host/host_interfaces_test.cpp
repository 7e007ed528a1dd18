#include "platform/core/main_thread_queue.hpp"
#include "platform/host/i_audio_filter_host.hpp"
#include "platform/host/linear_parameter_info.hpp"
#include "platform/host/parameter_store_filter.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace qoraudiofilterhost;

namespace {

std::shared_ptr<ParameterStoreFilter> MakeFilter() {
    return std::make_shared<ParameterStoreFilter>(
        std::vector<ParameterDescriptor>{{"a", 0.0f, 1.0f, 0.0f}});
}

class LoggingMessage : public Message {
public:
    LoggingMessage(std::vector<std::string>& log, std::string name)
        : log_(log), name_(std::move(name)) {}
    void ExecuteOnProcessThread() override {
        log_.push_back(name_ + "@process" + (qorcore::IsMainThread() ? ":main" : ":other"));
    }
    void ExecuteOnMainThread() override {
        log_.push_back(name_ + "@main" + (qorcore::IsMainThread() ? ":main" : ":other"));
    }

private:
    std::vector<std::string>& log_;
    std::string name_;
};

class FixedHost : public IAudioFilterHost {
public:
    bool GetTimeDisplayInfo(TimeDisplayInfo* out) const override {
        out->format = 3;
        return true;
    }
};

} // namespace

TEST(AudioFilterMessages, RunOnTheProcessThreadThenOnTheMainThreadInOrder) {
    auto filter = MakeFilter();
    std::vector<std::string> log;
    filter->Post(std::make_shared<LoggingMessage>(log, "one"));
    filter->Post(std::make_shared<LoggingMessage>(log, "two"));
    EXPECT_EQ(filter->GetPostedMessageCount(), 2u);
    EXPECT_TRUE(log.empty()) << "posting runs nothing";

    std::size_t ran = 0;
    std::thread process([&] { ran = filter->ProcessPostedMessages(); });
    process.join();
    EXPECT_EQ(ran, 2u);
    EXPECT_EQ(log, (std::vector<std::string>{"one@process:other", "two@process:other"}));
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(log, (std::vector<std::string>{"one@process:other", "two@process:other",
                                             "one@main:main", "two@main:main"}));
    EXPECT_EQ(filter->ProcessPostedMessages(), 0u);
    EXPECT_THROW(filter->Post(nullptr), std::invalid_argument);
}

TEST(AudioFilterNamedOperations, BusesRatesAndHost) {
    auto filter = MakeFilter();
    EXPECT_EQ(filter->GetNumberOfInputChannels(), 2u);
    filter->SetBuses({{{1, 2, 3, 4, 5, 6}}}, {});
    EXPECT_EQ(filter->GetNumberOfInputChannels(), 6u);
    EXPECT_EQ(filter->GetNumberOfOutputChannels(), 0u);
    EXPECT_EQ(filter->GetInputBuses().front().channelLabels.size(), 6u);
    filter->SetSampleRate(44100.0f);
    EXPECT_FLOAT_EQ(filter->GetSampleRate(), 44100.0f);
    EXPECT_THROW(filter->SetSampleRate(0.0f), std::invalid_argument);
    EXPECT_EQ(filter->GetAudioFilterHost(), nullptr);
    FixedHost host;
    filter->SetAudioFilterHost(&host);
    TimeDisplayInfo info;
    EXPECT_EQ(info.ticksPerQuarter, 1920);
    EXPECT_EQ(info.format, -1);
    ASSERT_TRUE(filter->GetAudioFilterHost()->GetTimeDisplayInfo(&info));
    EXPECT_EQ(info.format, 3);
    std::vector<float> curve;
    EXPECT_EQ(filter->GetResponseCurve(0, 16, curve), 0) << "a store has no response";
}

TEST(LinearParameterInfo, MapsBothWaysOnRisingAndDescendingRanges) {
    LinearParameterInfo rising(-48.0f, 12.0f);
    EXPECT_FLOAT_EQ(rising.PlainFromNormalised(0.0f), -48.0f);
    EXPECT_FLOAT_EQ(rising.PlainFromNormalised(1.0f), 12.0f);
    EXPECT_FLOAT_EQ(rising.NormalisedFromPlain(-18.0f), 0.5f);
    LinearParameterInfo descending(100.0f, 0.0f);
    EXPECT_FLOAT_EQ(descending.PlainFromNormalised(0.25f), 75.0f);
    EXPECT_FLOAT_EQ(descending.NormalisedFromPlain(75.0f), 0.25f);
    EXPECT_FLOAT_EQ(LinearParameterInfo(5.0f, 5.0f).NormalisedFromPlain(5.0f), 0.0f);
    EXPECT_THROW(LinearParameterInfo(NAN, 1.0f), std::invalid_argument);
}
