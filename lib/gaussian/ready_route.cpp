#include "gaussian/ready_route.hpp"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "base/error.hpp"
#include "gaussian/fields.hpp"

namespace displacement_generator::gaussian {

namespace {

using words = std::initializer_list<std::string_view>;
using fate = section_claim::fate;

bool begins_with_any(std::string_view name, words beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(), [&](std::string_view b) { return name.starts_with(b); });
}

/// An option whose name begins like one of these; null where there is none.
const route_option* option_of(const route_keyword& keyword, words beginnings) {
    for (const route_part& part : keyword.parts) {
        for (const route_option& option : part.options) {
            if (begins_with_any(option.name, beginnings)) {
                return &option;
            }
        }
    }
    return nullptr;
}

bool has_part(const route_keyword& keyword, words names) {
    return std::any_of(keyword.parts.begin(), keyword.parts.end(),
                       [&](const route_part& part) { return is_one_of(part.name, names); });
}

bool is_geometry(const route_keyword& keyword) { return is_one_of(keyword.name(), {"geom", "geometry"}); }
bool is_force_field(const route_keyword& keyword) {
    return is_one_of(keyword.name(), {"amber", "dreiding", "uff", "mm"});
}

bool is_connectivity(const route_option& option) { return begins_with_any(option.name, {"connect", "modconnect"}); }

/// Whether an option of `geom` says nothing about where the molecule comes from or how it is optimised.
bool is_kept_of_geometry(const route_option& option) {
    return is_connectivity(option) || begins_with_any(option.name, {"crowd", "nocrowd", "notest", "printinput"});
}

/// Whether an option of `guess` takes the orbitals of a checkpoint file.
bool reads_orbitals(const route_option& option) {
    return is_one_of(option.name, {"read", "check", "checkpoint", "chk"});
}

/// Whether an option begins with "read" and takes from a checkpoint file, not from a section.
bool reads_checkpoint(const route_option& option) {
    return begins_with_any(option.name, {"readfc", "readcart", "readnormal", "readint"});
}

/// An option of a job type for which Gaussian reads a section whose place is not among the known ones.
bool reads_late_section(const route_option& option) {
    return option.name == "fccards" || option.name == "cards" ||
           begins_with_any(option.name, {"sel", "hinderedrotor"}) ||
           (begins_with_any(option.name, {"read", "rd"}) && !reads_checkpoint(option));
}

/// Whether the name of an option says that something is read from the input.
bool names_a_section(const route_option& option) {
    return (option.name.find("read") != std::string::npos && !begins_with_any(option.name, {"noread", "readint"})) ||
           option.name.starts_with("rd");
}

bool is_symmetry(const route_keyword& keyword) {
    return is_one_of(keyword.name(), {"symmetry", "symm", "sym", "nosymm", "nosym", "nosymmetry"});
}

bool is_population(const route_keyword& keyword) { return is_one_of(keyword.name(), {"pop", "population"}); }
bool is_properties(const route_keyword& keyword) { return is_one_of(keyword.name(), {"prop", "properties"}); }

bool is_file_of_output(const route_option& option) { return begins_with_any(option.name, {"wf", "psi", "mat", "raw"}); }

/// Whether a keyword makes each job write a file of one name: a second job in the folder would spoil the first one's.
bool writes_a_shared_file(const route_keyword& keyword) {
    const auto& options = keyword.parts.front().options;
    return is_one_of(keyword.name(), {"punch", "cube", "formcheck", "formchk"}) ||
           (keyword.name() == "output" && std::any_of(options.begin(), options.end(), is_file_of_output));
}

/// Whether a keyword only adds to the results, at a cost: it is left out whole.
bool is_analysis(const route_keyword& keyword) {
    return is_one_of(keyword.name(), {"nmr", "output"}) || writes_a_shared_file(keyword);
}

/// Whether an option has a section of the input for what is computed besides energy and forces.
bool is_analysis_with_section(const route_keyword& keyword, const route_option& option) {
    if (is_population(keyword)) {
        return names_a_section(option) || option.name.starts_with("nbodel");
    }
    if (is_properties(keyword)) {
        return names_a_section(option) || option.name == "opt";
    }
    return keyword.name() == "cphf" && is_one_of(option.name, {"rdfreq", "readfreq"});
}

/// Whether an option of a keyword that is left out whole has a section: the name of a file, a list of atoms.
bool names_a_section_of_analysis(const route_keyword& keyword, const route_option& option) {
    return keyword.name() == "output" ? is_file_of_output(option) : names_a_section(option);
}

/// Whether a method goes on from what an earlier job left in a checkpoint file: states or amplitudes.
bool reads_earlier_results(const route_keyword& keyword, const route_option& option) {
    return is_one_of(keyword.name(), {"td", "tda", "tdhf", "cis", "cisd", "eomccsd", "ccd", "ccsd", "qcisd", "bd"}) &&
           is_one_of(option.name, {"read", "readamplitudes", "readamp"});
}

void claim(std::vector<section_claim>& claims, int place, const route_keyword& owner, fate what) {
    const bool is_double = place < other_place && std::any_of(claims.begin(), claims.end(),
                                                              [&](const section_claim& c) { return c.place == place; });
    if (!is_double) {
        claims.push_back({place, owner.text, what});
    }
}

void claim_geometry_option(std::vector<section_claim>& claims, const route_keyword& keyword,
                           const route_option& option) {
    if (is_connectivity(option)) {
        claim(claims, connectivity_place, keyword, fate::kept);
    } else if (begins_with_any(option.name, {"readopt", "rdopt", "readfre", "rdfre", "readfro", "rdfro"})) {
        claim(claims, frozen_place, keyword, fate::removed);
    } else if (begins_with_any(option.name, {"modred", "addred", "addgic", "readallgic", "readgic"})) {
        claim(claims, modredundant_place, keyword, fate::removed);
    } else if (reads_late_section(option)) {
        claim(claims, other_place, keyword, fate::removed);
    }
}

void claim_job_option(std::vector<section_claim>& claims, const route_keyword& keyword, const route_option& option) {
    if (option.name.starts_with("readiso") || option.name.starts_with("rdiso")) {
        claim(claims, isotopes_place, keyword, fate::removed);
    } else if (is_one_of(keyword.name(), {"admp", "bomd"}) || keyword.name().starts_with("traj")) {
        claim(claims, trajectory_place, keyword, fate::unknown_count);
    } else if (begins_with_any(option.name, {"modred", "addred"})) {
        claim(claims, modredundant_place, keyword, fate::removed);
    } else if (option.name == "report" && lower(option.text).find("read") != std::string::npos) {
        claim(claims, path_place, keyword, fate::removed);
    } else if (reads_late_section(option)) {
        claim(claims, other_place, keyword, fate::removed);
    }
}

/// How many sections the options of one part of a keyword have that changes the energy.
int sections_of(const route_keyword& keyword, const route_part& part) {
    return static_cast<int>(std::count_if(part.options.begin(), part.options.end(), [&](const route_option& option) {
        const bool is_of_checkpoint =
            (part.name == "guess" && option.name == "read") || reads_earlier_results(keyword, option);
        return !is_of_checkpoint && !is_analysis_with_section(keyword, option) &&
               (names_a_section(option) ||
                is_one_of(option.name, {"cards", "alter", "input", "permute", "rw", "gen", "genecp"}) ||
                (part.name == "scrf" && option.name == "dipole") ||
                (part.name == "casscf" && option.name == "stateaverage"));
    }));
}

/// How many sections a keyword that stays has behind the molecule.
int sections_of(const route_keyword& keyword) {
    if (is_analysis(keyword)) {
        return 0;
    }
    int count = 0;
    for (const route_part& part : keyword.parts) {
        count += part.name == "genecp" ? 2 : 0;
        count += is_one_of(part.name, {"gen", "massage", "charge", "extrabasis", "extradensitybasis"}) ? 1 : 0;
        count += sections_of(keyword, part);
    }
    return count;
}

void claim_kept(std::vector<section_claim>& claims, const route_keyword& keyword) {
    if (is_force_field(keyword)) {
        if (option_of(keyword, {"hardfirst", "softfirst", "softonly", "modify"}) != nullptr) {
            claim(claims, force_field_place, keyword, fate::kept);
        }
    } else if (keyword.name() == "charge") {
        claim(claims, charges_place, keyword, fate::kept);
    } else {
        for (int i = sections_of(keyword); i > 0; --i) {
            claim(claims, other_place, keyword, fate::kept);
        }
    }
}

void claim_analysis(std::vector<section_claim>& claims, const route_keyword& keyword) {
    if (keyword.name() == "cube") {
        claim(claims, analysis_place, keyword, fate::removed);
    }
    for (const route_option& option : keyword.parts.front().options) {
        if (is_analysis(keyword) ? names_a_section_of_analysis(keyword, option)
                                 : is_analysis_with_section(keyword, option)) {
            claim(claims, keyword.name() == "cphf" ? frequencies_place : analysis_place, keyword, fate::removed);
        }
    }
}

[[noreturn]] void refuse(const std::string& place, const std::string& what) {
    throw base::run_error(place + ": " + what);
}

[[noreturn]] void refuse_checkpoint(const std::string& place, const route_keyword& keyword) {
    refuse(place, quoted(keyword.text) +
                      " reads a checkpoint file, which the jobs will not have; give a route without it with --route");
}

bool is_compound_method(std::string_view name) {
    return begins_with_any(name, {"cbs-", "rocbs", "w1u", "w1bd", "w1ro"}) ||
           is_one_of(name, {"g1", "g2", "g2mp2", "g3", "g3mp2", "g3b3", "g3mp2b3", "g4", "g4mp2"});
}

/// Stops the run where a keyword that may have to go is joined to others.
void check_joined(const route_keyword& keyword, const std::string& place) {
    if (keyword.parts.size() == 1) {
        return;
    }
    for (const route_part& part : keyword.parts) {
        const route_keyword alone{part.name, {part}};
        if (is_job_type(alone) || is_geometry(alone) || is_analysis(alone) || is_population(alone) ||
            is_properties(alone) || is_symmetry(alone) ||
            is_one_of(part.name, {"force", "guess", "units", "cphf", "charge"})) {
            refuse(place, "expected a blank between '" + base::shown(part.name) + "' and other keywords, found " +
                              quoted(keyword.text));
        }
    }
}

/// Stops the run at a keyword that cannot be carried over.
void check_keyword(const route_keyword& keyword, const std::string& place) {
    const std::string shown = quoted(keyword.text);
    check_joined(keyword, place);
    if (is_geometry(keyword) && option_of(keyword, {"readharm", "oldharm", "checkharm"}) != nullptr) {
        refuse(place, shown + " adds a potential that is fixed in space and cannot be kept; take it out");
    }
    if (is_geometry(keyword) || is_job_type(keyword)) {
        return;
    }
    if (is_one_of(keyword.name(), {"nonstd", "nonstandard"}) || keyword.name().starts_with("extraover")) {
        refuse(place, shown + " lists overlays, which cannot be kept; give the route of a method with --route");
    }
    if (std::any_of(keyword.parts.begin(), keyword.parts.end(),
                    [](const route_part& part) { return is_compound_method(part.name); })) {
        refuse(place, shown + " is a compound method, for which there are no forces; give the route of another method");
    }
    if (keyword.name() == "charge" &&
        std::any_of(keyword.parts.front().options.begin(), keyword.parts.front().options.end(),
                    [](const route_option& option) { return option.name.starts_with("stan"); })) {
        refuse(place, shown +
                          " has its charges in the standard orientation, which the jobs will not have; give them in "
                          "the frame of the input");
    }
    if (keyword.name() == "oniom") {
        refuse(place, shown + " needs layers of atoms, which cannot be kept; give the route of one method");
    }
    if (is_one_of(keyword.name(), {"counterpoise", "counter"}) ||
        (keyword.name() == "guess" && option_of(keyword, {"fragment"}) != nullptr)) {
        refuse(place, shown + " needs fragments, which cannot be kept; give a route without it with --route");
    }
    // Orbitals are exchanged by their numbers among those that are read; the jobs will start from others.
    const bool exchanges_read_orbitals =
        keyword.name() == "guess" && option_of(keyword, {"alter", "permute"}) != nullptr &&
        std::any_of(keyword.parts.front().options.begin(), keyword.parts.front().options.end(), reads_orbitals);
    if (exchanges_read_orbitals || has_part(keyword, {"chkbas", "chkbasis", "restart"}) ||
        option_of(keyword, {"chkbas", "restart"}) != nullptr ||
        (keyword.name() != "guess" && option_of(keyword, {"check", "chk"}) != nullptr)) {
        refuse_checkpoint(place, keyword);
    }
}

/// A keyword with some options of its first part left out; the text is as written where none is.
///   is_kept  in  tells of each option
template <class predicate>
route_keyword with_options(const route_keyword& keyword, predicate is_kept) {
    route_keyword kept = keyword;
    kept.parts.front().options.clear();
    std::string list;
    for (const route_option& option : keyword.parts.front().options) {
        if (is_kept(option)) {
            kept.parts.front().options.push_back(option);
            list += (list.empty() ? "" : ",") + option.text;
        }
    }
    if (kept.parts.front().options.size() == keyword.parts.front().options.size()) {
        return keyword;
    }
    kept.text = keyword.text.substr(0, keyword.text.find_first_of("=("));
    const bool is_one_word = kept.parts.front().options.size() == 1 && list.find_first_of("=/") == std::string::npos;
    if (is_one_word) {
        kept.text += "=" + list;
    } else if (!list.empty()) {
        kept.text += "=(" + list + ")";
    }
    for (std::size_t i = 1; i < keyword.parts.size(); ++i) {
        kept.text += '/';
        kept.text += keyword.parts[i].text;
    }
    return kept;
}

/// Keeps what can stay of `geom`.
void add_geometry(const route_keyword& keyword, bool keep_connectivity, route& ready) {
    route_keyword kept = with_options(keyword, [&](const route_option& option) {
        return is_kept_of_geometry(option) && (keep_connectivity || !is_connectivity(option));
    });
    if (!kept.parts.front().options.empty()) {
        ready.keywords.push_back(std::move(kept));
    }
}

/// Keeps what can stay of `guess`: there will be no orbitals to read, and the job has to go on after the guess.
void add_guess(const route_keyword& keyword, int line, route& ready, std::vector<notice>& notices) {
    const auto is_kept = [&](const route_option& option) {
        if (reads_orbitals(option)) {
            notices.push_back({line, quoted(option.text) + " of " + quoted(keyword.text) +
                                         " left out: the jobs have no checkpoint file to read a guess from"});
            return false;
        }
        if (option.name == "only") {
            notices.push_back({line, quoted(option.text) + " of " + quoted(keyword.text) +
                                         " left out: the jobs must go on after the guess"});
            return false;
        }
        return true;
    };
    route_keyword kept = with_options(keyword, is_kept);
    if (!kept.parts.front().options.empty() || keyword.parts.front().options.empty()) {
        ready.keywords.push_back(std::move(kept));
    }
}

/// Leaves out what a calculation would take from that of an earlier job.
void add_without_earlier(const route_keyword& keyword, int line, route& ready, std::vector<notice>& notices) {
    ready.keywords.push_back(with_options(keyword, [&](const route_option& option) {
        if (!reads_earlier_results(keyword, option)) {
            return true;
        }
        notices.push_back({line, quoted(option.text) + " of " + quoted(keyword.text) +
                                     " left out: the jobs have no checkpoint file to read from"});
        return false;
    }));
}

/// Whether a keyword keeps the input's frame.
bool is_without_symmetry(const route_keyword& keyword) {
    return is_one_of(keyword.name(), {"nosymm", "nosym", "nosymmetry"}) ||
           (is_symmetry(keyword) &&
            std::any_of(keyword.parts.front().options.begin(), keyword.parts.front().options.end(),
                        [](const route_option& option) { return option.name == "none"; }));
}

void tell_of_removed(const route_keyword& keyword, int line, std::vector<notice>& notices) {
    const std::string shown = quoted(keyword.text);
    if (!keyword.stray_options.empty()) {
        notices.push_back({line, quoted(keyword.stray_options) + " taken for options of '" + keyword.name() +
                                     "', and left out with it"});
    }
    if (keyword.name().starts_with("stab")) {
        notices.push_back({line, shown + " left out: make sure that the jobs find the stable wave function"});
    } else if (option_of(keyword, {"readiso", "rdiso"}) != nullptr) {
        notices.push_back({line, shown +
                                     " left out: isotopes do not change the forces, name them when the frequencies are "
                                     "computed"});
    }
}

/// Leaves out what only adds to the results: the options of it that have sections, or the whole keyword.
void add_without_analysis(const route_keyword& keyword, int line, route& ready, std::vector<notice>& notices) {
    if (is_analysis(keyword)) {
        notices.push_back({line, quoted(keyword.text) + (writes_a_shared_file(keyword)
                                                             ? " left out: all jobs would write the same file"
                                                             : " left out: forces do not depend on it")});
        return;
    }
    route_keyword kept = with_options(keyword, [&](const route_option& option) {
        if (!is_analysis_with_section(keyword, option)) {
            return true;
        }
        notices.push_back(
            {line, quoted(option.text) + " of " + quoted(keyword.text) + " left out: forces do not depend on it"});
        return false;
    });
    if (!kept.parts.front().options.empty() || keyword.parts.front().options.empty()) {
        ready.keywords.push_back(std::move(kept));
    }
}

void add_missing(std::string_view name, route& ready) {
    ready.keywords.push_back({std::string(name), {{std::string(name), std::string(name), {}}}});
}

}  // namespace

