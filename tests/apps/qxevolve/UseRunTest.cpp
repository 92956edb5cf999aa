#include <apps/qxevolve/Program.h>
#include <cmath>
#include <sstream>

namespace qxevolve::tests {
namespace {

using QxevolvePipeTest = QxevolveTest;

// Longer than any buffer of a pipe or a stream.
TEST_F(QxevolvePipeTest, ATableThroughAPipeIsReadWhole) {
  std::string Table = "x,y\n";
  for (int I = 0; I < 8'000; ++I) {
    Table += std::to_string(I) + ',' + std::to_string(3 * I + 1) + '\n';
  }
  Write("table.csv", Table);
  ASSERT_EQ(
      Run({"regress", "table.csv", "-t", "y", "-g", "1", "--seed", "1", "-q", "--save", "run.xml"}).Code, 0);
  const std::string Expected = Run({"predict", "run.xml", "table.csv"}).Out;
  ASSERT_EQ(std::ranges::count(Expected, '\n'), 8'001);
  for (const std::string Name : {"/dev/stdin", "-"}) {
    const std::string Command = "cd '" + Folder() + "' && cat table.csv | " QX_EVOLVE " predict run.xml " +
                                Name + " > " + (Name == "-" ? "dash" : "device");
    ASSERT_EQ(std::system(Command.c_str()), 0) << Name;
    EXPECT_TRUE(Read(Name == "-" ? "dash" : "device") == Expected) << Name;
  }
  const std::string Regress = "cd '" + Folder() +
                              "' && cat table.csv | " QX_EVOLVE
                              " regress - -t y -g 1 --seed 1 -q --save piped.xml > /dev/null";
  ASSERT_EQ(std::system(Regress.c_str()), 0);
  EXPECT_TRUE(Run({"predict", "piped.xml", "table.csv"}).Out == Expected);
}

TEST_F(QxevolvePipeTest, ASmallOrEmptyPipeIsToldByItsName) {
  Write("run.sh", "printf 'x,y\\n1,2\\nz,4\\n' | " QX_EVOLVE " regress - -t y 2> small\n"
                  "printf '' | " QX_EVOLVE " regress - -t y 2> empty\n");
  static_cast<void>(std::system(("cd '" + Folder() + "' && sh run.sh").c_str()));
  EXPECT_NE(Read("small").find("standard input: Line 3, column 1"), std::string::npos) << Read("small");
  EXPECT_NE(Read("empty").find("standard input: The text has no columns"), std::string::npos)
      << Read("empty");
}

// A run that is kept.
class QxevolveUseTest : public QxevolveTest {
protected:
  void SetUp() override {
    WritePlanets();
    const auto End = Run({"regress", "planets.csv", "-t", "period", "-g", "20", "--seed", "1", "-q", "--save",
                          "run.xml", "--stop-at", "1e-7"});
    ASSERT_EQ(End.Code, 0) << End.Error;
    ASSERT_EQ(End.Out, "period = 0.00408776 + 0.999378 * sqrt(abs(distance^3))\n");
  }
};

TEST_F(QxevolveUseTest, PredictComputesTheFormulaForOtherRows) {
  Write("new.csv", "mass,distance\n3,4\n5,100\n");
  const auto End = Run({"predict", "run.xml", "new.csv"});
  EXPECT_EQ(End.Code, 0);
  std::istringstream Lines(End.Out);
  std::string Name;
  double First = 0;
  double Second = 0;
  ASSERT_TRUE(Lines >> Name >> First >> Second);
  EXPECT_EQ(Name, "period");
  EXPECT_NEAR(First, 0.00408776 + 0.999378 * 8, 1e-4);
  EXPECT_NEAR(Second, 0.00408776 + 0.999378 * 1000, 1e-2);
}

TEST_F(QxevolveUseTest, PredictKeepsTheTableAndWritesFiles) {
  const auto End = Run({"predict", "run.xml", "planets.csv", "--keep", "--output", "out.csv"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_EQ(End.Out, "");
  const std::string Text = Read("out.csv");
  EXPECT_TRUE(Text.starts_with("distance,period,period predicted\n0.3871,0.2408,0.244")) << Text;
  EXPECT_EQ(CountOf(Text, "\n"), 9);
}

TEST_F(QxevolveUseTest, PredictReadsOnlyWhatTheFormulaNeeds) {
  Write("new.csv", "name;distance;mass\nCeres;2,77;\nPluto;;1\nEris;67,8;2\n");
  const auto End = Run({"predict", "run.xml", "new.csv", "--decimal-point", ","});
  EXPECT_EQ(End.Code, 0) << End.Error;
  EXPECT_EQ(CountOf(End.Out, "\n"), 4);
  EXPECT_NE(End.Out.find("\nNaN\n"), std::string::npos) << "each row keeps its place: " << End.Out;
}

TEST_F(QxevolveTest, AConstantFormulaIsPredictedForEachRow) {
  Write("data.csv", "a,b,y\n1,2,100.5\n3,1,100.6\n9,4,100.4\n");
  ASSERT_EQ(Run({"regress", "data.csv", "-t", "y", "-g", "1", "-q", "--no-scaling", "--error", "mae", "-f",
                 "Add", "--seed", "3", "--save", "run.xml"})
                .Out,
            "y = 100.5\n");
  Write("new.csv", "name,x\nred,1\nblue,2\ngreen,\n");
  const auto End = Run({"predict", "run.xml", "new.csv"});
  EXPECT_EQ(End.Code, 0) << End.Error;
  EXPECT_EQ(CountOf(End.Out, "\n100."), 3) << End.Out;
}

TEST_F(QxevolveUseTest, PredictNamesTheColumnThatIsMissing) {
  Write("new.csv", "mass\n3\n");
  const auto End = Run({"predict", "run.xml", "new.csv", "-o", "out.csv"});
  EXPECT_EQ(End.Code, 2);
  EXPECT_TRUE(IsOneLine(End.Error));
  EXPECT_NE(End.Error.find("new.csv: The data have no column \"distance\""), std::string::npos) << End.Error;
  EXPECT_EQ(Read("out.csv"), "");
}

TEST_F(QxevolveUseTest, ShowWritesEachLanguage) {
  const auto Shown = [&](const std::string& Style) {
    const auto End = Run({"show", "run.xml", "--as", Style});
    EXPECT_EQ(End.Code, 0) << End.Error;
    return End.Out;
  };
  EXPECT_TRUE(Shown("infix").ends_with(" * sqrt(abs(distance^3))\n"));
  EXPECT_TRUE(Shown("latex").starts_with("0.00408776 + 0.999378 \\cdot \\sqrt")) << Shown("latex");
  EXPECT_NE(Shown("cpp").find("double period(double distance) {"), std::string::npos);
  EXPECT_NE(Shown("python").find("def period(distance):"), std::string::npos);
  EXPECT_TRUE(Shown("dot").starts_with("digraph"));
}

TEST_F(QxevolveUseTest, ShowTakesAnotherSize) {
  const auto End = Run({"show", "run.xml", "--size", "1"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_TRUE(End.Out.ends_with(" * distance\n")) << End.Out;
  const auto Wrong = Run({"show", "run.xml", "--size", "1000"});
  EXPECT_EQ(Wrong.Code, 2);
  EXPECT_NE(Wrong.Error.find("no formula of size 1000; there are 1, "), std::string::npos) << Wrong.Error;
}

TEST_F(QxevolveTest, OptimizePacksTheKnapsack) { // Kreher and Stinson's 15 items; the optimum is 1458
  std::string Text = "value,weight,capacity\n";
  constexpr int Values[] = {135, 139, 149, 150, 156, 163, 173, 184, 192, 201, 210, 214, 221, 229, 240};
  constexpr int Weights[] = {70, 73, 77, 80, 82, 87, 90, 94, 98, 106, 110, 113, 115, 118, 120};
  for (std::size_t I = 0; I < std::size(Values); ++I) {
    Text += std::to_string(Values[I]) + "," + std::to_string(Weights[I]) + ",750\n";
  }
  Write("items.csv", Text);
  int Reached = 0;
  for (int Seed = 1; Seed <= 5; ++Seed) {
    const auto End = Run({"optimize", "items.csv", "--seed", std::to_string(Seed), "-g", "200"});
    EXPECT_EQ(End.Code, 0);
    Reached += CountOf(End.Error, "Value 1458, weight 749 of 750, 8 of 15 items\n");
    EXPECT_TRUE(End.Out.starts_with("item,value,weight\n"));
  }
  EXPECT_GE(Reached, 4);
  const auto FirstRow =
      TProcess({"sh", "-c", "sed '3,$s/,750$/,/' items.csv > first.csv"}, Folder()).Finish();
  ASSERT_EQ(FirstRow.Code, 0);
  EXPECT_EQ(Run({"optimize", "first.csv", "--seed", "1", "-g", "50", "-q"}).Out,
            Run({"optimize", "items.csv", "--seed", "1", "-g", "50", "-q"}).Out);
  const auto Small = Run({"optimize", "items.csv", "--seed", "1", "-g", "20", "--capacity", "60", "-q"});
  EXPECT_EQ(Small.Out, "item,value,weight\n") << "nothing fits";
  EXPECT_EQ(Small.Error, "");
}

TEST_F(QxevolveTest, OptimizeCallsItemsByTheirNames) {
  Write("items.csv", "name,value,weight,label\n\"Tent, small\",10,5,a\nRope,3,1,b\nStove,7,8,c\n");
  const std::vector<std::string> Usual = {"optimize", "items.csv", "-c", "7", "-g", "3", "--seed", "1", "-q"};
  EXPECT_EQ(Run(Usual).Out, "item,value,weight\n\"Tent, small\",10,5\nRope,3,1\n");
  const auto With = [&](const std::string& Column) {
    auto Words = Usual;
    Words.insert(Words.end(), {"--names", Column});
    return Run(Words);
  };
  EXPECT_EQ(With("label").Out, "item,value,weight\na,10,5\nb,3,1\n");
  EXPECT_EQ(With("none").Code, 2);
  EXPECT_NE(With("none").Error.find("items.csv has no column \"none\""), std::string::npos);
}

TEST_F(QxevolveTest, OptimizeIsNoWorseThanTheOrderOfValueForWeight) {
  std::string Text = "value,weight\n";
  std::vector<std::pair<double, double>> Items;
  for (int I = 0; I < 200; ++I) {
    Items.emplace_back(10 + I * 7919 % 91, 5 + I * 104729 % 53);
    Text += std::to_string(Items.back().first) + "," + std::to_string(Items.back().second) + "\n";
  }
  Write("items.csv", Text);
  std::ranges::stable_sort(Items, [](const auto& First, const auto& Second) {
    return First.first * Second.second > Second.first * First.second;
  });
  double Greedy = 0;
  double Room = 1000;
  for (const auto& [Value, Weight] : Items) {
    if (Weight <= Room) {
      Greedy += Value;
      Room -= Weight;
    }
  }
  const auto End = Run({"optimize", "items.csv", "-c", "1000", "--seed", "1", "-g", "100"});
  EXPECT_EQ(End.Code, 0);
  const auto Place = End.Error.find("\nValue ");
  ASSERT_NE(Place, std::string::npos) << End.Error;
  EXPECT_GE(std::stod(End.Error.substr(Place + 7)), Greedy);
}

} // namespace
} // namespace qxevolve::tests
