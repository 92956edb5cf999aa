#pragma once

// Program trees: instructions and their sets, the context that a program is executed in, the nodes of trees.
//
// Everything here is generic over the value type. The library has it compiled for TGAFloat and Variant; for
// another one include QXGenerics.GeneticProgramEngine.ipp.

#include <qx/program_trees/GPBinaryNode.h>
#include <qx/program_trees/GPContext.h>
#include <qx/program_trees/GPInstruction.h>
#include <qx/program_trees/GPInstructions.h>
#include <qx/program_trees/GPNode.h>
#include <qx/program_trees/GPTreeNode.h>
#include <qx/program_trees/GeneticProgramEngine.h>
