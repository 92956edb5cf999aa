#pragma once

// Definitions of GPInstruction.h.

#include <qx/foundation/EnumPropertyText.h>
#include <qx/foundation/QXCommon.h>
#include <qx/platform/Filer.h>
#include <qx/program_trees/GPInstruction.h>
#include <qx/program_trees/GPInstructions.h>
#include <qx/program_trees/GPNode.h>
#include <qx/program_trees/QXGPDomainXML.h>

#include <stdexcept>
#include <string>

namespace qx::generics {

template <class T>
TQXGPInstruction<T>::~TQXGPInstruction() {
  LeaveSet();
}

template <class T>
void TQXGPInstruction<T>::SetName(std::string_view Value) {
  if (Value == FName) {
    return;
  }
  if (FSet != nullptr && FSet->IndexOf(Value) >= 0) {
    throw EGPException(std::string(SInstructionNotUnique));
  }
  RequireChangeable("SetName");
  StoreName(Value);
  Changed(false);
}

template <class T>
void TQXGPInstruction<T>::SetArity(int Value) {
  if (Value == FArity) {
    return;
  }
  RequireChangeable("SetArity");
  if (Value < 0) {
    StoreArity(0);
  } else {
    const auto* const Limits = Engine();
    StoreArity(Limits != nullptr && Value > Limits->MaxNodeArity() ? Limits->MaxNodeArity() : Value);
  }
  if (FArity > 0) {
    SetOperation(gpFunction);
  }
  Changed(false);
}

template <class T>
void TQXGPInstruction<T>::SetOperation(TGPGeneticInstruction Value) {
  if (CheckedEnum(Value, "Operation") == FOperation) {
    return;
  }
  RequireChangeable("SetOperation");
  StoreOperation(Value);
  if (Value != gpFunction) {
    SetArity(0);
  }
  OperationChanged();
}

template <class T>
IQXGeneticProgramEngine<T>* TQXGPInstruction<T>::Engine() const {
  return FSet != nullptr ? FSet->Engine() : nullptr;
}

template <class T>
T TQXGPInstruction<T>::Execute(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  if (FArity > 0) {
    const int Count = Node.ChildCount();
    if (Count < FArity) [[unlikely]] {
      RaiseMissingArguments(Count);
    }
  }
  T Result = DoExecute(Node, Context);
  OnExecute(*this, Node, Context, Result);
  return Result;
}

template <class T>
T TQXGPInstruction<T>::DoExecute(TQXGPNode<T>& Node, TQXGPContext<T>* Context) {
  switch (FOperation) {
  case gpVariable: {
    if (Context == nullptr) [[unlikely]] {
      RaiseMissingContext();
    }
    const T* const Found = Context->Values().Find(FName, FHint);
    return Found != nullptr ? *Found : T();
  }
  case gpConstant:
    return Node.Value();
  case gpFunction:
    break;
  }
  return T();
}

template <class T>
bool TQXGPInstruction<T>::IsWithoutHandler() const {
  return FOperation == gpFunction && OnExecute == nullptr && typeid(*this) == PlainClass();
}

template <class T>
void TQXGPInstruction<T>::LearnEvaluation() {
  FEvaluation = evInFull;
  if (typeid(*this) != PlainClass()) {
    return;
  }
  if (FOperation == gpFunction) {
    const auto* const Operation = OnExecute.template Target<TQXGPOperation<T>>();
    if (Operation != nullptr && FArity > 0) {
      FFunction = Operation->Function;
      FEvaluation = evOperation;
    }
  } else if (OnExecute == nullptr) {
    FEvaluation = FOperation == gpVariable ? evVariable : evConstant;
  }
}

template <class T>
void TQXGPInstruction<T>::Assign(const TPersistent& Source) {
  const auto* const Instruction = SourceAs<TQXGPInstruction>(Source);
  if (Instruction == nullptr) {
    TCollectionItem::Assign(Source);
    return;
  }
  RequireChangeable("Assign");
  StoreName(Instruction->FName);
  FComment = Instruction->FComment;
  StoreArity(Instruction->FArity);
  FValue = Instruction->FValue;
  if (Instruction->FOperation != FOperation) {
    SetOperation(Instruction->FOperation);
  } else {
    Changed(false);
  }
}

template <class T>
void TQXGPInstruction<T>::AssignEvents(const TPersistent& Source) {
  if (const auto* Instruction = SourceAs<TQXGPInstruction>(Source)) {
    OnInitialize = Instruction->OnInitialize;
    OnInitializeNode = Instruction->OnInitializeNode;
    OnExecute = Instruction->OnExecute;
  }
}

template <class T>
std::string TQXGPInstruction<T>::ToString() const {
  return DisplayName() + " '" + FComment + "' " + std::string(EnumName(FOperation));
}

template <class T>
void TQXGPInstruction<T>::LoadFromXML(const TXMLInstructionType& Element) {
  const TXMLReadScope Reading(Element);
  RequireChangeable("LoadFromXML");
  const std::string Name = Element.Name();
  const int Arity = Element.IsFunction() ? TXMLFunctionInstructionType(Element).Arity() : 0;
  const bool Renamed = Name != DisplayName();
  if (Renamed) {
    StoreName(Name);
  }
  FComment = Element.Comment();
  const TGPGeneticInstruction Former = FOperation;
  if (Element.IsFunction()) {
    SetArity(Arity);
    StoreOperation(gpFunction);
  } else {
    StoreOperation(Element.IsVariable() ? gpVariable : gpConstant);
  }
  LoadValueFromXML(Element);
  if (Renamed || FOperation != Former) {
    Changed(false);
  }
}

template <class T>
void TQXGPInstruction<T>::SaveToXML(const TXMLGPInstructions& Element) {
  switch (FOperation) {
  case gpVariable:
    SaveToXML(Element.AddVariable());
    break;
  case gpConstant:
    SaveToXML(Element.AddConstant());
    break;
  case gpFunction:
    TXMLFunctionInstructionType::RequireArity(DisplayName(), FArity);
    SaveToXML(Element.AddFunction());
    break;
  }
}

template <class T>
void TQXGPInstruction<T>::SaveToXML(const TXMLVariableInstructionType& Element) {
  SaveNames(Element);
  SaveValueToXML(Element);
}

template <class T>
void TQXGPInstruction<T>::SaveToXML(const TXMLConstantInstructionType& Element) {
  SaveNames(Element);
  SaveValueToXML(Element);
}

template <class T>
void TQXGPInstruction<T>::SaveToXML(const TXMLFunctionInstructionType& Element) {
  SaveNames(Element);
  Element.SetArity(FArity);
}

template <class T>
void TQXGPInstruction<T>::SaveNames(const TXMLInstructionType& Element) const {
  Element.SetName(DisplayName());
  Element.SetComment(FComment);
}

template <class T>
void TQXGPInstruction<T>::RequireChangeable(const char* Call) const {
  if (FSet != nullptr) {
    FSet->RequireChangeable(Call);
  }
}

template <class T>
void TQXGPInstruction<T>::StoreArity(int Value) {
  if (FSet != nullptr && (Value > 0) != (FArity > 0)) {
    FSet->Flip(*this);
  }
  FArity = Value;
  FEvaluation = evNotKnown;
}

template <class T>
void TQXGPInstruction<T>::OperationChanged() {
  if (FSet != nullptr) {
    FSet->InstructionOperationUpdate(*this);
  }
  Changed(false);
}

template <class T>
std::string TQXGPInstruction<T>::GetDisplayName() const {
  return FName.empty() ? TCollectionItem::GetDisplayName() : FName;
}

template <class T>
void TQXGPInstruction<T>::CollectionChanged(TOwnedCollection* Value) {
  LeaveSet();
  if (auto* const Set = dynamic_cast<TQXGPInstructions<T>*>(Value)) {
    if (!FName.empty()) {
      Set->FIndex.insert(this);
    }
    FSet = Set;
  }
}

template <class T>
void TQXGPInstruction<T>::StoreName(std::string_view Value) {
  std::string Name(Value);
  FHint = {};
  if (FSet != nullptr) {
    FSet->Rename(*this, std::move(Name));
  } else {
    FName = std::move(Name);
  }
}

template <class T>
void TQXGPInstruction<T>::LeaveSet() {
  if (FSet != nullptr && !FName.empty()) {
    FSet->FIndex.erase(FSet->PlaceInIndex(*this));
  }
  if (FSet != nullptr) {
    FSet->ForgetFlipped(*this);
  }
  FSet = nullptr;
}

template <class T>
void TQXGPInstruction<T>::RaiseMissingArguments(int Count) const {
  throw EGPException(FormatText(SInvalidNumInstructionArgs, {std::to_string(Count), DisplayName()}));
}

template <class T>
void TQXGPInstruction<T>::RaiseMissingContext() const {
  throw std::invalid_argument("The variable \"" + FName + "\" has no context to take its value from");
}

template <class T>
void TQXGPInstruction<T>::DefineProperties(TFiler& Filer) {
  TCollectionItem::DefineProperties(Filer);
  // A state may have what the setters do not make: a name twice, a variable with an arity.
  Filer.Property("Name", FName, !FName.empty(), [&](const std::string& Read) {
    if (Filer.Exact()) {
      StoreName(Read);
      Changed(false);
    } else {
      SetName(Read);
    }
  });
  Filer.Property("Comment", FComment, !FComment.empty(),
                 [this](const std::string& Read) { SetComment(Read); });
  Filer.Property("Arity", FArity, FArity != 0, [this](int Read) { SetArity(Read); });
  Filer.Property("Operation", FOperation, FOperation != gpVariable, [&](TGPGeneticInstruction Read) {
    if (Filer.Exact()) {
      StoreOperation(Read);
      OperationChanged();
    } else {
      SetOperation(Read);
    }
  });
  if constexpr (HasPropertyText<T>) {
    Filer.Property("Value", FValue, !SameState(FValue, T()), [this](const T& Read) { SetValue(Read); });
  } else if (Filer.Exact()) {
    throw std::logic_error("The value of " + DisplayName() + " is of a type that has no text");
  }
}

template <class T>
void TQXGPInstruction<T>::Store(const TQXGPInstruction& Source) {
  StoreName(Source.FName);
  FComment = Source.FComment;
  StoreArity(Source.FArity);
  StoreOperation(Source.FOperation);
  FValue = Source.FValue;
}

template <class T>
std::string TInstructionContent<T>::Key(std::string_view Name) {
  return LowerText(Name);
}

} // namespace qx::generics
