#include <qx/genetic_algorithm/GAIndividual.h>
#include <qx/genetic_algorithm/GAPopulation.h>

namespace qx {

void TQXGAIndividual::SetBits(const TQXGABits& Value) {
  Bits().Assign(Value);
  Modified();
}

TQXGAPopulation* TQXGAIndividual::Collection() const {
  return dynamic_cast<TQXGAPopulation*>(TCollectionItem::Collection());
}

void TQXGAIndividual::SetCollection(TQXGAPopulation& Value) { TQXIndividual::SetCollection(Value); }

void TQXGAIndividual::Assign(const TPersistent& Source) {
  if (const auto* Individual = SourceAs<TQXGAIndividual>(Source)) {
    EvaluateSource(*Individual);
    Bits().Assign(Individual->Bits());
    AssignIndividual(*Individual);
  } else {
    TQXIndividual::Assign(Source);
  }
}

std::string TQXGAIndividual::ToString() const { return ClassName() + ' ' + Bits().ToString(); }

std::unique_ptr<TQXGABits> TQXGAIndividual::CreateDNA() { return std::make_unique<TQXGABits>(this); }

} // namespace qx
