// Everything that is known about one recording or one acquisition setup, apart from the samples.
//
//   what it holds          setup_fields.h     plain fields and their defaults
//                          setup_channel.h    one channel; channel_array.h: the channels that are owned
//                          setup_bands.h, setup_label.h, parameter_blocks.h, aux_inputs.h, waveform_set.h
//                          subject_info.h     who was recorded, by whom and where
//   making, copying        setup.cpp
//   defaults               defaults.cpp
//   axes, points and time  derived_values.cpp
//   sections               load.cpp, write.cpp; section_tables.h: what stands where in each
//   files                  files.cpp; tff_file.h: the container of the sections
//   derivation files       derivations.cpp
//   every field by name    visit_fields.h
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "wavelock/platform/host.h"
#include "wavelock/setup/aux_inputs.h"
#include "wavelock/setup/channel_array.h"
#include "wavelock/setup/data_kind.h"
#include "wavelock/setup/parameter_blocks.h"
#include "wavelock/setup/setup_fields.h"
#include "wavelock/setup/subject_info.h"
#include "wavelock/setup/waveform_set.h"

namespace wavelock {

class CTffFile;

// About 150 KB, so it belongs on the heap. Fields are open to the classes of the library.
class CSetup : public SetupFields {
 public:
  // ----- Making, copying: setup.cpp

  // A setup with the default of every field. The profile names the setup file and the institution. Without
  // `loadDefault` it has no channels. With it, the setup file is loaded; when that cannot be done, the file
  // "default.ast" beside the program, which is removed and replaced by the defaults when it cannot be loaded
  // either. The profile then remembers that file. Throws std::bad_alloc.
  explicit CSetup(int loadDefault, Host& host = Host::Default());

  // An independent setup with `channelCount` channels, a snapshot of them, and `derivedCount` channels in
  // each group; none of them where the source has none or the count is outside 1 to 514. Throws
  // std::bad_alloc.
  CSetup(const CSetup& source);
  CSetup& operator=(const CSetup&) = delete;
  virtual ~CSetup() = default;

  // Drop the channels, or those of group 0 to 2, and make `channelCapacity` new ones, all zero. False, and
  // none left, when there is no memory for them.
  bool MakeChannels();
  bool MakeChannelGroup(std::int32_t group);

  // The channels that are in use; empty when there are none.
  std::span<SetupChannel> Channels() { return channels.First(channelCount); }
  std::span<const SetupChannel> Channels() const { return channels.First(channelCount); }
  std::span<SetupChannel> GroupChannels(std::size_t group);
  std::span<const SetupChannel> GroupChannels(std::size_t group) const;

  // ----- Defaults: defaults.cpp

  // A 1000 Hz recording of 32 channels, in a grid on layout 0. Keeps setupTitle, setupFileName and modified.
  // False when there is no memory for the channels; the plain fields are then reset and there are no
  // channels.
  bool ResetToDefaults();

  void ResetChannel(std::int32_t index);  // does nothing for an index that has no channel
  void ResetArtifactLabels();             // the first ten labels; later ones stay
  void ResetBandTable();                  // the first four rows; later ones stay
  void ResetDisplayOrder();
  void ResetParameterBlocks();
  void ResetAuxInputs();
  void ResetSourceName();
  void ResetWaveforms();

  // Gives the channels in use that are selected on that layout a box each, in a grid that fills the display.
  void LayoutGrid(std::int32_t layout);

  // ----- Axes, points and time: derived_values.cpp
  //
  // In a setup of a recording, whatever asks for the number of points also brings spectrumPoints into line,
  // which is why these are not const. A rate or a count of 0 gives infinite or undefined times; conversions
  // to whole numbers end at the ends of their range, and give 0 for what is no number.

  double Rate() const;       // samples per second
  std::int32_t GetPoints();  // points per channel on the current axis

