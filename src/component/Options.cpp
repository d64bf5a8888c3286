#include "component/Options.h"

#include <algorithm>
#include <iterator>

#include "support/Exceptions.h"

namespace mv {

// --- Enumerations ---

#define MV_DEFINE_ENUM_TYPE(Enum, Last, ...)                       \
  const TmvEnumType& TmvEnumTypeOf(Enum) {                         \
    static constexpr const char16_t* kMembers[] = {__VA_ARGS__};   \
    static_assert(std::size(kMembers) == size_t(Last) + 1);        \
    static constexpr TmvEnumType kType{u"" #Enum, kMembers};       \
    return kType;                                                  \
  }

MV_DEFINE_ENUM_TYPE(TmvBorderStyle, qbbsNone, u"qbbs3D", u"qbbsFlat", u"qbbsUltraFlat", u"qbbsNone")
MV_DEFINE_ENUM_TYPE(TmvUnionNavBarPosition, unbBottomLeft, u"unbTopRight", u"unbTopLeft", u"unbBottomRight",
                    u"unbBottomLeft")
MV_DEFINE_ENUM_TYPE(TmvBkImagePos, bkipTile, u"bkipTopLeft", u"bkipTile")
MV_DEFINE_ENUM_TYPE(TmvBkImageDarkness, bgidDark, u"bgidWhite", u"bgidLight", u"bgidDark")
MV_DEFINE_ENUM_TYPE(TmvTabStyle, tbsFlatButtons, u"tbsTabs", u"tbsButtons", u"tbsFlatButtons")
MV_DEFINE_ENUM_TYPE(TmvTableWidthMode, twmAutosizeByFieldName, u"twmFixed", u"twmAutosizeByContent",
                    u"twmAutosizeByFieldName")
MV_DEFINE_ENUM_TYPE(TmvLinkManipulations, lmAllowRelationsOnly, u"lmAllow", u"lmDeny", u"lmAllowRelationsOnly")
MV_DEFINE_ENUM_TYPE(TmvFieldTypeCase, ftcUpperCase, u"ftcCapitalize", u"ftcLowerCase", u"ftcUpperCase")
MV_DEFINE_ENUM_TYPE(TmvAlignment, alnClient, u"alnNone", u"alnTop", u"alnBottom", u"alnLeft", u"alnRight",
                    u"alnClient")
MV_DEFINE_ENUM_TYPE(TmvListViewStyle, lvsSmallIcon, u"lvsIcon", u"lvsList", u"lvsReport", u"lvsSmallIcon")
MV_DEFINE_ENUM_TYPE(TmvFormPosition, fpOwnerFormCenter, u"fpDesigned", u"fpDefault", u"fpDefaultPosOnly",
                    u"fpDefaultSizeOnly", u"fpScreenCenter", u"fpDesktopCenter", u"fpMainFormCenter",
                    u"fpOwnerFormCenter")
MV_DEFINE_ENUM_TYPE(TmvFontStyle, fstStrikeOut, u"fstBold", u"fstItalic", u"fstUnderline", u"fstStrikeOut")
MV_DEFINE_ENUM_TYPE(TmvAffectedColumn, mvColumnConditions, u"mvColumnExpressions", u"mvColumnConditions")
MV_DEFINE_ENUM_TYPE(TmvQBObjectsGroupingType, ogtTypeDatabaseSchema, u"ogtNone", u"ogtDatabase", u"ogtType",
                    u"ogtDatabaseSchema", u"ogtDatabaseType", u"ogtTypeDatabase", u"ogtDatabaseSchemaType",
                    u"ogtDatabaseTypeSchema", u"ogtTypeDatabaseSchema")
MV_DEFINE_ENUM_TYPE(TmvQBObjectsSortingType, ostNone, u"ostName", u"ostTypeName", u"ostSchemaTypeName", u"ostNone")
MV_DEFINE_ENUM_TYPE(TmvFieldsListSortType, flsDescription, u"flsNone", u"flsName", u"flsDescription")

#undef MV_DEFINE_ENUM_TYPE

// --- TmvOptionsBase ---

MV_DEFINE_CLASS(TmvOptionsBase, TmvUpdatablePersistent)

void TmvOptionsBase::InitializeOptions(const TmvPropertyTable& table) {
  table.StoreDefaults(*this);
  for (const TmvPropertyEntry& entry : table.OwnEntries())
    if (entry.Type == ptObject) static_cast<TmvOptionsBase*>(entry.Object(*this))->SetParent(this);
}

// --- The option classes: each table is its .def file ---

// The class, its constructor and the head of its table; the .def file
// included after it gives the rows, MV_OPTIONS_TABLE_END closes the table.
#define MV_OPTIONS_TABLE_BEGIN(Class, Parent)                  \
  MV_DEFINE_CLASS(Class, Parent)                               \
  Class::Class() { InitializeOptions(Properties()); }          \
  const TmvPropertyTable& Class::Properties() {                \
    using T = Class;                                           \
    static const TmvPropertyTable table(#Class, {
#define MV_OPTIONS_TABLE_END \
  });                        \
  return table;              \
  }

MV_OPTIONS_TABLE_BEGIN(TmvOptionsView, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/OptionsView.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvDesignPaneOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/DesignPaneOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvDatasourceOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/DatasourceOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvLinkOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/LinkOptions.def"
MV_OPTIONS_TABLE_END

// Each column class has the whole table with its own column of defaults.
MV_OPTIONS_TABLE_BEGIN(TmvFieldsListBaseColumnOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Base
#include "component/options/ColumnOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvFieldsListMarkColumnOptions, TmvFieldsListBaseColumnOptions)
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Mark
#include "component/options/ColumnOptions.def"
MV_OPTIONS_TABLE_END

MV_DEFINE_CLASS(TmvFieldsListBaseTextColumnOptions, TmvFieldsListBaseColumnOptions)

MV_OPTIONS_TABLE_BEGIN(TmvFieldsListNameColumnOptions, TmvFieldsListBaseTextColumnOptions)
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_TEXT
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Name
#define MV_NAME_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvFieldsListTypeColumnOptions, TmvFieldsListBaseTextColumnOptions)
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_TEXT
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Type
#define MV_TYPE_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvFieldsListDescriptionColumnOptions, TmvFieldsListBaseTextColumnOptions)
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_TEXT
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Description
#define MV_DESCRIPTION_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
MV_OPTIONS_TABLE_END

MV_DEFINE_CLASS(TmvFieldsListOptions, TmvOptionsBase)
TmvFieldsListOptions::TmvFieldsListOptions() {
  InitializeOptions(Properties());
  UpdateOrderedColumnsList();
}

const TmvPropertyTable& TmvFieldsListOptions::Properties() {
  using T = TmvFieldsListOptions;
  static const TmvPropertyTable table("TmvFieldsListOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/FieldsListOptions.def"
  });
  return table;
}

void TmvFieldsListOptions::UpdateOrderedColumnsList() {
  orderedColumns_ = {&MarkColumnOptions_, &NameColumnOptions_, &TypeColumnOptions_, &DescriptionColumnOptions_};
  std::stable_sort(orderedColumns_.begin(), orderedColumns_.end(),
                   [](const TmvFieldsListBaseColumnOptions* a, const TmvFieldsListBaseColumnOptions* b) {
                     return a->DrawOrder() < b->DrawOrder();
                   });
}

void TmvFieldsListOptions::DoUpdated() {
  UpdateOrderedColumnsList();
  TmvOptionsBase::DoUpdated();
}

MV_OPTIONS_TABLE_BEGIN(TmvSelectListOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/SelectListOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvAddObjectSizeConstraints, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/SizeConstraints.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvAddObjectFormOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/AddObjectFormOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvTreeOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/TreeOptions.def"
MV_OPTIONS_TABLE_END

MV_OPTIONS_TABLE_BEGIN(TmvMetadataTreeOptions, TmvOptionsBase)
#define MV_OPTIONS_TABLE
#include "component/options/MetadataTreeOptions.def"
MV_OPTIONS_TABLE_END

#undef MV_OPTIONS_CLASS

}  // namespace mv
