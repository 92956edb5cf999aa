#pragma once

#include <qx/genetic_programming/QXGenerics.GeneticProgramming.h>
#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qx::tests {

/// Text of a value, and back, for nodes whose constants are shown.
template <class T>
struct TValueText {
  static std::string Make(const T& Value) { return Variant(Value).AsText(); }
  static T Parse(const std::string& Text) { return static_cast<T>(Variant(Text).AsReal()); }
};
template <>
struct TValueText<Variant> {
  static std::string Make(const Variant& Value) { return Value.AsText(); }
  static Variant Parse(const std::string& Text) { return Text; }
};

/// A node of a family that shows, writes and reads its value.
template <class TFamily>
class TShownNode : public TFamily {
public:
  using T = typename TFamily::TValue;
  using TPointer = typename TFamily::TPointer;
  using TFamily::TFamily;

  std::string ValueToString() const override {
    if (this->Instruction() == nullptr) {
      return {};
    }
    switch (this->Instruction()->Operation()) {
    case gpVariable:
      return this->Instruction()->DisplayName();
    case gpConstant:
      return TValueText<T>::Make(this->Value());
    case gpFunction:
      break;
    }
    return {};
  }

protected:
  TPointer NewNode(generics::TQXGPInstruction<T>* Instruction) const override {
    return generics::MakeNode<TShownNode>(Instruction);
  }
  void LoadValueFromXML(const TXMLDnaType& Element) override {
    this->SetValue(TValueText<T>::Parse(Element.Value()));
  }
  void SaveValueToXML(const TXMLDnaType& Element) const override {
    Element.SetValue(TValueText<T>::Make(this->Value()));
  }
};

template <class T>
using TShownTreeNode = TShownNode<generics::TQXGPTreeNode<T>>;
template <class T>
using TShownBinaryNode = TShownNode<generics::TQXGPBinaryNode<T>>;

/// Reads trees in prefix notation over the names of an engine's instructions; a number makes a node of the
/// first constant with that value, "nil" one without instruction.
template <class T>
class TTreeReader {
public:
  using TNode = generics::TQXGPNode<T>;

  TTreeReader(generics::IQXGeneticProgramEngine<T>& Engine, const std::string& Text) : FEngine(Engine) {
    std::string Spaced;
    for (const char C : Text) {
      Spaced += C == '(' || C == ')' ? std::string{' ', C, ' '} : std::string{C};
    }
    FWords.str(Spaced);
  }

  std::unique_ptr<TNode> Read() {
    std::string Word;
    FWords >> Word;
    const bool HasChildren = Word == "(";
    if (HasChildren) {
      FWords >> Word;
    }
    std::unique_ptr<TNode> Node = FEngine.CreateNode(InstructionOf(Word));
    if (ParseReal(Word)) {
      Node->SetValue(static_cast<T>(*ParseReal(Word)));
    }
    while (HasChildren && (FWords >> std::ws).peek() != ')') {
      Node->AddChild(Read());
    }
    if (HasChildren) {
      FWords >> Word;
    }
    return Node;
  }

private:
  generics::TQXGPInstruction<T>* InstructionOf(const std::string& Word) {
    if (Word == "nil") {
      return nullptr;
    }
    if (ParseReal(Word)) {
      for (generics::TQXGPInstruction<T>& Instruction : FEngine.Instructions()) {
        if (Instruction.Operation() == gpConstant) {
          return &Instruction;
        }
      }
    }
    return &FEngine.Instructions().GetItemByName(Word);
  }

  generics::IQXGeneticProgramEngine<T>& FEngine;
  std::istringstream FWords;
};

template <class T>
std::unique_ptr<generics::TQXGPNode<T>> ReadTree(generics::IQXGeneticProgramEngine<T>& Engine,
                                                 const std::string& Text) {
  return TTreeReader<T>(Engine, Text).Read();
}

/// An engine with an instruction set of its own, that writes down what the set tells it.
template <class T, class TBase = TPersistent>
class TTestEngine : public TBase, public generics::IQXGeneticProgramEngine<T> {
public:
  using TNode = generics::TQXGPNode<T>;
  using TInstruction = generics::TQXGPInstruction<T>;

  generics::TQXGPInstructions<T>& Instructions() override { return FInstructions; }
  std::unique_ptr<TNode> CreateNode(TInstruction* Instruction) override {
    ++CreatedNodes;
    return Binary ? std::unique_ptr<TNode>(generics::MakeNode<TShownBinaryNode<T>>(Instruction))
                  : std::unique_ptr<TNode>(generics::MakeNode<TShownTreeNode<T>>(Instruction));
  }
  int MaxNodeArity() const override { return LargestArity; }
  void InstructionUpdate(TInstruction* Instruction) override {
    Log += Instruction != nullptr ? "update " + Instruction->Name() + "; " : "update all; ";
  }
  void InstructionNotify(TInstruction& Instruction, TCollectionNotification Action) override {
    static constexpr const char* Names[] = {"added", "extracted", "deleted"};
    Log += std::string(Names[Action]) + " " + Instruction.Name() + "; ";
  }
  void InstructionOperationUpdate(TInstruction& Instruction) override {
    Log += "kind of " + Instruction.Name() + "; ";
  }

  TInstruction& AddInstruction(const std::string& Name, TGPGeneticInstruction Operation, int Arity = 0) {
    TInstruction& Added = FInstructions.Add();
    Added.SetName(Name);
    Added.SetOperation(Operation);
    if (Operation == gpFunction) {
      Added.SetArity(Arity);
    }
    return Added;
  }
  TInstruction& Function(const std::string& Name, int Arity) {
    return AddInstruction(Name, gpFunction, Arity);
  }
  TInstruction& Variable(const std::string& Name) { return AddInstruction(Name, gpVariable); }
  TInstruction& Constant(const std::string& Name, const T& Value) {
    TInstruction& Added = AddInstruction(Name, gpConstant);
    Added.SetValue(Value);
    return Added;
  }

  /// See `ReadTree`.
  std::unique_ptr<TNode> Tree(const std::string& Text) { return ReadTree<T>(*this, Text); }

  std::string TakeLog() { return std::exchange(Log, {}); }

  std::string Log;
  bool Binary = false;
  int LargestArity = 2147483647;
  int CreatedNodes = 0;

private:
  generics::TQXGPInstructions<T> FInstructions{this};
};

/// An engine with the functions Add, Mul and Neg, the variables x and y, and the constant c.
template <class T = TGAFloat>
class TArithmeticEngine : public TTestEngine<T> {
public:
  TArithmeticEngine() {
    using namespace generics;
    this->Function("Add", 2).OnExecute = [](auto&, TQXGPNode<T>& Node, TQXGPContext<T>* Context, T& Result) {
      Result = Node.ExecuteChild(0, Context) + Node.ExecuteChild(1, Context);
    };
    this->Function("Mul", 2).OnExecute = [](auto&, TQXGPNode<T>& Node, TQXGPContext<T>* Context, T& Result) {
      Result = Node.ExecuteChild(0, Context) * Node.ExecuteChild(1, Context);
    };
    this->Function("Neg", 1).OnExecute = [](auto&, TQXGPNode<T>& Node, TQXGPContext<T>* Context, T& Result) {
      Result = -Node.ExecuteChild(0, Context);
    };
    this->Variable("x");
    this->Variable("y");
    this->Constant("c", T(1.5));
    this->TakeLog();
  }
};

} // namespace qx::tests
