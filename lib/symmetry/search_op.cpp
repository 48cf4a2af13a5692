#include <algorithm>
#include <cmath>
#include <cstddef>

#include "symmetry/symmetry.hpp"

namespace displacement_generator::symmetry {

namespace {

/// What tells points apart in one number, better than a single component: the images of a point under the operations
/// share components, but hardly ever this sum. Nor do the points of a lattice, as no two weights have a simple ratio.
double weighted_sum(const double* point) {
    return point[0] + 0.7548776662466927 * point[1] + 0.5698402909980532 * point[2];
}

/// How far the sums of two points that match can lie apart, for a molecule whose components are at most `largest`.
///
/// Proof. Let d be the rounded differences of the two in their components. Those below 1e-150 change the sum by less
/// than 3e-150 together, as no weight exceeds 1. The squares of the others lose nothing to underflow, and the root of
/// their sum is at most tol; so their exact sum of squares is below the square of 1.01 tol, and as that of the weights
/// is below 2, they change the sum by less than sqrt(2) 1.01 tol < 1.5 tol. Rounding moves each sum, and each end of a
/// window about one, by less than 2e-15 `largest` and 1e-15 of the reach itself.
double reach_of(double tol, double largest) { return 1.5 * tol + 3e-150 + 1e-14 * largest; }

/// An atom, counted from 0, and the sum by which it is looked up.
struct candidate {
    double sum;
    int atom;
};

}  // namespace

void search_op(int natom, base::view2<const double> x, base::view1<const int> nat, base::view1<const double> mass,
               base::view2<const double> r, base::view1<int> jrels, bool& found, double tol) {
    const base::array2<double> x1("x1", 3, natom);
    std::copy_n(x.first_of(natom), 3 * std::max(natom, 0), x1.first_of(natom));
    found = false;
    std::fill_n(jrels.first_of(natom), natom, 0);
    rotn(natom, r, x1);

    // The ranges are checked here; below, the atoms 1..natom are elements 0..natom-1 of plain arrays.
    const base::array1<candidate> candidates("candidates", 1, natom, base::unset());
    candidate* first = candidates.first_of(natom);
    candidate* end = first + std::max(natom, 0);
    const double* place = x.first_of(natom);
    const double* turned = x1.first_of(natom);
    const int* number = nat.first_of(natom);
    const double* weight = mass.first_of(natom);
    int* image = jrels.first_of(natom);
    const auto matches = [=](std::ptrdiff_t i, std::ptrdiff_t j) {
        const double d1 = turned[3 * i] - place[3 * j];
        const double d2 = turned[3 * i + 1] - place[3 * j + 1];
        const double d3 = turned[3 * i + 2] - place[3 * j + 2];
        return tol >= std::sqrt(d1 * d1 + d2 * d2 + d3 * d3) && weight[j] == weight[i] && number[j] == number[i];
    };

    double largest = 0.0;
    std::for_each(place, place + std::ptrdiff_t{3} * std::max(natom, 0),
                  [&](double component) { largest = std::max(largest, std::abs(component)); });
    const double reach = reach_of(tol, largest);
    // Within this reach no component exceeds 1e294, and no sum overflows. Beyond it all sums count as 0, so that each
    // candidate is compared. So does a sum that is no number, as sums must have an order: such an atom matches none.
    constexpr double too_large = 1e280;
    const auto sum_of = [=](const double* point) {
        const double sum = weighted_sum(point);
        return reach < too_large && !std::isnan(sum) ? sum : 0.0;
    };
    for (int j = 0; j < natom; ++j) {
        first[j] = {sum_of(place + std::ptrdiff_t{3} * j), j};
    }
    std::sort(first, end, [](const candidate& a, const candidate& b) { return a.sum < b.sum; });

    for (int i = 0; i < natom; ++i) {
        const double at = sum_of(turned + std::ptrdiff_t{3} * i);
        const candidate* near = std::lower_bound(
            first, end, at - reach, [](const candidate& other, double lowest) { return other.sum < lowest; });
        int match = natom;  // the lowest-numbered one
        for (; near != end && near->sum <= at + reach; ++near) {
            if (near->atom < match && matches(i, near->atom)) {
                match = near->atom;
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

}  // namespace displacement_generator::symmetry
