// The host side an editor talks to: messages between threads, buses and rates, the linear
// parameter mapping, and the recording parameter store the editor tests run against.
#include "platform/core/main_thread_queue.hpp"
#include "platform/host/i_audio_filter_host.hpp"
#include "platform/host/linear_parameter_info.hpp"
#include "platform/host/parameter_store_filter.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace qoraudiofilterhost;
using Kind = ParameterStoreFilter::CallKind;
using Call = ParameterStoreFilter::Call;

namespace {

class LoggingMessage : public Message {
public:
    LoggingMessage(std::vector<std::string>& log, std::string name)
        : log_(log), name_(std::move(name)) {}
    void ExecuteOnProcessThread() override { Log("@process"); }
    void ExecuteOnMainThread() override { Log("@main"); }

private:
    void Log(const char* where) {
        log_.push_back(name_ + where + (qorcore::IsMainThread() ? ":main" : ":other"));
    }
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

class ParameterStore : public ::testing::Test {
protected:
    ParameterStoreFilter filter{{{"gain", -48.0f, 12.0f, 0.8f},
                                 {"ratio", 20.0f, 1.0f, 0.0f}, // descending range
                                 {"mix", 0.0f, 100.0f, 1.0f}}};
};

} // namespace

TEST(AudioFilterMessages, RunOnTheProcessThreadThenOnTheMainThreadInOrder) {
    auto filter = std::make_shared<ParameterStoreFilter>(
        std::vector<ParameterDescriptor>{{"a", 0.0f, 1.0f, 0.0f}});
    std::vector<std::string> log;
    filter->Post(std::make_shared<LoggingMessage>(log, "one"));
    filter->Post(std::make_shared<LoggingMessage>(log, "two"));
    EXPECT_EQ(filter->GetPostedMessageCount(), 2u);
    EXPECT_TRUE(log.empty()) << "posting runs nothing";
    std::size_t ran = 0;
    std::thread([&] { ran = filter->ProcessPostedMessages(); }).join();
    EXPECT_EQ(ran, 2u);
    EXPECT_EQ(log, (std::vector<std::string>{"one@process:other", "two@process:other"}));
    qorcore::MainThreadQueue::Get().RunPending();
    EXPECT_EQ(log, (std::vector<std::string>{"one@process:other", "two@process:other",
                                             "one@main:main", "two@main:main"}));
    EXPECT_EQ(filter->ProcessPostedMessages(), 0u);
    EXPECT_THROW(filter->Post(nullptr), std::invalid_argument);
}

TEST_F(ParameterStore, BusesRatesHostAndNoResponse) {
    filter.SetBuses({{{1, 2, 3, 4, 5, 6}}}, {});
    EXPECT_EQ(filter.GetNumberOfInputChannels(), 6u);
    EXPECT_EQ(filter.GetNumberOfOutputChannels(), 0u);
    EXPECT_EQ(filter.GetInputBuses().front().channelLabels.size(), 6u);
    filter.SetSampleRate(44100.0f);
    EXPECT_FLOAT_EQ(filter.GetSampleRate(), 44100.0f);
    EXPECT_THROW(filter.SetSampleRate(0.0f), std::invalid_argument);
    FixedHost host;
    filter.SetAudioFilterHost(&host);
    TimeDisplayInfo info;
    ASSERT_TRUE(filter.GetAudioFilterHost()->GetTimeDisplayInfo(&info));
    EXPECT_EQ(info.format, 3);
    std::vector<float> curve;
    EXPECT_EQ(filter.GetResponseCurve(0, 16, curve), 0) << "a store has no response";
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

TEST_F(ParameterStore, StartsAtDefaultsWithDescriptorsAndPlainValues) {
    ASSERT_EQ(filter.GetParameterCount(), 3u);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(0), 0.8f);
    EXPECT_NEAR(filter.GetPlainValue(0), 0.0f, 1e-5f); // 0.8 is not exact in a float
    EXPECT_FLOAT_EQ(filter.GetPlainValue(1), 20.0f);
    auto info = filter.GetParameterInfo(1);
    ASSERT_TRUE(info);
    EXPECT_FLOAT_EQ(info->PlainFromNormalised(1.0f), 1.0f) << "the descriptor's own range";
    EXPECT_EQ(filter.GetParameterInfo(3), nullptr);
    EXPECT_EQ(filter.GetParameterInfo(-1), nullptr);
}

TEST_F(ParameterStore, RecordsGesturesAndWritesInOrder) {
    filter.BeginParameterEdit(0);
    filter.SetParameterValue(0, 0.25f);
    filter.SetParameterValue(0, 0.5f);
    filter.BeginParameterEdit(2);
    filter.SetParameterQuietly(1, 0.75f);
    filter.EndParameterEdit(0);
    EXPECT_EQ(filter.GetEditedParameters(), std::set<int>{2});
    EXPECT_TRUE(filter.IsParameterBeingEdited(2));
    EXPECT_FALSE(filter.IsParameterBeingEdited(0));
    filter.EndParameterEdit(-1);
    EXPECT_TRUE(filter.GetEditedParameters().empty());
    const std::vector<Call> expected{
        {Kind::kBeginParameterEdit, 0, 0.0f},   {Kind::kSetParameterValue, 0, 0.25f},
        {Kind::kSetParameterValue, 0, 0.5f},    {Kind::kBeginParameterEdit, 2, 0.0f},
        {Kind::kSetParameterQuietly, 1, 0.75f}, {Kind::kEndParameterEdit, 0, 0.0f},
        {Kind::kEndParameterEdit, -1, 0.0f},
    };
    EXPECT_EQ(filter.GetCalls(), expected);
    EXPECT_EQ(filter.GetCalls(Kind::kSetParameterValue).size(), 2u);
    filter.ClearCalls();
    EXPECT_TRUE(filter.GetCalls().empty());
}

TEST_F(ParameterStore, DirtyCountRisesOnChangesButNotOnQuietOrEqualWrites) {
    filter.SetParameterValue(0, 0.3f);
    EXPECT_EQ(filter.GetParameterDirtyCount(), 1);
    filter.SetParameterValue(0, 0.3f);
    EXPECT_EQ(filter.GetParameterDirtyCount(), 1) << "an equal value is no change";
    filter.SetParameterQuietly(0, 0.9f);
    EXPECT_EQ(filter.GetParameterDirtyCount(), 1);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(0), 0.9f);
    filter.StoreValue(2, 0.1f);
    EXPECT_EQ(filter.GetParameterDirtyCount(), 2);
    EXPECT_EQ(filter.GetCalls(Kind::kSetParameterValue).size(), 2u)
        << "StoreValue is the effect's side and is not recorded";
}

