#pragma once

// Physical constants: CODATA 2018. The first ones are those of the adjustment (exact where marked), in SI units; what
// is used follows from them below, so that all agree with one another. docs/frequencies.md lists the values.

namespace displacement_generator::vibration {

namespace si {
constexpr double speed_of_light = 299792458.0;            ///< m/s, exact
constexpr double planck = 6.62607015e-34;                 ///< J s, exact
constexpr double elementary_charge = 1.602176634e-19;     ///< C, exact
constexpr double avogadro = 6.02214076e23;                ///< 1/mol, exact
constexpr double atomic_mass_unit = 1.66053906660e-27;    ///< kg
constexpr double electron_mass = 9.1093837015e-31;        ///< kg
constexpr double hartree = 4.3597447222071e-18;           ///< J
constexpr double bohr = 5.29177210903e-11;                ///< m
constexpr double vacuum_permittivity = 8.8541878128e-12;  ///< F/m
}  // namespace si

/// Angstrom in a bohr.
constexpr double bohr_in_angstrom = si::bohr * 1e10;

/// Electron masses in an atomic mass unit.
constexpr double amu_in_electron_masses = si::atomic_mass_unit / si::electron_mass;

/// The wavenumber (cm-1) of a photon whose energy is one hartree.
constexpr double hartree_in_wavenumbers = si::hartree / (si::planck * si::speed_of_light) / 100.0;

/// The force constant of one hartree/bohr^2 in mdyne/angstrom (100 N/m).
constexpr double force_constant_in_mdyne_per_angstrom = si::hartree / (si::bohr * si::bohr) / 100.0;

/// One e^2/amu of |dipole derivative by normal coordinate|^2 as an integrated absorption coefficient in km/mol:
/// A = N_A e^2 / (12 epsilon_0 c^2 amu), for a transition from the ground state in the double-harmonic approximation.
constexpr double intensity_in_km_per_mol =
    si::avogadro * si::elementary_charge * si::elementary_charge /
    (12.0 * si::vacuum_permittivity * si::speed_of_light * si::speed_of_light * si::atomic_mass_unit) / 1000.0;

}  // namespace displacement_generator::vibration
