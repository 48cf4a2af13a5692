#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support.hpp"

// What the tests of failing machines share: one run that is good, and what must hold of one that is not.

namespace displacement_generator::faults {

/// Writes the control file "control" and the Gaussian input "mol.gjf" of a water molecule into the current folder. Its
/// geometry files are shorter than 512 bytes, its list is longer.
///   dx  the step as the control file has it
void write_inputs(std::string_view dx = "0.01");

/// The files of "PES-0", in the order in which they are opened: the list, then the geometry files.
std::vector<std::string> output_names();

/// The inputs and the outputs of a good run with this step.
const support::tree& good_tree(const std::string& dx = "0.01");

/// Runs the program in the current folder on "control".
support::outcome run(const std::vector<std::string>& environment = {});

/// Runs a line of sh in the current folder; "$0" stands for the program.
support::outcome run_in_shell(const std::string& line, const std::vector<std::string>& environment = {});

/// Everything below the current folder, as support::read_tree names it; a link stays a link, wherever it points.
support::tree tree_here();

/// Writes the files of a tree into the current folder.
void write_tree(const support::tree& tree);

/// Whether there is a list here that says that all files before it are whole.
bool says_complete();

/// Checks that a run succeeded: nothing printed, and all outputs there, byte for byte.
void expect_good(const support::outcome& result);

/// Checks that a run stopped with this message and has not left a list that says that it is complete.
void expect_stopped(const support::outcome& result, const std::string& message);

/// The end of a message about a device without room: what the whole run needs, as the files of a good run have it.
std::string need();

/// What runs the program, in a line of sh, without the right of root to read and write everything; blank for others.
/// Result: false where that right cannot be taken away.
bool find_plain_user(std::string& prefix);

/// The line that the program prints for a message on standard error.
std::string error_line(const std::string& message);

/// The line that the program prints for an input that will not open.
std::string input_line(const std::string& name);

/// What it prints on standard error in addition, where the first line of "control" names that input.
std::string input_reason(const std::string& name, const std::string& reason);

/// A name in the file system that this process listens at.
class listening_socket {
  public:
    explicit listening_socket(const std::string& name);
    ~listening_socket();
    listening_socket(const listening_socket&) = delete;
    listening_socket& operator=(const listening_socket&) = delete;

  private:
    int descriptor_;
};

}  // namespace displacement_generator::faults
