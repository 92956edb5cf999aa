#pragma once

// Definitions of GPNode.h: a tree as a line of a component stream.

#include <qx/foundation/QXGAConsts.h>
#include <qx/platform/PropertyText.h>
#include <qx/platform/SmallList.h>
#include <qx/program_trees/GPInstruction.h>
#include <qx/program_trees/GPInstructions.h>
#include <qx/program_trees/GPNode.h>

#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace qx::generics {

// --- Writing -----------------------------------------------------------------------------------------------

template <class T>
std::string TQXGPNode<T>::StateText() const {
  struct TLevel {
    const TQXGPNode* Node = nullptr;
    std::size_t NextSlot = 0;
  };
  constexpr std::size_t UsualDepth = 32;
  TSmallList<TLevel, UsualDepth> Levels;
  std::string Text;
  const auto Begin = [&](const TQXGPNode& Node) {
    Node.AddStateText(Text);
    if (Node.HasChildren()) {
      Text += '(';
      Levels.Push({&Node, 0});
    }
  };
  Begin(*this);
  while (!Levels.Empty()) {
    TLevel& Level = Levels.Last();
    const auto Slots = Level.Node->Slots();
    if (Level.NextSlot == Slots.size()) {
      Text += ')';
      static_cast<void>(Levels.Pop());
      continue;
    }
    if (Level.NextSlot > 0) {
      Text += ' ';
    }
    if (const TQXGPNode* const Child = Slots[Level.NextSlot++]) {
      Begin(*Child);
    } else {
      Text += '-';
    }
  }
  return Text;
}

// The instruction, by its name or, without one of its own, its place; the value, where it is not the
// instruction's.
template <class T>
void TQXGPNode<T>::AddStateText(std::string& Text) const {
  if (FInstruction == nullptr) {
    Text += '?';
  } else if (const auto* const Set = FInstruction->Collection();
             !FInstruction->Name().empty() &&
             (Set == nullptr || Set->FindItemName(FInstruction->Name()) == FInstruction)) {
    Text += TPropertyText<std::string>::Make(FInstruction->Name());
  } else {
    Text.append("#").append(std::to_string(FInstruction->Index()));
  }
  AddValueText(Text);
  if (const std::string Added = DoSaveState(); !Added.empty()) {
    Text.append("~").append(TPropertyText<std::string>::Make(Added));
  }
}

template <class T>
void TQXGPNode<T>::AddValueText(std::string& Text) const {
  if constexpr (HasPropertyText<T>) {
    if (!SameState(FValue, FInstruction != nullptr ? FInstruction->Value() : T())) {
      const std::string Value = TPropertyText<T>::Make(FValue);
      const bool Plain = Value.find_first_of(" ()~\"") == std::string::npos;
      Text.append("=").append(Plain ? Value : TPropertyText<std::string>::Make(Value));
    }
  } else {
    throw std::logic_error("A " + this->ClassName() + " has a value whose type has no text");
  }
}

// --- Reading -----------------------------------------------------------------------------------------------

template <class T>
class TQXGPNode<T>::TStateReader {
public:
  TStateReader(std::string_view Text, IQXGeneticProgramEngine<T>& Engine) : FText(Text), FEngine(Engine) {}

  TPointer Read() {
    TPointer Root = ReadNode();
    Begin(*Root);
    while (!FLevels.Empty()) {
      if (Take(')')) {
        static_cast<void>(FLevels.Pop());
        continue;
      }
      TLevel& Level = FLevels.Last();
      if (Level.NextSlot > 0 && !Take(' ')) {
        Refuse();
      }
      const int Slot = Level.NextSlot++;
      if (!Take('-')) {
        Begin(Level.Node->AttachChild(Slot, ReadNode()));
      }
    }
    if (!FText.empty()) {
      Refuse();
    }
    return Root;
  }

private:
  struct TLevel {
    TQXGPNode* Node = nullptr;
    int NextSlot = 0;
  };

  [[noreturn]] void Refuse() const {
    constexpr std::size_t Shown = 20;
    throw std::invalid_argument("the program cannot be read from \"" + std::string(FText.substr(0, Shown)) +
                                "\" on");
  }

  bool Take(char C) {
    const bool Found = FText.starts_with(C);
    FText.remove_prefix(Found ? 1 : 0);
    return Found;
  }

  void Begin(TQXGPNode& Node) {
    if (Take('(')) {
      FLevels.Push({&Node, 0});
    }
  }

  TPointer ReadNode() {
    TInstruction* const Instruction = ReadInstruction();
    TPointer Node = FEngine.CreateNode(Instruction);
    if (Node == nullptr) {
      throw std::logic_error("No node was made by the engine");
    }
    // Whatever the engine has given it.
    Node->FreeChildren();
    Node->FInstruction = Instruction;
    if (Take('=')) {
      ReadValue(*Node);
    } else {
      Node->SetValue(Instruction != nullptr ? Instruction->Value() : T());
    }
    if (Take('~')) {
      Node->DoLoadState(TakeQuoted(FText));
    }
    return Node;
  }

  TInstruction* ReadInstruction() {
    if (Take('?')) {
      return nullptr;
    }
    TQXGPInstructions<T>& Set = FEngine.Instructions();
    if (Take('#')) {
      int Index = -1;
      const auto Result = std::from_chars(FText.data(), FText.data() + FText.size(), Index);
      if (Result.ec != std::errc() || Index < 0 || Index >= Set.Count()) {
        Refuse();
      }
      FText.remove_prefix(static_cast<std::size_t>(Result.ptr - FText.data()));
      return &Set[Index];
    }
    return &Set.GetItemByName(TakeQuoted(FText));
  }

  void ReadValue(TQXGPNode& Node) {
    if constexpr (HasPropertyText<T>) {
      if (FText.starts_with('"')) {
        Node.SetValue(TPropertyText<T>::Parse(TakeQuoted(FText)));
      } else {
        const std::string_view Value = FText.substr(0, FText.find_first_of(" ()~"));
        Node.SetValue(TPropertyText<T>::Parse(Value));
        FText.remove_prefix(Value.size());
      }
    } else {
      Refuse();
    }
  }

  static constexpr std::size_t UsualDepth = 32;
  std::string_view FText;
  IQXGeneticProgramEngine<T>& FEngine;
  TSmallList<TLevel, UsualDepth> FLevels;
};

template <class T>
auto TQXGPNode<T>::FromStateText(std::string_view Text, IQXGeneticProgramEngine<T>& Engine) -> TPointer {
  try {
    return TStateReader(Text, Engine).Read();
  } catch (const EGPException& Error) { // an unknown instruction, or too many children
    throw std::invalid_argument(Error.what());
  }
}

template <class T>
void TQXGPNode<T>::DoLoadState(const std::string& /*Text*/) {
  throw std::invalid_argument("a " + this->ClassName() + " has no state of its own");
}

} // namespace qx::generics
