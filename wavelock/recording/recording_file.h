// CRecordingFile: one recording on disk, with the image of its header, the setup built from it, and what it
// carries beside its samples.
//
//   opening and closing               open.cpp
//   the block at the start            header_block.cpp, header_revisions.cpp, oldest_header.cpp
//   what the file holds               classification.cpp
//   header to setup                   translation.cpp
//   markers, corrections, labels      annotations.cpp, overlay_pass.cpp
//   continuous samples                continuous.cpp, deinterleave.cpp, sample_conversion.cpp
//   events                            events.cpp
//   epochs                            epochs.cpp
//   sections of averages              averaged.cpp; statistics.h: figures worked out from them
//   data sets as objects              data_objects.cpp
//   channel pairs                     paired.cpp
//   setup to header                   header_writer.cpp
//   creating and saving               saving.cpp
//   saving what was opened            upgrading.cpp
//
// One recording serves one thread at a time; any number of them live in any number of threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "wavelock/annotations/correction_overlay.h"
#include "wavelock/annotations/epoch_header.h"
#include "wavelock/annotations/event_group.h"
#include "wavelock/annotations/label_list.h"
#include "wavelock/annotations/marker_list.h"
#include "wavelock/numerics/matrices.h"
#include "wavelock/numerics/work_buffer.h"
#include "wavelock/platform/host.h"
#include "wavelock/recording/recording_header.h"
#include "wavelock/recording/section_rules.h"
#include "wavelock/setup/setup.h"
#include "wavelock/tfdata/tfd_epoch.h"
#include "wavelock/tfdata/tfd_paired.h"

namespace wavelock {

class CTffFile;
struct BlockShape;
struct SectionShape;
class OverlayPass;

class CRecordingFile {
 public:
  // With `silent` not 0 reported messages are dropped, questions count as answered yes, and prompts that only
  // inform are skipped. The host outlives the recording.
  explicit CRecordingFile(int silent, Host& host = Host::Default());
  CRecordingFile(const CRecordingFile&) = delete;
  CRecordingFile& operator=(const CRecordingFile&) = delete;
  virtual ~CRecordingFile();  // closes a file that is still open

  // ---- opening and closing

  // Opens a recording of any generation, for reading and writing where the system allows it. Double quotes
  // and white space around the path are dropped. A file that is still open is not closed first: the caller
  // does that. False when the file cannot be used; `rawHeader` and `setup` then hold what was read so far.
  virtual bool OpenFile(std::string path);

  // Gives the file back and drops what was cached of it. Header image, setup, names and lists go on answering
  // for it. False when none was open.
  bool CloseFile();

  // False when the file may not be written, and when none is open; an average, which is closed again as soon
  // as it was read, is looked up under its path, and counts as writable when there is nothing there any more.
  virtual bool IsFileWritable();

  // Shows a message, unless the recording is silent.
  void ReportMessage(const ModalText& message);

  std::string GetFileName() const { return fileName; }
  std::string GetFilePath() const { return filePath; }
  CSetup* GetSetup() { return setup.get(); }
  CEventTable& GetEventTable() { return eventGroup; }

  // `dataKind` of the setup, a DataKind; -100 without one.
  int GetAcquisitionKind() const;

  // Whether the open file has a tagged container that counts, and where it begins.
  bool HasTail() const;
  std::uint64_t TailPosition() const;

  // Where the data that the header counts end, and where the next thing in the file begins, which lies ahead
  // of that end in a damaged file. None of pairs, whose places no header tells, and of unreadable files.
  struct DataExtent {
    std::uint64_t end;
    std::uint64_t next;
  };
  std::optional<DataExtent> ExtentOfData();

  // Bytes of the block at the start of a file with the setup's channels.
  int HeaderSize() const;

  // ---- what the file holds

  // A DataKind, from the header image; the first call after an open may change `acquisitionMode` in the image
  // by what the file's name says, and may ask for that. kUnreadable for null.
  int GetFileClass(HeaderImage* header);

  // The same in detail, 1 to 7, or -1.
  int ClassifyHeader(HeaderImage* header);

  // ---- header to setup