TEST_F(ParameterStore, ClampsUserWritesAndKeepsNaN) {
    filter.SetParameterValue(1, 1.5f);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(1), 1.0f);
    filter.SetParameterValue(1, -2.0f);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(1), 0.0f);
    filter.StoreValue(1, std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(std::isnan(filter.GetParameterValue(1)));
    const int dirty = filter.GetParameterDirtyCount();
    filter.StoreValue(1, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(filter.GetParameterDirtyCount(), dirty) << "NaN over NaN is no change";
}

TEST_F(ParameterStore, BadIndicesAndDescriptorsGiveClearErrors) {
    EXPECT_THROW(filter.GetParameterValue(3), std::out_of_range);
    EXPECT_THROW(filter.SetParameterValue(-1, 0.0f), std::out_of_range);
    EXPECT_THROW(filter.BeginParameterEdit(7), std::out_of_range);
    EXPECT_THROW(filter.EndParameterEdit(-2), std::out_of_range);
    try {
        filter.SetParameterQuietly(9, 0.0f);
        FAIL() << "no exception";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(),
                     "ParameterStoreFilter::SetParameterQuietly: parameter index 9 out of range "
                     "(3 parameters)");
    }
    EXPECT_TRUE(filter.GetCalls().empty()) << "refused calls are not recorded";
    EXPECT_THROW(ParameterStoreFilter({{"bad", 0.0f, INFINITY, 0.0f}}), std::invalid_argument);
    EXPECT_THROW(filter.LoadPreset({0, 0, 0, 0}), std::invalid_argument);
    EXPECT_THROW(filter.SetDuration(-1.0), std::invalid_argument);
}