bool is_optimization(const route_keyword& keyword) {
    return begins_with_any(keyword.name(), {"opt"}) || is_one_of(keyword.name(), {"fopt", "popt"});
}

bool is_job_type(const route_keyword& keyword) {
    return is_optimization(keyword) || begins_with_any(keyword.name(), {"freq", "irc", "stab", "traj"}) ||
           is_one_of(keyword.name(),
                     {"sp", "singlepoint", "scan", "polar", "admp", "bomd", "forces", "volume", "eet", "lst", "lsta"});
}

bool is_stray_option(const route_keyword& keyword) {
    return keyword.parts.size() == 1 &&
           (is_one_of(keyword.name(), {"ts",        "qst2",      "qst3",   "tight",   "verytight", "loose", "expert",
                                       "cartesian", "redundant", "rfo",    "rcfc",    "readfc",    "raman", "vcd",
                                       "roa",       "numer",     "enonly", "forward", "reverse",   "lqa",   "hpc"}) ||
            begins_with_any(keyword.name(),
                            {"calcfc", "calcall",  "estmfc",  "newestm",  "noeigen", "eigentest", "modred",
                             "addred", "z-mat",    "zmat",    "gdiis",    "gediis",  "maxcyc",    "maxstep",
                             "maxp",   "stepsize", "recalc",  "notrust",  "noraman", "hpmode",    "readiso",
                             "anharm", "savenorm", "intmode", "hindered", "readopt", "readfreez"}));
}

