// Formulas out of programs, and their simplification.

#include <qx/genetic_programming/StandardInstructions.h>
#include <qx/platform/Numbers.h>
#include <qx/symbolic_regression/Formula.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <set>
#include <unordered_map>
#include <utility>

namespace qx {

bool TQXFormula::TTerm::operator==(const TTerm& Other) const {
  return Kind == Other.Kind && Operator == Other.Operator &&
         std::bit_cast<std::uint64_t>(Value) == std::bit_cast<std::uint64_t>(Other.Value) &&
         Name == Other.Name && Arguments == Other.Arguments;
}

namespace {

using TTerm = TQXFormula::TTerm;
using TArguments = std::vector<std::size_t>;

std::size_t HashOf(const TTerm& Term) {
  std::size_t Hash = std::hash<std::string>()(Term.Name) ^ std::bit_cast<std::uint64_t>(Term.Value);
  const auto Mix = [&](std::size_t Value) { Hash = (Hash ^ Value) * 0x9e3779b97f4a7c15U + (Hash >> 32); };
  Mix(Term.Kind);
  Mix(Term.Operator);
  std::ranges::for_each(Term.Arguments, Mix);
  return Hash;
}

// The value of a standard instruction for constants, as `Execute` gives it.
double ValueOf(TBlockOperation Operator, std::span<const double> Values) {
  TQXGPFloatInstructions Set(nullptr);
  auto& Function = AddStandardInstruction(Set, NameOf(Operator));
  auto& Constant = Set.Add();
  Constant.SetOperation(gpConstant);
  const auto Node = generics::MakeNode<TQXGPFloatNode>(&Function);
  for (const double Value : Values) {
    Node->AddChild(generics::MakeNode<TQXGPFloatNode>(&Constant)).SetValue(Value);
  }
  return Node->Execute(nullptr);
}

} // namespace

// Collects terms, of which each is there once.
class TQXFormula::TBuilder {
public:
  explicit TBuilder(const TColumnNames* ColumnNames = nullptr) : FColumnNames(ColumnNames) {}

  // The variables of all programs, by their places in their set.
  std::vector<std::string> Variables() const {
    std::vector<std::string> Names;
    for (const auto& [Place, Name] : FVariables) {
      Names.push_back(Name);
    }
    return Names;
  }

  std::vector<TTerm> Take(std::size_t Root) {
    DropUnused(Root);
    return std::move(FTerms);
  }

  std::size_t Add(TTerm Term) {
    const std::size_t Hash = HashOf(Term);
    const auto [First, Last] = FPlaces.equal_range(Hash);
    for (auto Place = First; Place != Last; ++Place) {
      if (FTerms[Place->second] == Term) {
        return Place->second;
      }
    }
    FTerms.push_back(std::move(Term));
    FPlaces.emplace(Hash, FTerms.size() - 1);
    return FTerms.size() - 1;
  }
  std::size_t AddConstant(double Value) { return Add({Constant, boCopy, Value, {}, {}}); }
  std::size_t AddOperation(TBlockOperation Operator, TArguments Arguments) {
    return Add({Operation, Operator, 0, {}, std::move(Arguments)});
  }

  std::size_t AddProgram(const TNode& Program);
  std::size_t Simplified(const TTerm& Term);

private:
  bool IsConstant(std::size_t Place) const { return FTerms[Place].Kind == Constant; }
  bool IsConstant(std::size_t Place, double Value) const {
    return IsConstant(Place) && FTerms[Place].Value == Value;
  }
  bool IsTruth(std::size_t Place, bool Value) const {
    return IsConstant(Place) && (FTerms[Place].Value > 0) == Value;
  }
  // The argument of an operation, when the term is one of these.
  const std::size_t* ArgumentOf(std::size_t Place, std::initializer_list<TBlockOperation> Operators) const {
    const TTerm& Term = FTerms[Place];
    const bool Is = Term.Kind == Operation && std::ranges::find(Operators, Term.Operator) != Operators.end();
    return Is ? Term.Arguments.data() : nullptr;
  }
  bool GivesTruth(std::size_t Place) const {
    return FTerms[Place].Kind == Operation && FTerms[Place].Operator >= boLess &&
           FTerms[Place].Operator != boIf;
  }

