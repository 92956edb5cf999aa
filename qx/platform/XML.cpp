#include <qx/platform/Files.h>
#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>
#include <qx/platform/Utf8.h>
#include <qx/platform/XMLTree.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <ostream>
#include <system_error>

namespace qx {

namespace {

struct TRange {
  char32_t First;
  char32_t Last;
};

// Characters that may begin a tag; the colon, which parts name spaces, is left out.
constexpr TRange TagStarts[] = {{'A', 'Z'},       {'_', '_'},       {'a', 'z'},        {0xc0, 0xd6},
                                {0xd8, 0xf6},     {0xf8, 0x2ff},    {0x370, 0x37d},    {0x37f, 0x1fff},
                                {0x200c, 0x200d}, {0x2070, 0x218f}, {0x2c00, 0x2fef},  {0x3001, 0xd7ff},
                                {0xf900, 0xfdcf}, {0xfdf0, 0xfffd}, {0x10000, 0xeffff}};
constexpr TRange TagOthers[] = {{'-', '.'}, {'0', '9'}, {0xb7, 0xb7}, {0x300, 0x36f}, {0x203f, 0x2040}};

template <std::size_t N>
bool In(const TRange (&Ranges)[N], char32_t CodePoint) {
  return std::any_of(std::begin(Ranges), std::end(Ranges), [=](const TRange& Range) {
    return Range.First <= CodePoint && CodePoint <= Range.Last;
  });
}

std::string InQuotes(std::string_view Text) {
  constexpr std::size_t Longest = 60;
  return '"' + std::string(Text.substr(0, Longest)) + (Text.size() > Longest ? "\"..." : "\"");
}

void RequireTag(std::string_view Tag) {
  if (!detail::IsXMLName(Tag) || Tag.find(':') != std::string_view::npos) {
    throw std::invalid_argument(InQuotes(Tag) + " cannot be the tag of an XML element");
  }
}

// Where text cannot stand in a document, names whom it belongs to.
void RequireText(std::string_view Where, std::string_view Text) {
  if (const auto Fault = detail::FindXMLFault(Text)) {
    throw std::invalid_argument(InQuotes(Where) + " cannot hold " + Fault->What +
                                ", which no XML document can");
  }
}

pugi::xml_node ElementFrom(pugi::xml_node Node) {
  while (Node && Node.type() != pugi::node_element) {
    Node = Node.next_sibling();
  }
  return Node;
}

std::string AtPlace(const std::string& Message, int Line, int Column) {
  return Line > 0 ? "Line " + std::to_string(Line) + ", column " + std::to_string(Column) + ": " + Message
                  : Message;
}

std::string ReadAll(std::istream& Stream, std::size_t Limit) {
  if (!Stream) {
    throw std::ios_base::failure("The document could not be read from the stream");
  }
  std::string Bytes;
  char Buffer[1 << 16];
  // Past the stream's own state, in which the end would be a failure.
  while (const std::streamsize Count = Stream.rdbuf()->sgetn(Buffer, sizeof Buffer)) {
    Bytes.append(Buffer, static_cast<std::size_t>(Count));
    if (Bytes.size() > Limit) {
      break; // the reader refuses it
    }
  }
  return Bytes;
}

} // namespace

EXMLError::EXMLError(const std::string& Message, int Line, int Column)
    : std::runtime_error(AtPlace(Message, Line, Column)), FLine(Line), FColumn(Column) {}

bool detail::IsXMLName(std::string_view Name) {
  const auto IsLetter = [](char C) { return (C >= 'a' && C <= 'z') || (C >= 'A' && C <= 'Z'); };
  if (!Name.empty() && std::all_of(Name.begin(), Name.end(), IsLetter)) { // as nearly always
    return true;
  }
  std::string WithoutSpaces(Name);
  std::replace(WithoutSpaces.begin(), WithoutSpaces.end(), ':', '_');
  return XMLTag(WithoutSpaces) == WithoutSpaces;
}

std::string XMLTag(std::string_view Text) {
  std::string Tag;
  for (std::size_t Offset = 0; Offset < Text.size();) {
    const std::size_t First = Offset;
    const std::optional<char32_t> CodePoint = NextCodePoint(Text, Offset);
    if (CodePoint && (In(TagStarts, *CodePoint) || (First > 0 && In(TagOthers, *CodePoint)))) {
      Tag += Text.substr(First, Offset - First);
    } else {
      Tag += '_';
      Offset = CodePoint ? Offset : First + 1;
    }
  }
  return Tag.empty() ? "_" : Tag;
}

// --- Document ----------------------------------------------------------------------------------------------

TXMLDocument TXMLDocument::New(std::string_view RootTag) {
  RequireTag(RootTag);
  auto Tree = std::make_shared<detail::TXMLTree>();
  Tree->Document.append_child(std::string(RootTag).c_str());
  return TXMLDocument(std::move(Tree));
}

TXMLDocument TXMLDocument::Read(std::istream& Stream, const TXMLLimits& Limits) {
  return TXMLDocument(detail::ReadXML(ReadAll(Stream, Limits.Bytes), Limits));
}

TXMLDocument TXMLDocument::Parse(std::string_view Text, const TXMLLimits& Limits) {
  return TXMLDocument(detail::ReadXML(std::string(Text), Limits));
}

TXMLDocument TXMLDocument::ReadFile(const std::string& FileName, const TXMLLimits& Limits) {
  errno = 0;
  std::ifstream File(FileName, std::ios::binary);
  std::string Bytes;
  try {
    Bytes = ReadAll(File, Limits.Bytes);
  } catch (const std::ios_base::failure&) {
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(),
                            "Cannot read \"" + FileName + '"');
  }
  return TXMLDocument(detail::ReadXML(std::move(Bytes), Limits));
}

