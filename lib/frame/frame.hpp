#pragma once

#include <Eigen/Core>
#include <vector>

// The frame in which the generator computes fewest displacements: symmetry elements in any direction, the turn that
// puts the best of them on the axes, and coordinates that are symmetric to the last printed digit.
//
// A molecule is two arrays: `kinds`, one int an atom, where atoms of equal kind may be exchanged, and `positions`, a
// column an atom, in angstrom. Printed means with 8 decimals.

namespace displacement_generator::frame {

/// The generator's tolerance in angstrom: 0.001 in single precision, widened.
constexpr double generator_tolerance = 0.001F;

/// The tolerances that prepare and keep_frame take, in angstrom. Below the first, printing alone might move an atom too
/// far; above the last, atoms that are bonded begin to look alike.
constexpr double least_tolerance = 1e-6;
constexpr double largest_tolerance = 0.1;

/// Atoms closer than this (angstrom) are refused: the generator takes one for the other.
constexpr double closest_atoms = 4.0 * 0.001;

/// No coordinate (angstrom) of a source may reach this.
constexpr double largest_coordinate = 10000.0;

// ---- Symmetry elements

/// What stands along one direction through the centre.
struct element {
    Eigen::Vector3d direction;  ///< unit vector; its sign means nothing
    bool axis = false;          ///< a twofold axis along it
    bool plane = false;         ///< a mirror plane at right angles to it
};

/// Where all atoms are, within half the tolerance: at one point, on one line, or elsewhere.
enum class extent { point, line, space };

struct symmetry_elements {
    Eigen::Vector3d centre;           ///< centroid of the atoms, each with weight 1; every operation keeps it
    extent atoms = extent::space;     ///< point and line: infinitely many elements, of which `directions` names few
    bool inversion = false;           ///< an inversion centre at `centre`
    std::vector<element> directions;  ///< space: all; line: the line alone; point: none
    double angle = 0.0;               ///< radian: how far the tolerance can turn a direction
};

/// Finds all inversion centres, twofold axes and mirror planes. An operation is present where it carries each atom to
/// within `tolerance` of an atom of the same kind, and no two to the same. Its direction is the one of least squares
/// over all these pairs.
///   kinds      in  one an atom
///   positions  in  angstrom
///   tolerance  in  angstrom
symmetry_elements find_elements(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance);

// ---- Frames

struct candidate_frame {
    Eigen::Matrix3d rotation;  ///< proper; a point p about the centre goes to rotation * p
    int computed = 0;          ///< displacements to compute if all the elements on its axes hold
};

/// All frames worth a trial, best first: fewest displacements, then least turn from the frame as it is, then the
/// rotation's elements, largest first, in the order xx xy xz yx ... zz. Elements that leave a turn free are brought to
/// the nearest axis by the shortest way. The last frame is that of the source.
///   positions  in  angstrom
///   found      in  their elements
///   tolerance  in  that of find_elements
std::vector<candidate_frame> candidate_frames(const Eigen::Matrix3Xd& positions, const symmetry_elements& found,
                                              double tolerance);

// ---- What the generator will find

struct displacement_count {
    int group = 1;     ///< ipg of symmetry::point_group, 1..8
    int computed = 0;  ///< displacements to compute, of 6 an atom
};

/// What symmetry::point_group finds for the positions as they stand.
displacement_count count_displacements(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions);

// ---- Coordinates

struct frame_result {
    Eigen::Matrix3Xd positions;  ///< angstrom, each the double nearest to a number of 8 decimals; no -0
    Eigen::Matrix3d rotation;    ///< positions = rotation * source + shift, but for `largest_move`
    Eigen::Vector3d shift;       ///< angstrom
    int group = 1;               ///< what the generator finds, ipg 1..8
    int computed = 0;            ///< what the generator computes
    double largest_move = 0.0;   ///< angstrom: the farthest that an atom lies from rotation * source + shift
    bool exact = true;           ///< every operation the generator finds maps the positions onto themselves
};

/// Makes the positions exactly symmetric about the axes and the origin as they are, and rounds them to 8 decimals. Of
/// all groups for which no atom moves by more than the tolerance and no two atoms come to half their distance, the one
/// with fewest displacements is taken; each atom goes to the mean of its images. Rotation is the unit matrix, shift 0.
///
/// `exact` is false only where `tolerance` is so much smaller than the generator's own that the generator finds an
/// operation for which an atom would have to move farther.
///
/// Stops the run where there are not as many kinds as positions, a tolerance is outside least_tolerance..
/// largest_tolerance, a coordinate is no number or too large, or two atoms are too close.
frame_result keep_frame(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance);

/// The same in the best frame: the centroid of the atoms at the origin, the elements that leave fewest displacements on
/// the axes. The turn is the least that does this; a molecule without elements is not turned. What was prepared before
/// comes back as it is.
///
/// Elements are looked for to twice the tolerance: an atom moves by half the distance between its partner and its
/// image. What counts is the move.
///
/// Making a molecule symmetric can bring to light further elements. They are used as long as the moves together stay
/// within the tolerance; where they do not, preparing the result once more may find them.
frame_result prepare(const std::vector<int>& kinds, const Eigen::Matrix3Xd& positions, double tolerance);

}  // namespace displacement_generator::frame
