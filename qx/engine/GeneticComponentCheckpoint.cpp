// The genetic component's checkpoints: all that a run goes on from.

#include <qx/engine/GeneticComponent.h>
#include <qx/engine/LoadScope.h>
#include <qx/foundation/FloatPriorityQueue.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Files.h>
#include <qx/platform/Random.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace qx {

namespace {

void DefineStatistics(TFiler& Filer, const std::string& Prefix, TFitnessStatistics& Statistics) {
  const auto DefineCount = [&](const char* Name, int& Count) {
    Filer.Property(Prefix + Name, Count, true, [&Count](int Read) {
      if (Read < 0) {
        throw std::out_of_range("there are no " + std::to_string(Read));
      }
      Count = Read;
    });
  };
  Filer.Field(Prefix + "Max", Statistics.Max);
  Filer.Field(Prefix + "Min", Statistics.Min);
  Filer.Field(Prefix + "Sum", Statistics.Sum);
  DefineCount("Numbers", Statistics.Numbers);
  DefineCount("NotNumbers", Statistics.NotNumbers);
}

} // namespace

// --- Streams and files -------------------------------------------------------------------------------------

void TQXCustomGeneticComponent::RequireRest() const {
  if (FRunning > 0 || FLoad != nullptr) {
    throw std::logic_error("A checkpoint is written or read between two generations, not inside one, and not "
                           "inside a load");
  }
}

void TQXCustomGeneticComponent::SaveCheckpoint(std::ostream& Stream) {
  RequireRest();
  WriteState(Stream, *this);
}

void TQXCustomGeneticComponent::SaveCheckpoint(const std::string& FileName) {
  std::ostringstream Stream;
  SaveCheckpoint(Stream);
  ReplaceFile(FileName, Stream.view());
}

void TQXCustomGeneticComponent::LoadCheckpoint(std::istream& Stream) {
  RequireRest();
  ReadState(Stream, *this);
}

void TQXCustomGeneticComponent::LoadCheckpoint(const std::string& FileName) {
  std::ifstream Stream(FileName, std::ios::binary);
  if (!Stream) {
    throw std::system_error(errno, std::generic_category(), "Cannot read \"" + FileName + '"');
  }
  LoadCheckpoint(Stream);
}

// --- State -------------------------------------------------------------------------------------------------

void TQXCustomGeneticComponent::DefinePopulation(TFiler& Filer) {
  if (Filer.Exact()) {
    return;
  }
  bool Loaded = false;
  Filer.Items(
      "Population", Population(),
      [&](int Count) {
        RequireRoomFor(Count);
        FLoad->SetAside(Population());
        SetAsideBestEver(*FLoad);
        InitializeEmpty();
        Population().Clear(); // of what a handler has added
        Loaded = true;
      },
      [&](std::string_view /*Name*/) -> TCollectionItem& { return Population().Add(); });
  if (Loaded && FPreviousGeneration != nullptr) { // generations of one size
    FLoad->SetAside(*FPreviousGeneration);
    SetPreviousGeneration(Population());
    FSettings.Initialized = true;
  }
}

// What is computed comes last: settings and individuals that are read mark it as due.
void TQXCustomGeneticComponent::DefineState(TFiler& Filer) {
  if (Filer.Applies()) {
    FLoad->OnFailure([Random = RandomState()] { SetRandomState(Random); });
    FLoad->SetRoom(std::numeric_limits<std::uint64_t>::max()); // as long as there are no individuals
    SetAsideGenerations(*FLoad);
  }
  TComponent::DefineState(Filer);
  if (Filer.Applies()) {
    FLoad->SetRoom(std::max<std::uint64_t>(DefaultXMLLimits.Bytes, Filer.Length()));
  }
  DefineGenerations(Filer);
  Filer.Field("Initialized", FSettings.Initialized);
  Filer.Field("Halt", FSettings.Halt);
  DefineStatistics(Filer, "Fitness", FFitnesses);
  DefineStatistics(Filer, "WeightedFitness", FWeightedFitnesses);
  Filer.Property("FittestIndividual", PlaceOf(FFittestIndividual), true,
                 [this](int Place) { FFittestIndividual = Place < 0 ? nullptr : &AtPlace(Place); });
  DefineSelectionState(Filer);
  Filer.Field("StatisticsDue", FStatisticsDue);
  Filer.Property("Random", RandomState(), true, SetRandomState);
}

