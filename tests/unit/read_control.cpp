#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "displacement_generator/control.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

std::string in_digits(double value) {
    char digits[32] = {};
    static_cast<void>(std::snprintf(digits, sizeof digits, "%.17g", value));
    return digits;
}

/// The settings that are not the defaults, as "key=value" in a fixed order, texts without their trailing blanks.
std::string shown(const generator::control& settings) {
    std::string result;
    const auto add = [&](const std::string& setting) { result += (result.empty() ? "" : " ") + setting; };
    if (!settings.symm) {
        add("symm=F");
    }
    if (!settings.qctype.trimmed().empty()) {
        add("qctype=[" + std::string(settings.qctype.trimmed()) + "]");
    }
    if (!settings.task.trimmed().empty()) {
        add("task=[" + std::string(settings.task.trimmed()) + "]");
    }
    if (!settings.fxyz.trimmed().empty()) {
        add("fxyz=[" + std::string(settings.fxyz.trimmed()) + "]");
    }
    if (std::bit_cast<std::uint64_t>(settings.dx) != 0x3F50624DE0000000) {
        add("dx=" + in_digits(settings.dx));
    }
    if (!settings.std_orient) {
        add("std_orient=F");
    }
    if (settings.disp_sign != -1) {
        add("disp_sign=" + std::to_string(settings.disp_sign));
    }
    return result;
}

/// The settings that a control file with these bytes gives, or the message with which it stops the run.
std::string outcome_of(std::string_view bytes) {
    const support::scratch_folder scratch;
    support::write_file("control", bytes);
    std::string settings;
    const std::string error = support::stopped_with([&] { settings = shown(generator::read_control("control")); });
    return error == "no error" ? settings : error;
}

struct row {
    std::string bytes;
    std::string expected;
};

void expect_rows(const std::vector<row>& rows) {
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.bytes);
        EXPECT_EQ(outcome_of(tested.bytes), tested.expected);
    }
}

/// Rows whose message stands on standard error, as all of these do.
void expect_errors(const std::vector<row>& rows) {
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.bytes);
        EXPECT_EQ(outcome_of(tested.bytes), "control:" + tested.expected + "|standard error|2");
    }
}

TEST(read_control, defaults) {
    const generator::control settings;
    EXPECT_TRUE(settings.symm);
    EXPECT_TRUE(settings.std_orient);
    EXPECT_EQ(settings.disp_sign, -1);
    EXPECT_EQ(settings.dx, 0.0010000000474974513);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(settings.dx), 0x3F50624DE0000000);
    for (const base::text<200>& text : {settings.qctype, settings.task, settings.fxyz}) {
        EXPECT_EQ(std::string_view(text), std::string(200, ' '));
    }
}

TEST(read_control, group_and_assignments) {
    expect_rows({
        {"&control\n/\n", ""},
        {"&control /\n", ""},
        {"&control/", ""},
        {"&CONTROL\n/\n", ""},
        {"&Control dx=0.5 /", "dx=0.5"},
        {"  &control dx=0.5 /", "dx=0.5"},
        {"\t&control\tdx=0.5\t/", "dx=0.5"},
        {"&control,dx=0.5,/", "dx=0.5"},
        {"&control!what follows\ndx=0.5/", "dx=0.5"},
        {"&control\n symm = T, qctype = 'gaussian', task = 'freq',\n fxyz = 'mol.gjf', dx = 0.005d0, std_orient = "
         ".false., disp_sign = 1\n/\n",
         "qctype=[gaussian] task=[freq] fxyz=[mol.gjf] dx=0.0050000000000000001 std_orient=F disp_sign=1"},
        {"&control disp_sign=1 symm=F dx=2 /", "symm=F dx=2 disp_sign=1"},
        {"&control disp_sign=1,symm=F,dx=2/", "symm=F dx=2 disp_sign=1"},
        {"&control\ndisp_sign=1\nsymm=F\ndx=2\n/", "symm=F dx=2 disp_sign=1"},
        {"&control dx\n=\n2\n/", "dx=2"},
        {"&control dx ! the step\n = ! in units of the input\n 2 ! no more\n/", "dx=2"},
        {"&control DX=2 Symm=f StD_oRiEnT=F DISP_SIGN=1 FXYZ='A' TASK='B' QCTYPE='C'/",
         "symm=F qctype=[C] task=[B] fxyz=[A] dx=2 std_orient=F disp_sign=1"},
        {"&control dx=1, dx=2/", "dx=2"},
        {"&control fxyz='a' fxyz='b'/", "fxyz=[b]"},
        {"&control fxyz='longer' fxyz=''/", ""},
        {"&control symm=F symm=T std_orient=F/", "std_orient=F"},
        {"&control disp_sign=1 disp_sign=-1/", ""},
    });
}

