#pragma once

#include <cstddef>
#include <string_view>

#include "../base/array.hpp"

// Reading in large blocks. The memory held is that of one block, however long the file and its records are.

namespace displacement_generator::file {

struct record_reader {
    int descriptor = -1;
    base::owner<char> block;
    std::size_t capacity = 0;
    std::size_t begin = 0;  ///< what is read and not yet taken is block[begin, end)
    std::size_t end = 0;
    bool ended = false;         ///< nothing more comes: the end of the file, or an error
    int error = 0;              ///< errno of the read that failed
    long long line_number = 0;  ///< of the record last taken
};

/// Takes the next record.
///   reader   in/out
///   longest  in   how many characters of the record are wanted; the rest is passed over
///   record   out  the record, cut to `longest`, without its end; valid until the next call; unchanged at the end
/// Result: false when there is no further record.
bool next_record(record_reader& reader, std::size_t longest, std::string_view& record);

/// Makes sure that the block has room for a record of `longest` characters, and fills the room after `end`.
/// Result: false when nothing more came.
bool fill_block(record_reader& reader, std::size_t longest);

}  // namespace displacement_generator::file
