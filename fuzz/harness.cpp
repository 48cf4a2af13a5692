#include "harness.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace displacement_generator::fuzz {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_gap(char c) { return c == ' ' || c == '\t'; }

std::size_t skip_sign(std::string_view text, std::size_t at) {
    return at < text.size() && (text[at] == '+' || text[at] == '-') ? at + 1 : at;
}

std::size_t skip_digits(std::string_view text, std::size_t at) {
    while (at < text.size() && is_digit(text[at])) {
        ++at;
    }
    return at;
}

}  // namespace

void failed(std::string_view what) {
    std::cerr << "does not hold: " << what << '\n';
    std::abort();
}

bool same_bits(double a, double b) { return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b); }

memory_file::memory_file()
    : descriptor_(::memfd_create("input", MFD_CLOEXEC)), name_("/proc/self/fd/" + std::to_string(descriptor_)) {
    check(descriptor_ >= 0, "a file in memory can be made");
}

memory_file::~memory_file() { ::close(descriptor_); }

void memory_file::set(std::string_view bytes) const {
    check(::ftruncate(descriptor_, 0) == 0 &&
              ::pwrite(descriptor_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
          "a file in memory can be written");
}

void check_message(const base::run_error& error, std::string_view file) {
    constexpr std::size_t longest = 1000;
    const std::string_view message = error.what();
    check(error.stream == base::message_stream::standard_error && error.exit_status == 2,
          "a message belongs on standard error, with status 2");
    check(message.starts_with(std::string(file) + ":"), "a message begins with the name of the file");
    check(message.size() <= longest, "a message is of bounded length");
    check(std::all_of(message.begin(), message.end(), [](char c) { return c >= ' ' && c <= '~'; }),
          "a message is printable");
}

int checked_line(const base::run_error& error, std::string_view file, int first, int last) {
    check_message(error, file);
    const std::string_view message = error.what();
    const std::size_t begin = file.size() + 1;
    const std::size_t end = skip_digits(message, begin);
    check(end > begin && end - begin < 10 && message.substr(end).starts_with(": "),
          "a message has a line number behind the name of the file");
    const int line = std::stoi(std::string(message.substr(begin, end - begin)));
    if (line < first || line > last) {
        std::cerr << message << '\n';
        failed("a message names a line that exists");
    }
    return line;
}

std::vector<std::string> records(std::string_view bytes) {
    std::vector<std::string> result;
    std::string record;
    const auto end_record = [&] {
        if (record.ends_with('\r')) {
            record.pop_back();
        }
        result.push_back(record);
        record.clear();
    };
    for (const char c : bytes) {
        if (c == '\n') {
            end_record();
        } else {
            record += c;
        }
    }
    if (!bytes.empty() && bytes.back() != '\n') {
        end_record();
    }
    return result;
}

std::string cut(std::string_view record, std::size_t length) {
    std::string result(record.substr(0, length));
    while (result.ends_with(' ')) {
        result.pop_back();
    }
    return result;
}

std::vector<field> fields(std::string_view record) {
    // Split at the commas first, then each piece into words: a piece without a word is nothing between two commas,
    // unless it is the last one.
    record = record.substr(0, record.find('/'));
    std::vector<field> result;
    for (std::size_t begin = 0; begin <= record.size();) {
        const std::size_t end = std::min(record.find(',', begin), record.size());
        const std::string_view piece = record.substr(begin, end - begin);
        const std::size_t before = result.size();
        std::string word;
        for (const char c : piece) {
            if (!is_gap(c)) {
                word += c;
            } else if (!word.empty()) {
                result.emplace_back(word);
                word.clear();
            }
        }
        if (!word.empty()) {
            result.emplace_back(word);
        }
        if (result.size() == before && end < record.size()) {
            result.emplace_back();
        }
        begin = end + 1;
    }
    return result;
}

std::optional<double> real(std::string_view text) {
    std::size_t at = skip_sign(text, 0);
    const std::size_t digits = at;
    at = skip_digits(text, at);
    std::size_t count = at - digits;
    if (at < text.size() && text[at] == '.') {
        const std::size_t decimals = at + 1;
        at = skip_digits(text, decimals);
        count += at - decimals;
    }
    if (count == 0) {
        return std::nullopt;
    }
    std::string number(text);
    if (at < text.size()) {
        if (std::strchr("EeDd", text[at]) == nullptr || text[at] == '\0') {
            return std::nullopt;
        }
        number[at] = 'e';
        const std::size_t exponent = skip_sign(text, at + 1);
        if (exponent == text.size() || skip_digits(text, exponent) != text.size()) {
            return std::nullopt;
        }
    }
    return std::strtod(number.c_str(), nullptr);
}

std::optional<long double> integer(std::string_view text) {
    const std::size_t digits = skip_sign(text, 0);
    if (digits == text.size() || skip_digits(text, digits) != text.size()) {
        return std::nullopt;
    }
    return std::strtold(std::string(text).c_str(), nullptr);
}

std::string in_full(double value) {
    char number[40];
    return {number, static_cast<std::size_t>(std::snprintf(number, sizeof number, "%.17g", value))};
}

std::string in_columns(double value, std::size_t width, int decimals) {
    std::string column;
    if (std::isnan(value)) {
        column = "NaN";
    } else if (std::isinf(value)) {
        column = value < 0.0 ? "-Infinity" : "Infinity";
    } else {
        char number[400];
        column.assign(number, static_cast<std::size_t>(std::snprintf(number, sizeof number, "%.*f", decimals, value)));
    }
    if (column.size() > width) {
        column.assign(width, '*');
    }
    column.insert(0, width - column.size(), ' ');
    return column;
}

int draw::integer() {
    int value = 0;
    std::memcpy(&value, text(sizeof value).data(), sizeof value);
    return value;
}

double draw::any_real() {
    double value = 0.0;
    std::memcpy(&value, text(sizeof value).data(), sizeof value);
    return value;
}

double draw::finite() {
    const double value = any_real();
    return std::isfinite(value) ? value : std::numeric_limits<double>::max();
}

std::string draw::text(std::size_t length) {
    std::string result(bytes_.substr(0, length));
    bytes_.remove_prefix(result.size());
    result.resize(length, '\0');
    return result;
}

}  // namespace displacement_generator::fuzz
