#include "displacement_generator/run.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "file/file.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

constexpr std::string_view head = "# hf\n\ntitle\n\n0 1\n";
constexpr std::string_view water = "O 0 0 0.25\nH 0 0.75 -0.5\nH 0 -0.75 -0.5\n\n";

generator::control settings(std::string_view fxyz = "mol.gjf") {
    generator::control result;
    result.fxyz = fxyz;
    return result;
}

struct outcome {
    std::string error;
    std::string standard_output;
    support::tree files;  ///< below PES-0
};

outcome outcome_of(const generator::control& with, const std::string& atoms) {
    const support::scratch_folder scratch;
    support::write_file("mol.gjf", std::string(head) + atoms);
    outcome result;
    result.standard_output =
        support::standard_output_of([&] { result.error = support::stopped_with([&] { generator::run(with); }); });
    result.files = support::read_tree("PES-0");
    return result;
}

/// The part of a text from one word up to, not with, another.
std::string between(const std::string& text, std::string_view from, std::string_view to) {
    const std::size_t begin = text.find(from);
    return begin == std::string::npos ? "" : text.substr(begin, text.find(to, begin) - begin);
}

/// The names of the files, without "coord-" and ".com" and without the list, in one line.
std::string tags(const outcome& result) {
    std::string all;
    for (const auto& [name, bytes] : result.files) {
        if (name != "files.out") {
            all += all.empty() ? "" : " ";
            all += name.substr(6, name.size() - 10);
        }
    }
    return all;
}

TEST(run, a_c2v_molecule_about_z) {
    const outcome found = outcome_of(settings(), std::string(water));
    EXPECT_EQ(found.error, "no error");
    EXPECT_EQ(found.standard_output, "");
    EXPECT_EQ(tags(found), "0-00 1+dz 1-dx 1-dy 1-dz 2+dy 2+dz 2-dx 2-dy 2-dz");
    const std::string& list = found.files.at("files.out");
    EXPECT_EQ(list.substr(0, 57), "Number of atoms:      3\nNumber of files:     10\ndx=  0.00");
    EXPECT_EQ(between(list, "Atom", "Total"),
              "Atom correspondance:\n"
              "       n  symbol     nat       E     C2z     Szx     Syz\n"
              "       1      O        8       1       1       1       1\n"
              "       2      H        1       2       3       3       2\n"
              "       3      H        1       3       2       2       3\n");
    // The operations are 1, 2, 7 and 8, their places 1, 2, 3 and 4.
    EXPECT_EQ(between(list, "      13", "      15"),
              "      13  3-dx           F       7       3     Szx\n"
              "      14  3+dx           F       7       2     C2z\n");
    EXPECT_EQ(between(list, "       8  2+dx", "\n"), "       8  2+dx           F       7       4     Syz");
}

TEST(run, without_symmetry) {
    generator::control off = settings();
    off.symm = false;
    for (const bool std_orient : {true, false}) {
        off.std_orient = std_orient;
        // In a plane that symmetry would turn: nothing is turned.
        const outcome found = outcome_of(off, "H 0.75 0 -0.5\nO 0 0 0.25\nH -0.75 0 -0.5\n\n");
        EXPECT_EQ(found.error, "no error");
        EXPECT_EQ(tags(found),
                  "0-00 1+dx 1+dy 1+dz 1-dx 1-dy 1-dz 2+dx 2+dy 2+dz 2-dx 2-dy 2-dz 3+dx 3+dy 3+dz 3-dx 3-dy 3-dz");
        EXPECT_EQ(between(found.files.at("coord-0-00.com"), "   H", "\n\n"),
                  "   H                0.75000000    0.00000000   -0.50000000\n"
                  "   O                0.00000000    0.00000000    0.25000000\n"
                  "   H               -0.75000000    0.00000000   -0.50000000");
        const std::string& list = found.files.at("files.out");
        EXPECT_EQ(between(list, "Begin", "Total"),
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
                  "       2      O        8       2\n"
                  "       3      H        1       3\n");
        EXPECT_EQ(between(list, "Total", "       n"),
                  "Total         points:        18\nCalculated    points:        18\n");
        EXPECT_EQ(between(list, "      18  3+dz", "End"), "      18  3+dz           T      18       1     E  \n");
    }
}

