#include "component/QueryBuilderProperties.h"

#include "component/PropertiesXML.h"
#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"

namespace mv {

MV_DEFINE_CLASS(TmvQueryBuilderProperties, TmvOptionsBase)

TmvQueryBuilderProperties::TmvQueryBuilderProperties(TmvQueryBuilder& builder) : builder_(&builder) {
  InitializeOptions(Properties());
  UpdateModelOptions();
}

const TmvPropertyTable& TmvQueryBuilderProperties::Properties() {
  using T = TmvQueryBuilderProperties;
  static const TmvPropertyTable table("TmvQueryBuilder", {
#define MV_OPTIONS_TABLE
#include "component/options/QueryBuilder.def"
  });
  return table;
}

WideString TmvQueryBuilderProperties::CorrectLinkPainterClassName(const WideString& name) {
  static constexpr const char16_t* kPainters[] = {u"TmvQueryBuilderLinkPainterSimple",
                                                  u"TmvQueryBuilderLinkPainterMSSQL",
                                                  u"TmvQueryBuilderLinkPainterAccess"};
  for (const char16_t* painter : kPainters)
    if (WideSameText(painter, name)) return painter;
  return kPainters[2];
}

void TmvQueryBuilderProperties::UpdateModelOptions() {
  TmvModelOptions& options = builder_->Options;
  options.SortType = FieldsListOptions_.SortType();
  options.KeyFieldsFirst = FieldsListOptions_.KeyFieldsFirst();
  options.HideAsteriskItem = FieldsListOptions_.HideAsteriskItem();
  options.CreateLinksFromRelations = LinkOptions_.CreateLinksFromRelations();
  options.CreateLinksByIdenticalFieldNames = LinkOptions_.CreateLinksByIdenticalFieldNames();
  options.CreateWhereJoinsByDefault = LinkOptions_.CreateWhereJoinsByDefault();
  options.UseMSStyleGrouping = SelectListOptions_.UseMSStyleGrouping();
  options.CreateColumnAliasesFromAltNames = SelectListOptions_.CreateColumnAliasesFromAltNames();
  options.CreateColumnAliasesForUnnamedColumns = SelectListOptions_.CreateColumnAliasesForUnnamedColumns();
  options.ResolveColumnNamingConflictsAutomatically = SelectListOptions_.ResolveColumnNamingConflictsAutomatically();
  // The field the grid reads.
  builder_->UseCustomExpressionBuilder = UseCustomExpressionBuilder();
}

void TmvQueryBuilderProperties::DoUpdated() {
  UpdateModelOptions();
  TmvOptionsBase::DoUpdated();
}

// --- Values kept elsewhere: each setter acts only on a change ---

namespace {

// Sets a value through `set` when `get` differs, then notifies `object`.
template <class V, class Get, class Set>
void SetElsewhere(TmvOptionsBase& object, const V& value, Get get, Set set) {
  if (get() == value) return;
  set(value);
  object.NotifyUpdated();
}

}  // namespace

#define MV_FIELD_ELSEWHERE(Type, Name, Place)                                            \
  Type TmvQueryBuilderProperties::Name() const { return Place; }                         \
  void TmvQueryBuilderProperties::Set##Name(Type value) {                                \
    SetElsewhere(*this, value, [this] { return Name(); }, [this](Type v) { Place = v; }); \
  }

MV_FIELD_ELSEWHERE(bool, ParsingErrorOnUnknownObjects, builder_->ParsingErrorOnUnknownObjects)
MV_FIELD_ELSEWHERE(bool, CanReorderDatasources, builder_->Options.CanReorderDatasources)
MV_FIELD_ELSEWHERE(bool, TableChecksCountInCaption, builder_->Options.TableChecksCountInCaption)
MV_FIELD_ELSEWHERE(bool, LoadJoinsFromWhereClause, builder_->Options.LoadJoinsFromWhereClause)
MV_FIELD_ELSEWHERE(TmvQueryPart, FilterTabsByCurrentQueryPart, builder_->FilterTabsByCurrentQueryPart)
MV_FIELD_ELSEWHERE(bool, AllowSleepMode, builder_->AllowSleepMode)
MV_FIELD_ELSEWHERE(bool, PartialMetadataLoading, builder_->PartialMetadataLoading)

#undef MV_FIELD_ELSEWHERE

