#pragma once

// Definitions of QXGenerics.GeneticProgramming.h, for value types of a host's own.

#include <qx/genetic_programming/GPIndividual.ipp>
#include <qx/genetic_programming/GPPopulation.ipp>
#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.ipp>
