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

int TQXGAGenes::Size() const { return Count() == 0 ? 0 : EndOf(Items(Count() - 1)); }

void TQXGAGenes::SizeChange(int Index) {
  UpdateOffsets(Index + 1);
  if (FAlgorithm != nullptr) {
    FAlgorithm->GenesSizeChange();
  }
}

void TQXGAGenes::SetDecoding(TGADecoding Value) {
  if (CheckedEnum(Value, "Decoding") != FDecoding) {
    FDecoding = Value;
    Changed();
  }
}

void TQXGAGenes::Assign(const TPersistent& Source) {
  TTypedCollection::Assign(Source);
  if (const auto* Genes = SourceAs<TQXGAGenes>(Source)) {
    SetDecoding(Genes->FDecoding);
  }
}

void TQXGAGenes::Move(int From, int To) {
  OffsetsUnknownFrom(std::min(From, To));
  TTypedCollection::Move(From, To);
}

void TQXGAGenes::Notify(TCollectionItem& Item, TCollectionNotification Action) {
  TTypedCollection::Notify(Item, Action);
  auto& Gene = static_cast<TQXGAGene&>(Item);
  if (Action == cnAdded) {
    OffsetsUnknownFrom(Gene.Index());
  }
  UpdateOffsets(0);
  if (FAlgorithm != nullptr) {
    FAlgorithm->GeneNotify(Gene, Action);
    if (Action == cnAdded && Gene.Size() > 0) { // a gene that was whole before it came
      FAlgorithm->GenesSizeChange();
    }
  }
  if (Action != cnAdded) {
    OffsetsUnknownFrom(Gene.Index()); // it goes as soon as this returns
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
    Items(I).FOffset = EndOf(Items(I - 1));
  }
  if (FollowsKnown) {
    FOffsetsKnown = Count();
  }
}

void TQXGAGenes::OffsetsUnknownFrom(int Index) { FOffsetsKnown = std::clamp(Index, 0, FOffsetsKnown); }

void TQXGAGenes::CheckGrowth(const TQXGAGene& Gene, int OldSize, int NewSize) const {
  if (std::int64_t{Size()} + NewSize - OldSize > std::numeric_limits<int>::max()) {
    RaiseTooLong(Gene);
  }
}

int TQXGAGenes::EndOf(const TQXGAGene& Gene) {
  const std::int64_t End = std::int64_t{Gene.Offset()} + Gene.Size();
  if (End > std::numeric_limits<int>::max()) {
    RaiseTooLong(Gene);
  }
  return static_cast<int>(End);
}

void TQXGAGenes::RaiseTooLong(const TQXGAGene& Gene) {
  throw std::length_error("Gene \"" + Gene.DisplayName() + "\" makes the genotype longer than " +
                          std::to_string(std::numeric_limits<int>::max()) + " bits");
}

bool TQXGAGenes::Accepts(const TCollectionItem& Item) const {
  const auto* Gene = dynamic_cast<const TQXGAGene*>(&Item);
  if (Gene != nullptr) {
    CheckGrowth(*Gene, 0, Gene->Size());
  }
  return Gene != nullptr;
}

} // namespace qx
