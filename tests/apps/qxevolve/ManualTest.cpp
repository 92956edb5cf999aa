#include <apps/qxevolve/Program.h>
#include <sstream>

namespace qxevolve::tests {
namespace {

TEST_F(QxevolveTest, TheManualIsThatOfTheProgram) {
  EXPECT_NE(Run({"manual"}).Out.find("Exit codes: 0 done"), std::string::npos);
  EXPECT_TRUE(Run({"manual"}).Out == qx::tests::ReadFile(QX_SOURCE "/docs/qxevolve.md"))
      << "qxevolve manual > docs/qxevolve.md";
}

TEST_F(QxevolveTest, HelpTeachesByExample) {
  const auto Help = Run({"--help"});
  EXPECT_EQ(Help.Code, 0);
  EXPECT_NE(Help.Out.find("qxevolve regress planets.csv --target period"), std::string::npos);
  EXPECT_NE(Help.Out.find("Exit codes: 0 done"), std::string::npos);
  for (const std::string Name : {"regress", "predict", "show", "describe", "optimize"}) {
    const auto End = Run({Name, "--help"});
    EXPECT_EQ(End.Code, 0);
    EXPECT_NE(End.Out.find("Example:\n  qxevolve " + Name), std::string::npos) << End.Out;
    std::istringstream Lines(End.Out);
    for (std::string Line; std::getline(Lines, Line);) {
      EXPECT_LE(Line.size(), 110U) << Line;
    }
  }
  EXPECT_TRUE(Run({"--version"}).Out.starts_with("qxevolve "));
}

TEST_F(QxevolveTest, CompletionKnowsCommandsOptionsAndColumns) {
  Write("completion", Run({"completion"}).Out);
  WritePlanets();
  const auto Completed = [&](const std::string& Words, int Place) {
    return TProcess({"bash", "-c",
                     "source completion; COMP_WORDS=(" + Words + "); COMP_CWORD=" + std::to_string(Place) +
                         "; _qxevolve; echo \"${COMPREPLY[*]}\""},
                    Folder())
        .Finish()
        .Out;
  };
  EXPECT_EQ(Completed("qxevolve re", 1), "regress\n");
  EXPECT_EQ(Completed("qxevolve regress planets.csv --tar", 3), "--target\n");
  EXPECT_EQ(Completed("qxevolve regress planets.csv --target p", 4), "period\n");
  EXPECT_EQ(Completed("qxevolve show run.xml --as p", 4), "python\n");
  EXPECT_EQ(Completed("qxevolve regress planets.csv --error r", 4), "rmse r2\n");
  Write("odd.csv", "\xef\xbb\xbfheight (m),width\n1,2\n");
  EXPECT_EQ(Completed("qxevolve regress odd.csv --target h", 4), "height (m)\n");
  EXPECT_EQ(Completed("qxevolve regress pla", 2), "planets.csv\n");
}

} // namespace
} // namespace qxevolve::tests
