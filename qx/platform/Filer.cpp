#include <qx/platform/Collection.h>
#include <qx/platform/Component.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Text.h>
#include <qx/platform/XML.h>

#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>
#include <utility>
#include <vector>

namespace qx {

namespace {

constexpr std::string_view StateHeading = "QXCheckpoint 1";

class TWriter final : public TFiler {
public:
  explicit TWriter(bool Exact) : FExact(Exact) {}

  void Line(std::string_view Text) { FText.append(2 * FDepth, ' ').append(Text) += '\n'; }

  void WriteBlock(TPersistent& Object) {
    Line(Object.ClassName() + " {");
    ++FDepth;
    Define(Object, *this);
    --FDepth;
    Line("}");
  }

  const std::string& Text() const { return FText; }

  bool Writes() const override { return true; }
  bool Exact() const override { return FExact; }
  bool Applies() const override { return false; }

  void Items(std::string_view Name, TOwnedCollection& Items, const TStart& /*Start*/,
             const TAdd& /*Add*/) override {
    if (Items.Count() == 0 && !FExact) {
      return;
    }
    Line(std::string(Name) + " {");
    ++FDepth;
    for (int I = 0; I < Items.Count(); ++I) {
      WriteBlock(Items.Items(I));
    }
    --FDepth;
    Line("}");
  }

private:
  void Write(std::string_view Name, const std::string& Text) override {
    Line(std::string(Name) + " = " + Text);
  }

  void Read(std::string_view /*Name*/, const TTake& /*Take*/) override {}

  bool FExact;
  std::string FText;
  std::size_t FDepth = 0;
};

// A block of the stream: properties and blocks, in their order, until they have been asked for.
struct TBlock {
  struct TEntry {
    std::string Name;
    std::string Text;
    int Line = 0;
    bool Taken = false;
  };

  std::string Name;
  int Line = 0;
  std::vector<TEntry> Properties;
  std::vector<TBlock> Blocks;
  bool Taken = false;
};

class TParser {
public:
  TParser(std::istream& Stream, std::size_t MostBytes) : FStream(Stream), FMostBytes(MostBytes) {
    if (!Stream) {
      throw std::ios_base::failure("The component could not be read from the stream");
    }
  }

  TBlock ParseComponent() {
    std::string_view Line = NextLine();
    if (Line.size() < 2 || Line.back() != '{') {
      Refuse("a component stream begins with a class name and an opening brace");
    }
    return ParseBlock(BlockName(Line), 1);
  }

  void ParseHeading() {
    if (NextLine() != StateHeading) {
      Refuse("a checkpoint that can be read begins with " + std::string(StateHeading));
    }
  }

  void ParseEnd() {
    for (char C = 0; FStream.get(C); ++FBytes) {
      if (!Trimmed(std::string_view(&C, 1)).empty()) {
        Refuse("something stands behind the checkpoint");
      }
    }
  }

  std::size_t Length() const { return FBytes; }

private:
  [[noreturn]] void Refuse(const std::string& Message) const { throw EPropertyError(Message, FLine); }

  // The next line that is not empty, without the blanks at its ends.
  std::string_view NextLine() {
    using TTraits = std::istream::traits_type;
    FBuffer.clear();
    while (true) {
      const auto Byte = FStream.rdbuf()->sbumpc();
      const bool AtEnd = TTraits::eq_int_type(Byte, TTraits::eof());
      if (!AtEnd && TTraits::to_char_type(Byte) != '\n') {
        FBuffer += TTraits::to_char_type(Byte);
        if (++FBytes > FMostBytes) {
          Refuse("the component is longer than " + std::to_string(FMostBytes) + " bytes");
        }
        continue;
      }
      ++FLine;
      const std::string_view Line = Trimmed(FBuffer);
      if (!Line.empty()) {
        return Line;
      }
      if (AtEnd) {
        Refuse("the stream ends before the component does");
      }
      FBuffer.clear();
    }
  }

  static std::string BlockName(std::string_view Line) {
    return std::string(Trimmed(Line.substr(0, Line.size() - 1)));
  }

  TBlock ParseBlock(std::string Name, int Depth) {
    constexpr int DeepestBlock = 16;
    if (Depth > DeepestBlock) {
      Refuse("blocks nested deeper than " + std::to_string(DeepestBlock));
    }
    TBlock Block;
    Block.Name = std::move(Name);
    Block.Line = FLine;
    for (std::string_view Line = NextLine(); Line != "}"; Line = NextLine()) {
      const std::size_t Equals = Line.find('=');
      if (Equals != std::string_view::npos) {
        Block.Properties.push_back({std::string(Trimmed(Line.substr(0, Equals))),
                                    std::string(Trimmed(Line.substr(Equals + 1))), FLine});
      } else if (Line.back() == '{') {
        Block.Blocks.push_back(ParseBlock(BlockName(Line), Depth + 1));
      } else {
        Refuse("neither a property nor a block: " + std::string(Line.substr(0, 60)));
      }
    }
    return Block;
  }

  std::istream& FStream;
  std::size_t FMostBytes;
  std::string FBuffer;
  std::size_t FBytes = 0;
  int FLine = 0;
};

class TReader final : public TFiler {
public:
  // Unless it shall apply them, the reader only finds out whether all properties are known and read. The
  // length is that of an exact stream, or 0.
  TReader(bool Apply, std::size_t ExactLength) : FApply(Apply), FExactLength(ExactLength) {}

  bool Writes() const override { return false; }
  bool Exact() const override { return FExactLength > 0; }
  bool Applies() const override { return FApply; }
  std::size_t Length() const override { return FExactLength; }

