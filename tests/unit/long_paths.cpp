#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "file/file.hpp"
#include "file/output_file.hpp"
#include "file_test.hpp"
#include "gjf/gjf.hpp"

using namespace displacement_generator;

// A path is what the user has to find again: every message shows up to 200 characters of it, as many as the driver
// takes.

namespace {

namespace fs = std::filesystem;

constexpr int unit = 100;

/// A matrix of one element, for a file that does not hold it.
void read_matrix(int nb) {
    double element = 0.0;
    file::read_block_data(unit, 1, base::view2<double>("a", &element, 1, 1), nb);
}

struct opened {
    opened(const std::string& path, file::action what) { EXPECT_EQ(file::open_unit(unit, path, what), ""); }
    ~opened() {
        if (file::is_connected(unit)) {
            file::close_unit(unit);
        }
    }
    opened(const opened&) = delete;
    opened& operator=(const opened&) = delete;
};

struct row {
    std::string expected;  ///< behind the path
    std::function<void(const std::string& path)> work;
};

/// What goes wrong with a file that does not exist.
std::vector<row> without_file() {
    return {
        {": cannot open: No such file or directory",
         [](const std::string& path) {
             base::text<8> line;
             file::read_lines(path, 1, base::view1<base::text<8>>("lines", &line, 1, 1));
         }},
        {": cannot open: No such file or directory", [](const std::string& path) { file::delete_(path); }},
        {": cannot remove: No such file or directory",
         [](const std::string& path) {
             const opened input(path, file::action::write);
             fs::remove(path);
             file::close_unit(unit, file::disposition::remove);
         }},
    };
}

/// What goes wrong with a file of one line.
std::vector<row> with_file() {
    return {
        {": found 1 lines, expected 2",
         [](const std::string& path) {
             base::text<8> lines[2];
             file::read_lines(path, 2, base::view1<base::text<8>>("lines", lines, 1, 2));
         }},
        {": not connected for writing",
         [](const std::string& path) {
             const opened input(path, file::action::read);
             file::write_record(unit, "line");
         }},
        {": found 0 columns a block, expected at least 1",
         [](const std::string& path) {
             const opened input(path, file::action::read);
             read_matrix(0);
         }},
        {":2: the file ends before this line, expected row 1 of columns 1 to 1",
         [](const std::string& path) {
             const opened input(path, file::action::read);
             read_matrix(1);
         }},
        {": source and destination are the same file", [](const std::string& path) { file::copy_old(path, path); }},
        {":1: expected a route line, that is one that begins with '#', found none up to the end of the file (line 1)",
         [](const std::string& path) {
             int line = 0;
             gjf::get_gjf_route_linenumber(path, line);
         }},
        {"/new: cannot open for writing: Not a directory",
         [](const std::string& path) { const file::output_file output(path + "/new"); }},
    };
}

/// What goes wrong with something that can be opened and no more.
std::vector<row> with_device(const std::string& device) {
    if (device == "/dev/full") {
        return {
            {": cannot write: No space left on device",
             [](const std::string& path) { file::output_file(path).write("x"); }},
            {": cannot write: No space left on device",
             [](const std::string& path) {
                 const opened output(path, file::action::write);
                 file::write_record(unit, "line");
             }},
        };
    }
    return {
        {": cannot read: Input/output error",
         [](const std::string& path) { static_cast<void>(file::num_file_lines(path)); }},
        {": cannot read: Input/output error",
         [](const std::string& path) {
             base::text<8> line;
             file::read_lines(path, 1, base::view1<base::text<8>>("lines", &line, 1, 1));
         }},
        {":1: Input/output error before this line, expected the heading of columns 1 to 1",
         [](const std::string& path) {
             const opened input(path, file::action::read);
             read_matrix(1);
         }},
    };
}

class long_paths : public support::file_test, public testing::WithParamInterface<std::size_t> {
  protected:
    void expect(const std::vector<row>& rows) const {
        for (const row& tested : rows) {
            SCOPED_TRACE(tested.expected);
            // What follows the path in the expected text may be part of a longer one.
            std::string whole = path + tested.expected.substr(0, tested.expected.find(':'));
            if (whole.size() > 200) {
                whole = whole.substr(0, 200) + "... (" + std::to_string(whole.size() - 200) + " more characters)";
            }
            EXPECT_EQ(support::stopped_with([&] { tested.work(path); }),
                      whole + tested.expected.substr(tested.expected.find(':')) + "|standard error|2");
        }
    }

