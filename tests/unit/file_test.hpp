#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <iterator>

#include "file/file.hpp"
#include "support.hpp"

namespace displacement_generator::support {

/// How many descriptors this process has open.
inline std::ptrdiff_t open_descriptors() {
    const std::filesystem::directory_iterator first("/proc/self/fd");
    return std::distance(first, std::filesystem::directory_iterator());
}

/// For as long as this lives standard input is closed, and the first file opened gets its number, 0.
class no_standard_input {
  public:
    no_standard_input() : saved_(::dup(STDIN_FILENO)) { ::close(STDIN_FILENO); }
    ~no_standard_input() {
        ::dup2(saved_, STDIN_FILENO);
        ::close(saved_);
    }
    no_standard_input(const no_standard_input&) = delete;
    no_standard_input& operator=(const no_standard_input&) = delete;

  private:
    int saved_;
};

/// A test in a scratch folder. Whatever it does, and however the routines that it calls end, it has to leave units and
/// descriptors as it found them. Units are given out from 100 upward, so one that is kept shows as 100.
class file_test : public testing::Test {
  protected:
    void TearDown() override {
        EXPECT_FALSE(file::is_connected(100));
        EXPECT_EQ(open_descriptors(), descriptors_before_);
    }

  private:
    scratch_folder scratch_;
    std::ptrdiff_t descriptors_before_ = open_descriptors();
};

}  // namespace displacement_generator::support