TEST(run, each_setting_has_its_effect) {
    struct row {
        std::string_view name;
        void (*change)(generator::control&);
        std::string_view tags;
        std::string_view step;
        std::string_view hydrogen;  ///< of the reference geometry
    };
    const std::string in_zx = "O 0 0 0.25\nH 0.75 0 -0.5\nH -0.75 0 -0.5\n\n";
    const std::string_view turned = "    0.00000000   -0.75000000   -0.50000000";
    const std::string_view as_given = "    0.75000000    0.00000000   -0.50000000";
    const std::vector<row> rows = {
        {"the defaults", [](generator::control&) {}, "0-00 1+dz 1-dx 1-dy 1-dz 2+dy 2+dz 2-dx 2-dy 2-dz", "  0.001000",
         turned},
        {"qctype and task",
         [](generator::control& c) {
             c.qctype = "anything";
             c.task = "at all";
         },
         "0-00 1+dz 1-dx 1-dy 1-dz 2+dy 2+dz 2-dx 2-dy 2-dz", "  0.001000", turned},
        {"std_orient", [](generator::control& c) { c.std_orient = false; },
         "0-00 1+dz 1-dx 1-dy 1-dz 2+dx 2+dz 2-dx 2-dy 2-dz", "  0.001000", as_given},
        {"dx", [](generator::control& c) { c.dx = -0.25; }, "0-00 1+dz 1-dx 1-dy 1-dz 2+dy 2+dz 2-dx 2-dy 2-dz",
         " -0.250000", turned},
        {"disp_sign", [](generator::control& c) { c.disp_sign = 1; },
         "0-00 1+dx 1+dy 1+dz 1-dz 2+dx 2+dy 2+dz 2-dy 2-dz", "  0.001000", turned},
        {"disp_sign 0", [](generator::control& c) { c.disp_sign = 0; },
         "0-00 1+dz 1-dx 1-dy 1-dz 2+dy 2+dz 2-dx 2-dy 2-dz", "  0.001000", turned},
        {"disp_sign 2", [](generator::control& c) { c.disp_sign = 2; },
         "0-00 1+dz 1-dx 1-dy 1-dz 2+dy 2+dz 2-dx 2-dy 2-dz", "  0.001000", turned},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.name);
        generator::control changed = settings();
        tested.change(changed);
        const outcome found = outcome_of(changed, in_zx);
        EXPECT_EQ(found.error, "no error");
        EXPECT_EQ(tags(found), tested.tags);
        EXPECT_EQ(between(found.files.at("files.out"), "dx=", "\n"), "dx=" + std::string(tested.step));
        EXPECT_EQ(between(found.files.at("coord-0-00.com"), "   H", "\n"),
                  "   H            " + std::string(tested.hydrogen));
    }
}

TEST(run, numbers_of_atoms) {
    const auto atoms = [](int natom) {
        std::string lines;
        for (int i = 1; i <= natom; ++i) {
            lines += "He " + std::to_string(i) + ' ' + std::to_string(2 * i) + ' ' + std::to_string(3 * i) + '\n';
        }
        return lines + '\n';
    };
    struct row {
        int natom;
        std::string_view counts;
        std::string_view reference;
        std::string_view last;
    };
    for (const row& tested :
         {row{0, "Number of atoms:      0\nNumber of files:      1\n", "coord-0-00.com", "coord-0-00.com"},
          row{1, "Number of atoms:      1\nNumber of files:      7\n", "coord-0-00.com", "coord-1+dz.com"},
          row{9, "Number of atoms:      9\nNumber of files:     55\n", "coord-0-00.com", "coord-9+dz.com"},
          row{10, "Number of atoms:     10\nNumber of files:     61\n", "coord-00-00.com", "coord-10+dz.com"}}) {
        SCOPED_TRACE(tested.natom);
        const outcome found = outcome_of(settings(), atoms(tested.natom));
        EXPECT_EQ(found.error, "no error");
        EXPECT_EQ(between(found.files.at("files.out"), "Number", "dx="), tested.counts);
        EXPECT_TRUE(found.files.contains(std::string(tested.reference)));
        EXPECT_TRUE(found.files.contains(std::string(tested.last)));
        EXPECT_EQ(found.files.size(), static_cast<std::size_t>(6 * tested.natom + 2));
    }
}

