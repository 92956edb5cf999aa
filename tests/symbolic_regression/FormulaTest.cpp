#include <qx/genetic_programming/QXGeneticProgramming.h>
#include <qx/symbolic_regression/Formula.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <support/NonFinite.h>
#include <tests/support/TemporaryFolder.h>
#include <vector>

namespace {

using namespace qx;
using generics::MakeNode;
using TNode = TQXFormula::TNode;
using TNodePointer = TNode::TPointer;

class Formula : public testing::Test {
protected:
  Formula() {
    for (const TStandardGroup Group :
         {sgArithmetic, sgPowers, sgExponential, sgTrigonometric, sgExtremes, sgComparisons, sgBoolean}) {
      AddStandardInstructions(Instructions, Group);
    }
    Functions = Instructions.Count();
    for (const char* const Name : {"x", "y"}) {
      Instructions.Add().SetName(Name);
    }
    Instructions.Add().SetName("c");
    Instructions[Functions + 2].SetOperation(gpConstant);
  }

  TNodePointer Node(std::string_view Name) {
    return MakeNode<TQXGPFloatNode>(&Instructions[Instructions.IndexOf(Name)]);
  }
  TNodePointer X() { return Node("x"); }
  TNodePointer Y() { return Node("y"); }
  TNodePointer C(double Value) {
    TNodePointer Result = Node("c");
    Result->SetValue(Value);
    return Result;
  }
  template <class... TArguments>
  TNodePointer Of(std::string_view Name, TArguments... Arguments) {
    TNodePointer Result = Node(Name);
    (Result->AddChild(std::move(Arguments)), ...);
    return Result;
  }
  static std::string Infix(const TNodePointer& Program) { return TQXFormula(*Program).Text(fsInfix); }
  static std::string Simplified(const TNodePointer& Program) {
    return TQXFormula(*Program).Simplify().Text(fsInfix);
  }
  static std::string LaTeX(const TNodePointer& Program) { return TQXFormula(*Program).Text(fsLaTeX); }

  TNodePointer RandomTree(int Depth) {
    const int Index = Depth == 0 ? Functions + static_cast<int>(Engine() % 3)
                                 : static_cast<int>(Engine() % static_cast<unsigned>(Instructions.Count()));
    TNodePointer Result = MakeNode<TQXGPFloatNode>(&Instructions[Index]);
    if (Index == Functions + 2) {
      constexpr double Values[] = {0, 1, -1, 2, 0.5, -3.25, 0.1, 1e20};
      Result->SetValue(Values[Engine() % std::size(Values)]);
    }
    for (int I = 0; I < Instructions[Index].Arity(); ++I) {
      Result->AddChild(RandomTree(Depth - 1));
    }
    return Result;
  }
  double Execute(TNode& Program, double XValue, double YValue) {
    TQXGPFloatContext Context;
    Context.Values().AddOrSetValue("x", XValue);
    Context.Values().AddOrSetValue("y", YValue);
    return Program.Execute(&Context);
  }

