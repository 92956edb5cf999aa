// The artificial ant on the Santa Fe trail (Jefferson and others 1991; Koza 1992, chapter 7.2): a program
// that steers an ant along a trail with gaps, of 89 pellets of food on a torus of 32 by 32 cells. The program
// runs over and over for 600 moves, a turn being one too. Its instructions act on the ant, and their order
// counts.
//
// Usage: santa_fe_ant [--seed N]

#include "../ProgramRun.h"
#include "../RunOptions.h"
#include <qx/platform/Random.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr int Side = 32;
constexpr int MostMoves = 600;
constexpr int Pellets = 89;

constexpr std::array<std::string_view, Side> Trail = {
    ".###............................", "...#............................",
    "...#.....................###....", "...#....................#....#..",
    "...#....................#....#..", "...####.#####........##.........",
    "............#................#..", "............#.......#...........",
    "............#.......#........#..", "............#.......#...........",
    "....................#...........", "............#................#..",
    "............#...................", "............#.......#.....###...",
    "............#.......#..#........", ".................#..............",
    "................................", "............#...........#.......",
    "............#...#..........#....", "............#...#...............",
    "............#...#...............", "............#...#.........#.....",
    "............#..........#........", "............#...................",
    "...##..#####....#...............", ".#..............#...............",
    ".#..............#...............", ".#......#######.................",
    ".#.....#........................", ".......#........................",
    "..####..........................", "................................"};

constexpr int CountPellets() {
  int Count = 0;
  for (const std::string_view Row : Trail) {
    Count += static_cast<int>(std::count(Row.begin(), Row.end(), '#'));
  }
  return Count;
}
static_assert(CountPellets() == Pellets);

/// The ant on its way.
class TAnt {
public:
  void Start() {
    *this = TAnt();
    for (int Cell = 0; Cell < Side * Side; ++Cell) {
      FFood[static_cast<std::size_t>(Cell)] =
          Trail[static_cast<std::size_t>(Cell / Side)][static_cast<std::size_t>(Cell % Side)] == '#';
    }
  }
  int Moves() const { return FMoves; }
  int Eaten() const { return FEaten; }
  bool Goes() const { return FMoves < MostMoves && FEaten < Pellets; }

  bool FoodAhead() const { return FFood[Ahead()]; }
  void Left() { Turn(3); }
  void Right() { Turn(1); }
  void Move() {
    if (Goes()) {
      const std::size_t Cell = Ahead();
      FRow = static_cast<int>(Cell) / Side;
      FColumn = static_cast<int>(Cell) % Side;
      FEaten += FFood[Cell] ? 1 : 0;
      FFood[Cell] = false;
      ++FMoves;
    }
  }

private:
  std::size_t Ahead() const {
    constexpr std::array<int, 4> Rows = {0, 1, 0, -1}; // east, south, west, north
    constexpr std::array<int, 4> Columns = {1, 0, -1, 0};
    const int Row = (FRow + Rows[FHeading] + Side) % Side;
    const int Column = (FColumn + Columns[FHeading] + Side) % Side;
    return static_cast<std::size_t>(Row * Side + Column);
  }
  void Turn(std::size_t Quarters) {
    if (Goes()) {
      FHeading = (FHeading + Quarters) % 4;
      ++FMoves;
    }
  }

  std::bitset<Side * Side> FFood;
  int FRow = 0;
  int FColumn = 0;
  std::size_t FHeading = 0;
  int FMoves = 0;
  int FEaten = 0;
};

/// Declares what an ant can do.
void AddInstructions(qx::TQXGPFloatInstructions& Instructions, TAnt& Ant) {
  const auto Add = [&](const char* Name, int Arity) -> qx::TQXGPFloatInstruction& {
    qx::TQXGPFloatInstruction& Added = Instructions.Add();
    Added.SetName(Name);
    Added.SetOperation(qx::gpFunction);
    Added.SetArity(Arity);
    return Added;
  };
  Add("IfFoodAhead", 2).OnExecute = [&Ant](auto&, auto& Node, auto* Context, double&) {
    Node.ExecuteChild(Ant.FoodAhead() ? 0 : 1, Context);
  };
  const auto RunAll = [](auto&, auto& Node, auto* Context, double&) {
    for (int I = 0; I < Node.ChildCount(); ++I) {
      Node.ExecuteChild(I, Context);
    }
  };
  Add("Prog2", 2).OnExecute = RunAll;
  Add("Prog3", 3).OnExecute = RunAll;
  Add("Move", 0).OnExecute = [&Ant](auto&, auto&, auto*, double&) { Ant.Move(); };
  Add("Left", 0).OnExecute = [&Ant](auto&, auto&, auto*, double&) { Ant.Left(); };
  Add("Right", 0).OnExecute = [&Ant](auto&, auto&, auto*, double&) { Ant.Right(); };
}

int Run(const TRunOptions& Options) {
  qx::SeedRandom(Options.Seed);

  TAnt Ant;
  qx::TQXGeneticProgramming gp;
  AddInstructions(gp.Instructions(), Ant);
  SetUp(gp, 4000);
  gp.SetBloatStrategy(qx::bsDepthLimit);
  gp.SetBloatLimit(17);
  const auto Walk = [&](auto& Program) { // a program that does nothing at all ends too
    Ant.Start();
    for (int Before = -1; Ant.Goes() && Ant.Moves() > Before;) {
      Before = Ant.Moves();
      Program.Execute(nullptr);
    }
    return Ant.Eaten();
  };
  gp.OnEvaluateFitness = [&](auto&, auto& Item, double& Fitness) { Fitness = Pellets - Walk(Item); };
  gp.SetUseFitnessCutoff(true);
  gp.SetFitnessCutoff(0);
  ShowProgress(gp, 5);
  const int Generations = gp.Evolve(100);

  auto& Best = *gp.FittestIndividual();
  const int Eaten = Walk(Best);
  std::printf("\n%s\n", qx::InfixText(*Best.DNA()).c_str());
  std::printf("%d of %d pellets eaten in %d moves, after %d generations\n", Eaten, Pellets, Ant.Moves(),
              Generations);
  return Eaten == Pellets ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int Count, char** Arguments) { return RunExample(Count, Arguments, Run, NoFiles); }
