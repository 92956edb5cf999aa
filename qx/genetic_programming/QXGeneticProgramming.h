#pragma once

// The kinds of programs: floating-point programs over n-ary and over binary trees, and variant programs; and
// ready instructions for them.

#include <qx/genetic_programming/GPFloat.h>
#include <qx/genetic_programming/GPVariant.h>
#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/genetic_programming/StandardInstructions.h>
