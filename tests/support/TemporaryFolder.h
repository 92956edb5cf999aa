#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace qx::tests {

/// A folder of a test's own, gone at its end.
class TTemporaryFolder {
public:
  TTemporaryFolder() {
    std::string Template = (std::filesystem::temp_directory_path() / "qx-XXXXXX").string();
    FPath = ::mkdtemp(Template.data());
  }
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;
  ~TTemporaryFolder() { std::filesystem::remove_all(FPath); }

  std::string File(const std::string& Name) const { return (FPath / Name).string(); }
  int Count() const {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(FPath), {}));
  }

private:
  std::filesystem::path FPath;
};

inline std::string ReadFile(const std::string& Name) {
  std::ifstream Stream(Name, std::ios::binary);
  return {std::istreambuf_iterator<char>(Stream), {}};
}

inline void WriteFile(const std::string& Name, const std::string& Content) {
  std::ofstream(Name, std::ios::binary) << Content;
}

/// Whether a reader of documents that is not this library's takes the file.
inline bool XmllintAccepts(const std::string& Name) {
  return std::system(("xmllint --noout '" + Name + "'").c_str()) == 0;
}

} // namespace qx::tests
