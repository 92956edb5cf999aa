#pragma once

#include <qx/platform/Collection.h>
#include <qx/platform/Text.h>
#include <qx/program_trees/GPInstruction.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>

namespace qx::generics {

/// The instructions that programs are built from: an ordered set, whose names are unique without regard to
/// case. It tells the engine that owns it of every change.
template <class T>
class TQXGPInstructions : public TTypedCollection<TQXGPInstruction<T>, TOwnedCollection> {
  using TBase = TTypedCollection<TQXGPInstruction<T>, TOwnedCollection>;

public:
  /// @param Owner  the object that the set belongs to, or nullptr; when it is an engine, the set tells it of
  ///               changes. It is asked now whether it is one, so it must be whole.
  explicit TQXGPInstructions(TPersistent* Owner,
                             TItemClass<TQXGPInstruction<T>> ItemClass = ItemClassOf<TQXGPInstruction<T>>());
  ~TQXGPInstructions() override;

  /// The owner when it is an engine, else nullptr.
  IQXGeneticProgramEngine<T>* Engine() const { return FEngine; }

  /// Index of the first instruction of that name, compared without case, or -1.
  int IndexOf(std::string_view Name) const;
  /// The instruction of that name, or nullptr.
  TQXGPInstruction<T>* FindItemName(std::string_view Name) const;
  /// Raises EGPException when no instruction has the name.
  TQXGPInstruction<T>& GetItemByName(std::string_view Name) const;
  /// What stands here for an instruction of another set: the one at the same position when it has the same
  /// name, else the one of that name. Raises EGPException when there is none.
  TQXGPInstruction<T>& Counterpart(const TQXGPInstruction<T>& Foreign) const;

  void Move(int From, int To) override;
  /// Replaces the instructions by copies of those of another set of the same kind, handlers included; does
  /// nothing for any other source.
  void AssignAll(const TPersistent& Source);

  /// Tells the engine that an instruction's kind changed.
  virtual void InstructionOperationUpdate(TQXGPInstruction<T>& Instruction);
  /// Raises what the engine raises when it cannot do with a change now.
  void RequireChangeable(const char* Call) const {
    if (FEngine != nullptr) {
      FEngine->RequireChangeable(Call);
    }
  }

  // Instructions that began or ceased to take arguments since `ForgetFlipped`: whether there are some, and
  // whether this is the only one.
  bool AnyFlipped() const { return FFlipped != nullptr || FManyFlipped; }
  bool OnlyFlipped(const TQXGPInstruction<T>& Instruction) const {
    return FFlipped == &Instruction && !FManyFlipped;
  }
  void ForgetFlipped(const TQXGPInstruction<T>& Instruction) {
    FFlipped = FFlipped == &Instruction ? nullptr : FFlipped;
  }
  void ForgetFlipped() {
    FFlipped = nullptr;
    FManyFlipped = false;
  }

  /// Merges the elements into the set: an instruction of an element's name reads it, else a new one does.
  /// Functions come first, then variables, constants, float constants and variant constants. Raises
  /// EXMLError, before anything has changed, for an arity that is none.
  virtual void LoadFromXML(const TXMLGPInstructions& Element);
  /// Appends an element for each instruction. Raises std::out_of_range for an arity above 255.
  virtual void SaveToXML(const TXMLGPInstructions& Element);

protected:
  /// Into a string list: one line for each instruction, its display name, with the instruction as object.
  void AssignTo(TPersistent& Dest) const override;
  void RequireInsertable() const override;
  void RequireRemovable(const char* Call) const override;
  void Notify(TCollectionItem& Item, TCollectionNotification Action) override;
  void Update(TCollectionItem* Item) override;

private:
  friend class TQXGPInstruction<T>;

  // Those that have a name, by that; of equal names the first one in the list counts.
  struct THash {
    using is_transparent = void;
    std::size_t operator()(std::string_view Name) const;
    std::size_t operator()(const TQXGPInstruction<T>* Instruction) const {
      return (*this)(std::string_view(Instruction->Name()));
    }
  };
  struct TEqual {
    using is_transparent = void;
    static std::string_view NameOf(std::string_view Name) { return Name; }
    static std::string_view NameOf(const TQXGPInstruction<T>* Instruction) { return Instruction->Name(); }
    template <class TLeft, class TRight>
    bool operator()(const TLeft& Left, const TRight& Right) const {
      return SameText(NameOf(Left), NameOf(Right));
    }
  };
  using TIndex = std::unordered_multiset<TQXGPInstruction<T>*, THash, TEqual>;

  typename TIndex::const_iterator PlaceInIndex(const TQXGPInstruction<T>& Instruction) const;
  void Rename(TQXGPInstruction<T>& Instruction, std::string Name);
  void Flip(const TQXGPInstruction<T>& Instruction) {
    FManyFlipped = FManyFlipped || (FFlipped != nullptr && FFlipped != &Instruction);
    FFlipped = &Instruction;
  }
  void LoadItemFromXML(const TXMLInstructionType& Element);

  IQXGeneticProgramEngine<T>* FEngine;
  TIndex FIndex;
  const TQXGPInstruction<T>* FFlipped = nullptr;
  bool FManyFlipped = false;
};

extern template class TQXGPInstructions<TGAFloat>;
extern template class TQXGPInstructions<Variant>;

} // namespace qx::generics
