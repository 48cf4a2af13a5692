#pragma once

#include <cstddef>
#include <functional>

namespace displacement_generator::assembler {

/// Does something for each file, for several at a time where there are many files and several processors.
///   count  in  how many files
///   work   in  is called once for each number from 0 to count - 1, by any thread; must not throw
///   told   in  is called by this thread, now and then, with how many files are done or under way
void in_parallel(
    std::size_t count, const std::function<void(std::size_t)>& work,
    const std::function<void(std::size_t)>& told = [](std::size_t) {});

}  // namespace displacement_generator::assembler
