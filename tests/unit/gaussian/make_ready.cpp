#include <gtest/gtest.h>

#include "gaussian/ready_input.hpp"
#include "gjf/gjf.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

TEST(make_ready, placeholder) { EXPECT_EQ(1, 1); }

}  // namespace
