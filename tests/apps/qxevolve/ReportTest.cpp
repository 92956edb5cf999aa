#include <apps/qxevolve/Program.h>
#include <map>

namespace qxevolve::tests {
namespace {

bool IsInstalled(const std::string& Tool) {
  return TProcess({"sh", "-c", "command -v " + Tool}, ".").Finish().Code == 0;
}

// The part of a page from a figure's identifier to its end.
std::string Figure(const std::string& Page, const std::string& Name) {
  const auto Begin = Page.find("<figure id=\"" + Name + "\"");
  return Begin == std::string::npos ? "" : Page.substr(Begin, Page.find("</figure>", Begin) - Begin);
}

int PointsIn(const std::string& Drawn) { return CountOf(Drawn, "-point6\" transform="); }

class QxevolveReportTest : public QxevolveTest {
protected:
  void MakeReport() const {
    WriteHard();
    const auto End =
        Run({"regress", "hard.csv", "-t", "y", "-g", "15", "-s", "60", "--seed", "1", "--report", "report"});
    ASSERT_EQ(End.Code, 0) << End.Error;
    ASSERT_NE(End.Error.find("Report: report/report.html\n"), std::string::npos) << End.Error;
  }
  // The page as a browser has it, and what it says about it.
  TProcessEnd InBrowser(const std::string& File) const {
    return TProcess({"chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--user-data-dir=" + Path("browser"), "--enable-logging=stderr", "--dump-dom",
                     "file://" + Path(File)},
                    Folder())
        .Finish();
  }
};

// 300 rows for training and 100 to test, 16 generations.
TEST_F(QxevolveReportTest, EachFigureHasItsPointsInABrowser) {
  if (!IsInstalled("chromium") || !IsInstalled("gnuplot") || !IsInstalled("dot")) {
    GTEST_SKIP() << "needs chromium, gnuplot and dot";
  }
  MakeReport();
  const auto Shown = InBrowser("report/report.html");
  ASSERT_EQ(Shown.Code, 0) << Shown.Error;
  EXPECT_EQ(CountOf(Shown.Error, "CONSOLE"), 0) << Shown.Error;
  const std::map<std::string, int> Points = {// and a sample beside each title
                                             {"predictions", 400 + 2}, {"residuals", 400 + 2},
                                             {"errors", 16 * 3 + 3},   {"diversity", 16},
                                             {"sizes", 16 + 1},        {"depths", 16 + 1}};
  for (const auto& [Name, Count] : Points) {
    const std::string Drawn = Figure(Shown.Out, Name);
    EXPECT_EQ(PointsIn(Drawn), Count) << Name;
    EXPECT_EQ(CountOf(Drawn, "<svg "), 1) << Name;
    EXPECT_EQ(CountOf(Drawn, "<figcaption>"), 1) << Name;
  }
  const int Formulas =
      CountOf(Shown.Out.substr(Shown.Out.find("id=\"formulas\"")), "<td class=\"text\"><code>");
  EXPECT_GE(Formulas, 2);
  EXPECT_EQ(PointsIn(Figure(Shown.Out, "front")), Formulas + 1) << "the chosen one has two";
  EXPECT_GE(CountOf(Figure(Shown.Out, "tree"), "class=\"node\""), 1);
  EXPECT_NE(Figure(Shown.Out, "predictions").find("measured y"), std::string::npos);
  EXPECT_EQ(CountOf(Shown.Out, "is not installed"), 0);
}

// So that silence of the browser means something.
TEST_F(QxevolveReportTest, TheBrowserTellsOfErrors) {
  if (!IsInstalled("chromium")) {
    GTEST_SKIP() << "needs chromium";
  }
  Write("broken.html", "<!DOCTYPE html><html><body><script>nothing.at.all();</script></body></html>");
  EXPECT_GE(CountOf(InBrowser("broken.html").Error, "CONSOLE"), 1);
}

TEST_F(QxevolveReportTest, StandsByItself) {
  MakeReport();
  const std::string Page = Read("report/report.html");
  for (const std::string Outside : {"src=\"http", "href=\"http", "<script", "<link", "@import", "url("}) {
    EXPECT_EQ(Page.find(Outside), std::string::npos) << Outside;
  }
  for (const std::string Part :
       {"<title>y: a formula</title>", "hard.csv: 400 rows, of which 100 to test", "y (target)",
        "Anti-Bloating Strategy", "Seed 1.",
        "qxevolve regress hard.csv -t y -g 15 -s 60 --seed 1 --report report --generations 15 --seconds 1e9",
        "training rows, "}) {
    EXPECT_NE(Page.find(Part), std::string::npos) << Part;
  }
  EXPECT_EQ(CountOf(Page, "<figure id="), 8);
}

TEST_F(QxevolveReportTest, WithoutToolsThePageSaysWhatIsMissing) {
  WriteHard();
  const auto End = TProcess({"env", "PATH=/nonexistent", QX_EVOLVE, "regress", "hard.csv", "-t", "y", "-g",
                             "2", "--seed", "1", "--report", "report"},
                            Folder())
                       .Finish();
  ASSERT_EQ(End.Code, 0) << End.Error;
  const std::string Page = Read("report/report.html");
  EXPECT_EQ(CountOf(Page, "gnuplot is not installed: this figure is missing."), 7);
  EXPECT_EQ(CountOf(Page, "dot is not installed: this figure is missing."), 1);
  EXPECT_EQ(CountOf(Page, "<svg"), 0);
  EXPECT_NE(Page.find("Formulas by size"), std::string::npos);
}

TEST_F(QxevolveReportTest, AToolThatFailsIsNamed) {
  WriteHard();
  Write("gnuplot", "#!/bin/sh\nexit 1\n");
  std::filesystem::permissions(Path("gnuplot"), std::filesystem::perms::all);
  const auto End = TProcess({"env", "PATH=" + Folder(), QX_EVOLVE, "regress", "hard.csv", "-t", "y", "-g",
                             "2", "--report", "report"},
                            Folder())
                       .Finish();
  ASSERT_EQ(End.Code, 0) << End.Error;
  EXPECT_EQ(CountOf(Read("report/report.html"), "gnuplot has failed: this figure is missing."), 7);
}

TEST_F(QxevolveReportTest, TheCommandInThePageRepeatsARunThatTimeHasEnded) {
  WriteHard();
  const auto First =
      Run({"regress", "hard.csv", "-t", "y", "-s", "0.5", "-q", "--report", "report", "--threads", "1"});
  ASSERT_EQ(First.Code, 0) << First.Error;
  const std::string Page = Read("report/report.html");
  const auto Begin = Page.find("<pre>qxevolve regress ");
  ASSERT_NE(Begin, std::string::npos);
  const std::string Repeating = Page.substr(Begin + 14, Page.find("</pre>", Begin) - Begin - 14);
  EXPECT_NE(Repeating.find("--seed "), std::string::npos);
  const auto Again = TProcess({"sh", "-c", QX_EVOLVE " " + Repeating}, Folder()).Finish();
  EXPECT_EQ(Again.Code, 0) << Again.Error;
  EXPECT_EQ(Again.Out, First.Out);
}

TEST_F(QxevolveReportTest, NamesOfColumnsAreNoMarkup) {
  Write("odd.csv", "\"<b>&\"\"'x\",y\n1,2\n2,4.5\n3,5\n4,9\n");
  const auto End =
      Run({"regress", "odd.csv", "-t", "y", "-g", "2", "--seed", "1", "--report", "report", "-q"});
  ASSERT_EQ(End.Code, 0) << End.Error;
  const std::string Page = Read("report/report.html");
  EXPECT_EQ(Page.find("<b>"), std::string::npos);
  EXPECT_NE(Page.find("&lt;b&gt;&amp;&quot;'x"), std::string::npos);
}

} // namespace
} // namespace qxevolve::tests
