#include "displacement_generator/control_source.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "displacement_generator/control.hpp"
#include "file_test.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

using generator::control_source;

/// Every character that is taken, each line feed as "\n" with the place behind it: "a(1,2)" and so on would be long.
struct taken {
    std::string characters;
    int line;
    int column;
};

taken all_of(std::string_view bytes) {
    const support::scratch_folder scratch;
    support::write_file("control", bytes);
    control_source source("control");
    taken result{};
    for (;;) {
        const int ahead = source.peek();
        EXPECT_EQ(source.peek(), ahead);
        EXPECT_EQ(source.take(), ahead);
        if (ahead == control_source::end_of_file) {
            break;
        }
        result.characters += static_cast<char>(ahead);
    }
    EXPECT_EQ(source.take(), control_source::end_of_file);
    EXPECT_EQ(source.peek(), control_source::end_of_file);
    result.line = source.line();
    result.column = source.column();
    return result;
}

TEST(control_source, characters_and_places) {
    struct row {
        std::string bytes;
        std::string characters;
        int line;
        int column;
    };
    const std::vector<row> rows = {
        {"", "", 1, 1},
        {"a", "a", 1, 2},
        {"ab\n", "ab\n", 2, 1},
        {"ab\ncd", "ab\ncd", 2, 3},
        {"ab\r\ncd", "ab\ncd", 2, 3},
        {"\r\n\r\n", "\n\n", 3, 1},
        {"\n\r\n\n", "\n\n\n", 4, 1},
        {"a\rb", "a\rb", 1, 4},  // a carriage return ends a line only with a line feed behind it
        {"a\r\r\nb", "a\r\nb", 2, 2},
        {"a\r", "a\n", 2, 1},  // or at the end of the file
        {"\r", "\n", 2, 1},
        {"\r\r", "\r\n", 2, 1},
        {"\xff\xfe", "\xff\xfe", 1, 3},  // bytes above 127 are characters, none is the end
        {std::string("a\0b", 3), std::string("a\0b", 3), 1, 4},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.bytes);
        const taken found = all_of(tested.bytes);
        EXPECT_EQ(found.characters, tested.characters);
        EXPECT_EQ(found.line, tested.line);
        EXPECT_EQ(found.column, tested.column);
    }
}

// The file is read in blocks: a CR LF may lie across two of them.
TEST(control_source, line_ends_at_every_place_of_a_block) {
    for (int before = 4090; before <= 4100; ++before) {
        SCOPED_TRACE(before);
        const std::string line(static_cast<std::size_t>(before), 'x');
        const taken found = all_of(line + "\r\n" + line + "\r\n");
        EXPECT_EQ(found.characters, line + '\n' + line + '\n');
        EXPECT_EQ(found.line, 3);
        EXPECT_EQ(found.column, 1);
        const taken open_end = all_of(line + "\r");
        EXPECT_EQ(open_end.characters, line + '\n');
        const taken lone = all_of(line + "\rx");
        EXPECT_EQ(lone.characters, line + "\rx");
    }
}

TEST(control_source, of_many_blocks_none_is_lost) {
    std::string bytes;
    for (int i = 0; bytes.size() < 100000; ++i) {
        bytes += std::to_string(i) + (i % 7 == 0 ? "\n" : " ");
    }
    const taken found = all_of(bytes);
    EXPECT_EQ(found.characters, bytes);
}

TEST(control_source, the_first_mebibyte_is_read) {
    const std::string most(1 << 20, 'x');
    const support::scratch_folder scratch;
    support::write_file("control", most + "y");
    control_source source("control");
    for (std::size_t i = 0; i < most.size(); ++i) {
        ASSERT_EQ(source.take(), 'x');
    }
    EXPECT_EQ(support::stopped_with([&] { source.take(); }),
              "control:1: found 1048576 bytes without the end of a '&control' group, expected it before that|standard "
              "error|2");
}

TEST(control_source, files_that_do_not_open) {
    const support::scratch_folder scratch;
    std::filesystem::create_directory("folder");
    EXPECT_EQ(support::stopped_with([] { const control_source source("missing"); }),
              "missing: cannot open the control file: No such file or directory|standard error|2");
    control_source folder("folder");
    EXPECT_EQ(support::stopped_with([&] { folder.peek(); }),
              "folder: cannot read the control file: Is a directory|standard error|2");
}

TEST(control_source, gives_its_descriptor_back) {
    const support::scratch_folder scratch;
    support::write_file("control", "&control dx=/");
    support::write_file("mistaken", "&control dx=a/");
    const auto expect_as_before = [] {
        const std::ptrdiff_t before = support::open_descriptors();
        for (int i = 0; i < 3; ++i) {
            generator::read_control("control");
            support::stopped_with([] { generator::read_control("mistaken"); });
            support::stopped_with([] { generator::read_control("missing"); });
        }
        EXPECT_EQ(support::open_descriptors(), before);
    };
    expect_as_before();
    const support::no_standard_input closed;
    expect_as_before();
}

// Whoever writes the control file into a pipe may keep it open: behind the group nothing is waited for. Were it not so,
// this would never end.
TEST(control_source, a_pipe_that_stays_open) {
    struct row {
        std::string_view bytes;
        double dx;
    };
    for (const row& tested : {row{"&control dx=2/", 2.0}, row{"title\n&control\r\ndx=3\r\n/", 3.0}}) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        ASSERT_EQ(::write(ends[1], tested.bytes.data(), tested.bytes.size()),
                  static_cast<ssize_t>(tested.bytes.size()));
        EXPECT_EQ(generator::read_control("/proc/self/fd/" + std::to_string(ends[0])).dx, tested.dx);
        ::close(ends[0]);
        ::close(ends[1]);
    }
}

TEST(control_source, a_pipe_that_brings_little_at_a_time) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const std::string path = "/proc/self/fd/" + std::to_string(ends[0]);
    control_source source(path);
    std::string found;
    for (const char c : std::string_view("ab\nc")) {  // a CR would wait for what follows it
        ASSERT_EQ(::write(ends[1], &c, 1), 1);
        found += static_cast<char>(source.take());
    }
    EXPECT_EQ(found, "ab\nc");
    EXPECT_EQ(source.line(), 2);
    EXPECT_EQ(source.name(), path);
    ::close(ends[1]);
    EXPECT_EQ(source.take(), control_source::end_of_file);
    ::close(ends[0]);
}

}  // namespace
