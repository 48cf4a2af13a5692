#include "displacement_generator/control.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "harness.hpp"

using namespace displacement_generator;

// The input is a control file. It is read by the program and by the other reader below; and its bytes serve as settings
// that are written as a control file and read back.

namespace {

using generator::control;

bool same(const control& a, const control& b) {
    return a.symm == b.symm && a.qctype == b.qctype && a.task == b.task && a.fxyz == b.fxyz &&
           fuzz::same_bits(a.dx, b.dx) && a.std_orient == b.std_orient && a.disp_sign == b.disp_sign;
}

std::string lower_case(std::string word) {
    for (char& c : word) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c + 32);
        }
    }
    return word;
}

/// A control file as a whole in memory, read by hand.
class other_reader {
  public:
    explicit other_reader(std::string_view bytes) {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (bytes[i] == '\r' && (i + 1 == bytes.size() || bytes[i + 1] == '\n')) {
                text_ += i + 1 == bytes.size() ? "\n" : "";
            } else {
                text_ += bytes[i];
            }
        }
    }

    std::optional<control> read() {
        if (!find_group()) {
            return std::nullopt;
        }
        for (;;) {
            skip();
            if (at_end()) {
                return std::nullopt;
            }
            if (text_[at_] == '/') {
                return settings_;
            }
            if (text_[at_] == ',') {
                ++at_;
            } else if (!assignment()) {
                return std::nullopt;
            }
        }
    }

  private:
    [[nodiscard]] bool at_end() const { return at_ == text_.size(); }

    bool find_group() {
        for (std::size_t line = 0; line < text_.size();) {
            const std::size_t end = std::min(text_.find('\n', line), text_.size());
            const std::size_t word = std::min(text_.find_first_not_of(" \t", line), end);
            const std::size_t behind = std::min(text_.find_first_of(" \t\n,/!", word), text_.size());
            if (lower_case(text_.substr(word, behind - word)) == "&control") {
                at_ = behind;
                return true;
            }
            line = end + 1;
        }
        return false;
    }

    void skip() {
        while (!at_end()) {
            if (text_[at_] == '!') {
                at_ = std::min(text_.find('\n', at_), text_.size());
            } else if (text_[at_] == ' ' || text_[at_] == '\t' || text_[at_] == '\n') {
                ++at_;
            } else {
                return;
            }
        }
    }

    std::string word() {
        const std::size_t begin = at_;
        at_ = std::min(text_.find_first_of(" \t\n,/!=", at_), text_.size());
        return text_.substr(begin, at_ - begin);
    }

    bool assignment() {
        const std::string key = lower_case(word());
        skip();
        if (at_end() || text_[at_] != '=') {
            return false;
        }
        ++at_;
        skip();
        const bool null = at_end() || text_[at_] == ',' || text_[at_] == '/';
        if (key == "symm") {
            return null || logical(settings_.symm);
        }
        if (key == "std_orient") {
            return null || logical(settings_.std_orient);
        }
        if (key == "qctype") {
            return null || quoted(settings_.qctype);
        }
        if (key == "task") {
            return null || quoted(settings_.task);
        }
        if (key == "fxyz") {
            return null || quoted(settings_.fxyz);
        }
        if (key == "dx") {
            return null || real();
        }
        return key == "disp_sign" && (null || integer());
    }

    bool logical(bool& value) {
        const std::string found = lower_case(word());
        const bool yes = found == "t" || found == ".t." || found == "true" || found == ".true.";
        const bool no = found == "f" || found == ".f." || found == "false" || found == ".false.";
        value = yes;
        return yes || no;
    }

    bool real() {
        const std::optional<double> value = fuzz::real(word());
        settings_.dx = value.value_or(0.0);
        return value && std::isfinite(*value);
    }

    bool integer() {
        const long double value = fuzz::integer(word()).value_or(1e300L);
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
            return false;
        }
        settings_.disp_sign = static_cast<int>(value);
        return true;
    }

    bool quoted(base::text<200>& value) {
        const char mark = text_[at_++];
        if (mark != '\'' && mark != '"') {
            return false;
        }
        std::string found;
        for (;;) {
            const std::size_t end = text_.find(mark, at_);
            if (end == std::string::npos) {
                return false;
            }
            found += text_.substr(at_, end - at_);
            at_ = end + 1;
            if (at_end() || text_[at_] != mark) {
                break;
            }
            found += text_[at_++];
        }
        std::erase(found, '\n');
        value = std::string_view(found);
        return at_end() || std::string_view(" \t\n,/!").find(text_[at_]) != std::string_view::npos;
    }

    std::string text_;
    std::size_t at_ = 0;
    control settings_;
};

