// A dialog for a number on a grid, with a spin button, a field to type into, and a colour.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "wavelock/platform/host.h"

namespace wavelock {

// The behaviour of its controls; whoever shows the dialog calls these operations for what the person does and
// shows what they leave behind. The number is position x step + origin.
class CSpinValueDialog {
 public:
  std::int32_t choice = 0;
  std::int32_t minPosition = 0;
  std::int32_t maxPosition = 0;
  std::int32_t position = 0;
  float origin = 0;
  float step = 0;
  std::uint32_t colour = 0;  // red in the low byte, then green, then blue
  std::string textBuffer;    // what the field shows

  // The spin button stands at `from` and is pushed by `delta`.
  void Spin(std::int32_t from, std::int32_t delta);

  // The person leaves the field with this in it, of which 50 characters count. The number snaps to the grid;
  // what is none counts as 0.
  void LeaveField(std::string_view typed);

  // What the spin button then stands at: it has 16 bits.
  std::int16_t SpinPosition() const;

  void ChooseColour(Host& host);

  void PressFirst() { choice = 0; }
  void PressSecond() { choice = 1; }

 private:
  void MoveTo(double newPosition);
};

}  // namespace wavelock
