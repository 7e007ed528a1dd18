#include "core/closed_hash.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace vorlen {

namespace {

void* allocate_block(std::size_t size) {
    return ::operator new(size);
}
void deallocate_block(void* block) {
    ::operator delete(block);
}

constexpr capture_allocator_t plain_allocator{&allocate_block, &deallocate_block};

constexpr std::array<std::size_t, 31> capacities{
    3,        7,         17,        37,        79,         163,        331,       673,
    1361,     2729,      5471,      10949,     21911,      43853,      87719,     175447,
    350899,   701819,    1403641,   2807303,   5614657,    11229331,   22458671,  44917381,
    89834777, 179669557, 359339171, 718678369, 1437356741, 2874713497, 4294967295};

} // namespace

const capture_allocator_t& default_capture_allocator() noexcept {
    return plain_allocator;
}

std::size_t closed_hash_capacity(std::size_t wanted) noexcept {
    auto found = std::lower_bound(capacities.begin(), capacities.end(), wanted);
    return found == capacities.end() ? capacities.back() : *found;
}

} // namespace vorlen
