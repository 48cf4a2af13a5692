#pragma once

// Masses for vibrations, in atomic mass units. The table `element::mass` is another one: by it atoms are told apart.

namespace displacement_generator::element {

/// An isotope: protons and neutrons together, and its mass (amu).
struct isotope {
    int mass_number;
    double mass;
};

/// The most abundant isotope of an element in nature. Where none occurs, the one that lives longest of those known; of
/// technetium, whose 97 and 98 live equally long, 98. Masses: AME2020 (Wang et al., Chinese Physics C 45, 030003,
/// 2021), to eight decimals at the most; from 104 on its estimates, to three.
///   number  in  atomic number 1..118; another one stops the run
isotope main_isotope(int number);

/// The standard atomic weight (amu): the mean over the isotopes as they occur. IUPAC 2021, abridged to five digits
/// (Prohaska et al., Pure and Applied Chemistry 94, 573, 2022). An element that has none gets the mass of its main
/// isotope.
///   number  in  atomic number 1..118; another one stops the run
double atomic_weight(int number);

}  // namespace displacement_generator::element
