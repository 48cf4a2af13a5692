#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>

#include "file_test.hpp"
#include "gjf/gjf.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

constexpr double untouched = -77.0;

/// What reading the coordinates of a file fills and how it ends.
class get_gjf_coord : public support::file_test {
  protected:
    static constexpr int room = 4;

    base::array2<double> xyz{"xyz", 3, room};
    base::array1<base::text<2>> symbol{"symbol", 1, room};

    std::string message_of(int natom, std::string_view fname = "mol.gjf ") {
        for (int j = 1; j <= room; ++j) {
            symbol(j) = "??";
            for (int i = 1; i <= 3; ++i) {
                xyz(i, j) = untouched;
            }
        }
        std::string message = stopped_with([&] { gjf::get_gjf_coord(fname, natom, xyz, symbol); });
        EXPECT_FALSE(file::is_connected(100));
        return message;
    }

    void expect_atom(int j, std::string_view name, double x, double y, double z) {
        SCOPED_TRACE(j);
        EXPECT_EQ(std::string_view(symbol(j)), name);
        const double expected[] = {x, y, z};
        for (int i = 1; i <= 3; ++i) {
            EXPECT_EQ(std::bit_cast<std::uint64_t>(xyz(i, j)), std::bit_cast<std::uint64_t>(expected[i - 1])) << i;
        }
    }

    void expect_untouched_from(int first) {
        for (int j = first; j <= room; ++j) {
            expect_atom(j, "??", untouched, untouched, untouched);
        }
    }
};

constexpr const char* head = "#p force\n\ntitle\n\n0 1\n";  // atom lines from line 6 on

TEST_F(get_gjf_coord, reads_symbols_and_coordinates_as_written) {
    support::write_file("mol.gjf", std::string(head) +
                                       "O 0.0 0.0 0.117\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n\n"
                                       "C 1 2 3\n");
    for (int natom = -1; natom <= 3; ++natom) {
        EXPECT_EQ(message_of(natom), "no error");
        if (natom >= 1) {
            expect_atom(1, "O ", 0.0, 0.0, 0.117);
        }
        if (natom >= 2) {
            expect_atom(2, "H ", 0.0, 0.757, -0.47);
        }
        if (natom >= 3) {
            expect_atom(3, "H ", 0.0, -0.757, -0.47);
        }
        expect_untouched_from(std::max(natom, 0) + 1);
    }
}

TEST_F(get_gjf_coord, reads_free_format_lines) {
    struct row {
        std::string line;
        const char* symbol;
        double x;
        double y;
        double z;
    };
    const row rows[] = {
        {"O,0.0,0.0,0.117", "O ", 0.0, 0.0, 0.117},
        {"  H   0.0   0.757  -0.470", "H ", 0.0, 0.757, -0.47},
        {"H 1.5D0 -1.5d+01 15E-1", "H ", 1.5, -15.0, 1.5},
        {"H +1. .5 -0", "H ", 1.0, 0.5, -0.0},
        {"Cl 1 2 3", "Cl", 1.0, 2.0, 3.0},
        {"cL 1 2 3", "cL", 1.0, 2.0, 3.0},
        {"C12 1 2 3", "C1", 1.0, 2.0, 3.0},
        {"Carbon 1 2 3", "Ca", 1.0, 2.0, 3.0},
        {"6 1 2 3", "6 ", 1.0, 2.0, 3.0},
        {"C(Iso=13) 1 2 3", "C(", 1.0, 2.0, 3.0},
        {"C 0 0.1 0.2 0.3", "C ", 0.0, 0.1, 0.2},  // a freeze code counts as the first coordinate
        {"C 1 2 3 and more / , x", "C ", 1.0, 2.0, 3.0},
        {"C 1 2 3/", "C ", 1.0, 2.0, 3.0},
        {"C\t1\t2\t3", "C ", 1.0, 2.0, 3.0},
        {"C , 1 , 2 , 3 ,", "C ", 1.0, 2.0, 3.0},
        {"C 1 2 3\r", "C ", 1.0, 2.0, 3.0},
        {"'C' 1 2 3", "C ", 1.0, 2.0, 3.0},
        {"\" C\",1 2 3", " C", 1.0, 2.0, 3.0},
        {"C 1 2 " + std::string(193, ' ') + "3", "C ", 1.0, 2.0, 3.0},
        {"C 1 2 " + std::string(193, ' ') + "34", "C ", 1.0, 2.0, 3.0},  // cut at 200 characters
        {"C 1e-400 -1e-400 5e-324", "C ", 0.0, -0.0, 0x1p-1074},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.line));
        support::write_file("mol.gjf", head + tested.line);
        EXPECT_EQ(message_of(1), "no error");
        expect_atom(1, tested.symbol, tested.x, tested.y, tested.z);
        expect_untouched_from(2);
    }
}

