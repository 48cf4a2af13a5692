#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "symmetry/symmetry.hpp"

namespace displacement_generator::symmetry {

namespace {

/// Candidates are rejected a block at a time: most blocks by a bit, and the candidates of the others by a loop without
/// a branch, of which the compiler makes vector code.
constexpr int block = 16;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The double `steps` away from a finite one that is not negative.
double neighbour(double value, int steps) { return std::bit_cast<double>(std::bit_cast<std::int64_t>(value) + steps); }

/// The largest sum of squares whose square root is within `tol`; negative where there is none. As the square root never
/// decreases, "tol >= sqrt(sum)" and "sum <= largest_sum(tol)" then say the same of every sum, one that is not a number
/// included.
double largest_sum(double tol) {
    if (!(tol >= 0.0)) {
        return -1.0;
    }
    double sum = tol * tol;
    while (std::sqrt(sum) > tol) {
        sum = neighbour(sum, -1);
    }
    while (sum < infinity && std::sqrt(neighbour(sum, 1)) <= tol) {
        sum = neighbour(sum, 1);
    }
    return sum;
}

/// What tells points apart in one number, better than a single component: the images of a point under the operations
/// share components, but hardly ever this sum. Nor do the points of a lattice, as no two weights have a simple ratio.
double weighted_sum(const double* point) {
    return point[0] + 0.7548776662466927 * point[1] + 0.5698402909980532 * point[2];
}

/// How far the sums of two points that match can lie apart, for a molecule whose components are at most `largest`.
///
/// Proof. Let d be the rounded differences of the two in their components. Those below 1e-150 change the sum by less
/// than 3e-150 together, as no weight exceeds 1. The squares of the others lose nothing to underflow, and together are
/// at most largest_sum(tol), but for a few units of the last place; so their exact sum of squares is below the square
/// of 1.01 tol, and as that of the weights is below 2, they change the sum by less than sqrt(2) 1.01 tol < 1.5 tol.
/// Rounding moves each sum, and each end of a window about one, by less than 2e-15 `largest` and 1e-15 of the reach
/// itself.
double reach_of(double tol, double largest) { return 1.5 * tol + 3e-150 + 1e-14 * largest; }

/// Sums in 16 bits, of which a vector holds many: the range of the candidates in equal steps.
///
/// The step of a sum never decreases with the sum, as every operation on the way keeps the order, rounded or not. So a
/// sum between two others has a step between theirs, and a candidate whose step lies outside the window about an atom
/// is out of its reach. What is no number is in step 0; where the range is empty, everything is.
struct steps {
    double lowest = 0.0;
    double per_unit = 0.0;

    [[nodiscard]] std::uint16_t operator()(double sum) const {
        constexpr double last = std::numeric_limits<std::uint16_t>::max();
        const double step = (sum - lowest) * per_unit;
        return step > 0.0 ? static_cast<std::uint16_t>(std::min(step, last)) : std::uint16_t{0};
    }
};

steps steps_between(double lowest, double highest) {
    const double per_unit = std::numeric_limits<std::uint16_t>::max() / (highest - lowest);
    return {lowest, std::isfinite(per_unit) ? per_unit : 0.0};
}

struct window {
    std::uint16_t first;
    std::uint16_t last;

