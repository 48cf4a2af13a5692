#include "point_groups.hpp"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <numeric>
#include <stdexcept>

namespace displacement_generator::point_groups {

namespace {

using matrices = std::vector<Eigen::Matrix3d>;

constexpr double same = 1e-6;

const Eigen::Vector3d x_axis = Eigen::Vector3d::UnitX();
const Eigen::Vector3d z_axis = Eigen::Vector3d::UnitZ();

Eigen::Matrix3d turn(int order, const Eigen::Vector3d& axis) {
    return Eigen::AngleAxisd(2.0 * std::numbers::pi / order, axis.normalized()).toRotationMatrix();
}

Eigen::Matrix3d mirror(const Eigen::Vector3d& normal) {
    const Eigen::Vector3d n = normal.normalized();
    return Eigen::Matrix3d::Identity() - 2.0 * n * n.transpose();
}

Eigen::Matrix3d inversion() { return -Eigen::Matrix3d::Identity(); }

matrices generated_by(const matrices& generators) {
    matrices all = {Eigen::Matrix3d::Identity()};
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (const Eigen::Matrix3d& g : generators) {
            const Eigen::Matrix3d product = g * all[i];
            if (std::none_of(all.begin(), all.end(), [&](const auto& m) { return (m - product).norm() < same; })) {
                all.push_back(product);
            }
        }
    }
    return all;
}

std::vector<named_group> make_groups() {
    std::vector<named_group> all;
    const auto add = [&](const std::string& name, std::size_t order, const matrices& generators) {
        all.push_back({name, generated_by(generators)});
        if (all.back().operations.size() != order) {
            throw std::logic_error(name + " has another order");
        }
    };
    add("C1", 1, {});
    add("Ci", 2, {inversion()});
    add("Cs", 2, {mirror(z_axis)});
    const Eigen::Vector3d diagonal(1.0, 1.0, 1.0);
    for (int n = 2; n <= 8; ++n) {
        const auto order = static_cast<std::size_t>(n);
        const Eigen::Matrix3d cn = turn(n, z_axis);
        const Eigen::Matrix3d improper = turn(2 * n, z_axis) * mirror(z_axis);
        const auto name = [&](const char* letters, int number) {
            std::string result;
            for (const char* letter = letters; *letter != '\0'; ++letter) {
                result += *letter == 'n' ? std::to_string(number) : std::string(1, *letter);
            }
            return result;
        };
        add(name("Cn", n), order, {cn});
        add(name("Cnv", n), 2 * order, {cn, mirror(x_axis)});
        add(name("Cnh", n), 2 * order, {cn, mirror(z_axis)});
        add(name("Dn", n), 2 * order, {cn, turn(2, x_axis)});
        add(name("Dnh", n), 4 * order, {cn, turn(2, x_axis), mirror(z_axis)});
        add(name("Dnd", n), 4 * order, {improper, turn(2, x_axis)});
        add(name("Sn", 2 * n), 2 * order, {improper});
    }
    const Eigen::Matrix3d c3 = turn(3, diagonal);
    const Eigen::Matrix3d c5 = turn(5, Eigen::Vector3d(0.0, 1.0, std::numbers::phi));
    add("T", 12, {c3, turn(2, z_axis)});
    add("Td", 24, {c3, turn(4, z_axis) * mirror(z_axis)});
    add("Th", 24, {c3, turn(2, z_axis), inversion()});
    add("O", 24, {c3, turn(4, z_axis)});
    add("Oh", 48, {c3, turn(4, z_axis), inversion()});
    add("I", 60, {c3, c5});
    add("Ih", 120, {c3, c5, inversion()});
    return all;
}

Eigen::Vector3d any_direction(engine& random) {
    std::normal_distribution<double> normal;
    return Eigen::Vector3d(normal(random), normal(random), normal(random)).normalized();
}

/// A point near `place` that as many operations keep as keep `place`.
Eigen::Vector3d on_elements(const matrices& operations, const Eigen::Vector3d& place) {
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (const Eigen::Matrix3d& g : operations) {
        sum += g * place;
    }
    return sum / static_cast<double>(operations.size());
}

/// Adds all images of an atom. False, and nothing is added, where two atoms come too near each other.
bool add_orbit(molecule& atoms, int kind, const Eigen::Vector3d& place, const matrices& operations) {
    constexpr double apart = 0.5;
    std::vector<Eigen::Vector3d> images;
    for (const Eigen::Matrix3d& g : operations) {
        const Eigen::Vector3d image = g * place;
        bool is_new = true;
        for (const Eigen::Vector3d& known : images) {
            const double distance = (known - image).norm();
            is_new = is_new && distance > same;
            if (distance > same && distance < apart) {
                return false;
            }
        }
        if (is_new) {
            images.push_back(image);
        }
    }
    for (const Eigen::Vector3d& image : images) {
        for (int i = 0; i < atoms.positions.cols(); ++i) {
            if ((atoms.positions.col(i) - image).norm() < apart) {
                return false;
            }
        }
    }
    for (const Eigen::Vector3d& image : images) {
        const Eigen::Index n = atoms.positions.cols();
        atoms.positions.conservativeResize(Eigen::NoChange, n + 1);
        atoms.positions.col(n) = image;
        atoms.kinds.push_back(kind);
    }
    return true;
}

int atom_at(const molecule& atoms, int kind, const Eigen::Vector3d& place) {
    for (int i = 0; i < atoms.positions.cols(); ++i) {
        if (atoms.kinds[static_cast<std::size_t>(i)] == kind && (atoms.positions.col(i) - place).norm() < same) {
            return i;
        }
    }
    return -1;
}

bool is_symmetric(const molecule& atoms, const Eigen::Matrix3d& operation) {
    for (int i = 0; i < atoms.positions.cols(); ++i) {
        if (atom_at(atoms, atoms.kinds[static_cast<std::size_t>(i)], operation * atoms.positions.col(i)) < 0) {
            return false;
        }
    }
    return true;
}

molecule about_centroid(const molecule& atoms) {
    molecule result = atoms;
    const Eigen::Vector3d centre = atoms.positions.rowwise().mean();
    result.positions.colwise() -= centre;
    return result;
}

bool is_involution(const Eigen::Matrix3d& g) {
    return (g * g - Eigen::Matrix3d::Identity()).norm() < same && (g - Eigen::Matrix3d::Identity()).norm() > same;
}

/// The direction of a twofold axis or across a plane; zero for the inversion.
Eigen::Vector3d direction_of(const Eigen::Matrix3d& g) {
    const Eigen::Matrix3d projector = 0.5 * (Eigen::Matrix3d::Identity() + (g.determinant() > 0.0 ? 1.0 : -1.0) * g);
    if (std::abs(projector.trace() - 1.0) > same) {
        return Eigen::Vector3d::Zero();
    }
    Eigen::Index longest = 0;
    projector.colwise().norm().maxCoeff(&longest);
    return projector.col(longest).normalized();
}

int root_of(std::vector<int>& parent, int p) {
    while (parent[static_cast<std::size_t>(p)] != p) {
        p = parent[static_cast<std::size_t>(p)];
    }
    return p;
}

/// Orbits of the points (atom, direction, sign) under the operations that are diagonal in a frame.
int orbits(const molecule& atoms, const matrices& operations, const Eigen::Matrix3d& frame) {
    const auto natom = static_cast<int>(atoms.positions.cols());
    std::vector<int> parent(static_cast<std::size_t>(6 * natom));
    std::iota(parent.begin(), parent.end(), 0);
    for (const Eigen::Matrix3d& g : operations) {
        const Eigen::Matrix3d turned = frame.transpose() * g * frame;
        const Eigen::Matrix3d off_diagonal = turned - Eigen::Matrix3d(turned.diagonal().asDiagonal());
        if (off_diagonal.norm() > same) {
            continue;
        }
        for (int i = 0; i < natom; ++i) {
            const int j = atom_at(atoms, atoms.kinds[static_cast<std::size_t>(i)], g * atoms.positions.col(i));
            for (int d = 0; d < 6; ++d) {
                const int to = turned(d / 2, d / 2) > 0.0 ? d : d ^ 1;
                parent[static_cast<std::size_t>(root_of(parent, 6 * i + d))] = root_of(parent, 6 * j + to);
            }
        }
    }
    int count = 0;
    for (int p = 0; p < 6 * natom; ++p) {
        count += parent[static_cast<std::size_t>(p)] == p ? 1 : 0;
    }
    return count;
}

}  // namespace

