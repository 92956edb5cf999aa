#pragma once

#include <cstdint>
#include <string_view>

namespace qx::tests {

/// FNV-1a (Fowler, Noll and Vo), of one text after another.
class TFingerprint {
public:
  void Take(std::string_view Text) {
    for (const char C : Text) {
      FHash = (FHash ^ static_cast<unsigned char>(C)) * 0x100000001b3;
    }
  }
  std::uint64_t Hash() const { return FHash; }

private:
  std::uint64_t FHash = 0xcbf29ce484222325;
};

} // namespace qx::tests