TEST_F(ParameterStore, RecordsWritesAndReadsOnlyWhenTold) {
    filter.SetRecordCalls(false);
    filter.BeginParameterEdit(0);
    filter.SetParameterValue(0, 0.5f);
    filter.EndParameterEdit(0);
    EXPECT_TRUE(filter.GetCalls().empty());
    EXPECT_FLOAT_EQ(filter.GetParameterValue(0), 0.5f) << "the values are kept all the same";
    EXPECT_FALSE(filter.IsParameterBeingEdited(0));
    filter.SetRecordCalls(true);
    filter.SetParameterValue(0, 0.25f);
    EXPECT_EQ(filter.GetCalls().size(), 1u);

    filter.ClearCalls();
    (void)filter.GetParameterValue(0);
    EXPECT_TRUE(filter.GetCalls().empty()) << "reads are not recorded unless asked";
    filter.SetRecordReads(true);
    (void)filter.GetParameterValue(2);
    ASSERT_EQ(filter.GetCalls().size(), 1u);
    EXPECT_EQ(filter.GetCalls()[0], (Call{Kind::kGetParameterValue, 2, 1.0f}));
    EXPECT_STREQ(ToString(Kind::kGetParameterValue), "GetParameterValue");
}

TEST_F(ParameterStore, PresetsSuspensionAndSignals) {
    int presets = 0;
    std::vector<bool> suspended;
    auto presetConnection = filter.GetSignals().ConnectPresetChanged([&] { ++presets; });
    auto suspendConnection =
        filter.GetSignals().ConnectSuspendedStateChanged([&](bool s) { suspended.push_back(s); });
    filter.LoadPreset({0.1f, 0.2f});
    EXPECT_EQ(presets, 1);
    EXPECT_EQ(filter.GetParameterDirtyCount(), 1) << "one rise for the whole preset";
    EXPECT_FLOAT_EQ(filter.GetParameterValue(0), 0.1f);
    EXPECT_FLOAT_EQ(filter.GetParameterValue(2), 1.0f) << "a missing value takes its default";
    filter.SetSuspended(true);
    filter.SetSuspended(true);
    filter.SetSuspended(false);
    EXPECT_EQ(suspended, (std::vector<bool>{true, false})) << "signals only on a change";
    EXPECT_FALSE(filter.IsSuspended());
    presetConnection.Release();
    filter.LoadPreset({});
    EXPECT_EQ(presets, 1) << "a released connection ends";
}

TEST_F(ParameterStore, OverridesAndCustomData) {
    float value = 0.4f;
    EXPECT_FALSE(filter.GetOverrideParameterValue(0, &value));
    EXPECT_FLOAT_EQ(value, 0.4f);
    filter.SetOverrideValue(0, 0.6f);
    EXPECT_TRUE(filter.GetOverrideParameterValue(0, &value));
    EXPECT_FLOAT_EQ(value, 0.6f);
    filter.SetOverrideValue(0, std::nullopt);
    EXPECT_FALSE(filter.GetOverrideParameterValue(0, &value));
    std::vector<double> doubles{9.0};
    EXPECT_EQ(filter.GetCustomDoubleData(4, 3, doubles), 0);
    filter.SetCustomDoubleData(4, {1.0, 2.0});
    EXPECT_NE(filter.GetCustomDoubleData(4, 3, doubles), 0);
    EXPECT_EQ(doubles, (std::vector<double>{1.0, 2.0, 0.0})) << "padded to the asked size";
    std::vector<float> floats;
    filter.SetCustomFloatData(1, {0.5f, 0.25f, 0.125f});
    EXPECT_NE(filter.GetCustomFloatData(1, 2, floats), 0);
    EXPECT_EQ(floats, (std::vector<float>{0.5f, 0.25f}));
}
