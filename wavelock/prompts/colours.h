// The colours that are offered for choice.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace wavelock {

struct NamedColour {
  std::string_view name;
  std::uint32_t value;  // red in the low byte, then green, then blue
};

inline constexpr std::array<NamedColour, 8> kColours = {{{"Red", 0x0000FF},
                                                         {"Orange", 0x0080FF},
                                                         {"Yellow", 0x00FFFF},
                                                         {"Green", 0x00FF00},
                                                         {"Blue", 0xFF0000},
                                                         {"Lt Blue", 0xFFFF00},
                                                         {"Black", 0x000000},
                                                         {"WHITE", 0xFFFFFF}}};

// How an item of a list of colours is drawn: its colour alone, without the name.
struct Swatch {
  static constexpr int kInset = 2;  // of the part with the colour, on all sides

  std::optional<std::uint32_t> background;  // drawn first, over the whole item
  std::uint32_t colour;
  bool hasFocusFrame;  // drawn last, around the whole item
};
constexpr Swatch SwatchOf(std::uint32_t colour, bool hasFocus) {
  constexpr std::uint32_t kWhite = 0xFFFFFF;
  return {hasFocus ? std::nullopt : std::optional(kWhite), colour, hasFocus};
}

// The state of a list that drops down.
class CColourList {
 public:
  // Fills the list anew; what was selected stays selected.
  void DropDown() { items_ = kColours; }

  std::span<const NamedColour> Items() const { return items_; }  // none before it dropped down

  int selection = -1;  // an index of Items(), -1 for none

 private:
  std::span<const NamedColour> items_;
};

}  // namespace wavelock
