#pragma once

namespace qx::benchmarks {

/// Of the random programs of a set, so many exist as C++ that is compiled for this machine.
constexpr int CompiledTreeCount = 100;

using TCompiledTree = void (*)(const double* const* Columns, double* Results, int Rows);
extern const TCompiledTree CompiledArithmetic[CompiledTreeCount];
extern const TCompiledTree CompiledMixed[CompiledTreeCount];

} // namespace qx::benchmarks
