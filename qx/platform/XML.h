#pragma once

// Thin access to XML documents: a document, its elements as handles, lists of elements and of values.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pugi {
struct xml_node_struct;
} // namespace pugi

namespace qx {

namespace detail {
struct TXMLTree; // the parsed document and its text
} // namespace detail

/// A document that is not well-formed, that exceeds a limit, or that holds a value of the wrong kind.
class EXMLError : public std::runtime_error {
public:
  EXMLError(const std::string& Message, int Line, int Column);
  /// Counted from 1; 0 when the error has no place in a text. A column counts bytes.
  int Line() const { return FLine; }
  int Column() const { return FColumn; }

private:
  int FLine;
  int FColumn;
};

/// What a document may hold to be read. One that holds more raises EXMLError before anything is used of it.
struct TXMLLimits {
  std::size_t Bytes = std::size_t{256} << 20;
  /// Levels of elements.
  std::size_t Depth = 1024;
  /// Elements and attributes together.
  std::size_t Elements = 50'000'000;
  /// Bytes of one attribute's value.
  std::size_t Attribute = std::size_t{1} << 20;
  /// The largest number of individuals, contestants or attempts that a setting read from a document or stream
  /// may ask for.
  int Count = 1'000'000;
};

/// The limits of every read that is given none; a host may change them.
inline TXMLLimits DefaultXMLLimits;

class TXMLNode;

/// A document, as a handle: copies refer to the same document, which lives as long as one of them or of its
/// elements.
class TXMLDocument {
public:
  /// A new document, version "1.0", with an empty root element. Raises std::invalid_argument for an illegal
  /// tag.
  static TXMLDocument New(std::string_view RootTag);
  /// Reads a stream to its end. UTF-8 (with or without mark), UTF-16 (with mark), and what a declaration
  /// names as US-ASCII or ISO-8859-1. Raises EXMLError, with the place, for what is not well-formed, has a
  /// document type declaration or exceeds the limits; std::ios_base::failure when the stream fails.
  static TXMLDocument Read(std::istream& Stream, const TXMLLimits& Limits = DefaultXMLLimits);
  static TXMLDocument Parse(std::string_view Text, const TXMLLimits& Limits = DefaultXMLLimits);
  /// Raises std::system_error, which names the file, when it cannot be read.
  static TXMLDocument ReadFile(const std::string& FileName, const TXMLLimits& Limits = DefaultXMLLimits);

  TXMLNode Root() const;
  /// The root when its tag is the given one; raises EXMLError, which names both, otherwise.
  TXMLNode Root(std::string_view Tag) const;

  /// The document as text: UTF-8, a declaration, line feeds, two blanks for each of the first levels.
  std::string Text() const;
  /// Writes the text. Raises std::ios_base::failure when the stream does not take it.
  void Write(std::ostream& Stream) const;
  /// Replaces the file, as `ReplaceFile` does.
  void WriteFile(const std::string& FileName) const;

private:
  friend class TXMLNode;
  explicit TXMLDocument(std::shared_ptr<detail::TXMLTree> Tree) : FTree(std::move(Tree)) {}
  std::shared_ptr<detail::TXMLTree> FTree;
};

/// An element, as a handle. A handle may stand for no element: it is false then, reads as empty, and must not
/// be written to.
class TXMLNode {
public:
  TXMLNode() = default;
  explicit operator bool() const { return FNode != nullptr; }
  bool operator==(const TXMLNode& Other) const { return FNode == Other.FNode; }

  TXMLDocument Document() const { return TXMLDocument(FTree); }
  std::string_view Tag() const;

  TXMLNode FirstChild() const;
  TXMLNode NextSibling() const;
  int ChildCount() const;
  /// The first child element of that tag, or none.
  TXMLNode FindChild(std::string_view Tag) const;
  bool HasChild(std::string_view Tag) const { return static_cast<bool>(FindChild(Tag)); }
  /// The same, but made when there is none, unless the document is being read (see `TXMLReadScope`).
  TXMLNode Child(std::string_view Tag) const;
  /// Appends an element. Raises std::invalid_argument for an illegal tag; `XMLTag` makes any text a legal
  /// one.
  TXMLNode AddChild(std::string_view Tag) const;
  /// Removes the element's content; its attributes stay.
  void Clear() const;

  bool HasAttribute(std::string_view Name) const;
  std::string Attribute(std::string_view Name) const;
  int AttributeAsInteger(std::string_view Name) const;
  void SetAttribute(std::string_view Name, std::string_view Value) const;
  void SetAttribute(std::string_view Name, std::int64_t Value) const;

  // The element's text as a value. No text reads as 0, false or ""; a text that stands for no value of the
  // kind raises EXMLError, which names element, text and place.

  /// The text of the element, without that of its children; text of nothing but blanks counts when it is all
  /// that the element holds.
  std::string AsText() const;
  double AsReal() const;
  /// As `AsReal`, but NaN is refused as well.
  double AsNumber() const;
  int AsInteger() const;
  std::int64_t AsInt64() const;
  /// Whether the text is "true", the case of letters aside.
  bool AsBoolean() const;

