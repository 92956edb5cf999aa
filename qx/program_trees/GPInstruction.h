#pragma once

#include <qx/platform/CollectionItem.h>
#include <qx/platform/Event.h>
#include <qx/program_trees/GPContext.h>
#include <qx/program_trees/GeneticProgramEngine.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <typeinfo>

namespace qx {

class TXMLInstructionType;
class TXMLVariableInstructionType;
class TXMLConstantInstructionType;
class TXMLFunctionInstructionType;
class TXMLGPInstructions;

} // namespace qx

namespace qx::generics {

/// A handler of `OnExecute` that is a plain function and needs nothing but the node and the context. It does
/// what any handler does, and a function whose handler is one is evaluated the faster for it.
template <class T>
struct TQXGPOperation {
  using TSignature = void(TQXGPInstruction<T>& Sender, TQXGPNode<T>& Node, TQXGPContext<T>* Context,
                          T& Result);
  T (*Function)(TQXGPNode<T>& Node, TQXGPContext<T>* Context);

  void operator()(TQXGPInstruction<T>& /*Sender*/, TQXGPNode<T>& Node, TQXGPContext<T>* Context,
                  T& Result) const {
    Result = Function(Node, Context);
  }
};

/// How a node is evaluated: by `Execute` of its instruction or, where that would call nothing of the host's,
/// without virtual calls.
enum TGPEvaluation : std::uint8_t { evNotKnown, evInFull, evVariable, evConstant, evOperation };

/// The slot of `OnExecute`, which forgets the way of evaluation with its handler.
template <class T>
class TQXGPExecuteEvent final : public TQXEvent<typename TQXGPOperation<T>::TSignature> {
  using TBase = TQXEvent<typename TQXGPOperation<T>::TSignature>;

public:
  explicit TQXGPExecuteEvent(TGPEvaluation& Evaluation) : FEvaluation(Evaluation) {}
  using TBase::operator=;
  TQXGPExecuteEvent& operator=(const TQXGPExecuteEvent& Source) {
    TBase::operator=(Source);
    return *this;
  }

protected:
  void HandlerChanged(bool /*WasAssigned*/) override { FEvaluation = evNotKnown; }

private:
  TGPEvaluation& FEvaluation;
};

/// What a node of a program does: a function of its children, a variable of the context, or a constant.
///
/// The kind is tied to the arity: a positive arity makes a function, and what is made no function gets arity
/// 0. An instruction has a name, unique in its set without regard to case. A node refers to its instruction
/// and does not own it.
template <class T>
class TQXGPInstruction : public TCollectionItem {
public:
  /// Called after the built-in evaluation; sets the result.
  TQXGPExecuteEvent<T> OnExecute{FEvaluation};
  /// Called by `Initialize`.
  TQXEvent<void(TQXGPInstruction& Sender)> OnInitialize;
  /// Called for each node of this instruction that a component makes anew, in an initial program or by
  /// mutation, to give it a value of its own; never for a copy.
  TQXEvent<void(TQXGPInstruction& Sender, TQXGPNode<T>& Node)> OnInitializeNode;

  ~TQXGPInstruction() override;

  /// Also the key of a variable's value in a context.
  const std::string& Name() const { return FName; }
  /// Raises EGPException when an instruction of the set has the name already, this one under another case
  /// included.
  void SetName(std::string_view Value);

  const std::string& Comment() const { return FComment; }
  void SetComment(std::string_view Value) { FComment = Value; }

  /// Number of arguments.
  int Arity() const { return FArity; }
  /// A negative value becomes 0, one above the engine's limit becomes that. A positive arity makes a
  /// function.
  void SetArity(int Value);

  TGPGeneticInstruction Operation() const { return FOperation; }
  /// A variable or a constant gets arity 0.
  void SetOperation(TGPGeneticInstruction Value);

  /// Copied into every new node of the instruction.
  const T& Value() const { return FValue; }
  void SetValue(const T& Value) { FValue = Value; }

  /// The set that holds the instruction, or nullptr.
  TQXGPInstructions<T>* Collection() const { return FSet; }
  /// The engine of that set, or nullptr.
  IQXGeneticProgramEngine<T>* Engine() const;

