#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

// Arrays in the manner of the field: indexed from 1 unless said otherwise, the first index fastest, every index checked
// in every build. A view does not own its elements and is passed by value; an array owns them, starts them at zero
// (false, blank) unless told otherwise, and releases them. Constness is that of the elements: a view1<const double> is
// read only.

namespace displacement_generator::base {

/// Stops the run: "array 'NAME': index I is outside LOWER..UPPER".
[[noreturn]] void index_error(const char* name, int index, int lower, int upper);

/// Stops the run: "array 'NAME': index I of dimension D is outside 1..EXTENT".
[[noreturn]] void dimension_error(const char* name, int dimension, int index, int extent);

/// Stops the run: "array 'NAME': N elements of B bytes each would exceed the memory limit".
[[noreturn]] void allocation_error(const char* name, std::size_t elements, std::size_t bytes);

/// The number of elements lower..upper.
[[nodiscard]] constexpr std::size_t extent(int lower, int upper) {
    return upper < lower ? 0 : static_cast<std::size_t>(static_cast<long long>(upper) - lower + 1);
}

/// Elements lower..upper of one dimension; with upper < lower there are none.
template <class element>
class view1 {
  public:
    constexpr view1(const char* name, element* first, int lower, int upper) noexcept
        : name_(name), first_(first), lower_(lower), upper_(upper) {}

    operator view1<const element>() const requires(!std::is_const_v<element>) {
        return {name_, first_, lower_, upper_};
    }

    element& operator()(int i) const {
        if (i < lower_ || i > upper_) [[unlikely]] {
            index_error(name_, i, lower_, upper_);
        }
        return first_[i - lower_];
    }

    /// Where element `lower` lies, for a loop over lower..last; the range is checked here, once. No element is needed
    /// where last < lower.
    [[nodiscard]] element* first_of(int last) const {
        if (last > upper_) [[unlikely]] {
            index_error(name_, last, lower_, upper_);
        }
        return first_;
    }

    [[nodiscard]] element* begin() const { return first_; }
    [[nodiscard]] element* end() const { return first_ + extent(lower_, upper_); }

    [[nodiscard]] const char* name() const { return name_; }
    [[nodiscard]] int lower() const { return lower_; }
    [[nodiscard]] int upper() const { return upper_; }

  private:
    const char* name_;
    element* first_;
    int lower_;
    int upper_;
};

/// Elements (1..rows, 1..columns).
template <class element>
class view2 {
  public:
    constexpr view2(const char* name, element* first, int rows, int columns) noexcept
        : name_(name), first_(first), rows_(rows), columns_(columns) {}

    operator view2<const element>() const requires(!std::is_const_v<element>) {
        return {name_, first_, rows_, columns_};
    }

    element& operator()(int i, int j) const {
        if (i < 1 || i > rows_) [[unlikely]] {
            dimension_error(name_, 1, i, rows_);
        }
        return *(column_start(j) + (i - 1));
    }

    /// Where element (1, 1) lies, for a loop over columns 1..last; the range is checked here, once.
    [[nodiscard]] element* first_of(int last) const {
        if (last > columns_) [[unlikely]] {
            dimension_error(name_, 2, last, columns_);
        }
        return first_;
    }

    /// Column j, that is elements (1..rows, j).
    [[nodiscard]] view1<element> column(int j) const { return {name_, column_start(j), 1, rows_}; }

    /// All elements, column after column.
    [[nodiscard]] element* begin() const { return first_; }
    [[nodiscard]] element* end() const { return first_ + extent(1, rows_) * extent(1, columns_); }

    [[nodiscard]] const char* name() const { return name_; }
    [[nodiscard]] int rows() const { return rows_; }
    [[nodiscard]] int columns() const { return columns_; }

  private:
    [[nodiscard]] element* column_start(int j) const {
        if (j < 1 || j > columns_) [[unlikely]] {
            dimension_error(name_, 2, j, columns_);
        }
        return first_ + static_cast<std::ptrdiff_t>(j - 1) * rows_;
    }

