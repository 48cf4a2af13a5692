#include "gaussian/scan_log.hpp"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/checkpoint_route.hpp"
#include "gaussian/line_ends.hpp"
#include "gaussian/words.hpp"

namespace displacement_generator::gaussian {

namespace {

constexpr std::size_t look_back = 1024;       ///< bytes before a line that stay in the block: the lines above it
constexpr std::size_t most_looked_at = 4096;  ///< Gaussian's lines have at most some 130 characters
constexpr std::size_t piece_width = 70;       ///< columns, behind the first, after which route and archive are broken
constexpr std::size_t longest_route = 65536;
constexpr std::size_t longest_archive = std::size_t{1}
                                        << 24;  ///< 250,000 atoms, the most that Gaussian takes, need 12 MB
constexpr std::size_t longest_table = std::size_t{1} << 25;
constexpr std::size_t most_notices = 20;  ///< of what is broken in a log

bool contains(std::string_view line, std::string_view what) { return line.find(what) != std::string_view::npos; }

bool is_rule(std::string_view line) {
    constexpr std::size_t shortest = 3;
    line = without_blanks(line);
    return line.size() >= shortest && line.find_first_not_of('-') == std::string_view::npos;
}

/// What the lines that the scanner searches for begin with, behind a blank: the first two characters.
constexpr std::string_view beginnings[] = {"**", ">>", "1\\", "1|", "Ch", "Ce", "Di",
                                           "En", "Er", "In",  "Li", "No", "SC"};

/// Whether the scanner has to look at a line. There are at most two beginnings with the same first character.
bool is_candidate(const char* line, const char* end) {
    static constexpr auto second = [] {
        struct {
            char of[256][2] = {};
        } table;
        for (const std::string_view beginning : beginnings) {
            char* const of_first = table.of[static_cast<unsigned char>(beginning[0])];
            of_first[of_first[0] == '\0' ? 0 : 1] = beginning[1];
        }
        return table;
    }();
    if (end - line < 3 || line[0] != ' ') {
        return false;
    }
    const char* const of_first = second.of[static_cast<unsigned char>(line[1])];
    return line[2] == of_first[0] || line[2] == of_first[1];
}

/// Whether a job begins or ends with a line. Where a log breaks off and another one follows, such a line may stand in
/// the middle of anything.
bool is_job_line(std::string_view line) {
    return line.starts_with(" Entering Gaussian System") || line.starts_with(" Entering Link 1 = ") ||
           line.starts_with(" Initial command:") || line.starts_with(" Link1:  Proceeding to internal job step") ||
           line.starts_with(" Normal termination of Gaussian") || line.starts_with(" Error termination");
}

/// Whether the results of an archive entry, and all that stands before them, are there.
bool has_results(std::string_view text) {
    const std::string_view twice = text.starts_with("1|") ? "||" : "\\\\";
    const std::size_t results = text.find(std::string(twice) + "Version=");
    return results != std::string_view::npos && text.find(twice, results + twice.size()) != std::string_view::npos;
}

/// Whether a line inside a table can be nothing but a row: its first column is a number, right-justified.
bool is_plain_row(const char* line, const char* end) {
    constexpr std::ptrdiff_t shortest = 30;
    return end - line > shortest && line[0] == ' ' && (line[1] == ' ' || (line[1] >= '0' && line[1] <= '9'));
}

enum class state { seeking, route, table_head, table_rows, archive };
enum class table_kind { input, standard, forces };

class scanner {
  public:
    scanner(source& from, std::vector<notice>& notices) : from_(from), reader_(from.blocks()), notices_(notices) {}

    scanned_log scan();

  private:
    void take(const char* begin, const char* end);
    void seek(std::string_view line, const char* begin);
    void begin_route(std::string_view line);
    void take_route_piece(std::string_view line);
    void take_table_head(std::string_view line);
    void take_row(std::string_view line);
    void take_archive_piece(std::string_view line);
    void begin_table(std::string_view line, const char* begin);
    void keep_rows(const char* first, const char* last);
    void keep_table();
    void drop_table(const char* why);
    void keep_archive();
    void take_charge(std::string_view line);
    void take_energy(std::string_view line);
    void begin_job();
    void end_job();
    void take_job_line(std::string_view line);
    scanned_job& job();
    log_point& next_point();
    bool next_block();
    void pass_over_long_line();
    [[nodiscard]] std::string_view line_above(const char* begin) const;
    void tell(std::string text);
    [[nodiscard]] int line() const { return static_cast<int>(std::min<long long>(reader_.line_number, INT_MAX)); }

