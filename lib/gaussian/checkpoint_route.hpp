#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "checkpoint.hpp"
#include "notice.hpp"

// Routes that no user wrote.

namespace displacement_generator::gaussian {

/// Whether Gaussian made a route itself, to go on with a job (`opt freq`): method, basis and solvent of such a job are
/// in a checkpoint file, and its route does not tell them all.
bool is_continuation(std::string_view route);

/// Whether method and basis of a route are in a checkpoint file: Gaussian made the route itself, or a user goes on with
/// a job that was broken off and does not name them again.
///   place  in  what a message begins with, should it be no route
bool is_incomplete(std::string_view route, const std::string& place);

/// The route of the job that wrote a checkpoint: that of its section, or one made of method and basis in its line 2.
///   from     in
///   name     in      of the file, as messages show it
///   notices  in/out  that the route is made of line 2, which does not tell all
/// Stops the run with a message that asks for a route where line 2 does not tell method and basis either.
std::string checkpoint_route(const checkpoint& from, const std::string& name, std::vector<notice>& notices);

}  // namespace displacement_generator::gaussian
