#include "file/record_reader.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "file/descriptor.hpp"
#include "file_test.hpp"
#include "random_text.hpp"

using namespace displacement_generator;

namespace {

class record_reader : public support::file_test {
  protected:
    record_reader() = default;

    static int open_file(const std::string& name) {
        std::string reason;
        return file::open_to_read(name, true, reason);
    }

    /// A descriptor from which `text` comes in pieces of random size, however much is asked for at once.
    static int open_pieces(std::string_view text, support::random_texts& random) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::pipe2(ends, O_DIRECT), 0);  // keeps what is written at once together, and apart from the next
        for (std::size_t start = 0; start < text.size();) {
            const std::string_view piece = text.substr(start, 1 + random.below(4000));
            EXPECT_EQ(file::write_all(ends[1], piece), 0);
            start += piece.size();
        }
        ::close(ends[1]);
        return ends[0];
    }

    /// Reads all records of a descriptor, the first characters of each, and closes it.
    static void expect_records(int descriptor, const std::vector<std::string>& expected,
                               const std::vector<std::size_t>& longest) {
        file::record_reader reader;
        reader.descriptor = descriptor;
        std::string_view record;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const std::size_t wanted = longest[i % longest.size()];
            ASSERT_TRUE(file::next_record(reader, wanted, record)) << "record " << i;
            ASSERT_TRUE(record == std::string_view(expected[i]).substr(0, wanted)) << "record " << i;
            ASSERT_EQ(reader.line_number, static_cast<long long>(i) + 1);
        }
        for (int again = 0; again < 2; ++again) {
            record = "unchanged";
            ASSERT_FALSE(file::next_record(reader, longest.front(), record));
            ASSERT_EQ(record, "unchanged");
            ASSERT_EQ(reader.line_number, static_cast<long long>(expected.size()));
        }
        ASSERT_EQ(reader.error, 0);
        ::close(descriptor);
    }
};

TEST_F(record_reader, ends_a_record_at_a_line_feed_with_or_without_a_carriage_return) {
    struct row {
        std::string text;
        std::vector<std::string> records;
    };
    const row rows[] = {
        {"", {}},
        {"\n", {""}},
        {"\r\n", {""}},
        {"\r", {""}},
        {"\n\r", {"", ""}},
        {"\r\r", {"\r"}},
        {"a", {"a"}},
        {"a\n", {"a"}},
        {"a\r\n", {"a"}},
        {"a\r", {"a"}},
        {"a\r\r\n", {"a\r"}},
        {"a\rb\n", {"a\rb"}},
        {"a\n\nb", {"a", "", "b"}},
        {"a\r\n\r\nb\r\n", {"a", "", "b"}},
        {"a\n \n", {"a", " "}},
        {std::string("a\0b\n", 4), {std::string("a\0b", 3)}},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text));
        EXPECT_EQ(support::records_of(tested.text), tested.records);
        support::write_file("text", tested.text);
        expect_records(open_file("text"), tested.records, {200});
    }
}

TEST_F(record_reader, finds_the_records_of_any_text) {
    support::random_texts random;
    const std::size_t lengths[] = {0, 1, 2, 200, 500, 65533, 65534, 65535, 65536, 70000, 140000};
    for (int i = 0; i < 400; ++i) {
        SCOPED_TRACE(i);
        std::vector<std::size_t> longest;
        for (std::size_t kinds = 1 + random.below(3); kinds > 0; --kinds) {
            longest.push_back(lengths[random.below(std::size(lengths))]);
        }
        const std::string text = random.text(longest.front());
        support::write_file("text", text);
        ASSERT_NO_FATAL_FAILURE(expect_records(open_file("text"), support::records_of(text), longest));
    }
}

TEST_F(record_reader, does_not_mind_what_each_read_gives) {
    support::random_texts random;
    for (int i = 0; i < 500; ++i) {
        SCOPED_TRACE(i);
        const std::string text = random.text().substr(0, 10000);
        ASSERT_NO_FATAL_FAILURE(expect_records(open_pieces(text, random), support::records_of(text), {7, 500}));
    }
}

