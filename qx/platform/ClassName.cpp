#include <qx/platform/ClassName.h>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>

namespace qx {

namespace {

struct TFreeDeleter {
  void operator()(char* Text) const { std::free(Text); }
};

// Where the unqualified name starts: past the last "::" that stands outside template arguments and outside
// the parentheses of "(anonymous namespace)" or of an enclosing function.
std::size_t UnqualifiedStart(const std::string& Name) {
  int Depth = 0;
  std::size_t Start = 0;
  for (std::size_t I = 0; I < Name.size(); ++I) {
    const char C = Name[I];
    if (C == '<' || C == '(') {
      ++Depth;
    } else if (C == '>' || C == ')') {
      --Depth;
    } else if (C == ':' && Depth == 0) {
      Start = I + 1;
    }
  }
  return Start;
}

} // namespace

std::string ClassNameOf(const std::type_info& Type) {
  int Status = 0;
  const std::unique_ptr<char, TFreeDeleter> Text(abi::__cxa_demangle(Type.name(), nullptr, nullptr, &Status));
  const std::string Name = Status == 0 ? Text.get() : Type.name();
  return Name.substr(UnqualifiedStart(Name));
}

} // namespace qx
