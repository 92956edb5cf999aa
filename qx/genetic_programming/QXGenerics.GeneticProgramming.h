#pragma once

// Programs as individuals, the component that evolves them, and the executor that runs one; generic over the
// value type. The library has them compiled for TGAFloat and Variant; for another one include
// QXGenerics.GeneticProgramming.ipp.

#include <qx/genetic_programming/Covariance.h>
#include <qx/genetic_programming/GPExecutor.h>
#include <qx/genetic_programming/GPIndividual.h>
#include <qx/genetic_programming/GPPopulation.h>
#include <qx/genetic_programming/GeneticProgramming.h>
