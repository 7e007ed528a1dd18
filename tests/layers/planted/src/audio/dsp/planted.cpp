// Signal processing that draws.
#include "audio/dsp/planted.hpp"
#include "graphs/scales/freq_scale.hpp"
#include "platform/draw/penrig.hpp"
