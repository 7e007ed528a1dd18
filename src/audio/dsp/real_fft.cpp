#include "audio/dsp/real_fft.hpp"

#include <fftw3.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>

namespace qoraudiotoolkit {

namespace {

// The planner keeps global state: one plan at a time, in the whole program.
std::mutex& PlannerMutex() {
    static std::mutex mutex;
    return mutex;
}

} // namespace

real_fft_t::real_fft_t(std::size_t size) : size_(size) {
    if (size < 2 || size % 2 != 0)
        throw std::invalid_argument("real_fft_t: the size must be even and at least 2, not " +
                                    std::to_string(size));
    std::lock_guard lock(PlannerMutex());
    time_ = fftwf_alloc_real(size);
    spectrum_ = fftwf_alloc_complex(size / 2 + 1);
    if (time_ && spectrum_) {
        auto* spectrum = static_cast<fftwf_complex*>(spectrum_);
        forward_ = fftwf_plan_dft_r2c_1d(int(size), time_, spectrum, FFTW_ESTIMATE);
        inverse_ = fftwf_plan_dft_c2r_1d(int(size), spectrum, time_, FFTW_ESTIMATE);
    }
    if (!forward_ || !inverse_) {
        if (forward_)
            fftwf_destroy_plan(static_cast<fftwf_plan>(forward_));
        if (inverse_)
            fftwf_destroy_plan(static_cast<fftwf_plan>(inverse_));
        fftwf_free(time_);
        fftwf_free(spectrum_);
        throw std::bad_alloc();
    }
    std::fill_n(time_, size, 0.0f);
    std::fill_n(GetSpectrum(), size / 2 + 1, std::complex<float>());
}

real_fft_t::~real_fft_t() {
    std::lock_guard lock(PlannerMutex());
    fftwf_destroy_plan(static_cast<fftwf_plan>(forward_));
    fftwf_destroy_plan(static_cast<fftwf_plan>(inverse_));
    fftwf_free(time_);
    fftwf_free(spectrum_);
}

std::complex<float>* real_fft_t::GetSpectrum() {
    // fftwf_complex is two floats, laid out as std::complex<float> is.
    return reinterpret_cast<std::complex<float>*>(spectrum_);
}

void real_fft_t::Forward() {
    fftwf_execute(static_cast<fftwf_plan>(forward_));
}

void real_fft_t::Inverse() {
    fftwf_execute(static_cast<fftwf_plan>(inverse_));
}

} // namespace qoraudiotoolkit
