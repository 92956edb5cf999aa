#include <qx/genetic_algorithm/QXGeneticAlgorithm.h>

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <support/SmallAlgorithm.h>

namespace qx {
namespace {

std::string Offsets(const TQXGAGenes& Genes) {
  std::string Text;
  for (const TQXGAGene& Gene : Genes) {
    Text += std::to_string(Gene.Offset()) + " ";
  }
  return Text;
}

void AddSizes(TQXGAGenes& Genes, std::initializer_list<int> Sizes) {
  for (const int Size : Sizes) {
    Genes.Add().SetSize(Size);
  }
}

TEST(Genotype, GenesStandEndToEnd) {
  TQXGAGenes Genes(nullptr);
  EXPECT_EQ(Genes.Size(), 0);
  AddSizes(Genes, {8, 16, 1});
  EXPECT_EQ(Offsets(Genes), "0 8 24 ");
  EXPECT_EQ(Genes.Size(), 25);
  Genes[1].SetSize(4);
  EXPECT_EQ(Offsets(Genes), "0 8 12 ");
  EXPECT_EQ(Genes.Size(), 13);
}

TEST(Genotype, ComingGoingAndMovingGenesShiftTheOthers) {
  TQXGAGenes Genes(nullptr);
  AddSizes(Genes, {8, 16, 1});
  Genes.Insert(1).SetSize(3);
  EXPECT_EQ(Offsets(Genes), "0 8 11 27 ");
  Genes.Delete(2);
  EXPECT_EQ(Offsets(Genes), "0 8 11 ");
  Genes[2].SetIndex(1);
  EXPECT_EQ(Offsets(Genes), "0 8 9 ");
}

TEST(Genotype, TheFirstOffsetIsNeverRewritten) {
  TQXGAGenes Genes(nullptr);
  AddSizes(Genes, {8, 16, 1});
  Genes.Delete(0);
  EXPECT_EQ(Offsets(Genes), "8 24 ");
  EXPECT_EQ(Genes.Size(), 25);
}

TEST(Genotype, AnOffsetWrittenByHandStaysUntilTheNextChange) {
  TQXGAGenes Genes(nullptr);
  AddSizes(Genes, {8, 16, 1});
  Genes[1].SetOffset(100);
  EXPECT_EQ(Offsets(Genes), "0 100 24 ");
  Genes[1].SetSize(4);
  EXPECT_EQ(Offsets(Genes), "0 100 104 ");
  Genes.Add();
  EXPECT_EQ(Offsets(Genes), "0 8 12 13 ");
}

TEST(Genotype, AssignedSizesCountFromTheNextChangeOfTheListOn) {
  TQXGAGenes Genes(nullptr);
  AddSizes(Genes, {8, 16, 1});
  TQXGAGene Source;
  Source.SetSize(2);
  Genes[0].Assign(Source);
  EXPECT_EQ(Offsets(Genes), "0 8 24 ");
  Genes.BeginUpdate();
  Genes.EndUpdate();
  EXPECT_EQ(Offsets(Genes), "0 2 18 ");
}

TEST(Genotype, AssigningTheListLaysItOut) {
  TQXGAGenes Source(nullptr);
  AddSizes(Source, {3, 4, 5});
  TQXGAGenes Genes(nullptr);
  AddSizes(Genes, {9});
  Genes.Assign(Source);
  EXPECT_EQ(Offsets(Genes), "0 3 7 ");
  Genes.Assign(Genes);
  EXPECT_EQ(Genes.Count(), 3);
}

TEST(Genotype, OffsetsEqualAFullComputationOverRandomOperations) {
  std::mt19937 Choices(1);
  TQXGAGenes Genes(nullptr);
  const auto Pick = [&](int n) { return static_cast<int>(Choices() % static_cast<unsigned>(n)); };
  int First = 0;
  for (int Step = 0; Step < 5000; ++Step) {
    if (Genes.Count() < 3 || Pick(3) == 0) {
      const int Place = Pick(Genes.Count() + 1);
      Genes.Insert(Place);
      First = Place == 0 ? 0 : First;
    } else if (Pick(3) == 0) {
      const int Place = Pick(Genes.Count());
      First = Place == 0 ? Genes[1].Offset() : First;
      Genes.Delete(Place);
    } else if (Pick(2) == 0) {
      Genes[Pick(Genes.Count())].SetSize(Pick(20));
    } else {
      const int From = Pick(Genes.Count());
      Genes.Move(From, Pick(Genes.Count()));
      First = Genes[0].Offset();
    }
    int Expected = First;
    for (const TQXGAGene& Gene : Genes) {
      ASSERT_EQ(Gene.Offset(), Expected) << "step " << Step;
      Expected += Gene.Size();
    }
  }
}

TEST(Genotype, ASizeThatCannotBeCountedIsRefusedBeforeAnythingChanges) {
  constexpr int Largest = std::numeric_limits<int>::max();
  TQXGAGenes Genes(nullptr);
  AddSizes(Genes, {Largest - 5, 5});
  EXPECT_THROW(Genes[1].SetSize(6), std::length_error);
  EXPECT_EQ(Genes[1].Size(), 5);
  auto Whole = std::make_unique<TQXGAGene>();
  Whole->SetSize(1);
  EXPECT_THROW(Genes.Insert(0, std::move(Whole)), std::length_error);
  EXPECT_EQ(Genes.Count(), 2);
  Genes[0].SetOffset(Largest);
  EXPECT_THROW(Genes.Add(), std::length_error);
}

struct TWatching : TQXGeneticAlgorithm {
  void GeneNotify(TQXGAGene& Item, TCollectionNotification Action) override {
    Log += "notify" + std::to_string(Action) + "@" + std::to_string(Item.Offset()) + " ";
    if (Action == cnDeleted && GrowsOnDelete) {
      Genes()[0].SetSize(10);
    }
  }
  void GeneUpdate(TQXGAGene* Item) override { Log += Item == nullptr ? "all " : "one "; }
  void GenesSizeChange() override {
    Log += "size ";
    TQXGeneticAlgorithm::GenesSizeChange();
  }
  bool GrowsOnDelete = false;
  std::string Log;
};

TEST(Genotype, ChangesReachTheOwner) {
  TWatching Algorithm;
  TQXGAGene& Gene = Algorithm.Genes().Add();
  EXPECT_EQ(Gene.Collection(), &Algorithm.Genes());
  EXPECT_EQ(Algorithm.Genes().Owner(), &Algorithm);
  EXPECT_EQ(Algorithm.Log, "notify0@0 all ");
  Algorithm.Log.clear();
  Gene.SetSize(4);
  EXPECT_EQ(Algorithm.Log, "size ");
  Gene.SetGeneType(gtInteger);
  Gene.SetName("x");
  Gene.SetPreserveSignBit(true);
  EXPECT_EQ(Algorithm.Log, "size one one ");
  Algorithm.Log.clear();
  Gene.SetSize(4);
  Gene.SetName("x");
  Gene.SetGeneType(gtInteger);
  EXPECT_EQ(Algorithm.Log, "");
  Algorithm.Genes().Add();
  Algorithm.Log.clear();
  Algorithm.Genes().Delete(1);
  EXPECT_EQ(Algorithm.Log, "notify2@4 all ");
}

TEST(Genotype, ASizeThatNoChromosomeCanHaveChangesNothing) {
  for (const int Individuals : {0, 2}) {
    TQXGeneticAlgorithm Algorithm;
    TQXGAGene& Gene = tests::AddGene(Algorithm.Genes(), "n", gtInteger, 4);
    tests::AddGene(Algorithm.Genes(), "behind", gtInteger, 2);
    for (int I = 0; I < Individuals; ++I) {
      Algorithm.Population().Add().Bits().SetAsBitString(0, 6, "110011");
    }
    EXPECT_ANY_THROW(Algorithm.SetGeneSize(0x7fffffff));
    EXPECT_EQ(Algorithm.GeneSize(), 6);
    EXPECT_ANY_THROW(Gene.SetSize(2147483600));
    EXPECT_EQ(Gene.Size(), 4);
    EXPECT_EQ(Gene.MaxValue(), 15);
    EXPECT_EQ(Algorithm.Genes()[1].Offset(), 4);
    EXPECT_EQ(Algorithm.Genes().Size(), 6);
    for (int I = 0; I < Individuals; ++I) {
      EXPECT_EQ(Algorithm.Population()[I].Bits().ToBitString(), "110011");
    }
    EXPECT_EQ(Algorithm.Population().Add().Bits().Size(), 6);
  }
}

TEST(Genotype, AReceiverMayResizeGenesWhileOneGoes) {
  TWatching Algorithm;
  AddSizes(Algorithm.Genes(), {8, 8, 8, 8});
  Algorithm.GrowsOnDelete = true;
  Algorithm.Genes().Delete(1);
  EXPECT_EQ(Offsets(Algorithm.Genes()), "0 10 18 ");
}

TEST(Genotype, AGeneThatIsWholeWhenItComesGrowsTheChromosomes) {
  TQXGeneticAlgorithm Algorithm;
  auto Gene = std::make_unique<TQXGAGene>();
  Gene->SetSize(8);
  TQXGAGene& Inserted = Algorithm.Genes().Insert(0, std::move(Gene));
  EXPECT_EQ(Algorithm.GeneSize(), 8);
  TQXGeneticAlgorithm Other;
  AddSizes(Other.Genes(), {3});
  Inserted.SetCollection(Other.Genes());
  EXPECT_EQ(Other.GeneSize(), 11);
  EXPECT_EQ(Inserted.Offset(), 3);
  Algorithm.SetGenes(Other.Genes());
  EXPECT_EQ(Algorithm.GeneSize(), 11);
}

} // namespace
} // namespace qx