TEST_F(get_gjf_coord, stops_the_run_at_a_line_that_is_no_atom) {
    struct row {
        std::string line;
        const char* message;  ///< behind the place
    };
    const row rows[] = {
        {"O", "expected three numbers after the symbol 'O', found 0 and then no more fields"},
        {"O 1. 2", "expected three numbers after the symbol 'O', found 2 and then no more fields"},
        {"O,1.,2,", "expected three numbers after the symbol 'O', found 2 and then no more fields"},
        {"O 1. 2 /3", "expected three numbers after the symbol 'O', found 2 and then no more fields"},
        {"O/ 1 2 3", "expected three numbers after the symbol 'O', found 0 and then no more fields"},
        {"O 1,,3", "expected three numbers after the symbol 'O', found 1 and then nothing between two commas"},
        {"O , , 1 2 3", "expected three numbers after the symbol 'O', found 0 and then nothing between two commas"},
        {"O 1 2 3x", "expected three numbers after the symbol 'O', found 2 and then '3x'"},
        {"O x 2 3", "expected three numbers after the symbol 'O', found 0 and then 'x'"},
        {"O 1 NaN 3", "expected three numbers after the symbol 'O', found 1 and then 'NaN'"},
        {"O 1 Inf 3", "expected three numbers after the symbol 'O', found 1 and then 'Inf'"},
        {"O 1 1e999 3",
         "expected three numbers after the symbol 'O', found 1 and then a number that is too large, '1e999'"},
        {"\x01 1 2 3\xff", "expected three numbers after the symbol '\\x01', found 2 and then '3\\xff'"},
        {"H1 1 2 " + std::string(70, 'x'),
         "expected three numbers after the symbol 'H1', found 2 and then "
         "'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx... (10 more characters)'"},
        {"O 1. 2 " + std::string(193, ' ') + "3",
         "expected three numbers after the symbol 'O', found 2 and then no more fields"},
        {"/ 1 2 3", "expected an element symbol and three numbers, found '/ 1 2 3'"},
        {"'O 1 2 3", "expected an element symbol and three numbers, found ''O 1 2 3'"},
        {"", "expected an element symbol and three numbers, found ''"},
        {"   ", "expected an element symbol and three numbers, found ''"},
        {"\t", "expected an element symbol and three numbers, found '\\t'"},
        {",1 2 3", "expected an element symbol and three numbers, found ',1 2 3'"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.line));
        support::write_file("mol.gjf", head + ("H 1 2 3\n" + tested.line) + "\nH 4 5 6\n");
        EXPECT_EQ(message_of(3), "mol.gjf:7: " + std::string(tested.message) + "|standard error|2");
        expect_atom(1, "H ", 1.0, 2.0, 3.0);
        expect_untouched_from(3);
    }
}

TEST_F(get_gjf_coord, says_where_a_line_is_one_of_a_z_matrix) {
    const std::string hint =
        "; this looks like a Z-matrix, Cartesian coordinates are needed: displacement_preparer makes them";
    const std::string symbol_only = "expected three numbers after the symbol 'H', found 0 and then no more fields";
    const std::string two_numbers = "expected three numbers after the symbol 'H', found 2 and then no more fields";
    const std::string variable = "expected three numbers after the symbol 'H', found 1 and then 'R'";
    struct row {
        std::string before;
        std::string line;
        std::string message;
    };
    const row rows[] = {
        {"", "H", symbol_only + hint},
        {"", "*", "expected three numbers after the symbol '*', found 0 and then no more fields"},
        {"", "2", "expected three numbers after the symbol '2', found 0 and then no more fields"},
        {"", "[", "expected three numbers after the symbol '[', found 0 and then no more fields"},
        {"", "{", "expected three numbers after the symbol '{', found 0 and then no more fields"},
        {"", "z", "expected three numbers after the symbol 'z', found 0 and then no more fields" + hint},
        {"", "Z", "expected three numbers after the symbol 'Z', found 0 and then no more fields" + hint},
        {"", "H/1 2 3", symbol_only},
        {"O 0 0 0\n", "H", symbol_only},
        {"O 0 0 0\n", "H 1 R", variable + hint},
        {"O 0 0 0\n", "H 1 0.96", two_numbers + hint},
        {"O 0 0 0\n", "H 2 R", variable},
        {"O 0 0 0\n", "H 0 R", variable},
        {"O 0 0 0\n", "H 1. R", variable},
        {"O 0 0 0\n", "H 1 R 1", variable},
        {"O 0 0 0\nH 0 0 1\n", "H 1 R", variable},
        {"O 0 0 0\nH 0 0 1\n", "H 1 R 2 A", variable + hint},
        {"O 0 0 0\nH 0 0 1\n", "H 1 R 3 A", variable},
        {"O 0 0 0\nH 0 0 1\nH 0 1 0\n", "H 1 R 2 A 3 D", variable + hint},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.before + tested.line);
        support::write_file("mol.gjf", head + tested.before + tested.line + "\n");
        const auto number = 6 + std::count(tested.before.begin(), tested.before.end(), '\n');
        EXPECT_EQ(message_of(static_cast<int>(number) - 5),
                  "mol.gjf:" + std::to_string(number) + ": " + tested.message + "|standard error|2");
    }
}

