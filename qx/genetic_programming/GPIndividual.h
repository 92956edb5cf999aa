#pragma once

#include <qx/engine/Individual.h>
#include <qx/program_trees/QXGPDomainXML.h>
#include <qx/program_trees/QXGenerics.GeneticProgramEngine.h>

#include <concepts>
#include <span>
#include <string>
#include <vector>

namespace qx::generics {

template <class T>
class TQXGPPopulation;

/// An individual whose genome is a program tree. It also keeps a list of the tree's nodes, from which
/// crossover and mutation points are picked.
///
/// The list is made anew by every change that goes through the individual. Whoever changes the shape of the
/// tree directly calls `FlattenDNA` afterwards. The individual belongs in a population whose owner is an
/// engine; that makes the nodes.
template <class T>
class TQXGPIndividual : public TQXIndividual {
public:
  using TNode = TQXGPNode<T>;
  using TNodePointer = typename TNode::TPointer;

  /// Root of the tree, made by `CreateDNA` when it is first asked for; nullptr when that made none, or none
  /// was assigned. Raises EGPException outside any engine.
  TNode* DNA();
  const TNode* DNA() const { return const_cast<TQXGPIndividual&>(*this).DNA(); }
  /// Copies a tree into the own one.
  void SetDNA(const TNode& Value);
  /// Replaces the tree by the given one, or by none.
  void AssignDNA(TNodePointer Value);

  /// All nodes of the tree, each before its children. Empty until the first `FlattenDNA`.
  const std::vector<TNode*>& FlattenedDNA() const {
    Settle();
    return FFlattenedDNA;
  }
  /// Makes the list anew and marks the fitness as stale; the collection is not told.
  virtual void FlattenDNA();

  /// While it lives, `Assign` notes which program is to be copied, and the copy is made when somebody asks
  /// for the individual's program, at the latest at the end. Meanwhile the source must not change.
  class TCopyingLater;
  /// Makes the copy that has been put off, if there is one, and puts no other off.
  void CopyNow();

  /// Asks the memory for the nodes on the list, ahead of a walk over them.
  void FetchNodes() const;

  TQXGPPopulation<T>* Collection() const;
  void SetCollection(TQXGPPopulation<T>& Value);

  /// Copies the program too. Between individuals of two engines the copy is made of this one's nodes and
  /// instructions (see `TQXGPInstructions::Counterpart`); raises EGPException, and keeps the own program,
  /// when an instruction is missing here.
  void Assign(const TPersistent& Source) override;

  /// Runs the program. Raises what the nodes raise; without a tree the result is the default value.
  virtual T Execute(TQXGPContext<T>* Context);

  /// Puts a tree in the place of the subtree `Node`, which is handed out. The new one becomes the last child
  /// of its parent or, in a binary node, takes the free slot. Raises, and leaves everything as it was:
  /// std::invalid_argument when `Node` is not in this tree, and what `AddChild` of a node raises.
  [[nodiscard]] virtual TNodePointer Graft(TNode& Node, TNodePointer&& NewNode);
  /// As `Graft`, but the new tree takes the very place of the subtree among the children of its parent. It
  /// must be detached.
  TNodePointer Replace(TNode& Node, TNodePointer&& NewNode);
  /// Swaps the subtree `Node` with a subtree of `Mate`; each becomes the last child, or takes the free slot.
  /// Raises as `Graft`, and std::invalid_argument when one of the subtrees contains another.
  virtual void Crossover(TNode& Node, TQXGPIndividual& Mate, TNode& MateNode);

  /// Picks a node, preferring functions with arguments the more the closer the probability is to 1: see
  /// `DoSelectNode`. nullptr when there is none.
  TNode* SelectNode(TGAProbability NonTerminalProbability);
  /// The same among the nodes whose instructions are of certain kinds.
  TNode* SelectNode(TGAProbability NonTerminalProbability, TGPGeneticInstructions Operations);
  /// Picks uniformly among the nodes whose size (else depth) is at most `Limit`: one integer draw. nullptr,
  /// and no draw, when there is none.
  template <std::same_as<bool> TBoolean> // so that a list of kinds in braces is none
  TNode* SelectNode(int Limit, TBoolean BySize) {
    return SelectWithin(Limit, BySize);
  }