void TQXCustomGeneticComponent::DefineGenerations(TFiler& Filer) {
  Filer.Items(
      "Population", Population(), [&](int Count) { RequireRoomFor(Count); },
      [&](std::string_view /*Name*/) -> TCollectionItem& { return Population().Add(); });
  const std::unique_ptr<TQXPopulation> None = CreatePopulation(Population().ItemClass());
  Filer.Property("HasPreviousGeneration", FPreviousGeneration != nullptr, true,
                 [this](bool Has) { HavePreviousGeneration(Has); });
  Filer.Items(
      "PreviousGeneration", FPreviousGeneration != nullptr ? *FPreviousGeneration : *None,
      [&](int Count) {
        if (Count > 0 && FPreviousGeneration == nullptr) {
          throw std::invalid_argument("there is no previous generation that an individual could be in");
        }
        RequireRoomFor(Count);
      },
      [&](std::string_view /*Name*/) -> TCollectionItem& { return FPreviousGeneration->Add(); });
  Filer.Items(
      "BestEver", FBestEver != nullptr ? *FBestEver : *None,
      [&](int Count) {
        if (Count > 1) {
          throw std::invalid_argument("there is one best individual, not " + std::to_string(Count));
        }
        RequireRoomFor(Count);
      },
      [&](std::string_view /*Name*/) -> TCollectionItem& {
        FBestEver = CreatePopulation(Population().ItemClass());
        FBestEver->FIsGeneration = false;
        return FBestEver->Add();
      });
}

void TQXCustomGeneticComponent::HavePreviousGeneration(bool Has) {
  if (Has && FPreviousGeneration == nullptr) {
    FPreviousGeneration = CreatePopulation(Population().ItemClass());
  } else if (!Has && FPreviousGeneration != nullptr) {
    const auto Former = std::make_shared<std::unique_ptr<TQXPopulation>>(std::move(FPreviousGeneration));
    FLoad->OnFailure([this, Former] { FPreviousGeneration = std::move(*Former); });
  }
}

void TQXCustomGeneticComponent::DefineSelectionState(TFiler& Filer) {
  Filer.Property("SelectionCursor", FSelectionCursor, true, [this](int Read) {
    if (Read < -1 || Read == std::numeric_limits<int>::max()) {
      throw std::out_of_range("there is no position " + std::to_string(Read));
    }
    FSelectionCursor = Read;
  });
  Filer.Field("CumulativeFitnesses", FCumulativeFitnesses);
  Filer.Property("LastShare", FLastShare, true, [this](int Read) {
    if (Read < -1 || std::cmp_greater_equal(Read, FCumulativeFitnesses.size())) {
      throw std::out_of_range("there is no share at place " + std::to_string(Read));
    }
    FLastShare = Read;
  });
  bool Ranked = FElite != nullptr;
  std::vector<int> Places;
  for (int I = 0; Ranked && Filer.Writes() && I < FElite->Count(); ++I) {
    Places.push_back(PlaceOf(&(*FElite)[I]));
  }
  Filer.Field("Ranked", Ranked);
  Filer.Property("Ranking", Places, true, [&](const std::vector<int>& Read) {
    FElite.reset();
    if (Ranked) {
      FElite = std::make_unique<TElite>();
      for (const int Place : Read) {
        FElite->Push(AtPlace(Place), 0); // equal keys keep their order
      }
    }
  });
}

// Individuals are told apart by their places: first those of the population, then those before it; -1 is
// none.
int TQXCustomGeneticComponent::PlaceOf(const TQXIndividual* Individual) const {
  if (Individual == nullptr) {
    return -1;
  }
  const bool Current = Individual->TCollectionItem::Collection() == FPopulation.get();
  return Individual->Index() + (Current ? 0 : FPopulation->Count());
}

TQXIndividual& TQXCustomGeneticComponent::AtPlace(int Place) const {
  const int Current = FPopulation->Count();
  const int Former = FPreviousGeneration != nullptr ? FPreviousGeneration->Count() : 0;
  if (Place < 0 || Place - Current >= Former) {
    throw std::out_of_range("there is no individual at place " + std::to_string(Place));
  }
  return Place < Current ? FPopulation->Items(Place) : FPreviousGeneration->Items(Place - Current);
}

} // namespace qx