TXMLNode TXMLDocument::Root() const {
  return {FTree, ElementFrom(FTree->Document.first_child()).internal_object()};
}

TXMLNode TXMLDocument::Root(std::string_view Tag) const {
  TXMLNode Found = Root();
  if (Found.Tag() != Tag) {
    Found.Refuse("the root element is not " + InQuotes(Tag));
  }
  return Found;
}

std::string TXMLDocument::Text() const { return detail::WriteXML(FTree->Document); }

void TXMLDocument::Write(std::ostream& Stream) const {
  const std::string Content = Text();
  Stream.write(Content.data(), static_cast<std::streamsize>(Content.size()));
  if (!Stream.flush()) {
    throw std::ios_base::failure("The document could not be written to the stream");
  }
}

void TXMLDocument::WriteFile(const std::string& FileName) const { ReplaceFile(FileName, Text()); }

// --- Element -----------------------------------------------------------------------------------------------

std::string_view TXMLNode::Tag() const { return pugi::xml_node(FNode).name(); }

TXMLNode TXMLNode::FirstChild() const {
  return At(ElementFrom(pugi::xml_node(FNode).first_child()).internal_object());
}

TXMLNode TXMLNode::NextSibling() const {
  return At(ElementFrom(pugi::xml_node(FNode).next_sibling()).internal_object());
}

int TXMLNode::ChildCount() const {
  int Count = 0;
  for (TXMLNode Child = FirstChild(); Child; Child = Child.NextSibling()) {
    ++Count;
  }
  return Count;
}

TXMLNode TXMLNode::FindChild(std::string_view Tag) const {
  for (pugi::xml_node Node = pugi::xml_node(FNode).first_child(); Node; Node = Node.next_sibling()) {
    if (Node.type() == pugi::node_element && Tag == Node.name()) {
      return At(Node.internal_object());
    }
  }
  return {};
}

TXMLNode TXMLNode::Child(std::string_view Tag) const {
  TXMLNode Found = FindChild(Tag);
  return Found || FTree == nullptr || FTree->Readers > 0 ? Found : AddChild(Tag);
}

TXMLReadScope::TXMLReadScope(const TXMLNode& Node) : FTree(Node.FTree) {
  if (FTree != nullptr) {
    ++FTree->Readers;
  }
}

TXMLReadScope::~TXMLReadScope() {
  if (FTree != nullptr) {
    --FTree->Readers;
  }
}

TXMLNode TXMLNode::AddChild(std::string_view Tag) const {
  RequireTag(Tag);
  return At(pugi::xml_node(FNode).append_child(std::string(Tag).c_str()).internal_object());
}

