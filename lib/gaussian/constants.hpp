#pragma once

namespace displacement_generator::gaussian {

/// The Bohr radius in angstrom with which Gaussian 16 converts: CODATA 2010. Only its own value gives back the
/// angstroms that Gaussian was given. Later values (CODATA 2018: 0.529177210903) and that of Gaussian 09 (CODATA 2006:
/// 0.52917720859) differ from it by less than half of the last of the nine digits a checkpoint holds.
inline constexpr double bohr_in_angstrom = 0.52917721092;

}  // namespace displacement_generator::gaussian
