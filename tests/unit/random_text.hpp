#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// Texts that are hard to read record by record, and a reader too slow and simple to be wrong.

namespace displacement_generator::support {

/// The records of a text, found character by character.
inline std::vector<std::string> records_of(std::string_view text) {
    std::vector<std::string> records;
    std::string record;
    bool begun = false;
    const auto end_record = [&] {
        if (!record.empty() && record.back() == '\r') {
            record.pop_back();
        }
        records.push_back(record);
        record.clear();
        begun = false;
    };
    for (const char c : text) {
        if (c == '\n') {
            end_record();
        } else {
            record += c;
            begun = true;
        }
    }
    if (begun) {
        end_record();
    }
    return records;
}

/// The same ones in every run, unless --gtest_shuffle and --gtest_random_seed ask for others.
class random_texts {
  public:
    std::size_t below(std::size_t limit) { return random_() % limit; }

    /// Records of a few characters, of about as many as are read at once, and of about `many`, ended in every way.
    std::string text(std::size_t many = read_at_once) {
        static const char* const ends[] = {"\n", "\n", "\n", "\r\n", "\r\n", "\r", "\n\n", "\r\r\n", "\n\r", ""};
        std::string result;
        for (std::size_t records = below(9); records > 0; --records) {
            result += characters(length(many));
            result += ends[below(std::size(ends))];
        }
        return result;
    }

    /// Any characters but those that end a record.
    std::string characters(std::size_t count) {
        static const std::string_view all("ab  \t\0\x7f\xe9#", 9);
        std::string result(count, ' ');
        for (char& c : result) {
            c = all[below(all.size())];
        }
        return result;
    }

  private:
    static constexpr std::size_t read_at_once = 65536;

    std::size_t length(std::size_t many) {
        switch (below(7)) {
            case 0:
                return std::max(many, std::size_t{4}) - 4 + below(8);
            case 1:
                return below(4) == 0 ? read_at_once - 4 + below(8) : 0;
            case 2:
                return below(10) == 0 ? 2 * read_at_once - 4 + below(8) : 0;
            default:
                return below(12);
        }
    }

    std::mt19937 random_{static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())};
};

}  // namespace displacement_generator::support
