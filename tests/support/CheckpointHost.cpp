// A process that begins or resumes all runs of CheckpointedRuns.h: checkpoint_host begin|resume FOLDER.

#include <qx/platform/Random.h>

#include <cstdlib>
#include <iostream>
#include <support/CheckpointedRuns.h>
#include <support/TemporaryFolder.h>

int main(int Count, char** Arguments) try {
  if (Count != 3) {
    std::cerr << "checkpoint_host begin|resume FOLDER\n";
    return EXIT_FAILURE;
  }
  const bool Begin = Arguments[1] == std::string("begin");
  for (const auto& Run : qx::tests::CheckpointedRuns()) {
    const std::string File = std::string(Arguments[2]) + '/' + Run.Name;
    const auto Component = Run.Make();
    if (Begin) {
      qx::SeedRandom(7);
      Component->Evolve(10);
      Component->SaveCheckpoint(File);
    } else {
      Component->LoadCheckpoint(File);
      Component->Evolve(10);
      qx::tests::WriteFile(File + ".picture", qx::tests::PictureOf(*Component));
    }
  }
  return EXIT_SUCCESS;
} catch (const std::exception& Error) {
  std::cerr << Error.what() << '\n';
  return EXIT_FAILURE;
}
