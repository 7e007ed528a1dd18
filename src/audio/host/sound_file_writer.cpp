#include "audio/host/sound_file_writer.hpp"

#include <sndfile.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace qafhost {

static_assert(SoundFileWriter::kFloatWav == (SF_FORMAT_WAV | SF_FORMAT_FLOAT));

namespace {

// The formats libsndfile knows by name, for messages.
std::string FormatName(int format) {
    SF_FORMAT_INFO major{};
    major.format = format & SF_FORMAT_TYPEMASK;
    SF_FORMAT_INFO minor{};
    minor.format = format & SF_FORMAT_SUBMASK;
    const bool known = sf_command(nullptr, SFC_GET_FORMAT_INFO, &major, sizeof major) == 0 &&
                       sf_command(nullptr, SFC_GET_FORMAT_INFO, &minor, sizeof minor) == 0;
    if (known)
        return std::string(major.name) + ", " + minor.name;
    char code[32];
    std::snprintf(code, sizeof code, "format 0x%06x", unsigned(format));
    return code;
}

} // namespace

void SoundFileWriter::Closer::operator()(SNDFILE* file) const {
    sf_close(file);
}

SoundFileWriter::SoundFileWriter(const std::string& path, int format, float sampleRate,
                                 std::size_t channelCount)
    : path_(path) {
    SF_INFO info{};
    info.format = format;
    info.samplerate = int(std::lround(sampleRate));
    info.channels = int(channelCount);
    if (!(sampleRate >= 1.0f && sampleRate < 1e7f) || channelCount == 0 || channelCount > 1024 ||
        !sf_format_check(&info))
        throw std::runtime_error("cannot write \"" + path + "\": no " + FormatName(format) +
                                 " file of " + std::to_string(channelCount) + " channels at " +
                                 std::to_string(info.samplerate) + " Hz can be written");
    // A name of its own beside the target, so that the rename stays on one file system.
    for (int attempt = 0; descriptor_ < 0; ++attempt) {
        partial_ = path + ".partial-" + std::to_string(::getpid()) + "-" + std::to_string(attempt);
        descriptor_ = ::open(partial_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && (errno != EEXIST || attempt == 100))
            throw std::runtime_error("cannot write \"" + path + "\": " + std::strerror(errno));
    }
    file_.reset(sf_open_fd(descriptor_, SFM_WRITE, &info, SF_FALSE));
    if (!file_)
        Fail(sf_strerror(nullptr));
    // Float samples past full scale clip in integer formats instead of wrapping round.
    sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

SoundFileWriter::~SoundFileWriter() {
    Discard();
}

void SoundFileWriter::Discard() {
    file_.reset();
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
        ::unlink(partial_.c_str());
    }
}

void SoundFileWriter::Fail(const std::string& reason) {
    Discard();
    throw std::runtime_error("cannot write \"" + path_ + "\": " + reason);
}

void SoundFileWriter::Write(const float* interleaved, std::size_t frameCount) {
    if (!file_)
        throw std::logic_error("SoundFileWriter: \"" + path_ + "\" is finished");
    const sf_count_t written = sf_writef_float(file_.get(), interleaved, sf_count_t(frameCount));
    if (written != sf_count_t(frameCount))
        Fail(sf_strerror(file_.get()));
}

void SoundFileWriter::Commit() {
    if (!file_)
        throw std::logic_error("SoundFileWriter: \"" + path_ + "\" is finished");
    // Closing writes the header; its errors show only here.
    if (const int error = sf_close(file_.release()); error != SF_ERR_NO_ERROR)
        Fail(sf_error_number(error));
    if (::close(std::exchange(descriptor_, -1)) != 0) {
        const int error = errno;
        ::unlink(partial_.c_str());
        throw std::runtime_error("cannot write \"" + path_ + "\": " + std::strerror(error));
    }
    if (std::rename(partial_.c_str(), path_.c_str()) != 0) {
        const int error = errno;
        ::unlink(partial_.c_str());
        throw std::runtime_error("cannot write \"" + path_ + "\": " + std::strerror(error));
    }
}

} // namespace qafhost
