// The genetic algorithm's documents, files and streams, and those of its individuals and populations.

#include <qx/engine/LoadScope.h>
#include <qx/foundation/EnumPropertyText.h>
#include <qx/genetic_algorithm/GenesReload.h>
#include <qx/genetic_algorithm/GeneticAlgorithm.h>
#include <qx/platform/Filer.h>
#include <qx/platform/Text.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace qx {

// --- Individual and population -----------------------------------------------------------------------------

void TQXGAIndividual::LoadFromXML(const TXMLNode& Node) {
  if (TXMLChromosome::Binds(Node)) {
    LoadFromXML(TXMLChromosome(Node));
  }
}

void TQXGAIndividual::SaveToXML(const TXMLNode& Node) {
  if (TXMLChromosome::Binds(Node)) {
    SaveToXML(TXMLChromosome(Node));
  }
}

void TQXGAIndividual::LoadFromXML(const TXMLChromosome& Chromosome) {
  const TXMLReadScope Reading(Chromosome);
  const TXMLGenes Genes = Chromosome.Genes();
  try {
    Bits().SetAsBitString(0, Bits().Size(), Trimmed(Genes.Bits()));
  } catch (const std::invalid_argument& Error) {
    Genes.FindChild("Bits").Refuse(Error.what());
  }
  SetName(Chromosome.Name());
  Modified();
}

void TQXGAIndividual::SaveToXML(const TXMLChromosome& Chromosome) {
  Chromosome.Clear();
  Chromosome.SetName(DisplayName());
  Chromosome.SetFitness(Fitness());
  const TXMLGenes Genes = Chromosome.Genes();
  Genes.SetBits(Bits().ToBitString());
  if (auto* const Algorithm = dynamic_cast<TQXCustomGeneticAlgorithm*>(Owner())) {
    Algorithm->Genes().SaveToXML(Genes, *this);
  }
}

void TQXGAIndividual::DefineProperties(TFiler& Filer) {
  TQXIndividual::DefineProperties(Filer);
  const std::string Text = Filer.Writes() ? Bits().ToBitString() : std::string();
  Filer.Property("Bits", Text, !Text.empty(), [&](const std::string& Value) {
    if (Filer.Exact()) {
      Bits().SetSize(static_cast<int>(Value.size()));
    }
    Bits().SetAsBitString(0, Bits().Size(), Value);
    Modified();
  });
}

void TQXGAPopulation::LoadFromXML(const TXMLNode& Node) {
  if (TXMLChromosomes::Binds(Node)) {
    LoadFromXML(TXMLChromosomes(Node));
  } else {
    if (FAlgorithm != nullptr) {
      FAlgorithm->RequireRoom(Node.ChildCount(), FAlgorithm->GeneSize());
    }
    TTypedCollection::LoadFromXML(Node);
  }
}

void TQXGAPopulation::SaveToXML(const TXMLNode& Node) {
  if (TXMLChromosomes::Binds(Node)) {
    SaveToXML(TXMLChromosomes(Node));
  } else {
    TTypedCollection::SaveToXML(Node);
  }
}

void TQXGAPopulation::LoadFromXML(const TXMLChromosomes& Chromosomes) {
  const TXMLReadScope Reading(Chromosomes);
  const TXMLNodeList<TXMLChromosome> List = Chromosomes.Chromosome();
  if (FAlgorithm != nullptr) {
    FAlgorithm->RequireRoom(List.Count(), FAlgorithm->GeneSize());
  }
  Reload([&] {
    for (const TXMLChromosome& Chromosome : List) {
      Add().LoadFromXML(Chromosome);
    }
  });
}

void TQXGAPopulation::SaveToXML(const TXMLChromosomes& Chromosomes) {
  Chromosomes.Clear();
  for (int I = 0; I < Count(); ++I) { // evaluating a member may add others
    Items(I).SaveToXML(TXMLChromosome(Chromosomes.AddChild("Chromosome")));
  }
}

// --- Component ---------------------------------------------------------------------------------------------

void TQXCustomGeneticAlgorithm::SaveToXML(const TXMLGeneticAlgorithm& Document) {
  SaveToXML(static_cast<const TXMLGeneticDocumentType&>(Document));
  const genetic_algorithm_xml::TXMLReproductionType Reproduction = Document.Reproduction();
  Reproduction.SetCrossoverMethod(EnumName(FCrossoverMethod));
  SaveReproduction(Reproduction);
  SaveToXML(Document.Domain());
}

void TQXCustomGeneticAlgorithm::LoadFromXML(const TXMLGeneticAlgorithm& Document) {
  const TXMLReadScope Reading(Document);
  TLoadScope Load(this);
  LoadFromXML(static_cast<const TXMLGeneticDocumentType&>(Document));
  const genetic_algorithm_xml::TXMLReproductionType Reproduction = Document.Reproduction();
  FCrossoverMethod = Load.ValueOr("CrossoverMethod", Reproduction.CrossoverMethod(), FCrossoverMethod);
  LoadReproduction(Reproduction);
  LoadFromXML(Document.Domain());
  Load.Done();
}

void TQXCustomGeneticAlgorithm::SaveToXML(const TXMLGADomainType& Domain) {
  Domain.Clear();
  Genes().SaveToXML(Domain.GenoType());
  if (TQXGAIndividual* const Fittest = FittestIndividual()) {
    Fittest->SaveToXML(Domain.FittestIndividual());
  }
  Population().SaveToXML(Domain.Chromosomes());
}

