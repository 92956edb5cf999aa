#pragma once

// The evolution engine: individuals, populations, the abstract component that evolves them, and the random
// source that all of it draws from.

#include <qx/engine/Checkpoints.h>
#include <qx/engine/GeneticComponent.h>
#include <qx/engine/Individual.h>
#include <qx/engine/Population.h>
#include <qx/engine/TypedGeneticComponent.h>
#include <qx/platform/Random.h>
