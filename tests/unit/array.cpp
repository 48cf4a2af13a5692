#include "base/array.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string>
#include <vector>

#include "base/text.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

TEST(array, view1_has_elements_from_its_lower_to_its_upper_index) {
    struct row {
        int lower;
        int upper;
    };
    const row rows[] = {{1, 1}, {1, 4}, {0, 100}, {-3, 2}, {-9, -7}, {INT_MAX - 1, INT_MAX}, {INT_MIN, INT_MIN + 2}};
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.lower);
        std::vector<int> elements(base::extent(tested.lower, tested.upper));
        const base::view1<int> view("v", elements.data(), tested.lower, tested.upper);
        for (std::size_t i = 0; i < elements.size(); ++i) {
            EXPECT_EQ(&view(static_cast<int>(tested.lower + static_cast<long long>(i))), elements.data() + i);
        }
        EXPECT_EQ(view.lower(), tested.lower);
        EXPECT_EQ(view.upper(), tested.upper);
        EXPECT_STREQ(view.name(), "v");
    }
}

TEST(array, view1_stops_the_run_outside_its_range) {
    struct row {
        int lower;
        int upper;
        int index;
        const char* message;
    };
    const row rows[] = {
        {1, 3, 0, "array 'lines': index 0 is outside 1..3|standard error|2"},
        {1, 3, 4, "array 'lines': index 4 is outside 1..3|standard error|2"},
        {1, 3, INT_MIN, "array 'lines': index -2147483648 is outside 1..3|standard error|2"},
        {1, 3, INT_MAX, "array 'lines': index 2147483647 is outside 1..3|standard error|2"},
        {0, 2, -1, "array 'lines': index -1 is outside 0..2|standard error|2"},
        {0, 2, 3, "array 'lines': index 3 is outside 0..2|standard error|2"},
        {-2, 0, 1, "array 'lines': index 1 is outside -2..0|standard error|2"},
        {1, 0, 1, "array 'lines': index 1 is outside 1..0|standard error|2"},
        {1, 0, 0, "array 'lines': index 0 is outside 1..0|standard error|2"},
    };
    int elements[3] = {};
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.message);
        const base::view1<int> view("lines", elements, tested.lower, tested.upper);
        EXPECT_EQ(stopped_with([&] { view(tested.index) = 1; }), tested.message);
    }
    for (const int element : elements) {
        EXPECT_EQ(element, 0);
    }
}

TEST(array, view1_checks_a_whole_range_at_once) {
    int elements[3] = {};
    const base::view1<int> view("v", elements, 1, 3);
    for (const int last : {INT_MIN, 0, 1, 3}) {
        EXPECT_EQ(view.first_of(last), elements);
    }
    EXPECT_EQ(stopped_with([&] { static_cast<void>(view.first_of(4)); }),
              "array 'v': index 4 is outside 1..3|standard error|2");
}

TEST(array, view2_checks_a_range_of_columns_at_once) {
    int elements[6] = {};
    const base::view2<int> view("a", elements, 2, 3);
    for (const int last : {INT_MIN, 0, 1, 3}) {
        EXPECT_EQ(view.first_of(last), elements);
    }
    EXPECT_EQ(stopped_with([&] { static_cast<void>(view.first_of(4)); }),
              "array 'a': index 4 of dimension 2 is outside 1..3|standard error|2");
}

TEST(array, view_of_constants_is_made_from_a_view_of_variables) {
    int elements[6] = {1, 2, 3, 4, 5, 6};
    const base::view1<const int> one = base::view1<int>("v", elements, 0, 5);
    EXPECT_EQ(one(5), 6);
    const base::view2<const int> two = base::view2<int>("v", elements, 2, 3);
    EXPECT_EQ(two(2, 3), 6);
}

TEST(array, view2_runs_fastest_along_its_first_index) {
    int elements[6] = {11, 21, 12, 22, 13, 23};
    const base::view2<int> view("a", elements, 2, 3);
    for (int i = 1; i <= 2; ++i) {
        for (int j = 1; j <= 3; ++j) {
            EXPECT_EQ(view(i, j), 10 * i + j);
            EXPECT_EQ(&view.column(j)(i), &view(i, j));
        }
    }
    EXPECT_EQ(view.rows(), 2);
    EXPECT_EQ(view.columns(), 3);
    EXPECT_STREQ(view.name(), "a");
    EXPECT_EQ(view.column(2).lower(), 1);
    EXPECT_EQ(view.column(2).upper(), 2);
}

