#pragma once

#include "molecule.hpp"
#include "source.hpp"

namespace displacement_generator::gaussian {

/// The last frame of an xyz file: a line with the count, a comment, and for each atom symbol or number, x, y and z in
/// angstrom; what stands behind them is not looked at. Charge and multiplicity are the caller's.
struct xyz_contents {
    int frames = 0;
    int line = 0;  ///< of the count of the last one
    gaussian::molecule molecule;
};

/// Reads an xyz file.
///   from  in/out  to the end
/// Stops the run with "NAME:LINE: ..." at what does not belong there, and where the last frame is not complete.
xyz_contents read_xyz(source& from);

}  // namespace displacement_generator::gaussian
