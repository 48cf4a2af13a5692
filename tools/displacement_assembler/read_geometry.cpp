#include <cstddef>
#include <string_view>

#include "base/error.hpp"
#include "base/free_format.hpp"
#include "gaussian/words.hpp"
#include "geometry.hpp"

namespace displacement_generator::assembler {

namespace {

/// Inputs are held in memory as a whole: far more than any has.
constexpr std::size_t longest_input = std::size_t{256} << 20U;

using gaussian::next_word;
using gaussian::without_blanks;

std::vector<std::string_view> lines_of(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(line.size() == text.size() ? line.size() : line.size() + 1);
        lines.push_back(line.ends_with('\r') ? line.substr(0, line.size() - 1) : line);
    }
    return lines;
}

class geometry_reading {
  public:
    geometry_reading(const std::string& name, const std::vector<std::string_view>& lines)
        : name_(name), lines_(lines) {}

    geometry read(const std::vector<std::string>& symbols) {
        read_route();
        read_charge();
        read_atoms(symbols);
        return result_;
    }

  private:
    [[noreturn]] void refuse(const std::string& expected) const {
        const std::string number = std::to_string(std::min(at_, lines_.size() - 1) + 1);
        const std::string found = "'" + base::shown(without_blanks(line())) + "'";
        throw base::run_error(name_ + ":" + number + ": expected " + expected + ", found " +
                              (at_ < lines_.size() ? found : "the end of the file"));
    }
    /// The next line; nothing at the end of the file.
    [[nodiscard]] std::string_view line() const { return at_ < lines_.size() ? lines_[at_] : std::string_view(); }
    [[nodiscard]] bool is_blank() const { return without_blanks(line()).empty(); }
    void pass_section(const char* expected) {
        while (!is_blank()) {
            ++at_;
        }
        if (at_ == lines_.size()) {
            refuse(expected);
        }
        ++at_;
    }
    void read_route();
    void read_charge();
    void read_atoms(const std::vector<std::string>& symbols);

    const std::string& name_;
    const std::vector<std::string_view>& lines_;
    std::size_t at_ = 0;
    geometry result_;
};

void geometry_reading::read_route() {
    std::size_t route = lines_.size();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        route = without_blanks(lines_[i]).starts_with('#') ? i : route;
    }
    if (route == lines_.size()) {
        throw base::run_error(name_ + ": expected a route, found none");
    }
    result_.route_line = static_cast<int>(route) + 1;
    for (at_ = route; !is_blank(); ++at_) {
        result_.route += result_.route.empty() ? "" : " ";
        result_.route += without_blanks(line());
    }
    pass_section("a blank line after the route");
}

void geometry_reading::read_charge() {
    if (at_ < lines_.size()) {
        ++at_;  // the first line of the title may be blank
    }
    pass_section("a blank line after the title");
    std::string_view rest = line();
    std::string_view charge;
    std::string_view multiplicity;
    if (base::next_field(rest, charge) != base::field_kind::value ||
        base::read_integer(charge, result_.charge) != base::number_status::ok ||
        base::next_field(rest, multiplicity) != base::field_kind::value ||
        base::read_integer(multiplicity, result_.multiplicity) != base::number_status::ok) {
        refuse("charge and multiplicity");
    }
    ++at_;
}

void geometry_reading::read_atoms(const std::vector<std::string>& symbols) {
    result_.first_atom_line = static_cast<int>(at_) + 1;
    result_.positions.resize(3, static_cast<Eigen::Index>(symbols.size()));
    for (std::size_t i = 0; i < symbols.size(); ++i, ++at_) {
        std::string_view rest = line();
        if (next_word(rest) != symbols[i]) {
            refuse("atom " + std::to_string(i + 1) + ", " + symbols[i]);
        }
        double position[3];
        if (!gaussian::next_three_reals(rest, position) || !without_blanks(rest).empty()) {
            refuse("three coordinates of atom " + std::to_string(i + 1));
        }
        result_.positions.col(static_cast<Eigen::Index>(i)) = Eigen::Map<const Eigen::Vector3d>(position);
    }
    if (!is_blank()) {
        refuse("a blank line after " + std::to_string(symbols.size()) + " atoms");
    }
}

}  // namespace

geometry read_geometry(gaussian::source& from, const std::vector<std::string>& symbols) {
    const std::string text = from.rest(longest_input);
    const std::vector<std::string_view> lines = lines_of(text);
    return geometry_reading(from.name(), lines).read(symbols);
}

}  // namespace displacement_generator::assembler