std::optional<control> read(std::string_view bytes, std::optional<base::run_error>& error) {
    static const fuzz::memory_file file;
    file.set(bytes);
    std::optional<control> settings;
    error = fuzz::stopped([&] { settings = generator::read_control(file.name()); });
    if (error) {
        const auto feeds = std::count(bytes.begin(), bytes.end(), '\n');
        const int ends = static_cast<int>(feeds) + (bytes.ends_with('\r') ? 1 : 0);
        fuzz::checked_line(*error, file.name(), 1, ends + 1);  // the end of a file stands behind its last line end
    }
    return settings;
}

std::optional<control> read(std::string_view bytes) {
    std::optional<base::run_error> error;
    return read(bytes, error);
}

/// Reads from a pipe that stays open: what follows the group must not be waited for. It gives the bytes in as many
/// small pieces as it has room for.
control read_through_pipe(std::string_view bytes) {
    constexpr std::size_t pieces = 16;
    int ends[2] = {-1, -1};
    fuzz::check(::pipe2(ends, O_CLOEXEC | O_DIRECT) == 0, "a pipe can be made");
    const std::size_t size = bytes.size() / pieces + 1;
    for (std::size_t begin = 0; begin < bytes.size(); begin += size) {
        const std::string_view piece = bytes.substr(begin, size);
        fuzz::check(::write(ends[1], piece.data(), piece.size()) == static_cast<ssize_t>(piece.size()),
                    "a pipe takes what it has room for");
    }
    const control settings = generator::read_control("/proc/self/fd/" + std::to_string(ends[0]));
    ::close(ends[0]);
    ::close(ends[1]);
    return settings;
}

void check_file(const std::string& bytes) {
    std::optional<base::run_error> error;
    const std::optional<control> found = read(bytes, error);
    const std::optional<control> expected = other_reader(bytes).read();
    fuzz::check(found.has_value() == expected.has_value(), "a control file is accepted or not");
    if (found) {
        fuzz::check(same(*found, *expected), "the settings are those of the control file");
        fuzz::check(std::isfinite(found->dx), "the step is finite");
        constexpr std::size_t pipe_room = 60000;
        if (bytes.size() < pipe_room) {
            fuzz::check(same(read_through_pipe(bytes), *found), "a pipe gives what a file gives");
        }
        const std::optional<control> longer = read(bytes + "\n&control dx = nothing");
        fuzz::check(longer && same(*longer, *found), "what follows the group is not looked at");
    }
    if (bytes.find('\r') == std::string::npos) {
        std::string other_ends;
        for (const char c : bytes) {
            other_ends += c == '\n' ? "\r\n" : std::string(1, c);
        }
        std::optional<base::run_error> same_error;
        const std::optional<control> again = read(other_ends, same_error);
        fuzz::check(again.has_value() == found.has_value() && (!found || same(*again, *found)),
                    "line ends of either kind give the same settings");
        fuzz::check(!error || std::string_view(error->what()) == same_error->what(),
                    "line ends of either kind give the same message");
    }
}

