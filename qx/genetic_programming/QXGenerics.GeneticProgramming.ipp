#pragma once

// Definitions of QXGenerics.GeneticProgramming.h, for value types of a host's own.

#include <qx/genetic_programming/GPBloatControl.ipp>
#include <qx/genetic_programming/GPDescription.ipp>
#include <qx/genetic_programming/GPExecutor.ipp>
#include <qx/genetic_programming/GPIndividual.ipp>
#include <qx/genetic_programming/GPInitialization.ipp>
#include <qx/genetic_programming/GPOperators.ipp>
#include <qx/genetic_programming/GPPersistence.ipp>
#include <qx/genetic_programming/GPPopulation.ipp>
#include <qx/genetic_programming/GeneticProgramming.ipp>
#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.ipp>
