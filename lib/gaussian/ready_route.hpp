#pragma once

#include <string>
#include <vector>

#include "notice.hpp"
#include "route.hpp"

// For this room's own use: what becomes of each keyword of a route, and whose the sections behind the molecule are.

namespace displacement_generator::gaussian {

/// A section that a keyword has behind the molecule.
struct section_claim {
    enum class fate { kept, removed, unknown_count };

    int place;          ///< a `section_place`
    std::string owner;  ///< the keyword, as written
    fate what;
};

/// Places of sections, in Gaussian's order. Those at `other_place` are not told apart, nor those at `analysis_place`:
/// of what is computed after the energy.
enum section_place {
    connectivity_place,
    frozen_place,
    modredundant_place,
    isotopes_place,
    force_field_place,
    frequencies_place,
    charges_place,
    trajectory_place,
    path_place,
    other_place,
    analysis_place,
};

/// Whether a keyword begins a job type, or says how to go on with one, and is left out of a ready route.
bool is_job_type(const route_keyword& keyword);

/// Whether a keyword optimises the geometry.
bool is_optimization(const route_keyword& keyword);

/// Whether a keyword moves the atoms along a path, which does not end at a stationary point.
bool is_path(const route_keyword& keyword);

/// Whether a word by itself can only be an option of a job type.
bool is_stray_option(const route_keyword& keyword);

/// Whether a route goes on with a job that was broken off: what else it asks for is in a checkpoint file.
bool is_restart(const route& job);

/// The sections that a route has behind the molecule, in order; claims of one place below `other_place` are one.
std::vector<section_claim> claims_of(const route& job);

/// Whether a keyword that stays has a section behind the molecule.
bool asks_for_section(const route_keyword& keyword);

/// Whether the connectivity is read.
bool has_connectivity(const route& job);

/// The keyword that puts a field or charges in space; empty where there is none.
std::string fixed_in_space(const route& job);

/// A route without what a ready one cannot have, with `force` and `nosymm`.
///   job               in
///   keep_connectivity in   whether `geom=connectivity` may stay
///   place             in   what a message begins with
///   line              in   what a notice names
///   notices           in/out
/// Stops the run where a keyword cannot be carried over rightly.
route ready_route(const route& job, bool keep_connectivity, const std::string& place, int line,
                  std::vector<notice>& notices);

}  // namespace displacement_generator::gaussian
