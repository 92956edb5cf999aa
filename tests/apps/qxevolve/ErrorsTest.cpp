#include <apps/qxevolve/Program.h>
#include <filesystem>
#include <unistd.h>

namespace qxevolve::tests {
namespace {

// What must not work ends in one line that says why, and leaves nothing behind.
class QxevolveErrorsTest : public QxevolveTest {
protected:
  void ExpectError(const std::vector<std::string>& Arguments, int Code, const std::string& Part) const {
    const auto Before = Files();
    const auto End = Run(Arguments);
    EXPECT_EQ(End.Code, Code) << Part;
    EXPECT_TRUE(IsOneLine(End.Error)) << End.Error;
    EXPECT_NE(End.Error.find(Part), std::string::npos) << End.Error;
    EXPECT_EQ(End.Out, "") << Part;
    EXPECT_EQ(Files(), Before) << Part;
  }
  void ExpectDataError(const std::string& Data, const std::string& Part) const {
    Write("data.csv", Data);
    ExpectError({"regress", "data.csv", "--target", "y", "-s", "1", "--report", "report"}, 2, Part);
  }
};

TEST_F(QxevolveErrorsTest, TablesThatDoNotServeAreTold) {
  ExpectDataError("", "data.csv: The text has no columns: it is empty; its first line should");
  ExpectDataError("x,y\n", "no rows of numbers");
  ExpectDataError("x,y\n1,2\n", "one row of numbers");
  ExpectDataError("x,z\n1,2\n3,4\n", "has no column \"y\"; it has x, z");
  ExpectDataError("c,y\n7,1\n7,2\n", "no column that changes to explain \"y\" by");
  ExpectDataError("y\n1\n2\n", "no column to explain \"y\" by");
  ExpectDataError("x,y\n1,2\n2,2\n3,2\n", "\"y\" is 2 in every row");
  ExpectDataError("x,y\n1,2\nred,3\n",
                  "Line 3, column 1: \"x\" is no number: \"red\"; --ignore x leaves the column out");
  ExpectDataError("x,y\n1,2\n,3\n", "\"x\" has no number; --missing skip leaves");
  ExpectDataError("x,y\n1,2\n3\n",
                  "Line 3: there are 1 cells, not 2; cells are taken to be separated by commas");
  ExpectDataError("x,x,y\n1,2,3\n", "there is a column \"x\" already; --ignore '#2' leaves this one out");
  ExpectDataError("x,y\n1,\"2\n", "the quote is not closed");
  ExpectDataError("x,y\n1,inf\n2,3\n", "data.csv: ");
}

TEST_F(QxevolveErrorsTest, TextsOfOtherEncodingsAndNumbersAreTold) {
  ExpectDataError("h\xf6he,y\n1,2\n3,4\n", "the name of column 1 is not UTF-8; save the table as UTF-8");
  ExpectDataError("x,y\r1,2\r3,4", "data.csv has carriage returns at the ends of lines");
  ExpectDataError("\xff\xfex", "data.csv is UTF-16; save it as UTF-8");
  ExpectDataError("\"a\nb\",y\n1,2\n3,4\n", "the name of column 1 goes over more than one line");
  ExpectDataError("x,y\n\"1\n2\",2\n3,4\n", "is no number");
  ExpectDataError("x;y\n1,5;2\n3;4\n", "is no number: \"1,5\"; --decimal-point , reads such numbers");
  ExpectDataError("x,y\n1,1e300\n2,4e300\n3,9e300\n", "too large for squares of errors; scale them down");
  ExpectDataError("x,y\n1,1e-170\n2,4e-170\n3,9e-170\n", "too close to each other");
}

TEST_F(QxevolveErrorsTest, AllColumnsOfTextAreToldWithTheCommandThatLeavesThemOut) {
  ExpectDataError(
      "name,x,\"the kind\",y\nred,1,a,2\nblue,2,b,4\n",
      "\"name\" is no number: \"red\"; nor is \"the kind\" (line 2: \"a\"); --ignore 'name,the kind' "
      "leaves these columns out");
  ExpectDataError("\"a,b\",x,y\nred,1,2\nblue,2,4\n", "--ignore '#1' leaves the column out");
  ExpectDataError("[id],[n],y\nabc,3,1\nb,4,2\n", "--ignore '#1' leaves the column out");
  ExpectDataError("x,-n,'3,y\n1,a,b,1\n2,a,c,3\n", "--ignore '#2,#3' leaves these columns out");
  ExpectDataError("genres,x,y\nAdventure|Kids,3,1\nCrime,5,4\n", "--ignore genres leaves the column out");
  ExpectDataError("x,y,z\n1,2,\n,3,4\n5,6,7\n",
                  "--missing skip leaves such rows out; --ignore z,x leaves these");
}

TEST_F(QxevolveErrorsTest, NoAdviceLeavesOutWhatIsNeeded) {
  ExpectDataError("name,x,y\nred,1,two\nblue,2,4\n", "\"y\" is needed, with a number in each row");
  ExpectDataError("x,y\n1,\n2,3\n4,5\n", "\"y\" has no number; --missing skip leaves such rows out\n");
  Write("data.csv", "x,y,w\n1,2,heavy\n2,3,light\n");
  ExpectError({"regress", "data.csv", "-t", "y", "--weights", "w"}, 2, "\"w\" is needed");
}

TEST_F(QxevolveErrorsTest, AGuessOfTheFormatThatIsWrongIsTold) {
  ExpectDataError("x:y\n1:2\n2:4\n", "separated by commas, --separator CHAR says otherwise");
  ExpectDataError("x:z\n", "has no column \"y\"; it has x:z; --separator CHAR tells");
  ExpectDataError("x, y\n1, 2,\n3, 4,\n",
                  "there are 3 cells, not 2; cells are taken to be separated by commas");
  ExpectDataError("x,y\n1,inf\n2,3\n4,5\n", "row 1 is inf; --missing skip leaves such rows out");
  Write("data.csv", "x,y\n1,2\n2,3\n");
  ExpectError({"regress", "data.csv", "-t", "y", "--separator", ";"}, 2,
              "there is one column only, with that");
}

TEST_F(QxevolveErrorsTest, OptionsThatReadTheNumbersAreToldColumnByColumn) {
  ExpectDataError("x,y\n\"1,234\",2\n2,3\n", "\"1,234\"; --thousands reads such numbers\n");
  ExpectDataError("x;y\n1,234;2\n2;3\n", "; --decimal-point , or --thousands reads such numbers\n");
  ExpectDataError("x;y\n0,123;2\n2;3\n", "; --decimal-point , reads such numbers\n");
  ExpectDataError("x,y\n12%,2\n2,3\n", "; --thousands reads such numbers\n");
  ExpectDataError("city;x;y\nBerlin;1,5;2,5\nBonn;2,5;3,5\n",
                  "; --decimal-point , reads such numbers; --ignore city leaves the column out\n");
  ExpectDataError("x;y\n1.234,5;2,5\n2.000,5;5\n3;7\n",
                  "; --decimal-point , --thousands reads such numbers\n");
  ExpectDataError("x,y\n\"1,2,3\",2\n2,3\n", "\"1,2,3\"; --ignore x leaves the column out");
}

TEST_F(QxevolveErrorsTest, RowsAreCountedAsInTheTable) {
  std::string Text = "x,w,y\n";
  for (int I = 1; I <= 60; ++I) {
    Text += std::to_string(I) + (I == 42 ? ",-2," : ",1,") + std::to_string(I * I) + "\n";
  }
  Write("data.csv", Text);
  for (const std::string Seed : {"1", "2", "3"}) {
    ExpectError({"regress", "data.csv", "-t", "y", "--weights", "w", "--seed", Seed}, 2,
                "The weight of row 42 is");
  }
}

TEST_F(QxevolveErrorsTest, OptimizeNamesTheColumnThatIsMissing) {
  Write("items.csv", "Item;Value\na;1\n");
  ExpectError({"optimize", "items.csv", "-c", "5"}, 2, "items.csv has no column \"value\"");
}

TEST_F(QxevolveErrorsTest, CellsThatCannotBeShownAsTheyAreAreTold) {
  ExpectDataError(std::string("x,y\n1,2\n\0003,4\n5,6\n", 16),
                  "\"x\" is no number: \"?3\"; --ignore x leaves");
  ExpectDataError(std::string("x,y\n1,2\n\0,4\n5,6\n", 15), "\"x\" is no number: \"?\"; --ignore x leaves");
  ExpectDataError("x,y\n1,2\n" + std::string(100'000, 'z') + ",4\n",
                  "\"x\" is no number: \"" + std::string(60, 'z') + "...\"; --ignore x leaves");
}

TEST_F(QxevolveErrorsTest, NothingThatIsReadIsOverwritten) {
  WritePlanets();
  const std::string Table = Read("planets.csv");
  ExpectError({"regress", "planets.csv", "-t", "period", "--save", "planets.csv"}, 2,
              "planets.csv is read from");
  ExpectError({"optimize", "planets.csv", "-o", "planets.csv"}, 2, "planets.csv is read from");
  ASSERT_EQ(Run({"regress", "planets.csv", "-t", "period", "-g", "1", "-q", "--save", "run.xml"}).Code, 0);
  ExpectError({"predict", "run.xml", "planets.csv", "-o", "planets.csv"}, 2, "planets.csv is read from");
  ExpectError({"show", "run.xml", "-o", "run.xml"}, 2, "run.xml is read from");
  Write("notes.txt", "not to be lost");
  ExpectError({"regress", "planets.csv", "-t", "period", "--save", "notes.txt"}, 2,
              "holds no run; save under another");
  EXPECT_EQ(Read("notes.txt"), "not to be lost");
  const std::string Kept = Read("run.xml");
  ExpectError({"regress", "planets.csv", "-t", "distance", "--save", "run.xml"}, 2,
              "run.xml holds a run on another target, period: --force replaces it");
  EXPECT_EQ(Read("run.xml"), Kept);
  Write("half.xml", "<QXRun Version=\"1\"><Data/></QXRun>");
  ExpectError({"regress", "planets.csv", "-t", "period", "--save", "half.xml"}, 2, "half.xml holds no run");
  EXPECT_EQ(
      Run({"regress", "planets.csv", "-t", "distance", "-g", "1", "-q", "--save", "run.xml", "--force"}).Code,
      0);
  EXPECT_EQ(Read("planets.csv"), Table);
  EXPECT_EQ(Run({"regress", "planets.csv", "-t", "distance", "-g", "1", "-q", "--save", "run.xml"}).Code, 0);
}

TEST_F(QxevolveErrorsTest, FilesThatAreNotThereAreTold) {
  WritePlanets();
  ExpectError({"regress", "none.csv", "-t", "y"}, 1, "Cannot read \"none.csv\": No such file");
  ExpectError({"regress", ".", "-t", "y"}, 1, "Is a directory");
  ExpectError({"regress", "planets.csv", "-t", "period", "--save", "no/run.xml"}, 1,
              "Cannot write \"no/run.xml\": No such file");
  ExpectError({"show", "none.xml"}, 1, "Cannot read \"none.xml\"");
  ExpectError({"show", "planets.csv"}, 2, "planets.csv holds no run");
  Write("other.xml", "<Other/>");
  ExpectError({"describe", "other.xml"}, 2, "other.xml holds no run");
  Write("half.xml", "<QXRun Version=\"1\"><Data/></QXRun>");
  ExpectError({"describe", "half.xml"}, 2, "half.xml holds no run");
}

TEST_F(QxevolveErrorsTest, AFolderThatMayNotBeWrittenIsToldBeforeTheWork) {
  namespace fs = std::filesystem;
  WritePlanets();
  fs::create_directory(Path("closed"));
  fs::permissions(Path("closed"), fs::perms::owner_read | fs::perms::owner_exec);
  fs::permissions(Folder(), fs::perms::all);
  std::vector<std::string> Program = {QX_EVOLVE};
  if (geteuid() == 0) { // who may write everywhere
    Program = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", QX_EVOLVE};
  }
  for (const std::string Option : {"--save", "--report"}) {
    auto Words = Program;
    Words.insert(Words.end(), {"regress", "planets.csv", "-t", "period", Option, "closed/output"});
    const auto End = TProcess(Words, Folder()).Finish();
    EXPECT_EQ(End.Code, 1);
    EXPECT_TRUE(IsOneLine(End.Error)) << End.Error;
    EXPECT_NE(End.Error.find("Permission denied"), std::string::npos) << End.Error;
    EXPECT_EQ(End.Out, "");
    EXPECT_TRUE(fs::is_empty(Path("closed")));
  }
}

TEST_F(QxevolveErrorsTest, AFullDiskIsTold) {
  WritePlanets();
  Write("items.csv", "value,weight\n1,2\n");
  ExpectError({"optimize", "items.csv", "-c", "5", "-g", "2", "-q", "-o", "/dev/full"}, 1, "No space left");
  const auto End = TProcess({"sh", "-c", std::string(QX_EVOLVE) + " manual > /dev/full"}, Folder()).Finish();
  EXPECT_EQ(End.Code, 1);
  EXPECT_EQ(End.Error, "qxevolve: Cannot write to standard output: No space left on device\n");
}

TEST_F(QxevolveErrorsTest, ARunWithoutResultLeavesNoFolderBehind) {
  Write("data.csv", "x,y\n1e200,1\n2e200,2\n3e200,4\n"); // squares of every program's errors are infinite
  ExpectError({"regress", "data.csv", "-t", "y", "-g", "1", "-q", "--no-scaling", "--no-constants", "-f",
               "Exp", "--report", "report", "--save", "run.xml"},
              1, "No program has a finite error");
}

TEST_F(QxevolveErrorsTest, WrongUseIsTold) {
  WritePlanets();
  ExpectError({}, 2, "see qxevolve --help");
  ExpectError({"evolve"}, 2, "There is no command \"evolve\"");
  ExpectError({"regress", "planets.csv", "-t", "period", "-g", "1.5"}, 2, "1.5 is no whole number from 1");
  ExpectError({"regress", "planets.csv", "-t", "period", "--test-share", "nan"}, 2,
              "nan is no number from 0 to 0.9");
  ExpectError({"regress", "planets.csv", "-t", "period", "--crossover", "nan"}, 2,
              "nan is no number from 0 to 1");
  ExpectError({"regress", "planets.csv", "-t", "period", "--ignore", "period"}, 2,
              "The target cannot be left out");
  ExpectError({"regress", "planets.csv", "-t", "period", "--force"}, 2, "--force requires --save");
  ExpectError({"regress", "planets.csv"}, 2, "--target is required; see qxevolve regress --help");
  ExpectError({"regress", "planets.csv", "-t", "period", "--functions", "Foo"}, 2, "Foo not in {Add,Sub,");
  ExpectError({"regress", "planets.csv", "-t", "period", "--population", "1"}, 2,
              "--population: 1 is no whole number from 2 to 1000000");
  ExpectError({"regress", "planets.csv", "-t", "period", "--seed", "-4"}, 2,
              "--seed: -4 is no whole number from 0 to");
  ExpectError({"regress", "planets.csv", "-t", "period", "--seconds", "soon"}, 2,
              "soon is no number above 0");
  ExpectError({"regress", "planets.csv", "-t", "period", "--selection", "custom"}, 2,
              "custom not in {roulette");
  ExpectError({"regress", "planets.csv", "-t", "period", "--resume"}, 2, "--resume requires --save");
  ExpectError({"regress", "planets.csv", "-t", "period", "--ignore", "mass"}, 2,
              "no column \"mass\" to leave out");
  ExpectError({"regress", "planets.csv", "-t", "period", "--json", "-q"}, 2, "excludes");
  ExpectError({"regress", "planets.csv", "-t", "period", "--no-such-option"}, 2, "--no-such-option");
}

} // namespace
} // namespace qxevolve::tests
