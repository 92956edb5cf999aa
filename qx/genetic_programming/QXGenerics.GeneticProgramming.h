#pragma once

// Programs as individuals, generic over the value type. The library has it compiled for TGAFloat and Variant;
// for another one include QXGenerics.GeneticProgramming.ipp.

#include <qx/genetic_programming/GPIndividual.h>
#include <qx/genetic_programming/GPPopulation.h>
