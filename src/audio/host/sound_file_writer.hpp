#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct sf_private_tag;

namespace qafhost {

/// An audio file written through libsndfile from float samples, which takes the place of
/// `path` only when it is complete: it grows in a file of its own beside `path` and is renamed
/// onto it by `Commit`. A writer dropped before that removes what it wrote, so a failed run
/// leaves neither a half-written file nor a damaged old one.
class SoundFileWriter {
public:
    /// libsndfile's code of WAV with 32-bit float samples.
    static constexpr int kFloatWav = 0x010006;

    /// `format` is libsndfile's code of container, sample type and byte order (as
    /// `SoundFileReader::GetFormat` gives). A format libsndfile cannot write with that rate and
    /// channel count, or a place it cannot write to, throws std::runtime_error naming `path`.
    SoundFileWriter(const std::string& path, int format, float sampleRate,
                    std::size_t channelCount);
    /// Removes the file unless it was committed.
    ~SoundFileWriter();
    SoundFileWriter(const SoundFileWriter&) = delete;
    SoundFileWriter& operator=(const SoundFileWriter&) = delete;

    const std::string& GetPath() const { return path_; }

    /// Appends interleaved frames; samples beyond -1..1 clip in integer formats. A failed
    /// write throws std::runtime_error naming the file.
    void Write(const float* interleaved, std::size_t frameCount);
    /// Finishes the file and puts it in place; throws std::runtime_error naming it on failure,
    /// and then nothing is left behind.
    void Commit();

private:
    struct Closer {
        void operator()(sf_private_tag* file) const;
    };
    void Discard();
    [[noreturn]] void Fail(const std::string& reason);

    std::string path_;
    std::string partial_;
    int descriptor_ = -1;
    std::unique_ptr<sf_private_tag, Closer> file_;
};

} // namespace qafhost
