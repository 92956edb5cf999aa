// Documents and streams that ask for more than they hold.

#include "support/SmallAlgorithm.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

namespace qx {
namespace {

using tests::Repeated;
using tests::TSmallAlgorithm;

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
