#include <qx/genetic_algorithm/QXGADomainXML.h>

namespace qx {

bool TXMLChromosome::Binds(const TXMLNode& Node) {
  return Node.Tag() == "Chromosome" || Node.Tag() == "FittestIndividual";
}

bool TXMLChromosomes::Binds(const TXMLNode& Node) { return Node.Tag() == "Chromosomes"; }

TXMLGADomainType GetGADomain(const TXMLDocument& Document) {
  return TXMLGADomainType(Document.Root("GADomain"));
}

TXMLGADomainType LoadGADomain(const std::string& FileName) {
  return GetGADomain(TXMLDocument::ReadFile(FileName));
}

TXMLGADomainType NewGADomain() { return TXMLGADomainType(TXMLDocument::New("GADomain").Root()); }

TXMLGenoType GetGenoType(const TXMLDocument& Document) { return TXMLGenoType(Document.Root("GenoType")); }

TXMLGenoType LoadGenoType(const std::string& FileName) {
  return GetGenoType(TXMLDocument::ReadFile(FileName));
}

TXMLGenoType NewGenoType() { return TXMLGenoType(TXMLDocument::New("GenoType").Root()); }

TXMLChromosomes GetChromosomes(const TXMLDocument& Document) {
  return TXMLChromosomes(Document.Root("Chromosomes"));
}

TXMLChromosomes LoadChromosomes(const std::string& FileName) {
  return GetChromosomes(TXMLDocument::ReadFile(FileName));
}

TXMLChromosomes NewChromosomes() { return TXMLChromosomes(TXMLDocument::New("Chromosomes").Root()); }

} // namespace qx