  /// Raises std::invalid_argument, and changes nothing, for text that XML cannot hold: invalid UTF-8 and
  /// control characters.
  void SetText(std::string_view Value) const;
  /// Narrowed to single precision, with at most seven digits.
  void SetSingle(double Value) const;
  void SetReal(double Value) const;
  void SetInteger(std::int64_t Value) const;
  void SetBoolean(bool Value) const { SetText(Value ? "true" : "false"); }

  /// Raises EXMLError with the place of this element: the tag, then the message.
  [[noreturn]] void Refuse(const std::string& Message) const;

private:
  friend class TXMLDocument;
  friend class TXMLReadScope;
  TXMLNode(std::shared_ptr<detail::TXMLTree> Tree, pugi::xml_node_struct* Node)
      : FTree(std::move(Tree)), FNode(Node) {}
  // The handle of another element of the document.
  TXMLNode At(pugi::xml_node_struct* Node) const { return {Node != nullptr ? FTree : nullptr, Node}; }

  std::shared_ptr<detail::TXMLTree> FTree;
  pugi::xml_node_struct* FNode = nullptr;
};

/// Lasts while a document is read: what it lacks reads as empty, and is not added by `Child`.
class TXMLReadScope {
public:
  explicit TXMLReadScope(const TXMLNode& Node);
  TXMLReadScope(const TXMLReadScope&) = delete;
  TXMLReadScope& operator=(const TXMLReadScope&) = delete;
  ~TXMLReadScope();

private:
  std::shared_ptr<detail::TXMLTree> FTree;
};

/// A legal tag made of any text: characters that no tag can hold there become "_".
std::string XMLTag(std::string_view Text);

/// The child elements of one tag, bound as `TNode`. The list is made when it is asked for and does not follow
/// what is later changed elsewhere.
template <class TNode>
class TXMLNodeList {
public:
  TXMLNodeList(const TXMLNode& Parent, std::string_view Tag) : FParent(Parent), FTag(Tag) {
    for (TXMLNode Node = Parent.FirstChild(); Node; Node = Node.NextSibling()) {
      if (Node.Tag() == Tag) {
        FNodes.emplace_back(Node);
      }
    }
  }

  int Count() const { return static_cast<int>(FNodes.size()); }
  /// Raises std::out_of_range.
  const TNode& Items(int Index) const { return FNodes.at(static_cast<std::size_t>(Index)); }
  const TNode& operator[](int Index) const { return Items(Index); }
  auto begin() const { return FNodes.begin(); }
  auto end() const { return FNodes.end(); }

  /// Appends an element to the parent and to this list.
  TNode Add() { return FNodes.emplace_back(FParent.AddChild(FTag)); }

private:
  TXMLNode FParent;
  std::string FTag;
  std::vector<TNode> FNodes;
};

/// How the text of an element is read and written as a value of a list.
struct TXMLTextValue {
  using TValue = std::string;
  static std::string Get(const TXMLNode& Node) { return Node.AsText(); }
  static void Set(const TXMLNode& Node, std::string_view Value) { Node.SetText(Value); }
};
struct TXMLBooleanValue {
  using TValue = bool;
  static bool Get(const TXMLNode& Node) { return Node.AsBoolean(); }
  static void Set(const TXMLNode& Node, bool Value) { Node.SetBoolean(Value); }
};
struct TXMLIntegerValue {
  using TValue = int;
  static int Get(const TXMLNode& Node) { return Node.AsInteger(); }
  static void Set(const TXMLNode& Node, int Value) { Node.SetInteger(Value); }
};
struct TXMLSingleValue {
  using TValue = double;
  static double Get(const TXMLNode& Node) { return Node.AsReal(); }
  static void Set(const TXMLNode& Node, double Value) { Node.SetSingle(Value); }
};

/// The values of the child elements of one tag; `TAccess` is one of the above.
template <class TAccess>
class TXMLValueList {
public:
  using TValue = typename TAccess::TValue;

  TXMLValueList(const TXMLNode& Parent, std::string_view Tag) : FNodes(Parent, Tag) {}

  int Count() const { return FNodes.Count(); }
  TValue Items(int Index) const { return TAccess::Get(FNodes[Index]); }
  TValue operator[](int Index) const { return Items(Index); }
  void SetItems(int Index, const TValue& Value) { TAccess::Set(FNodes[Index], Value); }
  void Add(const TValue& Value) { TAccess::Set(FNodes.Add(), Value); }

private:
  TXMLNodeList<TXMLNode> FNodes;
};

using IXMLString_List = TXMLValueList<TXMLTextValue>;
using IXMLBooleanList = TXMLValueList<TXMLBooleanValue>;
using IXMLIntegerList = TXMLValueList<TXMLIntegerValue>;
using IXMLFloatList = TXMLValueList<TXMLSingleValue>;

} // namespace qx
