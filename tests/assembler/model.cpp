#include "model.hpp"

#include <Eigen/Eigenvalues>
#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

namespace displacement_generator::assembler_tests {

namespace {

constexpr double bohr = 0.529177210903;  // angstrom
constexpr double electron_masses = 1822.888486;
constexpr double wavenumbers = 219474.631363;

const std::map<std::string, int>& numbers_of_symbols() {
    static const std::map<std::string, int> table = {{"H", 1},   {"C", 6}, {"O", 8},  {"F", 9}, {"Cl", 17},
                                                     {"Br", 35}, {"8", 8}, {"H1", 1}, {"h", 1}};
    return table;
}

/// Translations and rotations of points with weights, as orthonormal columns.
Eigen::MatrixXd rigid(const Eigen::Matrix3Xd& positions, const Eigen::VectorXd& roots) {
    const Eigen::Index natom = positions.cols();
    const Eigen::Vector3d centre = positions * roots.cwiseAbs2() / roots.squaredNorm();
    Eigen::MatrixXd motions(3 * natom, 6);
    for (Eigen::Index i = 0; i < natom; ++i) {
        const Eigen::Vector3d r = positions.col(i) - centre;
        motions.block<3, 3>(3 * i, 0) = roots(i) * Eigen::Matrix3d::Identity();
        Eigen::Matrix3d turn;
        turn << 0, r(2), -r(1), -r(2), 0, r(0), r(1), -r(0), 0;
        motions.block<3, 3>(3 * i, 3) = roots(i) * turn;
    }
    const Eigen::HouseholderQR<Eigen::MatrixXd> qr(motions);
    return qr.householderQ() * Eigen::MatrixXd::Identity(3 * natom, 6);
}

/// The 3N x 3N matrices of those of the eight operations about the axes that the molecule has.
std::vector<Eigen::MatrixXd> operations_of(const geometry_file& molecule) {
    std::vector<Eigen::MatrixXd> found;
    const Eigen::Index natom = molecule.positions.cols();
    for (int signs = 0; signs < 8; ++signs) {
        const Eigen::Vector3d sign((signs & 1) != 0 ? -1 : 1, (signs & 2) != 0 ? -1 : 1, (signs & 4) != 0 ? -1 : 1);
        Eigen::MatrixXd matrix = Eigen::MatrixXd::Zero(3 * natom, 3 * natom);
        Eigen::Index carried = 0;
        for (Eigen::Index i = 0; i < natom; ++i) {
            const Eigen::Vector3d image = sign.cwiseProduct(molecule.positions.col(i));
            for (Eigen::Index j = 0; j < natom; ++j) {
                if (molecule.numbers[static_cast<std::size_t>(i)] == molecule.numbers[static_cast<std::size_t>(j)] &&
                    (molecule.positions.col(j) - image).norm() < 1e-3) {
                    matrix.block<3, 3>(3 * j, 3 * i) = sign.asDiagonal();
                    ++carried;
                }
            }
        }
        if (carried == natom) {
            found.push_back(matrix);
        }
    }
    return found;
}

}  // namespace

geometry_file read_geometry_file(const std::filesystem::path& path) {
    std::istringstream lines(support::read_file(path));
    std::string line;
    geometry_file found;
    std::vector<double> coordinates;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string symbol;
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        if (words >> symbol >> x >> y >> z && numbers_of_symbols().count(symbol) != 0) {
            found.numbers.push_back(numbers_of_symbols().at(symbol));
            coordinates.insert(coordinates.end(), {x, y, z});
        }
    }
    found.positions =
        Eigen::Map<Eigen::Matrix3Xd>(coordinates.data(), 3, static_cast<Eigen::Index>(found.numbers.size()));
    return found;
}

model make_model(const geometry_file& reference) {
    model made;
    made.reference = reference;
    const Eigen::Index size = reference.positions.size();
    std::mt19937 random(4711);
    std::uniform_real_distribution<double> between(-1.0, 1.0);
    const auto drawn = [&](double) { return between(random); };
    const Eigen::MatrixXd root = Eigen::MatrixXd::Zero(size, size).unaryExpr(drawn);
    const Eigen::MatrixXd form =
        Eigen::MatrixXd::Identity(size, size) * 0.1 + 0.3 * root * root.transpose() / static_cast<double>(size);
    const Eigen::MatrixXd dipole_form = Eigen::MatrixXd::Zero(3, size).unaryExpr(drawn);
    made.hessian = Eigen::MatrixXd::Zero(size, size);
    made.dipoles = Eigen::Matrix3Xd::Zero(3, size);
    const std::vector<Eigen::MatrixXd> operations = operations_of(reference);
    for (const Eigen::MatrixXd& operation : operations) {
        Eigen::Matrix3d matrix = Eigen::Matrix3d::Zero();  // that of the operation: each row of blocks has one
        for (Eigen::Index j = 0; j < size; j += 3) {
            matrix += operation.block<3, 3>(j, 0);
        }
        made.hessian += operation * form * operation.transpose() / static_cast<double>(operations.size());
        made.dipoles += matrix * dipole_form * operation.transpose() / static_cast<double>(operations.size());
    }
    const Eigen::MatrixXd motions =
        rigid(reference.positions / bohr, Eigen::VectorXd::Ones(reference.positions.cols()));
    const Eigen::MatrixXd rest = Eigen::MatrixXd::Identity(size, size) - motions * motions.transpose();
    made.hessian = (rest * made.hessian * rest).eval();
    return made;
}

