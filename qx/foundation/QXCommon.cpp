#include <qx/foundation/QXCommon.h>

#include <cstddef>

namespace qx {

std::string FormatText(std::string_view Template, std::initializer_list<std::string_view> Arguments) {
  std::string Text;
  const std::string_view* Argument = Arguments.begin();
  for (std::size_t I = 0; I < Template.size(); ++I) {
    const bool Placeholder = Template[I] == '%' && I + 1 < Template.size() &&
                             std::string_view("sdi").find(Template[I + 1]) != std::string_view::npos;
    if (Placeholder && Argument != Arguments.end()) {
      Text += *Argument++;
      ++I;
    } else {
      Text += Template[I];
    }
  }
  return Text;
}

} // namespace qx