    source& from_;
    file::record_reader& reader_;
    std::vector<notice>& notices_;
    std::size_t told_ = 0;
    state state_ = state::seeking;
    scanned_log log_;
    scanned_job job_;  ///< the present one
    std::string user_route_;
    int failed_line_ = 0;  ///< of the message, which stands before the energy
    bool in_job_ = false;
    bool route_next_ = true;  ///< whether a box with a # is the route of a job and not a title
    table_kind kind_ = table_kind::input;
    log_table table_;
    std::string text_;  ///< of the route or the archive entry
    bool piece_was_short_ = false;
};

void scanner::tell(std::string text) {
    if (told_ < most_notices) {
        notices_.push_back({line(), std::move(text)});
    }
    ++told_;
}

std::string_view scanner::line_above(const char* begin) const {
    const char* first = reader_.block.get();
    if (begin == first) {
        return {};
    }
    const char* end = begin - 1;
    const char* start = end;
    while (start != first && start[-1] != '\n') {
        --start;
    }
    end -= end != start && end[-1] == '\r' ? 1 : 0;
    return {start, static_cast<std::size_t>(end - start)};
}

scanned_job& scanner::job() {
    if (!in_job_) {
        begin_job();
    }
    return job_;
}

void scanner::begin_job() {
    job_ = {};
    failed_line_ = 0;
    job_.number = ++log_.jobs;
    in_job_ = true;
}

void scanner::end_job() {
    if (!in_job_) {
        return;
    }
    in_job_ = false;
    log_.ended_normally += job_.ended_normally ? 1 : 0;
    if (job_.has_geometry()) {
        log_.job = std::move(job_);
    }
}

/// A line that says that Gaussian begins, or goes on to the next job, ends the job before it, and there is another one
/// even where the log ends before its route. Several such lines may follow one another.
void scanner::take_job_line(std::string_view line) {
    route_next_ = true;
    const bool normal = line.starts_with(" Normal");
    if (normal || line.starts_with(" Error")) {
        job_.ended_normally = normal;
        end_job();
    } else if (!in_job_ || job_.line != 0 || job_.has_geometry()) {
        end_job();
        begin_job();
    }
}

/// The place that a new table of positions belongs to.
log_point& scanner::next_point() {
    scanned_job& present = job();
    if (present.last.forces.line != 0) {
        std::swap(present.with_forces, present.last);
    }
    present.last = {};
    ++present.geometries;
    return present.last;
}

void scanner::take(const char* begin, const char* end) {
    if (end != begin && end[-1] == '\r') {
        --end;
    }
    const std::string_view line(begin, std::min(static_cast<std::size_t>(end - begin), most_looked_at));
    if (state_ != state::seeking && is_job_line(line)) {
        tell("a job begins or ends here, in the middle of what went before");
        state_ = state::seeking;
    }
    switch (state_) {
        case state::seeking:
            seek(line, begin);
            break;
        case state::route:
            take_route_piece(line);
            break;
        case state::table_head:
            take_table_head(line);
            break;
        case state::table_rows:
            take_row(line);
            break;
        case state::archive:
            take_archive_piece(line);
            break;
    }
}

void scanner::begin_route(std::string_view line) {
    if (in_job_ && job_.has_geometry()) {
        end_job();
    }
    job().line = this->line();
    route_next_ = false;
    text_.clear();
    state_ = state::route;
    take_route_piece(line);
}

void scanner::seek(std::string_view line, const char* begin) {
    if (route_next_ && line.starts_with(' ') && without_blanks(line).starts_with('#') && is_rule(line_above(begin))) {
        begin_route(line);
        return;
    }
    switch (line.size() > 2 ? line[1] : ' ') {
        case '*':
            if (contains(line, "Axes restored to original set")) {
                job().last.axes_restored = true;
            }
            break;
        case '>':
            if (contains(line, "Convergence criterion not met")) {
                failed_line_ = this->line();
            }
            break;
        case '1':
            if (line.starts_with(" 1\\1\\") || line.starts_with(" 1|1|")) {
                text_.clear();
                state_ = state::archive;
                take_archive_piece(line);
            }
            break;
        case 'C':
            if (line.starts_with(" Charge =")) {
                take_charge(line);
            } else if (line.starts_with(" Center ")) {
                begin_table(line, begin);
            }
            break;
        case 'D':
            if (constexpr std::string_view anchor = " Dipole        ="; line.starts_with(anchor)) {
                job().last.dipole = line.substr(anchor.size());
                job().last.dipole_line = this->line();
            }
            break;
        case 'E':
        case 'I':
        case 'L':
        case 'N':
            if (is_job_line(line)) {
                take_job_line(line);
            }
            break;
        default:
            if (line.starts_with(" SCF Done:")) {
                take_energy(line);
            }
    }
}

/// The pieces of a route have 70 columns and are joined as they are; a blank at the end of a piece may be lost.
void scanner::take_route_piece(std::string_view line) {
    if (is_rule(line) || text_.size() > longest_route) {
        job_.route = without_blanks(text_);
        if (job_.number == 1) {
            log_.first_route = job_.route;
        }
        if (!is_continuation(job_.route)) {
            user_route_ = job_.route;
        }
        job_.user_route = user_route_;
        state_ = state::seeking;
        return;
    }
    line.remove_prefix(line.starts_with(' ') ? 1 : 0);
    if (!text_.empty() && piece_was_short_) {
        text_ += ' ';
    }
    piece_was_short_ = line.size() < piece_width;
    text_ += line;
}

void scanner::take_charge(std::string_view line) {
    scanned_job& present = job();
    if (present.has_charge) {  // those behind are of layers and fragments
        return;
    }
    constexpr std::string_view first = " Charge =";
    constexpr std::string_view second = "Multiplicity =";
    const std::size_t at = line.find(second);
    if (at == std::string_view::npos) {
        return;
    }
    std::string_view behind = line.substr(at + second.size());
    present.has_charge = base::read_integer(without_blanks(line.substr(first.size(), at - first.size())),
                                            present.charge) == base::number_status::ok &&
                         base::read_integer(next_word(behind), present.multiplicity) == base::number_status::ok;
    if (!present.has_charge) {
        tell("charge and multiplicity cannot be read in '" + base::shown(without_blanks(line)) + "'");
    }
}

void scanner::take_energy(std::string_view line) {
    const std::size_t equals = line.find('=');
    std::string_view behind = equals == std::string_view::npos ? line : line.substr(equals + 1);
    double energy = 0.0;
    log_point& point = job().last;
    point.failed_line = std::exchange(failed_line_, 0);
    point.energy.reset();
    if (read_printed_real(next_word(behind), energy)) {
        point.energy = energy;
    }
}

void scanner::begin_table(std::string_view line, const char* begin) {
    if (contains(line, "Forces (Hartrees/Bohr)")) {
        kind_ = table_kind::forces;
    } else if (contains(line, "Coordinates (Angstroms)")) {
        // The title stands above the rule that stands above this line.
        const std::string_view rule = line_above(begin);
        const std::string_view title = rule.empty() ? rule : line_above(rule.data());
        if (contains(title, "Input orientation:") || contains(title, "Z-Matrix orientation:")) {
            kind_ = table_kind::input;
        } else if (contains(title, "Standard orientation:")) {
            kind_ = table_kind::standard;
        } else {
            return;
        }
    } else {
        return;
    }
    table_.line = this->line();
    table_.rows.clear();
    state_ = state::table_head;
}

void scanner::take_table_head(std::string_view line) {
    if (is_rule(line)) {
        state_ = state::table_rows;
    } else if (!line.starts_with(" Number ")) {
        drop_table("expected the rows of the table");
    }
}

void scanner::take_row(std::string_view line) {
    if (is_rule(line)) {
        keep_table();
        return;
    }
    const std::string_view row = without_blanks(line);
    if (row.empty() || ((row[0] < '0' || row[0] > '9') && row[0] != '*')) {
        drop_table("expected a row of the table");
    } else {
        table_.rows += line;
        table_.rows += '\n';
    }
}

void scanner::drop_table(const char* why) {
    tell(std::string(why) + " that begins in line " + std::to_string(table_.line) + "; it is passed over");
    state_ = state::seeking;
    if (kind_ == table_kind::forces) {  // those that stood here before are not the last ones
        table_.rows.clear();
        std::swap(job().last.forces, table_);
    }
}

void scanner::keep_table() {
    state_ = state::seeking;
    log_point& last = job().last;
    switch (kind_) {
        case table_kind::input:  // printed once more at the end of an optimisation, it is the same place
            if (last.input.rows != table_.rows) {
                std::swap(next_point().input, table_);
            }
            break;
        case table_kind::standard:
            // One in another frame of the place whose input orientation stands above it, unless that has one already:
            // then it is another place, or the same table once more.
            if (job_.geometries != 0 && last.standard.line == 0) {
                std::swap(last.standard, table_);
            } else if (last.standard.rows != table_.rows) {
                std::swap(next_point().standard, table_);
            }
            break;
        case table_kind::forces:
            std::swap(last.forces, table_);
            break;
    }
}

void scanner::take_archive_piece(std::string_view line) {
    const bool over = without_blanks(line).empty();
    if (over || text_.size() > longest_archive) {
        state_ = state::seeking;
        tell(over ? "the archive entry is not complete; it is passed over"
                  : "the archive entry has no end; it is passed over");
        return;
    }
    line.remove_prefix(line.starts_with(' ') ? 1 : 0);
    const std::size_t begin = text_.size();
    text_ += line;
    // Force constants follow the results, of any size, and nobody wants them from here. A section ends where a doubled
    // separator does, and only there it is worth while to look at all of the text.
    const std::string_view end = text_.starts_with("1|") ? "||@" : "\\\\@";
    const std::string_view twice = end.substr(0, 2);
    const bool section_ends = text_.find(twice, begin == 0 ? 0 : begin - 1) != std::string::npos;
    if ((section_ends && has_results(text_)) || text_.ends_with(end)) {
        keep_archive();
    } else if (line.size() < piece_width) {
        text_.append(piece_width - line.size(), ' ');  // blanks at the end of a piece may be lost
    }
}

void scanner::keep_archive() {
    state_ = state::seeking;
    scanned_job& present = job();
    present.archive = read_archive(text_);
    present.has_archive = true;
}

/// Keeps whole lines of a table.
void scanner::keep_rows(const char* first, const char* last) {
    if (state_ == state::table_rows && first != last) {
        table_.rows.append(first, last);
        if (table_.rows.size() > longest_table) {
            drop_table("expected the end of the table");
        }
    }
}

/// Makes room in the block and fills it; the lines above the present one stay. Result: false at the end.
bool scanner::next_block() {
    const std::size_t kept = std::min(reader_.begin, look_back);
    if (reader_.begin > kept) {
        std::memmove(reader_.block.get(), reader_.block.get() + reader_.begin - kept,
                     reader_.end - reader_.begin + kept);
        reader_.end -= reader_.begin - kept;
        reader_.begin = kept;
    }
    if (reader_.capacity != 0 && reader_.end == reader_.capacity) {
        pass_over_long_line();
        return true;
    }
    return file::fill_block(reader_, 0);
}

/// A line that fills the block is none of Gaussian's: its beginning is taken for the whole.
void scanner::pass_over_long_line() {
    char* block = reader_.block.get();
    ++reader_.line_number;
    if (state_ != state::seeking) {
        take(block + reader_.begin, block + reader_.begin + most_looked_at);
    }
    const void* feed = nullptr;
    do {
        reader_.begin = reader_.end = 0;
        if (!file::fill_block(reader_, 0)) {
            return;
        }
        feed = std::memchr(block, '\n', reader_.end);
    } while (feed == nullptr);
    reader_.begin = static_cast<std::size_t>(static_cast<const char*>(feed) - block) + 1;
}

scanned_log scanner::scan() {
    do {
        const char* begin = reader_.block.get() + reader_.begin;
        const char* end = reader_.block.get() + reader_.end;
        const char* rows = begin;  // of a table, up to `begin`, and not yet kept
        line_ends feeds(begin, end);
        while (const char* feed = feeds.next()) {
            ++reader_.line_number;
            if (state_ == state::seeking ? route_next_ || is_candidate(begin, feed)
                                         : state_ != state::table_rows || !is_plain_row(begin, feed)) {
                keep_rows(rows, begin);
                take(begin, feed);
                rows = feed + 1;
            }
            begin = feed + 1;
        }
        keep_rows(rows, begin);
        reader_.begin = static_cast<std::size_t>(begin - reader_.block.get());
    } while (next_block());
    from_.check_read();
    const char* begin = reader_.block.get() + reader_.begin;
    const char* end = reader_.block.get() + reader_.end;
    if (begin != end) {  // a last line without its end
        ++reader_.line_number;
        if (state_ != state::seeking || route_next_ || is_candidate(begin, end)) {
            take(begin, end);
        }
    }
    reader_.begin = reader_.end;
    end_job();
    if (told_ > most_notices) {
        notices_.push_back({0, std::to_string(told_ - most_notices) + " more tables and entries are passed over"});
    }
    return std::move(log_);
}

}  // namespace

scanned_log scan_log(source& from, std::vector<notice>& notices) { return scanner(from, notices).scan(); }

}  // namespace displacement_generator::gaussian
