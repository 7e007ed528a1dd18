#include "platform/host/parameter_store_filter.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace qoraudiofilterhost {

namespace {

float ClampNormalised(float value) {
    if (std::isnan(value))
        return value;
    return std::clamp(value, 0.0f, 1.0f);
}

bool SameValue(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

} // namespace

ParameterStoreFilter::ParameterStoreFilter(std::vector<ParameterDescriptor> parameters)
    : descriptors_(std::move(parameters)),
      values_(std::make_unique<std::atomic<float>[]>(descriptors_.size())) {
    for (std::size_t i = 0; i < descriptors_.size(); ++i) {
        const ParameterDescriptor& d = descriptors_[i];
        if (!std::isfinite(d.plainAtZero) || !std::isfinite(d.plainAtOne))
            throw std::invalid_argument("ParameterStoreFilter: parameter " + std::to_string(i) +
                                        " (" + d.name + ") has a non-finite plain range");
        values_[i].store(ClampNormalised(d.defaultValue));
    }
}

void ParameterStoreFilter::CheckIndex(int index, const char* operation) const {
    if (index < 0 || std::size_t(index) >= descriptors_.size())
        throw std::out_of_range(std::string("ParameterStoreFilter::") + operation +
                                ": parameter index " + std::to_string(index) + " out of range (" +
                                std::to_string(descriptors_.size()) + " parameters)");
}

void ParameterStoreFilter::Record(CallKind kind, int index, float value) const {
    std::lock_guard lock(mutex_);
    if (recordCalls_)
        calls_.push_back({kind, index, value});
}

bool ParameterStoreFilter::Store(int index, float value, bool raiseDirty) {
    const float old = values_[std::size_t(index)].exchange(value, std::memory_order_acq_rel);
    if (SameValue(old, value))
        return false;
    if (raiseDirty)
        RaiseParameterDirtyCount();
    return true;
}

double ParameterStoreFilter::GetDuration() const {
    std::lock_guard lock(mutex_);
    return duration_;
}

void ParameterStoreFilter::SetParameterValue(int index, float value) {
    CheckIndex(index, "SetParameterValue");
    Record(CallKind::kSetParameterValue, index, value);
    Store(index, ClampNormalised(value), true);
}

void ParameterStoreFilter::SetParameterQuietly(int index, float value) {
    CheckIndex(index, "SetParameterQuietly");
    Record(CallKind::kSetParameterQuietly, index, value);
    Store(index, ClampNormalised(value), false);
}

float ParameterStoreFilter::GetParameterValue(int index) const {
    CheckIndex(index, "GetParameterValue");
    const float value = values_[std::size_t(index)].load(std::memory_order_acquire);
    bool record;
    {
        std::lock_guard lock(mutex_);
        record = recordReads_;
    }
    if (record)
        Record(CallKind::kGetParameterValue, index, value);
    return value;
}

std::shared_ptr<AudioFilterParameterInfo> ParameterStoreFilter::GetParameterInfo(int index) const {
    if (index < 0 || std::size_t(index) >= descriptors_.size())
        return nullptr;
    const ParameterDescriptor& d = descriptors_[std::size_t(index)];
    return std::make_shared<LinearParameterInfo>(d.plainAtZero, d.plainAtOne);
}

void ParameterStoreFilter::BeginParameterEdit(int index) {
    CheckIndex(index, "BeginParameterEdit");
    Record(CallKind::kBeginParameterEdit, index, 0.0f);
    std::lock_guard lock(mutex_);
    edited_.insert(index);
}

void ParameterStoreFilter::EndParameterEdit(int index) {
    if (index != -1)
        CheckIndex(index, "EndParameterEdit");
    Record(CallKind::kEndParameterEdit, index, 0.0f);
    std::lock_guard lock(mutex_);
    if (index == -1)
        edited_.clear();
    else
        edited_.erase(index);
}

bool ParameterStoreFilter::IsParameterBeingEdited(int index) const {
    std::lock_guard lock(mutex_);
    return edited_.count(index) != 0;
}

bool ParameterStoreFilter::PrepareParameterSync() {
    Record(CallKind::kPrepareParameterSync, -1, 0.0f);
    return true;
}

int ParameterStoreFilter::GetCustomDoubleData(int index, int size, std::vector<double>& out) {
    std::lock_guard lock(mutex_);
    auto found = doubleData_.find(index);
    if (found == doubleData_.end() || size < 0)
        return 0;
    out.assign(std::size_t(size), 0.0);
    std::copy_n(found->second.begin(), std::min(found->second.size(), out.size()), out.begin());
    return 1;
}

int ParameterStoreFilter::GetCustomFloatData(int index, int size, std::vector<float>& out) {
    std::lock_guard lock(mutex_);
    auto found = floatData_.find(index);
    if (found == floatData_.end() || size < 0)
        return 0;
    out.assign(std::size_t(size), 0.0f);
    std::copy_n(found->second.begin(), std::min(found->second.size(), out.size()), out.begin());
    return 1;
}

bool ParameterStoreFilter::GetOverrideParameterValue(int index, float* inOut) const {
    if (!inOut)
        return false;
    std::lock_guard lock(mutex_);
    auto found = overrides_.find(index);
    if (found == overrides_.end())
        return false;
    *inOut = found->second;
    return true;
}

const ParameterDescriptor& ParameterStoreFilter::GetDescriptor(int index) const {
    CheckIndex(index, "GetDescriptor");
    return descriptors_[std::size_t(index)];
}

void ParameterStoreFilter::StoreValue(int index, float value) {
    CheckIndex(index, "StoreValue");
    Store(index, value, true);
}

float ParameterStoreFilter::GetPlainValue(int index) const {
    CheckIndex(index, "GetPlainValue");
    const ParameterDescriptor& d = descriptors_[std::size_t(index)];
    return LinearParameterInfo(d.plainAtZero, d.plainAtOne)
        .PlainFromNormalised(values_[std::size_t(index)].load(std::memory_order_acquire));
}

void ParameterStoreFilter::LoadPreset(const std::vector<float>& values) {
    if (values.size() > descriptors_.size())
        throw std::invalid_argument(
            "ParameterStoreFilter::LoadPreset: " + std::to_string(values.size()) + " values for " +
            std::to_string(descriptors_.size()) + " parameters");
    for (std::size_t i = 0; i < descriptors_.size(); ++i)
        Store(int(i), ClampNormalised(i < values.size() ? values[i] : descriptors_[i].defaultValue),
              false);
    RaiseParameterDirtyCount();
    GetSignals().EmitPresetChanged();
}

void ParameterStoreFilter::SetOverrideValue(int index, std::optional<float> value) {
    CheckIndex(index, "SetOverrideValue");
    std::lock_guard lock(mutex_);
    if (value)
        overrides_[index] = *value;
    else
        overrides_.erase(index);
}

void ParameterStoreFilter::SetCustomDoubleData(int index, std::vector<double> data) {
    std::lock_guard lock(mutex_);
    doubleData_[index] = std::move(data);
}

void ParameterStoreFilter::SetCustomFloatData(int index, std::vector<float> data) {
    std::lock_guard lock(mutex_);
    floatData_[index] = std::move(data);
}

void ParameterStoreFilter::SetDuration(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0.0)
        throw std::invalid_argument("ParameterStoreFilter::SetDuration: a duration is finite and "
                                    "not negative");
    std::lock_guard lock(mutex_);
    duration_ = seconds;
}

