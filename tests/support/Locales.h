#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <stdexcept>
#include <string>

namespace qx::tests {

/// While it lives, the C library and the global `std::locale` are German: a comma for a point, a point
/// between thousands. The build makes that locale (QX_LOCALES names the folder).
class TGermanLocale {
public:
  TGermanLocale() : FFormer(std::locale()) {
    ::setenv("LOCPATH", QX_LOCALES, 1);
    if (std::setlocale(LC_ALL, Name) == nullptr) {
      throw std::runtime_error("There is no locale de_DE.UTF-8 in " QX_LOCALES);
    }
    std::locale::global(std::locale(Name));
  }
  TGermanLocale(const TGermanLocale&) = delete;
  TGermanLocale& operator=(const TGermanLocale&) = delete;
  ~TGermanLocale() {
    std::locale::global(FFormer);
    std::setlocale(LC_ALL, "C");
  }

private:
  static constexpr const char* Name = "de_DE.UTF-8";
  std::locale FFormer;
};

} // namespace qx::tests
