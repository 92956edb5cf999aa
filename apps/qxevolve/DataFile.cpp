#include "DataFile.h"

#include "Error.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <stdexcept>
#include <string>

namespace qxevolve {

void TDataFile::AddOptions(CLI::App& App) {
  const auto Group = "Data";
  App.add_option("--ignore", Ignored, "Columns to leave out: names or texts, say")
      ->delimiter(',')
      ->type_name("NAME,...")
      ->group(Group);
  App.add_option("--separator", Separator,
                 "Between cells; \"tab\" too. Without it, the comma, semicolon or tab of the first line")
      ->type_name("CHAR")
      ->group(Group);
  App.add_option("--decimal-point", DecimalPoint, "In numbers; a comma needs another separator")
      ->type_name("CHAR")
      ->check(CLI::IsMember({".", ","}))
      ->capture_default_str()
      ->group(Group);
  App.add_flag("--no-header", NoHeader, "The first line has numbers; columns are called x1, x2 and so on")
      ->group(Group);
  App.add_option("--missing", MissingValues,
                 "What to do with cells that are empty or say NA: refuse the "
                 "table, or skip their rows")
      ->type_name("refuse|skip")
      ->check(CLI::IsMember({"refuse", "skip"}))
      ->capture_default_str()
      ->group(Group);
}

qx::TQXDataSet TDataFile::Read() const {
  qx::TCSVFormat Format;
  if (!Separator.empty()) {
    if (Separator.size() > 1 && Separator != "tab") {
      throw EUsageError("--separator takes one character, or \"tab\"");
    }
    Format.Separator = Separator == "tab" ? '\t' : Separator[0];
  }
  Format.DecimalPoint = DecimalPoint[0];
  Format.Header = !NoHeader;
  Format.MissingValues = MissingValues == "skip" ? qx::mvSkipRow : qx::mvRefuse;
  Format.Ignored = Ignored;
  try {
    return qx::TQXDataSet::FromCSV(FileName, Format);
  } catch (const qx::EDataError& Error) {
    const std::string Message = Error.what();
    if (Message.ends_with("has no number")) {
      throw EUsageError(Message + "; --missing skip leaves such rows out");
    }
    if (Message.find("is no number") != std::string::npos) {
      throw EUsageError(Message + "; --ignore leaves a column out");
    }
    if (Message.ends_with("has no columns")) {
      throw EUsageError(FileName + " is empty; its first line should name the columns");
    }
    throw EUsageError(Message);
  } catch (const std::out_of_range& Error) {
    throw EUsageError(FileName + ": " + Error.what());
  }
}

std::uint64_t Fingerprint(const qx::TQXDataSet& Data) { // FNV-1a
  std::uint64_t Hash = 0xcbf29ce484222325;
  const auto Take = [&](std::uint64_t Value) { Hash = (Hash ^ Value) * 0x100000001b3; };
  for (int I = 0; I < Data.ColumnCount(); ++I) {
    for (const char C : Data.ColumnName(I)) {
      Take(static_cast<unsigned char>(C));
    }
    for (const double Value : Data.Column(I)) {
      Take(std::bit_cast<std::uint64_t>(Value));
    }
  }
  return Hash;
}

} // namespace qxevolve
