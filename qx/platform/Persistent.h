#pragma once

#include <string>
#include <typeinfo>

namespace qx {

class TFiler;

/// Base of everything that can be copied by content.
///
/// An object keeps its identity: copy construction is deleted, and `Assign` copies content into an object
/// that exists. A class that knows how to read a source overrides `Assign`; a class that knows how to write
/// itself into a foreign destination overrides `AssignTo`.
class TPersistent {
public:
  TPersistent() = default;
  TPersistent(const TPersistent&) = delete;
  TPersistent& operator=(const TPersistent&) = delete;
  virtual ~TPersistent() = default;

  /// Copies the content of `Source` into this object.
  /// Raises std::invalid_argument, which names both classes, when no rule for the pair exists.
  virtual void Assign(const TPersistent& Source);

  /// Name of the object's run-time class, without namespaces.
  std::string ClassName() const;

protected:
  /// Names the stored properties, in the order of a component stream, to a filer that writes or reads them.
  /// An override calls the inherited one first.
  virtual void DefineProperties(TFiler& /*Filer*/) {}
  /// Names all that a checkpoint holds of this object (see `WriteState`): the stored properties, and what an
  /// override adds to them, which calls the inherited one first.
  virtual void DefineState(TFiler& Filer) { DefineProperties(Filer); }

  /// `Source` as a `T`, a class of this object, or nullptr when it is none. Costs one comparison when both
  /// objects are of one class, as they usually are.
  template <class T>
  const T* SourceAs(const TPersistent& Source) const {
    if (typeid(Source) == typeid(*this)) {
      return static_cast<const T*>(&Source);
    }
    return dynamic_cast<const T*>(&Source);
  }

  /// Copies this object into `Dest`, a class that does not know this one. The base always raises.
  virtual void AssignTo(TPersistent& Dest) const;

private:
  friend class TFiler;
};

} // namespace qx