  // Fills `target` from the image, and repairs impossible values in the image. False when a rate or a channel
  // count stopped it, which has been reported, and when memory ran out; fields up to that point are set.
  bool TranslateHeader(HeaderImage* header, CSetup* target);

  // ---- continuous samples

  // Samples `start` up to, not including, `end`, sample-major: all channels of the first, then of the next.
  // `outBytes` is exactly what they need: 4 bytes a value for microvolts, `sampleWidth` for stored integers,
  // which may lie at any even address.
  // Corrections are laid over them, except for the kind that a flag that is not 0 skips. Microvolts are made
  // of what ReadContinuousRaw gives, which is asked for piece by piece without any corrections.
  // False, with `out` undefined, for any other size, an empty or impossible range, another kind of file, a
  // file that ends before the samples do, or a sample between the segments of its corrections.
  virtual bool ReadContinuousFloat(std::uint64_t start, std::uint64_t end, float* out, std::uint32_t outBytes,
                                   int skipPolynomials, int skipRows);
  virtual bool ReadContinuousRaw(std::uint64_t start, std::uint64_t end, void* out, std::int32_t outBytes,
                                 int skipPolynomials, int skipRows);

  // Converts microvolts, sample-major, to integers of `sampleWidth` and writes them where the file stands. A
  // byte count that is no whole number of samples leaves zeros in the last one. False, as from all that
  // appends, for a recording that is not being created: what is in a file is never written over.
  virtual bool AppendContinuousFloat(const float* in, std::uint32_t inBytes);

  // Samples per channel, worked out from the header and the size of the file, whatever its kind. A damaged
  // header can state any number, so this is no size to allocate by.
  virtual std::uint64_t GetContinuousSampleCount();

  // Microvolts to counts, half away from zero. Values beyond the range are limited to +-32767 or
  // +-2147483647, which sets `pendingConversionNotice`; so does a want of memory, which makes all of them 0.
  void FloatToRaw16(std::int16_t* raw, const float* in, std::uint32_t sampleCount, const CSetup& from);
  void FloatToRaw32(std::int32_t* raw, const float* in, std::uint32_t sampleCount, const CSetup& from);

  // ---- events

  // 0 for every kind but continuous.
  virtual int GetEventCount();

  // Where the table of events lies, and the samples end, in layouts that have one.
  std::uint64_t EventTablePosition() const;

  // Reads the events in whatever form they are stored. False when they cannot be read; the table is then
  // empty. False as well, with the table as it was, when no file is open or it is of another kind.
  bool ReadEvents();

  // ---- epochs

  // 1 for every kind but epoched. All others fail for every kind but epoched.
  virtual std::uint32_t GetEpochCount();

  // The data of one epoch as stored. In the time domain points x channels integers of `sampleWidth`. A
  // spectrum is stored as floats, for each channel its real, then its imaginary values; of these it gives as
  // many bytes as the integers would have. False, with `out` undefined, for any other size, and for an epoch
  // that the file ends in.
  bool ReadEpochRaw(std::uint32_t index, void* out, std::uint32_t outBytes);

  // The same in microvolts, points x channels; a spectrum unscaled and whole. False as above.
  bool ReadEpochFloat(std::uint32_t index, float* out, std::uint32_t outBytes);

  // Facts of one epoch, each where its pointer is not null. The first call reads those of all epochs; if that
  // fails for one of them, it fails for all, and the next call tries again.
  virtual bool GetEpochInfo(std::int32_t index, std::uint16_t* trialType, std::uint8_t* accept,
                            std::uint16_t* correct, float* reactionTime, std::uint16_t* response);

  // Where the head of an epoch lies, whether or not there is such an epoch, and the bytes of every head.
  std::uint64_t GetEpochPosition(std::int32_t index);
  int GetEpochHeaderSize() const;

  // Fills `epochHeaders`. False leaves it empty.
  bool LoadEpochHeaders();
  void ClearEpochHeaders();

  // An epoch is written where the file stands, its head first. The data are microvolts, `pointCount` points x
  // channels of the setup; values above that number are stored as zeros.
  virtual bool AppendEpochHead(std::uint16_t trialType, std::uint8_t accept, std::uint16_t correct,
                               float reactionTime, std::uint16_t response);
  virtual bool AppendEpochFloat(const float* in, std::uint32_t inBytes);

