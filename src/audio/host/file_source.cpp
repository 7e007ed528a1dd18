#include "audio/host/file_source.hpp"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>

namespace qafhost {

namespace {

struct SndfileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};

} // namespace

FileSource::FileSource(const std::string& path, float hostSampleRate)
    : hostSampleRate_(hostSampleRate) {
    if (!std::isfinite(hostSampleRate) || hostSampleRate <= 0.0f)
        throw std::invalid_argument("FileSource: the sample rate must be above 0");
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndfileCloser> file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file)
        throw std::runtime_error("FileSource: cannot read \"" + path +
                                 "\": " + sf_strerror(nullptr));
    if (info.channels <= 0 || info.frames <= 0 || info.samplerate <= 0)
        throw std::runtime_error("FileSource: \"" + path + "\" holds no audio");
    channelCount_ = std::size_t(info.channels);
    fileSampleRate_ = float(info.samplerate);
    samples_.resize(std::size_t(info.frames) * channelCount_);
    const sf_count_t read = sf_readf_float(file.get(), samples_.data(), info.frames);
    if (read <= 0)
        throw std::runtime_error("FileSource: cannot read the samples of \"" + path +
                                 "\": " + sf_strerror(file.get()));
    frameCount_ = std::size_t(read);
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
