#pragma once

#include "platform/host/linear_parameter_info.hpp"
#include "platform/host/multi_channel_audio_filter_base.hpp"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace qoraudiofilterhost {

/// One parameter of a `ParameterStoreFilter`: a name, the plain values at normalised 0 and 1
/// (the range may descend), the normalised default and the unit of the plain value ("Hz",
/// "dB"; empty for a plain number).
struct ParameterDescriptor {
    std::string name;
    float plainAtZero = 0.0f;
    float plainAtOne = 1.0f;
    float defaultValue = 0.0f;
    std::string unit = {};
};

/// A filter that is nothing but a table of parameters: values, descriptors, a dirty count
/// raised on every change, edit gestures, quiet writes, suspended state, presets, overrides and
/// custom data. The reference effects keep their parameters in one, and tests use it as the
/// filter behind an editor: it records every call that writes or gestures, in order.
///
/// Values written through the filter's interface are clamped to 0..1 (NaN is kept: what to
/// make of it is the reader's business). An index outside the table throws std::out_of_range,
/// except for `GetParameterInfo`, which answers null, and `EndParameterEdit(-1)`.
class ParameterStoreFilter : public MultiChannelAudioFilterBase {
public:
    enum class CallKind {
        kSetParameterValue,
        kSetParameterQuietly,
        kBeginParameterEdit,
        kEndParameterEdit,
        kPrepareParameterSync,
        kGetParameterValue, // only while reads are recorded
    };
    struct Call {
        CallKind kind;
        int index = -1;
        float value = 0.0f;
        friend bool operator==(const Call& a, const Call& b) {
            // Values compare bitwise-equal for NaN so that recorded NaN writes can be matched.
            return a.kind == b.kind && a.index == b.index &&
                   (a.value == b.value || (a.value != a.value && b.value != b.value));
        }
    };

    /// A descriptor with non-finite ends throws std::invalid_argument.
    explicit ParameterStoreFilter(std::vector<ParameterDescriptor> parameters);

    // AudioFilter
    double GetDuration() const override;
    std::size_t GetParameterCount() const override { return descriptors_.size(); }
    void SetParameterValue(int index, float value) override;
    void SetParameterQuietly(int index, float value) override;
    float GetParameterValue(int index) const override;
    std::shared_ptr<AudioFilterParameterInfo> GetParameterInfo(int index) const override;
    void BeginParameterEdit(int index) override;
    void EndParameterEdit(int index) override;
    bool IsParameterBeingEdited(int index) const override;
    bool PrepareParameterSync() override;
    int GetCustomDoubleData(int index, int size, std::vector<double>& out) override;
    int GetCustomFloatData(int index, int size, std::vector<float>& out) override;
    // MultiChannelAudioFilterBase
    bool GetOverrideParameterValue(int index, float* inOut) const override;

    // The effect's side
    const ParameterDescriptor& GetDescriptor(int index) const;
    /// Stores a value as it comes (no clamping, NaN allowed), as the process side or an
    /// automation would, raising the dirty count when it differs. Not recorded.
    void StoreValue(int index, float value);
    /// The plain value of a parameter, through its descriptor.
    float GetPlainValue(int index) const;
    /// Sets every value (missing ones to their defaults), raises the dirty count once and emits
    /// the preset signal. More values than parameters throw std::invalid_argument.
    void LoadPreset(const std::vector<float>& values);
    /// Suspends or resumes; the signal fires on a change.
    void SetSuspended(bool suspended) { SetSuspendedState(suspended); }
    /// Makes `GetOverrideParameterValue` answer `value` for the index; no value removes it.
    void SetOverrideValue(int index, std::optional<float> value);
    void SetCustomDoubleData(int index, std::vector<double> data);
    void SetCustomFloatData(int index, std::vector<float> data);
    void SetDuration(double seconds);
    using AudioFilter::SetAudioFilterHost;
    using AudioFilter::SetBuses;
    using AudioFilter::SetSampleRate;

    // The record
    std::vector<Call> GetCalls() const;
    /// The calls of one kind, in order.
    std::vector<Call> GetCalls(CallKind kind) const;
    void ClearCalls();
    void SetRecordReads(bool record);
    /// Whether writes and gestures are recorded at all; on by default, for tests. A filter
    /// that runs for long in a host turns it off, or the record grows with every tick.
    void SetRecordCalls(bool record);
    std::set<int> GetEditedParameters() const;

private:
    void CheckIndex(int index, const char* operation) const;
    void Record(CallKind kind, int index, float value) const;
    /// Stores and raises the dirty count when the value changes; true if it changed.
    bool Store(int index, float value, bool raiseDirty);

    std::vector<ParameterDescriptor> descriptors_;
    std::unique_ptr<std::atomic<float>[]> values_;
    mutable std::mutex mutex_; // guards everything below
    std::set<int> edited_;
    std::map<int, float> overrides_;
    std::map<int, std::vector<double>> doubleData_;
    std::map<int, std::vector<float>> floatData_;
    double duration_ = 0.0;
    bool recordReads_ = false;
    bool recordCalls_ = true;
    mutable std::vector<Call> calls_;
};

const char* ToString(ParameterStoreFilter::CallKind kind);

} // namespace qoraudiofilterhost