TEST(read_control, lines_about_the_group) {
    expect_rows({
        {"a title\n\n&control dx=2 /", "dx=2"},
        {"&controls dx=1 /\n&control dx=2 /", "dx=2"},
        {"&contro dx=1 /\n&control dx=2 /", "dx=2"},
        {"&other\n dx=1\n/\n&control dx=2 /", "dx=2"},
        {"control dx=1 /\n&control dx=2 /", "dx=2"},
        {"! &control dx=1 /\n&control dx=2 /", "dx=2"},
        {"see &control dx=1 /\n&control dx=2 /", "dx=2"},
        {"& control dx=1 /\n&control dx=2 /", "dx=2"},
        {"&control=1\n&control dx=2 /", "dx=2"},
        {"'&control dx=1 /'\n&control dx=2 /", "dx=2"},
        {"\n\n\n   \n\t\n&control dx=2 /", "dx=2"},
        {"&control dx=2 /\n&control dx=3 /", "dx=2"},
        {"&control dx=2 / dx=3 bad text ' \n &", "dx=2"},
        {"&control dx=2 //", "dx=2"},
        {"&control dx=2/=", "dx=2"},
        {"&control dx=2 /\nfxyz='", "dx=2"},
    });
}

TEST(read_control, line_ends) {
    expect_rows({
        {"&control\r\n dx=2\r\n symm=F\r\n/\r\n", "symm=F dx=2"},
        {"&control\r\n dx=\r\n 2\r\n/", "dx=2"},
        {"a title\r\n&control dx=2 /\r\n", "dx=2"},
        {"&control fxyz='mol\r\n.gjf'\r\n/", "fxyz=[mol.gjf]"},
        {"&control fxyz='mol.gjf'\r\n/\r", "fxyz=[mol.gjf]"},
        {"&control ! comment\r\ndx=2 ! comment\r\n/", "dx=2"},
    });
}

TEST(read_control, null_values_keep_what_was_there) {
    expect_rows({
        {"&control dx=, symm=F/", "symm=F"},
        {"&control dx=/", ""},
        {"&control dx=2, dx=, symm=F/", "symm=F dx=2"},
        {"&control dx=2 dx=/", "dx=2"},
        {"&control dx=\n , symm=F/", "symm=F"},
        {"&control dx= ! nothing\n /", ""},
        {"&control symm=F symm=, std_orient=F std_orient=, disp_sign=1 disp_sign=,/",
         "symm=F std_orient=F disp_sign=1"},
        {"&control fxyz='a' fxyz=, task='b' task=, qctype='c' qctype=,/", "qctype=[c] task=[b] fxyz=[a]"},
        {"&control ,,dx=2,,,symm=F,,/", "symm=F dx=2"},
    });
}

