#include <algorithm>
#include <bit>
#include <cmath>
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

/// Coordinates as large as this could make sums that are not finite; no candidate is rejected then.
constexpr double too_large = 1e300;

/// What tells points apart in one number, better than a single component: the images of a point under the operations
/// share components, but hardly ever this sum.
double sum_of_components(const double* point) { return point[0] + point[1] + point[2]; }

/// An interval, in single precision, that holds the sum of components of every atom that matches a point.
///
/// Proof. Let d be the rounded difference of the two in one component. Its square is at most the sum of the three
/// squares, rounded or not, as the others add nothing negative and rounding keeps the order; so a match has d * d,
/// rounded, at most largest_sum(tol). Where |d| is 1e-150 or more its square loses nothing to underflow, and |d|
/// exceeds tol by a few units of the last place at the most; so |d|, and the exact difference with it, is below twice
/// the larger of tol and 1e-150. The exact sums of the two then differ by less than three times that, and the rounded
/// ones, each off by less than 1e-15 times the largest component, by little more. Rounding the sum and the ends of the
/// interval, to double and then to single precision, keeps their order.
struct interval {
    float low;
    float high;

    interval(double sum, double tol, double largest_component)
        : low(-std::numeric_limits<float>::infinity()), high(-low) {
        if (!(largest_component < too_large)) {
            return;
        }
        const double reach = 6.0 * std::max(tol, 1e-150) + 1e-14 * largest_component;
        low = static_cast<float>(sum - reach);
        high = static_cast<float>(sum + reach);
    }

    [[nodiscard]] int holds(float x) const { return static_cast<int>(x >= low) & static_cast<int>(x <= high); }
};

/// The first block from `first` on that has some candidate inside, or `end`. The candidates of a block are counted: an
/// addition vectorises better than an early way out.
int next_block_inside(const float* x, interval range, int first, int end) {
    for (; first < end; first += block) {
        int inside = 0;
        for (int j = first; j < first + block; ++j) {
            inside += range.holds(x[j]);
        }
        if (inside != 0) {
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

    // The sums of the candidates, in whole blocks: what fills up the last one is no number and in no interval.
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
    const auto matches = [=](int i, int j) {
        const double d1 = turned[3 * i] - place[3 * j];
        const double d2 = turned[3 * i + 1] - place[3 * j + 1];
        const double d3 = turned[3 * i + 2] - place[3 * j + 2];
        return d1 * d1 + d2 * d2 + d3 * d3 <= limit && weight[j] == weight[i] && number[j] == number[i];
    };

    double largest = 0.0;
    for (int k = 0; k < 3 * natom; ++k) {
        largest = std::max(largest, std::abs(place[k]));
    }
    for (int i = 0; i < natom; ++i) {
        sum[i] = largest < too_large ? static_cast<float>(sum_of_components(place + 3 * i)) : 0.0F;
    }
    std::fill(sum + natom, sum + padded, std::numeric_limits<float>::quiet_NaN());

    for (int i = 0; i < natom; ++i) {
        const interval range(sum_of_components(turned + 3 * i), tol, largest);
        int match = padded;
        for (int first = 0; match == padded; first += block) {
            first = next_block_inside(sum, range, first, padded);
            if (first == padded) {
                break;
            }
            int j = first;
            while (j < first + block && !(range.holds(sum[j]) != 0 && matches(i, j))) {
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
