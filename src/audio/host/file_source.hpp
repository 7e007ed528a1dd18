#pragma once

#include "audio/host/audio_source.hpp"

#include <string>
#include <vector>

namespace qafhost {

/// An audio file read through libsndfile, played in a loop at the host's rate. The whole file
/// is read when the source is made, so playing it touches no disk; a rate other than the
/// host's is converted by linear interpolation, which is enough to look at a spectrum.
class FileSource : public AudioSource {
public:
    /// A file that cannot be read, or holds no samples, throws std::runtime_error naming the
    /// file and the reason. A rate that is not a positive finite number throws
    /// std::invalid_argument.
    FileSource(const std::string& path, float hostSampleRate);

    /// The host's rate, at which `Read` delivers.
    float GetSampleRate() const override { return hostSampleRate_; }
    float GetFileSampleRate() const { return fileSampleRate_; }
    std::size_t GetChannelCount() const override { return channelCount_; }
    /// Frames in the file, at its own rate.
    std::size_t GetFrameCount() const { return frameCount_; }
    void Read(float* const* channels, std::size_t channelCount, std::size_t frameCount) override;
    void Rewind() override { position_ = 0.0; }

private:
    float Sample(std::size_t channel, double position) const;

    float hostSampleRate_;
    float fileSampleRate_ = 0.0f;
    std::size_t channelCount_ = 0;
    std::size_t frameCount_ = 0;
    std::vector<float> samples_; // interleaved, as the file holds them
    double position_ = 0.0;      // in frames of the file
    double step_ = 1.0;          // file frames per host frame
};

} // namespace qafhost
