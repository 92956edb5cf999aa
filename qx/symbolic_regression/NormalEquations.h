#pragma once

#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

namespace qx {

/// A small system of linear equations with a symmetric matrix that is positive definite: the normal equations
/// of least squares.
class TNormalEquations {
public:
  void SetSize(std::size_t Size) {
    FSize = Size;
    FMatrix.assign(Size * Size, 0);
    FRight.assign(Size, 0);
  }
  /// An element on or below the diagonal.
  double& Matrix(std::size_t Row, std::size_t Column) { return FMatrix[Row * FSize + Column]; }
  double& Right(std::size_t Row) { return FRight[Row]; }

  /// Solves the equations with a diagonal that is larger by the factor 1 + `Damping`, by Cholesky's method;
  /// false when the matrix is not definite.
  bool Solve(double Damping, std::vector<double>& Solution) {
    FFactor = FMatrix;
    const auto L = [&](std::size_t Row, std::size_t Column) -> double& {
      return FFactor[Row * FSize + Column];
    };
    for (std::size_t I = 0; I < FSize; ++I) {
      L(I, I) *= 1 + Damping;
      for (std::size_t J = 0; J <= I; ++J) {
        double Rest = L(I, J);
        for (std::size_t K = 0; K < J; ++K) {
          Rest -= L(I, K) * L(J, K);
        }
        if (I != J) {
          L(I, J) = Rest / L(J, J);
        } else if (FMatrix[I * FSize + I] == 0) { // nothing depends on this unknown, which becomes 0
          L(I, I) = 1;
        } else if (Rest > 0 && std::isfinite(Rest)) {
          L(I, I) = std::sqrt(Rest);
        } else {
          return false;
        }
      }
    }
    Solution = FRight;
    for (std::size_t I = 0; I < FSize; ++I) {
      for (std::size_t K = 0; K < I; ++K) {
        Solution[I] -= L(I, K) * Solution[K];
      }
      Solution[I] /= L(I, I);
    }
    for (std::size_t I = FSize; I-- > 0;) {
      for (std::size_t K = I + 1; K < FSize; ++K) {
        Solution[I] -= L(K, I) * Solution[K];
      }
      Solution[I] /= L(I, I);
    }
    return true;
  }

private:
  std::size_t FSize = 0;
  std::vector<double> FMatrix;
  std::vector<double> FRight;
  std::vector<double> FFactor;
};

} // namespace qx