TEST(array, view2_stops_the_run_outside_either_dimension) {
    struct row {
        int i;
        int j;
        const char* message;
    };
    const row rows[] = {
        {0, 1, "array 'xyz': index 0 of dimension 1 is outside 1..2|standard error|2"},
        {3, 1, "array 'xyz': index 3 of dimension 1 is outside 1..2|standard error|2"},
        {1, 0, "array 'xyz': index 0 of dimension 2 is outside 1..3|standard error|2"},
        {2, 4, "array 'xyz': index 4 of dimension 2 is outside 1..3|standard error|2"},
    };
    int elements[6] = {};
    const base::view2<int> view("xyz", elements, 2, 3);
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.message);
        EXPECT_EQ(stopped_with([&] { view(tested.i, tested.j) = 1; }), tested.message);
    }
    EXPECT_EQ(stopped_with([&] { static_cast<void>(view.column(0)); }), rows[2].message);
    EXPECT_EQ(stopped_with([&] { static_cast<void>(view.column(4)); }), rows[3].message);
    EXPECT_EQ(stopped_with([&] { static_cast<void>(view.column(2)(3)); }),
              "array 'xyz': index 3 is outside 1..2|standard error|2");
}

TEST(array, view3_gives_one_matrix_after_the_other) {
    int elements[12] = {};
    const base::view3<int> view("operations", elements, 2, 3, 2);
    EXPECT_EQ(&view.matrix(1)(1, 1), elements);
    EXPECT_EQ(&view.matrix(2)(1, 1), elements + 6);
    EXPECT_EQ(&view.matrix(2)(2, 3), elements + 11);
    EXPECT_EQ(stopped_with([&] { static_cast<void>(view.matrix(0)); }),
              "array 'operations': index 0 of dimension 3 is outside 1..2|standard error|2");
    EXPECT_EQ(stopped_with([&] { static_cast<void>(view.matrix(3)); }),
              "array 'operations': index 3 of dimension 3 is outside 1..2|standard error|2");
}

TEST(array, view3_is_indexed_by_row_column_and_slab) {
    int elements[12] = {};
    const base::view3<int> view("operations", elements, 2, 3, 2);
    for (int k = 1; k <= 2; ++k) {
        for (int j = 1; j <= 3; ++j) {
            for (int i = 1; i <= 2; ++i) {
                EXPECT_EQ(&view(i, j, k), &view.matrix(k)(i, j));
            }
        }
    }
    struct row {
        int i;
        int j;
        int k;
        const char* message;
    };
    const row rows[] = {
        {0, 1, 1, "array 'operations': index 0 of dimension 1 is outside 1..2|standard error|2"},
        {1, 4, 1, "array 'operations': index 4 of dimension 2 is outside 1..3|standard error|2"},
        {1, 1, 3, "array 'operations': index 3 of dimension 3 is outside 1..2|standard error|2"},
    };
    for (const row& tested : rows) {
        EXPECT_EQ(stopped_with([&] { view(tested.i, tested.j, tested.k) = 1; }), tested.message);
    }
}

TEST(array, views_run_from_their_first_element_to_their_last) {
    const std::vector<int> expected = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    std::vector<int> elements = expected;
    const auto elements_of = [](const auto& view) { return std::vector<int>(view.begin(), view.end()); };
    EXPECT_EQ(elements_of(base::view1<int>("v", elements.data(), -3, 8)), expected);
    EXPECT_EQ(elements_of(base::view2<int>("v", elements.data(), 3, 4)), expected);
    EXPECT_EQ(elements_of(base::view3<const int>("v", elements.data(), 2, 3, 2)), expected);
    for (const int last : {0, -5, INT_MIN}) {
        EXPECT_EQ(elements_of(base::view1<int>("v", elements.data(), 1, last)), std::vector<int>());
        EXPECT_EQ(elements_of(base::view2<int>("v", elements.data(), 3, last)), std::vector<int>());
        EXPECT_EQ(elements_of(base::view3<int>("v", elements.data(), 2, 3, last)), std::vector<int>());
    }
    for (int& element : base::view1<int>("v", elements.data(), 2, 3)) {
        element = -element;
    }
    EXPECT_EQ(elements[0], -1);
    EXPECT_EQ(elements[1], -2);
    EXPECT_EQ(elements[2], 3);
}

