#include <algorithm>
#include <array>
#include <limits>

#include "file/file.hpp"
#include "harness.hpp"

using namespace displacement_generator;

// The input is a line with the order of a matrix and the columns of a block, one character each, and behind it the file
// that the matrix is read from. The bytes also serve as the numbers of a matrix that is written and read back.

namespace {

constexpr int largest = 12;
constexpr double untouched = -12.5;

struct matrix {
    std::array<double, static_cast<std::size_t>(largest) * largest> elements{};
    int n;

    explicit matrix(int order) : n(order) { elements.fill(untouched); }
    base::view2<double> view() { return {"a", elements.data(), n, n}; }
    double& operator()(int i, int j) { return view()(i, j); }
};

/// How far reading comes: which element is the first that is not read, and where.
struct progress {
    bool complete = true;
    int line = 0;  ///< lines taken, one that is wrong included
    bool at_end = false;
};

progress read_by_hand(const std::vector<std::string>& lines, int nb, matrix& a) {
    progress result;
    const auto next = [&]() -> const std::string* {
        if (static_cast<std::size_t>(result.line) == lines.size()) {
            result.complete = false;
            result.at_end = true;
            return nullptr;
        }
        return &lines[static_cast<std::size_t>(result.line++)];
    };
    for (int first = 1; first <= a.n; first += nb) {
        if (next() == nullptr) {
            return result;
        }
        for (int row = 1; row <= a.n; ++row) {
            const std::string* line = next();
            if (line == nullptr) {
                return result;
            }
            const std::vector<fuzz::field> found = fuzz::fields(*line);
            const auto in_range = [](long double value) {
                return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
            };
            const std::optional<long double> label =
                !found.empty() && found[0] ? fuzz::integer(*found[0]) : std::nullopt;
            result.complete = label && in_range(*label);
            std::size_t k = 0;
            for (int column = first; result.complete && column <= a.n && column < first + nb; ++column) {
                ++k;
                const std::optional<double> value = k < found.size() && found[k] ? fuzz::real(*found[k]) : std::nullopt;
                result.complete = value && *value - *value == 0.0;
                if (result.complete) {
                    a(row, column) = *value;
                }
            }
            if (!result.complete) {
                return result;
            }
        }
    }
    return result;
}

void check_elements(const matrix& found, const matrix& expected) {
    for (std::size_t i = 0; i < found.elements.size(); ++i) {
        fuzz::check(fuzz::same_bits(found.elements[i], expected.elements[i]),
                    "the elements are those of the file as far as it was read, and the others are untouched");
    }
}

void check_file(std::string_view bytes, int n, int nb) {
    static const fuzz::memory_file file;
    file.set(bytes);
    const std::vector<std::string> lines = fuzz::records(bytes);
    matrix a(n);
    constexpr int fid = 7;
    fuzz::check(file::open_unit(fid, file.name(), file::action::read).empty(), "the file opens");
    const auto error = fuzz::stopped([&] { file::read_block_data(fid, n, a.view(), nb); });
    matrix expected(n);
    if (nb < 1) {
        fuzz::check(error.has_value(), "a block has a column at least");
        fuzz::check_message(*error, file.name());
    } else {
        const progress reached = read_by_hand(lines, nb, expected);
        fuzz::check(error.has_value() != reached.complete, "a matrix is read where there is one");
        if (error) {
            // The line that is wrong, or the one that would follow the last.
            fuzz::check_equal(fuzz::checked_line(*error, file.name(), 1, static_cast<int>(lines.size()) + 1),
                              reached.line + (reached.at_end ? 1 : 0), "the message names the line");
        } else {
            base::text<100> line("?");
            const bool more = static_cast<std::size_t>(reached.line) < lines.size();
            fuzz::check(file::read_record(fid, line) == more, "the unit stays open behind the matrix");
            fuzz::check(line == base::text<100>(more ? std::string_view(lines[static_cast<std::size_t>(reached.line)])
                                                     : std::string_view("?")),
                        "the next record is the one behind the matrix");
        }
    }
    check_elements(a, expected);
    file::close_unit(fid);
}

/// A matrix of any finite numbers, in any spelling and layout that is allowed, comes back to the last bit.
void check_written(std::string_view bytes, int n, int nb) {
    constexpr std::string_view gaps[] = {" ", ", ", "\t", " ,", "   "};
    constexpr std::string_view ends[] = {"\n", "\r\n", " / 1\n", " extra\n"};
    fuzz::draw values(bytes);
    matrix written(n);
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            written(i, j) = values.finite();
        }
    }
    std::string text;
    for (int first = 1; first <= n; first += nb) {
        text += " heading";
        text += ends[values.below(4)];
        for (int row = 1; row <= n; ++row) {
            text += std::to_string(row);
            for (int column = first; column <= n && column < first + nb; ++column) {
                std::string spelled = fuzz::in_full(written(row, column));
                if (const std::size_t e = spelled.find('e'); e != std::string::npos) {
                    spelled[e] = "eEdD"[values.below(4)];
                }
                text += gaps[values.below(5)];
                text += spelled;
            }
            text += ends[values.below(4)];
        }
    }
    static const fuzz::memory_file file;
    file.set(text);
    constexpr int fid = 7;
    fuzz::check(file::open_unit(fid, file.name(), file::action::read).empty(), "the file opens");
    matrix a(n);
    file::read_block_data(fid, n, a.view(), nb);
    file::close_unit(fid);
    check_elements(a, written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    if (bytes.size() < 3) {
        return 0;
    }
    const auto digit = [](char c) { return static_cast<unsigned char>(c - '0') % (largest + 2); };
    const int n = static_cast<int>(digit(bytes[0])) % (largest + 1);
    const int nb = static_cast<int>(digit(bytes[1]));
    const std::string_view text = std::string_view(bytes).substr(3);
    check_file(text, n, nb);
    if (size % 8 == 2) {
        // Files are read in blocks of this size: with a heading this long a block ends anywhere in the input.
        constexpr std::size_t block = 65536;
        const std::size_t behind = fuzz::scaled(data[size / 2], std::min(text.size(), block));
        check_file(std::string(block - behind, '-') + std::string(text), n, nb);
    }
    if (nb > 0) {
        check_written(text, n, nb);
    }
    return 0;
}
