#pragma once

// Definitions of QXGenerics.GeneticProgramEngine.h, for value types of a host's own.

#include <qx/program_trees/GPBinaryNode.ipp>
#include <qx/program_trees/GPContext.ipp>
#include <qx/program_trees/GPInstruction.ipp>
#include <qx/program_trees/GPInstructions.ipp>
#include <qx/program_trees/GPNode.ipp>
#include <qx/program_trees/GPTreeNode.ipp>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>
