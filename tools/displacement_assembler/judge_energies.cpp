#include <algorithm>
#include <cmath>

#include "energies.hpp"

namespace displacement_generator::assembler {

namespace {

/// The trapezoidal rule is off by step^3 / 12 times the third derivative, which is about 6 hartree/bohr^3 along the
/// strongest bonds (3 a k of a Morse curve: nitrogen 6, carbon monoxide 5).
constexpr double largest_third_derivative = 10.0;

/// What energies may be off beside that (hartree): convergence, grids and digits, which are 1e-6 and less as a rule.
/// Where they are worse, half of the points show it.
constexpr double least_noise = 1e-6;
constexpr double most_noise = 2e-5;
constexpr double noise_in_medians = 20.0;

/// No molecule has such an energy (hartree), and sums of its like do not overflow.
constexpr double largest_energy = 1e9;

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The straight line of energies over what the forces tell.
struct line {
    double slope = 1.0;
    double slope_error = 0.0;  ///< standard deviation
    double largest_residual = 0.0;
    double width = 0.0;  ///< of what the forces tell: largest less least
};

line fit(const std::vector<energy_point>& points) {
    const auto count = static_cast<double>(points.size());
    double mean_energy = 0.0;
    double mean_by_forces = 0.0;
    for (const energy_point& one : points) {
        mean_energy += (one.energy - points[0].energy) / count;  // differences, for the sake of their digits
        mean_by_forces += one.by_forces / count;
    }
    double product = 0.0;
    double square = 0.0;
    for (const energy_point& one : points) {
        const double by_forces = one.by_forces - mean_by_forces;
        product += by_forces * (one.energy - points[0].energy - mean_energy);
        square += by_forces * by_forces;
    }
    line result;
    if (square == 0.0) {
        return result;
    }
    const auto by_forces = [](const energy_point& one, const energy_point& other) {
        return one.by_forces < other.by_forces;
    };
    const auto [least, largest] = std::minmax_element(points.begin(), points.end(), by_forces);
    result.width = largest->by_forces - least->by_forces;
    result.slope = product / square;
    double residuals = 0.0;
    for (const energy_point& one : points) {
        const double residual =
            one.energy - points[0].energy - mean_energy - result.slope * (one.by_forces - mean_by_forces);
        residuals += residual * residual;
        result.largest_residual = std::max(result.largest_residual, std::abs(residual));
    }
    result.slope_error = std::sqrt(residuals / (count - 2.0) / square);
    return result;
}

}  // namespace

energy_verdict judge_energies(const std::vector<energy_point>& points, double step) {
    energy_verdict verdict;
    if (points.size() < 3) {
        return verdict;
    }
    std::vector<double> references;
    std::vector<double> distances;
    references.reserve(points.size());
    distances.reserve(points.size());
    for (const energy_point& one : points) {
        if (!(std::abs(one.energy) < largest_energy && std::abs(one.by_forces) < largest_energy)) {
            verdict.off.push_back(references.size());
            verdict.most_agree = false;
            return verdict;
        }
        references.push_back(one.energy - one.by_forces);
    }
    verdict.reference = median(references);
    for (const double one : references) {
        distances.push_back(std::abs(one - verdict.reference));
    }
    // Once for the point and once for the median, to which all steps of one direction may have led.
    const double anharmonic = 2.0 * largest_third_derivative * std::pow(std::abs(step), 3) / 12.0;
    const auto is_same = [&](const energy_point& one) { return one.energy == points[0].energy; };
    const auto shows = [&](const energy_point& one) { return std::abs(one.by_forces) > anharmonic + least_noise; };
    if (std::all_of(points.begin(), points.end(), is_same)) {
        verdict.one_number = std::any_of(points.begin(), points.end(), shows);
        return verdict;
    }
    const double allowed = anharmonic + std::clamp(noise_in_medians * median(distances), least_noise, most_noise);
    std::size_t agreeing = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!(distances[i] <= allowed)) {
            verdict.off.push_back(i);
        } else if (std::abs(points[i].by_forces) > allowed) {
            ++agreeing;
        }
    }
    verdict.most_agree = agreeing > verdict.off.size();
    const line fitted = fit(points);
    // Short steps leave single energies too little to be told by, but all together show a wrong sign, unit or step.
    constexpr double other_factor = 0.05;
    constexpr double errors_of_doubt = 10.0;
    constexpr std::size_t points_for_that = 8;
    const bool is_open = verdict.off.empty() ? points.size() >= points_for_that : !verdict.most_agree;
    const double excess = std::abs(fitted.slope - 1.0);
    if (is_open && fitted.largest_residual <= allowed && excess * fitted.width > anharmonic &&
        excess > std::max(other_factor, errors_of_doubt * fitted.slope_error)) {
        verdict.all_by_this = fitted.slope;
    }
    return verdict;
}

}  // namespace displacement_generator::assembler
