#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "gaussian/notice.hpp"
#include "gaussian/ready_input.hpp"
#include "options.hpp"

namespace displacement_generator::preparer {

/// Which file of the machine an open one is.
struct file_identity {
    bool is_regular = false;
    dev_t device = 0;
    ino_t inode = 0;
};

/// Which file a descriptor is open for.
file_identity identity_of(int descriptor);

/// Whether both are one and the same regular file.
bool is_same(const file_identity& a, const file_identity& b);

/// What was read of SOURCE.
struct source_molecule {
    std::string name;  ///< as messages show it
    file_identity file;
    std::string description;  ///< "log of 1 job, 9 geometries, the last one taken"
    std::string old_route;    ///< as written; where the source has none, as --route has it
    gaussian::ready_input ready;
    std::vector<gaussian::notice> notices;
};

/// Reads SOURCE, recognises it by its content, and makes it ready but for its coordinates.
///   asked  in  source, route, charge and multiplicity
/// Stops the run with "NAME:LINE: ..." where something is wrong or cannot be carried over rightly.
source_molecule read_source(const options& asked);

}  // namespace displacement_generator::preparer
