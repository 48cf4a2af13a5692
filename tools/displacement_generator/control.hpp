#pragma once

#include <string>
#include <string_view>

#include "base/text.hpp"

namespace displacement_generator::generator {

/// The settings of a run, with their defaults.
struct control {
    bool symm = true;        ///< whether symmetry is looked for and used
    base::text<200> qctype;  ///< accepted, used by nothing
    base::text<200> task;    ///< accepted, used by nothing
    base::text<200> fxyz;    ///< the Gaussian input
    double dx = 0.001F;      ///< step, in the units of the input: the single-precision 0.001, widened
    bool std_orient = true;  ///< whether the molecule is turned into standard orientation
    std::string fxyz_place;  ///< where fxyz is set, "FILE:LINE", or the control file alone; for messages
    int disp_sign = -1;      ///< 1: the first step of each pair is labelled "+"; anything else: the second
};

/// Reads the settings from the namelist group `control` of a control file, the first one in the file; whatever follows
/// it is not read. The file may be a pipe.
///   path  in  the control file: of a longer text the first 200 characters, without trailing blanks
/// A file that cannot be read, has no such group within the first 1048576 bytes, or a group with a mistake in it stops
/// the run with a message that names the file and, where there is one, the line.
control read_control(std::string_view path);

}  // namespace displacement_generator::generator
