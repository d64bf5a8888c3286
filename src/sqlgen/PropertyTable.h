// A property table describes the options of one class: for each property
// its name, type, default and key in properties XML, with typed access. It
// is the one place where an option class states its defaults: constructors
// store them from the table, `Assign` copies what the table lists, and
// reading and writing by name (command-line settings, properties XML, the
// readable dump) go through it.
//
// Names are the property names ("RightMargin", "NewLineAfter"); a nested
// option object is reached by a dotted path ("MainQueryFormat.WhereFormat.
// NewLineAfter"). Names compare without regard to case. Values as text:
// booleans "True"/"False" (also "true", "false", "1", "0"), integers in
// decimal, enumerations by member name (also by ordinal), colours as
// "$80000005" (also "0x..." and decimal), sets as "[member, member]" (also
// an ordinal per member), strings as they stand.
//
//   const TmvPropertyTable& TFoo::Properties() {
//     static const TmvPropertyTable table("TFoo", {
//         TmvScalarProperty<&TFoo::margin_, &TFoo::SetMargin>(u"Margin", 80, u"margin"),
//         TmvObjectProperty<&TFoo::inner_>(u"Inner", u"inner/"),
//     });
//     return table;
//   }
#pragma once

#include <cstdint>
#include <span>
#include <type_traits>
#include <vector>

#include "support/Persistent.h"
#include "support/WideString.h"

namespace mv {

class TmvPropertyTable;

// An enumeration's name and its member names in ordinal order.
struct TmvEnumType {
  const char16_t* Name;
  std::span<const char16_t* const> Members;

  // The member's name, or the number itself when it is out of range.
  WideString NameOf(int64_t ordinal) const;
  // The ordinal of a member name (case-blind), -1 when there is none.
  int64_t Find(WideStringView name) const;
};

// A colour is a 32-bit value (its bits in the int64_t), a set the bits of its
// members' ordinals; a string travels as text (GetString, SetString).
enum TmvPropertyType : uint8_t { ptBoolean, ptInteger, ptEnumeration, ptObject, ptColor, ptSet, ptString };

// A default of a nested object that differs from its class's own default.
struct TmvDefaultOverride {
  const char16_t* Path;  // dotted, relative to the nested object
  int64_t Value;
};

// One property. Scalar values travel as int64_t: 0/1, the number, the ordinal.
struct TmvPropertyEntry {
  const char16_t* Name = u"";
  TmvPropertyType Type = ptBoolean;
  int64_t Default = 0;           // scalars only
  const char16_t* XMLPath = u"";  // key in properties XML; empty: not stored there; an object's ends in "/"
  const TmvEnumType* Enum = nullptr;  // enumerations, and the members of a set
  const char16_t* DefaultText = u"";  // strings only

  int64_t (*Get)(const TmvPersistent&) = nullptr;
  // Through the public setter: acts only on a change and notifies.
  void (*Set)(TmvPersistent&, int64_t) = nullptr;
  // Into the field, without notification; used while constructing. When
  // null the defaults go through Set.
  void (*Store)(TmvPersistent&, int64_t) = nullptr;
  // Strings: the same three.
  WideString (*GetString)(const TmvPersistent&) = nullptr;
  void (*SetString)(TmvPersistent&, WideStringView) = nullptr;
  void (*StoreString)(TmvPersistent&, WideStringView) = nullptr;

  // Nested option objects: the owned object and its table.
  TmvPersistent* (*Object)(const TmvPersistent&) = nullptr;
  const TmvPropertyTable& (*ObjectTable)() = nullptr;
  std::vector<TmvDefaultOverride> DefaultOverrides;

  // "boolean", "integer", "colour", "string", the enumeration's or the
  // nested class's name, "set of " the members' enumeration.
  WideString TypeName() const;
};

// A property below an object, nested objects expanded.
struct TmvPropertyLeaf {
  WideString Path;     // dotted property names
  WideString XMLPath;  // the joined XML keys; empty when the leaf or an object above it has none
  const TmvPropertyEntry* Entry;
  int64_t Default;  // with the overrides of the objects above it; strings: Entry->DefaultText
};

class TmvPropertyTable {
 public:
  // `parent`: the table of the base class, whose properties come first.
  TmvPropertyTable(const char* className, std::vector<TmvPropertyEntry> entries,
                   const TmvPropertyTable* parent = nullptr);

  const char* ClassName() const { return className_; }
  const TmvPropertyTable* Parent() const { return parent_; }
  // This class's own entries, without the parent's.
  const std::vector<TmvPropertyEntry>& OwnEntries() const { return entries_; }
  // The entry of a name, the parent's included; null when there is none.
  const TmvPropertyEntry* Find(WideStringView name) const;
  // Every scalar property, the base class's first, nested objects expanded
  // in place.
  std::vector<TmvPropertyLeaf> Leaves() const;

