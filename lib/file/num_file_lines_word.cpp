#include <cstring>

#include "file/unit.hpp"

namespace displacement_generator {

namespace {

/// Takes off the reader's block all records that certainly lack `core`, so that only the others are looked at one by
/// one.
void pass_over_others(file::record_reader& reader, std::string_view core) {
    const char* begin = reader.block.get() + reader.begin;
    const std::size_t size = reader.end - reader.begin;
    if (size == 0) {
        return;
    }
    const void* found = ::memmem(begin, size, core.data(), core.size());
    const std::size_t clear =
        found == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(found) - begin);
    const void* feed = ::memrchr(begin, '\n', clear);
    if (feed != nullptr) {
        reader.begin += static_cast<std::size_t>(static_cast<const char*>(feed) - begin) + 1;
    }
}

}  // namespace

int file::num_file_lines_word(std::string_view fname, std::string_view word) {
    const connection input(fname, action::read);
    if (!input.reason().empty()) {
        return 0;
    }
    record_reader& reader = *reader_of(input.fid());
    const std::string_view core = base::trimmed(word);  // trailing blanks may match those that pad a record
    int count = 0;
    for (;;) {
        if (!core.empty()) {
            pass_over_others(reader, core);
        }
        std::string_view record;
        if (!next_record(reader, 500, record)) {
            return count;
        }
        const base::text<500> line(record);
        count += std::string_view(line).find(word) != std::string_view::npos ? 1 : 0;
    }
}

}  // namespace displacement_generator
