// What a control needs of the surface that it is drawn on.
#pragma once

#include <cstdint>

namespace wavelock {

// In the units of the surface; right and bottom lie just outside.
struct Rectangle {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  bool operator==(const Rectangle&) const = default;
};

enum class Brush : std::uint32_t { kWhite };

class Canvas {
 public:
  virtual void FillRectangle(const Rectangle& area, Brush brush) noexcept = 0;

  // The outline, in the surface's own pen, of the ellipse that touches all four sides.
  virtual void DrawEllipse(const Rectangle& bounds) noexcept = 0;

 protected:
  ~Canvas() = default;
};

}  // namespace wavelock
