// The links of one SELECT as a program makes and finds them: the AddLink
// family, and where a new link goes (ON clause or WHERE).
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/ModelMessages.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "support/MessageCatalog.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

bool AnyLink(const TmvDatasourceGroup* group, TmvQueryBuilderLinkPlace place) {
  std::vector<TmvLink*> links;
  group->GetLinksRecursive(links);
  return std::any_of(links.begin(), links.end(), [place](TmvLink* link) { return link->LinkPlace() == place; });
}

TmvOwned<TSQLQualifiedName> ParseFieldName(TmvBaseSQLContext* context, const WideString& text) {
  TmvOwned<TSQLQualifiedName> name = context ? context->ParseQualifiedNameQuoteIfNeed(text) : nullptr;
  if (!name) throw EmvQueryBuilderError(MessageFormat(mvQBBadFieldName, {text}));
  return name;
}

// The items of one group that hold the two datasources: the later one is
// where a condition between them is joined.
TmvDatasourceBase* LaterItem(TmvDatasource* datasource1, TmvDatasource* datasource2) {
  auto chain = [](TmvDatasourceBase* item) {
    std::vector<TmvDatasourceBase*> list;
    for (; item; item = item->Group()) list.insert(list.begin(), item);
    return list;
  };
  std::vector<TmvDatasourceBase*> chain1 = chain(datasource1), chain2 = chain(datasource2);
  size_t level = 0;
  while (level < chain1.size() && level < chain2.size() && chain1[level] == chain2[level]) ++level;
  if (level >= chain1.size() || level >= chain2.size()) RaiseListIndexError(static_cast<int64_t>(level), 0);
  TmvDatasourceBase* item1 = chain1[level];
  TmvDatasourceBase* item2 = chain2[level];
  TmvDatasourceGroup* group = item1->Group();
  return group && group->IndexOf(item1) > group->IndexOf(item2) ? item1 : item2;
}

}  // namespace

bool TmvUnionSubQuery::HaveAnsiJoins() const { return AnyLink(datasources_, lpFrom); }

bool TmvUnionSubQuery::HaveWhereJoins() const { return AnyLink(datasources_, lpWhere); }

bool TmvUnionSubQuery::UseANSIJoins() const {
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  if (!provider) return true;
  if (!provider->IsSupportANSIJoins()) return false;
  if (HaveAnsiJoins()) return true;
  if ((provider->IsSupportOracleJoins() || provider->IsSupportTransactSQLJoins()) && HaveWhereJoins()) return false;
  return !(Host() && Host()->Options.CreateWhereJoinsByDefault);
}

// --- Making links ---

TmvLink* TmvUnionSubQuery::AddLink(TmvDatasource* fromDatasource, const TSQLQualifiedName* fromFieldName,
                                   const TSQLQualifiedName* toFieldName, TmvDatasource* toDatasource) {
  return AddLink(fromDatasource, fromFieldName, toFieldName, toDatasource, UseANSIJoins() ? lpFrom : lpWhere);
}

TmvLink* TmvUnionSubQuery::AddLink(TmvDatasource* fromDatasource, const TSQLQualifiedName* fromFieldName,
                                   const TSQLQualifiedName* toFieldName, TmvDatasource* toDatasource,
                                   TmvQueryBuilderLinkPlace place) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context || !fromDatasource || !toDatasource || !fromFieldName || !toFieldName) return nullptr;
  TmvBaseSyntaxProvider* provider = context->SyntaxProvider();
  auto column = [&](TmvDatasource* datasource, const TSQLQualifiedName* name) {
    auto objectColumn = TastCreate<TSQLObjectColumn>(context);
    objectColumn->AddName(name);
    objectColumn->FromSource = datasource->FromSource();
    TmvMetadataFieldsList* fields = datasource->GetFields();
    const int found = provider && fields ? provider->FindFieldInFieldsList(objectColumn.get(), fields) : -1;
    if (found >= 0) {
      TmvMetadataField* field = fields->Items(found);
      objectColumn->Clear();
      objectColumn->AddName(field->Name());
      objectColumn->FromSource = datasource->FromSource();
      objectColumn->SetMetadataField(field);
    }
    auto expression = TastCreate<TSQLExpressionColumn>(context);
    expression->Column.Set(std::move(objectColumn));
    return expression;
  };
  auto binary = TastCreate<TSQLExpressionOperatorBinary>(context);
  binary->Expression.Set(column(fromDatasource, fromFieldName));
  binary->Operator.Set(TastCreate<TSQLOperator>(context, u"="));
  binary->Right.Set(column(toDatasource, toFieldName));
  return datasources_->AddLinkAST(nullptr, std::move(binary), true, place);
}

TmvLink* TmvUnionSubQuery::AddLink(TmvDatasource* fromDatasource, const WideString& fromFieldName,
                                   const WideString& toFieldName, TmvDatasource* toDatasource) {
  return AddLink(fromDatasource, fromFieldName, toFieldName, toDatasource, UseANSIJoins() ? lpFrom : lpWhere);
}