  void ReadBlock(TBlock& Block, TPersistent& Object) {
    if (Exact() && Block.Name != Object.ClassName()) {
      throw EPropertyError("a " + Block.Name + " stands where a " + Object.ClassName() + " is made",
                           Block.Line);
    }
    TBlock* const Outer = std::exchange(FBlock, &Block);
    Define(Object, *this);
    FBlock = Outer;
    for (auto& Property : Block.Properties) {
      if (!std::exchange(Property.Taken, false)) {
        throw EPropertyError("a " + Object.ClassName() + " has no property \"" + Property.Name +
                                 "\", or it stands there twice",
                             Property.Line);
      }
    }
    for (TBlock& Inner : Block.Blocks) {
      if (!std::exchange(Inner.Taken, false)) {
        throw EPropertyError("a " + Object.ClassName() + " has no block \"" + Inner.Name +
                                 "\", or it stands there twice",
                             Inner.Line);
      }
    }
  }

  void Items(std::string_view Name, TOwnedCollection& Items, const TStart& Start, const TAdd& Add) override {
    const auto Found = std::find_if(FBlock->Blocks.begin(), FBlock->Blocks.end(),
                                    [&](const TBlock& Block) { return Block.Name == Name; });
    if (Found == FBlock->Blocks.end()) {
      AllowMissing(Name);
      return;
    }
    Found->Taken = true;
    RequireNoProperties(*Found);
    if (!FApply) {
      const std::unique_ptr<TCollectionItem> Item = Items.ItemClass().Make();
      for (TBlock& Block : Found->Blocks) {
        ReadBlock(Block, *Item);
      }
      return;
    }
    Guarded(*Found, [&] { Start(static_cast<int>(Found->Blocks.size())); });
    for (TBlock& Block : Found->Blocks) {
      TCollectionItem* Item = nullptr;
      Guarded(Block, [&] { Item = &Add(NameIn(Block)); });
      ReadBlock(Block, *Item);
    }
  }

private:
  void Write(std::string_view /*Name*/, const std::string& /*Text*/) override {}

  void Read(std::string_view Name, const TTake& Take) override {
    const auto Found = std::find_if(FBlock->Properties.begin(), FBlock->Properties.end(),
                                    [&](const TBlock::TEntry& Entry) { return Entry.Name == Name; });
    if (Found == FBlock->Properties.end()) {
      AllowMissing(Name);
      return;
    }
    Found->Taken = true;
    Guarded(*Found, [&] { Take(Found->Text, FApply); });
  }

  void AllowMissing(std::string_view Name) const {
    if (Exact()) {
      throw EPropertyError("the " + FBlock->Name + " lacks \"" + std::string(Name) + '"', FBlock->Line);
    }
  }

  // Tells where the value stands that was refused.
  template <class TPlace, class TCall>
  static void Guarded(const TPlace& Place, TCall Call) {
    try {
      Call();
    } catch (const std::logic_error& Error) { // an argument, a range or a length
      throw EPropertyError(Place.Name + ": " + Error.what(), Place.Line);
    }
  }

  static void RequireNoProperties(const TBlock& Block) {
    if (!Block.Properties.empty()) {
      throw EPropertyError("\"" + Block.Properties.front().Name + "\" stands outside an item of " +
                               Block.Name,
                           Block.Properties.front().Line);
    }
  }

  static std::string NameIn(const TBlock& Block) {
    for (const TBlock::TEntry& Entry : Block.Properties) {
      if (Entry.Name == "Name") {
        return TPropertyText<std::string>::Parse(Entry.Text);
      }
    }
    return {};
  }

  bool FApply;
  std::size_t FExactLength;
  TBlock* FBlock = nullptr;
};

void WriteText(std::ostream& Stream, std::string_view Text) {
  Stream.write(Text.data(), static_cast<std::streamsize>(Text.size()));
  if (!Stream.flush()) {
    throw std::ios_base::failure("The component could not be written to the stream");
  }
}

} // namespace

EPropertyError::EPropertyError(const std::string& Message, int Line)
    : std::runtime_error("Line " + std::to_string(Line) + ": " + Message), FLine(Line) {}

void TFiler::Define(TPersistent& Object, TFiler& Filer) {
  if (Filer.Exact()) {
    Object.DefineState(Filer);
  } else {
    Object.DefineProperties(Filer);
  }
}

void WriteComponent(std::ostream& Stream, TComponent& Component) {
  TWriter Writer(false);
  Writer.WriteBlock(Component);
  WriteText(Stream, Writer.Text());
}

void ReadComponent(std::istream& Stream, TComponent& Component) {
  TBlock Block = TParser(Stream, DefaultXMLLimits.Bytes).ParseComponent();
  TReader(false, 0).ReadBlock(Block, Component);
  Component.Loading([&] { TReader(true, 0).ReadBlock(Block, Component); });
}

void WriteState(std::ostream& Stream, TComponent& Component) {
  TWriter Writer(true);
  Writer.Line(StateHeading);
  Writer.WriteBlock(Component);
  WriteText(Stream, Writer.Text());
}

void ReadState(std::istream& Stream, TComponent& Component) {
  TParser Parser(Stream, std::numeric_limits<std::size_t>::max());
  Parser.ParseHeading();
  TBlock Block = Parser.ParseComponent();
  Parser.ParseEnd();
  if (Block.Name != Component.ClassName()) {
    throw EPropertyError("the checkpoint of a " + Block.Name + ", not of a " + Component.ClassName(),
                         Block.Line);
  }
  TReader(false, Parser.Length()).ReadBlock(Block, Component);
  Component.Loading([&] { TReader(true, Parser.Length()).ReadBlock(Block, Component); });
}

} // namespace qx
