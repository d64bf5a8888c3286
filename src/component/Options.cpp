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

#define MV_OPTIONS_CLASS(Class, Parent) \
  MV_DEFINE_CLASS(Class, Parent)                  \
  Class::Class() { InitializeOptions(Properties()); }

MV_OPTIONS_CLASS(TmvOptionsView, TmvOptionsBase)
const TmvPropertyTable& TmvOptionsView::Properties() {
  using T = TmvOptionsView;
  static const TmvPropertyTable table("TmvOptionsView", {
#define MV_OPTIONS_TABLE
#include "component/options/OptionsView.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvDesignPaneOptions, TmvOptionsBase)
const TmvPropertyTable& TmvDesignPaneOptions::Properties() {
  using T = TmvDesignPaneOptions;
  static const TmvPropertyTable table("TmvDesignPaneOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/DesignPaneOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvDatasourceOptions, TmvOptionsBase)
const TmvPropertyTable& TmvDatasourceOptions::Properties() {
  using T = TmvDatasourceOptions;
  static const TmvPropertyTable table("TmvDatasourceOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/DatasourceOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvLinkOptions, TmvOptionsBase)
const TmvPropertyTable& TmvLinkOptions::Properties() {
  using T = TmvLinkOptions;
  static const TmvPropertyTable table("TmvLinkOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/LinkOptions.def"
  });
  return table;
}

// Each column class has the whole table with its own column of defaults.
MV_OPTIONS_CLASS(TmvFieldsListBaseColumnOptions, TmvOptionsBase)
const TmvPropertyTable& TmvFieldsListBaseColumnOptions::Properties() {
  using T = TmvFieldsListBaseColumnOptions;
  static const TmvPropertyTable table("TmvFieldsListBaseColumnOptions", {
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Base
#include "component/options/ColumnOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvFieldsListMarkColumnOptions, TmvFieldsListBaseColumnOptions)
const TmvPropertyTable& TmvFieldsListMarkColumnOptions::Properties() {
  using T = TmvFieldsListMarkColumnOptions;
  static const TmvPropertyTable table("TmvFieldsListMarkColumnOptions", {
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Mark
#include "component/options/ColumnOptions.def"
  });
  return table;
}

MV_DEFINE_CLASS(TmvFieldsListBaseTextColumnOptions, TmvFieldsListBaseColumnOptions)

MV_OPTIONS_CLASS(TmvFieldsListNameColumnOptions, TmvFieldsListBaseTextColumnOptions)
const TmvPropertyTable& TmvFieldsListNameColumnOptions::Properties() {
  using T = TmvFieldsListNameColumnOptions;
  static const TmvPropertyTable table("TmvFieldsListNameColumnOptions", {
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_TEXT
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Name
#define MV_NAME_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvFieldsListTypeColumnOptions, TmvFieldsListBaseTextColumnOptions)
const TmvPropertyTable& TmvFieldsListTypeColumnOptions::Properties() {
  using T = TmvFieldsListTypeColumnOptions;
  static const TmvPropertyTable table("TmvFieldsListTypeColumnOptions", {
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_TEXT
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Type
#define MV_TYPE_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvFieldsListDescriptionColumnOptions, TmvFieldsListBaseTextColumnOptions)
const TmvPropertyTable& TmvFieldsListDescriptionColumnOptions::Properties() {
  using T = TmvFieldsListDescriptionColumnOptions;
  static const TmvPropertyTable table("TmvFieldsListDescriptionColumnOptions", {
#define MV_OPTIONS_TABLE
#define MV_COLUMN_COMMON
#define MV_COLUMN_TEXT
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Description
#define MV_DESCRIPTION_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
  });
  return table;
}

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

MV_OPTIONS_CLASS(TmvSelectListOptions, TmvOptionsBase)
const TmvPropertyTable& TmvSelectListOptions::Properties() {
  using T = TmvSelectListOptions;
  static const TmvPropertyTable table("TmvSelectListOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/SelectListOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvAddObjectSizeConstraints, TmvOptionsBase)
const TmvPropertyTable& TmvAddObjectSizeConstraints::Properties() {
  using T = TmvAddObjectSizeConstraints;
  static const TmvPropertyTable table("TmvAddObjectSizeConstraints", {
#define MV_OPTIONS_TABLE
#include "component/options/SizeConstraints.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvAddObjectFormOptions, TmvOptionsBase)
const TmvPropertyTable& TmvAddObjectFormOptions::Properties() {
  using T = TmvAddObjectFormOptions;
  static const TmvPropertyTable table("TmvAddObjectFormOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/AddObjectFormOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvTreeOptions, TmvOptionsBase)
const TmvPropertyTable& TmvTreeOptions::Properties() {
  using T = TmvTreeOptions;
  static const TmvPropertyTable table("TmvTreeOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/TreeOptions.def"
  });
  return table;
}

MV_OPTIONS_CLASS(TmvMetadataTreeOptions, TmvOptionsBase)
const TmvPropertyTable& TmvMetadataTreeOptions::Properties() {
  using T = TmvMetadataTreeOptions;
  static const TmvPropertyTable table("TmvMetadataTreeOptions", {
#define MV_OPTIONS_TABLE
#include "component/options/MetadataTreeOptions.def"
  });
  return table;
}

#undef MV_OPTIONS_CLASS

}  // namespace mv