std::vector<ParameterStoreFilter::Call> ParameterStoreFilter::GetCalls() const {
    std::lock_guard lock(mutex_);
    return calls_;
}

std::vector<ParameterStoreFilter::Call> ParameterStoreFilter::GetCalls(CallKind kind) const {
    std::lock_guard lock(mutex_);
    std::vector<Call> out;
    std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(out),
                 [kind](const Call& call) { return call.kind == kind; });
    return out;
}

void ParameterStoreFilter::ClearCalls() {
    std::lock_guard lock(mutex_);
    calls_.clear();
}

void ParameterStoreFilter::SetRecordReads(bool record) {
    std::lock_guard lock(mutex_);
    recordReads_ = record;
}

void ParameterStoreFilter::SetRecordCalls(bool record) {
    std::lock_guard lock(mutex_);
    recordCalls_ = record;
}

std::set<int> ParameterStoreFilter::GetEditedParameters() const {
    std::lock_guard lock(mutex_);
    return edited_;
}

const char* ToString(ParameterStoreFilter::CallKind kind) {
    switch (kind) {
    case ParameterStoreFilter::CallKind::kSetParameterValue: return "SetParameterValue";
    case ParameterStoreFilter::CallKind::kSetParameterQuietly: return "SetParameterQuietly";
    case ParameterStoreFilter::CallKind::kBeginParameterEdit: return "BeginParameterEdit";
    case ParameterStoreFilter::CallKind::kEndParameterEdit: return "EndParameterEdit";
    case ParameterStoreFilter::CallKind::kPrepareParameterSync: return "PrepareParameterSync";
    case ParameterStoreFilter::CallKind::kGetParameterValue: return "GetParameterValue";
    }
    return "?";
}

} // namespace qoraudiofilterhost
