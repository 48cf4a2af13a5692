#include "symmetry/symmetry.hpp"

namespace displacement_generator {

void symmetry::rotn(int n, base::view2<const double> r, base::view2<double> v) {
    double matrix[3][3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            matrix[i][j] = r(i + 1, j + 1);
        }
    }
    for (int c = 1; c <= n; ++c) {
        double* point = v.column(c).first_of(3);
        double v1[3] = {0.0, 0.0, 0.0};
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                v1[i] += matrix[i][j] * point[j];
            }
        }
        for (int i = 0; i < 3; ++i) {
            point[i] = v1[i];
        }
    }
}

}  // namespace displacement_generator
