#include "Drawing.h"

#include <qx/platform/Files.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <sys/wait.h>
#include <system_error>

namespace qxevolve {

namespace {

// A folder that goes with its content.
class TTemporaryFolder {
public:
  TTemporaryFolder() {
    std::error_code Ignored;
    const auto Usual = std::filesystem::temp_directory_path(Ignored);
    std::string Pattern = ((Ignored ? std::filesystem::path("/tmp") : Usual) / "qxevolve-XXXXXX").string();
    if (mkdtemp(Pattern.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), "Cannot make a temporary folder");
    }
    FName = Pattern;
  }
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;
  ~TTemporaryFolder() {
    std::error_code Ignored;
    std::filesystem::remove_all(FName, Ignored);
  }
  const std::string& Name() const { return FName; }

private:
  std::string FName;
};

void ReplaceAll(std::string& Text, std::string_view Old, std::string_view New) {
  for (auto At = Text.find(Old); At != std::string::npos; At = Text.find(Old, At + New.size())) {
    Text.replace(At, Old.size(), New);
  }
}

} // namespace

TDrawing Draw(const std::string& Tool, const std::string& Content) {
  constexpr int NotFound = 127; // as shells have it
  const std::string Name = Tool.substr(0, Tool.find(' '));
  const TTemporaryFolder Folder;
  const std::string FileName = Folder.Name() + "/drawing";
  qx::ReplaceFile(FileName, Content);
  const std::string Command = Tool + " '" + FileName + "' 2>/dev/null";
  std::FILE* const Pipe = popen(Command.c_str(), "r");
  if (Pipe == nullptr) {
    return {std::nullopt, Name + " cannot be started"};
  }
  std::string Drawn;
  std::array<char, 1 << 16> Block{};
  while (const std::size_t Count = std::fread(Block.data(), 1, Block.size(), Pipe)) {
    Drawn.append(Block.data(), Count);
  }
  const int Status = pclose(Pipe);
  if (Status != 0 || Drawn.find("<svg") == std::string::npos) {
    const bool IsMissing = WIFEXITED(Status) && WEXITSTATUS(Status) == NotFound;
    return {std::nullopt, Name + (IsMissing ? " is not installed" : " has failed")};
  }
  return {Drawn, ""};
}

std::string PartOfPage(const std::string& SVG, const std::string& Name) {
  std::string Text = SVG.substr(SVG.find("<svg"));
  for (const std::string_view Black : {"\"black\"", "'black'", "\"#000000\"", "'rgb(  0,   0,   0)'",
                                       "\"rgb(  0,   0,   0)\"", "\"rgb(0,0,0)\"", "\"rgb(0, 0, 0)\""}) {
    ReplaceAll(Text, Black, "\"currentColor\"");
  }
  ReplaceAll(Text, "gpPt", Name + "-point");
  ReplaceAll(Text, "gpDot", Name + "-dot");
  ReplaceAll(Text, "gnuplot_plot_", Name + "-plot-");
  ReplaceAll(Text, "id=\"graph0\"", "id=\"" + Name + "-graph\"");
  ReplaceAll(Text, "id=\"node", "id=\"" + Name + "-node");
  ReplaceAll(Text, "id=\"edge", "id=\"" + Name + "-edge");
  return Text;
}

} // namespace qxevolve