TEST(read_control, logical_values) {
    for (const std::string word :
         {"T", "t", "TRUE", "true", "True", "tRuE", ".T.", ".t.", ".TRUE.", ".true.", ".True."}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(outcome_of("&control symm=F std_orient=F symm=" + word + " std_orient=" + word + "/"), "");
    }
    for (const std::string word : {"F", "f", "FALSE", "false", "False", "fAlSe", ".F.", ".f.", ".FALSE.", ".false."}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(outcome_of("&control symm=" + word + ",std_orient=" + word + "\n/"), "symm=F std_orient=F");
    }
    for (const std::string word :
         {"1",  "0", "yes", "no", "on", "off", "TT",     "FF",    "tru",   "fals",  "truee",   "falsee", ".T",
          "T.", ".", "..",  "-T", "+T", "1*T", ".t.rue", ".true", "true.", "..t..", "Tuesday", "'T'",    "\"T\""}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(outcome_of("&control\nsymm=" + word + " /"),
                  "control:2: key 'symm': expected a logical value (T, F, .true. or .false.), found '" + word +
                      "'|standard error|2");
        EXPECT_EQ(outcome_of("&control\nstd_orient=" + word + "\n/"),
                  "control:2: key 'std_orient': expected a logical value (T, F, .true. or .false.), found '" + word +
                      "'|standard error|2");
    }
}

TEST(read_control, real_values) {
    expect_rows({
        {"&control dx=0.001/", "dx=0.001"},  // the double that is written, unlike the default
        {"&control dx=1/", "dx=1"},
        {"&control dx=1./", "dx=1"},
        {"&control dx=.5/", "dx=0.5"},
        {"&control dx=+0.5/", "dx=0.5"},
        {"&control dx=-0.5/", "dx=-0.5"},
        {"&control dx=-.5/", "dx=-0.5"},
        {"&control dx=5e-1/", "dx=0.5"},
        {"&control dx=5E-1/", "dx=0.5"},
        {"&control dx=5d-1/", "dx=0.5"},
        {"&control dx=5D-1/", "dx=0.5"},
        {"&control dx=5.d+0/", "dx=5"},
        {"&control dx=0/", "dx=0"},
        {"&control dx=-0.0/", "dx=-0"},
        {"&control dx=1d-400/", "dx=0"},
        {"&control dx=1.7976931348623157d308/", "dx=1.7976931348623157e+308"},
        {"&control dx=00000000000000000000000000000000000000002/", "dx=2"},
    });
    for (const std::string number : {"1d400", "-1e309", "1.7976931348623159e308"}) {
        SCOPED_TRACE(number);
        EXPECT_EQ(outcome_of("&control dx=" + number + "/"),
                  "control:1: key 'dx': expected a real number within the range of double precision, found '" + number +
                      "'|standard error|2");
    }
    for (const std::string word :
         {"abc",  "1.2.3", "1e",       "1d+", "e5",  ".",     "+",     "-",     "--1",  "+-1", "1e5.0",
          "0x10", "inf",   "Infinity", "nan", "NaN", "1_000", "'0.1'", "2*0.1", "0.1;", "1f-3"}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(outcome_of("&control dx=" + word + "/"),
                  "control:1: key 'dx': expected a real number, found '" + word + "'|standard error|2");
    }
}

TEST(read_control, integer_values) {
    expect_rows({
        {"&control disp_sign=1/", "disp_sign=1"},
        {"&control disp_sign=+1/", "disp_sign=1"},
        {"&control disp_sign=0/", "disp_sign=0"},
        {"&control disp_sign=2/", "disp_sign=2"},
        {"&control disp_sign=-0001/", ""},
        {"&control disp_sign=2147483647/", "disp_sign=2147483647"},
        {"&control disp_sign=-2147483648/", "disp_sign=-2147483648"},
    });
    for (const std::string word : {"1.0", "1.", "1e0", "T", "one", "'1'", "2147483648", "-2147483649",
                                   "99999999999999999999", "+", "-", "--1", "2*1", "0x1"}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(outcome_of("&control\n\n disp_sign=" + word + "/"),
                  "control:3: key 'disp_sign': expected an integer from -2147483648 to 2147483647, found '" + word +
                      "'|standard error|2");
    }
}

