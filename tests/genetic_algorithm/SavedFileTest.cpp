// Files that a component saves: read by others, and whole whatever happens to the process that saves.

#include "support/Cases.h"
#include "support/SmallAlgorithm.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace qx {
namespace {

using tests::TSmallAlgorithm;

TEST(SavedFile, OfAnyNamesIsTakenByOtherReaders) {
  const tests::TTemporaryFolder Folder;
  const std::string Name = Folder.File("run.xml");
  TSmallAlgorithm Algorithm;
  for (const char* const Text :
       {"\"quoted\" & 'more'", "<tag>", "]]>", "\xc3\xa9t\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac \xf0\x9f\x8c\xb1",
        " blank ", "two\nlines\r", "&lt;"}) {
    Algorithm.Number->SetName(Text);
    Algorithm.Population()[1].SetName(Text);
    Algorithm.Colour->Enumerations().SetStrings(1, Text);
    Algorithm.SaveToFile(Name);
    EXPECT_TRUE(tests::XmllintAccepts(Name)) << Text;
    TSmallAlgorithm Copy;
    Copy.LoadFromFile(Name);
    EXPECT_EQ(Copy.Genes()[1].Name(), Text);
    EXPECT_EQ(Copy.Population()[1].Name(), Text);
    EXPECT_EQ(Copy.Genes()[2].Enumerations()[1], Text);
  }
}

TEST(SavedFile, OfAPopulationNamedLikeNoElementIsTakenByOtherReaders) {
  const tests::TTemporaryFolder Folder;
  TQXPopulation Population(nullptr);
  for (const char* const Text : {"1st", "a b", "<x>", "a:b", "\xc3\xa9", "\xff"}) {
    Population.Add().SetName(Text);
  }
  const TXMLDocument Document = TXMLDocument::New("Members");
  Population.SaveToXML(Document.Root());
  Document.WriteFile(Folder.File("members.xml"));
  EXPECT_TRUE(tests::XmllintAccepts(Folder.File("members.xml")));
}

TEST(SavedFile, StaysWhenASaveRaises) {
  const tests::TTemporaryFolder Folder;
  const std::string Name = Folder.File("run.xml");
  TSmallAlgorithm Algorithm;
  Algorithm.SaveToFile(Name);
  const std::string Before = tests::ReadFile(Name);
  Algorithm.Population()[0].Bits().SetAsBitString(4, 2, "11"); // none of the colours
  EXPECT_THROW(Algorithm.SaveToFile(Name), EGAException);
  Algorithm.Population()[0].Bits().SetAsBitString(4, 2, "01");
  Algorithm.Number->SetName("\x01");
  EXPECT_THROW(Algorithm.SaveToFile(Name), std::invalid_argument);
  Algorithm.Number->SetName("number");
  Algorithm.Population()[0].MarkStale();
  Algorithm.OnEvaluateFitness = [](auto&, auto&, double&) { throw std::runtime_error("handler"); };
  EXPECT_THROW(Algorithm.SaveToFile(Name), std::runtime_error);
  EXPECT_EQ(tests::ReadFile(Name), Before);
  EXPECT_EQ(Folder.Count(), 1);
}

TEST(SavedFile, HoldsWhatAHandlerAddsWhileItIsSaved) {
  TSmallAlgorithm Algorithm;
  for (TQXGAIndividual& Individual : Algorithm.Population()) {
    Individual.MarkStale();
  }
  Algorithm.OnEvaluateFitness = [](auto& Sender, auto&, double& Fitness) {
    Fitness = 1;
    if (Sender.Population().Count() < 100) {
      Sender.Population().Add();
    }
  };
  const TXMLGADomainType Domain = NewGADomain();
  Algorithm.SaveToXML(Domain);
  EXPECT_EQ(Domain.Chromosomes().Chromosome().Count(), 100);
}

// Saves again and again, each time another generation, until it is killed.
[[noreturn]] void SaveForEver(TSmallAlgorithm& Algorithm, const std::string& Name) {
  for (int Generation = 0;; ++Generation) {
    Algorithm.SetGeneration(Generation);
    Algorithm.SaveToFile(Name);
  }
}

TEST(SavedFile, IsReadableAfterManyKills) {
  const tests::TTemporaryFolder Folder;
  TSmallAlgorithm Algorithm;
  for (int I = 0; I < 300; ++I) { // a document of more than one write
    Algorithm.Population()[0].Clone();
  }
  Algorithm.SaveToFile(Folder.File("run.xml"));
  std::mt19937 Choices(1);
  for (int Kill = 0; Kill < tests::Cases(1000, 100); ++Kill) {
    const pid_t Child = ::fork();
    ASSERT_GE(Child, 0);
    if (Child == 0) {
      SaveForEver(Algorithm, Folder.File("run.xml"));
    }
    ::usleep(static_cast<useconds_t>(Choices() % 4000));
    ::kill(Child, SIGKILL);
    ::waitpid(Child, nullptr, 0);
    for (const auto& Entry : std::filesystem::directory_iterator(Folder.File(""))) { // whatever was left
      ASSERT_EQ(LoadGeneticAlgorithm(Entry.path()).Domain().Chromosomes().Chromosome().Count(), 303)
          << Entry.path();
    }
  }
}

} // namespace
} // namespace qx
