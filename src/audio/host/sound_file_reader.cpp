#include "audio/host/sound_file_reader.hpp"

#include <sndfile.h>

#include <stdexcept>

namespace qafhost {

void SoundFileReader::Closer::operator()(SNDFILE* file) const {
    sf_close(file);
}

SoundFileReader::SoundFileReader(const std::string& path) : path_(path) {
    SF_INFO info{};
    file_.reset(sf_open(path.c_str(), SFM_READ, &info));
    if (!file_)
        throw std::runtime_error("cannot read \"" + path + "\": " + sf_strerror(nullptr));
    if (info.channels <= 0 || info.samplerate <= 0)
        throw std::runtime_error("\"" + path + "\" holds no audio");
    sampleRate_ = float(info.samplerate);
    channelCount_ = std::size_t(info.channels);
    frameCount_ = info.frames > 0 ? std::uint64_t(info.frames) : 0;
    format_ = info.format;
}

SoundFileReader::~SoundFileReader() = default;

std::size_t SoundFileReader::Read(float* interleaved, std::size_t frameCount) {
    const sf_count_t read = sf_readf_float(file_.get(), interleaved, sf_count_t(frameCount));
    if (read < 0 || sf_error(file_.get()) != SF_ERR_NO_ERROR)
        throw std::runtime_error("cannot read the samples of \"" + path_ +
                                 "\": " + sf_strerror(file_.get()));
    return std::size_t(read);
}

} // namespace qafhost
