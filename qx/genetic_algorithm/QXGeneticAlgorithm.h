#pragma once

// The genetic algorithm: bit chromosomes, typed genes laid out in them, and the component that evolves them.

#include <qx/engine/QXGeneticBase.h>
#include <qx/genetic_algorithm/GABits.h>
#include <qx/genetic_algorithm/GAGene.h>
#include <qx/genetic_algorithm/GAGenes.h>
#include <qx/genetic_algorithm/GAIndividual.h>
#include <qx/genetic_algorithm/GAPopulation.h>
#include <qx/genetic_algorithm/GeneticAlgorithm.h>
