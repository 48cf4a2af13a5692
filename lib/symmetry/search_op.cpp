#include <algorithm>
#include <cmath>
#include <limits>

#include "symmetry/symmetry.hpp"

namespace symmetry {

namespace {

/// Candidates are looked at in blocks: whether a block holds any atom near enough is found without a branch in the
/// loop, so that the compiler makes vector code of it.
constexpr int block = 64;

/// The largest sum of squares whose square root is within `tol`; negative where none is. As the square root never
/// decreases, "tol >= sqrt(sum)" and "sum <= largest_sum(tol)" then say the same of every sum, one that is not a number
/// included.
double largest_sum(double tol) {
    if (!(tol >= 0.0)) {
        return -1.0;
    }
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double sum = tol * tol;
    while (std::sqrt(sum) > tol) {
        sum = std::nextafter(sum, 0.0);
    }
    while (sum < infinity && std::sqrt(std::nextafter(sum, infinity)) <= tol) {
        sum = std::nextafter(sum, infinity);
    }
    return sum;
}

/// Coordinates by component, each contiguous: those of every atom, and of one point.
struct candidates {
    const double* x[3];
};

/// Whether any of the candidates first..last-1 lies within the limit in component `c` alone. The square of one
/// component is never larger than the sum of the three squares, rounded or not, as the others add nothing negative and
/// rounding keeps the order; so where this is false no candidate of the block matches. (A component that is not a
/// number is not within the limit, and neither is its sum.)
bool any_near_in_component(const double* x, double at, int first, int last, double limit) {
    int near = 0;
    for (int j = first; j < last; ++j) {
        const double d = at - x[j];
        near |= d * d <= limit ? 1 : 0;
    }
    return near != 0;
}

bool is_near(const candidates& all, const double (&at)[3], int j, double limit) {
    const double d1 = at[0] - all.x[0][j];
    const double d2 = at[1] - all.x[1][j];
    const double d3 = at[2] - all.x[2][j];
    return d1 * d1 + d2 * d2 + d3 * d3 <= limit;
}

bool any_near(const candidates& all, const double (&at)[3], int first, int last, double limit) {
    int near = 0;
    for (int j = first; j < last; ++j) {
        near |= is_near(all, at, j, limit) ? 1 : 0;
    }
    return near != 0;
}

/// The component along which the molecule is longest, which tells most atoms apart.
int longest_component(int natom, const candidates& all) {
    int longest = 0;
    double length = -1.0;
    for (int c = 0; c < 3 && natom > 0; ++c) {
        const auto [low, high] = std::minmax_element(all.x[c], all.x[c] + natom);
        if (*high - *low > length) {
            length = *high - *low;
            longest = c;
        }
    }
    return longest;
}

}  // namespace

void search_op(int natom, base::view2<const double> x, base::view1<const int> nat, base::view1<const double> mass,
               base::view2<const double> r, base::view1<int> jrels, bool& found, double tol) {
    base::array2<double> x1("x1", 3, natom);
    base::array2<double> by_component("by_component", natom, 3);
    for (int i = 1; i <= natom; ++i) {
        for (int c = 1; c <= 3; ++c) {
            x1(c, i) = x(c, i);
            by_component(i, c) = x(c, i);
        }
    }
    found = false;
    std::fill_n(jrels.first_of(natom), natom, 0);
    rotn(natom, r, x1);

    candidates all{};
    for (int c = 1; c <= 3; ++c) {
        all.x[c - 1] = by_component.column(c).first_of(natom);
    }
    const int* number = nat.first_of(natom);
    const double* weight = mass.first_of(natom);
    const int longest = longest_component(natom, all);
    const double limit = largest_sum(tol);
    int* image = jrels.first_of(natom);

    for (int i = 0; i < natom; ++i) {
        const double at[3] = {x1(1, i + 1), x1(2, i + 1), x1(3, i + 1)};
        int match = natom;
        for (int first = 0; first < natom && match == natom; first += block) {
            const int last = std::min(first + block, natom);
            if (!any_near_in_component(all.x[longest], at[longest], first, last, limit) ||
                !any_near(all, at, first, last, limit)) {
                continue;
            }
            for (int j = first; j < last && match == natom; ++j) {
                if (is_near(all, at, j, limit) && weight[j] == weight[i] && number[j] == number[i]) {
                    match = j;
                }
            }
        }
        if (match == natom) {
            std::fill_n(image, natom, 0);
            return;
        }
        image[i] = match + 1;
        image[match] = i + 1;
    }
    found = true;
}

}  // namespace symmetry
