#pragma once

// The kinds of programs: floating-point programs over n-ary and over binary trees, and variant programs; the
// components that evolve and that run them; ready instructions, and programs as text for people.

#include <qx/genetic_programming/EphemeralConstants.h>
#include <qx/genetic_programming/GPComponents.h>
#include <qx/genetic_programming/GPFloat.h>
#include <qx/genetic_programming/GPVariant.h>
#include <qx/genetic_programming/InfixText.h>
#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/genetic_programming/StandardInstructions.h>
