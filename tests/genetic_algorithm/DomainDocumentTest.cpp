// The domain document of the genetic algorithm: genotype, fittest individual, chromosomes.

#include "support/ScriptedRandom.h"
#include "support/SmallAlgorithm.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace qx {
namespace {

using tests::AddGene;
using tests::TSmallAlgorithm;

std::string DomainOf(TQXGeneticAlgorithm& Algorithm) {
  const TXMLGADomainType Domain = NewGADomain();
  Algorithm.SaveToXML(Domain);
  return Domain.Document().Text();
}

void LoadDomain(TQXGeneticAlgorithm& Algorithm, const std::string& Content) {
  Algorithm.LoadFromXML(GetGADomain(TXMLDocument::Parse("<GADomain>" + Content + "</GADomain>")));
}

TEST(DomainDocument, HoldsGenotypeFittestAndChromosomes) {
  TSmallAlgorithm Algorithm({"111001000"});
  Algorithm.Population()[0].SetName("one");
  Algorithm.EvaluateFitness();
  const std::string Chromosome = "    <Name>one</Name>\n"
                                 "    <Fitness>4</Fitness>\n"
                                 "    <Genes>\n"
                                 "      <Bits>111001000</Bits>\n"
                                 "      <BooleanGeneValue>true</BooleanGeneValue>\n"
                                 "      <IntegerGeneValue>3</IntegerGeneValue>\n"
                                 "      <EnumerationGeneValue>blue</EnumerationGeneValue>\n"
                                 "      <FloatGeneValue>0</FloatGeneValue>\n"
                                 "    </Genes>\n";
  std::string Deeper;
  std::istringstream Lines(Chromosome);
  for (std::string Line; std::getline(Lines, Line);) {
    Deeper += "  " + Line + '\n';
  }
  EXPECT_EQ(DomainOf(Algorithm), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                 "<GADomain>\n"
                                 "  <GenoType Size=\"9\">\n"
                                 "    <BooleanGene>\n"
                                 "      <Name>flag</Name>\n"
                                 "      <Size>1</Size>\n"
                                 "    </BooleanGene>\n"
                                 "    <IntegerGene>\n"
                                 "      <Name>number</Name>\n"
                                 "      <Size>3</Size>\n"
                                 "      <MinValue>-4</MinValue>\n"
                                 "      <MaxValue>3</MaxValue>\n"
                                 "      <PreserveSignBit>true</PreserveSignBit>\n"
                                 "    </IntegerGene>\n"
                                 "    <EnumerationGene>\n"
                                 "      <Name>colour</Name>\n"
                                 "      <Size>2</Size>\n"
                                 "      <Enumeration>red</Enumeration>\n"
                                 "      <Enumeration>green</Enumeration>\n"
                                 "      <Enumeration>blue</Enumeration>\n"
                                 "    </EnumerationGene>\n"
                                 "    <FloatGene>\n"
                                 "      <Name>level</Name>\n"
                                 "      <Size>3</Size>\n"
                                 "      <MinValue>0</MinValue>\n"
                                 "      <MaxValue>7</MaxValue>\n"
                                 "      <PreserveSignBit>false</PreserveSignBit>\n"
                                 "    </FloatGene>\n"
                                 "  </GenoType>\n"
                                 "  <FittestIndividual>\n" +
                                     Chromosome +
                                     "  </FittestIndividual>\n"
                                     "  <Chromosomes>\n"
                                     "    <Chromosome>\n" +
                                     Deeper +
                                     "    </Chromosome>\n"
                                     "  </Chromosomes>\n"
                                     "</GADomain>\n");
}

TEST(DomainDocument, LimitsFollowSizeAndSignWhateverTheDocumentSays) {
  TQXGeneticAlgorithm Algorithm;
  LoadDomain(Algorithm,
             "<GenoType Size='8'><IntegerGene><Name>n</Name><Size>8</Size><MinValue>3</MinValue>"
             "<MaxValue>17</MaxValue><PreserveSignBit>true</PreserveSignBit></IntegerGene></GenoType>");
  ASSERT_EQ(Algorithm.Genes().Count(), 1);
  EXPECT_EQ(Algorithm.Genes()[0].GeneType(), gtInteger);
  EXPECT_EQ(Algorithm.Genes()[0].MinValue(), -128);
  EXPECT_EQ(Algorithm.Genes()[0].MaxValue(), 127);
  EXPECT_TRUE(Algorithm.Genes()[0].PreserveSignBit());
}

TEST(DomainDocument, AnEnumeratedGeneTakesItsSizeFromItsTexts) {
  TQXGeneticAlgorithm Algorithm;
  LoadDomain(Algorithm,
             "<GenoType Size='2'><EnumerationGene><Name>e</Name><Size>7</Size><Enumeration>a</Enumeration>"
             "<Enumeration>b</Enumeration></EnumerationGene></GenoType>");
  EXPECT_EQ(Algorithm.Genes()[0].Size(), 2);
  EXPECT_EQ(Algorithm.Genes()[0].Enumerations().Text(), "a\nb\n");
  EXPECT_EQ(Algorithm.GeneSize(), 7); // grew with the size that the document gave
}

TEST(DomainDocument, GenesOfAnyOrderAndOtherElementsAmongThem) {
  TQXGeneticAlgorithm Algorithm;
  LoadDomain(Algorithm,
             "<GenoType Size='3'><FloatGene><Size>1</Size></FloatGene><Comment/><BooleanGene><Size>2</Size>"
             "</BooleanGene></GenoType>");
  ASSERT_EQ(Algorithm.Genes().Count(), 2);
  EXPECT_EQ(Algorithm.Genes()[0].GeneType(), gtFloat);
  EXPECT_EQ(Algorithm.Genes()[1].GeneType(), gtBoolean);
  EXPECT_EQ(Algorithm.Genes()[1].Offset(), 1);
}

TEST(DomainDocument, AGeneOfUnknownTypeIsNotWritten) {
  TSmallAlgorithm Algorithm({"111001000"});
  Algorithm.Number->SetGeneType(gtUnknown);
  const std::string Text = DomainOf(Algorithm);
  EXPECT_EQ(Text.find("IntegerGene"), std::string::npos);
  EXPECT_NE(Text.find("<GenoType Size=\"9\">"), std::string::npos); // its bits are counted
}

TEST(DomainDocument, TheSizeIsThatOfTheGenesAndOnlyWithoutThemThatOfTheChromosomes) {
  TQXGeneticAlgorithm Algorithm;
  Algorithm.SetGeneSize(12);
  EXPECT_NE(DomainOf(Algorithm).find("<GenoType Size=\"12\"/>"), std::string::npos);
  AddGene(Algorithm.Genes(), "n", gtInteger, 5);
  EXPECT_NE(DomainOf(Algorithm).find("<GenoType Size=\"5\">"), std::string::npos); // the spare bits are lost
  TQXGAGenes Alone(nullptr);
  const TXMLGenoType GenoType = NewGenoType();
  Alone.SaveToXML(GenoType);
  EXPECT_EQ(GenoType.Size(), 0);
}

TEST(DomainDocument, BitsAreReadOverTheChromosomesOwnSize) {
  TQXGeneticAlgorithm Algorithm;
  LoadDomain(Algorithm, "<GenoType Size='4'/><Chromosomes>"
                        "<Chromosome><Name>long</Name><Genes><Bits>010111</Bits></Genes></Chromosome>"
                        "<Chromosome><Name>short</Name><Genes><Bits> 11 </Bits></Genes></Chromosome>"
                        "<Chromosome/></Chromosomes>");
  ASSERT_EQ(Algorithm.Population().Count(), 3);
  EXPECT_EQ(Algorithm.Population()[0].Bits().ToBitString(), "0101");
  EXPECT_EQ(Algorithm.Population()[1].Bits().ToBitString(), "1100");
  EXPECT_EQ(Algorithm.Population()[2].Bits().ToBitString(), "0000");
  EXPECT_EQ(Algorithm.Population()[0].Name(), "long");
  EXPECT_EQ(Algorithm.Population()[2].Name(), "");
}

TEST(DomainDocument, APopulationAloneTakesTheSizeOfItsComponent) {
  TSmallAlgorithm Small;
  const TXMLChromosomes Chromosomes = NewChromosomes();
  Small.Population().SaveToXML(Chromosomes);
  TQXGeneticAlgorithm Other;
  Other.SetGeneSize(4);
  Other.Population().LoadFromXML(Chromosomes);
  ASSERT_EQ(Other.Population().Count(), 3);
  EXPECT_EQ(Other.Population()[1].Bits().ToBitString(), "0000");
  EXPECT_EQ(Other.Population()[2].Bits().ToBitString(), "1111");
}

TEST(DomainDocument, FitnessAndGeneValuesAreForPeople) {
  TSmallAlgorithm Algorithm;
  LoadDomain(Algorithm,
             "<GenoType Size='2'/><FittestIndividual><Genes><Bits>11</Bits></Genes></FittestIndividual>"
             "<Chromosomes><Chromosome><Fitness>77</Fitness><Genes><Bits>10</Bits>"
             "<IntegerGeneValue>nonsense</IntegerGeneValue></Genes></Chromosome></Chromosomes>");
  Algorithm.EvaluateFitness();
  EXPECT_EQ(Algorithm.FittestIndividual()->Fitness(), 1);
  EXPECT_EQ(Algorithm.Population().Count(), 1);
}

TEST(DomainDocument, HasNoFittestWhenThereIsNone) {
  TQXGeneticAlgorithm Algorithm;
  const TXMLGADomainType Domain = NewGADomain();
  Algorithm.SaveToXML(Domain);
  EXPECT_FALSE(Domain.HasFittestIndividual());
}

TEST(DomainDocument, LoadingDrawsNothingAndFillsBothGenerations) {
  TSmallAlgorithm Algorithm;
  const std::string Text = DomainOf(Algorithm);
  tests::TScriptedRandom Random{};
  TQXGeneticAlgorithm Copy;
  Copy.SetInitialPopulation(50);
  Copy.LoadFromXML(GetGADomain(TXMLDocument::Parse(Text)));
  EXPECT_TRUE(Copy.Initialized());
  EXPECT_EQ(Copy.InitialPopulation(), 50);
  EXPECT_EQ(Copy.Population().Count(), 3);
  ASSERT_NE(Copy.PreviousGeneration(), nullptr);
  EXPECT_EQ(Copy.PreviousGeneration()->Count(), 3);
  EXPECT_EQ((*Copy.PreviousGeneration())[1].Bits().ToBitString(), "000010111");
}

TEST(DomainDocument, GenesThatStayAreTheSameObjects) {
  TSmallAlgorithm Algorithm;
  TQXGAGene* const Level = Algorithm.Level;
  TStrings* const Texts = &Algorithm.Colour->Enumerations();
  const std::string Text = DomainOf(Algorithm);
  Algorithm.Level->SetSize(12);
  Algorithm.Colour->Enumerations().Clear();
  AddGene(Algorithm.Genes(), "goes", gtInteger, 4);
  Algorithm.Genes().Move(3, 0);
  Algorithm.LoadFromXML(GetGADomain(TXMLDocument::Parse(Text)));
  const std::size_t Genes = Text.find("</GenoType>");
  EXPECT_EQ(DomainOf(Algorithm).substr(0, Genes), Text.substr(0, Genes));
  ASSERT_EQ(Algorithm.Genes().Count(), 4);
  EXPECT_EQ(&Algorithm.Genes()[3], Level);
  EXPECT_EQ(Level->Size(), 3);
  EXPECT_EQ(Level->Offset(), 6);
  EXPECT_EQ(&Algorithm.Genes()[2].Enumerations(), Texts);
  EXPECT_EQ(Texts->Count(), 3);
}

TEST(DomainDocument, NodesOfOtherKindsArePassedOver) {
  TSmallAlgorithm Algorithm;
  const TXMLNode Other = TXMLDocument::New("Other").Root();
  Algorithm.Population()[0].SaveToXML(Other);
  EXPECT_FALSE(Other.FirstChild());
  Algorithm.Population()[0].LoadFromXML(Other);
  EXPECT_EQ(Algorithm.Population()[0].Bits().ToBitString(), "111001000");
  const TXMLNode Node = NewChromosomes();
  static_cast<TQXPopulation&>(Algorithm.Population()).SaveToXML(Node);
  EXPECT_EQ(TXMLChromosomes(Node).Chromosome().Count(), 3);
  Algorithm.Population().Clear();
  static_cast<TQXPopulation&>(Algorithm.Population()).LoadFromXML(Node);
  EXPECT_EQ(Algorithm.Population().Count(), 3);
}

TEST(DomainDocument, AnIndividualOutsideAComponentHasNoGeneValues) {
  TQXGAIndividual Individual;
  Individual.Bits().SetSize(3);
  const TXMLChromosome Chromosome(TXMLDocument::New("Chromosome").Root());
  Individual.SaveToXML(Chromosome);
  EXPECT_EQ(Chromosome.Name(), "TQXGAIndividual");
  EXPECT_EQ(Chromosome.Fitness(), 0);
  EXPECT_EQ(Chromosome.Genes().Bits(), "000");
  EXPECT_FALSE(Chromosome.Genes().FirstChild().NextSibling());
}

TEST(DomainDocument, ListsGiveTheGenesAndValuesOfAKind) {
  TSmallAlgorithm Algorithm;
  const TXMLGADomainType Domain = NewGADomain();
  Algorithm.SaveToXML(Domain);
  const TXMLGenoType GenoType = Domain.GenoType();
  ASSERT_EQ(GenoType.IntegerGene().Count(), 1);
  EXPECT_EQ(GenoType.IntegerGene()[0].MinValue(), -4);
  EXPECT_TRUE(GenoType.IntegerGene()[0].PreserveSignBit());
  EXPECT_EQ(GenoType.BooleanGene()[0].Name(), "flag");
  EXPECT_EQ(GenoType.FloatGene()[0].MaxValue(), 7);
  EXPECT_EQ(GenoType.EnumerationGene()[0].Enumeration()[1], "green");
  const TXMLGenes Genes = Domain.Chromosomes().Chromosome()[1].Genes();
  EXPECT_FALSE(Genes.BooleanGeneValue()[0]);
  EXPECT_EQ(Genes.IntegerGeneValue()[0], 0);
  EXPECT_EQ(Genes.FloatGeneValue()[0], 7);
  EXPECT_EQ(Genes.EnumerationGeneValue()[0], "green");
}

TEST(DomainDocument, GenotypeAndChromosomesCanEachBeADocument) {
  const tests::TTemporaryFolder Folder;
  TSmallAlgorithm Algorithm;
  const TXMLGenoType GenoType = NewGenoType();
  Algorithm.Genes().SaveToXML(GenoType);
  GenoType.Document().WriteFile(Folder.File("genes.xml"));
  const TXMLChromosomes Chromosomes = NewChromosomes();
  Algorithm.Population().SaveToXML(Chromosomes);
  Chromosomes.Document().WriteFile(Folder.File("chromosomes.xml"));
  const TXMLGADomainType Domain = NewGADomain();
  Algorithm.SaveToXML(Domain);
  Domain.Document().WriteFile(Folder.File("domain.xml"));

  TQXGeneticAlgorithm Copy;
  Copy.Genes().LoadFromXML(LoadGenoType(Folder.File("genes.xml")));
  Copy.Population().LoadFromXML(LoadChromosomes(Folder.File("chromosomes.xml")));
  EXPECT_EQ(Copy.GeneSize(), 9);
  EXPECT_EQ(Copy.Population()[2].Bits().ToBitString(), "111110000");
  EXPECT_EQ(LoadGADomain(Folder.File("domain.xml")).Chromosomes().Chromosome().Count(), 3);
  EXPECT_THROW(LoadGADomain(Folder.File("genes.xml")), EXMLError);
  EXPECT_THROW(GetGenoType(Domain.Document()), EXMLError);
  EXPECT_THROW(GetChromosomes(Domain.Document()), EXMLError);
}

TEST(DomainDocument, AValueThatIsNoneOfTheTextsStopsTheSave) {
  TSmallAlgorithm Algorithm({"000011000"}); // the third colour is the last
  EXPECT_THROW(DomainOf(Algorithm), EGAException);
}

} // namespace
} // namespace qx
