#include "gaussian_twin.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <utility>

namespace displacement_generator::support {

namespace {

constexpr double bohr = 0.52917721092;  // angstrom
constexpr std::size_t width = 70;

// NOLINTNEXTLINE(cert-dcl50-cpp): the layouts are those of printf
[[gnu::format(printf, 1, 2)]] std::string printed(const char* format, ...) {
    char buffer[512];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return {buffer, static_cast<std::size_t>(length)};
}

std::string rule(int length) {
    std::string line(static_cast<std::size_t>(length) + 2, '-');
    line.front() = ' ';
    line.back() = '\n';
    return line;
}

/// Breaks a text at column 70, with a blank before each piece.
std::string broken(const std::string& text) {
    std::string result;
    for (std::size_t begin = 0; begin < text.size(); begin += width) {
        result += ' ';
        result.append(text, begin, width);
        result += '\n';
    }
    return result;
}

std::string with_carriage_returns(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') {
            result += '\r';
        }
        result += c;
    }
    return result;
}

const char* symbol(int number) {
    constexpr const char* few[] = {"Bq", "H",  "He", "Li", "Be", "B", "C", "N",  "O", "F",
                                   "Ne", "Na", "Mg", "Al", "Si", "P", "S", "Cl", "Ar"};
    return number >= 0 && number < static_cast<int>(std::size(few)) ? few[number] : "X";
}

std::string orientation(const char* title, const std::vector<int>& numbers, const Eigen::Matrix3Xd& positions) {
    std::string text = printed("                         %s:                          \n", title) + rule(69) +
                       " Center     Atomic      Atomic             Coordinates (Angstroms)\n"
                       " Number     Number       Type             X           Y           Z\n" +
                       rule(69);
    for (Eigen::Index i = 0; i < positions.cols(); ++i) {
        text += printed("%7d%11d%12d    %12.6f%12.6f%12.6f\n", static_cast<int>(i) + 1,
                        numbers[static_cast<std::size_t>(i)], 0, positions(0, i), positions(1, i), positions(2, i));
    }
    return text + rule(69);
}

std::string d_field(double value) {
    std::string field = printed("%15.8E", value);
    field[field.find('E')] = 'D';
    return field;
}

std::string point_text(const twin_job& job, const twin_point& point) {
    std::string text;
    if (job.input_tables) {
        text += orientation(job.z_matrix ? "Z-Matrix orientation" : "Input orientation", job.numbers, point.positions);
    }
    Eigen::Vector3d dipole = point.dipole.value_or(Eigen::Vector3d::Zero());
    if (job.standard) {
        const Eigen::Matrix3Xd turned = (job.standard->rotation * point.positions).colwise() + job.standard->shift;
        text += orientation("Standard orientation", job.numbers, turned);
        dipole = job.standard->rotation * dipole + job.charge * job.standard->shift / bohr;
    }
    text += job.between;
    if (point.energy) {
        text += printed(" SCF Done:  E(RB3LYP) =  %.10f     A.U. after    9 cycles\n", *point.energy);
    }
    if (point.dipole) {
        text += " Dipole        =" + d_field(dipole(0)) + d_field(dipole(1)) + d_field(dipole(2)) + "\n";
    }
    if (point.forces.cols() == 0) {
        return text;
    }
    if (job.standard) {
        text += " ***** Axes restored to original set *****\n";
    }
    text += rule(67) +
            " Center     Atomic                   Forces (Hartrees/Bohr)\n"
            " Number     Number              X              Y              Z\n" +
            rule(67);
    for (Eigen::Index i = 0; i < point.forces.cols(); ++i) {
        text +=
            printed("%7d%9d    %15.9f%15.9f%15.9f\n", static_cast<int>(i) + 1, job.numbers[static_cast<std::size_t>(i)],
                    point.forces(0, i), point.forces(1, i), point.forces(2, i));
    }
    return text + rule(67) +
           printed(" Cartesian Forces:  Max %15.9f RMS %15.9f\n", point.forces.cwiseAbs().maxCoeff(),
                   point.forces.norm() / 3.0);
}

std::string archive(const twin_job& job, char separator) {
    const std::string one(1, separator);
    const std::string two(2, separator);
    std::string text = "1" + one + "1" + one + "GINC-NODE" + one + "SP" + one + job.method + one + "6-31G(d)" + one +
                       "X" + one + "USER" + one + "01-Jan-2026" + one + "0" + two + job.route + two + job.title + two +
                       printed("%d,%d", job.charge, job.multiplicity);
    const twin_point& last = job.points.back();
    for (Eigen::Index i = 0; i < last.positions.cols(); ++i) {
        text += one + printed("%s,%.10f,%.10f,%.10f", symbol(job.numbers[static_cast<std::size_t>(i)]),
                              last.positions(0, i), last.positions(1, i), last.positions(2, i));
    }
    text += two + "Version=ES64L-G16RevX.01" + one + "State=1-A" + one + printed("HF=%.7f", last.energy.value_or(0.0));
    if (job.correlation != 0.0) {
        text += one + printed("MP2=%.7f", last.energy.value_or(0.0) - job.correlation);
    }
    text += one + "RMSD=1.234e-09" + one + "PG=C01 [X(H1)]" + two + "0.1,0.2" + two + "@";
    return broken(text) + "\n\n";
}