  // ---- sections of averages

  // Reads a section of an averaged file, `count` points x channels of the header: 1 the average in
  // microvolts, 2 its variance; of 3 and 4 each point is a sweep. Points that the file does not have come as
  // zero. The first read of an average without figures for noise and ratios works them out. The file's
  // position stays. False, with `out` undefined, when there is no such section or it is not whole.
  bool ReadAveragedSection(std::int32_t count, float* out, int section);

  // Write sections where the file stands, in the order 1, variance, 3, 4; the data are points x channels of
  // the setup. The result is the section's size in bytes, also when the write failed; 0 when there is nothing
  // to write to or from, -1 for a variance without memory for it. Of sections 3 and 4 at most `bytes` bytes
  // are written; for the others that number counts for nothing.
  virtual std::int32_t WriteAverageSection(const float* data, std::uint32_t bytes, int section);
  virtual std::int32_t WriteVarianceSection(const float* data, std::uint32_t bytes);

  // ---- data sets as objects; the recording owns what it hands out

  // An average, whatever the index, or one epoch, with the markers that belong to that number. What an
  // averaged file gave stays until the next open; an epoch goes with the next call. Null when it cannot be
  // had, which is told for recordings that have no data sets.
  virtual CTFDEpoch* LoadDataObject(std::uint32_t index);

  // Writes a set with an imaginary part as the data of an epoch in the frequency domain, where the file
  // stands. The set is channel-major afterwards.
  virtual bool WriteTimeFrequencyData(CTFDEpoch* data);

  // ---- channel pairs; the recording owns what it hands out

  // Null without pairs. A pair that cannot be read gives null once; the next call gives the object as far as
  // it was filled.
  virtual CTFDPaired* BuildPairedData();

  // Writes the header of the set's setup, its pairs and their matrix: all of a created file up to its tail.
  // False for pairs of channels that there are not, and when something could not be written.
  virtual bool WritePairedData(CTFDPaired* data);

  // Fills `pairMatrix`. False leaves it empty.
  bool LoadPairMatrix();

  // ---- saving
  //
  // A recording is created, its samples, epochs or sections are appended, and it is saved. The header goes in
  // last: until SaveAndClose comes to it there is a hole in its place, so a recording whose program ended
  // before is no recording at all, and one that is saved has reached the disk.

  // Makes the file, or empties it, and leaves room for the header of the setup's channels, whose number must
  // not change from here on: what is saved with another is not whole. `width` is the bytes of a stored
  // sample, 2 or 4. A file that was open before is let go of. False, with no file open and none left behind,
  // when it cannot be written.
  virtual bool CreateFile(std::string path, int width);

  // Saves the recording and closes it. A `stamp` other than 0, in seconds since 1970, becomes the subject's
  // date and time of recording.
  //
  // Of a created recording it writes events, setup, what stands beside the samples and the header. False
  // without an open file or memory. Anything that cannot be written on the way leaves the file as far as it
  // stands and is told by IsSavedWhole alone: as the header is last, such a file cannot be opened, or lacks
  // what could not be written.
  //
  // A recording that was opened is brought to the current form as SaveCopy does it, in its own place. False
  // when that cannot be done: the file is as it was, and the recording still open.
  virtual bool SaveAndClose(std::int64_t stamp);

  // Whether the last save brought everything to the medium, with all that had been appended before. A created
  // recording should be asked, as its SaveAndClose does not tell.
  bool IsSavedWhole() const { return isSavedWhole_; }

  // Writes an opened recording, with its setup, events and annotations as they are now, to a file in the
  // current form. Samples stay the integers that they are, in whatever layout they were; what else the file
  // holds is delivered as before. Records of its tail that no tag tells of are kept, byte by byte, as they
  // are in the file. Markers of a continuous recording have no place there, which SaveAndClose reports.
  //
  // The copy is made under another name in the folder of `path`, brought to the medium, and then takes the
  // place of whatever stands at `path`, in one step. So whenever the program or the power fails, `path` holds
  // what it held before or the whole copy; a file named like `path` with ".0.new" behind it, or another
  // number, may be left over.
  // False, with `path` as it was, when anything cannot be read, understood or written: a file whose events or
  // pairs were not read, that holds more data than its header counts, or of which the disk gave only a part
  // when it was opened, is not copied without them.
  bool SaveCopy(std::string path);