    const char* name_;
    element* first_;
    int rows_;
    int columns_;
};

/// Elements (1..rows, 1..columns, 1..slabs).
template <class element>
class view3 {
  public:
    constexpr view3(const char* name, element* first, int rows, int columns, int slabs) noexcept
        : name_(name), first_(first), rows_(rows), columns_(columns), slabs_(slabs) {}

    element& operator()(int i, int j, int k) const { return matrix(k)(i, j); }

    /// The matrix of elements (1..rows, 1..columns, k).
    [[nodiscard]] view2<element> matrix(int k) const {
        if (k < 1 || k > slabs_) [[unlikely]] {
            dimension_error(name_, 3, k, slabs_);
        }
        return {name_, first_ + static_cast<std::ptrdiff_t>(k - 1) * rows_ * columns_, rows_, columns_};
    }

    /// All elements, matrix after matrix and in each column after column.
    [[nodiscard]] element* begin() const { return first_; }
    [[nodiscard]] element* end() const { return first_ + extent(1, rows_) * extent(1, columns_) * extent(1, slabs_); }

  private:
    const char* name_;
    element* first_;
    int rows_;
    int columns_;
    int slabs_;
};

/// Whether so many bytes can be counted at all; no allocation may be asked for more.
[[nodiscard]] constexpr bool is_countable(std::size_t elements, std::size_t bytes) {
    return elements <= PTRDIFF_MAX / bytes;
}

/// Has the system make the pages of a large block at once, which costs half of what it costs to have each made when it
/// is first touched: for what is filled as a whole.
///   block  in  of `size` bytes
void make_pages(void* block, std::size_t size);

/// The owner of an array's elements, which need nothing done to them at their end.
struct release {
    void operator()(void* elements) const { ::operator delete(elements); }
};
template <class element>
using owner = std::unique_ptr<element[], release>;

/// `count` new elements for the array `name`, that hold anything; stops the run where the memory is not to be had.
template <class element>
[[nodiscard]] owner<element> allocate_for_overwrite(const char* name, std::size_t count) {
    static_assert(std::is_trivially_copyable_v<element> && std::is_trivially_destructible_v<element>);
    void* block =
        is_countable(count, sizeof(element)) ? ::operator new(count * sizeof(element), std::nothrow) : nullptr;
    if (block == nullptr) {
        allocation_error(name, count, sizeof(element));
    }
    return owner<element>(static_cast<element*>(block));
}

/// For an array whose elements are all assigned before any is looked at: until then they hold anything.
struct unset {};

template <class element>
[[nodiscard]] owner<element> allocate(const char* name, std::size_t count, unset /*start*/) {
    auto elements = allocate_for_overwrite<element>(name, count);
    make_pages(elements.get(), count * sizeof(element));
    return elements;
}

/// The same, with elements that start at zero (false, blank).
template <class element>
[[nodiscard]] owner<element> allocate(const char* name, std::size_t count) {
    auto elements = allocate<element>(name, count, unset());
    std::uninitialized_fill_n(elements.get(), count, element());
    return elements;
}

/// A view1 that owns its elements.
template <class element>
class array1 : public view1<element> {
  public:
    array1(const char* name, int lower, int upper)
        : array1(name, lower, upper, allocate<element>(name, extent(lower, upper))) {}
    array1(const char* name, int lower, int upper, unset start)
        : array1(name, lower, upper, allocate<element>(name, extent(lower, upper), start)) {}

  private:
    array1(const char* name, int lower, int upper, owner<element> elements)
        : view1<element>(name, elements.get(), lower, upper), elements_(std::move(elements)) {}

    owner<element> elements_;
};

/// A view2 that owns its elements.
template <class element>
class array2 : public view2<element> {
  public:
    array2(const char* name, int rows, int columns)
        : array2(name, rows, columns, allocate<element>(name, extent(1, rows) * extent(1, columns))) {}

  private:
    array2(const char* name, int rows, int columns, owner<element> elements)
        : view2<element>(name, elements.get(), rows, columns), elements_(std::move(elements)) {}

    owner<element> elements_;
};

}  // namespace displacement_generator::base
