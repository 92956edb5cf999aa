#include <qx/genetic_programming/QXGeneticProgrammingXML.h>

namespace qx {

TXMLGeneticProgram GetGeneticProgram(const TXMLDocument& Document) {
  return TXMLGeneticProgram(Document.Root("GeneticProgram"));
}

TXMLGeneticProgram LoadGeneticProgram(const std::string& FileName) {
  return GetGeneticProgram(TXMLDocument::ReadFile(FileName));
}

TXMLGeneticProgram NewGeneticProgram() {
  return TXMLGeneticProgram(TXMLDocument::New("GeneticProgram").Root());
}

} // namespace qx
