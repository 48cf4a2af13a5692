#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/fixed_columns.hpp"
#include "base/free_format.hpp"
#include "file/file.hpp"
#include "gjf/gjf.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

// A routine so many times, for counting its instructions: routines NAME SIZE TIMES. What is done beforehand does not
// depend on TIMES, so that the difference between two runs is the routine alone. Files are made in the current folder.
// A routine that does not give what it should ends the program with status 1: then there is nothing to count.

namespace {

void require(bool holds) {
    if (!holds) {
        std::exit(1);
    }
}

/// Random numbers that are the same everywhere.
class numbers {
  public:
    std::uint64_t next() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return state_ >> 33;
    }
    double between(double least, double most) {
        return least + (most - least) * (static_cast<double>(next()) / static_cast<double>(std::uint64_t{1} << 31));
    }

  private:
    std::uint64_t state_ = 1;
};

constexpr double tol = 0.001F;

/// Carbon atoms in random order that are D2h: one in each octant, for size / 8 places.
struct molecule {
    int natom;
    int n6 = 6 * natom;
    base::array2<double> x{"x", 3, natom};
    base::array1<int> nat{"nat", 1, natom};
    base::array1<double> mass{"mass", 1, natom};
    base::array2<int> jrels{"jrels", natom, 8};
    base::array1<bool> op{"op", 1, 8};
    base::array1<bool> f_calc{"f_calc", 1, n6};
    base::array1<int> n_calc_n6{"n_calc_n6", 1, n6};
    base::array1<int> m_calc{"m_calc", 1, n6};
    base::array1<int> m_symm{"m_symm", 1, n6};
    int ncalc = 0;

    explicit molecule(int size) : natom(size) {
        numbers random;
        std::vector<int> order;
        for (int i = 1; i <= natom; ++i) {
            order.insert(order.begin() + static_cast<std::ptrdiff_t>(random.next() % static_cast<std::uint64_t>(i)), i);
        }
        for (int i = 0; i < natom; i += 8) {
            const double point[3] = {random.between(0.5, 20.0), random.between(0.5, 20.0), random.between(0.5, 20.0)};
            for (int octant = 0; octant < 8; ++octant) {
                const int atom = order[static_cast<std::size_t>(i + octant)];
                for (int c = 0; c < 3; ++c) {
                    x(c + 1, atom) = (octant >> c & 1) != 0 ? -point[c] : point[c];
                }
                nat(atom) = 6;
                mass(atom) = 12.0;
            }
        }
    }

    void search(int k) {
        symmetry::search_op(natom, x, nat, mass, symmetry::symm_op.matrix(k), jrels.column(k), op(k), tol);
        require(op(k));
    }
    void settle_points() {
        symmetry::search_symm_xyz(-1, natom, x, symmetry::symm_op, jrels, op, tol, n6, ncalc, f_calc, n_calc_n6, m_calc,
                                  m_symm);
        require(ncalc == n6 / 8);
    }
    void find_group() {
        int ipg = 0;
        symmetry::point_group(-1, natom, x, nat, mass, tol, true, n6, ncalc, n_calc_n6, m_calc, f_calc, m_symm, ipg, op,
                              jrels);
        require(ncalc == n6 / 8);
    }
};

constexpr int unit = 100;
constexpr const char* made = "made";

/// A Gaussian input of so many atoms.
void make_input(int natom) {
    std::ofstream input(made);
    input << "#p b3lyp force\n\ntitle\n\n0 1\n";
    for (int i = 0; i < natom; ++i) {
        input << " C   " << i << ".12345678   -0.87654321   12.50000000\n";
    }
    input << "\n";
}

/// A matrix of order n in blocks of 5 columns.
void make_blocks(int n) {
    std::ofstream output(made);
    for (int first = 1; first <= n; first += 5) {
        output << "heading\n";
        for (int row = 1; row <= n; ++row) {
            output << row;
            for (int column = first; column < std::min(first + 5, n + 1); ++column) {
                output << "  -0.12345678D+01";
            }
            output << '\n';
        }
    }
}

using routine = std::function<void()>;

/// What does the work once, ready to be called.
routine prepared(const std::string& name, int size) {
    const std::string path = "  /a/b" + std::string(static_cast<std::size_t>(size), 'c') + "/mol.gjf";
    const std::map<std::string, std::function<routine()>> routines = {
        {"search_op", [&]() -> routine { return [m = std::make_shared<molecule>(size)] { m->search(2); }; }},
        {"search_symm_xyz",
         [&]() -> routine {
             auto m = std::make_shared<molecule>(size);
             for (int k = 1; k <= 8; ++k) {
                 m->search(k);
             }
             return [m] { m->settle_points(); };
         }},
        {"point_group", [&]() -> routine { return [m = std::make_shared<molecule>(size)] { m->find_group(); }; }},
        {"copy",  // block by block: into a device the kernel does not copy
         [&]() -> routine {
             make_input(size);
             return [] { file::copy(made, "/dev/null"); };
         }},
        {"num_file_lines",
         [&]() -> routine {
             make_input(size);
             return [size] { require(file::num_file_lines(made) == size + 6); };
         }},
        {"num_file_lines_word",
         [&]() -> routine {
             make_input(size);
             return [] { require(file::num_file_lines_word(made, "99.12345678") > 0); };
         }},
        {"read_lines",
         [&]() -> routine {
             make_input(size);
             auto lines = std::make_shared<base::array1<base::text<500>>>("lines", 1, size);
             return [lines, size] { file::read_lines(made, size, base::view1<base::text<500>>(*lines)); };
         }},
        {"get_gjf_coord",
         [&]() -> routine {
             make_input(size);
             auto xyz = std::make_shared<base::array2<double>>("xyz", 3, size);
             auto symbol = std::make_shared<base::array1<base::text<2>>>("symbol", 1, size);
             return [=] { gjf::get_gjf_coord(made, size, *xyz, *symbol); };
         }},
        {"read_block_data",
         [&]() -> routine {
             make_blocks(size);
             auto a = std::make_shared<base::array2<double>>("a", size, size);
             return [=] {
                 require(file::open_unit(unit, made, file::action::read).empty());
                 file::read_block_data(unit, size, *a, 5);
                 file::close_unit(unit);
             };
         }},
        {"name_dir", [&]() -> routine { return [path] { require(!file::name_dir(path).empty()); }; }},
        {"name_base", [&]() -> routine { return [path] { require(file::name_base(path) == "mol.gjf"); }; }},
        {"name_ext", [&]() -> routine { return [path] { require(file::name_ext(path) == "gjf"); }; }},
        {"name_main", [&]() -> routine { return [path] { require(file::name_main(path) == "mol"); }; }},
        {"read_real",
         []() -> routine {
             return [] {
                 double value = 0.0;
                 require(base::read_real("-12.34567890", value) == base::number_status::ok && value < -12.0);
             };
         }},
        {"put_real",
         []() -> routine {
             return [] {
                 char field[14];
                 base::put_real(field, 14, 8, -12.3456789);
                 require(field[0] == ' ' && field[13] == '0');
             };
         }},
    };
    require(routines.contains(name));
    return routines.at(name)();
}

}  // namespace

int main(int argc, char** argv) {
    require(argc == 4);
    const routine work = prepared(argv[1], std::atoi(argv[2]));
    const int times = std::atoi(argv[3]);
    for (int i = 0; i < times; ++i) {
        work();
    }
}
