#pragma once

#include <qx/genetic_programming/ProgramEngine.h>
#include <qx/genetic_programming/QXGeneticProgrammingXML.h>
#include <qx/platform/Component.h>
#include <qx/platform/Strings.h>

#include <iosfwd>
#include <string>

namespace qx::generics {

/// Holds one program and its instructions, to run it apart from the evolution that found it.
///
///     executor.Instructions().AssignAll(gp.Instructions());
///     executor.SetGPProgram(*gp.FittestIndividual()->DNA());
///     y = executor.Execute(&context);
///
/// Changes of the instruction set leave the program; where one of its instructions goes, its nodes have none,
/// and running them raises.
///
/// A document of genetic programming is read and written, of which only the domain counts: the instructions,
/// whose handlers are the host's to give, and as the program the first individual of the population. A load
/// that raises leaves the executor as it was.
template <class T>
class TQXCustomGeneticProgrammingExecutor : public TQXProgramEngine<TComponent, T> {
  using TBase = TQXProgramEngine<TComponent, T>;

public:
  using typename TBase::TInstruction;
  using typename TBase::TNode;
  using typename TBase::TNodePointer;

  explicit TQXCustomGeneticProgrammingExecutor(TComponent* Owner = nullptr) : TBase(Owner) {}

  /// Root of the program, or nullptr.
  TNode* GPProgram() const { return FGPProgram.get(); }
  /// Copies a tree. The copy refers to the own instructions: to the `Counterpart` of each. Raises
  /// EGPException, and keeps the former program, when one has none.
  void SetGPProgram(const TNode& Value);

  /// The program and its instructions as the lines of a domain document. They are made when they are asked
  /// for and there are none; a new program discards them.
  const TStrings& GPProgramLines();
  /// Keeps the lines and leaves the program; see `Parse`.
  void SetGPProgramLines(const TStrings& Value) { FGPProgramLines.Assign(Value); }
  /// Reads instructions and program from the lines. Raises as a load does.
  void Parse();

  /// Runs the program; without one the result is the default value. Raises what nodes raise. Until it ends,
  /// program and instructions cannot be changed: std::logic_error.
  T Execute(TQXGPContext<T>* Context) const;

  /// Copies the instructions, with their handlers, and the program of another executor.
  void Assign(const TPersistent& Source) override;

  /// The domain of a document; "Reproduction" and settings are passed over.
  virtual void LoadFromXML(const TXMLGeneticProgram& Document) { LoadFromXML(Document.Domain()); }
  virtual void SaveToXML(const TXMLGeneticProgram& Document) { SaveToXML(Document.Domain()); }
  /// Instructions are merged by name. Without any instruction the program stays. Raises EGPException for a
  /// program of an instruction that is none.
  virtual void LoadFromXML(const TXMLGPDomainType& Domain);
  virtual void SaveToXML(const TXMLGPDomainType& Domain);
  virtual void LoadFromStream(std::istream& Stream);
  virtual void SaveToStream(std::ostream& Stream);
  virtual void LoadFromFile(const std::string& FileName);
  /// The file is replaced as a whole, or not at all; see `ReplaceFile`.
  virtual void SaveToFile(const std::string& FileName);

protected:
  void RequireChangeable(const char* Call) const override;
  void InstructionUpdate(TInstruction* /*Instruction*/) override {}
  void InstructionNotify(TInstruction& Instruction, TCollectionNotification Action) override;
  void InstructionOperationUpdate(TInstruction& /*Instruction*/) override {}

private:
  void StoreProgram(TNodePointer Program);
  void GenerateXML();

  mutable int FExecuting = 0;
  TNodePointer FGPProgram;
  TStrings FGPProgramLines;
};

extern template class TQXCustomGeneticProgrammingExecutor<TGAFloat>;
extern template class TQXCustomGeneticProgrammingExecutor<Variant>;

} // namespace qx::generics
