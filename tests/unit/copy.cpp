#include <sys/stat.h>

#include <string>
#include <thread>

#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

/// The routine has two names.
class copy : public support::file_test {
  protected:
    using routine = void (*)(std::string_view src, std::string_view dst);
    static constexpr routine both[] = {file::copy, file::cp};

    copy() = default;

    static std::string bytes(std::size_t size) {
        std::string result(size, '\0');
        unsigned state = 1;
        for (char& c : result) {
            state = state * 1664525 + 1013904223;
            c = static_cast<char>(state >> 24);
        }
        return result;
    }
};

TEST_F(copy, is_exact) {
    const std::size_t mebibyte = std::size_t{1} << 20;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4096}, mebibyte, mebibyte + 1}) {
        SCOPED_TRACE(size);
        const std::string expected = bytes(size);
        support::write_file("src", expected);
        for (const routine copy_file : both) {
            support::write_file("dst", std::string(2 * mebibyte, '?'));
            copy_file("src  ", "dst  ");
            EXPECT_TRUE(support::read_file("dst") == expected);
            fs::remove("dst");
            copy_file("src", "dst");
            EXPECT_TRUE(support::read_file("dst") == expected);
            EXPECT_TRUE(support::read_file("src") == expected);
        }
    }
    for (const char* text : {"no final end", "ends\r\n\r", "\n"}) {
        support::write_file("src", text);
        file::copy("src", "dst");
        EXPECT_EQ(support::read_file("dst"), text);
    }
    EXPECT_EQ(support::read_tree(".").size(), 2U);
}

TEST_F(copy, reads_what_has_no_size) {
    for (const char* src : {"/proc/version", "/proc/self/cmdline", "/proc/filesystems"}) {
        SCOPED_TRACE(src);
        const std::string expected = support::read_file(src);
        ASSERT_FALSE(expected.empty());
        file::copy(src, "dst");
        EXPECT_EQ(support::read_file("dst"), expected);
    }
}

TEST_F(copy, reads_a_pipe_to_its_end) {
    const std::string expected = bytes((std::size_t{1} << 20) + 1);
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    std::thread writer([&] { support::write_file("fifo", expected); });
    file::copy("fifo", "dst");
    writer.join();
    EXPECT_TRUE(support::read_file("dst") == expected);
}

TEST_F(copy, of_a_missing_or_unreadable_source_is_empty) {
    fs::create_directory("folder");
    for (const char* src : {"missing", "", "folder", "folder/missing", "/proc/self/mem"}) {
        for (const routine copy_file : both) {
            SCOPED_TRACE(src);
            support::write_file("old", "bytes");
            copy_file(src, "old");
            EXPECT_EQ(support::read_file("old"), "");
            copy_file(src, "new");
            EXPECT_TRUE(fs::exists("new"));
            EXPECT_EQ(support::read_file("new"), "");
            fs::remove("new");
        }
    }
}

TEST_F(copy, onto_itself_leaves_the_file_alone) {
    support::write_file("src", "bytes");
    fs::create_symlink("src", "link");
    fs::create_hard_link("src", "second-name");
    for (const routine copy_file : both) {
        for (const char* other : {"src", "src   ", "./src", "link", "second-name"}) {
            SCOPED_TRACE(other);
            copy_file("src", other);
            copy_file(other, "src");
            EXPECT_EQ(support::read_file("src"), "bytes");
        }
    }
    EXPECT_EQ(fs::read_symlink("link"), "src");
    EXPECT_EQ(fs::hard_link_count("src"), 2U);
    EXPECT_EQ(support::read_tree(".").size(), 3U);
}

TEST_F(copy, to_what_cannot_be_written_is_silent) {
    support::write_file("src", "bytes");
    fs::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    for (const routine copy_file : both) {
        EXPECT_EQ(support::standard_output_of([&] {
                      for (const char* dst : {"missing/dst", "folder", "src/dst", "", "fifo", "/dev/full"}) {
                          EXPECT_EQ(support::stopped_with([&] { copy_file("src", dst); }), "no error");
                          EXPECT_EQ(support::stopped_with([&] { copy_file("missing", dst); }), "no error");
                      }
                  }),
                  "");
    }
    EXPECT_EQ(support::read_tree("."), (support::tree{{"src", "bytes"}, {"folder/", ""}, {"fifo@", ""}}));
}

}  // namespace
