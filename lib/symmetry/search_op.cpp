#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "symmetry/symmetry.hpp"

namespace symmetry {

namespace {

/// Candidates are rejected a block at a time, by loops without a branch, of which the compiler makes vector code.
constexpr int block = 32;

/// The double `steps` away from a finite one that is not negative.
double neighbour(double value, int steps) { return std::bit_cast<double>(std::bit_cast<std::int64_t>(value) + steps); }

/// The largest sum of squares whose square root is within `tol`; negative where there is none. As the square root never
/// decreases, "tol >= sqrt(sum)" and "sum <= largest_sum(tol)" then say the same of every sum, one that is not a number
/// included.
double largest_sum(double tol) {
    if (!(tol >= 0.0)) {
        return -1.0;
    }
    constexpr double infinity = std::numeric_limits<double>::infinity();
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
/// share components, but hardly ever this sum.
double sum_of_components(const double* point) { return point[0] + point[1] + point[2]; }

/// How far the sums of two points that match can lie apart in single precision, for a molecule whose components are at
/// most `largest`.
///
/// Proof. Let d be the rounded difference of the two in one component. Its square is at most the sum of the three
/// squares, rounded or not, as the others add nothing negative and rounding keeps the order; so a match has d * d,
/// rounded, at most largest_sum(tol). Where |d| is 1e-150 or more its square loses nothing to underflow, and |d|
/// exceeds tol by a few units of the last place at the most; so |d|, and the exact difference with it, is below twice
/// the larger of tol and 1e-150. The exact sums differ by less than three times that. Rounding moves each sum, at most
/// 3 `largest`, by less than 2e-7 `largest`, or by less than 1e-40 where it is too small for that; and to round their
/// difference keeps its order.
float reach_of(double tol, double largest) {
    return static_cast<float>(6.0 * std::max(tol, 1e-150) + 1e-6 * largest + 1e-30);
}

/// Up to here sums and reach are finite in single precision. No candidate is rejected in a molecule that is larger.
constexpr double too_large = 1e30;

/// The first block from `first` on that has some candidate within reach, or `end`. The candidates of a block are
/// counted: an addition vectorises better than an early way out.
int next_block_within(float reach, float sum, const float* sums, int first, int end) {
    for (; first < end; first += block) {
        int within = 0;
        for (int j = first; j < first + block; ++j) {
            within += static_cast<int>(std::abs(sums[j] - sum) <= reach);
        }
        if (within != 0) {
            break;
        }
    }
    return first;
}

}  // namespace

void search_op(int natom, base::view2<const double> x, base::view1<const int> nat, base::view1<const double> mass,
               base::view2<const double> r, base::view1<int> jrels, bool& found, double tol) {
    base::array2<double> x1("x1", 3, natom);
    for (int i = 1; i <= natom; ++i) {
        for (int c = 1; c <= 3; ++c) {
            x1(c, i) = x(c, i);
        }
    }
    found = false;
    std::fill_n(jrels.first_of(natom), natom, 0);
    rotn(natom, r, x1);

    // The sums of the candidates, in whole blocks: what fills up the last one is no number, and within no reach.
    const int padded = natom < 1 ? 0 : (natom - 1) / block * block + block;
    const base::array1<float> sums("sums", 1, padded);

    // The ranges are checked here; below, the atoms 1..natom are elements 0..natom-1 of plain arrays.
    float* sum = sums.first_of(padded);
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
    for (int k = 0; k < 3 * natom; ++k) {
        largest = std::max(largest, std::abs(place[k]));
    }
    const bool quick = largest < too_large;
    const float reach = quick ? reach_of(tol, largest) : 0.0F;
    const auto sum_of = [=](const double* point) {
        return quick ? static_cast<float>(sum_of_components(point)) : 0.0F;
    };
    for (int j = 0; j < natom; ++j) {
        sum[j] = sum_of(place + std::ptrdiff_t{3} * j);
    }
    std::fill(sum + std::max(natom, 0), sum + padded, std::numeric_limits<float>::quiet_NaN());

    for (int i = 0; i < natom; ++i) {
        const float at = sum_of(turned + std::ptrdiff_t{3} * i);
        int match = padded;
        for (int first = 0; match == padded; first += block) {
            first = next_block_within(reach, at, sum, first, padded);
            if (first == padded) {
                break;
            }
            int j = first;
            while (j < first + block && !(std::abs(sum[j] - at) <= reach && matches(i, j))) {
                ++j;
            }
            match = j < first + block ? j : padded;
        }
        if (match == padded) {
            std::fill_n(image, natom, 0);
            return;
        }
        image[i] = match + 1;
        image[match] = i + 1;
    }
    found = true;
}

}  // namespace symmetry