TEST_F(get_gjf_coord, says_where_a_blank_line_may_be_missing_after_the_title) {
    support::write_file("mol.gjf", "#\n\nt\n0 1\nO 1 2 3\n\nO H 0\n6-31G(d)\n");
    EXPECT_EQ(message_of(1),
              "mol.gjf:8: expected three numbers after the symbol '6-', found 0 and then no more fields; lines 3 to 5 "
              "count as the title, is a blank line missing?|standard error|2");
    support::write_file("mol.gjf", "#\n\nt\nu\n\n0 1\nO\n");
    EXPECT_EQ(
        message_of(1),
        "mol.gjf:7: expected three numbers after the symbol 'O', found 0 and then no more fields; this looks like "
        "a Z-matrix, Cartesian coordinates are needed: displacement_preparer makes them; lines 3 to 4 count as "
        "the title, is a blank line missing?|standard error|2");
}

TEST_F(get_gjf_coord, keeps_what_was_read_of_a_line_before_it_stopped) {
    support::write_file("mol.gjf", std::string(head) + "O 1 2 x\n");
    EXPECT_EQ(message_of(1),
              "mol.gjf:6: expected three numbers after the symbol 'O', found 2 and then 'x'|standard error|2");
    expect_atom(1, "O ", 1.0, 2.0, untouched);
    support::write_file("mol.gjf", std::string(head) + "'O 1 2 3\n");
    EXPECT_NE(message_of(1), "no error");
    expect_untouched_from(1);
}

TEST_F(get_gjf_coord, of_more_atoms_than_there_are_lines_or_places_stops_the_run) {
    support::write_file("mol.gjf", std::string(head) + "O 1 2 3\n");
    EXPECT_EQ(message_of(2), "array 'lines': index 7 is outside 1..6|standard error|2");
    expect_untouched_from(2);
    support::write_file("mol.gjf", std::string(head) + "O 1 2 3\nO 1 2 3\n");
    const base::array2<double> one_point("xyz", 3, 1);
    EXPECT_EQ(stopped_with([&] { gjf::get_gjf_coord("mol.gjf", 2, one_point, symbol); }),
              "array 'xyz': index 2 of dimension 2 is outside 1..1|standard error|2");
    const base::array1<base::text<2>> one_symbol("symbol", 1, 1);
    EXPECT_EQ(stopped_with([&] { gjf::get_gjf_coord("mol.gjf", 2, xyz, one_symbol); }),
              "array 'symbol': index 2 is outside 1..1|standard error|2");
}

TEST_F(get_gjf_coord, of_a_file_without_its_sections_stops_the_run) {
    struct row {
        const char* text;
        const char* expected;
    };
    const row rows[] = {
        {"O 1 2 3\n",
         "mol.gjf:1: expected a route line, that is one that begins with '#', found none up to the end of the file "
         "(line 1)|standard error|2"},
        {"#\n\nt\n\n",
         "mol.gjf:4: expected a charge and multiplicity line, found the end of the file (line 4); the route line is "
         "line 1, the last one that begins with '#'|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text));
        support::write_file("mol.gjf", tested.text);
        EXPECT_EQ(message_of(1), tested.expected);
        expect_untouched_from(1);
    }
    EXPECT_EQ(message_of(1, "missing.gjf "),
              " Error in opening file 'missing.gjf' in function num_file_lines, stop!|standard output|1");
    expect_untouched_from(1);
}

}  // namespace
