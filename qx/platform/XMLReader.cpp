// Reads documents. The parser is fast and lenient; what it would accept though no document may be so is
// refused here.

#include <qx/platform/Text.h>
#include <qx/platform/Utf8.h>
#include <qx/platform/XMLTree.h>

#include <algorithm>
#include <new>
#include <optional>
#include <vector>

namespace qx::detail {

namespace {

constexpr std::string_view Utf8Mark = "\xef\xbb\xbf";

bool StartsWith(std::string_view Text, std::size_t Offset, std::string_view Start) {
  return Offset <= Text.size() && Text.substr(Offset, Start.size()) == Start;
}

bool IsBlank(char C) { return C == ' ' || C == '\t' || C == '\r' || C == '\n'; }

// Whether the text begins with an XML declaration; an instruction may have a target that begins so.
bool HasDeclaration(std::string_view Text) {
  return StartsWith(Text, 0, "<?xml") && (Text.size() < 6 || IsBlank(Text[5]) || Text[5] == '?');
}

// --- Encoding ----------------------------------------------------------------------------------------------

// Reads units of 16 bits, the mark aside, whose higher byte is the first or the second.
std::string FromUtf16(std::string_view Bytes, bool HighFirst) {
  constexpr std::size_t MarkBytes = 2;
  std::string Text;
  char32_t High = 0; // a surrogate that waits for its other half
  std::size_t Offset = MarkBytes;
  for (; Offset + 1 < Bytes.size(); Offset += 2) {
    const char32_t First = static_cast<unsigned char>(Bytes[Offset]);
    const char32_t Second = static_cast<unsigned char>(Bytes[Offset + 1]);
    const char32_t Unit = HighFirst ? First << 8 | Second : Second << 8 | First;
    const bool IsLow = Unit >= 0xdc00 && Unit <= 0xdfff;
    if ((High != 0) != IsLow) {
      RaiseXMLError("a surrogate of UTF-16 without its other half", Text, Text.size());
    }
    if (Unit >= 0xd800 && Unit <= 0xdbff) {
      High = Unit;
    } else {
      AppendCodePoint(Text, IsLow ? 0x10000 + ((High - 0xd800) << 10) + (Unit - 0xdc00) : Unit);
      High = 0;
    }
  }
  if (High != 0 || Offset != Bytes.size()) {
    RaiseXMLError("the text ends in the middle of a character of UTF-16", Text, Text.size());
  }
  return Text;
}

std::string FromLatin1(std::string_view Bytes) {
  std::string Text;
  for (const char Byte : Bytes) {
    AppendCodePoint(Text, static_cast<unsigned char>(Byte));
  }
  return Text;
}

// Takes ` name = "value"` from the front of a declaration when it is there.
bool TakeFromDeclaration(std::string_view& Rest, std::string_view Name, std::string_view& Value) {
  std::string_view Text = Trimmed(Rest);
  if (Rest.empty() || !IsBlank(Rest.front()) || !StartsWith(Text, 0, Name)) {
    return false;
  }
  Text = Trimmed(Text.substr(Name.size()));
  if (!StartsWith(Text, 0, "=")) {
    return false;
  }
  Text = Trimmed(Text.substr(1));
  const bool Quoted = StartsWith(Text, 0, "\"") || StartsWith(Text, 0, "'");
  const std::size_t Close = Quoted ? Text.find(Text[0], 1) : std::string_view::npos;
  if (Close == std::string_view::npos) {
    return false;
  }
  Value = Text.substr(1, Close - 1);
  Rest = Text.substr(Close + 1);
  return true;
}

// The encoding that the declaration names in lower case, or nothing; raises EXMLError for a malformed
// declaration.
std::string DeclaredEncoding(std::string_view Text) {
  constexpr std::string_view NameCharacters = "abcdefghijklmnopqrstuvwxyz0123456789._-";
  if (!HasDeclaration(Text)) {
    return {};
  }
  constexpr std::size_t TargetEnd = 5;
  const std::size_t End = Text.find("?>");
  std::string_view Rest = Text.substr(TargetEnd, std::min(End, Text.size()) - TargetEnd);
  std::string_view Version;
  std::string_view Encoding;
  std::string_view Standalone = "no";
  bool Good = End != std::string_view::npos && TakeFromDeclaration(Rest, "version", Version);
  Good = Good && Version.size() > 2 && StartsWith(Version, 0, "1.") &&
         Version.find_first_not_of("0123456789", 2) == std::string_view::npos;
  const bool Encoded = TakeFromDeclaration(Rest, "encoding", Encoding);
  std::string Lower = LowerText(Encoding);
  Good = Good && (!Encoded || (!Lower.empty() && Lower[0] >= 'a' && Lower[0] <= 'z' &&
                               Lower.find_first_not_of(NameCharacters) == std::string::npos));
  TakeFromDeclaration(Rest, "standalone", Standalone);
  if (!Good || (Standalone != "yes" && Standalone != "no") || !Trimmed(Rest).empty()) {
    throw EXMLError("The declaration is malformed", 1, 1);
  }
  return Lower;
}

[[noreturn]] void RefuseEncoding(std::string_view Encoding) {
  constexpr std::size_t Longest = 40;
  throw EXMLError("The encoding \"" + std::string(Encoding.substr(0, Longest)) +
                      "\" is not known, or the text is not in it",
                  1, 1);
}

std::string ToUtf8(std::string Bytes) {
  if (StartsWith(Bytes, 0, "\xff\xfe") || StartsWith(Bytes, 0, "\xfe\xff")) {
    std::string Text = FromUtf16(Bytes, Bytes[0] == '\xfe');
    const std::string Encoding = DeclaredEncoding(Text);
    if (!Encoding.empty() && Encoding != "utf-16" && Encoding != "utf-16le" && Encoding != "utf-16be") {
      RefuseEncoding(Encoding);
    }
    return Text;
  }
  if (StartsWith(Bytes, 0, Utf8Mark)) {
    Bytes.erase(0, Utf8Mark.size());
  }
  const std::string Encoding = DeclaredEncoding(Bytes);
  if (Encoding == "iso-8859-1" || Encoding == "latin1") {
    return FromLatin1(Bytes);
  }
  const bool Ascii = Encoding == "us-ascii" || Encoding == "ascii";
  if (Ascii &&
      std::any_of(Bytes.begin(), Bytes.end(), [](char C) { return static_cast<signed char>(C) < 0; })) {
    RefuseEncoding(Encoding);
  }
  if (!Ascii && !Encoding.empty() && Encoding != "utf-8" && Encoding != "utf8") {
    RefuseEncoding(Encoding);
  }
  return Bytes;
}

// --- Markup ------------------------------------------------------------------------------------------------

// At an ampersand: one of the five entities, or the number of a character, however many zeros it begins with.
void CheckReference(std::string_view Text, std::size_t Offset) {
  for (const std::string_view Known : {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"}) {
    if (StartsWith(Text, Offset, Known)) {
      return;
    }
  }
  const bool Hexadecimal = StartsWith(Text, Offset, "&#x");
  const std::string_view Digits = Hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  const std::size_t First = Offset + (Hexadecimal ? 3 : 2);
  const std::size_t End = Text.find_first_not_of(Digits, First);
  char32_t CodePoint = 0;
  for (std::size_t I = First; I < std::min(End, Text.size()) && CodePoint <= 0x10ffff; ++I) {
    const auto Digit = static_cast<char32_t>(Digits.find(Text[I]));
    CodePoint = CodePoint * (Hexadecimal ? 16 : 10) + (Digit < 16 ? Digit : Digit - 6);
  }
  if (!StartsWith(Text, Offset, "&#") || End == First || !StartsWith(Text, End, ";") ||
      !IsXMLCharacter(CodePoint)) {
    RaiseXMLError("a reference to an entity or a character that is not known", Text, Offset);
  }
}

/// Goes over the text before it is parsed: refuses what the parser would pass over in silence, and what
/// exceeds a limit, since the parsed document takes many times the memory of the text.
class TMarkupCheck {
public:
  TMarkupCheck(std::string_view Text, const TXMLLimits& Limits) : FText(Text), FLimits(Limits) {}

  void Check() {
    FOffset = HasDeclaration(FText) ? Behind("?>", 0, "the declaration") : 0;
    while (FOffset < FText.size()) {
      if (FText[FOffset] != '<') {
        CheckText();
      } else if (StartsWith(FText, FOffset, "<!--")) {
        CheckComment();
      } else if (StartsWith(FText, FOffset, "<![CDATA[")) {
        CheckSection();
      } else if (StartsWith(FText, FOffset, "<?")) {
        CheckInstruction();
      } else if (StartsWith(FText, FOffset, "<!")) {
        Refuse("document type declarations and entities are not accepted", FOffset);
      } else {
        CheckTag();
      }
    }
  }

private:
  [[noreturn]] void Refuse(const std::string& Message, std::size_t Offset) const {
    RaiseXMLError(Message, FText, Offset);
  }

  // What lies behind the next `End`, which must come.
  std::size_t Behind(std::string_view End, std::size_t From, const char* What) const {
    const std::size_t Found = FText.find(End, From);
    if (Found == std::string_view::npos) {
      Refuse(std::string(What) + " is not closed", FOffset);
    }
    return Found + End.size();
  }

  // Of the text from `From` to `End`, and no further: the rest is searched when it is due.
  void CheckReferences(std::size_t From, std::size_t End) const {
    const std::string_view Part = FText.substr(0, End);
    for (std::size_t I = Part.find('&', From); I != std::string_view::npos; I = Part.find('&', I + 1)) {
      CheckReference(FText, I);
      if (FDepth == 0) {
        Refuse("text outside the root element", I);
      }
    }
  }

  void CheckText() {
    const std::size_t End = std::min(FText.find('<', FOffset), FText.size());
    CheckReferences(FOffset, End);
    const std::size_t Close = FText.substr(FOffset, End - FOffset).find("]]>");
    if (Close != std::string_view::npos) {
      Refuse("the end of a section without its beginning", FOffset + Close);
    }
    FOffset = End;
  }

  void CheckComment() {
    const std::size_t Dashes = Behind("--", FOffset + 4, "a comment");
    if (Dashes >= FText.size() || FText[Dashes] != '>') {
      Refuse("two dashes in a comment", Dashes - 2);
    }
    FOffset = Dashes + 1;
  }

  void CheckSection() {
    const std::size_t End = Behind("]]>", FOffset, "a section");
    if (FDepth == 0) {
      Refuse("text outside the root element", FOffset);
    }
    FOffset = End;
  }

  void CheckInstruction() {
    const std::size_t End = Behind("?>", FOffset, "an instruction");
    const std::size_t NameEnd = FText.find_first_of(" \t\r\n?", FOffset + 2);
    const std::string_view Target = FText.substr(FOffset + 2, NameEnd - FOffset - 2);
    if (!IsXMLName(Target)) {
      Refuse("an instruction without a proper target", FOffset);
    }
    if (SameText(Target, "xml")) {
      Refuse("a declaration that does not stand at the beginning", FOffset);
    }
    FOffset = End;
  }

  void CheckTag() {
    const std::size_t First = FOffset;
    std::size_t I = FText.find_first_of("<>\"'", First + 1);
    for (; I != std::string_view::npos && FText[I] != '>'; I = FText.find_first_of("<>\"'", I)) {
      if (FText[I] == '<') {
        Refuse("a tag is not closed", First);
      }
      I = CheckAttribute(I);
    }
    if (I == std::string_view::npos) {
      Refuse("a tag is not closed", First);
    }
    FOffset = I + 1;
    if (StartsWith(FText, First, "</")) {
      FDepth -= FDepth > 0 ? 1 : 0;
      return;
    }
    Count(First);
    if (FDepth + 1 > FLimits.Depth) {
      Refuse("elements nested deeper than " + std::to_string(FLimits.Depth) + " levels", First);
    }
    FDepth += FText[I - 1] == '/' ? 0 : 1;
  }

  // The value between the quote at `Open` and its counterpart; returns what lies behind it.
  std::size_t CheckAttribute(std::size_t Open) {
    const std::size_t Close = FText.find(FText[Open], Open + 1);
    if (Close == std::string_view::npos) {
      Refuse("an attribute's value is not closed", Open);
    }
    const std::string_view Value = FText.substr(Open + 1, Close - Open - 1);
    if (Value.find('<') != std::string_view::npos) {
      Refuse("\"<\" in an attribute's value", Open);
    }
    if (Value.size() > FLimits.Attribute) {
      Refuse("an attribute is longer than " + std::to_string(FLimits.Attribute) + " bytes", Open);
    }
    for (std::size_t I = Value.find('&'); I != std::string_view::npos; I = Value.find('&', I + 1)) {
      CheckReference(FText, Open + 1 + I);
    }
    Count(Open);
    return Close + 1;
  }

  void Count(std::size_t Offset) {
    if (++FCount > FLimits.Elements) {
      Refuse("more than " + std::to_string(FLimits.Elements) + " elements and attributes", Offset);
    }
  }

  std::string_view FText;
  const TXMLLimits& FLimits;
  std::size_t FOffset = 0;
  std::size_t FDepth = 0; // of the elements that are open
  std::size_t FCount = 0; // of elements and attributes
};

// --- Parsed document ---------------------------------------------------------------------------------------

/// Checks what the parsed document tells best: the root, names, and attributes that are there twice.
class TTreeCheck {
public:
  explicit TTreeCheck(const TXMLTree& Tree) : FTree(Tree) {}

  // Without recursion: a document may be deeper than the stack.
  void Check() {
    CheckTop();
    const pugi::xml_node Root = FTree.Document.document_element();
    pugi::xml_node Node = Root;
    while (true) {
      if (Node.type() == pugi::node_element) {
        CheckElement(Node);
      }
      if (Node.first_child()) {
        Node = Node.first_child();
        continue;
      }
      while (Node != Root && !Node.next_sibling()) {
        Node = Node.parent();
      }
      if (Node == Root) {
        return;
      }
      Node = Node.next_sibling();
    }
  }

private:
  void CheckTop() {
    int Roots = 0;
    for (const pugi::xml_node Node : FTree.Document.children()) {
      if (Node.type() == pugi::node_element) {
        Roots += 1;
        if (Roots > 1) {
          Refuse("a second root element", Node);
        }
      } else if (!Trimmed(Node.value()).empty()) {
        // Text has no place of its own in the parsed document.
        RaiseXMLError("text outside the root element", FTree.Source,
                      FTree.Source.rfind(Trimmed(Node.value())));
      }
    }
    if (Roots == 0) {
      RaiseXMLError("the document has no root element", FTree.Source, 0);
    }
  }

  void CheckElement(pugi::xml_node Node) {
    CheckName(Node.name(), Node);
    FNames.clear();
    for (const pugi::xml_attribute Attribute : Node.attributes()) {
      CheckName(Attribute.name(), Node);
      FNames.emplace_back(Attribute.name());
    }
    std::sort(FNames.begin(), FNames.end());
    const auto Twice = std::adjacent_find(FNames.begin(), FNames.end());
    if (Twice != FNames.end()) {
      Refuse("the attribute \"" + std::string(*Twice) + "\" stands there twice", Node);
    }
  }

  void CheckName(std::string_view Name, pugi::xml_node Node) const {
    if (!IsXMLName(Name)) {
      Refuse('"' + std::string(Name) + "\" can be no name", Node);
    }
  }

  [[noreturn]] void Refuse(const std::string& Message, pugi::xml_node Node) const {
    RaiseXMLError(Message, FTree.Source,
                  static_cast<std::size_t>(std::max<std::ptrdiff_t>(Node.offset_debug(), 0)));
  }

  const TXMLTree& FTree;
  std::vector<std::string_view> FNames;
};

} // namespace

void RaiseXMLError(const std::string& Message, std::string_view Text, std::size_t Offset) {
  const std::string_view Before = Text.substr(0, Offset);
  const std::size_t LineStart = Before.rfind('\n') + 1; // 0 when there is none
  const auto Lines = std::count(Before.begin(), Before.end(), '\n');
  throw EXMLError(Message, static_cast<int>(Lines) + 1, static_cast<int>(Before.size() - LineStart) + 1);
}

bool IsXMLCharacter(char32_t CodePoint) {
  if (CodePoint < 0x20) {
    return CodePoint == '\t' || CodePoint == '\n' || CodePoint == '\r';
  }
  const bool Surrogate = CodePoint >= 0xd800 && CodePoint <= 0xdfff;
  return !Surrogate && CodePoint != 0xfffe && CodePoint != 0xffff && CodePoint <= 0x10ffff;
}

std::optional<TXMLFault> FindXMLFault(std::string_view Text) {
  for (std::size_t Offset = 0; Offset < Text.size();) {
    const auto Byte = static_cast<unsigned char>(Text[Offset]);
    if (Byte >= 0x20 && Byte < 0x80) { // as nearly always
      ++Offset;
      continue;
    }
    const std::size_t First = Offset;
    const std::optional<char32_t> CodePoint = NextCodePoint(Text, Offset);
    if (!CodePoint) {
      return TXMLFault{First, "text that is not UTF-8"};
    }
    if (!IsXMLCharacter(*CodePoint)) {
      return TXMLFault{First,
                       "the character of code " + std::to_string(static_cast<std::uint32_t>(*CodePoint))};
    }
  }
  return std::nullopt;
}

std::shared_ptr<TXMLTree> ReadXML(std::string Bytes, const TXMLLimits& Limits) {
  if (Bytes.size() > Limits.Bytes) {
    throw EXMLError("The document is longer than " + std::to_string(Limits.Bytes) + " bytes", 0, 0);
  }
  auto Tree = std::make_shared<TXMLTree>();
  Tree->Source = ToUtf8(std::move(Bytes));
  const std::string& Text = Tree->Source;
  if (Trimmed(Text).empty()) {
    throw EXMLError("The document is empty", 0, 0);
  }
  if (const auto Fault = FindXMLFault(Text)) {
    RaiseXMLError("the document may not hold " + Fault->What, Text, Fault->Offset);
  }
  if (StartsWith(Text, 0, Utf8Mark)) {
    RaiseXMLError("text outside the root element", Text, 0);
  }
  TMarkupCheck(Text, Limits).Check();
  // As a fragment, so that nothing around the root is dropped.
  constexpr unsigned Options = pugi::parse_default | pugi::parse_fragment | pugi::parse_ws_pcdata_single;
  const pugi::xml_parse_result Result =
      Tree->Document.load_buffer(Text.data(), Text.size(), Options, pugi::encoding_utf8);
  if (Result.status == pugi::status_out_of_memory) {
    throw std::bad_alloc();
  }
  if (!Result) {
    RaiseXMLError(Result.description(), Text,
                  static_cast<std::size_t>(std::max<std::ptrdiff_t>(Result.offset, 0)));
  }
  TTreeCheck(*Tree).Check();
  return Tree;
}

} // namespace qx::detail