  // Reading and writing by dotted path. Unknown names and paths that end on
  // an object or go through a scalar raise EmvQueryBuilderError; a value
  // that does not convert raises EConvertError. Both name the property.
  WideString GetText(const TmvPersistent& object, WideStringView path) const;
  void SetText(TmvPersistent& object, WideStringView path, WideStringView value) const;
  // "Path=Value", as a command line gives it.
  void SetAssignment(TmvPersistent& object, WideStringView assignment) const;

  // Stores the defaults of this class's own entries (not the parent's) and
  // the overrides of its nested objects, without notification. Constructors
  // call it; nested objects have stored their own defaults already.
  void StoreDefaults(TmvPersistent& object) const;
  // Copies the values of this class's own entries (not the parent's) from
  // `source` through the setters; nested objects by their own tables.
  void AssignValues(TmvPersistent& dest, const TmvPersistent& source) const;
  // Writes every property, nested objects as nested blocks.
  void Describe(const TmvPersistent& object, TmvPropertyWriter& writer) const;

  // A value as text, and text as a value of an entry (EConvertError); not
  // for strings.
  static WideString ValueText(const TmvPropertyEntry& entry, int64_t value);
  static int64_t ParseValue(const TmvPropertyEntry& entry, WideStringView text);
  // The value of a scalar or string entry of `object` as text, and text set
  // through the entry's setter (EConvertError naming the entry).
  static WideString EntryText(const TmvPropertyEntry& entry, const TmvPersistent& object);
  static void SetEntryText(const TmvPropertyEntry& entry, TmvPersistent& object, WideStringView text);

 private:
  struct Resolved {
    TmvPersistent* object;
    const TmvPropertyTable* table;
    const TmvPropertyEntry* entry;
  };
  Resolved Resolve(const TmvPersistent& object, WideStringView path) const;
  void CollectLeaves(std::vector<TmvPropertyLeaf>& leaves, const WideString& prefix, const WideString& xmlPrefix,
                     bool xmlKnown, const std::vector<std::pair<WideString, int64_t>>& overrides) const;

  const char* className_;
  std::vector<TmvPropertyEntry> entries_;
  const TmvPropertyTable* parent_;
};

// --- Entry helpers, for the static table functions of option classes. ---

template <class M>
struct TmvMemberTraits;
template <class C, class V>
struct TmvMemberTraits<V C::*> {
  using Class = C;
  using Value = V;
};

// A boolean, integer or enumeration property over a field and its setter.
template <auto Field, auto Setter>
TmvPropertyEntry TmvScalarProperty(const char16_t* name, typename TmvMemberTraits<decltype(Field)>::Value defaultValue,
                                   const char16_t* xmlPath = u"") {
  using C = typename TmvMemberTraits<decltype(Field)>::Class;
  using V = typename TmvMemberTraits<decltype(Field)>::Value;
  TmvPropertyEntry entry;
  entry.Name = name;
  entry.XMLPath = xmlPath;
  entry.Default = int64_t(defaultValue);
  if constexpr (std::is_same_v<V, bool>) {
    entry.Type = ptBoolean;
  } else if constexpr (std::is_enum_v<V>) {
    entry.Type = ptEnumeration;
    // Each enum used in a table has an overload TmvEnumTypeOf(E) beside it
    // (SQLOptions.h), found by argument-dependent lookup.
    entry.Enum = &TmvEnumTypeOf(V{});
  } else {
    static_assert(std::is_integral_v<V>, "a scalar property is a boolean, an integer or an enumeration");
    entry.Type = ptInteger;
  }
  entry.Get = [](const TmvPersistent& object) -> int64_t { return int64_t(static_cast<const C&>(object).*Field); };
  entry.Set = [](TmvPersistent& object, int64_t value) { (static_cast<C&>(object).*Setter)(V(value)); };
  entry.Store = [](TmvPersistent& object, int64_t value) { static_cast<C&>(object).*Field = V(value); };
  return entry;
}

// A nested option object held in a field; its class has a static Properties().
template <auto Field>
TmvPropertyEntry TmvObjectProperty(const char16_t* name, const char16_t* xmlPath = u"",
                                   std::vector<TmvDefaultOverride> overrides = {}) {
  using C = typename TmvMemberTraits<decltype(Field)>::Class;
  using V = typename TmvMemberTraits<decltype(Field)>::Value;
  TmvPropertyEntry entry;
  entry.Name = name;
  entry.Type = ptObject;
  entry.XMLPath = xmlPath;
  entry.Object = [](const TmvPersistent& object) -> TmvPersistent* {
    return &(const_cast<C&>(static_cast<const C&>(object)).*Field);
  };
  entry.ObjectTable = &V::Properties;
  entry.DefaultOverrides = std::move(overrides);
  return entry;
}

}  // namespace mv
