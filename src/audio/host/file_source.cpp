#include "audio/host/file_source.hpp"

#include "audio/host/sound_file_reader.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace qafhost {

FileSource::FileSource(const std::string& path, float hostSampleRate)
    : hostSampleRate_(hostSampleRate) {
    if (!std::isfinite(hostSampleRate) || hostSampleRate <= 0.0f)
        throw std::invalid_argument("FileSource: the sample rate must be above 0");
    try {
        SoundFileReader reader(path);
        if (reader.GetFrameCount() == 0)
            throw std::runtime_error("\"" + path + "\" holds no audio");
        channelCount_ = reader.GetChannelCount();
        fileSampleRate_ = reader.GetSampleRate();
        samples_.resize(std::size_t(reader.GetFrameCount()) * channelCount_);
        frameCount_ = reader.Read(samples_.data(), std::size_t(reader.GetFrameCount()));
        if (frameCount_ == 0)
            throw std::runtime_error("cannot read the samples of \"" + path + "\"");
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("FileSource: ") + error.what());
    }
    samples_.resize(frameCount_ * channelCount_);
    step_ = double(fileSampleRate_) / double(hostSampleRate_);
}

float FileSource::Sample(std::size_t channel, double position) const {
    const std::size_t first = std::size_t(position);
    const std::size_t second = first + 1 < frameCount_ ? first + 1 : 0; // the loop joins here
    const float t = float(position - double(first));
    const float a = samples_[first * channelCount_ + channel];
    const float b = samples_[second * channelCount_ + channel];
    return a + (b - a) * t;
}

void FileSource::Read(float* const* channels, std::size_t channelCount, std::size_t frameCount) {
    const double length = double(frameCount_);
    for (std::size_t i = 0; i < frameCount; ++i) {
        for (std::size_t c = 0; c < channelCount; ++c)
            if (channels[c])
                channels[c][i] = Sample(std::min(c, channelCount_ - 1), position_);
        position_ += step_;
        if (position_ >= length)
            position_ = std::fmod(position_, length);
    }
}

} // namespace qafhost
