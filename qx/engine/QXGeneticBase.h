#pragma once

// The evolution engine: individuals, populations and the abstract component that evolves them.

#include <qx/engine/GeneticComponent.h>
#include <qx/engine/Individual.h>
#include <qx/engine/Population.h>
#include <qx/engine/TypedGeneticComponent.h>
