#include "in_parallel.hpp"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace displacement_generator::assembler {

void in_parallel(std::size_t count, const std::function<void(std::size_t)>& work,
                 const std::function<void(std::size_t)>& told) {
    constexpr std::size_t most_threads = 16;
    constexpr std::size_t files_worth_a_thread = 16;
    const std::size_t useful = std::min(count / files_worth_a_thread, most_threads);
    const std::size_t helpers = std::min<std::size_t>(useful, std::max(std::thread::hardware_concurrency(), 1U) - 1);
    std::atomic<std::size_t> next = 0;
    std::vector<std::jthread> threads;
    try {
        for (std::size_t i = 0; i < helpers; ++i) {
            threads.emplace_back([&] {
                for (std::size_t n = next++; n < count; n = next++) {
                    work(n);
                }
            });
        }
    } catch (const std::system_error&) {  // no more threads: those that there are do it all
    }
    for (std::size_t n = next++; n < count; n = next++) {
        work(n);
        told(n + 1);
    }
}

}  // namespace displacement_generator::assembler
