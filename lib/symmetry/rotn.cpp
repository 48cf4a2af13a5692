#include "symmetry/symmetry.hpp"

void symmetry::rotn(int n, base::view2<const double> r, base::view2<double> v) {
    for (int c = 1; c <= n; ++c) {
        double v1[3] = {0.0, 0.0, 0.0};
        for (int i = 1; i <= 3; ++i) {
            for (int j = 1; j <= 3; ++j) {
                v1[i - 1] += r(i, j) * v(j, c);
            }
        }
        for (int i = 1; i <= 3; ++i) {
            v(i, c) = v1[i - 1];
        }
    }
}