std::string in_any_case(std::string word, fuzz::draw& values) {
    const std::uint8_t upper = values.byte();
    for (std::size_t i = 0; i < word.size(); ++i) {
        if ((upper >> (i % 8) & 1) != 0 && word[i] >= 'a' && word[i] <= 'z') {
            word[i] = static_cast<char>(word[i] - 32);
        }
    }
    return word;
}

std::string written(bool value, fuzz::draw& values) {
    constexpr const char* spellings[2][4] = {{"f", "false", ".f.", ".false."}, {"t", "true", ".t.", ".true."}};
    const char* spelling = spellings[value ? 1 : 0][values.below(4)];
    return in_any_case(spelling, values);
}

std::string written(double value, fuzz::draw& values) {
    std::string spelled = value > 0.0 && values.flag() ? "+" : "";
    spelled += fuzz::in_full(value);
    if (const std::size_t e = spelled.find('e'); e != std::string::npos) {
        spelled[e] = "eEdD"[values.below(4)];
    }
    return spelled;
}

std::string written(int value, fuzz::draw& values) {
    std::string spelled = value >= 0 && values.flag() ? "+" : "";
    spelled += std::to_string(value);
    return spelled;
}

std::string written(std::string_view value, fuzz::draw& values) {
    const char mark = values.flag() ? '"' : '\'';
    std::string spelled(1, mark);
    for (const char c : value) {
        spelled += c;
        if (c == mark) {
            spelled += mark;
        } else if (values.below(64) == 1 && c != '\r') {
            spelled += '\n';  // the end of a line is no part of a text
        }
    }
    return spelled + mark;
}

std::string drawn_text(fuzz::draw& values) {
    constexpr std::size_t longest = 256;
    std::string text = values.text(values.below(longest));
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// Any settings at all, written in any way that is allowed, come back.
void check_written(std::string_view bytes) {
    constexpr std::string_view gaps[] = {" ", "\n", ",", " , ", "\r\n", " ! dx = 1 /\n", "\t", ",\n "};
    constexpr std::string_view equals[] = {"=", " = ", "\n=\t", " ! =\n = ! 'x'\n"};
    fuzz::draw values(bytes);
    control settings;
    settings.symm = values.flag();
    settings.std_orient = values.flag();
    settings.dx = values.finite();
    settings.disp_sign = values.integer();
    const std::string texts[3] = {drawn_text(values), drawn_text(values), drawn_text(values)};
    settings.qctype = std::string_view(texts[0]);
    settings.task = std::string_view(texts[1]);
    settings.fxyz = std::string_view(texts[2]);
    const std::pair<std::string, std::string> assignments[] = {
        {"symm", written(settings.symm, values)},
        {"qctype", written(std::string_view(texts[0]), values)},
        {"task", written(std::string_view(texts[1]), values)},
        {"fxyz", written(std::string_view(texts[2]), values)},
        {"dx", written(settings.dx, values)},
        {"std_orient", written(settings.std_orient, values)},
        {"disp_sign", written(settings.disp_sign, values)},
    };
    std::string text = values.flag() ? " text before\n\n" : "";
    text += in_any_case("&control", values);
    const std::size_t turn = values.below(7);
    for (std::size_t i = 0; i < 7; ++i) {
        const auto& [key, value] = assignments[(i + turn) % 7];
        text += gaps[values.below(8)];
        text += in_any_case(key, values);
        text += equals[values.below(4)];
        text += value;
    }
    text += values.flag() ? "/" : "\n/\n";
    const std::optional<control> found = read(text);
    fuzz::check(found && same(*found, settings), "what was written is read back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    check_file(bytes);
    check_written(bytes);
    if (size % 4 == 2) {
        // Control files are read in blocks of this size: behind a line this long a block ends anywhere in the input.
        constexpr std::size_t block = 4096;
        check_file(std::string(block - 1 - fuzz::scaled(data[size / 2], std::min(size, block)), '-') + '\n' + bytes);
    }
    return 0;
}