  // Asks where to save the setup as a file of its own. False when nobody said.
  virtual bool SaveSetupAs();

  // The header and channel records of a setup in the current form, HeaderSize bytes of it. Values that cannot
  // stand in a header are replaced, in the setup too. False for a setup of an unknown kind, of which only the
  // first fields are filled, and for null.
  bool FillHeader(CSetup* from, void* buffer);

  // Writes `size` bytes of such a block where `target` stands. False when they did not all arrive.
  bool WriteHeaderBlock(const void* buffer, File* target, int size);

  // Writes the events of a recording that is being created where the file stands, as byte offsets in files
  // below 1 GiB and as samples above. False, with nothing written, for any other recording.
  bool WriteEventTable();

  // ---- state, open to the classes of the system

  int sampleWidth = 2;  // bytes of one stored sample: 2 or 4
  CMarkerList markerList;
  int kindPromptDone = 0;           // the file's name has been looked at since the open
  int pendingConversionNotice = 0;  // a value was limited when it was stored
  int applyRows = 1;                // 0 leaves out that kind of correction in every read
  int applyPolynomials = 1;
  int silent;
  CLabelList labelList;
  std::string fileName;  // without its folder
  std::string filePath;
  std::unique_ptr<CTFDEpoch> keptData;  // of an averaged file, which is closed again at once
  int largeFile = 0;                    // 1 for files of 2 GiB and more
  std::uint64_t fileSize = 0;           // taken once, at open
  CEventGroup eventGroup;
  std::unique_ptr<CSetup> setup;
  std::unique_ptr<CTFDEpoch> loadedData;
  std::unique_ptr<CTFDPaired> pairedData;
  int wroteStatistics = 0;  // since the file was created
  int wroteVariance = 0;
  Matrix<std::int32_t> pairMatrix;       // [i][j]: where the pair of channels i and j lies; below 2: nowhere
  TypedArray<EpochHeader> epochHeaders;  // of all epochs; empty until somebody asks for one
  int halveSpectrum = 0;                 // spectra without a scale are delivered halved
  int dataStart = -1;                    // file position of the first sample
  int headerRevision = -1;
  HeaderImage rawHeader{};  // the block at the start, in its current form
  CCorrectionOverlay overlay;
  std::unique_ptr<File> file;

 protected:
  Host& host;

 private:
  bool ReadFileHead();
  bool Translate(HeaderImage& image, CSetup& into);
  bool ReadTail(int fileClass);
  bool AcceptsTailRevision(CTffFile& tail);
  void WarnOfModification();
  void WarnOfNewerWriter();

  void StartOver();
  bool OpenFromDisk(const std::string& path);
  bool ReadHeaderBlock();
  bool ReadVersionedHeader();
  bool ConvertOldestLayout();
  bool RefuseChannelCount();

  void CheckExtension(HeaderImage* header);

  void ReadAnnotations(CTffFile& tail, int fileClass);
  std::unique_ptr<OverlayPass> StartCorrections(std::uint64_t start, int skipPolynomials, int skipRows);

  bool IsContinuousRange(std::uint64_t start, std::uint64_t end);
  bool ReadStored(std::uint64_t start, std::uint64_t end, std::span<std::byte> out);
  bool ReadRecords(std::uint64_t start, std::uint64_t count, std::byte* out);
  bool ReadBlocks(std::uint64_t start, std::uint64_t end, std::uint16_t* out);
  bool ReadWholeBlocks(const BlockShape& shape, std::uint64_t position, std::uint64_t blocks,
                       std::uint64_t from, std::uint64_t to, std::uint16_t* out);
  bool ReadPartOfBlock(const BlockShape& shape, std::uint64_t position, std::uint64_t from, std::uint64_t to,
                       std::uint16_t* out);
  std::uint64_t EndOfPiece(std::uint64_t start) const;
  bool AppendCounts(std::span<const float> values, std::size_t counted);

