#include "RunFile.h"

#include "Error.h"
#include <qx/platform/Numbers.h>
#include <qx/platform/XML.h>

#include <fmt/format.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace qxevolve {

namespace {

using qx::TRegressionRecord;

constexpr int Version = 1;

// Calls `Visit(name, value)` for each number of a record.
template <class TRecord, class TVisit>
void VisitRecord(TRecord& Record, TVisit Visit) {
  Visit("Generation", Record.Generation);
  Visit("BestError", Record.BestError);
  Visit("MeanError", Record.MeanError);
  Visit("UnfitCount", Record.UnfitCount);
  Visit("Diversity", Record.Diversity);
  Visit("BestTestError", Record.BestTestError);
  Visit("MinSize", Record.MinSize);
  Visit("MaxSize", Record.MaxSize);
  Visit("AvgSize", Record.AvgSize);
  Visit("MinDepth", Record.MinDepth);
  Visit("MaxDepth", Record.MaxDepth);
  Visit("AvgDepth", Record.AvgDepth);
  Visit("Evaluations", Record.Evaluations);
  Visit("Seconds", Record.Seconds);
}

// Calls `Visit(name, text)` for each text of a run.
template <class TData, class TVisit>
void VisitTexts(TData& Run, TVisit Visit) {
  Visit("File", Run.Data.FileName);
  Visit("Separator", Run.Data.Separator);
  Visit("DecimalPoint", Run.Data.DecimalPoint);
  Visit("MissingValues", Run.Data.MissingValues);
  Visit("Target", Run.Target);
  Visit("Weights", Run.Weights);
}

void WriteList(const qx::TXMLNode& Parent, std::string_view Tag, const std::vector<std::string>& Texts) {
  for (const std::string& Text : Texts) {
    Parent.AddChild(Tag).SetText(Text);
  }
}

std::vector<std::string> ReadList(const qx::TXMLNode& Parent, std::string_view Tag) {
  std::vector<std::string> Texts;
  for (const qx::TXMLNode& Node : qx::TXMLNodeList<qx::TXMLNode>(Parent, Tag)) {
    Texts.push_back(Node.AsText());
  }
  return Texts;
}

// 64 bits that are no number: seeds and fingerprints.
std::uint64_t ReadBits(const qx::TXMLNode& Node) {
  std::istringstream Text(Node.AsText());
  std::uint64_t Value = 0;
  if (!(Text >> Value)) {
    Node.Refuse("no number");
  }
  return Value;
}

TRun ReadRun(const qx::TXMLNode& Root) {
  TRun Run;
  const qx::TXMLNode Data = Root.FindChild("Data");
  VisitTexts(Run, [&](std::string_view Name, std::string& Text) { Text = Data.FindChild(Name).AsText(); });
  Run.Data.Ignored = ReadList(Data, "Ignored");
  Run.Data.NoHeader = Data.FindChild("NoHeader").AsBoolean();
  Run.Data.Thousands = Data.FindChild("Thousands").AsBoolean();
  Run.TestShare = Data.FindChild("TestShare").AsNumber();
  Run.Rows = Data.FindChild("Rows").AsInteger();
  Run.Fingerprint = ReadBits(Data.FindChild("Fingerprint"));
  Run.Seed = ReadBits(Root.FindChild("Seed"));
  Run.ChosenSize = Root.FindChild("ChosenSize").AsInteger();
  Run.Command = ReadList(Root.FindChild("Command"), "Argument");
  for (const auto& Node : qx::TXMLNodeList<qx::TXMLNode>(Root.FindChild("History"), "Record")) {
    TRegressionRecord& Record = Run.History.emplace_back();
    VisitRecord(Record, [&](std::string_view Name, auto& Value) {
      using TValue = std::remove_reference_t<decltype(Value)>;
      if constexpr (std::is_integral_v<TValue>) {
        if (const auto Number = qx::ParseInteger(Node.Attribute(Name));
            Number && std::in_range<TValue>(*Number)) {
          Value = static_cast<TValue>(*Number);
          return;
        }
      } else if (const auto Number = qx::ParseReal(Node.Attribute(Name))) {
        Value = *Number;
        return;
      }
      Node.Refuse(fmt::format("{} is no number", Name));
    });
  }
  return Run;
}

} // namespace

const qx::TRegressionModel& ModelOfSize(const qx::TQXSymbolicRegression& Regression, int Size) {
  std::string Sizes;
  for (const qx::TRegressionModel& Model : Regression.Front()) {
    if (Model.Size() == Size) {
      return Model;
    }
    Sizes += (Sizes.empty() ? "" : ", ") + std::to_string(Model.Size());
  }
  throw EUsageError(Sizes.empty()
                        ? "The run has found no formula yet; resume it"
                        : fmt::format("The run has no formula of size {}; there are {}", Size, Sizes));
}

