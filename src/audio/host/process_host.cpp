#include "audio/host/process_host.hpp"

#include "audio/host/denormals_as_zero.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>

namespace qafhost {

namespace {

// What plays while no source is set.
class SilentSource : public AudioSource {
public:
    explicit SilentSource(float sampleRate) : sampleRate_(sampleRate) {}
    float GetSampleRate() const override { return sampleRate_; }
    std::size_t GetChannelCount() const override { return 1; }
    void Read(float* const* channels, std::size_t channelCount, std::size_t frameCount) override {
        for (std::size_t c = 0; c < channelCount; ++c)
            std::fill_n(channels[c], frameCount, 0.0f);
    }
    void Rewind() override {}

private:
    float sampleRate_;
};

std::shared_ptr<qoraudiofilters::ReferenceEffect>
Checked(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect) {
    if (!effect)
        throw std::invalid_argument("ProcessHost: null effect");
    return effect;
}

} // namespace

ProcessHost::ProcessHost(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect)
    : ProcessHost(std::move(effect), Options{}) {}

ProcessHost::ProcessHost(std::shared_ptr<qoraudiofilters::ReferenceEffect> effect, Options options)
    : effect_(Checked(std::move(effect))), sampleRate_(effect_->GetSampleRate()),
      blockSize_(options.blockSize), clock_(options.clock), tap_(std::move(options.tap)),
      channelCount_(effect_->GetChannelCount()) {
    if (blockSize_ == 0 || blockSize_ > kMaxBlockSize)
        throw std::invalid_argument("ProcessHost: the block size must be 1 to " +
                                    std::to_string(kMaxBlockSize));
    input_.assign(channelCount_, std::vector<float>(blockSize_, 0.0f));
    output_.assign(channelCount_, std::vector<float>(blockSize_, 0.0f));
    for (std::size_t c = 0; c < channelCount_; ++c) {
        inputPointers_.push_back(input_[c].data());
        outputPointers_.push_back(output_[c].data());
    }
    source_ = std::make_unique<SilentSource>(sampleRate_);
    thread_ = std::thread(
        clock_ == Clock::kRealTime ? &ProcessHost::RunRealTime : &ProcessHost::RunVirtual, this);
}

ProcessHost::~ProcessHost() {
    {
        std::lock_guard lock(mutex_);
        stopping_.store(true, std::memory_order_release);
    }
    changed_.notify_all();
    thread_.join();
    delete incoming_.exchange(nullptr);
    delete outgoing_.exchange(nullptr);
}

void ProcessHost::SetSource(std::unique_ptr<AudioSource> source) {
    CollectSources();
    if (!source)
        source = std::make_unique<SilentSource>(sampleRate_);
    // A source the process thread never took is simply replaced.
    delete incoming_.exchange(source.release(), std::memory_order_acq_rel);
}

void ProcessHost::CollectSources() {
    delete outgoing_.exchange(nullptr, std::memory_order_acq_rel);
}

void ProcessHost::SetSuspended(bool suspended) {
    effect_->SetSuspended(suspended);
}

void ProcessHost::Advance(double seconds) {
    if (clock_ != Clock::kVirtual)
        throw std::logic_error("ProcessHost::Advance: the host runs on the real-time clock");
    if (!std::isfinite(seconds) || seconds < 0.0)
        throw std::invalid_argument("ProcessHost::Advance: a length of time is finite and not "
                                    "negative");
    effect_->UpdateFromParameters();
    CollectSources();
    std::unique_lock lock(mutex_);
    framesCarried_ += seconds * double(sampleRate_);
    const double blocks = std::floor(framesCarried_ / double(blockSize_));
    framesCarried_ -= blocks * double(blockSize_);
    blocksOwed_ += std::uint64_t(blocks);
    changed_.notify_all();
    changed_.wait(lock, [this] { return blocksOwed_ == 0; });
    lock.unlock();
    CollectSources();
}

void ProcessHost::RunVirtual() {
    const DenormalsAsZero denormals;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(
            lock, [this] { return blocksOwed_ > 0 || stopping_.load(std::memory_order_acquire); });
        if (stopping_.load(std::memory_order_acquire))
            return;
        lock.unlock();
        ProcessBlock();
        lock.lock();
        if (--blocksOwed_ == 0)
            changed_.notify_all();
    }
}

void ProcessHost::RunRealTime() {
    const DenormalsAsZero denormals;
    using clock = std::chrono::steady_clock;
    const auto period = std::chrono::duration_cast<clock::duration>(
        std::chrono::duration<double>(double(blockSize_) / double(sampleRate_)));
    auto due = clock::now();
    while (!stopping_.load(std::memory_order_acquire)) {
        ProcessBlock();
        due += period;
        const auto now = clock::now();
        // After a long stall (a debugger, a suspended machine) start the pace afresh rather
        // than racing to catch up.
        if (now - due > 8 * period)
            due = now;
        std::this_thread::sleep_until(due);
    }
}

void ProcessHost::ProcessBlock() {
    effect_->ProcessPostedMessages();
    // Take a new source once the main thread has freed the one before.
    if (incoming_.load(std::memory_order_acquire) && !outgoing_.load(std::memory_order_acquire)) {
        if (AudioSource* next = incoming_.exchange(nullptr, std::memory_order_acq_rel)) {
            outgoing_.store(source_.release(), std::memory_order_release);
            source_.reset(next);
        }
    }
    source_->Read(inputPointers_.data(), channelCount_, blockSize_);
    if (effect_->IsSuspended()) {
        for (std::size_t c = 0; c < channelCount_; ++c)
            std::copy(input_[c].begin(), input_[c].end(), output_[c].begin());
    } else {
        effect_->Process(inputPointers_.data(), outputPointers_.data(), channelCount_, blockSize_);
    }
    if (tap_)
        tap_(outputPointers_.data(), channelCount_, blockSize_);
    processed_.fetch_add(blockSize_, std::memory_order_acq_rel);
}

} // namespace qafhost
