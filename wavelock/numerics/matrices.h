// Vectors and matrices whose memory may not be there: each is a handle that owns its elements, or null. The
// making helpers drop what the handle held; when there is no memory they give false and leave it null. New
// elements are zero or empty. Freeing a null handle does nothing.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

namespace wavelock {

template <class T>
class OwnedVector {
 public:
  OwnedVector() = default;
  OwnedVector(OwnedVector&& other) noexcept
      : elements_(std::move(other.elements_)), size_(std::exchange(other.size_, 0)) {}
  OwnedVector& operator=(OwnedVector&& other) noexcept {
    elements_ = std::move(other.elements_);
    size_ = std::exchange(other.size_, 0);
    return *this;
  }

  explicit operator bool() const { return elements_ != nullptr; }
  std::size_t Size() const { return size_; }
  T& operator[](std::size_t index) { return elements_[index]; }
  const T& operator[](std::size_t index) const { return elements_[index]; }
  std::span<T> All() { return {elements_.get(), size_}; }
  std::span<const T> All() const { return {elements_.get(), size_}; }

  [[nodiscard]] bool Make(std::size_t size) {
    Free();
    if (size > static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(T)) return false;
    elements_.reset(new (std::nothrow) T[size]());
    if (!elements_) return false;
    size_ = size;
    return true;
  }
  void Free() {
    elements_.reset();
    size_ = 0;
  }

 private:
  std::unique_ptr<T[]> elements_;
  std::size_t size_ = 0;
};

// Rows one behind the other in one block, so that the whole can be read or written at once.
template <class T>
class Matrix {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  Matrix() = default;
  Matrix(Matrix&& other) noexcept { Swap(other); }
  Matrix& operator=(Matrix&& other) noexcept {
    Swap(other);
    return *this;
  }

  explicit operator bool() const { return block_ != nullptr; }
  std::size_t Rows() const { return rows_; }
  std::size_t Columns() const { return columns_; }
  T* operator[](std::size_t row) { return block_.get() + row * columns_; }
  const T* operator[](std::size_t row) const { return block_.get() + row * columns_; }
  std::span<T> All() { return {block_.get(), rows_ * columns_}; }
  std::span<const T> All() const { return {block_.get(), rows_ * columns_}; }

  void Swap(Matrix& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(rows_, other.rows_);
    std::swap(columns_, other.columns_);
  }

  [[nodiscard]] bool Make(std::size_t rows, std::size_t columns) {
    return Take(rows, columns, [](std::size_t count) { return std::calloc(count, sizeof(T)); });
  }

  // The same with elements of undefined content, for a caller who fills them all. Memory that the matrix has
  // for as many elements is used again.
  [[nodiscard]] bool MakeForOverwrite(std::size_t rows, std::size_t columns) {
    if (block_ && rows == columns_ && columns == rows_) {
      std::swap(rows_, columns_);
      return true;
    }
    if (block_ && rows == rows_ && columns == columns_) return true;
    return Take(rows, columns, [](std::size_t count) { return std::malloc(count * sizeof(T)); });
  }

  void Free() {
    block_.reset();
    rows_ = columns_ = 0;
  }

 private:
  struct FreeBlock {
    void operator()(T* block) const { std::free(block); }
  };

  // The system hands out large blocks with zeros in them already, which is why this does not go through new.
  template <class Allocate>
  bool Take(std::size_t rows, std::size_t columns, Allocate&& allocate) {
    Free();
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(T);
    if (columns != 0 && rows > kMost / columns) return false;
    block_.reset(static_cast<T*>(allocate(std::max<std::size_t>(1, rows * columns))));
    if (!block_) return false;
    rows_ = rows;
    columns_ = columns;
    return true;
  }

  std::unique_ptr<T[], FreeBlock> block_;
  std::size_t rows_ = 0;
  std::size_t columns_ = 0;
};

using IntVector = OwnedVector<std::int32_t>;
using StringVector = OwnedVector<std::string>;
using FloatMatrix = Matrix<float>;
using DoubleMatrix = Matrix<double>;

// False for a negative count as well.
[[nodiscard]] inline bool AllocIntVector(IntVector& handle, std::int32_t count) {
  handle.Free();
  return count >= 0 && handle.Make(static_cast<std::size_t>(count));
}
[[nodiscard]] inline bool AllocStringVector(StringVector& handle, std::int32_t count) {
  handle.Free();
  return count >= 0 && handle.Make(static_cast<std::size_t>(count));
}
[[nodiscard]] inline bool AllocFloatMatrix(FloatMatrix& handle, std::uint32_t rows, std::uint32_t columns) {
  return handle.Make(rows, columns);
}
[[nodiscard]] inline bool AllocDoubleMatrix(DoubleMatrix& handle, std::uint32_t rows, std::uint32_t columns) {
  return handle.Make(rows, columns);
}

inline void FreeIntVector(IntVector& handle) {
  handle.Free();
}
inline void FreeStringVector(StringVector& handle) {
  handle.Free();
}
template <class T>
void FreeMatrix(Matrix<T>& handle) {
  handle.Free();
}

}  // namespace wavelock
