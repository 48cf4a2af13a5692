#include "displacement_generator/info_block.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "support.hpp"
#include "symmetry/symmetry.hpp"

using namespace displacement_generator;

namespace {

/// What write_info_block is given; jrels[k - 1] is the column of operation k.
struct result {
    int ipg = 1;
    std::vector<int> operations = {1};  ///< present, in their order
    std::vector<std::string> names;     ///< of the operations; without any those of the table
    std::vector<std::string> symbols;
    std::vector<int> nat;
    std::array<std::vector<int>, 8> jrels{};
    int ncalc = 0;
    std::vector<bool> f_calc;
    std::vector<int> m_calc;
    std::vector<int> m_symm;
    std::vector<std::string> fnames = {"0-00"};
};

template <class element, class value>
void fill(const base::view1<element>& array, const std::vector<value>& from) {
    for (int i = array.lower(); const auto& each : from) {
        if constexpr (std::is_same_v<value, std::string>) {
            array(i++) = std::string_view(each);
        } else {
            array(i++) = each;
        }
    }
}

/// The list behind its three head lines.
std::string written(const result& from) {
    const support::scratch_folder scratch;
    const int natom = static_cast<int>(from.symbols.size());
    const int ndisp = static_cast<int>(from.m_calc.size());
    const int nop = static_cast<int>(from.operations.size());
    const base::array1<int> ops("ops", 1, 8);
    const base::array1<int> opr("opr", 1, 8);
    const base::array1<base::text<3>> op_name("op_name", 1, 11);
    const base::array1<base::text<2>> symbol("symbol", 1, natom);
    const base::array1<int> nat("nat", 1, natom);
    const base::array2<int> jrels("jrels", natom, 8);
    const base::array1<bool> f_calc("f_calc", 1, ndisp);
    const base::array1<int> m_calc("m_calc", 1, ndisp);
    const base::array1<int> m_symm("m_symm", 1, ndisp);
    const base::array1<base::text<200>> fnames("fnames", 0, ndisp);
    fill(ops, from.operations);
    for (int n = 1; n <= nop; ++n) {
        opr(ops(n)) = n;
    }
    for (int k = 1; k <= 11; ++k) {
        op_name(k) = symmetry::op_name(k);
    }
    fill(op_name, from.names);
    fill(symbol, from.symbols);
    fill(nat, from.nat);
    for (int k = 1; k <= 8; ++k) {
        for (int i = 1; i <= natom; ++i) {
            jrels(i, k) = from.jrels.at(static_cast<std::size_t>(k - 1)).at(static_cast<std::size_t>(i - 1));
        }
    }
    fill(f_calc, from.f_calc);
    fill(m_calc, from.m_calc);
    fill(m_symm, from.m_symm);
    fill(fnames, from.fnames);
    const std::string head = "Number of atoms:      0\nNumber of files:      1\ndx=  0.500000\n";
    generator::file_list list(0, 0, 0.5);
    generator::write_info_block(from.ipg, nop, ops, opr, op_name, natom, jrels, nat, symbol, ndisp, from.ncalc, f_calc,
                                m_calc, m_symm, fnames, list);
    std::string text = support::read_file("PES-0/files.out");
    EXPECT_EQ(text.substr(0, head.size()), head);
    return text.substr(head.size());
}

/// Every column of the correspondence but those of the operations present is filled with this, and must not show.
const std::vector<int> absent = {777, 777, 777};

TEST(info_block, every_byte_of_a_molecule_with_two_operations) {
    result two;
    two.ipg = 3;
    two.operations = {1, 4};
    two.symbols = {"O", "Cl", "H"};
    two.nat = {8, 17, 1};
    two.jrels.fill(absent);
    two.jrels[0] = {1, 2, 3};
    two.jrels[3] = {3, 2, 1};
    two.ncalc = 2;
    two.f_calc = {true, true, false, false};
    two.m_calc = {1, 2, 2, 12345678};
    two.m_symm = {1, 1, 4, 4};
    two.fnames = {"0-00", "1-dx", "1+dx", "12345-dx", "123456-dx"};
    EXPECT_EQ(written(two),
              "Begin_vesk_info\n"
              "Point          group:        C2\n"
              "Number of operations:         2\n"
              "Operation     matrix:\n"
              "Operation         1         E\n"
              "    1.000000000    0.000000000    0.000000000\n"
              "    0.000000000    1.000000000    0.000000000\n"
              "    0.000000000    0.000000000    1.000000000\n"
              "Operation         2       C2x\n"
              "    1.000000000    0.000000000    0.000000000\n"
              "    0.000000000   -1.000000000    0.000000000\n"
              "    0.000000000    0.000000000   -1.000000000\n"
              "Atom correspondance:\n"
              "       n  symbol     nat       E     C2x\n"
              "       1      O        8       1       3\n"
              "       2      Cl      17       2       2\n"
              "       3      H        1       3       1\n"
              "Total         points:         4\n"
              "Calculated    points:         2\n"
              "       n      file is_calc       m num(op)      op\n"
              "       0  0-00           T       0       1       E\n"
              "       1  1-dx           T       1       1       E\n"
              "       2  1+dx           T       2       1       E\n"
              "       3  12345-dx       F       2       2     C2x\n"
              "       4  123456-d       F12345678       2     C2x\n"
              "End_vesk_info\n");
}

// Without symmetry the names of the operations are left-justified, which shows everywhere but in the reference row.
TEST(info_block, without_symmetry) {
    result off;
    off.names.assign(11, "E  ");
    off.symbols = {"H"};
    off.nat = {1};
    off.jrels.fill({1});
    off.ncalc = 2;
    off.f_calc = {true, true};
    off.m_calc = {1, 2};
    off.m_symm = {1, 1};
    off.fnames = {"0-00", "1-dx", "1+dx"};
    EXPECT_EQ(written(off),
              "Begin_vesk_info\n"
              "Point          group:        C1\n"
              "Number of operations:         1\n"
              "Operation     matrix:\n"
              "Operation         1       E  \n"
              "    1.000000000    0.000000000    0.000000000\n"
              "    0.000000000    1.000000000    0.000000000\n"
              "    0.000000000    0.000000000    1.000000000\n"
              "Atom correspondance:\n"
              "       n  symbol     nat     E  \n"
              "       1      H        1       1\n"
              "Total         points:         2\n"
              "Calculated    points:         2\n"
              "       n      file is_calc       m num(op)      op\n"
              "       0  0-00           T       0       1       E\n"
              "       1  1-dx           T       1       1     E  \n"
              "       2  1+dx           T       2       1     E  \n"
              "End_vesk_info\n");
}

TEST(info_block, group_lines) {
    struct row {
        int ipg;
        std::string_view expected;
    };
    const std::vector<row> rows = {
        {1, "Begin_vesk_info\nPoint          group:        C1\nNumber of operations:         1\n"},
        {2, "Begin_vesk_info\nPoint          group:        CS\nNumber of operations:         2\n"},
        {3, "Begin_vesk_info\nPoint          group:        C2\nNumber of operations:         2\n"},
        {4, "Begin_vesk_info\nPoint          group:       C2V\nNumber of operations:         4\n"},
        {5, "Begin_vesk_info\nPoint          group:       D2H\nNumber of operations:         8\n"},
        {6, "Begin_vesk_info\nPoint          group:        CI\nNumber of operations:         2\n"},
        {7, "Begin_vesk_info\nPoint          group:       C2H\nNumber of operations:         4\n"},
        {8, "Begin_vesk_info\nPoint          group:        D2\nNumber of operations:         4\n"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.ipg);
        result only;
        only.ipg = tested.ipg;  // the order is that of the group, however many operations there are
        EXPECT_EQ(written(only).substr(0, tested.expected.size()), tested.expected);
    }
}

TEST(info_block, all_eight_operations) {
    result all;
    all.ipg = 5;
    all.operations = {1, 2, 3, 4, 5, 6, 7, 8};
    all.symbols = {"C"};
    all.nat = {6};
    all.jrels = {{{11}, {12}, {13}, {14}, {15}, {16}, {17}, {18}}};
    const auto matrix = [](int n, const std::string& name, const char* x, const char* y, const char* z) {
        const std::string zero = "    0.000000000";
        return "Operation" + std::string(10 - std::to_string(n).size(), ' ') + std::to_string(n) + "       " + name +
               '\n' + x + zero + zero + '\n' + zero + y + zero + '\n' + zero + zero + z + '\n';
    };
    const char* plus = "    1.000000000";
    const char* minus = "   -1.000000000";
    EXPECT_EQ(written(all),
              "Begin_vesk_info\n"
              "Point          group:       D2H\n"
              "Number of operations:         8\n"
              "Operation     matrix:\n" +
                  matrix(1, "  E", plus, plus, plus) + matrix(2, "C2z", minus, minus, plus) +
                  matrix(3, "C2y", minus, plus, minus) + matrix(4, "C2x", plus, minus, minus) +
                  matrix(5, "  I", minus, minus, minus) + matrix(6, "Sxy", plus, plus, minus) +
                  matrix(7, "Szx", plus, minus, plus) + matrix(8, "Syz", minus, plus, plus) +
                  "Atom correspondance:\n"
                  "       n  symbol     nat       E     C2z     C2y     C2x       I     Sxy     Szx     Syz\n"
                  "       1      C        6      11      12      13      14      15      16      17      18\n"
                  "Total         points:         0\n"
                  "Calculated    points:         0\n"
                  "       n      file is_calc       m num(op)      op\n"
                  "       0  0-00           T       0       1       E\n"
                  "End_vesk_info\n");
}

TEST(info_block, place_of_the_operation_and_its_name) {
    result four;
    four.ipg = 4;
    four.operations = {1, 2, 7, 8};
    four.ncalc = 1;
    four.f_calc = {true, false, false, false};
    four.m_calc = {1, 1, 1, 1};
    four.m_symm = {1, 8, 7, 2};
    four.fnames = {"0-00", "1+dx", "1-dx", "1+dy", "1-dy"};
    const std::string text = written(four);
    const std::string table = text.substr(text.find("Total"));
    EXPECT_EQ(table,
              "Total         points:         4\n"
              "Calculated    points:         1\n"
              "       n      file is_calc       m num(op)      op\n"
              "       0  0-00           T       0       1       E\n"
              "       1  1+dx           T       1       1       E\n"
              "       2  1-dx           F       1       4     Syz\n"
              "       3  1+dy           F       1       3     Szx\n"
              "       4  1-dy           F       1       2     C2z\n"
              "End_vesk_info\n");
}

TEST(info_block, numbers_that_do_not_fit) {
    result wide;
    wide.symbols = {"H"};
    wide.nat = {123456789};
    wide.jrels.fill({99999999});
    wide.jrels[0] = {100000000};
    wide.ncalc = -2147483647;
    wide.f_calc = {true};
    wide.m_calc = {100000000};
    wide.m_symm = {1};
    wide.fnames = {"000000-00", "1-dx"};
    const std::string text = written(wide);
    EXPECT_EQ(text.substr(text.find("Atom")),
              "Atom correspondance:\n"
              "       n  symbol     nat       E\n"
              "       1      H ****************\n"
              "Total         points:         1\n"
              "Calculated    points:**********\n"
              "       n      file is_calc       m num(op)      op\n"
              "       0  000000-0       T       0       1       E\n"
              "       1  1-dx           T********       1       E\n"
              "End_vesk_info\n");
}

TEST(info_block, a_group_outside_the_table_stops_the_run) {
    result mistaken;
    mistaken.ipg = 9;
    EXPECT_EQ(support::stopped_with([&] { written(mistaken); }),
              "array 'pg_name': index 9 is outside 1..8|standard error|2");
}

}  // namespace