const std::vector<named_group>& all_groups() {
    static const std::vector<named_group> groups = make_groups();
    return groups;
}

const named_group& group(const std::string& name) {
    for (const named_group& g : all_groups()) {
        if (g.name == name) {
            return g;
        }
    }
    throw std::logic_error("no group " + name);
}

Eigen::Matrix3d any_rotation(engine& random) {
    std::normal_distribution<double> normal;
    return Eigen::Quaterniond(normal(random), normal(random), normal(random), normal(random))
        .normalized()
        .toRotationMatrix();
}

molecule molecule_of(const named_group& group, int special, engine& random) {
    const int general = group.operations.size() == 1 ? 5 : 3;  // three atoms have a plane
    molecule atoms;
    std::uniform_real_distribution<double> radius(1.0,
                                                  1.5 + 0.5 * std::sqrt(static_cast<double>(group.operations.size())));
    std::uniform_int_distribution<int> kind(1, 3);
    for (int orbit = 0; orbit < general;) {
        orbit +=
            add_orbit(atoms, kind(random), (radius(random) + orbit) * any_direction(random), group.operations) ? 1 : 0;
    }
    std::uniform_int_distribution<std::size_t> which(0, group.operations.size() - 1);
    for (int trial = 0; trial < 5 * special; ++trial) {
        const Eigen::Matrix3d& g = group.operations[which(random)];
        const Eigen::Vector3d place = on_elements(generated_by({g}), 3.0 * radius(random) * any_direction(random));
        add_orbit(atoms, kind(random), place, group.operations);
    }
    return atoms;
}

