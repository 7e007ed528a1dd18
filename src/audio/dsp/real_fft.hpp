#pragma once

#include <complex>
#include <cstddef>

namespace qoraudiotoolkit {

/// A real transform of one size, forward (real to half spectrum) and inverse, on buffers of its
/// own. Plans are made in the constructor, under one lock for the whole program since the FFTW
/// planner is not reentrant; `Forward` and `Inverse` take no lock and allocate nothing, so the
/// process thread may call them.
class real_fft_t {
public:
    /// A size below 2 or odd throws std::invalid_argument.
    explicit real_fft_t(std::size_t size);
    ~real_fft_t();
    real_fft_t(const real_fft_t&) = delete;
    real_fft_t& operator=(const real_fft_t&) = delete;

    std::size_t GetSize() const { return size_; }
    /// size / 2 + 1.
    std::size_t GetBinCount() const { return size_ / 2 + 1; }

    /// The real buffer: the input of `Forward`, the output of `Inverse`.
    float* GetTimeData() { return time_; }
    /// The half spectrum: the output of `Forward`, the input of `Inverse`.
    std::complex<float>* GetSpectrum();

    /// Time data to spectrum, unscaled.
    void Forward();
    /// Spectrum to time data, unscaled: a forward and inverse pass multiply by the size. The
    /// spectrum is overwritten.
    void Inverse();

private:
    std::size_t size_;
    float* time_ = nullptr;
    void* spectrum_ = nullptr;
    void* forward_ = nullptr;
    void* inverse_ = nullptr;
};

} // namespace qoraudiotoolkit