  std::mt19937_64 Engine{5};
  TQXGPFloatInstructions Instructions{nullptr};
  int Functions = 0;
};

TEST_F(Formula, WritesOperatorsWithTheBracketsThatTheyNeed) {
  EXPECT_EQ(Infix(Of("Add", Of("Mul", C(2), X()), Y())), "2 * x + y");
  EXPECT_EQ(Infix(Of("Mul", Of("Add", C(2), X()), Y())), "(2 + x) * y");
  EXPECT_EQ(Infix(Of("Sub", X(), Of("Sub", Y(), C(1)))), "x - (y - 1)");
  EXPECT_EQ(Infix(Of("Sub", Of("Sub", X(), Y()), C(1))), "x - y - 1");
  EXPECT_EQ(Infix(Of("Div", X(), Of("Mul", Y(), C(3)))), "x / (y * 3)");
  EXPECT_EQ(Infix(Of("Mul", X(), C(-3))), "x * (-3)");
  EXPECT_EQ(Infix(Of("Neg", Of("Add", X(), Y()))), "-(x + y)");
  EXPECT_EQ(Infix(Of("Square", Of("Neg", X()))), "(-x)^2");
  EXPECT_EQ(Infix(Of("Pow", X(), Of("Add", Y(), C(1)))), "abs(x)^(y + 1)");
  EXPECT_EQ(Infix(Of("Sqrt", Of("Log", X()))), "sqrt(abs(log(abs(x))))");
  EXPECT_EQ(Infix(Of("If", Of("Less", X(), Y()), X(), Of("Max", X(), Y()))), "if(x < y, x, max(x, y))");
  EXPECT_EQ(Infix(Of("Less", Of("Less", X(), Y()), Of("Add", X(), Y()))), "(x < y) < x + y");
  EXPECT_EQ(Infix(Of("Sin", Of("Inv", X()))), "sin(1 / x)");
}

TEST_F(Formula, WritesNumbersSoThatTheyReadBack) {
  EXPECT_EQ(Infix(C(0.1)), "0.1");
  EXPECT_EQ(Infix(C(1.0 / 3)), "0.3333333333333333");
  EXPECT_EQ(Infix(C(std::numeric_limits<double>::infinity())), "inf");
  EXPECT_EQ(Infix(Of("Add", X(), C(-std::numeric_limits<double>::infinity()))), "x + (-inf)");
  EXPECT_EQ(Infix(C(std::numeric_limits<double>::quiet_NaN())), "nan");
}

TEST_F(Formula, CarriesTheScaling) {
  const auto Program = Of("Mul", X(), Y());
  EXPECT_EQ(TQXFormula(*Program, {1.5, 2}).Text(fsInfix), "1.5 + 2 * (x * y)");
  EXPECT_EQ(TQXFormula(*Program, {0, 1}).Text(fsInfix), "x * y");
}

TEST_F(Formula, WritesLaTeX) {
  EXPECT_EQ(LaTeX(Of("Div", Of("Add", X(), C(1)), Y())), "\\frac{x + 1}{y}");
  EXPECT_EQ(LaTeX(Of("Mul", X(), Of("Sqrt", Y()))), "x \\cdot \\sqrt{\\left|y\\right|}");
  EXPECT_EQ(LaTeX(Of("AQ", X(), Y())), "\\frac{x}{\\sqrt{1 + y^{2}}}");
  EXPECT_EQ(LaTeX(Of("Exp", Of("Neg", X()))), "e^{-x}");
  EXPECT_EQ(LaTeX(Of("Square", Of("Exp", X()))), "\\left(e^{x}\\right)^{2}");
  EXPECT_EQ(LaTeX(Of("Sin", X())), "\\sin\\left(x\\right)");
  EXPECT_EQ(LaTeX(C(1.5e-7)), "1.5 \\cdot 10^{-7}");
  EXPECT_EQ(LaTeX(Of("Less", X(), Y())), "\\left[x < y\\right]");
  Instructions[Functions].SetName("x12");
  EXPECT_EQ(LaTeX(Node("x12")), "x_{12}");
  Instructions[Functions].SetName("air_flow");
  EXPECT_EQ(LaTeX(Node("air_flow")), "\\mathrm{air\\_flow}");
}

TEST_F(Formula, WritesAGraph) {
  EXPECT_EQ(TQXFormula(*Of("Add", X(), Of("Sin", X()))).Text(fsDOT, "g"), "digraph \"g\" {\n"
                                                                          "  n0 [label=\"+\"];\n"
                                                                          "  n1 [label=\"x\", shape=box];\n"
                                                                          "  n0 -> n1;\n"
                                                                          "  n2 [label=\"Sin\"];\n"
                                                                          "  n0 -> n2;\n"
                                                                          "  n3 [label=\"x\", shape=box];\n"
                                                                          "  n2 -> n3;\n"
                                                                          "}\n");
}

TEST_F(Formula, QuotesNamesThatCouldBeTakenForFormulas) {
  const auto Named = [&](const std::string& Name) {
    Instructions[Functions].SetName(Name); // the first variable
    return Infix(Of("Neg", Node(Name)));
  };
  EXPECT_EQ(Named("height (m)"), "-`height (m)`");
  EXPECT_EQ(Named("x-y"), "-`x-y`");
  EXPECT_EQ(Named("1st"), "-`1st`");
  EXPECT_EQ(Named("a`b"), "-`a``b`");
  EXPECT_EQ(Named("x.1_y"), "-x.1_y");
  EXPECT_EQ(Named("größe"), "-größe");
}

TEST_F(Formula, RoundsConstantsForReaders) {
  TQXFormula Rounded(*Of("Add", Of("Mul", C(1.23456789), X()), C(-98765.4321)));
  EXPECT_EQ(Rounded.RoundConstants(3).Text(fsInfix), "1.23 * x + (-98800)");
}

TEST_F(Formula, SimplifiesWhatHoldsForAllNumbers) {
  EXPECT_EQ(Simplified(Of("Add", X(), C(0))), "x");
  EXPECT_EQ(Simplified(Of("Add", C(0), X())), "x");
  EXPECT_EQ(Simplified(Of("Sub", C(0), X())), "-x");
  EXPECT_EQ(Simplified(Of("Mul", C(1), X())), "x");
  EXPECT_EQ(Simplified(Of("Mul", X(), C(-1))), "-x");
  EXPECT_EQ(Simplified(Of("Mul", X(), X())), "x^2");
  EXPECT_EQ(Simplified(Of("Div", X(), C(1))), "x");
  EXPECT_EQ(Simplified(Of("Div", X(), C(0))), "1");
  EXPECT_EQ(Simplified(Of("Add", X(), Of("Neg", Y()))), "x - y");
  EXPECT_EQ(Simplified(Of("Sub", X(), Of("Neg", Y()))), "x + y");
  EXPECT_EQ(Simplified(Of("Add", X(), C(-2))), "x - 2");
  EXPECT_EQ(Simplified(Of("Neg", Of("Neg", X()))), "x");
  EXPECT_EQ(Simplified(Of("Neg", Of("Sub", X(), Y()))), "y - x");
  EXPECT_EQ(Simplified(Of("Mul", Of("Neg", X()), Of("Neg", Y()))), "x * y");
  EXPECT_EQ(Simplified(Of("Abs", Of("Neg", Of("Abs", X())))), "abs(x)");
  EXPECT_EQ(Simplified(Of("Log", Of("Abs", X()))), "log(abs(x))");
  EXPECT_EQ(Simplified(Of("Cos", Of("Neg", X()))), "cos(x)");
  EXPECT_EQ(Simplified(Of("Min", Of("Sin", X()), Of("Sin", X()))), "sin(x)");
  EXPECT_EQ(Simplified(Of("Less", X(), X())), "0");
  EXPECT_EQ(Simplified(Of("If", C(1), X(), Y())), "x");
  EXPECT_EQ(Simplified(Of("If", X(), Y(), Y())), "y");
  EXPECT_EQ(Simplified(Of("And", X(), C(0))), "0");
  EXPECT_EQ(Simplified(Of("Pow", C(0), X())), "0");
  EXPECT_EQ(Simplified(Of("Add", Of("Mul", C(2), C(3)), Of("Mul", X(), Of("Sub", C(4), C(3))))), "6 + x");
  EXPECT_EQ(TQXFormula(*Of("Mul", C(1), X())).Simplify().Size(), 1);
}

TEST_F(Formula, LeavesWhatHoldsForRealNumbersOnly) {
  for (const TNodePointer& Program :
       {Of("Mul", X(), C(0)), Of("Sub", X(), X()), Of("Div", X(), X()), Of("Equal", X(), X()),
        Of("Log", Of("Exp", X())), Of("Mul", C(2), Of("Mul", C(3), X())), Of("Pow", X(), C(0)),
        Of("Add", Of("Add", X(), C(1)), C(1)), Of("Sqrt", Of("Square", X()))}) {
    EXPECT_EQ(Simplified(Program), Infix(Program));
  }
}

// A formula as a program again.
TNodePointer ProgramOf(const TQXFormula& Source, TQXGPFloatInstructions& Set) {
  std::vector<TNodePointer> Nodes;
  for (const TQXFormula::TTerm& Term : Source.Terms()) {
    const std::string Name(Term.Kind == TQXFormula::Constant   ? "c"
                           : Term.Kind == TQXFormula::Variable ? std::string_view(Term.Name)
                                                               : NameOf(Term.Operator));
    TNodePointer Node = MakeNode<TQXGPFloatNode>(&Set[Set.IndexOf(Name)]);
    if (Term.Kind == TQXFormula::Constant) {
      Node->SetValue(Term.Value);
    }
    for (const std::size_t Argument : Term.Arguments) {
      Node->AddChild(Nodes[Argument]->Clone());
    }
    Nodes.push_back(std::move(Node));
  }
  return std::move(Nodes.back());
}

TEST_F(Formula, SimplificationChangesNoValueOfRandomPrograms) {
  using tests::Infinity;
  constexpr double Values[] = {0, -0.0, 1, -1, 2, 0.5, -2.5, 1e-300, 1e200, -1e200, Infinity, -Infinity, NAN};
  int Smaller = 0;
  for (int Round = 0; Round < 4000; ++Round) {
    const TNodePointer Program = RandomTree(4);
    TQXFormula Written(*Program);
    const int Size = Written.Size();
    Smaller += Size > Written.Simplify().Size() ? 1 : 0;
    const TNodePointer Simple = ProgramOf(Written, Instructions);
    for (const double XValue : Values) {
      for (const double YValue : Values) {
        const double Expected = Execute(*Program, XValue, YValue);
        const double Value = Execute(*Simple, XValue, YValue);
        ASSERT_TRUE(Value == Expected || (std::isnan(Value) && std::isnan(Expected)))
            << Program->ToString() << " became " << Simple->ToString() << " for " << XValue << ", " << YValue;
      }
    }
  }
  EXPECT_GT(Smaller, 1000);
}

TEST_F(Formula, ProgramsThatAreNotWholeRaise) {
  EXPECT_THROW(TQXFormula(*Of("Add", X())), EGPException);
  EXPECT_THROW(TQXFormula(*Of("Neg", MakeNode<TQXGPFloatNode>(nullptr))), EGPException);
}

TEST_F(Formula, VariablesAreParametersInTheOrderOfTheirInstructions) {
  EXPECT_EQ(TQXFormula(*Of("Sub", Y(), X())).Variables(), (std::vector<std::string>{"x", "y"}));
  const std::string Text = TQXFormula(*Of("Sub", Y(), Of("Square", X()))).Text(fsCpp, "f");
  EXPECT_EQ(Text, "#include <cmath>\n\nstatic inline double square(double x) { return x * x; }\n\n"
                  "// x: column \"x\"\n// y: column \"y\"\n"
                  "double f(double x, double y) { return y - square(x); }\n");
  Instructions[Functions].SetName("zoom");
  EXPECT_EQ(TQXFormula(*Of("Sub", Y(), Node("zoom"))).Variables(), (std::vector<std::string>{"zoom", "y"}));
  EXPECT_EQ(TQXFormula(*Of("Sub", Y(), Of("If", C(1), Y(), Node("zoom")))).Simplify().Variables(),
            (std::vector<std::string>{"y"}));
}

TEST_F(Formula, SourcesTellWhichColumnEachParameterStandsFor) {
  Instructions[Functions].SetName("flow \"rate\"\\");
  const auto Program = Of("Add", Y(), Node("flow \"rate\"\\"));
  const std::string Told = "flow__rate__: column \"flow \\\"rate\\\"\\\\\"\n";
  EXPECT_EQ(TQXFormula(*Program).Text(fsPython),
            "import numpy as np\n\n\ndef formula(flow__rate__, y):\n"
            "    \"\"\"Arguments:\n\n    " +
                Told +
                "    y: column \"y\"\n    \"\"\"\n    flow__rate__ = np.asarray(flow__rate__, dtype=float)\n"
                "    y = np.asarray(y, dtype=float)\n    return y + flow__rate__\n");
  EXPECT_NE(TQXFormula(*Program).Text(fsCpp).find("\n// " + Told + "// y: column \"y\"\ndouble formula("),
            std::string::npos);
  EXPECT_EQ(TQXFormula(*C(2)).Text(fsPython), "import numpy as np\n\n\ndef formula():\n    return 2.0\n");
}

TEST_F(Formula, NamesThatAreNoWordsAreTextInLaTeX) {
  for (const auto& [Name, Text] :
       std::vector<std::pair<std::string, std::string>>{{"flow rate", "\\text{flow rate}"},
                                                        {"flow-rate_2", "\\text{flow-rate\\_2}"},
                                                        {"a\\b", "\\text{a\\textbackslash{}b}"},
                                                        {"mass_1", "\\mathrm{mass\\_1}"},
                                                        {"1", "\\text{1}"},
                                                        {"~", "\\text{\\textasciitilde{}}"},
                                                        {"x12", "x_{12}"}}) {
    Instructions[Functions].SetName(Name);
    EXPECT_EQ(LaTeX(Node(Name)), Text);
  }
}

// Runs a command and returns what it prints.
std::string OutputOf(const std::string& Command) {
  std::string Output;
  FILE* const Pipe = ::popen((Command + " 2>&1").c_str(), "r");
  char Buffer[4096];
  while (std::fgets(Buffer, sizeof(Buffer), Pipe) != nullptr) {
    Output += Buffer;
  }
  return ::pclose(Pipe) == 0 ? Output : "failed: " + Output;
}

bool Runs(const std::string& Command) { return std::system((Command + " >/dev/null 2>&1").c_str()) == 0; }

constexpr double Points[][2] = {{0.5, 2}, {-1.25, 0.75}, {0, 3}, {2, 0}, {0, 0}, {-3, -4}, {10, 0.1}};

class FormulaSource : public Formula {
protected:
  FormulaSource() {
    for (int Round = 0; Round < 40; ++Round) {
      Programs.push_back(RandomTree(4));
    }
    for (int I = 0; I < Functions; ++I) {
      TNodePointer Program = MakeNode<TQXGPFloatNode>(&Instructions[I]);
      for (int Argument = 0; Argument < Instructions[I].Arity(); ++Argument) {
        Program->AddChild(Argument == 1 ? Y() : X());
      }
      Programs.push_back(std::move(Program));
    }
    for (TNodePointer& Program : Programs) { // so that each has both parameters
      Program = Of("If", Of("Or", Of("Equal", X(), X()), Of("Equal", Y(), Y())), std::move(Program), C(0));
    }
  }

