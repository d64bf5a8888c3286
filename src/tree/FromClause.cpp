#include "tree/FromClause.h"

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/LogicalExpressions.h"
#include "tree/MetadataHooks.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

TmvBaseSyntaxProvider* ProviderOf(const TastNode& node) {
  return node.SQLContext() ? node.SQLContext()->SyntaxProvider() : nullptr;
}

// Whether an optional keyword prints: where the source had it (unless the
// builder asks to skip it), always when asked, and where the dialect needs it.
bool PrintOptionalKeyword(bool hadKeyword, TmvSkipKeywordMode mode, bool mandatory) {
  return mandatory || mode == skPrintAlways || (hadKeyword && mode != skSkipIfPossible);
}

}  // namespace

// --- TSQLAliasObjectAlias ---

void TSQLAliasObjectAlias::BuildAliasName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Name.get(), builder, format);
}

void TSQLAliasObjectAlias::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TmvBaseSyntaxProvider* provider = ProviderOf(*this);
  const bool mandatory = provider && provider->IsAsKeywordInObjectAliasMandatory();
  const TmvSkipKeywordMode mode = builder.AsKeywordInObjectAlias();
  if (mandatory || mode == skPrintAlways || (mode == skDontCare && AsKeyword)) {
    builder.WriteKeyword(u"As");
    builder.Space(3);
  }
  BuildAliasName(builder, format);
}

// --- TSQLFromSource ---

TmvMetadataObject* TSQLFromSource::GetMetadataObject() const {
  TmvBaseSQLContext* context = SQLContext();
  if (!MetadataObject || !context) return nullptr;
  return MetadataContainerHolds(context->MetadataContainer(), MetadataObject) ? MetadataObject : nullptr;
}

bool TSQLFromSource::BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (Alias)
    Alias->BuildAliasName(builder, format);
  else
    BuildExpression(builder, format);
  return true;
}

void TSQLFromSource::BuildAlias(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Alias) return;
  builder.Space(3);
  Alias->BuildSQL(builder, format);
}

void TSQLFromSource::BuildJoinOperator(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (JoinKind)
    JoinKind->BuildSQL(builder, format);
  else
    builder.WriteSymbol(u",");
}

void TSQLFromSource::BuildColumnNamesList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (ColumnNames) TastBuildColumnNames(*ColumnNames, builder, format);
}

WideString TSQLFromSource::GetSimpleExpression(TSQLBuilder& builder) {
  builder.BeginBuild();
  BuildExpression(builder, builder.MainQueryFormat());
  builder.EndBuild();
  return builder.GetResult();
}

void TSQLFromSource::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildExpression(builder, format);
  BuildAlias(builder, format);
  BuildColumnNamesList(builder, format);
}

// --- TSQLFromObject ---

void TSQLFromObject::Assign(const TastNodeBase& source) {
  TSQLFromSource::Assign(source);
  const auto* other = TmvCast<TSQLFromObject>(&source);
  if (other) AssignOwnFields(*other);
  WithItem = nullptr;
  // The copy's own name refers to the copy, as the original's to the original.
  if (other && other->Object && other->Object->FromSource == other)
    AfterChildrenAssigned([this] {
      if (Object) Object->FromSource = this;
    });
}

bool TSQLFromObject::RestoresColumnPrefixOf(const TastNodeBase* child) const { return child != Object.get(); }

TastTokenIdentifier* TSQLFromObject::AltNameToPrint(const TSQLBuilder& builder) const {
  return builder.UseAltNames() ? MetadataObjectAltName(GetMetadataObject()) : nullptr;
}

TSQLFromSource* TSQLFromObject::VirtualExpressionToPrint(const TSQLBuilder& builder) const {
  return builder.ExpandVirtualObjects() ? MetadataObjectExpression(GetMetadataObject()) : nullptr;
}

bool TSQLFromObject::BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (Alias) {
    Alias->BuildAliasName(builder, format);
    return true;
  }
  if (TastTokenIdentifier* altName = AltNameToPrint(builder)) {
    altName->BuildSQL(builder, format);
    return true;
  }
  if (!Object) return false;
  TmvBaseSyntaxProvider* provider = ProviderOf(*this);
  if (provider && provider->GetUseObjectNamesAsDefaultAliases() && Object->GetCount() >= 1) {
    Object->GetItems(0)->BuildSQL(builder, format);
    return true;
  }
  Object->BuildQualifiedNameNamesFull(builder, format);
  return true;
}

