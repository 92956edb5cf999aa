#include <qx/engine/QXGeneticDocumentXML.h>

namespace qx {

namespace {
constexpr std::string_view RootTag = "GeneticDocument";
} // namespace

TXMLGeneticDocumentType GetGeneticDocument(const TXMLDocument& Document) {
  return TXMLGeneticDocumentType(Document.Root(RootTag));
}

TXMLGeneticDocumentType LoadGeneticDocument(const std::string& FileName) {
  return GetGeneticDocument(TXMLDocument::ReadFile(FileName));
}

TXMLGeneticDocumentType NewGeneticDocument() {
  return TXMLGeneticDocumentType(TXMLDocument::New(RootTag).Root());
}

} // namespace qx
