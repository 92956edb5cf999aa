#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  qx::fuzz::LoadAndCheck([&](qx::TQXGeneticAlgorithm& Component) {
    Component.LoadFromXML(qx::GetGeneticDocument(qx::TXMLDocument::Parse(std::string(Data, Data + Size))));
  });
  return 0;
}
