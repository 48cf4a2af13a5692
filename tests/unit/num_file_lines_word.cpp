#include <sys/stat.h>

#include <string>

#include "file_test.hpp"
#include "random_text.hpp"

using namespace displacement_generator;

namespace {

using num_file_lines_word = support::file_test;

/// The number of records whose first 500 characters, padded with blanks to as many, contain a word.
int count_of(const std::string& text, const std::string& word) {
    int count = 0;
    for (std::string record : support::records_of(text)) {
        record.resize(500, ' ');
        count += record.find(word) == std::string::npos ? 0 : 1;
    }
    return count;
}

TEST_F(num_file_lines_word, counts_each_line_once) {
    const std::string filler(494, '-');
    struct row {
        std::string text;
        std::string word;
        int expected;
    };
    const row rows[] = {
        {"abc\nxabcx\nab\n", "abc", 2},
        {"abc abc abc\n", "abc", 1},
        {"x\nabc", "abc", 1},
        {"x\nabc\n", "abc", 1},
        {"x\r\nabc\r\n", "abc", 1},
        {"ABC\nabc\n", "abc", 1},
        {"", "abc", 0},
        {"", "", 0},
        {"", " ", 0},
        {"a\n\nb", "", 3},
        {"a\n\nb", " ", 3},
        {"a\n\nb", std::string(499, ' '), 3},
        {"a\n\nb", std::string(500, ' '), 1},
        {"a\n\nb", std::string(501, ' '), 0},
        {"abc\nabcd\n abc \n", "abc ", 2},
        {"abc\nx abc\n", "abc" + std::string(497, ' '), 1},
        {"abc\n", "abc" + std::string(498, ' '), 0},
        {"a b\na  b\n", "a b", 1},
        {filler + "abcdef\n", "abcdef", 1},
        {filler + "-abcdef\n", "abcdef", 0},
        {filler + "abcdef\n", "def ", 0},
        {filler + "abcdef   \n", "def ", 0},
        {filler + "abcde\n", "cde ", 1},
        {std::string(501, 'a') + '\n', std::string(500, 'a'), 1},
        {std::string(501, 'a') + '\n', std::string(501, 'a'), 0},
        {std::string(70000, '-') + "abc\nabc\n" + std::string(70000, '-') + "\nabc", "abc", 2},
        {"ab\nc\n", "ab\nc", 0},
        {"ab\nc\n", "\n", 0},
        {"ab\r\n", "ab\r", 0},
        {"ab\rc\n", "b\rc", 1},
        {std::string("a\0b\n", 4), std::string("a\0b", 3), 1},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text.substr(0, 30)) + " '" + tested.word.substr(0, 30) + '\'');
        support::write_file("text", tested.text);
        EXPECT_EQ(file::num_file_lines_word("text  ", tested.word), tested.expected);
        EXPECT_EQ(count_of(tested.text, tested.word), tested.expected);
    }
}

TEST_F(num_file_lines_word, is_what_a_slow_count_gives) {
    support::random_texts random;
    for (int i = 0; i < 200; ++i) {
        const std::string text = random.text() + random.text();
        support::write_file("text", text);
        for (int words = 0; words < 5; ++words) {
            // Most words are cut out of the text: what is looked for by chance is hardly ever found.
            const std::size_t start = random.below(text.size() + 1);
            std::string word = words == 0 ? random.characters(random.below(4)) : text.substr(start, random.below(8));
            if (random.below(3) == 0) {
                word.append(random.below(random.below(10) == 0 ? 600 : 4), ' ');
            }
            ASSERT_EQ(file::num_file_lines_word("text", word), count_of(text, word))
                << "text " << i << ", word " << testing::PrintToString(word);
        }
    }
}

TEST_F(num_file_lines_word, is_0_and_silent_for_a_file_that_cannot_be_read) {
    std::filesystem::create_directory("folder");
    ASSERT_EQ(::mkfifo("fifo", 0600), 0);
    for (const char* fname : {"missing", "folder", "fifo", "/dev/zero", "/proc/self/mem"}) {
        for (const char* word : {"word", "", " "}) {
            SCOPED_TRACE(fname);
            int count = -77;
            EXPECT_EQ(support::standard_output_of([&] { count = file::num_file_lines_word(fname, word); }), "");
            EXPECT_EQ(count, 0);
        }
    }
}

}  // namespace