TEST(array, elements_start_at_zero_false_or_blank) {
    const base::array1<int> numbers("numbers", -1, 1);
    const base::array1<bool> flags("flags", 1, 3);
    const base::array1<base::text<3>> texts("texts", 0, 2);
    const base::array2<double> matrix("matrix", 2, 2);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(numbers(i - 2), 0);
        EXPECT_FALSE(flags(i));
        EXPECT_EQ(std::string_view(texts(i - 1)), "   ");
    }
    for (int i = 1; i <= 2; ++i) {
        for (int j = 1; j <= 2; ++j) {
            EXPECT_EQ(matrix(i, j), 0.0);
        }
    }
}

TEST(array, that_starts_unset_holds_what_is_assigned) {
    constexpr int last = 100000;  // so large that its pages are made at once
    const base::array1<base::text<7>> texts("texts", -1, last, base::unset());
    for (int i = -1; i <= last; ++i) {
        texts(i) = std::string_view(std::to_string(i));
    }
    for (int i = -1; i <= last; ++i) {
        ASSERT_EQ(texts(i).trimmed(), std::to_string(i));
    }
    EXPECT_EQ(stopped_with([&] { static_cast<void>(texts(last + 1)); }),
              "array 'texts': index 100001 is outside -1..100000|standard error|2");
    const base::array1<base::text<7>> none("none", 1, 0, base::unset());
    EXPECT_EQ(none.upper(), 0);
}

TEST(array, without_elements_is_allowed) {
    const base::array1<int> none("none", 1, 0);
    EXPECT_EQ(stopped_with([&] { static_cast<void>(none(1)); }),
              "array 'none': index 1 is outside 1..0|standard error|2");
    const base::array2<int> no_columns("none", 3, 0);
    EXPECT_EQ(stopped_with([&] { static_cast<void>(no_columns(1, 1)); }),
              "array 'none': index 1 of dimension 2 is outside 1..0|standard error|2");
}

TEST(array, extent_counts_without_overflow) {
    EXPECT_EQ(base::extent(1, 0), 0U);
    EXPECT_EQ(base::extent(5, -5), 0U);
    EXPECT_EQ(base::extent(1, 1), 1U);
    EXPECT_EQ(base::extent(0, 100), 101U);
    EXPECT_EQ(base::extent(INT_MIN, INT_MAX), 4294967296U);
}

TEST(array, allocation_beyond_memory_stops_the_run) {
    // What the address sanitizer does with such a request is to end the process.
    if (support::sanitized) {
        GTEST_SKIP();
    }
    EXPECT_EQ(stopped_with([] { const base::array2<char> huge("huge", INT_MAX, INT_MAX); }),
              "array 'huge': 4611686014132420609 elements of 1 bytes each would exceed the memory limit"
              "|standard error|2");
    EXPECT_EQ(stopped_with([] { const base::array2<double> huge("huge", INT_MAX, INT_MAX); }),
              "array 'huge': 4611686014132420609 elements of 8 bytes each would exceed the memory limit"
              "|standard error|2");
    EXPECT_EQ(stopped_with(
                  [] { static_cast<void>(base::allocate_for_overwrite<double>("huge", SIZE_MAX / sizeof(double))); }),
              "array 'huge': 2305843009213693951 elements of 8 bytes each would exceed the memory limit"
              "|standard error|2");
}

#ifdef MADV_POPULATE_WRITE
/// How many pages from `block` on are there.
std::ptrdiff_t present(void* block, std::size_t size, std::size_t page) {
    std::vector<unsigned char> pages(size / page);
    EXPECT_EQ(::mincore(block, size, pages.data()), 0);
    return std::count(pages.begin(), pages.end(), 1);
}

/// Only pages that belong to the block as a whole are made, and none for a short one.
TEST(array, make_pages_makes_those_of_a_large_block) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t size = 64 * page;
    struct row {
        std::size_t start;
        std::size_t size;
        std::ptrdiff_t pages;
    };
    const row rows[] = {{0, size, 64},
                        {page - 1, size - page, 62},
                        {page, size - page, 63},
                        {1, size - 1, 63},
                        {page, size - page - 1, 62},
                        {8 * page, 128 * 1024, static_cast<std::ptrdiff_t>(128 * 1024 / page)},
                        {0, 128 * 1024 - 1, 0}};
    for (const row& tested : rows) {
        SCOPED_TRACE(testing::Message() << tested.size << " bytes from " << tested.start);
        void* block = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(block, MAP_FAILED);
        ASSERT_EQ(present(block, size, page), 0);
        const bool system_can = ::madvise(block, 0, MADV_POPULATE_WRITE) == 0;
        base::make_pages(static_cast<char*>(block) + tested.start, tested.size);
        EXPECT_EQ(present(block, size, page), system_can ? tested.pages : 0);
        ::munmap(block, size);
    }
}
#endif

}  // namespace