  void ExpectOutput(const std::string& Output) {
    std::istringstream Stream(Output);
    for (const TNodePointer& Program : Programs) {
      for (const auto& Point : Points) {
        std::string Text;
        ASSERT_TRUE(Stream >> Text) << Output.substr(0, 2000);
        const double Value = std::strtod(Text.c_str(), nullptr);
        const double Expected = Execute(*Program, Point[0], Point[1]);
        EXPECT_TRUE(Value == Expected || (std::isnan(Value) && std::isnan(Expected)) ||
                    std::fabs(Value - Expected) <= 1e-9 * std::fabs(Expected))
            << Infix(Program) << " at " << Point[0] << ", " << Point[1] << ": " << Text << " for "
            << Expected;
      }
    }
  }

  std::vector<TNodePointer> Programs;
  tests::TTemporaryFolder Folder;
};

TEST_F(FormulaSource, CppCompilesAndComputesWhatTheProgramsDo) {
  if (!Runs("c++ --version")) {
    GTEST_SKIP() << "there is no C++ compiler";
  }
  std::string Text = "#include <cstdio>\n";
  std::string Main = "int main() {\n";
  for (std::size_t I = 0; I < Programs.size(); ++I) {
    const std::string Name = "f" + std::to_string(I);
    Text += "namespace n" + std::to_string(I) + " {\n" +
            TQXFormula(*Programs[I]).Text(fsCpp, Name).substr(18) + "}\n";
    for (const auto& Point : Points) {
      char Line[200];
      std::snprintf(Line, sizeof(Line), "  std::printf(\"%%.17g\\n\", n%zu::%s(%a, %a));\n", I, Name.c_str(),
                    Point[0], Point[1]);
      Main += Line;
    }
  }
  tests::WriteFile(Folder.File("f.cpp"), "#include <cmath>\n" + Text + Main + "}\n");
  const std::string Program = Folder.File("f");
  ASSERT_EQ(OutputOf("c++ -std=c++17 -Wall -Wextra -Wno-unused-function -Werror -o " + Program + " " +
                     Program + ".cpp"),
            "");
  ExpectOutput(OutputOf(Program));
}

TEST_F(FormulaSource, PythonComputesWhatTheProgramsDo) {
  std::string Python;
  for (const char* const Candidate : {"/usr/bin/python3", "python3"}) {
    if (Runs(std::string(Candidate) + " -c 'import numpy'")) {
      Python = Candidate;
      break;
    }
  }
  if (Python.empty()) {
    GTEST_SKIP() << "there is no Python with NumPy";
  }
  std::string Text;
  for (std::size_t I = 0; I < Programs.size(); ++I) {
    const std::string Name = "f" + std::to_string(I);
    Text += TQXFormula(*Programs[I]).Text(fsPython, Name);
    Text += "np.seterr(all='ignore')\n";
    Text += "v = np.broadcast_to(" + Name + "(np.array([";
    for (const auto& Point : Points) {
      Text += std::to_string(Point[0]) + ", ";
    }
    Text += "]), np.array([";
    for (const auto& Point : Points) {
      char Number[40];
      std::snprintf(Number, sizeof(Number), "%.17g, ", Point[1]);
      Text += Number;
    }
    Text += "])), (" + std::to_string(std::size(Points)) +
            ",))\nfor value in v:\n    print(repr(float(value)))\n";
  }
  tests::WriteFile(Folder.File("f.py"), Text);
  ExpectOutput(OutputOf(Python + " " + Folder.File("f.py")));
}

TEST_F(FormulaSource, GraphvizReadsTheGraphs) {
  if (!Runs("dot -V")) {
    GTEST_SKIP() << "there is no Graphviz";
  }
  for (const auto& Program : Programs) {
    const TQXFormula Written(*Program);
    tests::WriteFile(Folder.File("f.dot"), Written.Text(fsDOT, "a \"graph\""));
    const std::string Drawn = OutputOf("dot -Tplain " + Folder.File("f.dot"));
    ASSERT_TRUE(Drawn.starts_with("graph ")) << Drawn;
    int Nodes = 0;
    for (auto At = Drawn.find("\nnode "); At != std::string::npos; At = Drawn.find("\nnode ", At + 1)) {
      ++Nodes;
    }
    EXPECT_EQ(Nodes, Written.Size());
  }
}

TEST_F(FormulaSource, CppCompilesWhateverVariablesAndTheFormulaAreCalled) {
  if (!Runs("c++ --version")) {
    GTEST_SKIP() << "there is no C++ compiler";
  }
  std::string Text;
  int Count = 0;
  constexpr const char* Names[][2] = {
      {"choose", "square"},   {"M_PI", "exp"},       {"unix", "log"},         {"HUGE_VAL", "y1"},
      {"main", "main"},       {"double", "f"},       {"formula", "formula"},  {"lesser", "greater"},
      {"MAXFLOAT", "alloca"}, {"RAND_MAX", "llogb"}, {"SNAN", "issignaling"}, {"BIG_ENDIAN", "EXIT_FAILURE"}};
  for (const auto& [Variable, Own] : Names) {
    Instructions[Functions].SetName(Variable);
    const auto Program = Of("Max", Of("Square", Node(Variable)), Of("Exp", Node(Variable)));
    Text += "namespace n" + std::to_string(Count++) + " {\n" +
            TQXFormula(*Program).Text(fsCpp, Own).substr(18) + "}\n";
  }
  tests::WriteFile(Folder.File("n.cpp"), "#include <cmath>\n" + Text);
  EXPECT_EQ(OutputOf("c++ -Wall -Wextra -Werror -fsyntax-only " + Folder.File("n.cpp")), "");
}

TEST_F(Formula, NamesThatAreNoIdentifiersBecomeSome) {
  Instructions[Functions].SetName("flow rate");
  Instructions[Functions + 1].SetName("flow-rate");
  const auto Program = Of("Add", Node("flow rate"), Node("flow-rate"));
  EXPECT_NE(TQXFormula(*Program).Text(fsCpp).find(
                "double formula(double flow_rate, double flow_rate_) { return flow_rate + flow_rate_; }"),
            std::string::npos)
      << TQXFormula(*Program).Text(fsCpp);
  Instructions[Functions].SetName("class");
  Instructions[Functions + 1].SetName("2nd");
  EXPECT_NE(
      TQXFormula(*Of("Add", Node("class"), Node("2nd"))).Text(fsPython).find("def formula(class_, v2nd):"),
      std::string::npos);
}

} // namespace