support::twin_point model::at(const geometry_file& geometry) const {
    const Eigen::VectorXd x = (geometry.positions - reference.positions).reshaped() / bohr;
    support::twin_point point;
    point.positions = geometry.positions;
    const Eigen::VectorXd forces = -hessian * x;
    point.forces = forces.reshaped(3, geometry.positions.cols());
    point.energy = -76.0 + 0.5 * x.dot(hessian * x);
    point.dipole = dipoles * x;
    return point;
}

textbook vibrations_of(const model& from, const std::vector<double>& masses) {
    const Eigen::Index size = from.hessian.rows();
    Eigen::VectorXd roots(size);
    for (Eigen::Index c = 0; c < size; ++c) {
        roots(c) = std::sqrt(masses[static_cast<std::size_t>(c / 3)]);
    }
    const Eigen::MatrixXd weighted =
        roots.cwiseInverse().asDiagonal() * from.hessian * roots.cwiseInverse().asDiagonal();
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solved(weighted);
    textbook made;
    const Eigen::Index modes = size - 6;
    const Eigen::VectorXd values = solved.eigenvalues().tail(modes);  // the six zeros come first
    made.frequencies = (values / electron_masses).cwiseSqrt() * wavenumbers;
    made.reduced_masses.resize(modes);
    made.intensities.resize(modes);
    made.displacements.resize(size, modes);
    for (Eigen::Index i = 0; i < modes; ++i) {
        const Eigen::VectorXd cartesian = roots.cwiseInverse().cwiseProduct(solved.eigenvectors().col(i + 6));
        made.displacements.col(i) = cartesian.normalized();
        made.reduced_masses(i) = 1.0 / cartesian.squaredNorm();
        made.intensities(i) = 974.880 * (from.dipoles * cartesian).squaredNorm();
    }
    made.force_constants = made.reduced_masses.cwiseProduct(values) * 15.56893;
    return made;
}

std::vector<table_row> rows_of(const std::string& table) {
    std::vector<table_row> rows;
    std::istringstream lines(table);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        table_row row{};
        if (line[0] != '#' && words >> row.number >> row.species >> row.frequency >> row.reduced_mass >>
                                  row.force_constant >> row.intensity) {
            rows.push_back(row);
        }
    }
    return rows;
}

void generate_from(const std::string& input, const std::string& settings) {
    support::write_file("mol.gjf", input);
    support::write_file("control", "&control\n  fxyz = 'mol.gjf',\n  " + settings + "\n/\n");
    const support::outcome done = support::run_program(support::displacement_generator(), {"control"});
    if (done.status != 0) {
        throw std::runtime_error("the generator failed: " + done.standard_error);
    }
}

void generate(const std::string& example, const std::string& settings) {
    generate_from(support::read_file(std::filesystem::path(EXAMPLES) / example / "mol.gjf"), settings);
}

void compute_neon() {
    generate_from("#p hf/3-21g force nosymm\n\nneon\n\n0 1\nNe 0 0 0\n\n", "dx = 0.005");
    for (const std::string& name : names()) {
        support::write_file("PES-0/" + name + ".forces", "0 0 0\n");
    }
}

support::outcome assemble(const std::vector<std::string>& arguments) {
    support::outcome done = support::run_program(DISPLACEMENT_ASSEMBLER, arguments);
    if (const char* log = std::getenv("STOPPED_WITH_LOG")) {  // messages.py holds what was met against the document
        std::ofstream(log, std::ios::app) << done.standard_error << '\0';
    }
    return done;
}

support::outcome assemble_within(int limit) {
    return support::run_program("/bin/sh",
                                {"-c", "ulimit -v " + std::to_string(limit) + "; exec \"$0\"", DISPLACEMENT_ASSEMBLER});
}

std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator("PES-0")) {
        if (entry.path().extension() == ".com") {
            found.push_back(entry.path().stem());
        }
    }
    std::sort(found.begin(), found.end());
    const auto reference = std::find_if(found.begin(), found.end(), [](const std::string& name) {
        return name.ends_with("-00") && name.find('d') == name.find("d-0");
    });
    std::rotate(found.begin(), reference, reference + 1);
    return found;
}

support::twin_job job_of(const model& from, const std::string& name) {
    support::twin_job job = support::one_point(from.reference.numbers, {}, {});
    job.points[0] = from.at(read_geometry_file("PES-0/" + name + ".com"));
    std::istringstream lines(support::read_file("PES-0/" + name + ".com"));
    std::string line;
    while (std::getline(lines, line) && line[0] != '#') {
    }
    job.route = line;
    while (std::getline(lines, line) && !line.empty()) {
        job.route += " " + line;
    }
    return job;
}

void write_log(const std::string& name, const support::twin_job& job) {
    support::write_file("PES-0/" + name + ".log", support::log_text({.jobs = {job}}));
}

void write_logs(const model& from) {
    for (const std::string& name : names()) {
        write_log(name, job_of(from, name));
    }
}

}  // namespace displacement_generator::assembler_tests
