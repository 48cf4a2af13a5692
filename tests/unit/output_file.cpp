#include "file/output_file.hpp"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>

#include "file_test.hpp"

using namespace displacement_generator;

namespace {

namespace fs = std::filesystem;

using support::stopped_with;

class output_file : public support::file_test {
  protected:
    output_file() = default;

    /// Closes the descriptor of an output file behind its back, so that its own close fails.
    static void close_behind_its_back(const fs::path& name) {
        for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code gone;  // the descriptor of this loop itself
            if (fs::read_symlink(entry.path(), gone) == fs::absolute(name)) {
                ::close(std::stoi(entry.path().filename()));
                return;
            }
        }
        ADD_FAILURE() << name << " is not open";
    }
};

TEST_F(output_file, holds_what_was_written) {
    support::write_file("old", std::string(1000, '?'));
    for (const char* path : {"new", "old", "blanks behind it  "}) {
        file::output_file output(path);
        output.write("first line\n");
        output.write("");
        output.write("second");
        // Every call writes at once.
        EXPECT_EQ(support::read_file(base::trimmed(path)), "first line\nsecond");
        output.close();
    }
    const std::string text = "first line\nsecond";
    EXPECT_EQ(support::read_tree("."), (support::tree{{"new", text}, {"old", text}, {"blanks behind it", text}}));
}

TEST_F(output_file, is_empty_until_it_is_written) {
    support::write_file("old", "bytes");
    file::output_file output("old");
    EXPECT_EQ(support::read_file("old"), "");
    output.close();
}

TEST_F(output_file, is_closed_when_it_goes_out_of_use) {
    { file::output_file("new").write("bytes"); }
    EXPECT_EQ(support::read_file("new"), "bytes");
}

TEST_F(output_file, that_is_closed_closes_nothing_more) {
    auto first = std::make_unique<file::output_file>("first");
    first->close();
    file::output_file second("second");  // has the descriptor that the other one had
    first.reset();
    second.write("bytes");
    second.close();
    EXPECT_EQ(support::read_file("second"), "bytes");
}

TEST_F(output_file, writes_its_last_bytes_as_it_is_closed) {
    file::output_file output("new");
    output.write("0123456789");
    output.close("end");
    EXPECT_EQ(support::read_file("new"), "0123456789end");
}

TEST_F(output_file, that_cannot_be_opened_stops_the_run) {
    support::write_file("regular", "bytes");
    fs::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    struct row {
        std::string path;
        std::string expected;
    };
    const row rows[] = {
        {"missing/new ", "missing/new: cannot open for writing: No such file or directory|standard error|2"},
        {"folder", "folder: cannot open for writing: Is a directory|standard error|2"},
        {"regular/new", "regular/new: cannot open for writing: Not a directory|standard error|2"},
        {"fifo", "fifo: cannot open for writing: No such device or address|standard error|2"},
        {"", ": cannot open for writing: No such file or directory|standard error|2"},
        {"a\n/b", "a\\n/b: cannot open for writing: No such file or directory|standard error|2"},
        {std::string(300, 'a'), std::string(200, 'a') +
                                    "... (100 more characters): cannot open for writing: File name too long"
                                    "|standard error|2"},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.path);
        EXPECT_EQ(stopped_with([&] { const file::output_file output(tested.path); }), tested.expected);
    }
    EXPECT_EQ(support::read_tree("."), (support::tree{{"regular", "bytes"}, {"folder/", ""}, {"fifo@", ""}}));
}

TEST_F(output_file, that_cannot_be_written_stops_the_run) {
    file::output_file output("/dev/full");
    EXPECT_EQ(stopped_with([&] { output.write(""); }), "no error");
    EXPECT_EQ(stopped_with([&] { output.write("x"); }),
              "/dev/full: cannot write: No space left on device|standard error|2");
    output.close();
}

TEST_F(output_file, that_cannot_be_closed_stops_the_run) {
    file::output_file output("new");
    output.write("0123456789");
    close_behind_its_back("new");
    EXPECT_EQ(stopped_with([&] { output.close(); }), "new: cannot close: Bad file descriptor|standard error|2");
    EXPECT_EQ(support::read_file("new"), "0123456789");

    file::output_file other("other");
    close_behind_its_back("other");
    fs::remove("other");
    ASSERT_EQ(::mkfifo("other", 0600), 0);
    EXPECT_EQ(stopped_with([&] { other.close(); }), "other: cannot close: Bad file descriptor|standard error|2");
    EXPECT_TRUE(fs::exists("other"));  // there was nothing to cut off
}

/// Bytes that a file may still grow by, until the end of the scope.
class growth_limit {
  public:
    explicit growth_limit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        handler_ = std::signal(SIGXFSZ, SIG_IGN);
    }
    ~growth_limit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        static_cast<void>(std::signal(SIGXFSZ, handler_));
    }
    growth_limit(const growth_limit&) = delete;
    growth_limit& operator=(const growth_limit&) = delete;

  private:
    rlimit before_{};
    void (*handler_)(int) = nullptr;
};

TEST_F(output_file, loses_its_last_bytes_where_they_cannot_all_be_written) {
    for (const rlim_t most : {10U, 11U, 12U}) {
        SCOPED_TRACE(most);
        file::output_file output("new");
        output.write("0123456789");
        const growth_limit limit(most);
        EXPECT_EQ(stopped_with([&] { output.close("end"); }), "new: cannot write: File too large|standard error|2");
        EXPECT_EQ(support::read_file("new"), "0123456789");
    }
    const growth_limit limit(13);
    file::output_file output("new");
    output.write("0123456789");
    output.close("end");
    EXPECT_EQ(support::read_file("new"), "0123456789end");
}

TEST_F(output_file, is_removed_where_its_last_bytes_cannot_be_cut_off) {
    file::output_file output("new");
    output.write("0123456789");
    close_behind_its_back("new");
    fs::remove("new");
    ASSERT_EQ(::mkfifo("new", 0600), 0);  // of which nothing can be cut off
    EXPECT_EQ(stopped_with([&] { output.close("end"); }), "new: cannot write: Bad file descriptor|standard error|2");
    EXPECT_EQ(support::read_tree("."), support::tree{});
}

}  // namespace
