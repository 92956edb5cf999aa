// Writes documents. The parser's own writer takes time in the square of the depth, and leaves carriage
// returns to be read back as line feeds.

#include <qx/platform/XMLTree.h>

#include <algorithm>
#include <vector>

namespace qx::detail {

namespace {

class TXMLWriter {
public:
  explicit TXMLWriter(std::string& Text) : FText(Text) {}

  // Without recursion: a document may be deeper than the stack.
  void WriteElement(pugi::xml_node Root) {
    pugi::xml_node Node = Root;
    while (true) {
      WriteStart(Node);
      if (Node.type() == pugi::node_element && Node.first_child()) {
        FHasText.push_back(HasText(Node));
        Node = Node.first_child();
        continue;
      }
      while (Node != Root && !Node.next_sibling()) {
        Node = Node.parent();
        WriteEnd(Node);
      }
      if (Node == Root) {
        return;
      }
      Node = Node.next_sibling();
    }
  }

private:
  static bool IsText(pugi::xml_node Node) {
    return Node.type() == pugi::node_pcdata || Node.type() == pugi::node_cdata;
  }

  // Blanks beside text would become part of it.
  static bool HasText(pugi::xml_node Node) {
    const auto Children = Node.children();
    return std::any_of(Children.begin(), Children.end(), IsText);
  }

  void StartLine() {
    constexpr std::size_t DeepestIndentation = 32;
    FText += '\n';
    FText.append(2 * std::min(FHasText.size(), DeepestIndentation), ' ');
  }

  void WriteStart(pugi::xml_node Node) {
    if (IsText(Node)) {
      WriteEscaped(Node.value(), false);
    } else if (Node.type() == pugi::node_element) {
      if (FHasText.empty() || !FHasText.back()) {
        StartLine();
      }
      FText += '<';
      FText += Node.name();
      for (const pugi::xml_attribute Attribute : Node.attributes()) {
        FText += ' ';
        FText += Attribute.name();
        FText += "=\"";
        WriteEscaped(Attribute.value(), true);
        FText += '"';
      }
      FText += Node.first_child() ? ">" : "/>";
    }
  }

  void WriteEnd(pugi::xml_node Node) {
    const bool AfterText = FHasText.back();
    FHasText.pop_back();
    if (!AfterText) {
      StartLine();
    }
    FText += "</";
    FText += Node.name();
    FText += '>';
  }

  void WriteEscaped(const char* Value, bool InAttribute) {
    for (; *Value != '\0'; ++Value) {
      switch (*Value) {
      case '&':
        FText += "&amp;";
        break;
      case '<':
        FText += "&lt;";
        break;
      case '>':
        FText += "&gt;";
        break;
      case '\r':
        FText += "&#13;";
        break;
      case '"':
        FText += InAttribute ? "&quot;" : "\"";
        break;
      case '\n':
        FText += InAttribute ? "&#10;" : "\n";
        break;
      case '\t':
        FText += InAttribute ? "&#9;" : "\t";
        break;
      default:
        FText += *Value;
      }
    }
  }

  std::string& FText;
  std::vector<bool> FHasText; // of each element that is open
};

} // namespace

std::string WriteXML(const pugi::xml_document& Document) {
  std::string Text = R"(<?xml version="1.0" encoding="UTF-8"?>)";
  TXMLWriter Writer(Text);
  Writer.WriteElement(Document.document_element());
  Text += '\n';
  return Text;
}

} // namespace qx::detail