TRunFile::TRunFile(const std::string& FileName) : FFileName(FileName) {
  try {
    Read();
  } catch (const qx::EXMLError& Error) {
    throw EUsageError(
        fmt::format("{} holds no run ({}); qxevolve regress --save writes one", FileName, Error.what()));
  }
}

void TRunFile::Read() {
  const auto Document = qx::TXMLDocument::ReadFile(FFileName);
  const qx::TXMLNode Root = Document.Root("QXRun");
  if (Root.AttributeAsInteger("Version") > Version) {
    throw EUsageError(FFileName + " was written by a newer qxevolve");
  }
  FRun = ReadRun(Root);
  for (const auto& Node : qx::TXMLNodeList<qx::TXMLNode>(Root.FindChild("Functions"), "Function")) {
    FFunctions.emplace_back(Node.AsText(), Node.Attribute("Name"));
  }
  FState = Root.FindChild("State").AsText();
}

void TRunFile::RequireRunOrNothing(const std::string& FileName) {
  constexpr std::size_t Enough = 200;
  std::ifstream Stream(FileName, std::ios::binary);
  std::string Begin(Enough, ' ');
  if (Stream && (Stream.read(Begin.data(), Enough), Begin.find("<QXRun") == std::string::npos)) {
    throw EUsageError(FileName + " is there and holds no run; save under another name");
  }
}

void TRunFile::RequireTarget(const std::string& FileName, const std::string& Target) {
  if (!std::ifstream(FileName)) {
    return;
  }
  const TRun Run = TRunFile(FileName).Run();
  if (Run.Target != Target) {
    throw EUsageError(
        fmt::format("{} holds a run on another target, {}: --force replaces it", FileName, Run.Target));
  }
}

void TRunFile::AddFunctions(qx::TQXSymbolicRegression& Regression) const {
  for (const auto& [Name, NameInRun] : FFunctions) {
    AddStandardInstruction(Regression.Instructions(), Name, NameInRun);
  }
}

void TRunFile::Restore(qx::TQXSymbolicRegression& Regression) const {
  std::istringstream Stream(FState);
  try {
    Regression.LoadCheckpoint(Stream);
  } catch (const std::exception& Error) {
    throw std::runtime_error(FFileName + ": " + Error.what());
  }
}

void TRunFile::Write(const std::string& FileName, const TRun& Run, qx::TQXSymbolicRegression& Regression) {
  const auto Document = qx::TXMLDocument::New("QXRun");
  const qx::TXMLNode Root = Document.Root();
  Root.SetAttribute("Version", Version);
  WriteList(Root.Child("Command"), "Argument", Run.Command);
  const qx::TXMLNode Data = Root.Child("Data");
  VisitTexts(Run, [&](std::string_view Name, const std::string& Text) { Data.Child(Name).SetText(Text); });
  WriteList(Data, "Ignored", Run.Data.Ignored);
  Data.Child("NoHeader").SetBoolean(Run.Data.NoHeader);
  Data.Child("Thousands").SetBoolean(Run.Data.Thousands);
  Data.Child("TestShare").SetReal(Run.TestShare);
  Data.Child("Rows").SetInteger(Run.Rows);
  Data.Child("Fingerprint").SetText(std::to_string(Run.Fingerprint));
  Root.Child("Seed").SetText(std::to_string(Run.Seed));
  Root.Child("ChosenSize").SetInteger(Run.ChosenSize);
  const qx::TXMLNode Functions = Root.Child("Functions");
  for (const auto& Instruction : Regression.Instructions()) {
    if (const auto Name = qx::StandardInstructionName(Instruction); !Name.empty()) {
      const qx::TXMLNode Node = Functions.AddChild("Function");
      Node.SetText(Name);
      Node.SetAttribute("Name", Instruction.Name());
    }
  }
  const qx::TXMLNode History = Root.Child("History");
  for (const TRegressionRecord& Record : Run.History) {
    const qx::TXMLNode Node = History.AddChild("Record");
    VisitRecord(Record, [&](std::string_view Name, auto Value) {
      if constexpr (std::is_integral_v<decltype(Value)>) {
        Node.SetAttribute(Name, std::int64_t{Value});
      } else {
        Node.SetAttribute(Name, qx::NumberText(Value));
      }
    });
  }
  std::ostringstream State;
  Regression.SaveCheckpoint(State);
  Root.Child("State").SetText(State.str());
  Document.WriteFile(FileName);
}

} // namespace qxevolve