TEST_F(record_reader, holds_one_block_however_long_a_record_is) {
    support::write_file("text", std::string(1000000, 'a') + "\nb\n");
    file::record_reader reader;
    reader.descriptor = open_file("text");
    std::string_view record;
    EXPECT_TRUE(file::next_record(reader, 3, record));
    EXPECT_EQ(record, "aaa");
    EXPECT_TRUE(file::next_record(reader, 3, record));
    EXPECT_EQ(record, "b");
    EXPECT_EQ(reader.capacity, 65536U);
    ::close(reader.descriptor);
}

TEST_F(record_reader, tells_the_end_from_an_error) {
    file::record_reader reader;
    reader.descriptor = open_file("/proc/self/mem");  // of which the first page cannot be read
    std::string_view record = "unchanged";
    EXPECT_FALSE(file::next_record(reader, 200, record));
    EXPECT_EQ(record, "unchanged");
    EXPECT_EQ(reader.error, EIO);
    EXPECT_EQ(reader.line_number, 0);
    ::close(reader.descriptor);
}

TEST_F(record_reader, gives_no_part_of_a_record_whose_reading_fails) {
    // Of the file that is this process's memory, what lies behind a page with nothing mapped behind it cannot be read.
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* pages = ::mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    std::memcpy(pages, "first\nsecond", 12);
    ASSERT_EQ(::munmap(static_cast<char*>(pages) + page, page), 0);
    file::record_reader reader;
    reader.descriptor = open_file("/proc/self/mem");
    ASSERT_NE(::lseek(reader.descriptor, static_cast<off_t>(reinterpret_cast<std::uintptr_t>(pages)), SEEK_SET), -1);
    std::string_view record;
    EXPECT_TRUE(file::next_record(reader, 200, record));
    EXPECT_EQ(record, "first");
    EXPECT_FALSE(file::next_record(reader, 200, record));
    EXPECT_EQ(reader.error, EIO);
    EXPECT_EQ(reader.line_number, 1);
    ::close(reader.descriptor);
    ::munmap(pages, page);
}

TEST_F(record_reader, stays_at_the_end_that_it_found) {
    support::write_file("text", "a");
    file::record_reader reader;
    reader.descriptor = open_file("text");
    std::string_view record;
    EXPECT_TRUE(file::next_record(reader, 200, record));
    EXPECT_FALSE(file::next_record(reader, 200, record));
    support::write_file("text", "a\nb");
    EXPECT_FALSE(file::next_record(reader, 200, record));
    ::close(reader.descriptor);
}

/// How many reads this process has asked the system for.
long long reads_so_far() {
    std::ifstream counters("/proc/self/io");
    std::string word;
    while (counters >> word) {
        if (long long count = 0; word == "syscr:" && counters >> count) {
            return count;
        }
    }
    ADD_FAILURE() << "/proc/self/io tells of no reads";
    return 0;
}

TEST_F(record_reader, passes_over_the_rest_of_a_record_in_large_reads) {
    for (const std::size_t longest : {std::size_t{0}, std::size_t{500}, std::size_t{1} << 15,
                                      (std::size_t{1} << 16) - 2, std::size_t{1} << 16, std::size_t{1} << 20}) {
        SCOPED_TRACE(longest);
        constexpr std::size_t rest = 4 << 20;
        support::write_file("long", std::string(longest + rest, 'x') + "\nnext\n");
        const long long start = reads_so_far();
        const long long counting = reads_so_far() - start;  // these reads are counted as well
        const int descriptor = open_file("long");
        const long long before = reads_so_far();
        expect_records(descriptor, {std::string(longest, 'x'), std::string("next").substr(0, longest)}, {longest});
        const long long reads = reads_so_far() - before - counting;
        EXPECT_LE(reads, static_cast<long long>((longest + rest) / 32768 + 3));
    }
}

}  // namespace
