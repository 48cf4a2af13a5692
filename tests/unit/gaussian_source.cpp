#include "gaussian/source.hpp"

#include <gtest/gtest.h>

#include <string>

#include "gaussian_twin.hpp"
#include "support.hpp"

using namespace displacement_generator;
using gaussian::source_kind;

namespace {

source_kind kind(const std::string& text) {
    gaussian::source from("source", text);
    return gaussian::kind_of(from);
}

support::twin_job hydrogen() {
    return support::one_point({1, 1}, Eigen::Matrix3Xd::Identity(3, 2), Eigen::Matrix3Xd::Zero(3, 2));
}

TEST(gaussian_source, kinds) {
    const std::string log = support::log_text({.jobs = {hydrogen()}});
    support::twin_checkpoint checkpoint;
    checkpoint.numbers = {1};
    checkpoint.point.positions = Eigen::Matrix3Xd::Zero(3, 1);
    const std::string xyz = "2\ncomment\nH 0 0 0\nH 0 0 0.74\n";
    const std::string input = "%chk=a.chk\n#p hf/3-21g\n\nt\n\n0 1\nH 0 0 0\n\n";
    EXPECT_EQ(kind(log), source_kind::log);
    EXPECT_EQ(kind("# prolog of a batch system\nslurm 1 2 3\n" + log), source_kind::log);
    EXPECT_EQ(kind(log.substr(log.find("                         Input"))), source_kind::log);
    EXPECT_EQ(kind(input), source_kind::input);
    EXPECT_EQ(kind("\n  \n" + input), source_kind::input);
    EXPECT_EQ(kind("\xef\xbb\xbf\r\n#p hf/3-21g\r\n"), source_kind::input);
    EXPECT_EQ(kind("! a comment\n" + input), source_kind::input);
    EXPECT_EQ(kind("$RunGauss\n" + input), source_kind::input);
    EXPECT_EQ(kind(" --LINK1--\n" + input), source_kind::input);
    EXPECT_EQ(kind(log.substr(log.find(" -----"))), source_kind::log);
    EXPECT_EQ(kind(" ----\n Cite this work as:\n Gaussian 16\n"), source_kind::log);
    EXPECT_EQ(kind(input + " SCF Done: as a title\n"), source_kind::input);
    for (const char* title : {"twin", "# a title", "%", "12"}) {
        checkpoint.title = title;
        EXPECT_EQ(kind(support::checkpoint_text(checkpoint)), source_kind::checkpoint) << title;
    }
    // A checkpoint says it at its top; further down it is text of something else.
    const std::string atoms = "Number of atoms                            I                3\n";
    EXPECT_EQ(kind(input + std::string(10 - 8, '\n') + atoms), source_kind::input);
    EXPECT_EQ(kind(input + std::string(9 - 8, '\n') + atoms), source_kind::checkpoint);
    EXPECT_EQ(kind(xyz), source_kind::xyz);
    EXPECT_EQ(kind("\n  2 \n\n1 0.0 0.0 0.0 0.5\n"), source_kind::xyz);
    EXPECT_EQ(kind("2\ncomment\nH 0 0 0,74\n"), source_kind::xyz);
    EXPECT_EQ(kind("2\ncomment\nH 0 0\n"), source_kind::unknown);
    EXPECT_EQ(kind("2 3\ncomment\nH 0 0 0\n"), source_kind::unknown);
    EXPECT_EQ(kind("2\ncomment\n"), source_kind::unknown);
    EXPECT_EQ(kind("2\n"), source_kind::unknown);
    EXPECT_EQ(kind("# no input\n Entering Link 1 = /opt/l1.exe\n"), source_kind::log);
    for (const char* line :
         {" SCF Done:  E(RHF) = -1.0", " Normal termination of Gaussian 16", " Error termination via Lnk1e",
          " Cite this work as:", " 1\\1\\GINC-X", " 1|1|UNPC-X", "      Standard orientation:"}) {
        EXPECT_EQ(kind(std::string("text\n").append(line)), source_kind::log) << line;
    }
    EXPECT_EQ(kind("     of no orientation\n"), source_kind::unknown);
    EXPECT_EQ(kind("The orientation: upright\n"), source_kind::unknown);
    EXPECT_EQ(kind("Number of atoms  3\n"), source_kind::unknown);
    EXPECT_EQ(kind("Number of atoms                            I\n"), source_kind::checkpoint);
    EXPECT_EQ(kind("Number of atoms                            R                3\n"), source_kind::unknown);
    EXPECT_EQ(kind(""), source_kind::unknown);
    EXPECT_EQ(kind("any text\n"), source_kind::unknown);
    EXPECT_EQ(kind(std::string(100000, '\0')), source_kind::unknown);
}

TEST(gaussian_source, telling_the_kind_takes_nothing) {
    const support::scratch_folder folder;
    std::string text;
    for (int i = 1; i <= 20000; ++i) {
        text += "line " + std::to_string(i) + "\r\n";
    }
    support::write_file("text", text);
    gaussian::source from("text", gaussian::opening::regular_only);
    EXPECT_EQ(gaussian::kind_of(from), source_kind::unknown);
    std::string_view line;
    for (int i = 1; i <= 20000; ++i) {
        ASSERT_TRUE(from.next_line(line));
        ASSERT_EQ(line, "line " + std::to_string(i));
        ASSERT_EQ(from.line_number(), i);
    }
    EXPECT_FALSE(from.next_line(line));
    gaussian::source again("text");
    gaussian::kind_of(again);
    EXPECT_EQ(again.rest(text.size()), text);
}

TEST(gaussian_source, a_byte_order_mark_is_no_text) {
    gaussian::source from("source", "\xef\xbb\xbfone\n\xef\xbb\xbftwo\n");
    std::string_view line;
    ASSERT_TRUE(from.next_line(line));
    EXPECT_EQ(line, "one");
    ASSERT_TRUE(from.next_line(line));
    EXPECT_EQ(line, "\xef\xbb\xbftwo");
}

TEST(gaussian_source, what_cannot_be_read) {
    const support::scratch_folder folder;
    EXPECT_EQ(support::stopped_with([] { gaussian::source from("missing.log"); }),
              "missing.log: cannot open: No such file or directory|standard error|2");
    EXPECT_EQ(support::stopped_with([] { gaussian::source from("/dev/null", gaussian::opening::regular_only); }),
              "/dev/null: cannot open: Not a regular file|standard error|2");
    EXPECT_EQ(support::stopped_with([] {
                  gaussian::source from(".");
                  gaussian::kind_of(from);
              }),
              ".: cannot read: Is a directory|standard error|2");
    EXPECT_EQ(support::stopped_with([] { gaussian::source("text", "12345").rest(4); }),
              "text: expected at most 4 bytes, found more|standard error|2");
}

}  // namespace
