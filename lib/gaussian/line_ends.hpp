#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>

#include <bit>
#endif

// For this room's own use: lines found at the speed at which they can be read.

namespace displacement_generator::gaussian {

/// Finds the line feeds of a text one after the other. Lines of a log are short, and a call of memchr for each costs
/// more than looking at it: where the processor can, 64 characters are compared at once.
class line_ends {
  public:
    line_ends(const char* begin, const char* end) : at_(begin), end_(end) {}

    /// The next line feed; null where there is none.
    const char* next() {
#if defined(__SSE2__)
        while (found_ == 0) {
            if (end_ - at_ < width) {
                return next_of_rest();
            }
            found_ = feeds_of(at_);
            at_ += width;
        }
        const char* feed = at_ - width + std::countr_zero(found_);
        found_ &= found_ - 1;
        return feed;
#else
        return next_of_rest();
#endif
    }

  private:
    const char* next_of_rest() {
        if (at_ == end_) {
            return nullptr;  // of no text at all
        }
        const auto* feed = static_cast<const char*>(std::memchr(at_, '\n', static_cast<std::size_t>(end_ - at_)));
        at_ = feed == nullptr ? end_ : feed + 1;
        return feed;
    }

#if defined(__SSE2__)
    static constexpr std::ptrdiff_t width = 64;

    /// A bit for each of 64 characters: whether it is a line feed.
    static std::uint64_t feeds_of(const char* text) {
        constexpr int part = 16;
        const __m128i feed = _mm_set1_epi8('\n');
        std::uint64_t bits = 0;
        for (int i = 0; i < width; i += part) {
            __m128i characters;
            std::memcpy(&characters, text + i, sizeof characters);
            const auto equal = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(characters, feed)));
            bits |= std::uint64_t{equal} << static_cast<unsigned>(i);
        }
        return bits;
    }

    std::uint64_t found_ = 0;  ///< of the 64 characters before `at_`: line feeds that were not told of yet
#endif
    const char* at_;
    const char* end_;
};

}  // namespace displacement_generator::gaussian