TmvLink* TmvUnionSubQuery::AddLink(TmvDatasource* fromDatasource, const WideString& fromFieldName,
                                   const WideString& toFieldName, TmvDatasource* toDatasource,
                                   TmvQueryBuilderLinkPlace place) {
  TmvOwned<TSQLQualifiedName> fromName = ParseFieldName(SQLContext(), fromFieldName);
  TmvOwned<TSQLQualifiedName> toName = ParseFieldName(SQLContext(), toFieldName);
  return AddLink(fromDatasource, fromName.get(), toName.get(), toDatasource, place);
}

TmvLink* TmvUnionSubQuery::AddLink(TmvDatasource* fromDatasource, TmvDatasource* toDatasource,
                                   const WideString& expression) {
  return AddLink(fromDatasource, toDatasource, expression, UseANSIJoins() ? lpFrom : lpWhere);
}

TmvLink* TmvUnionSubQuery::AddLink(TmvDatasource* fromDatasource, TmvDatasource* toDatasource,
                                   const WideString& expression, TmvQueryBuilderLinkPlace place) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context) return nullptr;
  TmvOwned<TSQLExpressionItem> parsed = context->ParseLogicalExpression(expression);
  if (!parsed) throw EmvQueryBuilderError(MessageFormat(mvQBBadExpression, {expression}));
  return AddLink(fromDatasource, toDatasource, parsed.get(), place);
}

namespace {

// A clone of the expression bound to the SELECT's sources.
TmvOwned<TSQLExpressionItem> BoundClone(TmvUnionSubQuery* member, const TSQLExpressionItem* expression) {
  auto clone = expression->CloneAs<TSQLExpressionItem>(member->SQLContext());
  clone->RestoreColumnPrefixRecursive(true);
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  member->GatherPrepareAndFixupContext(cteList, fromSources, true);
  clone->PrepareAndFixupRecursive(cteList, fromSources);
  return clone;
}

}  // namespace

TmvLink* TmvUnionSubQuery::AddLink(TmvDatasource*, TmvDatasource*, const TSQLExpressionItem* expression,
                                   TmvQueryBuilderLinkPlace place) {
  if (!expression || !SQLContext()) return nullptr;
  return datasources_->AddLinkAST(nullptr, BoundClone(this, expression), true, place);
}

std::vector<TmvLink*> TmvUnionSubQuery::AddLinksFromExpression(TmvDatasource* datasource1,
                                                               TmvDatasource* datasource2,
                                                               const TSQLExpressionItem* expression) {
  if (!expression || !datasource1 || !datasource2 || !SQLContext()) return {};
  TmvDatasourceBase* owner = LaterItem(datasource1, datasource2);
  return owner->AddLinksFromExpression(BoundClone(this, expression));
}

std::vector<TmvLink*> TmvUnionSubQuery::AddLinksFromExpression(TmvDatasource* datasource1,
                                                               TmvDatasource* datasource2,
                                                               const WideString& expression) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context) return {};
  TmvOwned<TSQLExpressionItem> parsed = context->ParseLogicalExpression(expression);
  if (!parsed) throw EmvQueryBuilderError(MessageFormat(mvQBBadExpression, {expression}));
  return AddLinksFromExpression(datasource1, datasource2, parsed.get());
}

// --- Finding links ---

TmvLink* TmvUnionSubQuery::FindLink(TmvDatasource* datasource1, const TSQLQualifiedName* name1,
                                    const TSQLQualifiedName* name2, TmvDatasource* datasource2) const {
  TmvBaseSQLContext* context = SQLContext();
  if (!context || !name1 || !name2) return nullptr;
  // A field compares by its own name when the name asked for has one part.
  auto same = [context](const TSQLQualifiedName* field, const TSQLQualifiedName* name) {
    if (!field) return false;
    if (context->CompareQualifiedNames(field, name) == 0) return true;
    if (name->GetCount() != 1 || field->GetCount() <= 1) return false;
    TmvOwned<TSQLQualifiedName> own = field->GetNameWithoutPrefixes(field->GetCount() - 1);
    return context->CompareQualifiedNames(own.get(), name) == 0;
  };
  std::vector<TmvLink*> links;
  datasources_->GetLinksRecursive(links);
  for (TmvLink* link : links)
    if (link->IsSimple() && link->LeftDatasource() == datasource1 && link->RightDatasource() == datasource2 &&
        same(link->LeftField(), name1) && same(link->RightField(), name2))
      return link;
  return nullptr;
}

TmvLink* TmvUnionSubQuery::FindLink(TmvDatasource* datasource1, const WideString& name1, const WideString& name2,
                                    TmvDatasource* datasource2) const {
  TmvOwned<TSQLQualifiedName> parsed1 = ParseFieldName(SQLContext(), name1);
  TmvOwned<TSQLQualifiedName> parsed2 = ParseFieldName(SQLContext(), name2);
  return FindLink(datasource1, parsed1.get(), parsed2.get(), datasource2);
}

}  // namespace mv
