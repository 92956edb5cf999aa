#include <qx/genetic_programming/InfixText.h>
#include <qx/platform/Text.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <vector>

namespace qx {

namespace {

// How tightly a form binds; what binds less than its place asks for is put in parentheses.
enum TBinding : int { bdOr, bdAnd, bdNot, bdComparison, bdSum, bdProduct, bdSign, bdPower, bdWhole };

// What stands before, between and after the arguments, and how tightly they must bind.
struct TOperator {
  std::string_view Name;
  int Arity;
  TBinding Binding;
  std::array<std::string_view, 3> Texts;
  std::array<TBinding, 2> Arguments;
};

constexpr TOperator Operators[] = {
    {"Add", 2, bdSum, {"", " + ", ""}, {bdSum, bdSum}},
    {"Sub", 2, bdSum, {"", " - ", ""}, {bdSum, bdProduct}},
    {"Mul", 2, bdProduct, {"", " * ", ""}, {bdProduct, bdSign}}, // a protected quotient must not move
    {"Div", 2, bdProduct, {"", " / ", ""}, {bdProduct, bdSign}},
    {"Neg", 1, bdSign, {"-", "", ""}, {bdPower, bdWhole}},
    {"Inv", 1, bdProduct, {"1 / ", "", ""}, {bdSign, bdWhole}},
    {"Square", 1, bdPower, {"", "^2", ""}, {bdWhole, bdWhole}},
    {"Cube", 1, bdPower, {"", "^3", ""}, {bdWhole, bdWhole}},
    {"Less", 2, bdComparison, {"", " < ", ""}, {bdSum, bdSum}},
    {"LessOrEqual", 2, bdComparison, {"", " <= ", ""}, {bdSum, bdSum}},
    {"Greater", 2, bdComparison, {"", " > ", ""}, {bdSum, bdSum}},
    {"GreaterOrEqual", 2, bdComparison, {"", " >= ", ""}, {bdSum, bdSum}},
    {"Equal", 2, bdComparison, {"", " = ", ""}, {bdSum, bdSum}},
    {"NotEqual", 2, bdComparison, {"", " <> ", ""}, {bdSum, bdSum}},
    {"And", 2, bdAnd, {"", " and ", ""}, {bdAnd, bdAnd}},
    {"Or", 2, bdOr, {"", " or ", ""}, {bdOr, bdOr}},
    {"Not", 1, bdNot, {"not ", "", ""}, {bdNot, bdWhole}},
};

// One program's text, made without recursion: what is still to be written waits on a stack, last first.
template <class T>
class TInfixWriter {
  using TNode = generics::TQXGPNode<T>;

public:
  std::string Write(const TNode& Program) {
    Push(Program, bdOr);
    while (!FPending.empty()) {
      const TPiece Piece = FPending.back();
      FPending.pop_back();
      if (Piece.Node != nullptr) {
        WriteNode(*Piece.Node, Piece.Asked);
      } else {
        FText += Piece.Text;
      }
    }
    return FText;
  }

private:
  struct TPiece {
    const TNode* Node;
    TBinding Asked;
    std::string_view Text;
  };

  void Push(const TNode& Node, TBinding Asked) { FPending.push_back({&Node, Asked, {}}); }
  void Push(std::string_view Text) { FPending.push_back({nullptr, bdOr, Text}); }

  void WriteNode(const TNode& Node, TBinding Asked) {
    if (Node.Instruction() == nullptr) {
      FText += "nil";
    } else if (Node.ChildCount() == 0) {
      WriteLeaf(Node, Asked);
    } else if (const TOperator* const Operator = OperatorOf(Node)) {
      WriteOperator(Node, *Operator, Asked);
    } else {
      WriteCall(Node);
    }
  }

  static const TOperator* OperatorOf(const TNode& Node) {
    if (Node.Instruction()->Operation() != gpFunction) {
      return nullptr;
    }
    const auto* const Found =
        std::find_if(std::begin(Operators), std::end(Operators), [&](const TOperator& Operator) {
          return Operator.Arity == Node.ChildCount() && SameText(Operator.Name, Node.Instruction()->Name());
        });
    return Found != std::end(Operators) ? Found : nullptr;
  }

  void WriteLeaf(const TNode& Node, TBinding Asked) {
    const bool IsFunction = Node.Instruction()->Operation() == gpFunction;
    const std::string Text = IsFunction ? LowerText(Node.Instruction()->DisplayName()) : Node.ValueToString();
    const bool Signed = Text.starts_with('-') && Asked > bdSum;
    FText += Signed ? "(" + Text + ")" : Text;
  }

  void WriteOperator(const TNode& Node, const TOperator& Operator, TBinding Asked) {
    const bool Enclosed = Operator.Binding < Asked;
    FText += Enclosed ? "(" : "";
    FText += Operator.Texts[0];
    Push(Enclosed ? ")" : "");
    const auto Arguments = ArgumentsOf(Node);
    for (std::size_t I = Arguments.size(); I-- > 0;) {
      Push(Operator.Texts[I + 1]);
      Push(*Arguments[I], Operator.Arguments[I]);
    }
  }

  void WriteCall(const TNode& Node) {
    FText += LowerText(Node.Instruction()->DisplayName()) + "(";
    Push(")");
    const auto Arguments = ArgumentsOf(Node);
    for (std::size_t I = Arguments.size(); I-- > 0;) {
      Push(*Arguments[I], bdOr);
      Push(I > 0 ? ", " : "");
    }
  }

  static std::vector<const TNode*> ArgumentsOf(const TNode& Node) {
    std::vector<const TNode*> Arguments;
    std::copy_if(Node.Slots().begin(), Node.Slots().end(), std::back_inserter(Arguments),
                 [](const TNode* Child) { return Child != nullptr; });
    return Arguments;
  }

  std::string FText;
  std::vector<TPiece> FPending;
};

} // namespace

std::string InfixText(const generics::TQXGPNode<TGAFloat>& Program) {
  return TInfixWriter<TGAFloat>().Write(Program);
}

std::string InfixText(const generics::TQXGPNode<Variant>& Program) {
  return TInfixWriter<Variant>().Write(Program);
}

} // namespace qx
