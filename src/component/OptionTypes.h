// The value types of the query builder's options: colours, small sets, and
// the enumerations of the designer's look and behaviour. The member order of
// every enumeration is fixed: properties XML may store a value by ordinal.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "model/QueryModelHost.h"
#include "sqlgen/SQLOptions.h"

namespace mv {

struct TmvEnumType;

// A colour as a 32-bit value, $00BBGGRR; a system colour has its index in
// the low byte and $80 in the top byte.
enum class TmvColor : uint32_t {};
inline constexpr TmvColor clNone = TmvColor(0x1FFFFFFF);
inline constexpr TmvColor clWindow = TmvColor(0x80000005);
inline constexpr TmvColor clNavy = TmvColor(0x00800000);

// A set of the members of a small enumeration, one bit per ordinal.
template <class E>
class TmvSet {
 public:
  constexpr TmvSet() = default;
  constexpr TmvSet(std::initializer_list<E> members) {
    for (E member : members) bits_ |= Bit(member);
  }
  static constexpr TmvSet FromBits(uint32_t bits) {
    TmvSet set;
    set.bits_ = bits;
    return set;
  }
  constexpr uint32_t Bits() const { return bits_; }
  constexpr bool Contains(E member) const { return (bits_ & Bit(member)) != 0; }
  constexpr bool Empty() const { return bits_ == 0; }
  constexpr void Include(E member) { bits_ |= Bit(member); }
  constexpr void Exclude(E member) { bits_ &= ~Bit(member); }
  friend constexpr bool operator==(TmvSet a, TmvSet b) { return a.bits_ == b.bits_; }

 private:
  static constexpr uint32_t Bit(E member) { return uint32_t(1) << uint32_t(member); }
  uint32_t bits_ = 0;
};

enum TmvBorderStyle : uint8_t { qbbs3D, qbbsFlat, qbbsUltraFlat, qbbsNone };
enum TmvUnionNavBarPosition : uint8_t { unbTopRight, unbTopLeft, unbBottomRight, unbBottomLeft };
enum TmvBkImagePos : uint8_t { bkipTopLeft, bkipTile };
enum TmvBkImageDarkness : uint8_t { bgidWhite, bgidLight, bgidDark };
// How the pages of the sub-queries are drawn.
enum TmvTabStyle : uint8_t { tbsTabs, tbsButtons, tbsFlatButtons };
enum TmvTableWidthMode : uint8_t { twmFixed, twmAutosizeByContent, twmAutosizeByFieldName };
enum TmvLinkManipulations : uint8_t { lmAllow, lmDeny, lmAllowRelationsOnly };
enum TmvFieldTypeCase : uint8_t { ftcCapitalize, ftcLowerCase, ftcUpperCase };
// Where a control sits in its parent.
enum TmvAlignment : uint8_t { alnNone, alnTop, alnBottom, alnLeft, alnRight, alnClient };
// The views of a list of objects; report (a row per object with columns) is 2.
enum TmvListViewStyle : uint8_t { lvsIcon, lvsList, lvsReport, lvsSmallIcon };
// Where a dialog opens.
enum TmvFormPosition : uint8_t {
  fpDesigned,
  fpDefault,
  fpDefaultPosOnly,
  fpDefaultSizeOnly,
  fpScreenCenter,
  fpDesktopCenter,
  fpMainFormCenter,
  fpOwnerFormCenter
};
enum TmvFontStyle : uint8_t { fstBold, fstItalic, fstUnderline, fstStrikeOut };
using TmvFontStyles = TmvSet<TmvFontStyle>;
// The columns of the select list that an option applies to.
enum TmvAffectedColumn : uint8_t { mvColumnExpressions, mvColumnConditions };
using TmvAffectedColumns = TmvSet<TmvAffectedColumn>;
enum TmvQBObjectsGroupingType : uint8_t {
  ogtNone,
  ogtDatabase,
  ogtType,
  ogtDatabaseSchema,
  ogtDatabaseType,
  ogtTypeDatabase,
  ogtDatabaseSchemaType,
  ogtDatabaseTypeSchema,
  ogtTypeDatabaseSchema
};
enum TmvQBObjectsSortingType : uint8_t { ostName, ostTypeName, ostSchemaTypeName, ostNone };

// Member names, for properties by name (PropertyTable.h).
const TmvEnumType& TmvEnumTypeOf(TmvBorderStyle);
const TmvEnumType& TmvEnumTypeOf(TmvUnionNavBarPosition);
const TmvEnumType& TmvEnumTypeOf(TmvBkImagePos);
const TmvEnumType& TmvEnumTypeOf(TmvBkImageDarkness);
const TmvEnumType& TmvEnumTypeOf(TmvTabStyle);
const TmvEnumType& TmvEnumTypeOf(TmvTableWidthMode);
const TmvEnumType& TmvEnumTypeOf(TmvLinkManipulations);
const TmvEnumType& TmvEnumTypeOf(TmvFieldTypeCase);
const TmvEnumType& TmvEnumTypeOf(TmvAlignment);
const TmvEnumType& TmvEnumTypeOf(TmvListViewStyle);
const TmvEnumType& TmvEnumTypeOf(TmvFormPosition);
const TmvEnumType& TmvEnumTypeOf(TmvFontStyle);
const TmvEnumType& TmvEnumTypeOf(TmvAffectedColumn);
const TmvEnumType& TmvEnumTypeOf(TmvQBObjectsGroupingType);
const TmvEnumType& TmvEnumTypeOf(TmvQBObjectsSortingType);
const TmvEnumType& TmvEnumTypeOf(TmvFieldsListSortType);

}  // namespace mv
