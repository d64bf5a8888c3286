// The option objects of the query builder: each is made from its table in
// component/options/ (see OptionsBase.h), with the defaults there. Setters
// compare, store and notify; Assign copies everything inside one update.
// A change of a nested object reaches its owner's listeners.
//
//   builder->SelectListOptions().SetAliasColumnWidth(90);
//   builder->FieldsListOptions().OrderedColumns();   // by DrawOrder
#pragma once

#include <vector>

#include "component/OptionsBase.h"

namespace mv {

// Declares the statics every option class has.
#define MV_OPTIONS_CLASS_BODY(Class)                 \
  MV_DECLARE_CLASS()                                 \
 public:                                             \
  Class();                                           \
  static const TmvPropertyTable& Properties();       \
  const TmvPropertyTable& PropertyTable() const override { return Properties(); }

class TmvOptionsView : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvOptionsView)
#define MV_OPTIONS_MEMBERS
#include "component/options/OptionsView.def"
};

class TmvDesignPaneOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvDesignPaneOptions)
#define MV_OPTIONS_MEMBERS
#include "component/options/DesignPaneOptions.def"
};

class TmvDatasourceOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvDatasourceOptions)
#define MV_OPTIONS_MEMBERS
#include "component/options/DatasourceOptions.def"
};

class TmvLinkOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvLinkOptions)
#define MV_OPTIONS_MEMBERS
#include "component/options/LinkOptions.def"
};

// --- The columns of a field list (ColumnOptions.def) ---

class TmvFieldsListBaseColumnOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvFieldsListBaseColumnOptions)
#define MV_OPTIONS_MEMBERS
#define MV_COLUMN_COMMON
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Base
#include "component/options/ColumnOptions.def"
};

class TmvFieldsListMarkColumnOptions : public TmvFieldsListBaseColumnOptions {
  MV_OPTIONS_CLASS_BODY(TmvFieldsListMarkColumnOptions)
};

// The base of the three columns of text.
class TmvFieldsListBaseTextColumnOptions : public TmvFieldsListBaseColumnOptions {
  MV_DECLARE_CLASS()
#define MV_OPTIONS_MEMBERS
#define MV_COLUMN_TEXT
#define MV_COLUMN_PICK(Base, Mark, Name, Type, Description) Name
#include "component/options/ColumnOptions.def"
};

class TmvFieldsListNameColumnOptions : public TmvFieldsListBaseTextColumnOptions {
  MV_OPTIONS_CLASS_BODY(TmvFieldsListNameColumnOptions)
#define MV_OPTIONS_MEMBERS
#define MV_NAME_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
};

class TmvFieldsListTypeColumnOptions : public TmvFieldsListBaseTextColumnOptions {
  MV_OPTIONS_CLASS_BODY(TmvFieldsListTypeColumnOptions)
#define MV_OPTIONS_MEMBERS
#define MV_TYPE_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
};

class TmvFieldsListDescriptionColumnOptions : public TmvFieldsListBaseTextColumnOptions {
  MV_OPTIONS_CLASS_BODY(TmvFieldsListDescriptionColumnOptions)
#define MV_OPTIONS_MEMBERS
#define MV_DESCRIPTION_COLUMN_OWN(Type, Name, Default, XMLKey) MV_OPTION(Type, Name, Default, XMLKey)
#include "component/options/ColumnOptions.def"
};

class TmvFieldsListOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvFieldsListOptions)
  // The four columns by DrawOrder (a stable sort: equal orders keep Mark,
  // Name, Type, Description); rebuilt whenever a column changes.
  const std::vector<TmvFieldsListBaseColumnOptions*>& OrderedColumns() const { return orderedColumns_; }
  void UpdateOrderedColumnsList();

 protected:
  void DoUpdated() override;

 private:
  std::vector<TmvFieldsListBaseColumnOptions*> orderedColumns_;
#define MV_OPTIONS_MEMBERS
#include "component/options/FieldsListOptions.def"
};

class TmvSelectListOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvSelectListOptions)
  // Write-only names of the widths, kept for older stored forms.
  void SetDefSelectColumnWidth(int32_t value) { SetSelectColumnWidth(value); }
  void SetDefExpressionColumnWidth(int32_t value) { SetExpressionColumnWidth(value); }
  void SetDefAggregateColumnWidth(int32_t value) { SetAggregateColumnWidth(value); }
  void SetDefAliasColumnWidth(int32_t value) { SetAliasColumnWidth(value); }
  void SetDefSortTypeColumnWidth(int32_t value) { SetSortTypeColumnWidth(value); }
  void SetDefSortOrderColumnWidth(int32_t value) { SetSortOrderColumnWidth(value); }
  void SetDefGroupingColumnWidth(int32_t value) { SetGroupingColumnWidth(value); }
  void SetDefGroupingTypeColumnWidth(int32_t value) { SetGroupingTypeColumnWidth(value); }
  void SetDefConditionsTypeColumnWidth(int32_t value) { SetConditionsTypeColumnWidth(value); }
  void SetDefConditionColumnWidth(int32_t value) { SetConditionsColumnWidth(value); }
#define MV_OPTIONS_MEMBERS
#include "component/options/SelectListOptions.def"
};

class TmvAddObjectSizeConstraints : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvAddObjectSizeConstraints)
#define MV_OPTIONS_MEMBERS
#include "component/options/SizeConstraints.def"
};

class TmvAddObjectFormOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvAddObjectFormOptions)
#define MV_OPTIONS_MEMBERS
#include "component/options/AddObjectFormOptions.def"
};

class TmvTreeOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvTreeOptions)
#define MV_OPTIONS_MEMBERS
#include "component/options/TreeOptions.def"
};

class TmvMetadataTreeOptions : public TmvOptionsBase {
  MV_OPTIONS_CLASS_BODY(TmvMetadataTreeOptions)
#define MV_OPTIONS_MEMBERS
#include "component/options/MetadataTreeOptions.def"
};

}  // namespace mv