  /// Evaluates a node of this instruction. More children than arguments are no error. Raises EGPException
  /// when there are fewer; std::invalid_argument when a variable has no context.
  virtual T Execute(TQXGPNode<T>& Node, TQXGPContext<T>* Context);
  /// Whether this is a function that has neither a handler of `OnExecute` nor a class of its own to evaluate
  /// it.
  bool IsWithoutHandler() const;
  /// Prepares the instruction for a run.
  virtual void Initialize() { OnInitialize(*this); }

  /// Copies name (whether or not it is taken), comment, arity, value and kind of another instruction.
  void Assign(const TPersistent& Source) override;
  /// Copies the handlers of another instruction; does nothing for any other source.
  virtual void AssignEvents(const TPersistent& Source);

  /// As in "Add 'sum' gpFunction".
  std::string ToString() const;

  /// Reads any instruction element; its tag tells the kind. A function that becomes something else so keeps
  /// its arity, and the engine hears of a change but not of one of kind. Raises EXMLError, before anything
  /// has changed, for an arity that is none.
  virtual void LoadFromXML(const TXMLInstructionType& Element);
  /// Adds an element to the list of the instruction's kind and writes into that.
  virtual void SaveToXML(const TXMLGPInstructions& Element);
  virtual void SaveToXML(const TXMLVariableInstructionType& Element);
  virtual void SaveToXML(const TXMLConstantInstructionType& Element);
  /// Raises std::out_of_range for an arity above 255.
  virtual void SaveToXML(const TXMLFunctionInstructionType& Element);

protected:
  /// The built-in evaluation: the value of a variable, or the default one when the context has none; the
  /// node's value for a constant; the default value for a function.
  virtual T DoExecute(TQXGPNode<T>& Node, TQXGPContext<T>* Context);
  /// The class whose `Execute` and `DoExecute` are the ones above: a node whose instruction is of that very
  /// class is evaluated without a call of them. A class that leaves both as they are may name itself.
  virtual const std::type_info& PlainClass() const { return typeid(TQXGPInstruction); }
  /// Tells the set of a changed kind.
  virtual void OperationChanged();
  /// Read and write the value. Nothing here; kinds whose values have a text override them.
  virtual void LoadValueFromXML(const TXMLInstructionType& /*Element*/) {}
  virtual void SaveValueToXML(const TXMLInstructionType& /*Element*/) {}

  /// Copies all fields but the handlers as they are, and tells nobody; for loads that are undone. A derived
  /// class adds its own fields.
  virtual void Store(const TQXGPInstruction& Source);
  /// The value takes part when its type has a text (see `TPropertyText`); without one there is no checkpoint:
  /// std::logic_error.
  void DefineProperties(TFiler& Filer) override;
  std::string GetDisplayName() const override;
  void CollectionChanged(TOwnedCollection* Value) override;

private:
  friend class TQXGPInstructions<T>;
  friend class TQXGPNode<T>;
  template <class>
  friend struct TInstructionContent;

  void RequireChangeable(const char* Call) const;
  void StoreArity(int Value);
  void StoreOperation(TGPGeneticInstruction Value) {
    FOperation = Value;
    FEvaluation = evNotKnown;
  }
  void LearnEvaluation();
  // Stores a name, taken or not.
  void StoreName(std::string_view Value);
  void LeaveSet();
  void SaveNames(const TXMLInstructionType& Element) const;
  [[noreturn]] void RaiseMissingArguments(int Count) const;
  [[noreturn]] void RaiseMissingContext() const;

  int FArity = 0;
  std::string FName;
  std::string FComment;
  TGPGeneticInstruction FOperation = gpVariable;
  TGPEvaluation FEvaluation = evNotKnown;
  T FValue{};
  TQXGPInstructions<T>* FSet = nullptr;
  TDictionaryHint FHint;                                                  // where the context had the value
  T (*FFunction)(TQXGPNode<T>& Node, TQXGPContext<T>* Context) = nullptr; // that of an `evOperation`
};

/// What `TNamedItemsReload` needs of instructions.
template <class T>
struct TInstructionContent {
  static void Store(TQXGPInstruction<T>& Target, const TQXGPInstruction<T>& Source) { Target.Store(Source); }
  static std::string Key(std::string_view Name);
};

extern template class TQXGPInstruction<TGAFloat>;
extern template class TQXGPInstruction<Variant>;

} // namespace qx::generics
