#include <qx/genetic_algorithm/QXGeneticAlgorithmXML.h>

namespace qx {

TXMLGeneticAlgorithm GetGeneticAlgorithm(const TXMLDocument& Document) {
  return TXMLGeneticAlgorithm(Document.Root("GeneticAlgorithm"));
}

TXMLGeneticAlgorithm LoadGeneticAlgorithm(const std::string& FileName) {
  return GetGeneticAlgorithm(TXMLDocument::ReadFile(FileName));
}

TXMLGeneticAlgorithm NewGeneticAlgorithm() {
  return TXMLGeneticAlgorithm(TXMLDocument::New("GeneticAlgorithm").Root());
}

} // namespace qx
