#include <qx/platform/Strings.h>
#include <qx/program_trees/QXGPDomainXML.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <support/SmallPrograms.h>

namespace qx::generics {
namespace {

using tests::TArithmeticEngine;
using tests::TTestEngine;
using TInstruction = TQXGPInstruction<TGAFloat>;
using TInstructions = TQXGPInstructions<TGAFloat>;

std::string Shown(const TInstructions& Set) {
  std::string Text;
  for (const TInstruction& Instruction : Set) {
    Text += Instruction.ToString() + "/" + std::to_string(Instruction.Arity()) + "; ";
  }
  return Text;
}

TXMLGPInstructions Parse(const std::string& Content) {
  return TXMLGPInstructions(TXMLDocument::Parse("<Instructions>" + Content + "</Instructions>").Root());
}

TEST(InstructionSetTest, FindsNamesWithoutRegardToCase) {
  TArithmeticEngine Engine;
  TInstructions& Set = Engine.Instructions();
  EXPECT_EQ(Set.IndexOf("ADD"), 0);
  EXPECT_EQ(Set.FindItemName("mUL"), &Set[1]);
  EXPECT_EQ(&Set.GetItemByName("X"), &Set[3]);
  EXPECT_EQ(Set.IndexOf("Sub"), -1);
  EXPECT_EQ(Set.FindItemName("Sub"), nullptr);
  try {
    Set.GetItemByName("Sub");
    FAIL() << "nothing raised";
  } catch (const EGPException& Error) {
    EXPECT_STREQ(Error.what(), "Unknown instruction \"Sub\"");
  }
}

TEST(InstructionSetTest, FindsTheRawNameAndNotTheDisplayName) {
  TInstructions Set(nullptr);
  Set.Add();
  EXPECT_EQ(Set.IndexOf("TQXGPInstruction<double>"), -1);
  EXPECT_EQ(Set.IndexOf(""), 0);
}

TEST(InstructionSetTest, OfEqualNamesTheFirstInTheListIsFound) {
  TInstructions Set(nullptr);
  for (int I = 0; I < 3; ++I) {
    TInstruction Source;
    Source.SetName(I == 1 ? "A" : "a");
    Set.Add().Assign(Source);
  }
  EXPECT_EQ(Set.IndexOf("a"), 0);
  Set[2].SetIndex(0);
  EXPECT_EQ(Set.IndexOf("A"), 0);
  Set.Delete(0);
  EXPECT_EQ(Set.IndexOf("a"), 0);
  Set.Delete(0);
  Set.Delete(0);
  EXPECT_EQ(Set.IndexOf("a"), -1);
}

TEST(InstructionSetTest, NamesAreFoundThroughEveryChangeOfTheList) {
  TInstructions Set(nullptr);
  TInstructions Other(nullptr);
  const auto Check = [](const TInstructions& Checked) {
    for (int I = 0; I < Checked.Count(); ++I) {
      EXPECT_EQ(Checked.IndexOf(Checked[I].Name()), I);
    }
  };
  for (int I = 0; I < 50; ++I) {
    Set.Insert(I / 2).SetName("i" + std::to_string(I));
  }
  Check(Set);
  Set.Move(3, 40);
  Set[7].SetName("other");
  Check(Set);
  EXPECT_EQ(Set.IndexOf("i14"), Set.IndexOf("I14"));
  const auto Taken = Set.Extract(Set[5]);
  EXPECT_EQ(Set.IndexOf(Taken->Name()), -1);
  EXPECT_EQ(Taken->Collection(), nullptr);
  Taken->SetName("renamed outside");
  Set[6].SetCollection(Other);
  EXPECT_EQ(Other.IndexOf(Other[0].Name()), 0);
  Set.Clear();
  EXPECT_EQ(Set.IndexOf("other"), -1);
  Check(Set);
}

TEST(InstructionSetTest, TellsTheEngineOfEveryChangeInOrder) {
  TTestEngine<TGAFloat> Engine;
  TInstructions& Set = Engine.Instructions();
  TInstruction& First = Set.Add();
  EXPECT_EQ(Engine.TakeLog(), "added ; update all; ");
  First.SetName("a");
  EXPECT_EQ(Engine.TakeLog(), "update a; ");
  First.SetComment("said");
  First.SetValue(3);
  EXPECT_EQ(Engine.TakeLog(), "");
  First.SetArity(2);
  EXPECT_EQ(Engine.TakeLog(), "kind of a; update a; update a; ");
  First.SetArity(3);
  EXPECT_EQ(Engine.TakeLog(), "update a; ");
  First.SetOperation(gpConstant);
  EXPECT_EQ(Engine.TakeLog(), "update a; kind of a; update a; ");
  Set.Delete(0);
  EXPECT_EQ(Engine.TakeLog(), "deleted a; update all; ");
  Set.Add();
  Engine.TakeLog();
  const auto Taken = Set.Extract(Set[0]);
  EXPECT_EQ(Engine.TakeLog(), "extracted ; update all; ");
  Taken->SetName("quiet");
  EXPECT_EQ(Engine.TakeLog(), "");
}

TEST(InstructionSetTest, NoOwnerOrOneThatIsNoEngineMeansNoEngine) {
  TInstructions Alone(nullptr);
  EXPECT_EQ(Alone.Engine(), nullptr);
  TStrings Owner;
  TInstructions Owned(&Owner);
  EXPECT_EQ(Owned.Engine(), nullptr);
  Owned.Add().SetArity(2);
  TTestEngine<Variant> OtherKind;
  EXPECT_EQ(TInstructions(&OtherKind).Engine(), nullptr);
}

TEST(InstructionSetTest, BecomesTheLinesOfAStringList) {
  TInstructions Set(nullptr);
  Set.Add().SetName("a");
  Set.Add();
  TStrings Lines{"before"};
  int Changes = 0;
  Lines.OnChange = [&](auto&) { ++Changes; };
  Lines.Assign(Set);
  EXPECT_EQ(Lines.Text(), "a\nTQXGPInstruction<double>\n");
  EXPECT_EQ(Lines.Objects(0), &Set[0]);
  EXPECT_EQ(Lines.Objects(1), &Set[1]);
  EXPECT_EQ(Changes, 1);
  TQXGPContext<TGAFloat> Context;
  EXPECT_THROW(Context.Assign(Set), std::invalid_argument);
}

TEST(InstructionSetTest, AssignAllCopiesHandlersToo) {
  TArithmeticEngine Source;
  TTestEngine<TGAFloat> Target;
  Target.Variable("gone");
  Target.TakeLog();
  Target.Instructions().AssignAll(Source.Instructions());
  EXPECT_EQ(Shown(Target.Instructions()), Shown(Source.Instructions()));
  TQXGPContext<TGAFloat> Context;
  EXPECT_EQ(Target.Tree("(Add c c)")->Execute(&Context), 3);
  EXPECT_EQ(Target.Log.substr(0, 13), "deleted gone;");
  EXPECT_EQ(Target.Log.find("update"), Target.Log.rfind("update")) << Target.Log;
  Source.Instructions().AssignAll(Source.Instructions());
  EXPECT_EQ(Source.Instructions().Count(), 6);
}

TEST(InstructionSetTest, AssignAllPassesOverOtherClasses) {
  TArithmeticEngine Engine;
  TArithmeticEngine<Variant> Variants;
  const std::string Before = Shown(Engine.Instructions());
  Engine.Instructions().AssignAll(Variants.Instructions());
  Engine.Instructions().AssignAll(TStrings{"a"});
  EXPECT_EQ(Shown(Engine.Instructions()), Before);
  EXPECT_EQ(Engine.Log, "");
}

TEST(InstructionSetTest, AssignCopiesWithoutHandlers) {
  TArithmeticEngine Source;
  TInstructions Copy(nullptr);
  Copy.Assign(Source.Instructions());
  EXPECT_EQ(Shown(Copy), Shown(Source.Instructions()));
  EXPECT_FALSE(Copy[0].OnExecute);
}

TEST(InstructionSetTest, ReadsListByListAndMergesByName) {
  TInstructions Set(nullptr);
  TInstruction& X = Set.Add();
  X.SetName("x");
  const auto Element =
      Parse("<VariantConstant Name='vc'/><Constant Name='c'/><FloatConstant Name='fc'/>"
            "<Variable Name='y'/><Function Name='X' Arity='2' Comment='was x'/><Variable Name='z'/>");
  Set.LoadFromXML(Element);
  EXPECT_EQ(Shown(Set), "X 'was x' gpFunction/2; y '' gpVariable/0; z '' gpVariable/0; c '' gpConstant/0; "
                        "fc '' gpConstant/0; vc '' gpConstant/0; ");
  EXPECT_EQ(&Set[0], &X);
  const std::string Once = Shown(Set);
  Set.LoadFromXML(Element);
  EXPECT_EQ(Shown(Set), Once);
}

TEST(InstructionSetTest, AnEmptyElementChangesNothing) {
  TArithmeticEngine Engine;
  const std::string Before = Shown(Engine.Instructions());
  Engine.Instructions().LoadFromXML(Parse(""));
  EXPECT_EQ(Shown(Engine.Instructions()), Before);
}

TEST(InstructionSetTest, ABadElementLeavesTheWholeSetAsItWas) {
  TArithmeticEngine Engine;
  const std::string Before = Shown(Engine.Instructions());
  EXPECT_THROW(
      Engine.Instructions().LoadFromXML(Parse("<Function Name='New' Arity='1'/><Function Arity='999'/>")),
      EXMLError);
  EXPECT_EQ(Shown(Engine.Instructions()), Before);
  EXPECT_EQ(Engine.Log, "");
}

TEST(InstructionSetTest, WritesEachInstructionIntoTheListOfItsKind) {
  TArithmeticEngine Engine;
  Engine.Instructions()[0].SetComment("sum");
  const TXMLDocument Document = TXMLDocument::New("Instructions");
  Engine.Instructions().SaveToXML(TXMLGPInstructions(Document.Root()));
  EXPECT_EQ(Document.Text(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<Instructions>\n"
                             "  <Function Name=\"Add\" Comment=\"sum\" Arity=\"2\"/>\n"
                             "  <Function Name=\"Mul\" Comment=\"\" Arity=\"2\"/>\n"
                             "  <Function Name=\"Neg\" Comment=\"\" Arity=\"1\"/>\n"
                             "  <Variable Name=\"x\" Comment=\"\"/>\n"
                             "  <Variable Name=\"y\" Comment=\"\"/>\n"
                             "  <Constant Name=\"c\" Comment=\"\"/>\n"
                             "</Instructions>\n");
  TInstructions Read(nullptr);
  Read.LoadFromXML(TXMLGPInstructions(Document.Root()));
  EXPECT_EQ(Shown(Read), Shown(Engine.Instructions()));
}

TEST(InstructionSetTest, AnArityThatNoDocumentHoldsIsRefusedBeforeAnythingIsWritten) {
  TArithmeticEngine Engine;
  Engine.Instructions()[2].SetArity(300);
  const TXMLDocument Document = TXMLDocument::New("Instructions");
  EXPECT_THROW(Engine.Instructions().SaveToXML(TXMLGPInstructions(Document.Root())), std::out_of_range);
  EXPECT_EQ(Document.Root().ChildCount(), 0);
}

TEST(InstructionSetTest, AnUnnamedInstructionHasNoNameToMergeBy) {
  TInstructions Set(nullptr);
  Set.Add();
  const TXMLDocument Document = TXMLDocument::New("Instructions");
  Set.SaveToXML(TXMLGPInstructions(Document.Root())); // its display name is written
  Set.LoadFromXML(TXMLGPInstructions(Document.Root()));
  EXPECT_EQ(Set.Count(), 2);
}

TEST(InstructionSetTest, NamesComeAndGo) {
  TInstructions Set(nullptr);
  Set.Add();
  Set.Add().SetName("a");
  Set[1].SetName("b");
  EXPECT_EQ(Set.IndexOf("a"), -1);
  EXPECT_EQ(Set.IndexOf("B"), 1);
  Set[0].SetName("a");
  EXPECT_EQ(Set.IndexOf(""), -1);
  Set[1].SetName("");
  EXPECT_EQ(Set.IndexOf("b"), -1);
  EXPECT_EQ(Set.IndexOf(""), 1);
}

TEST(InstructionSetTest, AnEngineThatRaisesDoesNotLoseTheInstruction) {
  class TRaising : public TTestEngine<TGAFloat> {
  public:
    void InstructionUpdate(TInstruction* Instruction) override {
      if (Raises && Instruction == nullptr) {
        throw std::runtime_error("not now");
      }
    }
    bool Raises = false;
  };
  TRaising Engine;
  Engine.Variable("x");
  TInstruction& Y = Engine.Variable("y");
  const int ID = Y.ID();
  Engine.Variable("z");
  TInstructions Other(nullptr);
  Engine.Raises = true;
  EXPECT_THROW(Engine.Instructions().Extract(Y), std::runtime_error);
  EXPECT_THROW(Y.SetCollection(Other), std::runtime_error);
  EXPECT_EQ(Engine.Instructions().IndexOf("y"), 1);
  EXPECT_EQ(Y.ID(), ID);
  EXPECT_EQ(Other.Count(), 0);
}

TEST(InstructionSetTest, ItemsOfAnotherClassKeepTheirClass) {
  class TOwnInstruction : public TInstruction {};
  TInstructions Set(nullptr, ItemClassOf<TOwnInstruction>());
  EXPECT_NE(dynamic_cast<TOwnInstruction*>(&Set.Add()), nullptr);
  Set[0].SetName("a");
  EXPECT_EQ(Set.FindItemName("A"), &Set[0]);
}

TEST(DomainDocumentTest, FilesOfPartsHaveTheRootOfTheWhole) {
  EXPECT_EQ(NewGPInstructions().Tag(), "GPDomain");
  EXPECT_EQ(NewGPPopulation().Tag(), "GPDomain");
  EXPECT_EQ(NewGPDomain().Tag(), "GPDomain");
  EXPECT_EQ(GetGPInstructions(TXMLDocument::New("Instructions")).Tag(), "Instructions");
  EXPECT_EQ(GetGPPopulation(TXMLDocument::New("Population")).Tag(), "Population");
  EXPECT_THROW(GetGPInstructions(TXMLDocument::New("GPDomain")), EXMLError);
  EXPECT_THROW(GetGPPopulation(TXMLDocument::New("GPDomain")), EXMLError);
  EXPECT_THROW(GetGPDomain(TXMLDocument::New("Population")), EXMLError);
}

} // namespace
} // namespace qx::generics
