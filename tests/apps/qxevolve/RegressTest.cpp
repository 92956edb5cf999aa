#include <apps/qxevolve/Program.h>
#include <csignal>
#include <filesystem>
#include <sstream>

namespace qxevolve::tests {
namespace {

using Arguments = std::vector<std::string>;

TEST_F(QxevolveTest, RegressFindsKeplersLaw) {
  WritePlanets();
  const auto End =
      Run({"regress", "planets.csv", "--target", "period", "--generations", "20", "--seed", "1"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_NE(End.Out.find("\nperiod = 0.00408776 + 0.999378 * sqrt(abs(distance))^3\nR2 1.000000 on 8 rows"),
            std::string::npos)
      << End.Out;
  EXPECT_NE(End.Out.find("     3*   1.776e-08  0.00408776"), std::string::npos);
  EXPECT_NE(End.Out.find(" s; stopped: that many were asked for\n"), std::string::npos) << End.Out;
  EXPECT_NE(End.Error.find("8 rows, 0 to test; seed 1;"), std::string::npos);
  EXPECT_EQ(Files(), Arguments{"planets.csv"}) << "nothing is written that was not asked for";
}

TEST_F(QxevolveTest, ASeedRepeatsARunOnAnyNumberOfThreads) {
  WriteHard();
  const Arguments Usual = {"regress", "hard.csv", "-t", "y", "-g", "5", "--seed", "7", "-q"};
  const auto First = Run(Usual);
  EXPECT_EQ(First.Code, 0);
  EXPECT_NE(First.Out.find("y = "), std::string::npos);
  for (const std::string Threads : {"1", "3"}) {
    auto Other = Usual;
    Other.insert(Other.end(), {"--threads", Threads});
    EXPECT_EQ(Run(Other).Out, First.Out);
  }
  auto Otherwise = Usual;
  Otherwise[6] = "8";
  EXPECT_NE(Run(Otherwise).Out, First.Out);
}

TEST_F(QxevolveTest, QuietPrintsTheFormulaAlone) {
  WritePlanets();
  const auto End = Run({"regress", "planets.csv", "-t", "period", "-g", "3", "--seed", "1", "--quiet"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_EQ(CountOf(End.Out, "\n"), 1) << End.Out;
  EXPECT_TRUE(End.Out.starts_with("period = "));
  EXPECT_EQ(End.Error, "");
}

TEST_F(QxevolveTest, JSONIsARecordForEachGenerationAndTheResult) {
  WriteHard();
  const auto End = Run({"regress", "hard.csv", "-t", "y", "-g", "4", "--seed", "1", "--json"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_EQ(End.Error, "");
  EXPECT_EQ(CountOf(End.Out, "\n"), 6) << "generations 0 to 4, and the result";
  for (int Generation = 0; Generation < 5; ++Generation) {
    const std::string Begin = R"({"event":"generation","generation":)" + std::to_string(Generation) + ',';
    EXPECT_EQ(CountOf(End.Out, Begin), 1);
  }
  EXPECT_EQ(CountOf(End.Out, R"({"event":"result","target":"y","chosen":{"size":)"), 1);
  EXPECT_NE(End.Out.find(R"("ended_by":"generations"})"), std::string::npos);
  EXPECT_EQ(End.Out.find("nan"), std::string::npos);
  EXPECT_EQ(End.Out.find("inf"), std::string::npos);
}

TEST_F(QxevolveTest, LinesInAPipeAndABarOnATerminal) {
  WriteHard();
  const Arguments Usual = {"regress", "hard.csv", "-t", "y", "-s", "1", "--seed", "1"};
  const auto Piped = Run(Usual);
  EXPECT_EQ(Piped.Error.find('\r'), std::string::npos);
  EXPECT_EQ(Piped.Error.find('\x1b'), std::string::npos);
  EXPECT_NE(Piped.Error.find("\ngeneration 0  error "), std::string::npos) << Piped.Error;
  const auto Shown = RunInTerminal(Usual);
  EXPECT_EQ(Shown.Code, 0);
  EXPECT_NE(Shown.Out.find("\r[#"), std::string::npos);
  EXPECT_NE(Shown.Out.find("%  generation "), std::string::npos);
  EXPECT_NE(Shown.Out.find(" s left\x1b[K"), std::string::npos);
  EXPECT_NE(Shown.Out.find("y = "), std::string::npos);
  std::istringstream Lines(Shown.Out.substr(Shown.Out.find("  size        error")));
  for (std::string Line; std::getline(Lines, Line) && Line != "\r";) {
    EXPECT_LE(Line.size(), 101U) << "with the carriage return";
  }
  for (auto At = Shown.Out.find('['); At != std::string::npos; At = Shown.Out.find('[', At + 1)) {
    if (At > 0 && Shown.Out[At - 1] == '\r') { // the bar keeps within the 100 columns
      EXPECT_LT(Shown.Out.find("\x1b[K", At) - At, 100U);
    }
  }
}

TEST_F(QxevolveTest, CtrlCEndsTheRunWithWhatItHas) {
  WriteHard();
  for (const auto Output : {TProcess::TOutput::Pipes, TProcess::TOutput::Terminal}) {
    TProcess Process(
        Command({"regress", "hard.csv", "-t", "y", "-s", "60", "--seed", "1", "--save", "run.xml"}), Folder(),
        Output);
    ASSERT_TRUE(Process.WaitFor("generation 0"));
    if (Output == TProcess::TOutput::Terminal) {
      Process.Type("\x03");
    } else {
      Process.Send(SIGINT);
    }
    const auto End = Process.Finish();
    EXPECT_EQ(End.Code, 130);
    EXPECT_NE(End.Out.find("; stopped: Ctrl-C"), std::string::npos);
    EXPECT_NE(End.Out.find("y = "), std::string::npos);
    EXPECT_EQ(Run({"show", "run.xml"}).Code, 0);
    std::filesystem::remove(Path("run.xml"));
  }
}

TEST_F(QxevolveTest, ResumingIsTheSameAsNotStopping) {
  WriteHard();
  const Arguments Usual = {"regress", "hard.csv", "-t", "y", "-q", "--threads", "1", "--save"};
  const auto With = [&](Arguments More) {
    auto All = Usual;
    All.insert(All.end(), More.begin(), More.end());
    return All;
  };
  const auto Whole = Run(With({"whole.xml", "--seed", "3", "-g", "12"}));
  EXPECT_EQ(Whole.Code, 0);
  EXPECT_EQ(Run(With({"run.xml", "--seed", "3", "-g", "5", "--resume"})).Code, 0) << "nothing to resume yet";
  const auto Resumed = Run(With({"run.xml", "-g", "12", "--resume"}));
  EXPECT_EQ(Resumed.Code, 0);
  EXPECT_EQ(Resumed.Out, Whole.Out);
  const auto StateOf = [&](const std::string& File) {
    const std::string Text = Read(File);
    const auto Begin = Text.find("<State>");
    EXPECT_NE(Begin, std::string::npos);
    return Text.substr(Begin);
  };
  EXPECT_TRUE(StateOf("run.xml") == StateOf("whole.xml"));
  EXPECT_EQ(CountOf(Read("run.xml"), "<Record "), 13);
  const auto Other = Run(With({"run.xml", "--resume", "--seed", "4"}));
  EXPECT_EQ(Other.Code, 2);
  EXPECT_TRUE(IsOneLine(Other.Error)) << Other.Error;
  std::filesystem::rename(Path("hard.csv"), Path("moved.csv"));
  auto Moved = With({"run.xml", "-g", "15", "--resume", "--error", "mae"});
  Moved[1] = "moved.csv";
  EXPECT_EQ(Run(Moved).Code, 0);
  EXPECT_EQ(CountOf(Read("run.xml"), "<Record "), 3) << "errors of another measure are no course";
  EXPECT_NE(Run({"describe", "run.xml"}).Out.find("moved.csv, 400 rows"), std::string::npos);
  WriteHard(401);
  const auto OtherData = Run(With({"run.xml", "--resume", "-g", "20"}));
  EXPECT_EQ(OtherData.Code, 2);
  EXPECT_NE(OtherData.Error.find("holds a run on other data: 400 rows"), std::string::npos);
}

TEST_F(QxevolveTest, AnOutputThatFailsTakesNoOtherOneWithIt) {
  WriteHard();
  const std::string Usual = std::string(QX_EVOLVE) + " regress hard.csv -t y -g 30 --seed 1 --save ";
  const auto Shell = [&](const std::string& Text) { return TProcess({"sh", "-c", Text}, Folder()).Finish(); };
  EXPECT_EQ(Shell(Usual + "full.xml --report report > /dev/full").Code, 1);
  EXPECT_EQ(Run({"show", "full.xml"}).Code, 0);
  EXPECT_NE(Read("report/report.html").find("</html>"), std::string::npos);
  EXPECT_EQ(Shell(Usual + "closed.xml >&-").Code, 1);
  EXPECT_EQ(Run({"show", "closed.xml"}).Code, 0);
  Shell(Usual + "piped.xml --json | head -n 1");
  EXPECT_EQ(Run({"show", "piped.xml"}).Code, 0);
}

TEST_F(QxevolveTest, ColumnsMayBeCalledAsFunctions) {
  Write("data.csv",
        "exp,Add,y\n1,2,2.7182818\n2,1,7.3890561\n3,3,20.085537\n4,0,54.59815\n0.5,1,1.6487213\n");
  const auto End = Run({"regress", "data.csv", "-t", "y", "-g", "5", "--seed", "1", "-f", "Add,Exp,Mul,exp",
                        "--save", "run.xml", "-q"});
  ASSERT_EQ(End.Code, 0) << End.Error;
  EXPECT_NE(End.Out.find("exp(exp)"), std::string::npos) << End.Out;
  const auto Predicted = Run({"predict", "run.xml", "data.csv"});
  EXPECT_EQ(Predicted.Code, 0);
  EXPECT_TRUE(Predicted.Out.starts_with("y\n2.718")) << Predicted.Out;
}

TEST_F(QxevolveTest, AFormulaThatFitsEndsTheRunByItsError) {
  Write("data.csv", "x,c,y\n1,7,1\n2,7,4\n3,7,9\n4,7,16\n5,7,25\n");
  const auto End = Run({"regress", "data.csv", "-t", "y", "--seed", "1"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_NE(End.Out.find("\ny = x^2\n"), std::string::npos) << End.Out;
  EXPECT_NE(End.Out.find(" s; stopped: error below 1e-24\n"), std::string::npos) << End.Out;
  EXPECT_NE(End.Error.find("\"c\" is 7 in every row, and left out\n"), std::string::npos) << End.Error;
}

TEST_F(QxevolveTest, TheErrorThatChoosesIsInTheTable) {
  WriteHard();
  const auto End = Run({"regress", "hard.csv", "-t", "y", "-g", "3", "--seed", "1", "--save", "run.xml"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_NE(End.Out.find("  size        error   test error  formula\n"), std::string::npos) << End.Out;
}

TEST_F(QxevolveTest, ColumnsThatDifferByCaseKeepTheirNames) {
  Write("data.csv", "t,T,y\n1,2,3\n5,3,4\n2,5,23\n7,7,42\n3,11,118\n8,13,161\n");
  const auto End = Run({"regress", "data.csv", "-t", "y", "-g", "40", "--seed", "1", "-q", "--save",
                        "run.xml", "--report", "report"});
  EXPECT_EQ(End.Out, "y = T^2 - t\n") << End.Error;
  EXPECT_EQ(Run({"show", "run.xml"}).Out, "T^2 - t\n");
  EXPECT_NE(Run({"show", "run.xml", "--as", "python"}).Out.find("def y(t, T):\n"), std::string::npos);
  EXPECT_NE(Run({"describe", "run.xml"}).Out.find("\n      t, T, Constant\n"), std::string::npos);
  EXPECT_NE(Read("report/report.html").find("\n      t, T, Constant\n"), std::string::npos);
  EXPECT_NE(Read("report/report.html").find("y = T^2 - t"), std::string::npos);
  Write("new.csv", "T,t\n20,1\n30,2\n");
  EXPECT_EQ(Run({"predict", "run.xml", "new.csv", "--keep"}).Out, "T,t,y\n20,1,399\n30,2,898\n");
  Write("less.csv", "t\n1\n");
  EXPECT_NE(Run({"predict", "run.xml", "less.csv"}).Error.find("no column \"T\""), std::string::npos);
  const auto Resumed =
      Run({"regress", "data.csv", "-t", "y", "-g", "41", "-q", "--save", "run.xml", "--resume"});
  EXPECT_EQ(Resumed.Out, End.Out) << Resumed.Error;
}

TEST_F(QxevolveTest, NumbersAsSpreadsheetsWriteThemAreReadOnRequest) {
  Write("data.csv", "x|y\n1,000|10%\n2,000|20%\n3,000|30%\nNULL|40%\ninf|50%\n");
  const auto End = Run({"regress", "data.csv", "-t", "y", "-g", "2", "--seed", "1", "-q", "--thousands",
                        "--missing", "skip", "--save", "run.xml"});
  ASSERT_EQ(End.Code, 0) << End.Error;
  const auto Told = Run({"regress", "data.csv", "-t", "y", "-g", "1", "--thousands", "--missing", "skip"});
  EXPECT_NE(Told.Error.find("2 of 5 rows are left out: there is no number for \"x\" in 2\n"),
            std::string::npos)
      << Told.Error;
  const std::string Predicted = Run({"predict", "run.xml", "data.csv"}).Out; // as the run's table
  EXPECT_TRUE(Predicted.starts_with("y\n0.1")) << Predicted;
  EXPECT_EQ(CountOf(Predicted, "\n"), 6) << Predicted;
}

TEST_F(QxevolveTest, SharesAddUp) {
  WritePlanets();
  ASSERT_EQ(Run({"regress", "planets.csv", "-t", "period", "-g", "1", "-q", "--save", "run.xml", "--report",
                 "report"})
                .Code,
            0);
  const std::string Text = Run({"describe", "run.xml"}).Out;
  EXPECT_EQ(Read("report/report.html").find("(17.00%)"), std::string::npos);
  const std::string Start = "   Mutation Distribution = ";
  const auto Begin = Text.find(Start) + Start.size();
  std::istringstream Shares(Text.substr(Begin, Text.find('\n', Begin) - Begin));
  int Tenths = 0;
  int Count = 0;
  for (std::string Share; std::getline(Shares, Share, '('); ++Count) {
    if (Count > 0) {
      Tenths += std::stoi(Share) * 10 + (Share[Share.find('.') + 1] - '0');
    }
  }
  EXPECT_EQ(Count, 7) << Text;
  EXPECT_EQ(Tenths, 1000) << Text;
}

TEST_F(QxevolveTest, AGenerationOfFarTooManyProgramsIsCutShort) {
  WriteHard();
  const auto End = Run({"regress", "hard.csv", "-t", "y", "-p", "200000", "-s", "0.01", "--seed", "1",
                        "--json", "--report", "report"});
  EXPECT_EQ(End.Code, 0) << End.Error;
  EXPECT_EQ(CountOf(End.Out, "{\"event\":\"generation\""), 1);
  const auto Place = End.Out.find("\"evaluations\":") + 14;
  EXPECT_LT(std::stoi(End.Out.substr(Place)), 200'000);
  EXPECT_NE(End.Out.find("\"ended_by\":\"time\""), std::string::npos);
  EXPECT_NE(Read("report/report.html").find("but for the last generation, which time has cut short"),
            std::string::npos);
}

TEST_F(QxevolveTest, TimeLeftHeedsTheGenerations) {
  WriteHard();
  const auto End = Run({"regress", "hard.csv", "-t", "y", "-g", "60", "-s", "1e10", "--seed", "1"});
  EXPECT_EQ(End.Code, 0);
  EXPECT_NE(End.Error.find("generation 0 "), std::string::npos);
  EXPECT_NE(End.Error.find("days left\n"), std::string::npos) << "of the first generation nothing is known";
  EXPECT_EQ(CountOf(End.Error, "days left\n"), 1) << End.Error;
}

TEST_F(QxevolveTest, NarrowTerminalsAreServed) {
  WriteHard();
  for (const int Columns : {1, 2, 19, 20, 21, 40}) {
    const auto End = TProcess(Command({"regress", "hard.csv", "-t", "y", "-g", "2", "--seed", "1"}), Folder(),
                              TProcess::TOutput::Terminal, static_cast<unsigned short>(Columns))
                         .Finish();
    EXPECT_EQ(End.Code, 0) << Columns;
    EXPECT_NE(End.Out.find("y = "), std::string::npos);
  }
}

TEST_F(QxevolveTest, ARunIsKeptWhileItGoesOn) {
  WriteHard();
  TProcess Process(Command({"regress", "hard.csv", "-t", "y", "-s", "60", "--seed", "1", "--save", "run.xml",
                            "--checkpoint", "0.2", "-q"}),
                   Folder());
  for (int I = 0; I < 600 && !std::filesystem::exists(Path("run.xml")); ++I) {
    usleep(50'000);
  }
  Process.Send(SIGKILL);
  EXPECT_EQ(Process.Finish().Code, 128 + SIGKILL);
  const auto Shown = Run({"show", "run.xml"});
  EXPECT_EQ(Shown.Code, 0) << Shown.Error;
  EXPECT_FALSE(Shown.Out.empty());
}

TEST_F(QxevolveTest, SettingsReachTheComponent) {
  WritePlanets();
  const auto End = Run({"regress",
                        "planets.csv",
                        "-t",
                        "period",
                        "-g",
                        "2",
                        "--seed",
                        "1",
                        "--save",
                        "run.xml",
                        "-p",
                        "77",
                        "-f",
                        "Add,mul,Pow",
                        "--depth",
                        "3",
                        "--bloat",
                        "hoist-size",
                        "--bloat-limit",
                        "33",
                        "--selection",
                        "elitist",
                        "--crossover",
                        "0.5",
                        "--mutation",
                        "0.25",
                        "--inversion",
                        "0.15",
                        "--no-constants",
                        "-q"});
  ASSERT_EQ(End.Code, 0) << End.Error;
  const auto Told = Run({"describe", "run.xml"});
  EXPECT_EQ(Told.Code, 0);
  for (const std::string Part :
       {"Target = period\n", "Seed = 1\n", "Population = 77", "= smElitist", "Crossover Probability = 50.00%",
        "Mutation Probability = 25.00%", "Inversion Probability = 15.00%", "Strategy = bsHoistSize",
        "Limit = 33", "Functions (3)", "Terminals (1)\n      distance\n"}) {
    EXPECT_NE(Told.Out.find(Part), std::string::npos) << Part << " in\n" << Told.Out;
  }
}

} // namespace
} // namespace qxevolve::tests
