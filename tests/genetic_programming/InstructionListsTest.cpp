// The two lists that draws pick functions and terminals from: who stands in which, and in what order.

#include <qx/platform/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <support/SmallGeneticProgram.h>
#include <support/Streams.h>
#include <vector>

namespace qx {
namespace {

using TOpenFloat = tests::TOpenProgramming<TQXGeneticProgramming>;
using TInstruction = TOpenFloat::TInstruction;

template <class TAt>
std::string NamesOf(int Count, TAt At) {
  std::string Names;
  for (int I = 0; I < Count; ++I) {
    Names += At(I).Name() + ' ';
  }
  return Names;
}

std::string FunctionNamesOf(TOpenFloat& Component) {
  return NamesOf(
      Component.FunctionsCount(), [&](int I) -> auto& { return Component.Functions(I); });
}

std::string TerminalNamesOf(TOpenFloat& Component) {
  return NamesOf(
      Component.TerminalsCount(), [&](int I) -> auto& { return Component.Terminals(I); });
}

// What the lists are by their rule: whatever tells of a change moves what stands in the wrong list to the end
// of the right one, and a changed kind moves the instruction to the end of its list.
class TListModel {
public:
  void Added(TInstruction& Instruction) { List(Instruction).push_back(&Instruction); }
  void Removed(TInstruction& Instruction) {
    std::erase(FFunctions, &Instruction);
    std::erase(FTerminals, &Instruction);
  }
  void KindChanged(TInstruction& Instruction) {
    Removed(Instruction);
    Added(Instruction);
  }
  void Updated() {
    Move(FFunctions, FTerminals, false);
    Move(FTerminals, FFunctions, true);
  }
  void ExpectSame(TOpenFloat& Component) const {
    ASSERT_EQ(Component.FunctionsCount(), std::ssize(FFunctions));
    ASSERT_EQ(Component.TerminalsCount(), std::ssize(FTerminals));
    for (int I = 0; I < Component.FunctionsCount(); ++I) {
      ASSERT_EQ(&Component.Functions(I), FFunctions[static_cast<std::size_t>(I)]);
    }
    for (int I = 0; I < Component.TerminalsCount(); ++I) {
      ASSERT_EQ(&Component.Terminals(I), FTerminals[static_cast<std::size_t>(I)]);
    }
  }

private:
  using TList = std::vector<TInstruction*>;
  TList& List(const TInstruction& Instruction) { return Instruction.Arity() > 0 ? FFunctions : FTerminals; }
  static void Move(TList& From, TList& To, bool WantsFunction) {
    const TList Before = From;
    for (TInstruction* const Instruction : Before) {
      if ((Instruction->Arity() > 0) == WantsFunction) {
        std::erase(From, Instruction);
        To.push_back(Instruction);
      }
    }
  }

