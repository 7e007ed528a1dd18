#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace qoraccelerate {

// Vector helpers over plain arrays, written so the compiler can vectorise their loops.

template <class T>
void Set(T* destination, std::size_t count, T value) {
    std::fill(destination, destination + count, value);
}

template <class T>
void Zero(T* destination, std::size_t count) {
    Set(destination, count, T(0));
}

template <class T>
void Copy(T* destination, const T* source, std::size_t count) {
    std::copy(source, source + count, destination);
}

/// destination[i] *= factor[i]
template <class T>
void Mul_InPlace(T* destination, const T* factor, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        destination[i] *= factor[i];
}

/// The complex reciprocal of (re[i], im[i]) in place. A magnitude below `threshold` is raised
/// to it, keeping the phase (a zero takes the phase 0), so a vanishing value gives a large but
/// finite reciprocal instead of an infinity.
template <class T>
void Invert_Threshold_InPlace(T* re, T* im, std::size_t count, T threshold) {
    for (std::size_t i = 0; i < count; ++i) {
        T r = re[i];
        T m = im[i];
        T magnitude2 = r * r + m * m;
        if (!(magnitude2 >= threshold * threshold)) {
            const T magnitude = std::sqrt(magnitude2);
            if (magnitude > T(0)) {
                r *= threshold / magnitude;
                m *= threshold / magnitude;
            } else {
                r = threshold;
                m = T(0);
            }
            magnitude2 = threshold * threshold;
        }
        re[i] = r / magnitude2;
        im[i] = -m / magnitude2;
    }
}

} // namespace qoraccelerate
