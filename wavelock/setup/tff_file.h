// The tagged container: a header of 64 bytes and behind it one record after the other up to the end of the
// file. It makes up a setup file, and it is the tail of a recording.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "wavelock/numerics/stored.h"
#include "wavelock/platform/file_service.h"
#include "wavelock/platform/host.h"

namespace wavelock {

struct TffHeader {
  std::array<std::byte, 8> magic;
  std::array<std::byte, 40> identityBlock;
  StoredBytes<4> reserved48;
  Stored<std::uint16_t> flags;  // bit 0: samples of 4 bytes
  StoredBytes<10> reserved54;
};
static_assert(sizeof(TffHeader) == 64 && offsetof(TffHeader, flags) == 52);

struct TffRecord {
  Stored<std::uint32_t> tag;      // never 0 as written
  Stored<std::uint16_t> version;  // of the payload's layout
  StoredBytes<2> reserved6;
  Stored<std::uint32_t> length;  // of the payload, which follows at once
  Stored<std::uint32_t> lengthAgain;
};
static_assert(sizeof(TffRecord) == 16);

// Has one position, which it shares with whoever works on the same file.
class CTffFile {
 public:
  // Over a file that Open names later, and that is closed with this object.
  explicit CTffFile(Host& host = Host::Default());

  // Over a file that is open and stays so. The container's header is at `startPosition`; the file's position
  // is left where it is.
  CTffFile(File& open, std::uint64_t startPosition);

  // A container at the start of a file of its own.
  bool Open(const std::string& path, OpenMode mode);

  // Sets the bit of wide samples for the header that is written next; never clears it.
  void SetWideSamples(int on);

  bool HasWideSamples() const;

  // Writes the container's header at the file's position. Its size, or 0 when the file reports an error.
  int WriteHeader();

  // Reads a header at the file's position: its `flags`, or kNoContainer where there is none. A container cut
  // short inside its header keeps what a new one has in the rest.
  static constexpr std::uint32_t kNoContainer = 0xFFFFFFFF;
  std::uint32_t ReadHeader();

  // Appends a record at the file's position; without `data` its head alone, for a payload that the caller
  // writes. False for tag 0 or when the file reports an error.
  bool WriteSection(std::uint32_t tag, std::uint32_t length, const void* data, std::uint16_t version);

  // Reads the `occurrence`th record of a tag, counted from 1, wherever it stands. On entry `length` is the
  // room in `buffer`; the first so many bytes of the payload are read, and their number is stored there and
  // returned. 0 when there is no such record, its payload is empty, or the file reports an error. The file's
  // position is then behind what was read.
  std::uint64_t ReadSection(std::uint32_t tag, std::uint64_t& length, void* buffer,
                            std::uint32_t occurrence = 1);

  // The same for the first record of the tag at or behind the file's position, which must be the start of a
  // record: it is after the whole of one has been read.
  std::uint64_t ReadNextSection(std::uint32_t tag, std::uint64_t& length, void* buffer);

  // The stored length of a record, with the file's position at its payload; 0 when there is none.
  std::uint64_t FindSection(std::uint32_t tag, std::uint32_t occurrence = 1);

  // `version` of the record that was found last.
  std::uint16_t LastVersion() const { return lastRecord.version; }

  // Positions in the file. 0 when no file is open.
  std::uint64_t SeekTo(std::int64_t offset, SeekOrigin origin);
  std::uint64_t Position();
  std::uint64_t Length();

  // All records in file order, with the positions of their heads.
  struct Entry {
    std::uint64_t position;
    TffRecord record;
  };
  const std::vector<Entry>& Entries();

  TffHeader header{};  // as read last, or as written next
  std::uint64_t startPosition = 0;
  TffRecord lastRecord{};

 private:
  bool Append(std::span<const std::byte> bytes);
  void BuildIndex();
  std::optional<Entry> FindIndexed(std::uint32_t tag, std::uint64_t fromPosition, std::uint32_t occurrence);
  bool IsIndexed(std::uint64_t position) const;
  std::optional<Entry> NextOf(std::uint32_t tag);
  std::optional<Entry> WalkTo(std::uint32_t tag, std::uint64_t position);
  std::uint64_t MoveTo(const std::optional<Entry>& entry);
  std::uint64_t ReadPayload(std::uint64_t stored, std::uint64_t room, void* buffer);

  FileService* files_ = nullptr;  // null over a file that was open already
  std::unique_ptr<File> owned_;
  File* file_ = nullptr;

  // The records are looked up once for each container. A record appended through this object makes it forget
  // them.
  bool isIndexed_ = false;
  std::vector<Entry> entries_;
  std::vector<std::uint32_t> byTag_;  // indexes of entries, by tag and then by position
};

}  // namespace wavelock