  TList FFunctions;
  TList FTerminals;
};

TEST(InstructionListsTest, FollowTheirRuleThroughAnyChanges) {
  SeedRandom(11);
  TOpenFloat Component;
  auto& Set = Component.Instructions();
  TListModel Model;
  bool Open = false;
  const auto Told = [&] {
    if (!Open) {
      Model.Updated();
    }
  };
  for (int Step = 0; Step < 4000; ++Step) {
    const int Place = Set.Count() > 0 ? Random(Set.Count()) : -1;
    const int Act = Place < 0 ? 0 : Random(8);
    if (Act == 0 || (Act == 1 && Set.Count() < 20)) {
      Model.Added(Set.Add());
      Told();
    } else if (Act == 1) {
      Model.Removed(Set[Place]);
      Set.Delete(Place);
      Told();
    } else if (Act == 2 || Act == 3) {
      const int Arity = Random(3);
      const bool ChangesKind =
          Arity > 0 && Arity != Set[Place].Arity() && Set[Place].Operation() != gpFunction;
      const bool Changes = Arity != Set[Place].Arity();
      Set[Place].SetArity(Arity);
      if (ChangesKind) {
        Model.KindChanged(Set[Place]);
      }
      if (Changes) {
        Told();
      }
    } else if (Act == 4) {
      const bool ChangesKind = Set[Place].Operation() != gpConstant;
      const bool HadArguments = Set[Place].Arity() > 0;
      Set[Place].SetOperation(gpConstant);
      if (HadArguments) {
        Told();
      }
      if (ChangesKind) {
        Model.KindChanged(Set[Place]);
        Told();
      }
    } else if (Act == 5) {
      Set.Move(Place, Random(Set.Count()));
      Told();
    } else if (Act == 6 && Step % 5 == 0) {
      Open = !Open;
      Open ? Set.BeginUpdate() : Set.EndUpdate();
      Told();
    } else if (Act == 7) {
      Set[Place].SetName("n" + std::to_string(Step));
      Told();
    }
    if (!Open) {
      ASSERT_NO_FATAL_FAILURE(Model.ExpectSame(Component)) << Step;
    }
  }
}

// Many enough that a search of the lists for each of them would be noticed.
TEST(InstructionListsTest, KeepTheOrderOfManyInstructionsAlsoThroughADocument) {
  constexpr int Count = 20'000;
  TOpenFloat Component;
  for (int I = 0; I < Count; ++I) {
    auto& Added = Component.Instructions().Add();
    Added.SetName("i" + std::to_string(I));
    if (I % 2 == 1) {
      Added.SetArity(2);
    }
  }
  EXPECT_EQ(Component.FunctionsCount(), Count / 2);
  EXPECT_EQ(Component.Functions(100).Name(), "i201");
  EXPECT_EQ(Component.Terminals(100).Name(), "i200");
  TOpenFloat Copy;
  tests::Load(Copy, tests::Saved(Component));
  EXPECT_EQ(FunctionNamesOf(Copy), FunctionNamesOf(Component));
  EXPECT_EQ(TerminalNamesOf(Copy), TerminalNamesOf(Component));
  TOpenFloat Streamed;
  std::istringstream Stream(tests::Written(Component));
  ReadComponent(Stream, Streamed);
  EXPECT_EQ(FunctionNamesOf(Streamed), FunctionNamesOf(Component));
  EXPECT_EQ(TerminalNamesOf(Streamed), TerminalNamesOf(Component));
  Component.Instructions().Clear();
  EXPECT_EQ(Component.FunctionsCount() + Component.TerminalsCount(), 0);
}

TEST(InstructionListsTest, ALoadIsOneUpdate) {
  class TCounting : public TQXGeneticProgramming {
  public:
    int Updates = 0;

  protected:
    void InstructionUpdate(TInstruction* Instruction) override {
      ++Updates;
      TQXGeneticProgramming::InstructionUpdate(Instruction);
    }
  };
  TOpenFloat Source;
  for (const char* const Name : {"a", "b", "c"}) {
    Source.Function(Name, 2);
  }
  TCounting Copy;
  tests::Load(Copy, tests::Saved(Source));
  EXPECT_EQ(Copy.Updates, 1);
}

// --- What is missing ---------------------------------------------------------------------------------------

TEST(MissingHandlersTest, FunctionsThatNothingExecutesAreNamed) {
  class TOwn : public TQXGPFloatInstruction {
  protected:
    TGAFloat DoExecute(generics::TQXGPNode<TGAFloat>&, generics::TQXGPContext<TGAFloat>*) override {
      return 1;
    }
  };
  TOpenFloat Component;
  Component.Function("Silent", 1);
  Component.Function("Loud", 1).OnExecute = [](auto&, auto&, auto*, double& Result) { Result = 2; };
  Component.Variable("x");
  auto Own = std::make_unique<TOwn>();
  Own->SetArity(1);
  Component.Instructions().Insert(0, std::move(Own));
  const auto Found = Component.InstructionsWithoutHandler();
  ASSERT_EQ(Found.size(), 1u);
  EXPECT_EQ(Found[0]->Name(), "Silent");
}

TEST(MissingHandlersTest, ALoadWarnsOfThem) {
  TOpenFloat Source;
  Source.Function("Sin", 1).OnExecute = [](auto&, auto&, auto*, double& Result) { Result = 2; };
  TOpenFloat Copy;
  tests::Load(Copy, tests::Saved(Source));
  ASSERT_EQ(Copy.LoadWarnings().size(), 1u);
  EXPECT_NE(Copy.LoadWarnings()[0].find("\"Sin\" has no handler of OnExecute"), std::string::npos);
  Copy.Instructions()[0].OnExecute = Source.Instructions()[0].OnExecute;
  tests::Load(Copy, tests::Saved(Source));
  EXPECT_TRUE(Copy.LoadWarnings().empty());
}

TEST(UnnamedInstructionsTest, ALoadWarnsThatTheyCameInAddition) {
  TOpenFloat Component;
  Component.Instructions().Add();
  Component.Instructions().Add();
  Component.Variable("x");
  tests::Load(Component, tests::Saved(Component));
  EXPECT_EQ(Component.Instructions().Count(), 5);
  ASSERT_EQ(Component.LoadWarnings().size(), 1u);
  EXPECT_NE(Component.LoadWarnings()[0].find("2 without a name"), std::string::npos);
}

// --- Values that are none ----------------------------------------------------------------------------------

std::string DomainOf(const std::string& Instructions, const std::string& Individuals) {
  return "<?xml version=\"1.0\"?>\n<GPDomain>\n<Instructions>\n" + Instructions +
         "\n</Instructions>\n<Population>\n" + Individuals + "\n</Population>\n</GPDomain>";
}

void LoadDomain(TOpenFloat& Component, const std::string& Text) {
  Component.LoadFromXML(GetGPDomain(TXMLDocument::Parse(Text)));
}

TEST(ConstantValueTest, BeyondADoubleIsAnErrorThatNamesTheConstant) {
  for (const bool InProgram : {false, true}) {
    TOpenFloat Component;
    const std::string Text = DomainOf(
        std::string("<Constant Name=\"c\" Comment=\"\"><Value>") + (InProgram ? "1" : "1e999") +
            "</Value></Constant>",
        InProgram ? "<Individual><DNA Instruction=\"c\"><Value>1e999</Value></DNA></Individual>" : "");
    try {
      LoadDomain(Component, Text);
      ADD_FAILURE() << "nothing was raised";
    } catch (const EXMLError& Error) {
      const std::string Message = Error.what();
      EXPECT_NE(Message.find("the constant \"c\" cannot be 1e999"), std::string::npos) << Message;
      EXPECT_EQ(Error.Line(), InProgram ? 7 : 4) << Message;
    }
    EXPECT_EQ(Component.Instructions().Count(), 0);
  }
}

TEST(ConstantValueTest, ThatIsNoNumberInAProgramNamesLineAndInstruction) {
  TOpenFloat Component;
  const std::string Text =
      DomainOf("<Constant Name=\"c\" Comment=\"\"><Value>1</Value></Constant>",
               "<Individual><DNA Instruction=\"c\"><Value>many</Value></DNA></Individual>");
  try {
    LoadDomain(Component, Text);
    ADD_FAILURE() << "nothing was raised";
  } catch (const std::invalid_argument& Error) {
    const std::string Message = Error.what();
    EXPECT_NE(Message.find("ine 7"), std::string::npos) << Message;
    EXPECT_NE(Message.find("\"c\""), std::string::npos) << Message;
    EXPECT_NE(Message.find("many"), std::string::npos) << Message;
  }
}

} // namespace
} // namespace qx
