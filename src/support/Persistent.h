// Persistent objects: objects whose state can be copied from another object
// (`Assign`) and described as text (`DescribeProperties`). Option classes,
// formats and collections derive from `TmvPersistent`.
#pragma once

#include <cstdint>
#include <vector>

#include "support/Class.h"
#include "support/WideString.h"

namespace mv {

class TmvPropertyWriter;

class TmvPersistent : public TmvObject {
  MV_DECLARE_CLASS()
 public:
  TmvPersistent() = default;
  TmvPersistent(const TmvPersistent&) = delete;
  TmvPersistent& operator=(const TmvPersistent&) = delete;

  // Copies the state of `source` into this object. A class that knows the
  // source's class overrides it and calls the inherited one for any other
  // class; the base lets the source try (`AssignTo`) and otherwise raises
  // EConvertError "Cannot assign a TSource to a TDest" ("nil" for null).
  virtual void Assign(const TmvPersistent* source);

  // The object this one belongs to, for name paths and collections; null here.
  virtual TmvPersistent* GetOwner() const { return nullptr; }

  // Writes the object's properties as "Name = value" lines. The base writes
  // none; classes with properties override it and call the inherited one
  // first. Used by logging to dump an object in readable form.
  virtual void DescribeProperties(TmvPropertyWriter& writer) const;

 protected:
  // Copies this object into `dest`, for a source that knows a destination
  // class better than the destination knows it. The base raises.
  virtual void AssignTo(TmvPersistent* dest) const;
  [[noreturn]] void AssignError(const TmvPersistent* source) const;
};

// Collects the readable form of an object:
//
//   object TSQLBuilder
//     RightMargin = 80
//     KeywordFormat = 'upper'
//     object SelectFormat: TSelectFormat
//       ...
//     end
//   end
class TmvPropertyWriter {
 public:
  void WriteText(WideStringView name, WideStringView value);  // quoted, quotes doubled
  void WriteInteger(WideStringView name, int64_t value);
  void WriteBoolean(WideStringView name, bool value);  // True / False
  void WriteRaw(WideStringView name, WideStringView value);  // as given
  // A nested object's properties between "object Name: TClass" and "end";
  // a null object writes "Name = nil".
  void WriteObject(WideStringView name, const TmvPersistent* object);

  const std::vector<WideString>& Lines() const { return lines_; }

  // The whole readable form of `object`, first line "object TClass".
  static std::vector<WideString> Describe(const TmvPersistent& object);

 private:
  void WriteBody(const TmvPersistent& object);
  WideString Indent() const { return WideString(depth_ * 2, u' '); }

  std::vector<WideString> lines_;
  int depth_ = 0;
};

}  // namespace mv