TEST(read_control, text_values) {
    const std::string longest(200, 'a');
    expect_rows({
        {"&control fxyz='mol.gjf'/", "fxyz=[mol.gjf]"},
        {"&control fxyz=\"mol.gjf\"/", "fxyz=[mol.gjf]"},
        {"&control fxyz=''/", ""},
        {"&control fxyz=\"\"/", ""},
        {"&control fxyz='   '/", ""},
        {"&control fxyz=' a b '/", "fxyz=[ a b]"},
        {"&control fxyz='it''s'/", "fxyz=[it's]"},
        {"&control fxyz='''a'''/", "fxyz=['a']"},
        {"&control fxyz=''''/", "fxyz=[']"},
        {"&control fxyz=''''''/", "fxyz=['']"},
        {"&control fxyz=\"say \"\"a\"\"\"/", "fxyz=[say \"a\"]"},
        {"&control fxyz=\"it's\"/", "fxyz=[it's]"},
        {"&control fxyz='say \"a\"'/", "fxyz=[say \"a\"]"},
        {"&control fxyz='a!b'/", "fxyz=[a!b]"},
        {"&control fxyz='a/b'/", "fxyz=[a/b]"},
        {"&control fxyz='/a/b.gjf' dx=2/", "fxyz=[/a/b.gjf] dx=2"},
        {"&control fxyz='a=b'/", "fxyz=[a=b]"},
        {"&control fxyz='a,b'/", "fxyz=[a,b]"},
        {"&control fxyz='&control'/", "fxyz=[&control]"},
        {"&control fxyz='a\tb'/", "fxyz=[a\tb]"},
        {"&control fxyz='Mixed CASE'/", "fxyz=[Mixed CASE]"},
        {"&control fxyz='\xc3\xa4.gjf'/", "fxyz=[\xc3\xa4.gjf]"},
        {"&control fxyz='mol\n.gjf'/", "fxyz=[mol.gjf]"},
        {"&control fxyz='m\no\nl.gjf\n'/", "fxyz=[mol.gjf]"},
        {"&control fxyz='a''\n'' ! b'/", "fxyz=[a'' ! b]"},
        {"&control fxyz='a',task='b'!comment\n/", "task=[b] fxyz=[a]"},
        {"&control fxyz='" + longest + "'/", "fxyz=[" + longest + "]"},
        {"&control fxyz='" + longest + "b'/", "fxyz=[" + longest + "]"},
        {"&control task='any text at all' qctype=\"and more\"/", "qctype=[and more] task=[any text at all]"},
    });
}

TEST(read_control, a_text_value_must_stand_between_marks) {
    expect_errors({
        {"&control\nfxyz=mol.gjf\n/",
         "2: key 'fxyz': expected a text between apostrophes or quotation marks, found 'mol.gjf'"},
        {"&control\nfxyz=`mol.gjf'\n/",
         "2: key 'fxyz': expected a text between apostrophes or quotation marks, found '`mol.gjf''"},
        {"&control task=T/", "1: key 'task': expected a text between apostrophes or quotation marks, found 'T'"},
        {"&control qctype=1/", "1: key 'qctype': expected a text between apostrophes or quotation marks, found '1'"},
        {"&control fxyz='a'b/",
         "1: key 'fxyz': expected a blank, a comma or the end of the line after the text, found 'b'"},
        {"&control fxyz='a'\"b\"/",
         "1: key 'fxyz': expected a blank, a comma or the end of the line after the text, found '\"b\"'"},
        {"&control\n\n fxyz='a\n/\n", "3: key 'fxyz': the text that begins on line 3, column 7 has no end"},
        {"&control\ntask='a\n' fxyz='b\n/\n", "3: key 'fxyz': the text that begins on line 3, column 8 has no end"},
        {"&control fxyz='", "1: key 'fxyz': the text that begins on line 1, column 15 has no end"},
        {"&control fxyz='a\"/", "1: key 'fxyz': the text that begins on line 1, column 15 has no end"},
        {"&control fxyz='a''/", "1: key 'fxyz': the text that begins on line 1, column 15 has no end"},
        {"&control\n fxyz='a\n task='b'\n/",
         "3: key 'fxyz': expected a blank, a comma or the end of the line after the text, found 'b''; the text that "
         "begins on line 2, column 7 runs over several lines, is its end missing?"},
    });
}

