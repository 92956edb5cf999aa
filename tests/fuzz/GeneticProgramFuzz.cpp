// Settings documents of genetic programming, of which an executor uses the domain.

#include "ProgramFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string Document(Data, Data + Size);
  const auto Load = [&](auto& Target) {
    std::istringstream Stream(Document);
    Target.LoadFromStream(Stream);
  };
  qx::fuzz::LoadAndCheckPrograms(Load, Load);
  return 0;
}
