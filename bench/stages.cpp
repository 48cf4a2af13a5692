#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "base/fixed_columns.hpp"
#include "base/free_format.hpp"
#include "displacement_generator/control.hpp"
#include "file/file.hpp"
#include "gjf/gjf.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

// What each stage costs by itself.

namespace {

/// A molecule of symmetry D2h in random order, its first octant on a jittered grid.
struct molecule {
    int natom;
    base::array2<double> x;
    base::array1<int> nat;
    base::array1<double> mass;
    base::array2<int> jrels;
    base::array1<bool> op;

    explicit molecule(int atoms)
        : natom(atoms),
          x("x", 3, atoms),
          nat("nat", 1, atoms),
          mass("mass", 1, atoms),
          jrels("jrels", atoms, 8),
          op("op", 1, 8) {
        std::mt19937_64 random(1);
        std::uniform_real_distribution<double> place(0.5, 20.0);
        std::vector<int> order(static_cast<std::size_t>(natom));
        for (int i = 0; i < natom; ++i) {
            order[static_cast<std::size_t>(i)] = i + 1;
        }
        std::shuffle(order.begin(), order.end(), random);
        for (int i = 0; i < natom; i += 8) {
            const double point[3] = {place(random), place(random), place(random)};
            for (int image = 0; image < 8 && i + image < natom; ++image) {
                const int atom = order[static_cast<std::size_t>(i + image)];
                for (int c = 0; c < 3; ++c) {
                    x(c + 1, atom) = (image >> c & 1) != 0 ? -point[c] : point[c];
                }
                nat(atom) = 6;
                mass(atom) = 12.0;
            }
        }
    }

    void search() {
        for (int k = 1; k <= 8; ++k) {
            symmetry::search_op(natom, x, nat, mass, symmetry::symm_op.matrix(k), jrels.column(k), op(k), 0.001F);
        }
    }
};

void number_formatting(benchmark::State& state) {
    char field[14];
    double value = 1.2094;
    for (auto _ : state) {
        base::put_real(field, 14, 8, value);
        benchmark::DoNotOptimize(field);
        value += 0.01;
    }
}
BENCHMARK(number_formatting);

void number_reading(benchmark::State& state) {
    double value = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(base::read_real("-12.34567890", value));
    }
}
BENCHMARK(number_reading);

/// A displaced file out of the reference image: 14 columns are put in place and put back.
void image_patching(benchmark::State& state) {
    std::string image(300000, ' ');
    double value = 1.2094;
    std::size_t at = 0;
    for (auto _ : state) {
        const std::string kept = image.substr(at, 14);
        base::put_real(image.data() + at, 14, 8, value);
        benchmark::DoNotOptimize(image.data());
        image.replace(at, 14, kept);
        at = (at + 59) % 299000;
    }
}
BENCHMARK(image_patching);

/// The time of a pair is that of all operations, divided by 8 times half the square of the number of atoms.
void operation_search(benchmark::State& state) {
    molecule tested(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        tested.search();
    }
    const double pairs = 4.0 * static_cast<double>(tested.natom) * tested.natom;
    state.counters["pair"] =
        benchmark::Counter(pairs, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(operation_search)->Arg(504)->Arg(2000)->Arg(5000)->Unit(benchmark::kMillisecond);

/// The worst molecule for the quick look: atoms on a lattice, of which many share the number that tells points apart.
void operation_search_in_a_lattice(benchmark::State& state) {
    const int side = static_cast<int>(state.range(0));
    molecule tested(side * side * side);
    for (int i = 1; i <= tested.natom; ++i) {
        tested.x(1, i) = 1.5 * ((i - 1) % side) - 0.75 * (side - 1);
        tested.x(2, i) = 1.5 * ((i - 1) / side % side) - 0.75 * (side - 1);
        tested.x(3, i) = 1.5 * ((i - 1) / (side * side)) - 0.75 * (side - 1);
        tested.nat(i) = 6;
        tested.mass(i) = 12.0;
    }
    for (auto _ : state) {
        tested.search();
    }
    const double pairs = 4.0 * static_cast<double>(tested.natom) * tested.natom;
    state.counters["pair"] =
        benchmark::Counter(pairs, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(operation_search_in_a_lattice)->Arg(10)->Arg(16)->Unit(benchmark::kMillisecond);

void displacement_search(benchmark::State& state) {
    molecule tested(static_cast<int>(state.range(0)));
    tested.search();
    const int n6 = 6 * tested.natom;
    const base::array1<bool> f_calc("f_calc", 1, n6);
    const base::array1<int> n_calc_n6("n_calc_n6", 1, n6);
    const base::array1<int> m_calc("m_calc", 1, n6);
    const base::array1<int> m_symm("m_symm", 1, n6);
    int ncalc = 0;
    for (auto _ : state) {
        symmetry::search_symm_xyz(-1, tested.natom, tested.x, symmetry::symm_op, tested.jrels, tested.op, 0.001F, n6,
                                  ncalc, f_calc, n_calc_n6, m_calc, m_symm);
    }
    state.SetComplexityN(tested.natom);
}
BENCHMARK(displacement_search)->RangeMultiplier(4)->Range(512, 32768)->Complexity(benchmark::oN);

void control_reading(benchmark::State& state) {
    std::ofstream("control")
        << "&control\n symm = T, qctype = 'gaussian', task = 'freq',\n fxyz = 'mol.gjf', dx = 0.005d0\n/\n";
    for (auto _ : state) {
        benchmark::DoNotOptimize(generator::read_control("control"));
    }
}
BENCHMARK(control_reading);

void input_reading(benchmark::State& state) {
    const int natom = static_cast<int>(state.range(0));
    std::ofstream input("mol.gjf");
    input << "#p b3lyp force\n\ntitle\n\n0 1\n";
    for (int i = 0; i < natom; ++i) {
        input << "C      1.20940000   -0.12345678    " << i << ".87654321\n";
    }
    input << "\n";
    input.close();
    const base::array2<double> x("x", 3, natom);
    const base::array1<base::text<2>> symbol("symbol", 1, natom);
    for (auto _ : state) {
        int found = 0;
        gjf::get_gjf_natom("mol.gjf", found);
        gjf::get_gjf_coord("mol.gjf", natom, x, symbol);
    }
    state.SetItemsProcessed(state.iterations() * natom);
}
BENCHMARK(input_reading)->Arg(12)->Arg(504)->Arg(5000)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    const auto before = std::filesystem::current_path();
    const auto scratch = std::filesystem::temp_directory_path() / "displacement-bench";
    std::filesystem::create_directories(scratch);
    std::filesystem::current_path(scratch);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::current_path(before);
    std::filesystem::remove_all(scratch);
    return 0;
}
