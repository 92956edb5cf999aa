#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  qx::fuzz::LoadAndCheck([&](qx::TQXGeneticAlgorithm& Component) {
    std::istringstream Stream(std::string(Data, Data + Size));
    qx::ReadComponent(Stream, Component);
  });
  return 0;
}