// From the leaves up: removing a tree goes as deep as that is.
void TXMLNode::Clear() const {
  const pugi::xml_node Top(FNode);
  pugi::xml_node Node = Top;
  while (Top.first_child()) {
    if (Node.first_child()) {
      Node = Node.first_child();
    } else {
      const pugi::xml_node Leaf = Node;
      Node = Node.parent();
      Node.remove_child(Leaf);
    }
  }
}

bool TXMLNode::HasAttribute(std::string_view Name) const {
  return static_cast<bool>(pugi::xml_node(FNode).attribute(std::string(Name).c_str()));
}

std::string TXMLNode::Attribute(std::string_view Name) const {
  return pugi::xml_node(FNode).attribute(std::string(Name).c_str()).value();
}

int TXMLNode::AttributeAsInteger(std::string_view Name) const {
  const std::string Text = Attribute(Name);
  if (Text.empty()) {
    return 0;
  }
  const std::optional<std::int64_t> Value = ParseInteger(Text);
  if (!Value || !std::in_range<int>(*Value)) {
    Refuse("the attribute " + InQuotes(Name) + " holds " + InQuotes(Text) +
           ", which is no whole number of 32 bits");
  }
  return static_cast<int>(*Value);
}

void TXMLNode::SetAttribute(std::string_view Name, std::string_view Value) const {
  RequireTag(Name);
  RequireText(Name, Value);
  const std::string Key(Name);
  pugi::xml_node Node(FNode);
  pugi::xml_attribute Found = Node.attribute(Key.c_str());
  if (!Found) {
    Found = Node.append_attribute(Key.c_str());
  }
  Found.set_value(std::string(Value).c_str());
}

void TXMLNode::SetAttribute(std::string_view Name, std::int64_t Value) const {
  SetAttribute(Name, std::to_string(Value));
}

std::string TXMLNode::AsText() const {
  std::string Text;
  for (const pugi::xml_node Node : pugi::xml_node(FNode).children()) {
    if (Node.type() == pugi::node_pcdata || Node.type() == pugi::node_cdata) {
      Text += Node.value();
    }
  }
  return Text;
}

double TXMLNode::AsReal() const {
  const std::string Text = AsText();
  if (Trimmed(Text).empty()) {
    return 0;
  }
  const std::optional<double> Value = ParseReal(Text);
  if (!Value) {
    Refuse("holds " + InQuotes(Text) + ", which is no number");
  }
  return *Value;
}

double TXMLNode::AsNumber() const {
  const double Value = AsReal();
  if (std::isnan(Value)) {
    Refuse("must be a number, not NaN");
  }
  return Value;
}

int TXMLNode::AsInteger() const {
  const std::int64_t Value = AsInt64();
  if (!std::in_range<int>(Value)) {
    Refuse("holds " + InQuotes(AsText()) + ", which is no whole number of 32 bits");
  }
  return static_cast<int>(Value);
}

std::int64_t TXMLNode::AsInt64() const {
  const std::string Text = AsText();
  if (Trimmed(Text).empty()) {
    return 0;
  }
  const std::optional<std::int64_t> Value = ParseInteger(Text);
  if (!Value) {
    Refuse("holds " + InQuotes(Text) + ", which is no whole number");
  }
  return *Value;
}

bool TXMLNode::AsBoolean() const { return SameText(AsText(), "true"); }

void TXMLNode::SetText(std::string_view Value) const {
  RequireText(Tag(), Value);
  Clear();
  if (!Value.empty()) {
    pugi::xml_node(FNode).append_child(pugi::node_pcdata).set_value(std::string(Value).c_str());
  }
}

void TXMLNode::SetSingle(double Value) const { SetText(SingleText(Value)); }

void TXMLNode::SetReal(double Value) const { SetText(NumberText(Value)); }

void TXMLNode::SetInteger(std::int64_t Value) const { SetText(std::to_string(Value)); }

void TXMLNode::Refuse(const std::string& Message) const {
  const std::string Whole = InQuotes(Tag()) + ": " + Message;
  const std::ptrdiff_t Offset = pugi::xml_node(FNode).offset_debug();
  if (FTree == nullptr || FTree->Source.empty() || Offset < 0) {
    throw EXMLError(Whole, 0, 0);
  }
  detail::RaiseXMLError(Whole, FTree->Source, static_cast<std::size_t>(Offset));
}

} // namespace qx
