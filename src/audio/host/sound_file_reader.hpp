#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct sf_private_tag;

namespace qafhost {

/// An audio file read through libsndfile from start to end, a block at a time, in float
/// samples at the file's own rate and channels. Any format libsndfile reads will do.
class SoundFileReader {
public:
    /// A file that cannot be opened, or holds no channels, throws std::runtime_error naming
    /// the file and the reason.
    explicit SoundFileReader(const std::string& path);
    ~SoundFileReader();
    SoundFileReader(const SoundFileReader&) = delete;
    SoundFileReader& operator=(const SoundFileReader&) = delete;

    const std::string& GetPath() const { return path_; }
    float GetSampleRate() const { return sampleRate_; }
    std::size_t GetChannelCount() const { return channelCount_; }
    /// The frames the file says it holds.
    std::uint64_t GetFrameCount() const { return frameCount_; }
    /// libsndfile's code of the file's container, sample type and byte order, which
    /// `SoundFileWriter` takes to write another file like it.
    int GetFormat() const { return format_; }

    /// Fills up to `frameCount` interleaved frames and returns how many; 0 at the end. A
    /// damaged file throws std::runtime_error naming it.
    std::size_t Read(float* interleaved, std::size_t frameCount);

private:
    struct Closer {
        void operator()(sf_private_tag* file) const;
    };

    std::string path_;
    std::unique_ptr<sf_private_tag, Closer> file_;
    float sampleRate_ = 0.0f;
    std::size_t channelCount_ = 0;
    std::uint64_t frameCount_ = 0;
    int format_ = 0;
};

} // namespace qafhost