  std::size_t Rewritten(TBlockOperation Operator, TArguments A);
  std::size_t RewrittenSum(TBlockOperation Operator, TArguments A);
  std::size_t RewrittenProduct(TBlockOperation Operator, TArguments A);
  std::size_t RewrittenUnary(TBlockOperation Operator, TArguments A);
  std::size_t RewrittenChoice(TBlockOperation Operator, TArguments A);
  void DropUnused(std::size_t Root);

  const TColumnNames* FColumnNames;
  std::set<std::pair<int, std::string>> FVariables;
  std::vector<TTerm> FTerms;
  std::unordered_multimap<std::size_t, std::size_t> FPlaces;
};

TQXFormula::TQXFormula(const TNode& Program, const TLinearScaling& Scaling, const TColumnNames* ColumnNames) {
  TBuilder Builder(ColumnNames);
  std::size_t Root = Builder.AddProgram(Program);
  if (Scaling.Scale != 1) {
    Root = Builder.AddOperation(boMul, {Builder.AddConstant(Scaling.Scale), Root});
  }
  if (Scaling.Offset != 0) {
    Root = Builder.AddOperation(boAdd, {Builder.AddConstant(Scaling.Offset), Root});
  }
  FTerms = Builder.Take(Root);
  FVariables = Builder.Variables();
}

// Nodes come before their arguments in the list; from its end on, the terms of the arguments lie on a stack.
std::size_t TQXFormula::TBuilder::AddProgram(const TNode& Program) {
  std::vector<const TNode*> Nodes;
  std::vector<const TNode*> Pending = {&Program};
  while (!Pending.empty()) {
    const TNode* const Node = Pending.back();
    Pending.pop_back();
    Nodes.push_back(Node);
    if (Node->Instruction() == nullptr) {
      throw EGPException(std::string(SNoInstructionAssigned));
    }
    const auto Arity = static_cast<std::size_t>(Node->Instruction()->Arity());
    const auto Slots = Node->Slots();
    if (Slots.size() < Arity ||
        std::ranges::find(Slots.first(Arity), nullptr) != Slots.begin() + Node->Instruction()->Arity()) {
      throw EGPException("\"" + Node->Instruction()->Name() + "\" lacks arguments");
    }
    for (std::size_t I = Arity; I-- > 0;) {
      Pending.push_back(Slots[I]);
    }
  }
  TArguments Stack;
  for (; !Nodes.empty(); Nodes.pop_back()) {
    const auto& Instruction = *Nodes.back()->Instruction();
    TArguments Arguments;
    for (int I = 0; I < Instruction.Arity(); ++I) {
      Arguments.push_back(Stack.back());
      Stack.pop_back();
    }
    if (const auto Name = StandardInstructionName(Instruction); !Name.empty()) {
      Stack.push_back(AddOperation(BlockOperationOf(Name), std::move(Arguments)));
    } else if (Instruction.OnExecute || Instruction.Operation() == gpFunction) {
      Stack.push_back(Add({Call, boCopy, 0, Instruction.DisplayName(), std::move(Arguments)}));
    } else if (Instruction.Operation() == gpConstant) {
      Stack.push_back(AddConstant(Nodes.back()->Value()));
    } else {
      const std::string& Column = ColumnOf(Instruction, FColumnNames);
      FVariables.emplace(Instruction.Index(), Column);
      Stack.push_back(Add({Variable, boCopy, 0, Column, {}}));
    }
  }
  return Stack.back();
}

// --- Simplification ----------------------------------------------------------------------------------------

TQXFormula& TQXFormula::Simplify() {
  TBuilder Builder;
  TArguments Places;
  for (TTerm Term : FTerms) {
    for (std::size_t& Argument : Term.Arguments) {
      Argument = Places[Argument];
    }
    Places.push_back(Builder.Simplified(Term));
  }
  FTerms = Builder.Take(Places.back());
  return *this;
}

TQXFormula& TQXFormula::RoundConstants(int Digits) {
  for (TTerm& Term : FTerms) {
    if (Term.Kind == Constant) {
      Term.Value = RoundedToDigits(Term.Value, Digits);
    }
  }
  return *this;
}

std::size_t TQXFormula::TBuilder::Simplified(const TTerm& Term) {
  if (Term.Kind != Operation) {
    return Add(Term);
  }
  if (std::ranges::all_of(Term.Arguments, [&](std::size_t Argument) { return IsConstant(Argument); })) {
    std::vector<double> Values;
    for (const std::size_t Argument : Term.Arguments) {
      Values.push_back(FTerms[Argument].Value);
    }
    return AddConstant(ValueOf(Term.Operator, Values));
  }
  return Rewritten(Term.Operator, Term.Arguments);
}

std::size_t TQXFormula::TBuilder::Rewritten(TBlockOperation Operator, TArguments A) {
  switch (Operator) {
  case boAdd:
  case boSub:
    return RewrittenSum(Operator, std::move(A));
  case boMul:
  case boDiv:
  case boAQ:
  case boPow:
    return RewrittenProduct(Operator, std::move(A));
  default:
    return A.size() == 1 ? RewrittenUnary(Operator, std::move(A)) : RewrittenChoice(Operator, std::move(A));
  }
}

std::size_t TQXFormula::TBuilder::RewrittenSum(TBlockOperation Operator, TArguments A) {
  const bool Adds = Operator == boAdd;
  if (IsConstant(A[1], 0)) {
    return A[0];
  }
  if (IsConstant(A[0], 0)) {
    return Adds ? A[1] : Rewritten(boNeg, {A[1]});
  }
  if (const auto* const Negated = ArgumentOf(A[1], {boNeg})) {
    return AddOperation(Adds ? boSub : boAdd, {A[0], *Negated});
  }
  if (const auto* const Negated = Adds ? ArgumentOf(A[0], {boNeg}) : nullptr) {
    return AddOperation(boSub, {A[1], *Negated});
  }
  if (IsConstant(A[1]) && FTerms[A[1]].Value < 0) { // x + -2 is x - 2
    return AddOperation(Adds ? boSub : boAdd, {A[0], AddConstant(-FTerms[A[1]].Value)});
  }
  return AddOperation(Operator, std::move(A));
}

std::size_t TQXFormula::TBuilder::RewrittenProduct(TBlockOperation Operator, TArguments A) {
  if (Operator == boAQ) {
    return IsConstant(A[1], 0) ? A[0] : AddOperation(Operator, std::move(A));
  }
  if (Operator == boPow) {
    if (IsConstant(A[0], 0)) {
      return AddConstant(0);
    }
    return IsConstant(A[1], 1) ? Rewritten(boAbs, {A[0]}) : AddOperation(Operator, std::move(A));
  }
  if (IsConstant(A[1], 1)) {
    return A[0];
  }
  if (IsConstant(A[1], -1)) {
    return Rewritten(boNeg, {A[0]});
  }
  if (Operator == boDiv) {
    if (IsConstant(A[1], 0)) {
      return AddConstant(1);
    }
    return IsConstant(A[0], 1) ? AddOperation(boInv, {A[1]}) : AddOperation(Operator, std::move(A));
  }
  if (IsConstant(A[0], 1) || IsConstant(A[0], -1)) {
    return RewrittenProduct(Operator, {A[1], A[0]});
  }
  const auto* const First = ArgumentOf(A[0], {boNeg});
  const auto* const Second = ArgumentOf(A[1], {boNeg});
  if (First != nullptr && Second != nullptr) {
    return RewrittenProduct(Operator, {*First, *Second});
  }
  return A[0] == A[1] ? AddOperation(boSquare, {A[0]}) : AddOperation(Operator, std::move(A));
}

std::size_t TQXFormula::TBuilder::RewrittenUnary(TBlockOperation Operator, TArguments A) {
  switch (Operator) {
  case boNeg:
    if (const auto* const Negated = ArgumentOf(A[0], {boNeg})) {
      return *Negated;
    }
    if (const auto* const Terms = ArgumentOf(A[0], {boSub})) {
      return AddOperation(boSub, {Terms[1], Terms[0]});
    }
    break;
  case boAbs:
    if (ArgumentOf(A[0], {boAbs, boSquare, boSqrt, boExp}) != nullptr) {
      return A[0];
    }
    [[fallthrough]];
  case boSquare: // the sign of the argument does not count
  case boSqrt:
  case boLog:
  case boCos:
    if (const auto* const Unsigned = ArgumentOf(A[0], {boNeg})) {
      return Rewritten(Operator, {*Unsigned});
    }
    if (const auto* const Unsigned = Operator != boCos ? ArgumentOf(A[0], {boAbs}) : nullptr) {
      return Rewritten(Operator, {*Unsigned});
    }
    break;
  case boNot:
    if (const auto* const Negated = ArgumentOf(A[0], {boNot}); Negated != nullptr && GivesTruth(*Negated)) {
      return *Negated;
    }
    break;
  default:
    break;
  }
  return AddOperation(Operator, std::move(A));
}

std::size_t TQXFormula::TBuilder::RewrittenChoice(TBlockOperation Operator, TArguments A) {
  const auto IsEither = [&](bool Value) { return IsTruth(A[0], Value) || IsTruth(A[1], Value); };
  switch (Operator) {
  case boMin:
  case boMax:
    return A[0] == A[1] ? A[0] : AddOperation(Operator, std::move(A));
  case boLess:
  case boGreater:
    return A[0] == A[1] ? AddConstant(0) : AddOperation(Operator, std::move(A));
  case boIf:
    if (IsConstant(A[0])) {
      return A[IsTruth(A[0], true) ? 1 : 2];
    }
    return A[1] == A[2] ? A[1] : AddOperation(Operator, std::move(A));
  case boAnd:
  case boNand:
    return IsEither(false) ? AddConstant(Operator == boAnd ? 0 : 1) : AddOperation(Operator, std::move(A));
  case boOr:
  case boNor:
    return IsEither(true) ? AddConstant(Operator == boOr ? 1 : 0) : AddOperation(Operator, std::move(A));
  case boXor:
    return A[0] == A[1] ? AddConstant(0) : AddOperation(Operator, std::move(A));
  default:
    return AddOperation(Operator, std::move(A));
  }
}

// Keeps the terms that the root depends on.
void TQXFormula::TBuilder::DropUnused(std::size_t Root) {
  std::vector<bool> Used(FTerms.size(), false);
  Used[Root] = true;
  for (std::size_t I = FTerms.size(); I-- > 0;) {
    for (const std::size_t Argument : FTerms[I].Arguments) {
      Used[Argument] = Used[Argument] || Used[I];
    }
  }
  TArguments Places(FTerms.size());
  std::vector<TTerm> Kept;
  for (std::size_t I = 0; I <= Root; ++I) {
    if (Used[I]) {
      Places[I] = Kept.size();
      Kept.push_back(std::move(FTerms[I]));
      for (std::size_t& Argument : Kept.back().Arguments) {
        Argument = Places[Argument];
      }
    }
  }
  FTerms = std::move(Kept);
}

int TQXFormula::Size() const {
  std::vector<int> Sizes;
  for (const TTerm& Term : FTerms) {
    int Size = 1;
    for (const std::size_t Argument : Term.Arguments) {
      Size += Sizes[Argument];
    }
    Sizes.push_back(Size);
  }
  return Sizes.back();
}

std::vector<std::string> TQXFormula::Variables() const {
  std::vector<std::string> Names = FVariables;
  std::erase_if(Names, [&](const std::string& Name) { // some may have been simplified away
    return std::ranges::none_of(
        FTerms, [&](const TTerm& Term) { return Term.Kind == Variable && Term.Name == Name; });
  });
  return Names;
}

} // namespace qx