void TSQLFromObject::BuildColumnSuffix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Alias && Object && !AltNameToPrint(builder)) Object->BuildQualifiedNameDBLink(builder, format);
}

void TSQLFromObject::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (TSQLFromSource* expression = VirtualExpressionToPrint(builder)) {
    expression->BuildExpression(builder, format);
    return;
  }
  if (TastTokenIdentifier* altName = AltNameToPrint(builder)) {
    altName->BuildSQL(builder, format);
    return;
  }
  if (!Object) return;
  Object->BuildQualifiedNameNamesFull(builder, format);
  Object->BuildQualifiedNameDBLink(builder, format);
}

void TSQLFromObject::BuildAlias(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (Alias || !VirtualExpressionToPrint(builder)) {
    TSQLFromSource::BuildAlias(builder, format);
    return;
  }
  // The expanded expression needs a name for the columns that refer to it.
  const TmvMetadataObject* object = GetMetadataObject();
  const TastTokenIdentifier* name = MetadataObjectAltName(object);
  if (!name) name = MetadataObjectName(object);
  TmvOwned<TSQLAliasObjectAlias> alias = TastCreate<TSQLAliasObjectAlias>(SQLContext());
  alias->Name.Set(name->CloneAs<TastTokenIdentifier>(SQLContext()));
  builder.Space(3);
  alias->BuildSQL(builder, format);
}

// --- TSQLFromQuery ---

bool TSQLFromQuery::BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Alias) return false;
  Alias->BuildAliasName(builder, format);
  return true;
}

void TSQLFromQuery::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  TSQLBuilderSelectFormat& subFormat = builder.FromSubQueryFormat();
  builder.AddIndent(subFormat.IndentGlobal());
  try {
    builder.WriteSymbol(u"(");
    BuildASTField(SubQuery.get(), builder, subFormat);
    builder.WriteSymbol(u")");
  } catch (...) {
    builder.EndIndent();
    throw;
  }
  builder.EndIndent();
}

// --- TSQLFromFunction ---

void TSQLFromFunction::Assign(const TastNodeBase& source) {
  TSQLFromSource::Assign(source);
  const auto* other = TmvCast<TSQLFromFunction>(&source);
  if (other && other->Name && other->Name->FromSource == other)
    AfterChildrenAssigned([this] {
      if (Name) Name->FromSource = this;
    });
}

bool TSQLFromFunction::RestoresColumnPrefixOf(const TastNodeBase* child) const { return child != Name.get(); }

bool TSQLFromFunction::BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Alias) return false;
  Alias->BuildAliasName(builder, format);
  return true;
}

void TSQLFromFunction::BuildFunctionNameExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (TastTokenIdentifier* altName = builder.UseAltNames() ? MetadataObjectAltName(GetMetadataObject()) : nullptr) {
    altName->BuildSQL(builder, format);
    return;
  }
  if (!Name) return;
  Name->BuildQualifiedNameNamesFull(builder, format);
  Name->BuildQualifiedNameDBLink(builder, format);
}

void TSQLFromFunction::BuildParamsExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TmvBaseSyntaxProvider* provider = ProviderOf(*this);
  const bool hasParams = Params && Params->GetCount() > 0;
  if (!hasParams && !(provider ? provider->IsSupportEmptyBracketsInStoredProcs() : true)) return;
  builder.WriteSymbol(u"(");
  if (Params) TastBuildCommaList(Params->Items, builder, format);
  builder.WriteSymbol(u")");
}

void TSQLFromFunction::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TmvBaseSyntaxProvider* provider = ProviderOf(*this);
  if (provider) provider->BeginBuildWrapperForStoredProc(builder, format);
  BuildFunctionNameExpression(builder, format);
  BuildParamsExpression(builder, format);
  if (provider) provider->EndBuildWrapperForStoredProc(builder, format);
}

void TSQLFromVariable::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Variable.get(), builder, format);
}

