#pragma once

// Component streams: the stored properties of a component as text, and back; or its whole state.
//
//     TQXGeneticAlgorithm {
//       Name = "packer"
//       InitialPopulation = 400
//       Operations = [goCrossover goMutate]
//       Genes {
//         TQXGAGene {
//           GeneType = gtInteger
//         }
//       }
//     }

#include <qx/platform/PropertyText.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qx {

class TComponent;
class TCollectionItem;
class TOwnedCollection;
class TPersistent;

/// A component stream that does not read: its message names the line and, where there is one, the property.
class EPropertyError : public std::runtime_error {
public:
  EPropertyError(const std::string& Message, int Line);
  int Line() const { return FLine; }

private:
  int FLine;
};

/// Goes through the stored properties of an object, one call a property in the order of the stream, to write
/// them or to read them back: see `TPersistent::DefineProperties`.
class TFiler {
public:
  virtual ~TFiler() = default;

  /// Whether properties go out rather than come in: a value that is dear to make is needed only then.
  virtual bool Writes() const = 0;
  /// Whether the stream holds a whole state rather than what differs from the defaults: then every property
  /// is stored, and one that is missing is an error.
  virtual bool Exact() const = 0;
  /// Whether what is read is applied: a stream is gone through once before that, to see whether it reads.
  virtual bool Applies() const = 0;
  /// Bytes of the stream that is read; 0 while writing.
  virtual std::size_t Length() const { return 0; }

  /// One property. Writing: its value goes out when it is `Stored`. Reading: when the stream holds the
  /// property, its value is handed to `Set`, as a rule the property's setter.
  template <class T, class TSetter>
  void Property(std::string_view Name, const T& Value, bool Stored, TSetter&& Set) {
    if (Writes()) {
      if (Stored || Exact()) {
        Write(Name, TPropertyText<T>::Make(Value));
      }
      return;
    }
    Read(Name, [&](std::string_view Text, bool Apply) {
      T Read = TPropertyText<T>::Parse(Text);
      if (Apply) {
        Set(std::move(Read));
      }
    });
  }

  /// A field that is read as it stands.
  template <class T>
  void Field(std::string_view Name, T& Value) {
    Property(Name, Value, true, [&Value](const T& Read) { Value = Read; });
  }

  /// A block with one block for each item. Writing: nothing goes out for an empty collection, unless the
  /// stream is exact. Reading: when the stream holds the block, `Start` is called with the number of items,
  /// as a rule to clear the collection, and then `Add` with the item's name (its property "Name", or "") for
  /// each item to come.
  using TStart = std::function<void(int Count)>;
  using TAdd = std::function<TCollectionItem&(std::string_view Name)>;
  virtual void Items(std::string_view Name, TOwnedCollection& Items, const TStart& Start,
                     const TAdd& Add) = 0;

protected:
  virtual void Write(std::string_view Name, const std::string& Text) = 0;
  // `Take` is called when the stream holds the property; it is to read the text and, if so told, to apply it.
  using TTake = std::function<void(std::string_view Text, bool Apply)>;
  virtual void Read(std::string_view Name, const TTake& Take) = 0;

  // What only a filer may ask for: the state of an object in an exact stream, else its properties.
  static void Define(TPersistent& Object, TFiler& Filer);
};

/// Writes the properties of a component that differ from their defaults. Handlers are never written. Raises
/// std::ios_base::failure when the stream does not take it.
void WriteComponent(std::ostream& Stream, TComponent& Component);
/// Reads what `WriteComponent` wrote into a component, through the setters of its properties; what the stream
/// does not hold stays. Raises EPropertyError for a text that is no component stream, a property that the
/// component does not have and a value that does not read or that its setter refuses; nothing has changed
/// then. A stream may be as long as a document (`DefaultXMLLimits`).
void ReadComponent(std::istream& Stream, TComponent& Component);

/// Writes the whole state of a component, as `TPersistent::DefineState` names it, from which the component
/// goes on as if it had not been written. Raises std::ios_base::failure when the stream does not take it.
void WriteState(std::ostream& Stream, TComponent& Component);
/// Reads what `WriteState` wrote into a component of the same class, of whatever length. Raises
/// EPropertyError for a text that is no such state, one of another class, and as `ReadComponent`; nothing has
/// changed then.
void ReadState(std::istream& Stream, TComponent& Component);

} // namespace qx
