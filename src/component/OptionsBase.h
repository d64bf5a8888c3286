// The base of the query builder's option objects, and the way their classes
// are made from one table each.
//
// A table is a data file (component/options/*.def) with one row per
// property: its type, name, default, key in properties XML and, where the
// value is held in a range, the range. The class body includes it once for
// its members (a field, a getter, a setter that corrects, compares, stores
// and notifies), the class's Properties() once for its property table
// (PropertyTable.h): the defaults the constructor stores, the copy of
// Assign, the names of `mvsql options` and the XML keys all come from that
// one row.
//
//   class TmvFooOptions : public TmvOptionsBase {
//     MV_DECLARE_CLASS()
//    public:
//     TmvFooOptions() { InitializeOptions(Properties()); }
//     static const TmvPropertyTable& Properties();   // MV_OPTIONS_TABLE pass
//     const TmvPropertyTable& PropertyTable() const override { return Properties(); }
//   #define MV_OPTIONS_MEMBERS
//   #include "component/options/FooOptions.def"
//   };
#pragma once

#include <type_traits>

#include "component/OptionTypes.h"
#include "sqlgen/PropertyTable.h"
#include "sqlgen/TablePersistent.h"
#include "support/UpdatablePersistent.h"
#include "support/WideString.h"

namespace mv {

// How an option value is passed: scalars by value, the rest by reference.
template <class T>
using TmvOptionArg = std::conditional_t<std::is_scalar_v<T>, T, const T&>;

class TmvOptionsBase : public TmvTablePersistent {
  MV_DECLARE_CLASS()
 protected:
  // Stores the table's defaults (without notification) and makes this
  // object the parent of its nested option objects, so that their changes
  // reach this object's listeners.
  void InitializeOptions(const TmvPropertyTable& table);
  // A value held in min..max.
  template <class V>
  static V ClampOption(V value, V min, V max) {
    return value < min ? min : value > max ? max : value;
  }
  // The generated setters' end: acts only on a change, then notifies.
  template <class V>
  void StoreOption(V& field, const V& value) {
    if (field == value) return;
    field = value;
    NotifyUpdated();
  }
};

namespace options_detail {

template <class T>
struct IsSet : std::false_type {};
template <class E>
struct IsSet<TmvSet<E>> : std::true_type {
  using Member = E;
};

template <class V>
int64_t ToBits(const V& value) {
  if constexpr (IsSet<V>::value)
    return int64_t(value.Bits());
  else if constexpr (std::is_same_v<V, TmvColor>)
    return int64_t(uint32_t(value));
  else
    return int64_t(value);
}

template <class V>
V FromBits(int64_t bits) {
  if constexpr (IsSet<V>::value)
    return V::FromBits(uint32_t(bits));
  else if constexpr (std::is_same_v<V, TmvColor>)
    return TmvColor(uint32_t(bits));
  else if constexpr (std::is_same_v<V, bool>)
    return bits != 0;
  else
    return V(bits);
}

}  // namespace options_detail

// The table entry of an option over its getter and setter. `Field` (may be
// nullptr) is the field the constructor stores the default in directly; an
// option without one (its value lives elsewhere) keeps its value at
// construction.
template <class C, class V, auto Getter, auto Setter, auto Field, class D>
TmvPropertyEntry TmvOptionEntry(const char16_t* name, D defaultValue, const char16_t* xmlPath) {
  using namespace options_detail;
  TmvPropertyEntry entry;
  entry.Name = name;
  entry.XMLPath = xmlPath;
  if constexpr (std::is_same_v<V, WideString>) {
    entry.Type = ptString;
    entry.DefaultText = defaultValue;
    entry.GetString = [](const TmvPersistent& object) -> WideString {
      return (static_cast<const C&>(object).*Getter)();
    };
    entry.SetString = [](TmvPersistent& object, WideStringView value) {
      (static_cast<C&>(object).*Setter)(WideString(value));
    };
    if constexpr (Field != nullptr)
      entry.StoreString = [](TmvPersistent& object, WideStringView value) {
        static_cast<C&>(object).*Field = WideString(value);
      };
    else
      entry.StoreString = [](TmvPersistent&, WideStringView) {};
  } else {
    if constexpr (std::is_same_v<V, bool>) {
      entry.Type = ptBoolean;
    } else if constexpr (std::is_same_v<V, TmvColor>) {
      entry.Type = ptColor;
    } else if constexpr (IsSet<V>::value) {
      entry.Type = ptSet;
      entry.Enum = &TmvEnumTypeOf(typename IsSet<V>::Member{});
    } else if constexpr (std::is_enum_v<V>) {
      entry.Type = ptEnumeration;
      entry.Enum = &TmvEnumTypeOf(V{});
    } else {
      static_assert(std::is_integral_v<V>, "an option is a boolean, integer, enumeration, colour, set or string");
      entry.Type = ptInteger;
    }
    entry.Default = ToBits(V(defaultValue));
    entry.Get = [](const TmvPersistent& object) -> int64_t {
      return ToBits<V>((static_cast<const C&>(object).*Getter)());
    };
    entry.Set = [](TmvPersistent& object, int64_t value) { (static_cast<C&>(object).*Setter)(FromBits<V>(value)); };
    if constexpr (Field != nullptr)
      entry.Store = [](TmvPersistent& object, int64_t value) { static_cast<C&>(object).*Field = FromBits<V>(value); };
    else
      entry.Store = [](TmvPersistent&, int64_t) {};
  }
  return entry;
}

}  // namespace mv
