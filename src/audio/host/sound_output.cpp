#include "audio/host/sound_output.hpp"

#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace qafhost {

namespace {

SoundOutput::Options CheckedOptions(SoundOutput::Options options) {
    if (options.deviceFrames == 0 || options.deviceFrames > 32768 || options.bufferFrames == 0 ||
        options.startFrames == 0 || options.startFrames > options.bufferFrames)
        throw std::invalid_argument("SoundOutput: the device needs 1 to 32768 frames at a time "
                                    "and a ring that holds the frames it starts with");
    return options;
}

} // namespace

SoundOutput::SoundOutput(float sampleRate, std::size_t channelCount)
    : SoundOutput(sampleRate, channelCount, Options{}) {}

SoundOutput::SoundOutput(float sampleRate, std::size_t channelCount, Options options)
    : sampleRate_(sampleRate), channelCount_(channelCount),
      capacity_(CheckedOptions(options).bufferFrames), startFrames_(options.startFrames) {
    if (!(sampleRate >= 1.0f && sampleRate <= 384000.0f) || channelCount == 0 || channelCount > 8)
        throw std::runtime_error("no sound device plays " + std::to_string(channelCount) +
                                 " channels at " + std::to_string(std::lround(sampleRate)) + " Hz");
    ring_.assign(capacity_ * channelCount_, 0.0f);
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        throw std::runtime_error(SDL_GetError());
    SDL_AudioSpec wanted{};
    wanted.freq = int(std::lround(sampleRate));
    wanted.format = AUDIO_F32SYS;
    wanted.channels = Uint8(channelCount);
    wanted.samples = Uint16(options.deviceFrames);
    wanted.callback = &SoundOutput::Callback;
    wanted.userdata = this;
    SDL_AudioSpec obtained{};
    // No changes allowed: SDL converts to whatever the device takes.
    device_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, &obtained, 0);
    if (device_ == 0) {
        const std::string reason = SDL_GetError();
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
        throw std::runtime_error(reason);
    }
    if (const char* driver = SDL_GetCurrentAudioDriver())
        driver_ = driver;
    SDL_PauseAudioDevice(device_, 0);
}

SoundOutput::~SoundOutput() {
    SDL_CloseAudioDevice(device_);
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

ProcessHost::OutputTap SoundOutput::MakeTap() {
    return [this](const float* const* channels, std::size_t channelCount, std::size_t frameCount) {
        Push(channels, channelCount, frameCount);
    };
}

void SoundOutput::Push(const float* const* channels, std::size_t channelCount,
                       std::size_t frameCount) {
    const std::uint64_t written = written_.load(std::memory_order_relaxed);
    const std::uint64_t held = written - read_.load(std::memory_order_acquire);
    const std::size_t count = std::min<std::size_t>(frameCount, capacity_ - std::size_t(held));
    for (std::size_t i = 0; i < count; ++i) {
        float* frame = ring_.data() + std::size_t((written + i) % capacity_) * channelCount_;
        for (std::size_t c = 0; c < channelCount_; ++c)
            frame[c] = c < channelCount && channels[c] ? channels[c][i] : 0.0f;
    }
    written_.store(written + count, std::memory_order_release);
    if (count < frameCount)
        dropped_.fetch_add(frameCount - count, std::memory_order_relaxed);
}

void SoundOutput::Callback(void* self, std::uint8_t* stream, int length) {
    auto* output = static_cast<SoundOutput*>(self);
    const std::size_t frameSize = output->channelCount_ * sizeof(float);
    output->Pull(reinterpret_cast<float*>(stream), std::size_t(length) / frameSize);
}

void SoundOutput::Pull(float* interleaved, std::size_t frameCount) {
    const std::uint64_t read = read_.load(std::memory_order_relaxed);
    const std::uint64_t held = written_.load(std::memory_order_acquire) - read;
    if (!playing_ && held >= startFrames_)
        playing_ = true;
    std::size_t count = 0;
    if (playing_) {
        count = std::min<std::size_t>(frameCount, std::size_t(held));
        // At most two pieces: up to the end of the ring, then from its start.
        const std::size_t at = std::size_t(read % capacity_);
        const std::size_t first = std::min(count, capacity_ - at);
        std::memcpy(interleaved, ring_.data() + at * channelCount_,
                    first * channelCount_ * sizeof(float));
        std::memcpy(interleaved + first * channelCount_, ring_.data(),
                    (count - first) * channelCount_ * sizeof(float));
        read_.store(read + count, std::memory_order_release);
        if (count < frameCount) {
            underruns_.fetch_add(1, std::memory_order_relaxed);
            playing_ = false;
        }
    }
    std::fill(interleaved + count * channelCount_, interleaved + frameCount * channelCount_, 0.0f);
}

} // namespace qafhost
