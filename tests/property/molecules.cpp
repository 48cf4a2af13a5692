#include "molecules.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace displacement_generator::property {

const std::array<signs, 9> operation_signs = {{
    {0, 0, 0},     // none
    {1, 1, 1},     // E
    {-1, -1, 1},   // C2z
    {-1, 1, -1},   // C2y
    {1, -1, -1},   // C2x
    {-1, -1, -1},  // I
    {1, 1, -1},    // Sxy
    {1, -1, 1},    // Szx
    {-1, 1, 1},    // Syz
}};

point image(const signs& operation, const point& at) {
    return {operation[0] * at[0], operation[1] * at[1], operation[2] * at[2]};
}

namespace {

double distance(const point& a, const point& b) { return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]); }

bool is_group(const std::vector<int>& operations) {
    const auto has = [&](const signs& wanted) {
        return std::any_of(operations.begin(), operations.end(),
                           [&](int k) { return operation_signs.at(static_cast<std::size_t>(k)) == wanted; });
    };
    for (const int g : operations) {
        for (const int h : operations) {
            const signs& first = operation_signs.at(static_cast<std::size_t>(g));
            const signs& second = operation_signs.at(static_cast<std::size_t>(h));
            if (!has({first[0] * second[0], first[1] * second[1], first[2] * second[2]})) {
                return false;
            }
        }
    }
    return has({1, 1, 1});
}

point any_place(engine& random) {
    std::uniform_real_distribution<double> size(0.25, 5.0);
    std::uniform_int_distribution<int> quarter(0, 3);
    point at{};
    for (double& c : at) {
        c = quarter(random) == 0 ? 0.0 : (quarter(random) < 2 ? -1 : 1) * size(random);
    }
    return at;
}

/// The places of an atom and its images; empty where two of these, or one and an atom, are too near each other.
std::vector<point> orbit(const point& first, const std::vector<int>& operations, const molecule& atoms) {
    constexpr double apart = 0.4;
    std::vector<point> places;
    for (const int k : operations) {
        const point place = image(operation_signs.at(static_cast<std::size_t>(k)), first);
        const bool is_known = std::any_of(places.begin(), places.end(),
                                          [&](const point& known) { return distance(known, place) == 0.0; });
        if (is_known) {
            continue;
        }
        const bool is_near =
            std::any_of(places.begin(), places.end(), [&](const point& p) { return distance(p, place) < apart; }) ||
            std::any_of(atoms.begin(), atoms.end(), [&](const atom& a) { return distance(a.at, place) < apart; });
        if (is_near) {
            return {};
        }
        places.push_back(place);
    }
    return places;
}

}  // namespace

const std::vector<std::vector<int>>& groups() {
    static const std::vector<std::vector<int>> all = [] {
        std::vector<std::vector<int>> found;
        for (unsigned subset = 0; subset < 256; ++subset) {
            std::vector<int> operations;
            for (int k = 1; k <= 8; ++k) {
                if ((subset >> static_cast<unsigned>(k - 1) & 1U) != 0) {
                    operations.push_back(k);
                }
            }
            if (is_group(operations)) {
                found.push_back(operations);
            }
        }
        return found;
    }();
    return all;
}

molecule symmetric_molecule(engine& random, const std::vector<int>& operations, std::size_t most_atoms) {
    const std::vector<std::string> symbols = {"H", "H", "C", "C", "N", "O", "Cl", "cl", "h", "U"};
    const std::size_t atoms_wanted = std::uniform_int_distribution<std::size_t>(1, most_atoms)(random);
    molecule atoms;
    while (atoms.size() < atoms_wanted) {
        const std::string& symbol = one_of(random, symbols);
        for (const point& place : orbit(any_place(random), operations, atoms)) {
            atoms.push_back({symbol, place});
        }
    }
    std::shuffle(atoms.begin(), atoms.end(), random);
    return atoms;
}

molecule any_molecule(engine& random, std::size_t most_atoms) {
    return symmetric_molecule(random, one_of(random, groups()), most_atoms);
}

void shake(engine& random, molecule& atoms) {
    std::uniform_real_distribution<double> noise(-2e-4, 2e-4);  // an image is off by 7e-4 at the most
    for (atom& moved : atoms) {
        for (double& c : moved.at) {
            c += noise(random);
        }
    }
}

operations_found find_operations(const molecule& atoms) {
    const auto is_of_kind = [](const atom& a, const atom& b) {
        return std::equal(a.symbol.begin(), a.symbol.end(), b.symbol.begin(), b.symbol.end(),
                          [](char c, char d) { return std::tolower(c) == std::tolower(d); });
    };
    operations_found found;
    for (int k = 1; k <= 8; ++k) {
        std::vector<std::size_t> images;
        for (const atom& from : atoms) {
            const point place = image(operation_signs.at(static_cast<std::size_t>(k)), from.at);
            const auto at = std::find_if(atoms.begin(), atoms.end(), [&](const atom& to) {
                return distance(to.at, place) < 1e-3 && is_of_kind(from, to);
            });
            if (at != atoms.end()) {
                images.push_back(static_cast<std::size_t>(at - atoms.begin()));
            }
        }
        if (images.size() == atoms.size()) {
            found.operations.push_back(k);
            found.images.at(static_cast<std::size_t>(k)) = images;
        }
    }
    return found;
}

std::vector<molecule> turned_every_way(const molecule& atoms) {
    std::vector<molecule> ways;
    std::array<std::size_t, 3> axes = {0, 1, 2};
    do {
        const bool is_even = (axes[1] + 3 - axes[0]) % 3 == 1;
        for (unsigned bits = 0; bits < 8; ++bits) {
            const signs sign = {(bits & 1U) != 0 ? -1 : 1, (bits & 2U) != 0 ? -1 : 1, (bits & 4U) != 0 ? -1 : 1};
            if ((sign[0] * sign[1] * sign[2] == 1) != is_even) {
                continue;  // left-handed
            }
            molecule turned = atoms;
            for (std::size_t i = 0; i < atoms.size(); ++i) {
                const point& at = atoms[i].at;
                turned[i].at = image(sign, {at.at(axes[0]), at.at(axes[1]), at.at(axes[2])});
            }
            ways.push_back(turned);
        }
    } while (std::next_permutation(axes.begin(), axes.end()));
    return ways;
}

}  // namespace displacement_generator::property
