// Labels survive a load and a save, in the order that an exchange sort gives them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "tests/support/stored_annotations.h"
#include "wavelock/annotations/exchange_sort.h"
#include "wavelock/annotations/label_list.h"
#include "wavelock/setup/section_tags.h"

namespace wavelock {
namespace {

using testing::ElementsAre;

// The sort as its name says it.
std::vector<std::uint32_t> OrderByExchanging(std::vector<std::uint32_t> values) {
  std::vector<std::uint32_t> order(values.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = i + 1; j < values.size(); ++j) {
      if (values[i] <= values[j]) continue;
      std::swap(values[i], values[j]);
      std::swap(order[i], order[j]);
    }
  }
  return order;
}

TEST(ExchangeSort, EveryShortRowComesOutAsByExchanging) {
  constexpr std::uint32_t kValues = 4;
  for (std::uint32_t length = 0, rows = 1; length <= 7; ++length, rows *= kValues) {
    for (std::uint32_t row = 0; row < rows; ++row) {
      std::vector<std::uint32_t> values;
      for (std::uint32_t i = 0, rest = row; i < length; ++i, rest /= kValues)
        values.push_back(rest % kValues);
      ASSERT_EQ(ExchangeSortOrder(values), OrderByExchanging(values)) << "row " << row << " of " << length;
    }
  }
}

TEST(ExchangeSort, LongRowsComeOutAsByExchanging) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    std::vector<std::uint32_t> values(random() % 300);
    const std::uint32_t most = 1 + static_cast<std::uint32_t>(random() % 40);
    for (std::uint32_t& value : values) value = static_cast<std::uint32_t>(random()) % most;
    ASSERT_EQ(ExchangeSortOrder(values), OrderByExchanging(values)) << round;
  }
}

std::vector<std::string> Texts(const CLabelList& list) {
  std::vector<std::string> texts;
  for (const LabelEntry& label : list.Entries()) texts.push_back(label.text);
  return texts;
}

TEST(Labels, AreReadUpToTheirNulWhateverLiesBehind) {
  ContainerInMemory container(
      {{tag::kLabel, 0, ByteWriter().Text("one").U8(0).Text(std::string(252, 'x')).U32(7)},
       {tag::kLabel, 0, ByteWriter().Text("short")},
       {tag::kLabel, 0, ByteWriter().Text(std::string(256, 'y')).U32(8)}});
  CLabelList list;
  list.Add({"before", 1});
  ASSERT_TRUE(list.Load(container.tff));
  ASSERT_EQ(list.Entries().size(), 3u);
  EXPECT_THAT(Texts(list), ElementsAre("one", "short", std::string(255, 'y')));
  EXPECT_EQ(list.Entries()[0].value, 7u);
  EXPECT_EQ(list.Entries()[1].value, 0u);
}

TEST(Labels, SavingEndsAtATextThatIsTooLong) {
  ContainerInMemory container;
  CLabelList list;
  list.Add({std::string(255, 'a'), 3});
  ASSERT_TRUE(list.Save(container.tff));
  list.Add({std::string(256, 'b'), 1});
  list.Add({"never written", 2});
  ASSERT_FALSE(list.Save(container.tff));
  CLabelList read;
  ASSERT_TRUE(read.Load(container.tff));
  EXPECT_THAT(Texts(read), ElementsAre(std::string(255, 'a'), std::string(255, 'a')));
  EXPECT_EQ(read.Entries()[1].value, 3u);
}

}  // namespace
}  // namespace wavelock
