#include <sys/stat.h>

#include <string>

#include "file_test.hpp"
#include "gjf/gjf.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

/// The five routines that find the sections of a Gaussian input and count its atoms.
class get_gjf_sections : public support::file_test {
  protected:
    using routine = void (*)(std::string_view fname, int& result);
    static constexpr routine all[] = {gjf::get_gjf_route_linenumber, gjf::get_gjf_title_linenumber,
                                      gjf::get_gjf_charge_linenumber, gjf::get_gjf_atom_linenumber, gjf::get_gjf_natom};

    /// The result of a routine or the message with which it stopped the run, its result untouched.
    static std::string result_of(routine find, std::string_view fname) {
        constexpr int untouched = -77;
        int result = untouched;
        std::string message = stopped_with([&] { find(fname, result); });
        if (message == "no error") {
            return std::to_string(result);
        }
        EXPECT_EQ(result, untouched);
        EXPECT_FALSE(file::is_connected(100));
        return message;
    }
};

constexpr const char* water =
    "%chk=w.chk\n#p b3lyp/6-31g* force\n\nwater\n\n0 1\nO 0.0 0.0 0.117\nH 0.0 0.757 -0.470\nH 0.0 -0.757 -0.470\n\n";

TEST_F(get_gjf_sections, are_found_one_behind_the_other) {
    struct row {
        std::string text;
        const char* expected[5];  ///< route, title, charge, first atom, number of atoms
    };
    const row rows[] = {
        {water, {"2", "4", "6", "7", "3"}},
        {"   #p opt\n\nt\n\n0 1\nH 0 0 0\n\n", {"1", "3", "5", "6", "1"}},
        {"#\n\nline A\nline B\n\n0 1\nH 0 0 0\n\n", {"1", "3", "6", "7", "1"}},
        {"#p\nopt\n\nt\n\n0 1\nH 0 0 0\n\n", {"1", "4", "6", "7", "1"}},        // a route section of two lines
        {"%nproc=2\n\n#\n\nt\n\n0 1\nH 0 0 0\n\n", {"3", "5", "7", "8", "1"}},  // a blank line before it
        {"#\n\nt\n\n0 1\nH 0 0 0\nH 0 0 1", {"1", "3", "5", "6", "2"}},         // no blank line at the end
        {"#\n\nt\n\n0 1\nH 0 0 0\nH 0 0 1\n", {"1", "3", "5", "6", "2"}},
        {"#\r\n\r\nt\r\n\r\n0 1\r\nH 0 0 0\r\n\r\nmore\r\n", {"1", "3", "5", "6", "1"}},
        {"#\n   \nt\n \n0 1\nH 0 0 0\n    \nH 0 0 1\n", {"1", "3", "5", "6", "1"}},  // spaces are a blank line
        {"#\n\t\n\nt\n\t\n\n0 1\nH 0 0 0\n\t\n\n", {"1", "4", "7", "8", "2"}},       // a tab is none
        {"#\n\n\n\n0 1\nH 0 0 0\n\n", {"1", "3", "5", "6", "1"}},                    // the first title line is blank
        {"#\n\nt\n\n0 1\n\nH 0 0 0\n", {"1", "3", "5", "6", "0"}},
        {"#\n\nt\n\n0 1", {"1", "3", "5", "6", "0"}},
        {"#\n\nt\n\n0 1\n\n", {"1", "3", "5", "6", "0"}},
        {"# one\n\nt\n\n0 1\nH 0 0 0\n\n--Link1--\n#two\n\nu\n\n0 1\nO 0 0 0\nO 0 0 1\n\n",
         {"9", "11", "13", "14", "2"}},
        {"#a\n#b\n\nt\n\n0 1\nH 0 0 0\n\n", {"2", "4", "6", "7", "1"}},
        {std::string(199, ' ') + "#\n\nt\n\n0 1\nH 0 0 0\n", {"1", "3", "5", "6", "1"}},
        // Behind the 200th character nothing is seen: the second "#" is none, and the line before the atoms is blank.
        {"#\n" + std::string(200, ' ') + "#\nt\n" + std::string(200, ' ') + "x\n0 1\nH 0 0 0\n",
         {"1", "3", "5", "6", "1"}},
        {"!#\nx#\n#\n\nt\n\n0 1\nH 0 0 0\n\t#\n", {"3", "5", "7", "8", "2"}},  // "#" is not the first character
        {std::string("#\n\0\n\nt\n\n0 1\nH 0 0 0\n", 20), {"1", "4", "6", "7", "1"}},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text));
        support::write_file("mol.gjf", tested.text);
        for (std::size_t i = 0; i < std::size(all); ++i) {
            EXPECT_EQ(result_of(all[i], "mol.gjf"), tested.expected[i]) << "routine " << i;
            EXPECT_EQ(result_of(all[i], "mol.gjf   "), tested.expected[i]) << "routine " << i;
        }
    }
}

