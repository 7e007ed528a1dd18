#pragma once

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace qafhost {

/// While it lives, the calling thread counts denormal numbers as zero (flush to zero,
/// denormals are zero); the thread's mode comes back afterwards. Signals that fade away end in
/// denormals, which cost a hundred times more to compute with: the process thread holds one for
/// its whole life, and an offline run for its own, so that both compute alike.
class DenormalsAsZero {
public:
#if defined(__SSE__)
    DenormalsAsZero() : saved_(_mm_getcsr()) {
        _mm_setcsr(saved_ | 0x8040);
    }
    ~DenormalsAsZero() {
        _mm_setcsr(saved_);
    }
#endif
    DenormalsAsZero(const DenormalsAsZero&) = delete;
    DenormalsAsZero& operator=(const DenormalsAsZero&) = delete;

private:
#if defined(__SSE__)
    unsigned int saved_;
#endif
};

} // namespace qafhost