TEST(read_control, mistakes_in_the_group) {
    const std::string seven = "expected one of symm, qctype, task, fxyz, dx, std_orient, disp_sign";
    expect_errors({
        {"", "1: expected a line whose first word is '&control', found the end of the file"},
        {"\n", "2: expected a line whose first word is '&control', found the end of the file"},
        {"&controls /\n", "2: expected a line whose first word is '&control', found the end of the file"},
        {"a\r\nb\r\n\r\nc", "4: expected a line whose first word is '&control', found the end of the file"},
        {"$control /", "1: expected a line whose first word is '&control', found the end of the file"},
        {"&control", "1: the group that begins on line 1, column 1 has no '/' at its end"},
        {"a\n  &control\n dx=2\n", "2: the group that begins on line 2, column 3 has no '/' at its end"},
        {"&control dx=", "1: the group that begins on line 1, column 1 has no '/' at its end"},
        {"&control dx=2 !/", "1: the group that begins on line 1, column 1 has no '/' at its end"},
        {"&control fxyz='a\nb'",
         "1: the group that begins on line 1, column 1 has no '/' at its end; the text that "
         "begins on line 1, column 15 runs over several lines, is its end missing?"},
        {"&control\n steps=2\n/", "2: unknown key 'steps', " + seven},
        {"&control Fxzy='a'/", "1: unknown key 'Fxzy', " + seven},
        {"&control dx(1)=2/", "1: unknown key 'dx(1)', " + seven},
        {"&control symm =F, symmetry=F/", "1: unknown key 'symmetry', " + seven},
        {"&control\n\n=2/", "3: expected 'key = value' or the '/' that ends the group, found '='"},
        {"&control\n dx\n/", "2: expected 'key = value' or the '/' that ends the group, found 'dx'"},
        {"&control\n dx 2\n/", "2: expected 'key = value' or the '/' that ends the group, found 'dx'"},
        {"&control dx=0,5/",
         "1: expected 'key = value' or the '/' that ends the group, found '5'; a real number has "
         "a decimal point, not a comma"},
        {"&control dx=1 5/", "1: expected 'key = value' or the '/' that ends the group, found '5'"},
        {"&control dx=1, 5/", "1: expected 'key = value' or the '/' that ends the group, found '5'"},
        {"&control dx=1,5e-3/",
         "1: expected 'key = value' or the '/' that ends the group, found '5e-3'; a real number "
         "has a decimal point, not a comma"},
        {"&control dx=1,symm/", "1: expected 'key = value' or the '/' that ends the group, found 'symm'"},
        {"&control disp_sign=1,5/", "1: expected 'key = value' or the '/' that ends the group, found '5'"},
        {"&control\n dx=2 3\n/", "2: expected 'key = value' or the '/' that ends the group, found '3'"},
        {"&control dx:2/", "1: expected 'key = value' or the '/' that ends the group, found 'dx:2'"},
        {"&control dx=2 &end", "1: expected 'key = value' or the '/' that ends the group, found '&end'"},
        {"&control dx=2\n$end\n", "2: expected 'key = value' or the '/' that ends the group, found '$end'"},
        {"&control 'dx'=2/", "1: unknown key ''dx'', " + seven},
        {"&control dx==1/", "1: key 'dx': expected a real number, found '='"},
        {"&control symm==F/", "1: key 'symm': expected a logical value (T, F, .true. or .false.), found '='"},
        {"&control disp_sign ==1/",
         "1: key 'disp_sign': expected an integer from -2147483648 to 2147483647, found '='"},
        {"&control fxyz=='a'/", "1: key 'fxyz': expected a text between apostrophes or quotation marks, found '='"},
        {"&control dx=symm=F/", "1: key 'dx': expected a real number, found 'symm'"},
        {"&control dx=\nsymm=F/", "2: key 'dx': expected a real number, found 'symm'"},
        {"&control dx\x01=2/", "1: unknown key 'dx\\x01', " + seven},
        {"&control " + std::string(100, 'k') + "=2/",
         "1: unknown key '" + std::string(60, 'k') + "... (40 more characters)', " + seven},
    });
}