    [[nodiscard]] bool holds(std::uint16_t step) const {
        return static_cast<std::uint16_t>(step - first) <= static_cast<std::uint16_t>(last - first);
    }
};

/// The steps in ranges of 64: for each range a bit for every block tells whether a candidate of the block is in it.
/// What a window holds is in a range between those of its ends.
constexpr int steps_per_range = 64;
constexpr int ranges = (std::numeric_limits<std::uint16_t>::max() + 1) / steps_per_range;
constexpr int bits = 64;  ///< of a word

/// Of one word of blocks those with a candidate in a range that the window touches.
///   has    in  (words, ranges), from the word in question on
std::uint64_t blocks_about(window near, const std::uint64_t* has, int words) {
    std::uint64_t blocks = 0;
    for (int range = near.first / steps_per_range; range <= near.last / steps_per_range; ++range) {
        blocks |= has[static_cast<std::ptrdiff_t>(range) * words];
    }
    return blocks;
}

/// The first candidate of a block that the window holds, or `block`: the one with the most candidates from it on.
int first_within(window near, const std::uint16_t* step) {
    std::int16_t left = 0;
    for (std::int16_t k = block; k > 0; --k) {
        left = std::max(left, near.holds(step[block - k]) ? k : std::int16_t{0});
    }
    return block - left;
}

}  // namespace

void search_op(int natom, base::view2<const double> x, base::view1<const int> nat, base::view1<const double> mass,
               base::view2<const double> r, base::view1<int> jrels, bool& found, double tol) {
    const base::array2<double> x1("x1", 3, natom);
    std::copy_n(x.first_of(natom), 3 * std::max(natom, 0), x1.first_of(natom));
    found = false;
    std::fill_n(jrels.first_of(natom), natom, 0);
    rotn(natom, r, x1);

    // The last block may reach beyond the candidates; what it finds there is not looked at again.
    const int padded = std::max(natom, 0) + block;
    const base::array1<std::uint16_t> candidates("candidates", 1, padded);
    const base::array1<window> windows("windows", 1, natom, base::unset());
    const int words = (padded / block + bits - 1) / bits;
    const base::array2<std::uint64_t> blocks("blocks", words, ranges);

    // The ranges are checked here; below, the atoms 1..natom are elements 0..natom-1 of plain arrays.
    std::uint16_t* step = candidates.first_of(padded);
    window* near = windows.first_of(natom);
    std::uint64_t* has = blocks.first_of(ranges);
    const double* place = x.first_of(natom);
    const double* turned = x1.first_of(natom);
    const int* number = nat.first_of(natom);
    const double* weight = mass.first_of(natom);
    int* image = jrels.first_of(natom);
    const double limit = largest_sum(tol);
    const auto matches = [=](std::ptrdiff_t i, std::ptrdiff_t j) {
        const double d1 = turned[3 * i] - place[3 * j];
        const double d2 = turned[3 * i + 1] - place[3 * j + 1];
        const double d3 = turned[3 * i + 2] - place[3 * j + 2];
        return d1 * d1 + d2 * d2 + d3 * d3 <= limit && weight[j] == weight[i] && number[j] == number[i];
    };

    double largest = 0.0;
    double lowest = infinity;
    double highest = -infinity;
    for (int j = 0; j < natom; ++j) {
        const double* point = place + std::ptrdiff_t{3} * j;
        const double sum = weighted_sum(point);
        lowest = std::min(lowest, sum);
        highest = std::max(highest, sum);
        largest = std::max({largest, std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
    }
    const double reach = reach_of(tol, largest);
    // Within this reach no component exceeds 1e294, and no sum overflows. Beyond it all are in step 0, and each
    // candidate is compared.
    constexpr double too_large = 1e280;
    const steps step_of = reach < too_large ? steps_between(lowest, highest) : steps{};
    // Beforehand, so that no search waits for its window.
    for (int i = 0; i < natom; ++i) {
        step[i] = step_of(weighted_sum(place + std::ptrdiff_t{3} * i));
        const double at = weighted_sum(turned + std::ptrdiff_t{3} * i);
        const std::uint16_t first = step_of(at - reach);
        near[i] = {first, step_of(at + reach)};
        const int own_block = i / block;
        std::uint64_t& word = has[static_cast<std::ptrdiff_t>(step[i] / steps_per_range) * words + own_block / bits];
        word |= std::uint64_t{1} << own_block % bits;
    }

    // The lowest-numbered match of atom i, or natom.
    const auto find_match = [&](int i) {
        for (int word = 0; word < words; ++word) {
            for (std::uint64_t left = blocks_about(near[i], has + word, words); left != 0; left &= left - 1) {
                const int first = (word * bits + std::countr_zero(left)) * block;
                const int end = std::min(first + block, natom);
                for (int j = first + first_within(near[i], step + first); j < end; ++j) {
                    if (near[i].holds(step[j]) && matches(i, j)) {
                        return j;
                    }
                }
            }
        }
        return natom;
    };
    for (int i = 0; i < natom; ++i) {
        const int match = find_match(i);
        if (match == natom) {
            std::fill_n(image, natom, 0);
            return;
        }
        image[i] = match + 1;
        image[match] = i + 1;
    }
    found = true;
}

}  // namespace displacement_generator::symmetry
