#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  qx::fuzz::LoadAndCheck([&](qx::TQXGeneticAlgorithm& Component) {
    const qx::TXMLDocument Document = qx::TXMLDocument::Parse(std::string(Data, Data + Size));
    if (Document.Root().Tag() == "GenoType") {
      Component.Genes().LoadFromXML(qx::GetGenoType(Document));
    } else if (Document.Root().Tag() == "Chromosomes") {
      Component.Population().LoadFromXML(qx::GetChromosomes(Document));
    } else {
      Component.LoadFromXML(qx::GetGADomain(Document));
    }
  });
  return 0;
}
