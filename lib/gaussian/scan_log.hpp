#pragma once

#include <optional>
#include <string>
#include <vector>

#include "archive.hpp"
#include "notice.hpp"
#include "source.hpp"

// The first half of reading a log: one pass over its lines that keeps the texts of the last complete tables.

namespace displacement_generator::gaussian {

/// The rows of a table as they stand in the log, a line each.
struct log_table {
    int line = 0;  ///< of the heading; 0: there is no such table
    std::string rows;
};

/// A place of the potential surface, and what the log has about it.
struct log_point {
    log_table input;               ///< positions in the input's frame
    log_table standard;            ///< positions in the standard orientation
    log_table forces;              ///< empty rows with a line other than 0: a table that is broken
    bool axes_restored = false;    ///< whether the log says before the forces that it goes back to the input's axes
    std::optional<double> energy;  ///< of the self-consistent field
    int failed_line = 0;           ///< of the message that it did not converge, unless it did so later
    int dipole_line = 0;
    std::string dipole;  ///< the fields of " Dipole        ="

    [[nodiscard]] bool is_empty() const { return input.line == 0 && standard.line == 0; }
};

struct scanned_job {
    int number = 0;
    int line = 0;
    std::string route;
    std::string user_route;  ///< of this job or the last one before it whose route a user wrote
    bool has_charge = false;
    int charge = 0;
    int multiplicity = 1;
    int geometries = 0;
    log_point last;
    log_point with_forces;  ///< the last point before `last` that has forces
    bool has_archive = false;
    archive_entry archive;
    bool ended_normally = false;

    [[nodiscard]] bool has_geometry() const { return geometries != 0 || !archive.molecule.numbers.empty(); }
};

struct scanned_log {
    int jobs = 0;
    int ended_normally = 0;
    std::string first_route;
    scanned_job job;  ///< the last one that has a geometry
};

/// Goes over a log. Arguments as for read_log. Nothing in a log stops it.
scanned_log scan_log(source& from, std::vector<notice>& notices);

}  // namespace displacement_generator::gaussian
