#pragma once

#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/Event.h>

namespace qx {

class TQXCustomGeneticComponent;
class TQXIndividual;
class TQXPopulation;

// The events through which a host takes part in a run. `Sender` is always the component that fires.

/// The handler sets `Initialized` when it has filled the population itself.
using TQXInitializationEvent = TQXEvent<void(TQXCustomGeneticComponent& Sender, bool& Initialized)>;
/// The handler must set `Fitness`; what it holds on entry means nothing.
using TQXFitnessEvent =
    TQXEvent<void(TQXCustomGeneticComponent& Sender, TQXIndividual& Item, TGAFitness& Fitness)>;
/// The handler sets `Parent`, which is nullptr on entry, to a member of `Population`.
using TQXSelectionEvent =
    TQXEvent<void(TQXCustomGeneticComponent& Sender, TQXPopulation& Population, TQXIndividual*& Parent)>;
/// `Child` has just been made a copy of `Parent1`.
using TQXParentChildEvent = TQXEvent<void(TQXCustomGeneticComponent& Sender, TQXIndividual& Parent1,
                                          TQXIndividual& Parent2, TQXIndividual& Child)>;
/// The handler clears the flag to veto the crossover; `Child` is the first child.
using TQXCrossoverEvent = TQXEvent<void(TQXCustomGeneticComponent& Sender, TQXIndividual& Parent1,
                                        TQXIndividual& Parent2, TQXIndividual& Child, bool& DoMutation)>;
/// The handler clears the flag to veto the operator, or changes the result of the reproduction.
using TQXMutationEvent =
    TQXEvent<void(TQXCustomGeneticComponent& Sender, TQXIndividual& Item, bool& DoMutation)>;
using TQXIndividualEvent = TQXEvent<void(TQXCustomGeneticComponent& Sender, TQXIndividual& Item)>;
using TQXNotifyEvent = TQXEvent<void(TQXCustomGeneticComponent& Sender)>;

} // namespace qx
