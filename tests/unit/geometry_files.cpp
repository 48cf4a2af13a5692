#include "displacement_generator/geometry_files.hpp"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "support.hpp"

using namespace displacement_generator;

namespace {

using point = std::array<double, 3>;

/// What write_geometry_files is given. Line numbers follow from what stands before and behind the atom lines.
struct geometry {
    std::vector<std::string> before = {"# hf", "", "title", "", "0 1"};
    std::vector<std::string> behind = {""};
    std::vector<std::string> symbols;
    std::vector<point> x;
    double dx = 0.5;
    int disp_sign = -1;
    std::vector<bool> f_calc;  ///< without any every point is computed
};

struct outcome {
    support::tree files;  ///< below PES-0, the list included
    std::vector<std::string> fnames;
    std::string error;
};

outcome written(
    const geometry& from, void (*prepare)() = [] {}) {
    const support::scratch_folder scratch;
    const int natom = static_cast<int>(from.symbols.size());
    const int icharge = static_cast<int>(from.before.size());
    const int nline = icharge + natom + static_cast<int>(from.behind.size());
    const base::array1<base::text<500>> lines("lines", 1, nline);
    const std::string atom_line = "an atom line, which is never copied";
    for (int i = 1; i <= nline; ++i) {
        lines(i) =
            std::string_view(i <= icharge           ? from.before[static_cast<std::size_t>(i - 1)]
                             : i <= icharge + natom ? atom_line
                                                    : from.behind[static_cast<std::size_t>(i - 1 - icharge - natom)]);
    }
    const base::array1<base::text<2>> symbol("symbol", 1, natom);
    const base::array2<double> x("x", 3, natom);
    for (int i = 1; i <= natom; ++i) {
        symbol(i) = std::string_view(from.symbols[static_cast<std::size_t>(i - 1)]);
        for (int c = 1; c <= 3; ++c) {
            x(c, i) = from.x[static_cast<std::size_t>(i - 1)].at(static_cast<std::size_t>(c - 1));
        }
    }
    const int ndisp = 6 * natom;
    const base::array1<bool> f_calc("f_calc", 1, ndisp);
    for (int n = 1; n <= ndisp; ++n) {
        f_calc(n) = from.f_calc.empty() || from.f_calc[static_cast<std::size_t>(n - 1)];
    }
    const base::array1<base::text<200>> fnames("fnames", 0, ndisp);

    outcome result;
    prepare();
    result.error = support::stopped_with([&] {
        generator::file_list list(natom, 0, from.dx);
        generator::write_geometry_files(lines, icharge, icharge + natom, nline, natom,
                                        static_cast<int>(std::to_string(natom).size()), symbol, x, from.dx,
                                        from.disp_sign, f_calc, list, fnames);
        list.close("End");
    });
    for (int n = 0; n <= ndisp; ++n) {
        result.fnames.emplace_back(fnames(n).trimmed());
    }
    result.files = support::read_tree("PES-0");
    return result;
}

/// The names that stand in the list, without their blanks; every line of them must have 30 columns.
std::vector<std::string> listed(const outcome& result) {
    std::vector<std::string> names;
    const std::string& list = result.files.at("files.out");
    std::size_t begin = 0;
    for (int line = 1; begin < list.size(); ++line) {
        const std::size_t end = list.find('\n', begin);
        const std::string_view record = std::string_view(list).substr(begin, end - begin);
        begin = end + 1;
        if (line > 3 && record != "End") {
            EXPECT_EQ(record.size(), 30U);
            names.emplace_back(record.substr(record.find_first_not_of(' ')));
        }
    }
    return names;
}

std::vector<std::string> file_names(const outcome& result) {
    std::vector<std::string> names;
    for (const auto& [name, bytes] : result.files) {
        names.push_back(name);
    }
    return names;
}

TEST(geometry_files, every_byte_of_one_atom) {
    geometry one;
    one.before = {"%chk=a.chk   ", "# hf", "   ", "title", "", "0 1"};
    one.behind = {"", "basis set  ", "  H 0", ""};
    one.symbols = {"H"};
    one.x = {{0.25, -1.0, 100.0}};
    const std::string head = "%chk=a.chk\n# hf\n\ntitle\n\n0 1\n";
    const std::string tail = "\n\nbasis set\n  H 0\n\n\n";
    const auto file = [&](const std::string& numbers) { return head + "   H            " + numbers + tail; };
    const support::tree expected = {
        {"files.out",
         "Number of atoms:      1\nNumber of files:      1\ndx=  0.500000\n"
         "                    coord-0-00\n"
         "                    coord-1-dx\n                    coord-1+dx\n"
         "                    coord-1-dy\n                    coord-1+dy\n"
         "                    coord-1-dz\n                    coord-1+dz\n"
         "End\n"},
        {"coord-0-00.com", file("    0.25000000   -1.00000000  100.00000000")},
        {"coord-1-dx.com", file("   -0.25000000   -1.00000000  100.00000000")},
        {"coord-1+dx.com", file("    0.75000000   -1.00000000  100.00000000")},
        {"coord-1-dy.com", file("    0.25000000   -1.50000000  100.00000000")},
        {"coord-1+dy.com", file("    0.25000000   -0.50000000  100.00000000")},
        {"coord-1-dz.com", file("    0.25000000   -1.00000000   99.50000000")},
        {"coord-1+dz.com", file("    0.25000000   -1.00000000  100.50000000")},
    };
    const outcome found = written(one);
    EXPECT_EQ(found.error, "no error");
    EXPECT_EQ(found.files, expected);
    EXPECT_EQ(found.fnames, (std::vector<std::string>{"0-00", "1-dx", "1+dx", "1-dy", "1+dy", "1-dz", "1+dz"}));
}

// The labels change with the sign, the arithmetic does not.
TEST(geometry_files, labels_of_the_two_steps) {
    struct row {
        int disp_sign;
        std::string_view first;
        std::string_view second;
    };
    geometry one;
    one.symbols = {"He"};
    one.x = {{1, 2, 3}};
    for (const row& tested : {row{-1, "1-dx", "1+dx"}, row{1, "1+dx", "1-dx"}, row{0, "1-dx", "1+dx"},
                              row{2, "1-dx", "1+dx"}, row{-2, "1-dx", "1+dx"}}) {
        SCOPED_TRACE(tested.disp_sign);
        one.disp_sign = tested.disp_sign;
        const outcome found = written(one);
        EXPECT_EQ(found.fnames[0], "0-00");
        EXPECT_EQ(found.fnames[1], tested.first);
        EXPECT_EQ(found.fnames[2], tested.second);
        EXPECT_EQ(found.files.at("coord-" + std::string(tested.first) + ".com"),
                  "# hf\n\ntitle\n\n0 1\n   He               0.50000000    2.00000000    3.00000000\n\n\n");
        EXPECT_EQ(found.files.at("coord-" + std::string(tested.second) + ".com"),
                  "# hf\n\ntitle\n\n0 1\n   He               1.50000000    2.00000000    3.00000000\n\n\n");
        EXPECT_EQ(found.files.at("coord-0-00.com"),
                  "# hf\n\ntitle\n\n0 1\n   He               1.00000000    2.00000000    3.00000000\n\n\n");
    }
}

// A displacement never stays: each file moves one coordinate of the reference.
TEST(geometry_files, atom_by_atom_x_before_y_before_z) {
    geometry two;
    two.symbols = {"C", "Cl"};
    two.x = {{1, 2, 3}, {-4, -5, -6}};
    two.f_calc = {true, false, false, true, false, false, false, false, true, false, false, true};
    const outcome found = written(two);
    EXPECT_EQ(found.fnames, (std::vector<std::string>{"0-00", "1-dx", "1+dx", "1-dy", "1+dy", "1-dz", "1+dz", "2-dx",
                                                      "2+dx", "2-dy", "2+dy", "2-dz", "2+dz"}));
    EXPECT_EQ(listed(found),
              (std::vector<std::string>{"coord-0-00", "coord-1-dx", "coord-1+dy", "coord-2-dy", "coord-2+dz"}));
    EXPECT_EQ(file_names(found), (std::vector<std::string>{"coord-0-00.com", "coord-1+dy.com", "coord-1-dx.com",
                                                           "coord-2+dz.com", "coord-2-dy.com", "files.out"}));
    struct row {
        std::string_view name;
        std::string_view atoms;
    };
    for (const row& tested : {row{"coord-0-00.com",
                                  "   C                1.00000000    2.00000000    3.00000000\n"
                                  "   Cl              -4.00000000   -5.00000000   -6.00000000\n"},
                              row{"coord-1-dx.com",
                                  "   C                0.50000000    2.00000000    3.00000000\n"
                                  "   Cl              -4.00000000   -5.00000000   -6.00000000\n"},
                              row{"coord-1+dy.com",
                                  "   C                1.00000000    2.50000000    3.00000000\n"
                                  "   Cl              -4.00000000   -5.00000000   -6.00000000\n"},
                              row{"coord-2-dy.com",
                                  "   C                1.00000000    2.00000000    3.00000000\n"
                                  "   Cl              -4.00000000   -5.50000000   -6.00000000\n"},
                              row{"coord-2+dz.com",
                                  "   C                1.00000000    2.00000000    3.00000000\n"
                                  "   Cl              -4.00000000   -5.00000000   -5.50000000\n"}}) {
        SCOPED_TRACE(tested.name);
        EXPECT_EQ(found.files.at(std::string(tested.name)),
                  "# hf\n\ntitle\n\n0 1\n" + std::string(tested.atoms) + "\n\n");
    }
}

TEST(geometry_files, one_atom_line) {
    struct row {
        std::string_view symbol;
        point x;
        std::string_view expected;
    };
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<row> rows = {
        {"C", {1.2094, 0, -0.001}, "   C                1.20940000    0.00000000   -0.00100000\n"},
        {"Cl", {-0.0, 0.1, 10}, "   Cl              -0.00000000    0.10000000   10.00000000\n"},
        {"", {0, 0, 0}, "                    0.00000000    0.00000000    0.00000000\n"},
        {"1", {0, 0, 0}, "   1                0.00000000    0.00000000    0.00000000\n"},
        {"U", {4e-9, 6e-9, -4e-9}, "   U                0.00000000    0.00000001   -0.00000000\n"},
        // Ties that a double holds exactly go to the even digit.
        {"U",
         {0.001953125, 0.005859375, 0.00000000186264514923095703125},
         "   U                0.00195312    0.00585938    0.00000000\n"},
        {"U", {99999.99999999, -9999.99999999, 0}, "   U            99999.99999999-9999.99999999    0.00000000\n"},
        {"U", {100000, -10000, 1e300}, "   U            ******************************************\n"},
        {"U", {99999.999999999, -9999.999999999, 0}, "   U            ****************************    0.00000000\n"},
        {"U",
         {infinity, -infinity, infinity - infinity},
         "   U                  Infinity     -Infinity           NaN\n"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.expected);
        geometry one;
        one.symbols = {std::string(tested.symbol)};
        one.x = {tested.x};
        one.f_calc.assign(6, false);
        EXPECT_EQ(written(one).files.at("coord-0-00.com"),
                  "# hf\n\ntitle\n\n0 1\n" + std::string(tested.expected) + "\n\n");
    }
}

TEST(geometry_files, what_stands_about_the_atoms) {
    struct row {
        std::string_view name;
        std::vector<std::string> before;
        std::vector<std::string> behind;
        std::string expected;
    };
    const std::string atom = "   H                1.00000000    2.00000000    3.00000000\n";
    const std::string longest(500, 'x');
    const std::vector<row> rows = {
        {"nothing behind", {"0 1"}, {}, "0 1\n" + atom + "\n"},
        {"a blank line behind", {"0 1"}, {""}, "0 1\n" + atom + "\n\n"},
        {"lines of blanks", {" ", "0 1"}, {"   ", " x ", "  "}, "\n0 1\n" + atom + "\n x\n\n\n"},
        {"tabs are kept", {"\t0 1\t"}, {"\t"}, "\t0 1\t\n" + atom + "\t\n\n"},
        {"lines of 500 characters", {longest}, {longest}, longest + "\n" + atom + longest + "\n\n"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.name);
        geometry one;
        one.before = tested.before;
        one.behind = tested.behind;
        one.symbols = {"H"};
        one.x = {{1, 2, 3}};
        one.f_calc = {true, false, false, false, false, false};
        const outcome found = written(one);
        EXPECT_EQ(found.files.at("coord-0-00.com"), tested.expected);
        std::string moved = tested.expected;
        moved.replace(moved.find("1.00000000"), 10, "0.50000000");
        EXPECT_EQ(found.files.at("coord-1-dx.com"), moved);
    }
}

TEST(geometry_files, no_atoms) {
    const outcome found = written({});
    EXPECT_EQ(found.files, (support::tree{{"coord-0-00.com", "# hf\n\ntitle\n\n0 1\n\n\n"},
                                          {"files.out",
                                           "Number of atoms:      0\nNumber of files:      1\ndx=  0.500000\n"
                                           "                    coord-0-00\nEnd\n"}}));
    EXPECT_EQ(found.fnames, (std::vector<std::string>{"0-00"}));
}

TEST(geometry_files, names_have_as_many_digits_as_the_number_of_atoms) {
    struct row {
        int natom;
        std::string_view reference;
        std::string_view first;
        std::string_view last;
    };
    for (const row& tested : {row{9, "0-00", "1-dx", "9+dz"}, row{10, "00-00", "01-dx", "10+dz"},
                              row{12, "00-00", "01-dx", "12+dz"}, row{99, "00-00", "01-dx", "99+dz"},
                              row{100, "000-00", "001-dx", "100+dz"}, row{1000, "0000-00", "0001-dx", "1000+dz"}}) {
        SCOPED_TRACE(tested.natom);
        const auto natom = static_cast<std::size_t>(tested.natom);
        geometry many;
        many.symbols.assign(natom, "H");
        many.x.assign(natom, {0, 0, 0});
        many.f_calc.assign(6 * natom, false);
        many.f_calc.front() = true;
        many.f_calc.back() = true;
        const outcome found = written(many);
        ASSERT_EQ(found.fnames.size(), 6 * natom + 1);
        EXPECT_EQ(found.fnames.front(), tested.reference);
        EXPECT_EQ(found.fnames[1], tested.first);
        EXPECT_EQ(found.fnames.back(), tested.last);
        EXPECT_EQ(listed(found), (std::vector<std::string>{"coord-" + std::string(tested.reference),
                                                           "coord-" + std::string(tested.first),
                                                           "coord-" + std::string(tested.last)}));
        EXPECT_TRUE(found.files.contains("coord-" + std::string(tested.last) + ".com"));
    }
}

TEST(geometry_files, steps_that_are_negative_zero_or_too_small_to_see) {
    struct row {
        double dx;
        std::string_view first;
        std::string_view second;
    };
    for (const row& tested :
         {row{-0.25, "    1.25000000", "    0.75000000"}, row{0.0, "    1.00000000", "    1.00000000"},
          row{1e-9, "    1.00000000", "    1.00000000"}, row{1e6, "**************", "**************"}}) {
        SCOPED_TRACE(tested.dx);
        geometry one;
        one.symbols = {"H"};
        one.x = {{1, 2, 3}};
        one.dx = tested.dx;
        const outcome found = written(one);
        const auto columns = [&](const char* name) {
            return found.files.at(name).substr(std::string_view("# hf\n\ntitle\n\n0 1\n").size() + 16, 14);
        };
        EXPECT_EQ(columns("coord-1-dx.com"), tested.first);
        EXPECT_EQ(columns("coord-1+dx.com"), tested.second);
        EXPECT_EQ(columns("coord-1-dy.com"), "    1.00000000");
    }
}

// Neither the coordinate nor the step is rounded before they are added. The default step is the single-precision 0.001,
// which in places shows in the last digit.
TEST(geometry_files, the_sum_is_rounded_once) {
    struct row {
        double x;
        double dx;
        std::string_view minus;
        std::string_view plus;
    };
    for (const row& tested :
         {row{4e-9, 4e-9, "    0.00000000", "    0.00000001"}, row{6e-9, 6e-9, "    0.00000000", "    0.00000001"},
          row{4.96e-9, 0.001F, "   -0.00100000", "    0.00100001"},
          row{4.96e-9, 0.001, "   -0.00100000", "    0.00100000"},
          row{1e-9, 2.5e-8, "   -0.00000002", "    0.00000003"}}) {
        SCOPED_TRACE(tested.dx);
        geometry one;
        one.symbols = {"H"};
        one.x = {{tested.x, 0, 0}};
        one.dx = tested.dx;
        const outcome found = written(one);
        EXPECT_EQ(found.files.at("coord-1-dx.com").substr(17 + 16, 14), tested.minus);
        EXPECT_EQ(found.files.at("coord-1+dx.com").substr(17 + 16, 14), tested.plus);
    }
}

TEST(geometry_files, files_of_an_earlier_run) {
    geometry one;
    one.symbols = {"H"};
    one.x = {{1, 2, 3}};
    one.f_calc = {true, false, false, false, false, false};
    const outcome found = written(one, [] {
        std::filesystem::create_directory("PES-0");
        support::write_file("PES-0/coord-0-00.com", std::string(5000, 'x'));
        support::write_file("PES-0/coord-1+dx.com", "stays");
        support::write_file("PES-0/coord-99-dx.com", "stays");
    });
    EXPECT_EQ(found.files.at("coord-0-00.com"),
              "# hf\n\ntitle\n\n0 1\n   H                1.00000000    2.00000000    3.00000000\n\n\n");
    EXPECT_EQ(found.files.at("coord-1+dx.com"), "stays");
    EXPECT_EQ(found.files.at("coord-99-dx.com"), "stays");
}

// What was written before stays; the list has no last line.
TEST(geometry_files, a_file_that_will_not_open) {
    geometry one;
    one.symbols = {"H"};
    one.x = {{1, 2, 3}};
    const outcome found = written(one, [] { std::filesystem::create_directories("PES-0/coord-1-dy.com"); });
    EXPECT_EQ(found.error, "PES-0/coord-1-dy.com: cannot open for writing: Is a directory|standard error|2");
    EXPECT_EQ(file_names(found), (std::vector<std::string>{"coord-0-00.com", "coord-1+dx.com", "coord-1-dx.com",
                                                           "coord-1-dy.com/", "files.out"}));
    EXPECT_EQ(found.files.at("files.out").find("End"), std::string::npos);
}

TEST(geometry_files, an_array_that_is_too_short_stops_the_run) {
    geometry one;
    one.symbols = {"H"};
    one.x = {{1, 2, 3}};
    const support::scratch_folder scratch;
    const base::array1<base::text<500>> lines("lines", 1, 2);
    const base::array1<base::text<2>> symbol("symbol", 1, 1);
    const base::array2<double> x("x", 3, 1);
    const base::array1<bool> f_calc("f_calc", 1, 6);
    const base::array1<base::text<200>> fnames("fnames", 0, 5);
    const auto writing = [&](int nline, const base::view1<base::text<200>>& names) {
        return support::stopped_with([&] {
            generator::file_list list(1, 0, 0.5);
            generator::write_geometry_files(lines, 1, 2, nline, 1, 1, symbol, x, 0.5, -1, f_calc, list, names);
        });
    };
    EXPECT_EQ(writing(3, fnames), "array 'lines': index 3 is outside 1..2|standard error|2");
    EXPECT_EQ(writing(2, fnames), "array 'fnames': index 6 is outside 0..5|standard error|2");
}

}  // namespace