TEST_F(get_gjf_sections, that_are_missing_stop_the_run) {
    struct row {
        const char* text;
        std::size_t found;  ///< how many of the routines still find what they look for
        const char* expected;
    };
    const row rows[] = {
        {"", 0,
         "mol.gjf:1: expected a route line, that is one that begins with '#', found none up to the end of the file "
         "(line 0)|standard error|2"},
        {"\n\n", 0,
         "mol.gjf:1: expected a route line, that is one that begins with '#', found none up to the end of the file "
         "(line 2)|standard error|2"},
        {"\t#p opt\n\nt\n\n0 1\nH 0 0 0\n", 0,
         "mol.gjf:1: expected a route line, that is one that begins with '#', found none up to the end of the file "
         "(line 6)|standard error|2"},
        {"%chk=a\n#p opt\nt\n0 1\n", 1,
         "mol.gjf:3: expected a blank line that ends the route section, found the end of the file (line 4); the route "
         "line is line 2, the last one that begins with '#'|standard error|2"},
        {"#", 1,
         "mol.gjf:1: expected a blank line that ends the route section, found the end of the file (line 1); the route "
         "line is line 1, the last one that begins with '#'|standard error|2"},
        {"\xef\xbb\xbf# hf\n\nt\n#u\n", 1,
         "mol.gjf:4: expected a blank line that ends the route section, found the end of the file (line 4); the route "
         "line is line 4, the last one that begins with '#'; the file begins with a byte order mark, save it as plain "
         "text without one|standard error|2"},
        {"#\n\n", 1,
         "mol.gjf:2: expected a title line, found the end of the file (line 2); the route line is line 1, the last one "
         "that begins with '#'|standard error|2"},
        {"#\n\nt\n0 1\nH 0 0 0\n", 2,
         "mol.gjf:4: expected a blank line that ends the title section, found the end of the file (line 5); the route "
         "line is line 1, the last one that begins with '#'; lines 3 to 5 count as the title, is a blank line missing?"
         "|standard error|2"},
        {"#\n\nt\n0 1\nH 0 0 0\n\n", 2,
         "mol.gjf:6: expected a charge and multiplicity line, found the end of the file (line 6); the route line is "
         "line 1, the last one that begins with '#'; lines 3 to 5 count as the title, is a blank line missing?"
         "|standard error|2"},
        {"#\n\nt", 2,
         "mol.gjf:3: expected a blank line that ends the title section, found the end of the file (line 3); the route "
         "line is line 1, the last one that begins with '#'|standard error|2"},
        {"#\n\n\n", 2,
         "mol.gjf:3: expected a blank line that ends the title section, found the end of the file (line 3); the route "
         "line is line 1, the last one that begins with '#'|standard error|2"},
        {"#\n\nt\n\n", 2,
         "mol.gjf:4: expected a charge and multiplicity line, found the end of the file (line 4); the route line is "
         "line 1, the last one that begins with '#'|standard error|2"},
        {"# one\n\nt\n\n0 1\nH 0 0 0\n\n--Link1--\n# two\n", 1,
         "mol.gjf:9: expected a blank line that ends the route section, found the end of the file (line 9); the route "
         "line is line 9, the last one that begins with '#', and line 1 was passed over for it|standard error|2"},
        {"x\n # one\n#two\n\nt\n\n0 1\nH 0 0 0\n\n#a comment\n", 1,
         "mol.gjf:10: expected a blank line that ends the route section, found the end of the file (line 10); the "
         "route line is line 10, the last one that begins with '#', and line 2 was passed over for it"
         "|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text));
        support::write_file("mol.gjf", tested.text);
        for (std::size_t i = 0; i < std::size(all); ++i) {
            const std::string result = result_of(all[i], "mol.gjf ");
            if (i < tested.found) {
                EXPECT_EQ(result.find_first_not_of("0123456789"), std::string::npos) << result;
            } else {
                EXPECT_EQ(result, tested.expected) << "routine " << i;
            }
        }
    }
}

TEST_F(get_gjf_sections, show_a_file_name_fit_for_a_message) {
    support::write_file("a\nb", "");
    EXPECT_EQ(result_of(gjf::get_gjf_natom, "a\nb"),
              "a\\nb:1: expected a route line, that is one that begins with '#', found none up to the end of the file "
              "(line 0)"
              "|standard error|2");
}

TEST_F(get_gjf_sections, of_a_file_that_cannot_be_opened_or_read_stop_the_run) {
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        const char* fname;
        const char* expected;
    };
    const row rows[] = {
        {"missing.gjf  ", " Error in opening file 'missing.gjf' in function num_file_lines, stop!|standard output|1"},
        {".", " Error in opening file '.' in function num_file_lines, stop!|standard output|1"},
        {"fifo", " Error in opening file 'fifo' in function num_file_lines, stop!|standard output|1"},
        {"/dev/null", " Error in opening file '/dev/null' in function num_file_lines, stop!|standard output|1"},
        {"/proc/self/mem", "/proc/self/mem: cannot read: Input/output error|standard error|2"},
    };
    for (const row& tested : rows) {
        for (const routine find : all) {
            SCOPED_TRACE(tested.fname);
            EXPECT_EQ(result_of(find, tested.fname), tested.expected);
        }
    }
}

}  // namespace
