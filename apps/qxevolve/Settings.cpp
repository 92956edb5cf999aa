#include "Settings.h"

#include <qx/platform/Strings.h>

#include <algorithm>
#include <cstddef>
#include <fmt/format.h>
#include <string_view>

namespace qxevolve {

namespace {

// Shares that add up to 100%: what rounding down has left goes where most of it was lost.
std::string SharesText(const qx::TQXSymbolicRegression& Regression) {
  constexpr int Whole = 1000; // tenths of a percent
  struct TShare {
    qx::TGPMutationMethod Method;
    int Tenths;
    int Rest;
  };
  std::vector<TShare> Shares;
  int Sum = 0;
  const auto Methods = qx::EnumNames<qx::TGPMutationMethod>();
  for (std::size_t I = 0; I < Methods.size(); ++I) {
    Sum += Regression.MutateWeights(static_cast<qx::TGPMutationMethod>(I));
  }
  int Left = Whole;
  for (std::size_t I = 0; I < Methods.size(); ++I) {
    const auto Method = static_cast<qx::TGPMutationMethod>(I);
    if (const int Weight = Regression.MutateWeights(Method); Weight > 0) {
      Shares.push_back({Method, Weight * Whole / Sum, Weight * Whole % Sum});
      Left -= Shares.back().Tenths;
    }
  }
  for (; Left > 0 && !Shares.empty(); --Left) {
    TShare& Next = *std::ranges::max_element(Shares, {}, &TShare::Rest);
    ++Next.Tenths;
    Next.Rest = -1;
  }
  std::string Text;
  for (const TShare& Share : Shares) {
    Text += fmt::format("{}{}({:.1f}%)", Text.empty() ? "" : ", ", qx::EnumName(Share.Method),
                        Share.Tenths / 10.0);
  }
  return Text;
}

// The columns that terminals stand for, and constants.
std::string TerminalsText(const qx::TQXSymbolicRegression& Regression) {
  const auto ColumnNames = Regression.ColumnNames();
  std::string Text;
  for (int I = 0; I < Regression.TerminalsCount(); ++I) {
    Text += (I > 0 ? ", " : "") + ColumnOf(Regression.Terminals(I), ColumnNames.get());
  }
  return Text;
}

} // namespace

std::vector<std::string> SettingLines(const qx::TQXSymbolicRegression& Regression) {
  qx::TStrings Described;
  Regression.Describe(Described, "   ");
  constexpr std::string_view Shares = "   Mutation Distribution = ";
  std::vector<std::string> Lines;
  for (int I = 0; I < Described.Count(); ++I) {
    const bool AreTerminals = I > 0 && Described[I - 1].starts_with("   Terminals (");
    Lines.push_back(Described[I].starts_with(Shares) ? std::string(Shares) + SharesText(Regression)
                    : AreTerminals                   ? "      " + TerminalsText(Regression)
                                                     : Described[I]);
  }
  return Lines;
}

} // namespace qxevolve