  /// The display name, a colon, and the program.
  virtual std::string ToString() const;

  /// Read and write an individual's element; any other one is passed over. A tree deeper than the limits of
  /// documents is written, and read with limits that allow it.
  void LoadFromXML(const TXMLNode& Node) override;
  void SaveToXML(const TXMLNode& Node) override;
  /// Reads name and tree. Raises EGPException for an instruction that the set does not have; then the name is
  /// the element's, and the tree partly read.
  virtual void LoadFromXML(const TXMLIndividualType& Element);
  virtual void SaveToXML(const TXMLIndividualType& Element);

protected:
  /// Adds the program, when the values of its nodes have a text (see `TPropertyText`).
  void DefineProperties(TFiler& Filer) override;
  /// Adds whether there is a list of nodes. Raises std::logic_error when values have no text.
  void DefineState(TFiler& Filer) override;
  /// Makes the tree of a new individual: a root without instruction, of the engine's node class.
  virtual TNodePointer CreateDNA();
  /// One real draw, which is not used; then, until a node is chosen: one integer draw picks a node, one real
  /// draw is added to a sum in single precision. A node with arguments is chosen when the sum exceeds
  /// 1 - `NonTerminalProbability`, any other when it exceeds that probability. Raises std::invalid_argument,
  /// and draws nothing, for a probability that no node could ever meet.
  virtual TNode* DoSelectNode(std::span<TNode* const> Nodes, TGAProbability NonTerminalProbability);

private:
  class TPlace;

  void AssignProgram(const TQXGPIndividual& Source);
  TNodePointer Exchange(TNode& Node, TNodePointer&& NewNode, void (TPlace::*Store)(TNodePointer&&));
  TNode* SelectWithin(int Limit, bool BySize);
  static bool TakesArguments(const TNode& Node);
  static void RequireSelectable(std::span<TNode* const> Nodes, TGAProbability NonTerminalProbability);
  IQXGeneticProgramEngine<T>* Engine() const;
  void RequireOwn(const TNode& Node) const;
  static void Detach(TNode& Node);
  static bool IsWithin(const TNode* Inner, const TNode& Outer);

  // Makes the copy that has been put off.
  void Settle() const {
    if (FCopiesLater) [[unlikely]] {
      const_cast<TQXGPIndividual&>(*this).CopyNow();
    }
  }
  void CopyProgram(const TQXGPIndividual& Source);

  bool FHasDNA = false; // whether the tree, or that there is none, has been made and is no copy to come
  bool FCopiesLater = false;
  const TQXGPIndividual* FCopySource = nullptr; // of the copy to come
  TNodePointer FDNA;
  std::vector<TNode*> FFlattenedDNA;
};

template <class T>
class TQXGPIndividual<T>::TCopyingLater {
public:
  explicit TCopyingLater(TQXGPIndividual& Individual) : FIndividual(Individual) {
    static_cast<void>(Individual.DNA());
    Individual.FCopiesLater = true;
  }
  TCopyingLater(const TCopyingLater&) = delete;
  TCopyingLater& operator=(const TCopyingLater&) = delete;
  /// Without `End` on the way, the individual keeps the program that it had.
  ~TCopyingLater() {
    FIndividual.FCopiesLater = false;
    FIndividual.FCopySource = nullptr;
    FIndividual.FHasDNA = true;
  }
  void End() { FIndividual.CopyNow(); }

private:
  TQXGPIndividual& FIndividual;
};

extern template class TQXGPIndividual<TGAFloat>;
extern template class TQXGPIndividual<Variant>;

} // namespace qx::generics
