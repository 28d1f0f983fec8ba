// A number on a grid is spun or typed and never leaves its range; colours are offered and drawn as
// themselves.
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "tests/support/test_host.h"
#include "wavelock/prompts/colours.h"
#include "wavelock/prompts/spin_value_dialog.h"

namespace wavelock {
namespace {

// 1.5, 1.75, 2 ...
CSpinValueDialog Quarters() {
  CSpinValueDialog dialog;
  dialog.maxPosition = 70'000;
  dialog.origin = 1.5F;
  dialog.step = 0.25F;
  return dialog;
}

TEST(SpinValue, PushesStayInTheRange) {
  CSpinValueDialog dialog = Quarters();
  dialog.Spin(10, 3);
  EXPECT_EQ(dialog.position, 13);
  EXPECT_EQ(dialog.textBuffer, "4.75");
  dialog.Spin(std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(dialog.position, 70'000);
  EXPECT_EQ(dialog.SpinPosition(), 70'000 - 65'536);
  dialog.Spin(0, -1);
  EXPECT_EQ(dialog.position, 0);
}

TEST(SpinValue, TypedNumbersSnapToTheGrid) {
  CSpinValueDialog dialog = Quarters();
  const std::pair<std::string, const char*> typed[] = {
      {" 2.6 and more", "2.50"}, {"2.7", "2.75"}, {"-9", "1.50"},    {"none", "1.50"},
      {"1e3", "1000.00"},        {"1e", "1.50"},  {"+.2e1", "2.00"}, {std::string(49, '0') + "29", "2.00"},
      {"1e999", "17501.50"}};
  for (const auto& [text, shown] : typed) {
    dialog.LeaveField(text);
    EXPECT_EQ(dialog.textBuffer, shown) << text;
  }
  dialog.step = 0;
  dialog.LeaveField("1.5");
  EXPECT_EQ(dialog.position, 0) << "0 / 0";
  dialog.LeaveField("2");
  EXPECT_EQ(dialog.position, 70'000) << "infinitely many steps";
}

TEST(Colours, StayWhenThePersonCancels) {
  TestHost test;
  CSpinValueDialog dialog;
  test.user.ExpectColour(0x0080FFu);
  test.user.ExpectColour(std::nullopt);
  dialog.ChooseColour(test.host);
  dialog.ChooseColour(test.host);
  EXPECT_EQ(dialog.colour, 0x0080FFu);
}

TEST(Colours, AreListedOnceTheListDropsDownAndDrawnOverWhiteOrInAFrame) {
  CColourList list;
  list.selection = 3;
  EXPECT_TRUE(list.Items().empty());
  for (int i = 0; i < 2; ++i) list.DropDown();
  EXPECT_EQ(list.Items().size(), kColours.size());
  EXPECT_EQ(list.selection, 3);
  for (const bool hasFocus : {false, true}) {
    const Swatch swatch = SwatchOf(list.Items()[3].value, hasFocus);
    EXPECT_EQ(swatch.background.has_value(), !hasFocus);
    EXPECT_EQ(swatch.colour, 0x00FF00u);
    EXPECT_EQ(swatch.hasFocusFrame, hasFocus);
  }
}

}  // namespace
}  // namespace wavelock
