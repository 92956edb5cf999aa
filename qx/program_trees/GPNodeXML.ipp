#pragma once

// Definitions of GPNode.h: reading and writing an element.

#include <qx/foundation/QXCommon.h>
#include <qx/platform/SmallList.h>
#include <qx/program_trees/GPInstruction.h>
#include <qx/program_trees/GPInstructions.h>
#include <qx/program_trees/GPNode.h>
#include <qx/program_trees/QXGPDomainXML.h>

#include <string>
#include <utility>

namespace qx::generics {

template <class T>
void TQXGPNode<T>::LoadFromXML(const TXMLDnaType& Element) {
  const TXMLReadScope Reading(Element);
  struct TLevel {
    TQXGPNode* Node = nullptr;
    TXMLNode Next; // the element from which on the node's children have not been read
  };
  constexpr std::size_t UsualDepth = 32;
  TSmallList<TLevel, UsualDepth> Levels;
  const auto Read = [&Levels](TQXGPNode& Node, const TXMLDnaType& Source) {
    Node.DoLoadFromXML(Source);
    if (Node.FInstruction != nullptr) {
      Levels.Push({&Node, Source.FirstChild()});
    }
  };
  Read(*this, Element);
  while (!Levels.Empty()) {
    TLevel& Level = Levels.Last();
    const TXMLNode Next = Level.Next;
    if (!Next) {
      static_cast<void>(Levels.Pop());
      continue;
    }
    Level.Next = Next.NextSibling();
    if (Next.Tag() == "Child") {
      // The parent's instruction leads the child to the set until it knows its own.
      Read(Level.Node->CreateNode(Level.Node->FInstruction, *Level.Node), TXMLDnaType(Next));
    }
  }
}

template <class T>
void TQXGPNode<T>::DoLoadFromXML(const TXMLDnaType& Element) {
  TQXGPInstruction<T>* Found = nullptr;
  if (FInstruction != nullptr) {
    const std::string Name = Element.Instruction();
    const TQXGPInstructions<T>* const Set = FInstruction->Collection();
    if (Set == nullptr) {
      throw EGPException(FormatText(SUnknownInstruction, {Name}));
    }
    Found = &Set->GetItemByName(Name);
  }
  Clear();
  FInstruction = Found;
  if (Found != nullptr && Found->Operation() == gpConstant) {
    LoadValueFromXML(Element);
  }
}

template <class T>
void TQXGPNode<T>::SaveToXML(const TXMLDnaType& Element) const {
  struct TLevel {
    const TQXGPNode* Node = nullptr;
    std::size_t NextSlot = 0;
    TXMLNode Element;
  };
  constexpr std::size_t UsualDepth = 32;
  TSmallList<TLevel, UsualDepth> Levels;
  Element.Clear();
  DoSaveToXML(Element);
  Levels.Push({this, 0, Element});
  while (!Levels.Empty()) {
    TLevel& Level = Levels.Last();
    const auto Children = Level.Node->Slots();
    if (Level.NextSlot == Children.size()) {
      static_cast<void>(Levels.Pop());
    } else if (const TQXGPNode* const Child = Children[Level.NextSlot++]) {
      const TXMLDnaType ChildElement = TXMLDnaType(Level.Element).AddChild();
      Child->DoSaveToXML(ChildElement);
      Levels.Push({Child, 0, ChildElement});
    }
  }
}

template <class T>
void TQXGPNode<T>::DoSaveToXML(const TXMLDnaType& Element) const {
  if (FInstruction != nullptr) {
    Element.SetInstruction(FInstruction->DisplayName());
    if (FInstruction->Operation() == gpConstant) {
      SaveValueToXML(Element);
    }
  }
}

} // namespace qx::generics