  // Seconds, rounded to five places; a point outside of the axis counts as the nearest one on it.
  double TimeOfPoint(std::int64_t point);
  // The first point of the axis is 1, and no point behind the axis is given.
  std::int32_t PointOfTime(double seconds);
  // How many points lie before time zero; 0 in the frequency domain.
  std::int32_t ZeroPoint() const;

  double AxisStartMs() const;
  double AxisEndMs();
  double AxisEnd();  // seconds, or hertz in the frequency domain

  // Sets binWidth from rate and points, and gives the number of points between spectrumStart and spectrumEnd.
  std::int32_t UpdateBins();
  // Brings rates, ends of the axes and display windows into line with each other.
  void UpdateTimeAxis();
  void SetTimeEnd(float seconds);

  // Index of the first channel with a k or K in its label, else 0.
  std::int32_t KChannel() const;
  // Whether the ordinary channels lie at least 10 units apart.
  bool PositionsSpread() const;
  // Fits the slots of `waveforms` to an axis in milliseconds.
  void AdjustSlots(float startMs, float endMs, std::int32_t rate);

  // ----- Sections and files: load.cpp, write.cpp, files.cpp

  // Fills the setup from the sections of a container, wherever they stand in it. What a missing or older
  // section does not hold mostly stays as it was. False without a main section, which changes nothing, or
  // without all channels, which leaves the setup with those that came. Tells the person about files that a
  // setup file names and that are not there.
  bool Load(CTffFile& file);

  // Writes a container at the file's position. Always true: `file` knows whether everything arrived.
  bool Write(CTffFile& file);

  // The same with the file that setupFileName names.
  bool LoadFile();
  // Replaces the file in one step; tells the person when it cannot be written, and leaves it as it was.
  void SaveFile();

  // Does the same with any file and the files of any host, and tells nobody. False when it cannot be written.
  bool SaveTo(const std::string& path, FileService& files);

  // Asks the person for a file's name, starting from `name` or, without one, from setupFileName, and saves
  // there from then on. False when the person cancels.
  bool SaveAs(const char* name);

  // The same with the tail of a recording: reads it at a position, or writes it where the file stands, which
  // is that position.
  bool LoadEmbedded(File& file, std::uint64_t position);
  bool SaveEmbedded(File& file, std::uint64_t position);

  // Of the running program, with its closing separator.
  std::string ProgramDirectory() const;

  // The file's name with its extension, and what stands in front of it.
  static std::string NameOf(std::string_view path);
  static std::string DirectoryOf(std::string_view path);

  // ----- What stands beside the plain fields

  ParamsC paramsC{};
  ParamsA paramsA{};
  ParamsB paramsB{};
  ChannelArray channels;  // channelCapacity entries, or channelCount of them in a copy
  PerDerivationFile<ChannelArray> channelGroups;  // the derived channels
  ChannelArray channelsSnapshot;                  // the channels at the moment of copying; only in a copy
  std::int32_t channelCapacity = 0;
  static constexpr std::int32_t channelLimit = 515;  // a recording holds 512 at most
  std::int32_t modified = 0;                         // cleared by every load and save
  WaveformSet waveforms{};
  std::int32_t wideSamples = 0;  // 1: samples of 4 bytes, 0: of 2
  std::array<std::int32_t, 6> block1010{};
  AuxInputs auxInputs{};
  FixedText<20> sourceName = "Unknown";
  std::string setupTitle{};
  std::unique_ptr<CSubjectInfo> subject;  // never null
  std::string setupFileName{};            // the setup file of this setup

 private:
  static constexpr std::string_view kDefaultSetupFile = "default.ast";

  void FindAndLoadFile();
  void ForgetRecording();

  Host* host_;
};

// Rounds to five places, halves away from zero. The result lies within -21474.83648 and 21474.83647.
double Round5(double value);

// The record that a channel of that index starts with, and that of a derived channel.
SetupChannel DefaultChannel(std::int32_t index);
SetupChannel DefaultDerivedChannel(std::int32_t index, std::string_view label);

}  // namespace wavelock