/// A message names the line of what is wrong: of a value, where the value stands, not where its key does.
TEST(read_control, mistakes_in_assignments_over_several_lines) {
    const std::string seven = "expected one of symm, qctype, task, fxyz, dx, std_orient, disp_sign";
    const std::string logical = ": expected a logical value (T, F, .true. or .false.), found ";
    const std::string integer = "': expected an integer from -2147483648 to 2147483647, found ";
    const std::string marks = ": expected a text between apostrophes or quotation marks, found ";
    const std::string behind = ": expected a blank, a comma or the end of the line after the text, found ";
    expect_errors({
        {"&control\nsymm\n=\nyes\n/", "4: key 'symm'" + logical + "'yes'"},
        {"&control\r\nsymm\r\n=\r\nyes\r\n/", "4: key 'symm'" + logical + "'yes'"},
        {"&control\nstd_orient\n\n=\n\n1\n/", "6: key 'std_orient'" + logical + "'1'"},
        {"&control\ndx ! the step\n! or so\n= ! is\n! not\nsmall\n/",
         "6: key 'dx': expected a real number, found 'small'"},
        {"&control\ndx\n=\n1d400\n/",
         "4: key 'dx': expected a real number within the range of double precision, found '1d400'"},
        {"&control\ndisp_sign\n=\n1.5\n/", "4: key 'disp_sign" + integer + "'1.5'"},
        {"&control\ndisp_sign\n=\n2147483648\n/", "4: key 'disp_sign" + integer + "'2147483648'"},
        {"&control\nfxyz\n=\nmol.gjf\n/", "4: key 'fxyz'" + marks + "'mol.gjf'"},
        {"&control\ntask\n=\n=\n/", "4: key 'task'" + marks + "'='"},
        {"&control\nqctype\n=\n'a'b\n/", "4: key 'qctype'" + behind + "'b'"},
        {"&control\nfxyz\n=\n  'a\n/\n", "4: key 'fxyz': the text that begins on line 4, column 3 has no end"},
        {"&control\nfxyz\n=\n'a\nb'c\n/",
         "5: key 'fxyz'" + behind +
             "'c'; the text that begins on line 4, column 1 runs over several lines, is its end missing?"},
        {"&control\nfxyz\n=\n'a\nb'\nsymm\n=\nyes\n/",
         "8: key 'symm'" + logical +
             "'yes'; the text that begins on line 4, column 1 runs over several lines, is its end missing?"},
        {"&control\nsteps\n=\n2\n/", "2: unknown key 'steps', " + seven},
        {"&control\n\nsteps\n\n=\n'a'\n/", "3: unknown key 'steps', " + seven},
        {"&control\ndx\n2\n/", "2: expected 'key = value' or the '/' that ends the group, found 'dx'"},
        {"&control\ndx\n\n/", "2: expected 'key = value' or the '/' that ends the group, found 'dx'"},
        {"&control\ndx\n=\n2\n3\n/", "5: expected 'key = value' or the '/' that ends the group, found '3'"},
        {"&control\n,\n=\n2\n/", "3: expected 'key = value' or the '/' that ends the group, found '='"},
        {"&control\ndx\n=\n", "1: the group that begins on line 1, column 1 has no '/' at its end"},
        {"\n &control\ndx\n=\n2\n", "2: the group that begins on line 2, column 2 has no '/' at its end"},
    });
}

