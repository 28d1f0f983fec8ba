// Whatever the bytes of a file are, opening and reading it ends with a result.
#include <gtest/gtest.h>

#include <random>

#include "tests/support/every_kind.h"
#include "tests/support/opened_recording.h"
#include "tests/support/read_everything.h"

namespace wavelock {
namespace {

using Bytes = std::vector<std::byte>;

TEST(HostileFiles, TruncationAtEveryByte) {
  for (const NamedRecording& kind : RecordingsOfEveryKind()) {
    const Bytes whole = kind.builder.Build();
    TestHost test;
    CRecordingFile recording(1, test.host);
    const std::size_t step = whole.size() < 16384 ? 1 : 499;  // a setup in the tail makes a file large
    for (std::size_t size = 0; size < whole.size(); size += step) {
      test.memory.Put("cut.rec", std::span(whole).first(size));
      recording.OpenFile("cut.rec");
      ReadEverything(recording);
      recording.CloseFile();
    }
  }
}

TEST(HostileFiles, RandomBytesInTheHeaderAndNothingButNoise) {
  std::mt19937_64 random(3);
  for (const NamedRecording& kind : RecordingsOfEveryKind()) {
    const Bytes whole = kind.builder.Build();
    for (int round = 0; round < 300; ++round) {
      const bool isNoise = round % 10 == 0;
      Bytes damaged = isNoise ? Bytes(1 + random() % 6000) : whole;
      const std::size_t damages = isNoise ? damaged.size() : 1 + random() % 20;
      for (std::size_t i = 0; i < damages; ++i) {
        const std::size_t at = isNoise ? i : random() % std::min<std::size_t>(damaged.size(), 1100);
        damaged[at] = random() % 3 == 0 ? std::byte{0xFF} : static_cast<std::byte>(random());
      }
      if (isNoise) damaged[0] = std::byte{'V'};
      OpenedRecording opened(damaged, "hostile.rec", 1);
      ReadEverything(opened.recording);
    }
  }
}

// Channels that are longer than a channel send the reader on from inside their payloads. Here each sends it
// to another place of one region, and from there through records that lie in those of the others.
TEST(HostileFiles, ChannelsInsideEachOtherAreNoMoreThanTheFileCanHold) {
  constexpr std::uint32_t kHead = 16;
  constexpr std::uint32_t kChannel = 2648;
  constexpr std::uint32_t kChains = 75;
  constexpr std::uint32_t kLinks = 75;
  constexpr std::uint32_t kJump = 1;  // a tag that nobody reads
  StoredContainer container;
  container.records.push_back({1000, 2, Bytes(12080)});
  container.records[0].Put<std::uint32_t>(8, kChains * (kLinks + 1));
  StoredRecord region{99, 0, Bytes((kHead + kChannel) * (kLinks + 1) + kHead * kChains)};
  const auto putHead = [](StoredRecord& into, std::uint32_t at, std::uint32_t tag, std::uint32_t length) {
    into.Put(at, tag);
    into.Put<std::uint16_t>(at + 4, 1);
    into.Put(at + 8, length);
    into.Put(at + 12, length);
  };
  for (std::uint32_t chain = 0; chain < kChains; ++chain) {
    const std::uint32_t tag = 5000 + chain * (kLinks + 1);
    const std::uint32_t toRegion = (kChains - 1 - chain) * (kHead + kChannel + kHead) + kHead;
    const std::uint32_t start = kHead * chain;
    container.records.push_back({tag, 1, Bytes(kChannel + kHead)});
    putHead(container.records.back(), kChannel, kJump, toRegion + start);
    for (std::uint32_t link = 0; link < kLinks; ++link)
      putHead(region, start + link * (kHead + kChannel), tag + 1 + link, kChannel);
    putHead(region, start + kLinks * (kHead + kChannel), kJump, 0xFFFFFFF0);
  }
  container.records.push_back(std::move(region));
  TestHost test;
  test.memory.Put("chains.ast", container.Bytes());
  CSetup setup(0, test.host);
  setup.setupFileName = "chains.ast";
  EXPECT_FALSE(setup.LoadFile());
}

}  // namespace
}  // namespace wavelock
