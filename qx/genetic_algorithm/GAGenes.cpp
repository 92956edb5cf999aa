#include <qx/genetic_algorithm/GAGenes.h>

#include <qx/genetic_algorithm/GeneticAlgorithm.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

namespace qx {

TQXGAGenes::TQXGAGenes(TPersistent* Owner, TItemClass<TQXGAGene> ItemClass)
    : TTypedCollection(Owner, ItemClass), FAlgorithm(dynamic_cast<TQXCustomGeneticAlgorithm*>(Owner)) {}

int TQXGAGenes::Size() const {
  if (Count() == 0) {
    return 0;
  }
  const TQXGAGene& Last = Items(Count() - 1);
  return Last.Offset() + Last.Size();
}

void TQXGAGenes::SizeChange(int Index) {
  UpdateOffsets(Index + 1);
  if (FAlgorithm != nullptr) {
    FAlgorithm->GenesSizeChange();
  }
}

void TQXGAGenes::Move(int From, int To) {
  OffsetsUnknownFrom(std::min(From, To));
  TTypedCollection::Move(From, To);
}

void TQXGAGenes::Notify(TCollectionItem& Item, TCollectionNotification Action) {
  TTypedCollection::Notify(Item, Action);
  if (Action == cnAdded) {
    OffsetsUnknownFrom(Item.Index());
  }
  UpdateOffsets(0);
  if (Action != cnAdded) {
    OffsetsUnknownFrom(Item.Index()); // the gene is about to go
  }
  if (FAlgorithm != nullptr) {
    FAlgorithm->GeneNotify(static_cast<TQXGAGene&>(Item), Action);
  }
}

void TQXGAGenes::Update(TCollectionItem* Item) {
  TTypedCollection::Update(Item);
  if (Item == nullptr) {
    UpdateOffsets(0);
  }
  if (FAlgorithm != nullptr) {
    FAlgorithm->GeneUpdate(static_cast<TQXGAGene*>(Item));
  }
}

// Rewrites every offset from `Start` on, but never the first gene's; what is known to be right already is
// passed over.
void TQXGAGenes::UpdateOffsets(int Start) {
  const bool FollowsKnown = Start <= FOffsetsKnown;
  for (int I = std::max(FollowsKnown ? FOffsetsKnown : Start, 1); I < Count(); ++I) {
    Items(I).FOffset = Items(I - 1).Offset() + Items(I - 1).Size();
  }
  if (FollowsKnown) {
    FOffsetsKnown = Count();
  }
}

void TQXGAGenes::OffsetsUnknownFrom(int Index) { FOffsetsKnown = std::clamp(Index, 0, FOffsetsKnown); }

void TQXGAGenes::CheckGrowth(const TQXGAGene& Gene, int NewSize) const {
  const std::int64_t Total = std::int64_t{Size()} + NewSize - Gene.Size();
  if (Total > std::numeric_limits<int>::max()) {
    throw std::length_error("Gene \"" + Gene.DisplayName() + "\": a size of " + std::to_string(NewSize) +
                            " bits makes the genotype too long");
  }
}

} // namespace qx
