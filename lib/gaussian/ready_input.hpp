#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "read_input.hpp"

// A ready input: what the generator takes, and what Gaussian then computes forces from in the frame of the file.

namespace displacement_generator::gaussian {

/// The parts of a ready input.
struct ready_input {
    std::vector<std::string> link0;
    std::string route;  ///< on one line
    std::vector<std::string> title;
    molecule atoms;
    std::vector<section> sections;
    /// The keyword that puts a field or charges in space: the molecule may be neither moved nor turned then. Empty
    /// where there is none.
    std::string fixed_in_space;
};

/// Makes a job ready. Of its route the job types, `geom` (but for connectivity), `units` and what only adds to the
/// results or writes a file that all jobs would share go, `force` and `nosymm` come, and everything else stays as
/// written. The sections of what goes go with it, and so do Link 0 lines of files
/// that all jobs would share. Title lines that the generator would take for a route are changed.
///   source       in      an input
///   replacement  in      a route in place of the source's, from its "#" on, made ready in the same way; empty: the
///                        source's own. The source's sections are kept where it asks for any.
///   notices      in/out
/// Stops the run with a message that tells what to do where something cannot be carried over rightly.
ready_input make_ready(const input& source, std::string_view replacement, std::vector<notice>& notices);

/// The same for a molecule that was not in an input. A ready route that asks for a section stops the run, as there is
/// none.
///   name   in  of the file that the molecule is from, or "the new route" for one that is in no file
///   line   in  of the route in that file; 0: none
///   route  in  from its "#" on
///   title  in  one line
ready_input make_ready(const std::string& name, int line, std::string_view route, std::string_view title,
                       const molecule& atoms, std::vector<notice>& notices);

/// The keyword of a route with which a job does not end at a stationary point, or may not, as its section may freeze or
/// scan coordinates; empty where there is none.
std::string may_end_elsewhere(const route& job);

/// The text of a ready input, which the generator takes and read_input reads again as the same molecule, to the last
/// digit printed. Stops the run where the generator would misunderstand it, and where a coordinate does not fit its
/// columns with a blank before it, that is at 10000 and at -1000 angstrom.
std::string write_input(const ready_input& ready);

}  // namespace displacement_generator::gaussian
