// Domain documents of genetic programming, and those of instructions and of a population alone; an executor
// parses them as its lines.

#include "ProgramFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  const std::string Text(Data, Data + Size);
  const auto LoadComponent = [&](qx::TQXGeneticProgramming& Component) {
    const qx::TXMLDocument Document = qx::TXMLDocument::Parse(Text);
    if (Document.Root().Tag() == "Instructions") {
      Component.LoadFromXML(qx::GetGPInstructions(Document));
    } else if (Document.Root().Tag() == "Population") {
      Component.Population().LoadFromXML(qx::GetGPPopulation(Document));
    } else {
      Component.LoadFromXML(qx::GetGPDomain(Document));
    }
  };
  const auto LoadExecutor = [&](qx::TQXGeneticProgrammingExecutor& Executor) {
    qx::TStrings Lines;
    Lines.Add(Text);
    Executor.SetGPProgramLines(Lines);
    Executor.Parse();
  };
  qx::fuzz::LoadAndCheckPrograms(LoadComponent, LoadExecutor);
  return 0;
}