bool is_restart(const route& job) {
    return std::any_of(job.keywords.begin(), job.keywords.end(), [](const route_keyword& keyword) {
        return keyword.name() == "restart" || (is_job_type(keyword) && option_of(keyword, {"restart"}) != nullptr);
    });
}

bool asks_for_section(const route_keyword& keyword) { return sections_of(keyword) > 0; }

bool has_connectivity(const route& job) {
    return std::any_of(job.keywords.begin(), job.keywords.end(), [](const route_keyword& keyword) {
        return is_geometry(keyword) && option_of(keyword, {"connect", "modconnect"}) != nullptr;
    });
}

std::vector<section_claim> claims_of(const route& job) {
    std::vector<section_claim> claims;
    for (const route_keyword& keyword : job.keywords) {
        if (is_geometry(keyword) || is_optimization(keyword)) {
            for (const route_option& option : keyword.parts.front().options) {
                claim_geometry_option(claims, keyword, option);
            }
        } else if (is_job_type(keyword)) {
            for (const route_option& option : keyword.parts.front().options) {
                claim_job_option(claims, keyword, option);
            }
        } else {
            claim_analysis(claims, keyword);
            claim_kept(claims, keyword);
        }
    }
    std::stable_sort(claims.begin(), claims.end(),
                     [](const section_claim& a, const section_claim& b) { return a.place < b.place; });
    return claims;
}