    const std::string path = std::string(GetParam(), 'p');
};

TEST_P(long_paths, are_shown_where_there_is_no_file) { expect(without_file()); }

TEST_P(long_paths, are_shown_where_the_file_is_not_what_it_should_be) {
    support::write_file(path, "line\n");
    expect(with_file());
    EXPECT_EQ(support::read_file(path), "line\n");
}

TEST_P(long_paths, are_shown_where_the_device_fails) {
    for (const std::string device : {"/dev/full", "/proc/self/mem"}) {  // of which the first page is nowhere
        fs::create_symlink(device, path);
        expect(with_device(device));
        fs::remove(path);
    }
}

TEST_P(long_paths, are_shown_where_a_unit_is_taken) {
    support::write_file(path, "line\n");
    const opened input(path, file::action::read);
    const std::string shown = GetParam() > 200 ? path.substr(0, 200) + "... (1 more characters)" : path;
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(file::open_unit(unit, "other", file::action::read)); }),
              "unit 100: already connected to " + shown + "|standard error|2");
}

/// The one message on standard output shows the name whole.
TEST_P(long_paths, are_shown_where_the_input_does_not_open) {
    EXPECT_EQ(support::stopped_with([&] { static_cast<void>(file::num_file_lines(path)); }),
              " Error in opening file '" + path + "' in function num_file_lines, stop!|standard output|1");
}

TEST_P(long_paths, are_shown_in_an_atom_line) {
    support::write_file(path, "#\n\ntitle\n\n0 1\nO 0.0\n\n");
    double xyz[3] = {};
    base::text<2> symbol;
    const std::string shown = GetParam() > 200 ? path.substr(0, 200) + "... (1 more characters)" : path;
    EXPECT_EQ(
        support::stopped_with([&] {
            gjf::get_gjf_coord(path, 1, base::view2<double>("xyz", xyz, 3, 1),
                               base::view1<base::text<2>>("symbol", &symbol, 1, 1));
        }),
        shown + ":6: expected three numbers after the symbol 'O', found 1 and then no more fields|standard error|2");
}

// A path of exactly as many bytes as the system takes, and one more.

using longest_path = support::file_test;

std::string path_of_length(std::size_t length) { return "." + std::string(length - 2, '/') + "p"; }

TEST_F(longest_path, is_opened_by_every_routine) {
    const std::string path = path_of_length(PATH_MAX - 1);
    {
        file::output_file output(path);
        output.close("line\n");
    }
    EXPECT_EQ(support::read_file("p"), "line\n");
    EXPECT_EQ(file::num_file_lines(path), 1);
    EXPECT_EQ(file::num_file_lines_word(path, "line"), 1);
    base::text<8> line;
    file::read_lines(path, 1, base::view1<base::text<8>>("lines", &line, 1, 1));
    EXPECT_EQ(line, "line");
    file::copy(path, "copied");
    EXPECT_EQ(support::read_file("copied"), "line\n");
    file::delete_(path);
    file::copy("copied", path);
    EXPECT_EQ(support::read_file("p"), "line\n");
    file::copy_old("copied", path);
    EXPECT_EQ(support::read_file("p"), "line" + std::string(496, ' ') + "\n");
    file::copy(path, path);  // is one file
    EXPECT_EQ(support::read_file("p"), "line" + std::string(496, ' ') + "\n");
    EXPECT_EQ(
        support::stopped_with([&] { file::copy_old(path, path); }),
        path.substr(0, 200) + "... (3895 more characters): source and destination are the same file|standard error|2");
}

TEST_F(longest_path, with_one_byte_more_is_too_long) {
    support::write_file("p", "line\n");
    for (const std::size_t length : {std::size_t{PATH_MAX}, std::size_t{PATH_MAX + 1}}) {
        SCOPED_TRACE(length);
        const std::string path = path_of_length(length);
        const std::string shown = path.substr(0, 200) + "... (" + std::to_string(length - 200) + " more characters)";
        const std::string not_opened = shown + ": cannot open: File name too long|standard error|2";
        EXPECT_EQ(support::stopped_with([&] { const file::output_file output(path); }),
                  shown + ": cannot open for writing: File name too long|standard error|2");
        EXPECT_EQ(support::stopped_with([&] {
                      base::text<8> line;
                      file::read_lines(path, 1, base::view1<base::text<8>>("lines", &line, 1, 1));
                  }),
                  not_opened);
        EXPECT_EQ(support::stopped_with([&] { file::delete_(path); }), not_opened);
        EXPECT_EQ(support::stopped_with([&] { file::copy_old("p", path); }), not_opened);
        EXPECT_EQ(support::stopped_with([&] { static_cast<void>(file::num_file_lines(path)); }),
                  " Error in opening file '" + path + "' in function num_file_lines, stop!|standard output|1");
        EXPECT_EQ(file::open_unit(unit, path, file::action::read), "File name too long");
        EXPECT_EQ(file::open_unit(unit, path, file::action::write), "File name too long");
        file::copy(path, "copied");  // tells nothing, and empties what it copies to, as from a file that is missing
        EXPECT_EQ(support::read_tree("."), (support::tree{{"p", "line\n"}, {"copied", ""}}));
        file::copy("p", path);
        EXPECT_EQ(support::read_file("p"), "line\n");
    }
}

INSTANTIATE_TEST_SUITE_P(file, long_paths, testing::Values(61U, 120U, 200U, 201U));

}  // namespace
