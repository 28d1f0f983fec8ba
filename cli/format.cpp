// wavelock format: what the records of a tagged container hold, byte by byte.
#include <fmt/format.h>

#include <array>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cli/complaint.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/section_list.h"
#include "cli/subcommands.h"
#include "cli/table.h"
#include "wavelock/setup/tff_file.h"

namespace wavelock::command {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  wavelock format\n"
    "  wavelock format 1000 | grep 8044\n"
    "  wavelock format --markdown > format.md\n";

struct Options {
  std::optional<std::uint32_t> tag{};
  bool markdown = false;
  OutputOptions output{};
};

// ---- what both forms say

std::string Tags(const SectionKind& kind) {
  return kind.tags == 1 ? std::to_string(kind.tag) : fmt::format("{} + i", kind.tag);
}

std::string Version(const SectionKind& kind) {
  return kind.versionWords != nullptr ? kind.versionWords : std::to_string(kind.version);
}

// "f32 x 20", "char[512]", "band x 5".
std::string Type(const RowInfo& row) {
  const std::string_view type = row.type;
  const bool isWide = type == "char" || type == "byte";
  const std::string element = isWide ? fmt::format("{}[{}]", type, row.elementSize) : std::string(type);
  const std::uint32_t count = row.size / row.elementSize;
  return count == 1 ? element : fmt::format("{} x {}", element, count);
}

std::string Direction(const RowInfo& row) {
  if (row.isRead && row.isWritten) return {};
  return fmt::format("{}: {}", row.isRead ? "read only" : "written only", row.reason);
}

std::string Notes(const RowInfo& row) {
  const std::string since = row.since == 0 ? "" : fmt::format("since version {}", row.since);
  const std::string direction = Direction(row);
  return since + (since.empty() || direction.empty() ? "" : "; ") + direction;
}

// ---- for people

std::string TableOfKinds(bool bold) {
  Table table({{"TAG"}, {"BYTES", Align::kRight}, {"VERSION"}, {"NAME"}, {"OCCURS"}});
  for (const SectionKind& kind : SectionKinds())
    table.Add({Tags(kind), std::to_string(kind.size), Version(kind), kind.name, kind.occurs});
  return table.Text(bold);
}

// Structures inside of a section with the offsets that they have there.
void AddRows(const std::vector<RowInfo>& rows, std::uint32_t base, const std::string& path, Table& table) {
  for (const RowInfo& row : rows) {
    const std::string name = path + row.field;
    table.Add({std::to_string(base + row.offset), Type(row), name, Notes(row)});
    if (row.layout == nullptr) continue;
    const std::uint32_t count = row.size / row.elementSize;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::string element = count == 1 ? name + "." : fmt::format("{}[{}].", name, i);
      AddRows(row.layout(), base + row.offset + i * row.elementSize, element, table);
    }
  }
}

std::string TableOfKind(const SectionKind& kind, bool bold) {
  Table table({{"OFFSET", Align::kRight}, {"TYPE"}, {"FIELD"}, {"NOTES"}});
  AddRows(kind.rows(), 0, "", table);
  return table.Text(bold);
}

// ---- as a page

constexpr char kIntroduction[] =
    "# The tagged container\n"
    "\n"
    "This page is made by `wavelock format --markdown` from the tables that the library reads and writes "
    "by.\n"
    "\n"
    "A setup file is one tagged container. In a recording the container is the tail: it begins where the\n"
    "recording's header says, and goes on to the end of the file. It is a header of 64 bytes and behind it "
    "one\n"
    "record after the other, each a head of 16 bytes and a payload, without alignment. Numbers are\n"
    "little-endian; `i32`, `u32` and `u16` are integers, `f32` and `f64` are IEEE numbers, `char[n]` is a "
    "text\n"
    "that ends with a NUL inside its n bytes. Bytes that no table names are zero.\n"
    "\n"
    "A reader finds a record by its tag, wherever it stands, takes the fields that its version has, and "
    "does\n"
    "without records that are missing, except for the main section and the channels.\n"
    "\n";

std::string MarkdownRows(const std::vector<RowInfo>& rows) {
  std::string text = "| Offset | Type | Field | Notes |\n|---:|---|---|---|\n";
  for (const RowInfo& row : rows)
    text += fmt::format("| {} | {} | `{}` | {} |\n", row.offset, Type(row), row.field, Notes(row));
  return text;
}