void TQXCustomGeneticAlgorithm::LoadFromXML(const TXMLGADomainType& Domain) {
  const TXMLReadScope Reading(Domain);
  TLoadScope Load(this);
  SetAsideGenerations(Load);
  InitializeEmpty();
  Genes().LoadFromXML(Domain.GenoType());
  Population().LoadFromXML(Domain.Chromosomes());
  SetPreviousGeneration(Population());
  Load.Done();
}

void TQXCustomGeneticAlgorithm::RequireRoom(int Chromosomes, std::int64_t Bits) const {
  const TLoadScope* const Load = CurrentLoad();
  const std::uint64_t Most = Load != nullptr ? Load->Room() : DefaultXMLLimits.Bytes;
  const std::uint64_t Each = static_cast<std::uint64_t>(std::max<std::int64_t>(Bits, 0));
  if (Each > Most / static_cast<std::uint64_t>(std::max(Chromosomes, 1))) { // of none, what one would have
    throw std::length_error("GeneSize " + std::to_string(Bits) + " for " + std::to_string(Chromosomes) +
                            " individuals is more than the " + std::to_string(Most) +
                            " bits in all that a load may make (as many as a document may have bytes)");
  }
}

void TQXCustomGeneticAlgorithm::Remember(TLoadScope& Load) {
  TQXTypedGeneticComponent::Remember(Load);
  Load.OnFailure([this, Size = FGeneSize, Method = FCrossoverMethod, Remembered = FChromosomesRemembered] {
    FGeneSize = Size;
    FCrossoverMethod = Method;
    FChromosomesRemembered = Remembered;
  });
  FChromosomesRemembered = false;
}

// Before the chromosomes are resized by a load: once, since only those that the load found matter.
void TQXCustomGeneticAlgorithm::RememberChromosomes(TLoadScope& Load) {
  if (FChromosomesRemembered) {
    return;
  }
  FChromosomesRemembered = true;
  auto Formers = std::make_shared<std::unordered_map<const TQXGAIndividual*, TQXEncodedBits>>();
  for (TQXGAIndividual& Individual : Population()) {
    (*Formers)[&Individual].Assign(Individual.Bits());
  }
  Load.OnFailure([&Members = Population(), Formers] {
    for (TQXGAIndividual& Individual : Members) {
      if (const auto Former = Formers->find(&Individual); Former != Formers->end()) {
        Individual.Bits().Assign(Former->second);
      }
    }
  });
  Load.RememberFitnesses(Population());
}

void TQXCustomGeneticAlgorithm::SaveToStream(std::ostream& Stream) {
  const TXMLGeneticAlgorithm Document = NewGeneticAlgorithm();
  SaveToXML(Document);
  Document.Document().Write(Stream);
}

void TQXCustomGeneticAlgorithm::LoadFromStream(std::istream& Stream) {
  LoadFromXML(GetGeneticAlgorithm(TXMLDocument::Read(Stream)));
}

void TQXCustomGeneticAlgorithm::LoadFromFile(const std::string& FileName) {
  LoadFromXML(LoadGeneticAlgorithm(FileName));
}

// The genes come before the size of the chromosomes, which they would let grow.
void TQXCustomGeneticAlgorithm::DefineProperties(TFiler& Filer) {
  TQXTypedGeneticComponent::DefineProperties(Filer);
  Filer.Property("CrossoverMethod", FCrossoverMethod, FCrossoverMethod != cmGeneBoundary,
                 [this](TGACrossoverMethod Value) { SetCrossoverMethod(Value); });
  Filer.Property("Decoding", Genes().Decoding(), Genes().Decoding() != gdStrict, [this](TGADecoding Value) {
    CurrentLoad()->OnFailure([this, Former = Genes().Decoding()] { Genes().SetDecoding(Former); });
    Genes().SetDecoding(Value);
  });
  std::optional<detail::TGenesReload> Reload;
  Filer.Items(
      "Genes", Genes(), [&](int /*Count*/) { Reload.emplace(Genes(), *CurrentLoad()); },
      [&](std::string_view Name) -> TCollectionItem& { return Reload->Add(Name); });
  Filer.Property("GeneSize", FGeneSize, FGeneSize != 0 || Genes().Size() != 0,
                 [this](int Value) { SetGeneSize(Value); });
  DefinePopulation(Filer);
}

// When all genes are there: each that comes has the others follow one another.
void TQXCustomGeneticAlgorithm::DefineState(TFiler& Filer) {
  TQXTypedGeneticComponent::DefineState(Filer);
  std::vector<int> Offsets;
  for (const TQXGAGene& Gene : Genes()) {
    Offsets.push_back(Gene.Offset());
  }
  Filer.Property("Offsets", Offsets, true, [&](const std::vector<int>& Read) {
    if (Read.size() != Offsets.size()) {
      throw std::invalid_argument("there are " + std::to_string(Offsets.size()) + " genes");
    }
    for (std::size_t I = 0; I < Read.size(); ++I) {
      if (Read[I] != Offsets[I]) {
        Genes()[static_cast<int>(I)].SetOffset(Read[I]);
      }
    }
  });
}

void TQXCustomGeneticAlgorithm::RequireRoomFor(int Individuals) const {
  if (Individuals > 0) {
    RequireRoom(Individuals, FGeneSize);
  }
}

} // namespace qx
