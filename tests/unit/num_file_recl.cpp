#include "file_test.hpp"

using namespace displacement_generator;

namespace {

using num_file_recl = support::file_test;

TEST_F(num_file_recl, is_the_longest_record_of_a_file_that_opens) {
    for (const char* text : {"", "a\n"}) {
        support::write_file("text", text);
        int length = 0;
        EXPECT_EQ(support::standard_output_of([&] { length = file::num_file_recl("text  "); }), "");
        EXPECT_EQ(length, 2147483647);
    }
}

TEST_F(num_file_recl, is_132_with_two_lines_that_say_so_otherwise) {
    std::filesystem::create_directory("folder");
    for (const char* fname : {"missing", "folder", "/dev/null"}) {
        SCOPED_TRACE(fname);
        int length = 0;
        EXPECT_EQ(support::standard_output_of([&] { length = file::num_file_recl(fname); }),
                  "num_file_recl returns wrong number :  -1\nForce to set num_file_recl = 132\n");
        EXPECT_EQ(length, 132);
    }
}

}  // namespace