  bool IsBeingMade() const { return file && created_; }
  std::uint64_t SamplesOfFile();
  void TakeTimeOfSaving(std::int64_t stamp);
  bool WriteBehindData(File& target, std::span<std::byte> block);
  bool WriteTail(File& target);
  bool CopyUnknownRecords(File& target);
  void SetReadOnlyIfWanted(const std::string& path);

  bool ReadStoredEvents();
  bool ReadEventTable();
  bool ReadEventRecords(int kind, std::int32_t count);
  std::size_t ReadSomeEvents(int kind, std::span<EventRecord> records);
  void ConvertSegments(std::span<EventRecord> records);
  bool ReadTriggerWords();
  bool EventsFitOffsets(int start) const;
  void WriteEvents(File& target, int start);
  bool WriteEventRecords(File& target, int start, bool bySample);

  bool SaveOpened(std::int64_t stamp);
  bool IsKnownWhole();
  bool IsWrittenAnew(std::uint32_t tag) const;
  std::uint64_t DataEnd() const;
  DataExtent ExtentOfSamples();
  DataExtent ExtentOfEpochs();
  DataExtent ExtentOfSections();
  bool CountsAllSamples();
  bool CountsAllEpochs();
  bool CountsAllSections();
  bool WriteCopy(File& target);
  bool CopyData(File& target, int start);
  void DescribeData(RecordingHeader& copy);
  bool CopyBytes(std::uint64_t from, std::uint64_t count, File& target);
  bool CopySamples(File& target);
  bool CopyEpochs(File& target);
  bool LacksStatistics();
  bool CopySections(File& target);
  bool CopySectionRows(int section, const SectionRules& rules, File& target);
  bool CopyPairs(File& target, int start);
  bool MovePairs(std::uint64_t bytes, int start, Matrix<std::int32_t>& moved);
  std::uint64_t PairMatrixEnd() const;

  bool IsEpoch(std::uint32_t index);
  std::uint64_t EpochStride() const;
  bool SeekToEpochData(std::uint32_t index, std::uint64_t bytes);
  bool ReadEpochSamples(std::uint32_t index, std::span<float> out);
  bool ReadEpochSpectrum(std::uint32_t index, float* out, std::uint32_t outBytes);
  void TakeSpectrumAsAmplitudes();
  bool ReadEpochHeads();

  SectionRules TakeSectionRules(int section);
  bool ReadSectionRows(int section, const SectionShape& shape, const SectionRules& rules,
                       std::span<float> out);
  bool WriteSectionRows(const float* data, int section, std::uint32_t limit);

  bool IsPlausibleSet(std::int64_t rows, std::int64_t columns) const;
  bool MakeLoadedData(int multiplexed);
  bool LoadSet(std::uint32_t index);
  bool LoadAverage();
  bool LoadFsp();
  bool LoadEpoch(std::uint32_t index);
  bool LoadSpectrum(std::uint32_t index);
  bool ReadSpectrumRows(CTFDEpoch& data);
  bool TakeEpochInfo(std::uint32_t index);
  bool TakeMarkers(CTFDEpoch& data, std::uint32_t index) const;
  bool KeepAverage();
  bool ReadPairs(CTFDPaired& data);
  bool PlacePairs(const CTFDPaired& data, std::vector<std::int32_t>& positions) const;
  bool WritePair(const CTFDPaired& data, std::size_t pair, std::int32_t position);

  // What was learnt of a file while it was opened.
  struct Opened {
    bool isReadWell = false;    // no call to the disk failed
    bool isTranslated = false;  // all of the header went into the setup
    bool eventsAreKnown = false;
    bool markersAreKnown = false;
    std::optional<SectionRules> averageRules{};  // that the average was read with
  };
  Opened opened_;

  // What became of a file since it was created.
  struct Created {
    std::int32_t channelCount;
    bool lacksSection = false;  // one of those that were written is not whole
  };
  std::optional<Created> created_;  // nothing for a file that was opened

  bool isSavedWhole_ = false;  // by the last save since the file was opened or created

  // Kept from request to request while a file is open.
  WorkBuffer readBuffer_;  // bytes as they come from the file
  WorkBuffer rawBuffer_;   // stored integers on their way from or to floats
};

// The extension of a path with its dot, empty when it has none.
std::string GetExtension(std::string_view path);

}  // namespace wavelock
