#include "file/unit.hpp"

#include <cerrno>
#include <map>
#include <optional>
#include <utility>

#include <unistd.h>

#include "base/error.hpp"
#include "file/descriptor.hpp"

namespace displacement_generator::file {

namespace {

constexpr int standard_input = 5;
constexpr int standard_output = 6;

struct unit {
    std::string name;
    action what = action::read;
    record_reader reader;  // a unit that writes uses its descriptor only
};

std::map<int, unit>& units() {
    static std::map<int, unit> table = [] {
        std::map<int, unit> preconnected;
        preconnected[standard_input] = {"standard input", action::read, {}};
        preconnected[standard_input].reader.descriptor = STDIN_FILENO;
        preconnected[standard_output] = {"standard output", action::write, {}};
        preconnected[standard_output].reader.descriptor = STDOUT_FILENO;
        return preconnected;
    }();
    return table;
}

unit* find(int fid) {
    const auto found = units().find(fid);
    return found == units().end() ? nullptr : &found->second;
}

}  // namespace

bool is_connected(int fid) { return find(fid) != nullptr; }

std::string open_unit(int fid, std::string_view fname, action what) {
    if (fid < 1) {
        throw base::run_error("unit " + std::to_string(fid) + ": expected a positive number");
    }
    if (is_connected(fid)) {
        throw base::run_error("unit " + std::to_string(fid) + ": already connected to " + name_of(fid));
    }
    std::string reason;
    const int descriptor = what == action::read ? open_to_read(fname, true, reason) : open_to_write(fname, reason);
    if (descriptor >= 0) {
        unit& opened = units()[fid];
        opened.name = base::trimmed(fname);
        opened.what = what;
        opened.reader.descriptor = descriptor;
    }
    return reason;
}

void close_unit(int fid, disposition what) {
    const auto found = units().find(fid);
    if (found == units().end()) {
        return;
    }
    const unit closed = std::move(found->second);
    units().erase(found);
    int error = close_descriptor(closed.reader.descriptor);
    if (error == 0 && what == disposition::remove && ::unlink(closed.name.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        throw base::run_error(base::shown(closed.name, 200) + ": cannot " +
                              (what == disposition::remove ? "remove: " : "close: ") + system_reason(error));
    }
}

bool read_record(int fid, base::text_ref line) {
    record_reader* reader = reader_of(fid);
    std::string_view record;
    if (reader == nullptr || !next_record(*reader, line.length, record)) {
        return false;
    }
    line.assign(record);
    return true;
}

void write_record(int fid, std::string_view record) {
    const unit* written = find(fid);
    if (written == nullptr || written->what != action::write) {
        throw base::run_error(name_of(fid) + ": not connected for writing");
    }
    if (const int error = write_all(written->reader.descriptor, std::string(record) + '\n'); error != 0) {
        throw base::run_error(name_of(fid) + ": cannot write: " + system_reason(error));
    }
}

std::int64_t record_length(int fid) {
    constexpr std::int64_t longest = 2147483647;  // what a 4-byte count of columns can tell
    return is_connected(fid) ? longest : -1;
}

record_reader* reader_of(int fid) {
    unit* found = find(fid);
    return found == nullptr || found->what != action::read ? nullptr : &found->reader;
}

std::string_view take_record(int fid, record_reader& reader, std::size_t longest, int i, int nline) {
    std::string_view record;
    if (!next_record(reader, longest, record)) {
        if (reader.error != 0) {
            throw base::run_error(name_of(fid) + ": cannot read: " + system_reason(reader.error));
        }
        throw base::run_error(name_of(fid) + ": found " + std::to_string(i - 1) + " lines, expected " +
                              std::to_string(nline));
    }
    return record;
}

std::string name_of(int fid) {
    const unit* found = find(fid);
    return found == nullptr ? "unit " + std::to_string(fid) : base::shown(found->name, 200);
}

connection::connection(std::string_view fname, action what) : name_(base::trimmed(fname)) {
    get_free_fid(fid_);
    reason_ = open_unit(fid_, fname, what);
}

connection::~connection() {
    try {
        close_unit(fid_);
    } catch (const base::run_error&) {  // on the way out of something that already failed, or from a file only read
    }
}

void connection::require() const {
    if (!reason_.empty()) {
        throw base::run_error(base::shown(name_, 200) + ": cannot open: " + reason_);
    }
}

}  // namespace displacement_generator::file
