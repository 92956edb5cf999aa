// Reads documents. The parser is fast and lenient; what it would accept or drop in silence is refused here.

#include <qx/platform/Text.h>
#include <qx/platform/Utf8.h>
#include <qx/platform/XMLTree.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <vector>

namespace qx::detail {

namespace {

constexpr std::string_view Utf8Mark = "\xef\xbb\xbf";

bool StartsWith(std::string_view Text, std::size_t Offset, std::string_view Start) {
  return Text.substr(Offset, Start.size()) == Start;
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

// The encoding that the declaration names, or nothing.
std::string DeclaredEncoding(std::string_view Text) {
  if (!StartsWith(Text, 0, "<?xml")) {
    return {};
  }
  const std::string_view Declaration = Text.substr(0, Text.find("?>"));
  const std::size_t Key = Declaration.find("encoding");
  const std::size_t Open = Key == std::string_view::npos ? Key : Declaration.find_first_of("'\"", Key);
  if (Open == std::string_view::npos) {
    return {};
  }
  const std::size_t Close = Declaration.find(Declaration[Open], Open + 1);
  return LowerText(Declaration.substr(Open + 1, Close == std::string_view::npos ? Close : Close - Open - 1));
}

std::string ToUtf8(std::string Bytes) {
  if (StartsWith(Bytes, 0, "\xff\xfe") || StartsWith(Bytes, 0, "\xfe\xff")) {
    return FromUtf16(Bytes, Bytes[0] == '\xfe');
  }
  if (StartsWith(Bytes, 0, Utf8Mark)) {
    Bytes.erase(0, Utf8Mark.size());
  }
  const std::string Encoding = DeclaredEncoding(Bytes);
  if (Encoding == "iso-8859-1" || Encoding == "latin1") {
    return FromLatin1(Bytes);
  }
  if (!Encoding.empty() && Encoding != "utf-8" && Encoding != "utf8" && Encoding != "us-ascii") {
    RaiseXMLError("the encoding \"" + Encoding.substr(0, 40) + "\" is not known, or the text is not in it", Bytes, 0);
  }
  return Bytes;
}

void CheckCharacters(std::string_view Text) {
  for (std::size_t Offset = 0; Offset < Text.size();) {
    const auto Byte = static_cast<unsigned char>(Text[Offset]);
    if (Byte >= 0x20 && Byte < 0x80) {
      ++Offset;
      continue;
    }
    const std::size_t First = Offset;
    const std::optional<char32_t> CodePoint = NextCodePoint(Text, Offset);
    if (!CodePoint) {
      RaiseXMLError("the text is not UTF-8 here", Text, First);
    }
    if (!IsXMLCharacter(*CodePoint)) {
      RaiseXMLError("the character of code " + std::to_string(static_cast<std::uint32_t>(*CodePoint)) +
                        " may not stand in an XML document",
                    Text, First);
    }
  }
}

// --- Markup ------------------------------------------------------------------------------------------------

void CheckReference(std::string_view Text, std::size_t Offset) {
  const std::size_t End = Text.substr(Offset, 16).find(';');
  const std::string_view Name = End == std::string_view::npos ? std::string_view() : Text.substr(Offset + 1, End - 1);
  for (const std::string_view Known : {"amp", "lt", "gt", "quot", "apos"}) {
    if (Name == Known) {
      return;
    }
  }
  char32_t CodePoint = 0;
  const bool Hexadecimal = Name.size() > 2 && Name[1] == 'x';
  const std::string_view Digits = Name.substr(std::min<std::size_t>(Name.size(), Hexadecimal ? 2 : 1));
  bool Legal = !Digits.empty() && Name[0] == '#';
  for (const char C : Digits) {
    const std::size_t Digit =
        std::string_view(Hexadecimal ? "0123456789abcdef" : "0123456789").find(LowerText({&C, 1}));
    Legal = Legal && Digit != std::string_view::npos && CodePoint <= 0x10ffff;
    CodePoint = CodePoint * (Hexadecimal ? 16 : 10) + static_cast<char32_t>(Digit);
  }
  if (!Legal || !IsXMLCharacter(CodePoint)) {
    RaiseXMLError("a reference to an entity or a character that is not known", Text, Offset);
  }
}

// One pass over the text before it is parsed: refuses what the parser would pass over in silence, and counts the
// elements, which take more memory than the text.
void CheckMarkup(std::string_view Text, const TXMLLimits& Limits) {
  std::size_t Elements = 0;
  const auto SkipTo = [&](std::size_t Offset, std::string_view End) {
    const std::size_t Found = Text.find(End, Offset);
    return Found == std::string_view::npos ? Text.size() : Found + End.size();
  };
  std::size_t Offset = Text.find_first_of("<&");
  while (Offset != std::string_view::npos && Offset < Text.size()) {
    std::size_t Next = Offset + 1;
    if (Text[Offset] == '&') {
      CheckReference(Text, Offset);
    } else if (StartsWith(Text, Offset, "<!--")) {
      Next = SkipTo(Offset + 4, "-->");
    } else if (StartsWith(Text, Offset, "<![CDATA[")) {
      Next = SkipTo(Offset, "]]>");
    } else if (StartsWith(Text, Offset, "<?")) {
      Next = SkipTo(Offset, "?>");
    } else if (StartsWith(Text, Offset, "<!")) {
      RaiseXMLError("document type declarations and entities are not accepted", Text, Offset);
    } else if (!StartsWith(Text, Offset, "</") && ++Elements > Limits.Elements) {
      RaiseXMLError("more than " + std::to_string(Limits.Elements) + " elements", Text, Offset);
    }
    Offset = Text.find_first_of("<&", Next);
  }
}

// --- Parsed document ---------------------------------------------------------------------------------------

/// Walks the parsed document without recursion.
class TTreeCheck {
public:
  TTreeCheck(const TXMLTree& Tree, const TXMLLimits& Limits) : FTree(Tree), FLimits(Limits) {}

  void Check() {
    CheckTop();
    std::size_t Depth = 1;
    const pugi::xml_node Root = FTree.Document.document_element();
    pugi::xml_node Node = Root;
    while (true) {
      CheckElement(Node, Depth);
      if (const pugi::xml_node First = NextElement(Node.first_child())) {
        Node = First;
        ++Depth;
        continue;
      }
      pugi::xml_node Next;
      while (Node != Root && !(Next = NextElement(Node.next_sibling()))) {
        Node = Node.parent();
        --Depth;
      }
      if (Node == Root) {
        return;
      }
      Node = Next;
    }
  }

private:
  static pugi::xml_node NextElement(pugi::xml_node Node) {
    while (Node && Node.type() != pugi::node_element) {
      Node = Node.next_sibling();
    }
    return Node;
  }

  void CheckTop() {
    int Roots = 0;
    for (const pugi::xml_node Node : FTree.Document.children()) {
      if (Node.type() == pugi::node_element) {
        Roots += 1;
        if (Roots > 1) {
          Refuse("a second root element", Node);
        }
      } else if (!Trimmed(Node.value()).empty()) {
        RaiseXMLError("text outside the root element", FTree.Source, OffsetOfStray(Node));
      }
    }
    if (Roots == 0) {
      RaiseXMLError("the document has no root element", FTree.Source, 0);
    }
  }

  // Text has no place of its own in the parsed document; it follows what stands before it.
  std::size_t OffsetOfStray(pugi::xml_node Node) const {
    const std::size_t Found = FTree.Source.rfind(Trimmed(Node.value()));
    return Found == std::string::npos ? 0 : Found;
  }

  void CheckElement(pugi::xml_node Node, std::size_t Depth) {
    ++FElements;
    if (Depth > FLimits.Depth) {
      Refuse("elements nested deeper than " + std::to_string(FLimits.Depth) + " levels", Node);
    }
    FNames.clear();
    for (const pugi::xml_attribute Attribute : Node.attributes()) {
      ++FElements;
      FNames.emplace_back(Attribute.name());
      if (std::strlen(Attribute.value()) > FLimits.Attribute) {
        Refuse("the attribute \"" + std::string(Attribute.name()) + "\" is longer than " +
                   std::to_string(FLimits.Attribute) + " bytes",
               Node);
      }
    }
    std::sort(FNames.begin(), FNames.end());
    const auto Twice = std::adjacent_find(FNames.begin(), FNames.end());
    if (Twice != FNames.end()) {
      Refuse("the attribute \"" + std::string(*Twice) + "\" stands there twice", Node);
    }
    if (FElements > FLimits.Elements) {
      Refuse("more than " + std::to_string(FLimits.Elements) + " elements and attributes", Node);
    }
  }

  [[noreturn]] void Refuse(const std::string& Message, pugi::xml_node Node) const {
    RaiseXMLError(Message, FTree.Source, static_cast<std::size_t>(std::max<std::ptrdiff_t>(Node.offset_debug(), 0)));
  }

  const TXMLTree& FTree;
  const TXMLLimits& FLimits;
  std::size_t FElements = 0;
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
  CheckCharacters(Text);
  CheckMarkup(Text, Limits);
  // As a fragment, so that nothing around the root is dropped.
  constexpr unsigned Options = pugi::parse_default | pugi::parse_fragment | pugi::parse_ws_pcdata_single;
  const pugi::xml_parse_result Result =
      Tree->Document.load_buffer(Text.data(), Text.size(), Options, pugi::encoding_utf8);
  if (Result.status == pugi::status_out_of_memory) {
    throw std::bad_alloc();
  }
  if (!Result) {
    RaiseXMLError(Result.description(), Text, static_cast<std::size_t>(std::max<std::ptrdiff_t>(Result.offset, 0)));
  }
  TTreeCheck(*Tree, Limits).Check();
  return Tree;
}

} // namespace qx::detail
