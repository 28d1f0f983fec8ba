// Vectors and matrices whose memory may not be there: each is a handle that owns its elements, or null. The
// making helpers drop what the handle held; when there is no memory they give false and leave it null. New
// elements are zero or empty. Freeing a null handle does nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>

namespace wavelock {

template <class T>
class OwnedVector {
 public:
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
 public:
  explicit operator bool() const { return static_cast<bool>(block_); }
  std::size_t Rows() const { return rows_; }
  std::size_t Columns() const { return columns_; }
  T* operator[](std::size_t row) { return block_.All().data() + row * columns_; }
  const T* operator[](std::size_t row) const { return block_.All().data() + row * columns_; }
  std::span<T> All() { return block_.All(); }
  std::span<const T> All() const { return block_.All(); }

  [[nodiscard]] bool Make(std::size_t rows, std::size_t columns) {
    Free();
    if (columns != 0 && rows > std::numeric_limits<std::size_t>::max() / columns) return false;
    if (!block_.Make(rows * columns)) return false;
    rows_ = rows;
    columns_ = columns;
    return true;
  }
  void Free() {
    block_.Free();
    rows_ = columns_ = 0;
  }

 private:
  OwnedVector<T> block_;
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
