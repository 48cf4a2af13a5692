#include "file/record_reader.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/array.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::file {

namespace {

constexpr std::size_t block_size = 65536;

/// The room for a record of `longest` characters. With its CR and LF it is not full, so a record that fills the room is
/// too long; and the rest of such a record is passed over in reads that are large as well.
std::size_t room_for(std::size_t longest) { return std::max(block_size, longest + block_size / 2); }

std::string_view without_carriage_return(std::string_view record) {
    if (!record.empty() && record.back() == '\r') {
        record.remove_suffix(1);
    }
    return record;
}

/// Reads over the rest of a record that fills the whole block; its first characters stay, at the front of the block.
void pass_over_rest(record_reader& reader, std::size_t longest) {
    const void* feed = nullptr;
    while (feed == nullptr) {
        reader.begin = reader.end = longest;
        if (!fill_block(reader, longest)) {
            return;
        }
        feed = std::memchr(reader.block.get() + longest, '\n', reader.end - longest);
    }
    reader.begin = static_cast<std::size_t>(static_cast<const char*>(feed) - reader.block.get()) + 1;
}

}  // namespace

bool fill_block(record_reader& reader, std::size_t longest) {
    if (reader.ended) {
        return false;
    }
    const std::size_t needed = room_for(longest);
    if (reader.capacity < needed) {
        auto larger = base::allocate_for_overwrite<char>("block", needed);
        if (reader.end != 0) {
            std::memcpy(larger.get(), reader.block.get(), reader.end);
        }
        reader.block = std::move(larger);
        reader.capacity = needed;
    }
    const long count = read_some(reader.descriptor, reader.block.get() + reader.end, reader.capacity - reader.end);
    if (count <= 0) {
        reader.error = count < 0 ? errno : 0;
        reader.ended = true;
        return false;
    }
    reader.end += static_cast<std::size_t>(count);
    return true;
}

bool next_record(record_reader& reader, std::size_t longest, std::string_view& record) {
    std::size_t searched = reader.begin;
    for (;;) {
        const char* block = reader.block.get();
        const void* feed =
            reader.end == searched ? nullptr : std::memchr(block + searched, '\n', reader.end - searched);
        if (feed != nullptr) {
            const auto length = static_cast<std::size_t>(static_cast<const char*>(feed) - block) - reader.begin;
            record = without_carriage_return({block + reader.begin, length}).substr(0, longest);
            reader.begin += length + 1;
            ++reader.line_number;
            return true;
        }
        searched = reader.end;
        if (reader.begin != 0 && !reader.ended) {
            std::memmove(reader.block.get(), block + reader.begin, reader.end - reader.begin);
            searched = reader.end -= reader.begin;
            reader.begin = 0;
        }
        const bool full = reader.begin == 0 && reader.end == reader.capacity;
        if (full && reader.capacity >= room_for(longest)) {
            pass_over_rest(reader, longest);
            record = {reader.block.get(), longest};
            ++reader.line_number;
            return true;
        }
        if (!fill_block(reader, longest)) {
            break;
        }
    }
    if (reader.begin == reader.end || reader.error != 0) {
        return false;
    }
    record = without_carriage_return({reader.block.get() + reader.begin, reader.end - reader.begin}).substr(0, longest);
    reader.begin = reader.end;
    ++reader.line_number;
    return true;
}

}  // namespace displacement_generator::file
