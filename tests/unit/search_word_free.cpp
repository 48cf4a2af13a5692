#include <string>
#include <vector>

#include "file_test.hpp"

using namespace displacement_generator;

namespace {

using file::action;

/// The routine exists in the module and outside it, and is the same.
class search_word : public support::file_test {
  protected:
    using routine = int (*)(int fid, std::string_view word, base::text_ref line);
    static constexpr routine both[] = {file::search_word_free, displacement_generator::search_word_free};
};

TEST_F(search_word, goes_on_behind_the_line_that_it_found) {
    support::write_file("log", "title\n\n NAtoms= 3\nno atoms\r\nNAtoms\nthe end");
    for (const routine search : both) {
        ASSERT_EQ(file::open_unit(100, "log", action::read), "");
        base::text<10> line;
        EXPECT_EQ(search(100, "NAtoms", line), 1);
        EXPECT_EQ(std::string_view(line), " NAtoms= 3");
        base::text<10> next;
        EXPECT_TRUE(file::read_record(100, next));
        EXPECT_EQ(std::string_view(next), "no atoms  ");
        EXPECT_EQ(search(100, "NAtoms", line), 1);
        EXPECT_EQ(std::string_view(line), "NAtoms    ");
        EXPECT_EQ(search(100, "natoms", line), 0);
        EXPECT_EQ(std::string_view(line), "the end   ");
        EXPECT_FALSE(file::read_record(100, next));
        file::close_unit(100);
    }
}

TEST_F(search_word, looks_for_the_whole_word_in_the_text_as_cut_and_padded) {
    struct row {
        std::string text;
        std::string word;
        int expected;
        const char* line;
    };
    const row rows[] = {
        {"abc\n", "abc", 1, "abc     "},
        {"xabcx\n", "abc", 1, "xabcx   "},
        {"abc\n", "abc ", 1, "abc     "},  // the blank is one of the padding
        {"abc", "abc     ", 1, "abc     "},
        {"abc", "abc      ", 0, "abc     "},  // longer than the text
        {"abcdefgh", "abcdefgh", 1, "abcdefgh"},
        {"abcdefgh", "gh ", 0, "abcdefgh"},
        {"12345678abc", "abc", 0, "12345678"},  // behind the end of the text
        {"12345abcd\n", "abcd", 0, "12345abc"},
        {"ABC\nabc\nAbc", "Abc", 1, "Abc     "},
        {"ab\nc", "abc", 0, "c       "},
        {"a\nb", "", 1, "a       "},
        {"\nb", " ", 1, "        "},
        {"a.c", "a*c", 0, "a.c     "},
        {std::string(200000, 'x') + "\nabc", "abc", 1, "abc     "},
    };
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::PrintToString(tested.text.substr(0, 20)) + " '" + tested.word + '\'');
        support::write_file("log", tested.text);
        for (const routine search : both) {
            ASSERT_EQ(file::open_unit(100, "log", action::read), "");
            base::text<8> line;
            EXPECT_EQ(search(100, tested.word, line), tested.expected);
            EXPECT_EQ(std::string_view(line), tested.line);
            file::close_unit(100);
        }
    }
}

TEST_F(search_word, looks_in_the_old_text_where_the_first_read_fails) {
    support::write_file("empty", "");
    for (const routine search : both) {
        ASSERT_EQ(file::open_unit(100, "empty", action::read), "");
        base::text<8> line("old text");
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(search(100, "text", line), 1);
            EXPECT_EQ(search(100, "new", line), 0);
        }
        file::close_unit(100);
        ASSERT_EQ(file::open_unit(100, "/proc/self/mem", action::read), "");
        EXPECT_EQ(search(100, "text", line), 1);
        EXPECT_EQ(search(100, "new", line), 0);
        file::close_unit(100);
        EXPECT_EQ(search(100, "text", line), 1);
        EXPECT_EQ(search(100, "new", line), 0);
        EXPECT_EQ(std::string_view(line), "old text");
    }
}

TEST_F(search_word, finds_the_last_line_again_at_the_end) {
    support::write_file("log", "a\nword");
    for (const routine search : both) {
        ASSERT_EQ(file::open_unit(100, "log", action::read), "");
        base::text<8> line;
        EXPECT_EQ(search(100, "word", line), 1);
        EXPECT_EQ(search(100, "word", line), 1);  // nothing more is read, and the text still holds the word
        EXPECT_EQ(search(100, "other", line), 0);
        file::close_unit(100);
    }
}

TEST_F(search_word, prints_nothing) {
    EXPECT_EQ(support::standard_output_of([] {
                  base::text<8> line;
                  static_cast<void>(file::search_word_free(100, "word", line));
              }),
              "");
}

}  // namespace