void shake(molecule& atoms, double longest, engine& random) {
    std::uniform_real_distribution<double> part(0.0, 1.0);
    for (int i = 0; i < atoms.positions.cols(); ++i) {
        atoms.positions.col(i) += longest * std::cbrt(part(random)) * any_direction(random);
    }
}

molecule moved(const molecule& atoms, engine& random) {
    molecule result = atoms;
    const Eigen::Vector3d shift = 5.0 * any_direction(random);
    result.positions = (any_rotation(random) * atoms.positions).colwise() + shift;
    return result;
}

int fewest_by_trial(const molecule& given, const matrices& operations) {
    const molecule atoms = about_centroid(given);
    matrices present;
    std::vector<Eigen::Vector3d> directions;
    for (const Eigen::Matrix3d& g : operations) {
        if (is_involution(g)) {
            present.push_back(g);
            if (direction_of(g).norm() > same) {
                directions.push_back(direction_of(g));
            }
        }
    }
    engine random(1);
    int fewest = orbits(atoms, present, any_rotation(random));
    for (const Eigen::Vector3d& u : directions) {
        Eigen::Vector3d aside = u.unitOrthogonal();
        for (const Eigen::Vector3d& v : directions) {
            if (std::abs(u.dot(v)) < same) {
                Eigen::Matrix3d frame;
                frame << u, v, u.cross(v);
                fewest = std::min(fewest, orbits(atoms, present, frame));
            }
        }
        aside = (aside + 0.37 * u.cross(aside)).normalized();
        Eigen::Matrix3d frame;
        frame << u, aside, u.cross(aside);
        fewest = std::min(fewest, orbits(atoms, present, frame));
    }
    return fewest;
}

matrices involutions_by_trial(const molecule& given) {
    const molecule atoms = about_centroid(given);
    std::vector<Eigen::Vector3d> lines = {Eigen::Vector3d(0.36, 0.48, 0.8)};
    const auto add = [&](const Eigen::Vector3d& v) {
        const bool is_new = std::none_of(lines.begin(), lines.end(), [&](const Eigen::Vector3d& known) {
            return known.cross(v).norm() < same * v.norm();
        });
        if (v.norm() > same && is_new) {
            lines.push_back(v.normalized());
        }
    };
    const Eigen::Matrix3Xd& x = atoms.positions;
    for (int i = 0; i < x.cols(); ++i) {
        for (int j = 0; j <= i; ++j) {
            add(x.col(i) - x.col(j));
            add(x.col(i) + x.col(j));
        }
    }
    for (std::size_t i = 0, count = lines.size(); i < count; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            add(lines[i].cross(lines[j]));
        }
    }
    matrices found;
    const auto add_if_symmetric = [&](const Eigen::Matrix3d& g) {
        if (is_symmetric(atoms, g)) {
            found.push_back(g);
        }
    };
    add_if_symmetric(inversion());
    for (const Eigen::Vector3d& u : lines) {
        add_if_symmetric(mirror(u));
        add_if_symmetric(-mirror(u));
    }
    return found;
}

}  // namespace displacement_generator::point_groups