// Options of the SQL builders: read from the expression builder, set on all
// of them by the query builder.
#define MV_BUILDER_SETTING(Type, Name)                                                                    \
  Type TmvQueryBuilderProperties::Name() const { return builder_->SQLContext()->SQLBuilderExpression().Name(); } \
  void TmvQueryBuilderProperties::Set##Name(Type value) {                                                 \
    SetElsewhere(*this, value, [this] { return Name(); }, [this](Type v) { builder_->Set##Name(v); });    \
  }

MV_BUILDER_SETTING(TmvObjectPrefixSkipping, ObjectPrefixSkipping)
MV_BUILDER_SETTING(TmvSkipKeywordMode, OuterKeywordInLinks)
MV_BUILDER_SETTING(TmvSkipKeywordMode, InnerKeywordInLinks)
MV_BUILDER_SETTING(TmvSkipKeywordMode, AsKeywordInExpressionAlias)
MV_BUILDER_SETTING(TmvSkipKeywordMode, AsKeywordInObjectAlias)

#undef MV_BUILDER_SETTING

bool TmvQueryBuilderProperties::WorkOffline() const { return builder_->WorkOffline(); }
void TmvQueryBuilderProperties::SetWorkOffline(bool value) {
  SetElsewhere(*this, value, [this] { return WorkOffline(); }, [this](bool v) { builder_->SetWorkOffline(v); });
}

bool TmvQueryBuilderProperties::UseAltNames() const { return builder_->Options.UseAltNames; }
void TmvQueryBuilderProperties::SetUseAltNames(bool value) {
  SetElsewhere(*this, value, [this] { return UseAltNames(); }, [this](bool v) { builder_->SetUseAltNames(v); });
}

bool TmvQueryBuilderProperties::QuoteAllIdentifiers() const { return builder_->GetQuoteAllIdentifiers(); }
void TmvQueryBuilderProperties::SetQuoteAllIdentifiers(bool value) {
  SetElsewhere(*this, value, [this] { return QuoteAllIdentifiers(); },
               [this](bool v) { builder_->SetQuoteAllIdentifiers(v); });
}

// Changes of option objects notify through the object (this one is its parent).
bool TmvQueryBuilderProperties::UseCustomExpressionBuilder() const {
  return !SelectListOptions_.UseCustomExpressionBuilder().Empty();
}
void TmvQueryBuilderProperties::SetUseCustomExpressionBuilder(bool value) {
  if (UseCustomExpressionBuilder() == value) return;
  SelectListOptions_.SetUseCustomExpressionBuilder(value ? TmvAffectedColumns{mvColumnExpressions, mvColumnConditions}
                                                         : TmvAffectedColumns());
}

int32_t TmvQueryBuilderProperties::DefaultTableWidth() const { return DatasourceOptions_.DefaultTableWidth(); }
void TmvQueryBuilderProperties::SetDefaultTableWidth(int32_t value) { DatasourceOptions_.SetDefaultTableWidth(value); }

int32_t TmvQueryBuilderProperties::MaxTableHeight() const { return DatasourceOptions_.MaxTableHeight(); }
void TmvQueryBuilderProperties::SetMaxTableHeight(int32_t value) { DatasourceOptions_.SetMaxTableHeight(value); }

int32_t TmvQueryBuilderProperties::ColumnWidthExpression() const {
  return SelectListOptions_.ExpressionColumnWidth();
}
void TmvQueryBuilderProperties::SetColumnWidthExpression(int32_t value) {
  SelectListOptions_.SetExpressionColumnWidth(value);
}

}  // namespace mv

// --- The builder's properties XML ---

namespace mv {

WideString TmvQueryBuilder::GetPropertiesXML() { return GetPropertiesXMLByXPath({}, {}); }

WideString TmvQueryBuilder::GetPropertiesXMLByTypes(bool nonVisual, bool visual) {
  return mv::GetPropertiesXMLByTypes(XMLPropertiesOf(TmvQueryBuilderProperties::Properties(), *properties_),
                                     nonVisual, visual);
}

WideString TmvQueryBuilder::GetPropertiesXMLByXPath(WideStringView include, WideStringView exclude) {
  return mv::GetPropertiesXMLByXPath(XMLPropertiesOf(TmvQueryBuilderProperties::Properties(), *properties_),
                                     include, exclude);
}

void TmvQueryBuilder::SetPropertiesXML(WideStringView text) {
  if (text.empty()) return;
  BeginUpdate();
  try {
    TmvUpdateBatch batch(*properties_);
    mv::SetPropertiesXML(XMLPropertiesOf(TmvQueryBuilderProperties::Properties(), *properties_), text);
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

}  // namespace mv