std::string job_text(const twin_job& job, bool bars) {
    const std::string box = broken(job.route);
    std::string text = rule(static_cast<int>(std::min(width, job.route.size()))) + box +
                       rule(static_cast<int>(std::min(width, job.route.size()))) + " 1/38=1/1;\n" + rule(8) + " " +
                       job.title + "\n" + rule(8) + " Symbolic Z-matrix:\n" +
                       printed(" Charge = %2d Multiplicity = %d\n", job.charge, job.multiplicity);
    for (const twin_point& point : job.points) {
        text += point_text(job, point);
    }
    if (job.archive) {
        text += archive(job, bars ? '|' : '\\');
    }
    if (job.ends_normally) {
        text += " Normal termination of Gaussian 16 at Thu Jan  1 00:00:00 2026.\n";
    }
    return text;
}

std::string e_value(double value, const char* format) { return printed(format, value); }

std::string reals(const char* name, const std::vector<double>& values) {
    std::string text = printed("%-40s   R   N=%12d\n", name, static_cast<int>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
        text += e_value(values[i], "%16.8E");
        text += (i % 5 == 4 || i + 1 == values.size()) ? "\n" : "";
    }
    return text;
}

std::vector<double> flat(const Eigen::Matrix3Xd& columns, double factor) {
    std::vector<double> values;
    for (Eigen::Index i = 0; i < columns.cols(); ++i) {
        for (Eigen::Index k = 0; k < 3; ++k) {
            values.push_back(columns(k, i) * factor);
        }
    }
    return values;
}

}  // namespace

twin_job one_point(std::vector<int> numbers, const Eigen::Matrix3Xd& positions, const Eigen::Matrix3Xd& forces) {
    twin_job job;
    job.numbers = std::move(numbers);
    job.points.resize(1);
    job.points[0].positions = positions;
    job.points[0].forces = forces;
    return job;
}

std::string log_text(const twin_log& log) {
    std::string text = log.before +
                       " Entering Gaussian System, Link 0=g16\n Initial command:\n /opt/l1.exe\n"
                       " Entering Link 1 = /opt/l1.exe PID=      4242.\n";
    for (std::size_t i = 0; i < log.jobs.size(); ++i) {
        if (i != 0) {
            text += printed(" Link1:  Proceeding to internal job step number %2d.\n", static_cast<int>(i) + 1);
        }
        text += job_text(log.jobs[i], log.bars);
    }
    return log.carriage_returns ? with_carriage_returns(text) : text;
}

std::string checkpoint_text(const twin_checkpoint& checkpoint) {
    const auto atoms = static_cast<int>(checkpoint.numbers.size());
    std::string text = printed("%-72s\n%-10s%-30s%-30s\n", checkpoint.title.c_str(), "Freq", checkpoint.method.c_str(),
                               checkpoint.basis.c_str());
    const auto integer = [&](const char* name, int value) { text += printed("%-40s   I     %12d\n", name, value); };
    integer("Number of atoms", atoms);
    if (checkpoint.other_sections) {
        text += printed("%-40s   C   N=%12d\n%-12s%-12s\n%-12s\n", "Info1-9", 6, "title like   I   N=", " x", "Number");
        text += printed("%-40s   L   N=%12d\n%s\n", "Flags", 3, "TFT");
    }
    integer("Charge", checkpoint.charge);
    integer("Multiplicity", checkpoint.multiplicity);
    if (!checkpoint.route.empty()) {
        text += printed("%-40s   C   N=%12d\n", "Route", static_cast<int>((checkpoint.route.size() + 11) / 12));
        for (std::size_t begin = 0; begin < checkpoint.route.size(); begin += 60) {
            text += checkpoint.route.substr(begin, 60) + "\n";
        }
    }
    text += printed("%-40s   I   N=%12d\n", "Atomic numbers", atoms);
    for (std::size_t i = 0; i < checkpoint.numbers.size(); ++i) {
        text += printed("%12d", checkpoint.numbers[i]);
        text += (i % 6 == 5 || i + 1 == checkpoint.numbers.size()) ? "\n" : "";
    }
    if (checkpoint.other_sections) {
        text += reals("Nuclear charges", std::vector<double>(checkpoint.numbers.begin(), checkpoint.numbers.end()));
    }
    text += reals("Current cartesian coordinates", flat(checkpoint.point.positions, 1.0 / bohr));
    if (!checkpoint.weights.empty()) {
        text += reals("Real atomic weights", checkpoint.weights);
    }
    if (checkpoint.point.energy) {
        text += printed("%-40s   R     %22.15E\n", "Total Energy", *checkpoint.point.energy);
    }
    if (checkpoint.point.forces.cols() != 0) {
        text += reals("Cartesian Gradient", flat(checkpoint.point.forces, -1.0));
    }
    if (checkpoint.force_constants.size() != 0) {
        std::vector<double> triangle;
        for (Eigen::Index i = 0; i < checkpoint.force_constants.rows(); ++i) {
            for (Eigen::Index j = 0; j <= i; ++j) {
                triangle.push_back(checkpoint.force_constants(i, j));
            }
        }
        text += reals("Cartesian Force Constants", triangle);
    }
    if (checkpoint.point.dipole) {
        const Eigen::Vector3d& dipole = *checkpoint.point.dipole;
        text += reals("Dipole Moment", {dipole(0), dipole(1), dipole(2)});
    }
    if (checkpoint.dipole_derivatives.cols() != 0) {
        text += reals("Dipole Derivatives", flat(checkpoint.dipole_derivatives, 1.0));
    }
    return text;
}

}  // namespace displacement_generator::support