// Atoms are of one kind when number and mass are equal. An unknown symbol has number 0, and is of a kind with its
// equals only.
TEST(run, kinds_of_atoms) {
    struct row {
        std::string_view first;
        std::string_view second;
        std::string_view group;
        std::string_view numbers;
    };
    for (const row& tested : {row{"H", "H", "D2H", "1 1"}, row{"H", "h", "D2H", "1 1"}, row{"H", "H1", "C2V", "1 0"},
                              row{"H", "He", "C2V", "1 2"}, row{"Q", "Q", "D2H", "0 0"}, row{"Q", "Qq", "C2V", "0 0"},
                              row{"Q1", "Q1", "D2H", "0 0"}, row{"Q1", "Q2", "C2V", "0 0"}, row{"X", "Q", "C2V", "0 0"},
                              row{"D", "H", "C2V", "0 1"}}) {
        SCOPED_TRACE(std::string(tested.first) + ' ' + std::string(tested.second));
        const outcome found =
            outcome_of(settings(), std::string(tested.first) + " 0 0 1\n" + std::string(tested.second) + " 0 0 -1\n\n");
        const std::string& list = found.files.at("files.out");
        EXPECT_EQ(between(list, "Point", "\n").substr(28), tested.group);
        const std::string rows = between(list, "Atom", "Total");
        const std::size_t first = rows.find("\n       1 ");
        const std::size_t second = rows.find("\n       2 ");
        EXPECT_EQ(rows.substr(first + 24, 1) + ' ' + rows.substr(second + 24, 1), tested.numbers);
    }
}

TEST(run, explains_an_input_that_does_not_open) {
    const support::scratch_folder scratch;
    const auto detail_of = [](std::string_view fxyz, const std::string& place) {
        generator::control with = settings(fxyz);
        with.fxyz_place = place;
        try {
            generator::run(with);
        } catch (const base::run_error& error) {
            return error.detail;
        }
        return std::string("no error");
    };
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(detail_of("a b.gjf", "x/control:7"),
              "x/control:7: key 'fxyz': cannot open 'a b.gjf' in the folder '" + here + "': No such file or directory");
    EXPECT_EQ(detail_of("/", "control:2"), "control:2: key 'fxyz': cannot open '/': Is a directory");
    EXPECT_EQ(detail_of("", "control"), "control: key 'fxyz': expected the path of the Gaussian input, found none");
}

TEST(run, what_stops_it_before_anything_is_written) {
    struct row {
        std::string_view name;
        std::string_view fxyz;
        std::string atoms;
        std::string_view error;
    };
    const std::vector<row> rows = {
        {"no input", "", "", " Error in opening file '' in function num_file_lines, stop!|standard output|1"},
        {"a missing input", "other.gjf", "",
         " Error in opening file 'other.gjf' in function num_file_lines, stop!|standard output|1"},
        {"a folder", ".", "", " Error in opening file '.' in function num_file_lines, stop!|standard output|1"},
        {"a field too few", "mol.gjf", "O 0 0 0\nH 1.0 2\n\n",
         "mol.gjf:7: expected three numbers after the symbol 'H', found 2 and then no more fields|standard error|2"},
        {"a field that is no number", "mol.gjf", "O 0 a 0\n\n",
         "mol.gjf:6: expected three numbers after the symbol 'O', found 1 and then 'a'|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.name);
        const support::scratch_folder scratch;
        support::write_file("mol.gjf", std::string(head) + tested.atoms);
        EXPECT_EQ(support::stopped_with([&] { generator::run(settings(tested.fxyz)); }), tested.error);
        EXPECT_FALSE(std::filesystem::exists("PES-0"));
        int fid = 0;
        file::get_free_fid(fid);
        EXPECT_EQ(fid, 100);
    }
}

TEST(run, twice_gives_the_same) {
    const support::scratch_folder scratch;
    support::write_file("mol.gjf", std::string(head) + std::string(water));
    generator::run(settings());
    const support::tree first = support::read_tree("PES-0");
    support::write_file("PES-0/files.out", std::string(100000, 'x'));
    support::write_file("PES-0/coord-1-dx.com", std::string(100000, 'x'));
    generator::run(settings());
    EXPECT_EQ(support::read_tree("PES-0"), first);
    // Nothing that one run leaves behind shows in the next: without symmetry every operation is called "E", with it
    // none.
    generator::control off = settings();
    off.symm = false;
    generator::run(off);
    generator::run(settings());
    for (const auto& [name, bytes] : first) {
        EXPECT_EQ(support::read_file("PES-0/" + name), bytes) << name;
    }
}

TEST(run, a_folder_that_cannot_be_made) {
    const support::scratch_folder scratch;
    support::write_file("mol.gjf", std::string(head) + std::string(water));
    support::write_file("PES-0", "a file");  // mkdir says so itself, on standard error
    EXPECT_EQ(support::stopped_with([] { generator::run(settings()); }),
              "PES-0: cannot make the folder: a file of this name exists|standard error|2");
}

}  // namespace