std::string IdentityNumbers() {
  const TffHeader header = CTffFile().header;
  std::array<std::uint32_t, 4> numbers;
  std::memcpy(numbers.data(), header.identityBlock.data(), sizeof numbers);
  return fmt::format("0x{:08X}", fmt::join(numbers, ", 0x"));
}

std::string MarkdownOfContainer() {
  std::string text = kIntroduction;
  text += "## Header of the container, 64 bytes\n\n";
  text +=
      "The magic is \"QVR TFF\" and a NUL, and alone decides whether this is a container. Bit 0 of `flags`\n";
  text += "says that the samples of the recording have 4 bytes. `identityBlock` begins with the numbers\n";
  text += IdentityNumbers() + ", which no reader compares.\n\n";
  text += MarkdownRows(ContainerHeaderRows());
  text += "\n## Head of a record, 16 bytes\n\n";
  text += "The version is that of the payload's layout. A record of length 0 counts as missing.\n\n";
  text += MarkdownRows(RecordHeadRows());
  return text;
}

std::string MarkdownOfKinds() {
  std::string text = "\n## Records\n\n| Tag | Bytes | Version | Record | Occurs |\n|---|---:|---|---|---|\n";
  for (const SectionKind& kind : SectionKinds()) {
    text += fmt::format("| {} | {} | {} | {} | {} |\n", Tags(kind), kind.size, Version(kind), kind.name,
                        kind.occurs);
  }
  return text;
}

// Each structure once, behind the first section that has it.
void AddLayouts(const std::vector<RowInfo>& rows, std::set<std::string>& told, std::string& text) {
  for (const RowInfo& row : rows) {
    if (row.layout == nullptr || !told.insert(row.type).second) continue;
    text += fmt::format("\n### A piece of it: {}, {} bytes\n\n{}", row.type, row.elementSize,
                        MarkdownRows(row.layout()));
    AddLayouts(row.layout(), told, text);
  }
}

std::string Markdown() {
  std::string text = MarkdownOfContainer() + MarkdownOfKinds();
  std::set<std::string> told;
  const SectionKind* before = nullptr;
  for (const SectionKind& kind : SectionKinds()) {
    text += fmt::format("\n## {}: {}, {} bytes\n\n{}\n\n", Tags(kind), kind.name, kind.size, kind.about);
    const bool isLaidOutAsBefore = before != nullptr && before->rows == kind.rows;
    text += isLaidOutAsBefore ? fmt::format("Laid out as {}.\n", Tags(*before)) : MarkdownRows(kind.rows());
    AddLayouts(kind.rows(), told, text);
    if (!isLaidOutAsBefore) before = &kind;
  }
  return text;
}

// ---- the command

std::string TablesOfTag(std::uint32_t tag, bool bold) {
  std::string text;
  for (const SectionKind& kind : SectionKinds()) {
    if (tag < kind.tag || tag - kind.tag >= kind.tags) continue;
    text += (text.empty() ? "" : "\n") + TableOfKind(kind, bold);
  }
  return text;
}

ExitCode Run(const Options& options) {
  if (options.tag && options.markdown) {
    Complain("With --markdown all records are told of, not one.");
    return kUsage;
  }
  const auto output = Output::Open(options.output, "");
  if (!output) return kFailed;
  const bool bold = output->TakesStyles();
  std::string text = TableOfKinds(bold);
  if (options.tag) text = TablesOfTag(*options.tag, bold);
  if (options.markdown) text = Markdown();
  if (text.empty()) {
    Complain(fmt::format("No record has the tag {}.", *options.tag));
    return kFailed;
  }
  output->WriteStyled(text);
  return output->Finish() ? kDone : kFailed;
}

}  // namespace

Subcommand MakeFormat(CLI::App& program) {
  CLI::App& parser =
      AddSubcommand(program, "format", "What the records of setups and tails hold, byte by byte", kExamples);
  const auto options = std::make_shared<Options>();
  AddCount(parser, "TAG", options->tag, "The record to tell of; all if nothing is said");
  AddFlag(parser, "--markdown", options->markdown, "All of them as one page");
  options->output.AddTo(parser);
  return {&parser, [options] { return Run(*options); }};
}

}  // namespace wavelock::command