bool is_path(const route_keyword& keyword) {
    return is_one_of(keyword.name(), {"scan", "admp", "bomd"}) || begins_with_any(keyword.name(), {"irc", "traj"});
}

std::string may_end_elsewhere(const route& job) {
    for (const route_keyword& keyword : job.keywords) {
        if (is_path(keyword)) {
            return keyword.text;
        }
    }
    for (const section_claim& claim : claims_of(job)) {
        if (claim.place == frozen_place || claim.place == modredundant_place) {
            return claim.owner;
        }
    }
    return {};
}

std::string fixed_in_space(const route& job) {
    for (const route_keyword& keyword : job.keywords) {
        if (has_part(keyword, {"field", "charge", "massage"}) ||
            (keyword.name() == "guess" && option_of(keyword, {"cards", "input"}) != nullptr)) {
            return keyword.text;
        }
    }
    return {};
}

route ready_route(const route& job, bool keep_connectivity, const std::string& place, int line,
                  std::vector<notice>& notices) {
    route ready{job.head, {}};
    if (lower(job.head) == "#t") {  // what it leaves out of a log may be what is needed of it
        ready.head = "#";
    }
    bool has_force = false;
    bool has_nosymm = false;
    for (const route_keyword& keyword : job.keywords) {
        check_keyword(keyword, place);
        if (is_job_type(keyword)) {
            tell_of_removed(keyword, line, notices);
        } else if (is_geometry(keyword)) {
            add_geometry(keyword, keep_connectivity, ready);
        } else if (keyword.name() == "guess") {
            add_guess(keyword, line, ready, notices);
        } else if (is_symmetry(keyword) && !is_without_symmetry(keyword)) {
            notices.push_back({line, quoted(keyword.text) + " left out: 'nosymm' takes its place"});
        } else if (std::any_of(keyword.parts.front().options.begin(), keyword.parts.front().options.end(),
                               [&](const route_option& option) { return reads_earlier_results(keyword, option); })) {
            add_without_earlier(keyword, line, ready, notices);
        } else if (is_analysis(keyword) || is_population(keyword) || is_properties(keyword) ||
                   keyword.name() == "cphf") {
            add_without_analysis(keyword, line, ready, notices);
        } else if (keyword.name() == "units") {
            notices.push_back({line, quoted(keyword.text) + " left out: coordinates are written in angstrom"});
        } else if ((keyword.name() == "force" && has_force) || (is_without_symmetry(keyword) && has_nosymm)) {
            continue;
        } else {
            has_force = has_force || keyword.name() == "force";
            has_nosymm = has_nosymm || is_without_symmetry(keyword);
            ready.keywords.push_back(keyword);
        }
    }
    if (!has_force) {
        add_missing("force", ready);
    }
    if (!has_nosymm) {
        add_missing("nosymm", ready);
    }
    return ready;
}

}  // namespace displacement_generator::gaussian