void TSQLFromNodesList::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Nodes.get(), builder, format);
}

// --- TSQLFromGroup ---

TSQLFromSource* TSQLFromGroup::Add(TmvOwned<TSQLFromSource> source) {
  TSQLFromSource* raw = source.get();
  Items.Add(std::move(source));
  return raw;
}

TmvOwned<TSQLFromSource> TSQLFromGroup::Extract(const TSQLFromSource* source) {
  return TmvOwned<TSQLFromSource>(static_cast<TSQLFromSource*>(Items.Extract(source).release()));
}

TmvOwned<TSQLFromSource> TSQLFromGroup::Extract(int index) {
  return TmvOwned<TSQLFromSource>(static_cast<TSQLFromSource*>(Items.Extract(index).release()));
}

void TSQLFromGroup::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildSQLDirect(builder, format);
}

void TSQLFromGroup::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  const TSQLBuilderFromClauseFormat& from = format.FromClauseFormat();
  TmvBaseSyntaxProvider* provider = ProviderOf(*this);
  for (int i = 0; i < Items.Count(); ++i) {
    TSQLFromSource* item = GetItems(i);
    if (!item) continue;
    if (i > 0) {
      const bool joined = !item->JoinKind.IsNull();
      if (!joined && from.NewLineBeforeComma())
        builder.NewLine();
      else if (joined)
        builder.NewLineOrSpace(from.NewLineAfterDatasource(), 1);
      item->BuildJoinOperator(builder, format);
      if (joined)
        builder.NewLineOrSpace(from.NewLineAfterJoin(), 1);
      else
        builder.NewLineOrSpace(!from.NewLineBeforeComma() && (from.NewLineAfterJoin() || from.NewLineAfterDatasource()),
                               1);
    }
    const bool isGroup = TmvCast<TSQLFromGroup>(item) != nullptr;
    if (isGroup) builder.WriteSymbol(u"(");
    item->BuildSQL(builder, format);
    if (isGroup) builder.WriteSymbol(u")");
    if (item->JoinExpression) {
      builder.AddIndent(format.IndentInPart());
      builder.NewLineOrSpace(from.NewLineBeforeJoinExpression(), 1);
      builder.WriteKeyword(u"On");
      builder.Space(3);
      const bool brackets = provider && provider->IsBracketsInComplexJoinMandatory() &&
                            TmvCast<TSQLExpressionLogicalCollection>(item->JoinExpression.get());
      if (brackets) builder.WriteSymbol(u"(");
      item->JoinExpression->BuildSQLCosmetic(builder, format, false, 0, from.JoinConditionFormat());
      if (brackets) builder.WriteSymbol(u")");
      builder.EndIndent();
    }
  }
}

// --- Join kinds ---

void TSQLJoinKindCross::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  builder.WriteKeyword(u"Cross");
  builder.Space(3);
  builder.WriteKeyword(u"Join");
}

void TSQLJoinKindInner::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  TmvBaseSyntaxProvider* provider = ProviderOf(*this);
  if (PrintOptionalKeyword(InnerKeyword, builder.InnerKeywordInLinks(),
                           provider && provider->IsInnerKeywordInLinksMandatory())) {
    builder.WriteKeyword(u"Inner");
    builder.Space(3);
  }
  builder.WriteKeyword(u"Join");
}

void TSQLJoinKindOuter::BuildOuter(TSQLBuilder& builder, const char16_t* side) {
  TmvBaseSyntaxProvider* provider = ProviderOf(*this);
  builder.WriteKeyword(side);
  builder.Space(3);
  if (PrintOptionalKeyword(OuterKeyword, builder.OuterKeywordInLinks(),
                           provider && provider->IsOuterKeywordInLinksMandatory())) {
    builder.WriteKeyword(u"Outer");
    builder.Space(3);
  }
  builder.WriteKeyword(u"Join");
}

void TSQLJoinKindLeft::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { BuildOuter(builder, u"Left"); }
void TSQLJoinKindRight::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { BuildOuter(builder, u"Right"); }
void TSQLJoinKindFull::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { BuildOuter(builder, u"Full"); }

}  // namespace mv