TEST(read_control, files_that_give_no_settings) {
    const support::scratch_folder scratch;
    std::filesystem::create_directory("folder");
    support::write_file("file", "");
    struct path_row {
        std::string path;
        std::string expected;
    };
    const std::string usage = "; usage: displacement_generator CONTROL (version 1.0.0)";
    const std::string none = "expected a control file, found none" + usage;
    const std::vector<path_row> rows = {
        {"", none},
        {"    ", none},
        {std::string(200, ' ') + "control", none},  // only 200 characters count
        {"missing", "missing: cannot open the control file: No such file or directory"},
        {"missing   ", "missing: cannot open the control file: No such file or directory"},
        {"--help", "--help: cannot open the control file: No such file or directory" + usage},
        {"-h", "-h: cannot open the control file: No such file or directory" + usage},
        {"-", "-: cannot open the control file: No such file or directory" + usage},
        {"a-b", "a-b: cannot open the control file: No such file or directory"},
        {"  missing", "  missing: cannot open the control file: No such file or directory"},  // blanks are part of it
        {"  -h", "  -h: cannot open the control file: No such file or directory"},
        {"file/control", "file/control: cannot open the control file: Not a directory"},
        {"folder", "folder: cannot read the control file: Is a directory"},
        {"mis\nsing", "mis\\nsing: cannot open the control file: No such file or directory"},
    };
    for (const path_row& tested : rows) {
        SCOPED_TRACE(tested.path);
        EXPECT_EQ(support::stopped_with([&] { generator::read_control(tested.path); }),
                  tested.expected + "|standard error|2");
    }
}

TEST(read_control, of_a_path_200_characters_count) {
    const support::scratch_folder scratch;
    const std::string path(200, 'p');
    support::write_file(path, "&control dx=2 /");
    EXPECT_EQ(shown(generator::read_control(path)), "dx=2");
    EXPECT_EQ(shown(generator::read_control(path + "qrs")), "dx=2");
    EXPECT_EQ(support::stopped_with([&] { generator::read_control(path.substr(1)); }),
              path.substr(1) + ": cannot open the control file: No such file or directory|standard error|2");
}

TEST(read_control, of_a_path_leading_blanks_count) {
    const support::scratch_folder scratch;
    support::write_file("control", "&control dx=1 /");
    support::write_file("  control", "&control dx=2 /");
    support::write_file("-", "&control dx=3 /");  // not the standard input
    EXPECT_EQ(shown(generator::read_control("  control")), "dx=2");
    EXPECT_EQ(shown(generator::read_control("-")), "dx=3");
    EXPECT_EQ(support::stopped_with([] { generator::read_control(" control"); }),
              " control: cannot open the control file: No such file or directory|standard error|2");
}

/// Every message shows the path of the control file whole.
TEST(read_control, a_long_path_is_shown_as_it_is) {
    for (const std::size_t size : {std::size_t{61}, std::size_t{120}, std::size_t{200}}) {
        SCOPED_TRACE(size);
        const support::scratch_folder scratch;
        const std::string path(size, 'p');
        const auto message = [&] { return support::stopped_with([&] { generator::read_control(path); }); };
        EXPECT_EQ(message(), path + ": cannot open the control file: No such file or directory|standard error|2");
        std::filesystem::create_directory(path);
        EXPECT_EQ(message(), path + ": cannot read the control file: Is a directory|standard error|2");
        std::filesystem::remove(path);
        support::write_file(path, "&control\n dx=2 3 /\n");
        EXPECT_EQ(message(), path +
                                 ":2: expected 'key = value' or the '/' that ends the group, found '3'|standard "
                                 "error|2");
        support::write_file(path, std::string(1 << 20, '-'));
        EXPECT_EQ(message(), path +
                                 ":1: found 1048576 bytes without the end of a '&control' group, expected it before "
                                 "that|standard error|2");
    }
}

TEST(read_control, of_a_long_file_the_first_part_is_read) {
    const std::string line = std::string(1023, '-') + '\n';
    std::string bytes;
    for (int i = 0; i < 1023; ++i) {
        bytes += line;
    }
    EXPECT_EQ(outcome_of(bytes + "&control dx=2 /\n" + bytes), "dx=2");
    EXPECT_EQ(outcome_of(bytes + line + "&control dx=2 /\n"),
              "control:1025: found 1048576 bytes without the end of a '&control' group, expected it before "
              "that|standard error|2");
    EXPECT_EQ(outcome_of("&control " + bytes + line),
              "control:1: expected 'key = value' or the '/' that ends the group, found '" + std::string(60, '-') +
                  "... (963 more characters)'|standard error|2");
    EXPECT_EQ(outcome_of("&control fxyz='" + bytes + line),
              "control:1024: found 1048576 bytes without the end of a '&control' group, expected it before "
              "that|standard error|2");
}

}  // namespace
