// Documents and streams that ask for more than they hold.

#include "support/Allocations.h"
#include "support/SmallAlgorithm.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

namespace qx {
namespace {

using tests::TSmallAlgorithm;

std::string Repeated(std::string_view Text, int Times) {
  std::string All;
  for (int I = 0; I < Times; ++I) {
    All += Text;
  }
  return All;
}

TEST(HostileDocument, AbsurdSizesTakeNoMemory) {
  const std::string Chromosomes = "<Chromosomes>" + Repeated("<Chromosome/>", 30) + "</Chromosomes>";
  for (const std::string& Domain : {
           std::string("<GenoType Size='2000000000'/>"),
           "<GenoType Size='2000000000'/>" + Chromosomes,
           "<GenoType Size='8'><IntegerGene><Size>2000000000</Size></IntegerGene></GenoType>" + Chromosomes,
           "<GenoType Size='8'>" + Repeated("<FloatGene><Size>99999999</Size></FloatGene>", 10) +
               "</GenoType>" + Chromosomes,
           "<GenoType Size='100000000'/>" + Chromosomes,
       }) {
    TSmallAlgorithm Algorithm;
    const std::string Text = "<GeneticAlgorithm><Domain>" + Domain + "</Domain></GeneticAlgorithm>";
    ASSERT_LT(Text.size(), 1024U);
    const std::size_t Before = tests::AllocatedBytes();
    EXPECT_THROW(tests::Load(Algorithm, Text), std::length_error) << Domain;
    EXPECT_LT(tests::AllocatedBytes() - Before, 1U << 20) << Domain;
  }
}

TEST(HostileDocument, AbsurdSizesInAComponentStreamTakeNoMemory) {
  for (const std::string Body :
       {"GeneSize = 2000000000", "GeneSize = 100000000\n Population {\n I {\n}\n I {\n}\n I {\n}\n}",
        "GeneSize = 268435456\n Genes {\n G {\n Size = 5\n}\n}"}) {
    TSmallAlgorithm Algorithm;
    const std::size_t Before = tests::AllocatedBytes();
    EXPECT_THROW(tests::Read(Algorithm, "A {\n" + Body + "\n}\n"), EPropertyError) << Body;
    EXPECT_LT(tests::AllocatedBytes() - Before, 1U << 20) << Body;
  }
}

TEST(HostileDocument, GenesOfAStreamCannotMakeHugeChromosomes) {
  TSmallAlgorithm Algorithm;
  const std::string Before = tests::StateOf(Algorithm);
  EXPECT_THROW(tests::Read(Algorithm, "A {\n Genes {\n G {\n Size = 2000000000\n}\n}\n}\n"), EPropertyError);
  EXPECT_EQ(tests::StateOf(Algorithm), Before);
}

TEST(HostileDocument, ElementsOfAnyTagMakeNoMoreChromosomes) {
  TQXGeneticAlgorithm Algorithm;
  Algorithm.SetGeneSize(8'000'000);
  const TXMLDocument Document = TXMLDocument::Parse("<Members>" + Repeated("<a/>", 2000) + "</Members>");
  EXPECT_THROW(Algorithm.Population().LoadFromXML(Document.Root()), std::length_error);
}

TEST(HostileDocument, TheLimitOnChromosomesIsThatOnBytesAndCanBeRaised) {
  const TXMLLimits Before = DefaultXMLLimits;
  const std::string Text =
      "<GeneticAlgorithm><Domain><GenoType Size='300'/><Chromosomes><Chromosome/></Chromosomes>"
      "</Domain></GeneticAlgorithm>";
  TQXGeneticAlgorithm Algorithm;
  DefaultXMLLimits.Bytes = 299;
  EXPECT_THROW(tests::Load(Algorithm, Text), std::length_error);
  DefaultXMLLimits.Bytes = 300;
  tests::Load(Algorithm, Text);
  EXPECT_EQ(Algorithm.Population()[0].Bits().Size(), 300);
  DefaultXMLLimits = Before;
}

TEST(HostileDocument, DeepOnesAreRefused) {
  TSmallAlgorithm Algorithm;
  const std::string Before = tests::StateOf(Algorithm);
  EXPECT_THROW(tests::Load(Algorithm, "<GeneticAlgorithm>" + Repeated("<a>", 1'000'000)), EXMLError);
  EXPECT_THROW(tests::Load(Algorithm, "<GeneticAlgorithm>" + Repeated("<a>", 1'000'000) +
                                          Repeated("</a>", 1'000'000) + "</GeneticAlgorithm>"),
               EXMLError);
  EXPECT_EQ(tests::StateOf(Algorithm), Before);
}

} // namespace
} // namespace qx
