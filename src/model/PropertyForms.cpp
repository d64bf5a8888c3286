#include "model/PropertyForms.h"

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/ModelMessages.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

using K = TmvFormControlKind;

TmvBaseSyntaxProvider* ProviderOf(const TmvPropsFormTarget& target) {
  return target.Context ? target.Context->SyntaxProvider() : nullptr;
}

}  // namespace

// --- Link ---

TmvLinkPropsForm::TmvLinkPropsForm(const TmvPropsFormTarget& target)
    : TmvQBPropertiesForm(u"TmvLinkPropsForm", target) {
  SetCaption(u"Link Properties");
  AddControls({
      {K::Edit, u"eLeftObj", u"Left object", {}, {}, {}, {}},
      {K::Edit, u"eRightObj", u"Right object", {}, {}, {}, {}},
      {K::CheckBox, u"cbAllFromLeft", u"Select All From Left", {}, {}, {}, {}},
      {K::CheckBox, u"cbAllFromRight", u"Select All From Right", {}, {}, {}, {}},
      {K::Edit, u"eExpression", u"Link expression", {}, {}, {}, {}},
  });
  SetReadOnly(u"eLeftObj", true);
  SetReadOnly(u"eRightObj", true);
  SetFocusControl(u"eExpression");
}

TmvLink* TmvLinkPropsForm::Link() const { return TmvCast<TmvLink>(Target().Object); }

bool TmvLinkPropsForm::IsSupportOuterJoinsInWhereClause() const {
  TmvBaseSyntaxProvider* provider = ProviderOf(Target());
  if (!provider) return false;
  if (provider->IsSupportOracleJoins()) return true;
  if (!provider->IsSupportTransactSQLJoins() || !Link()) return false;
  auto* binary = TmvCast<TSQLExpressionOperatorBinary>(ExpressionRemoveBrackets(Link()->GetLinkExpression()));
  if (!binary || !binary->Operator) return false;
  const WideString& op = binary->Operator->Text;
  return op == u"=" || op == u"*=" || op == u"=*";
}

void TmvLinkPropsForm::LoadProps() {
  TmvLink* link = Link();
  if (!link) return;
  if (link->LeftDatasource()) SetText(u"eLeftObj", link->LeftDatasource()->Caption());
  if (link->RightDatasource()) SetText(u"eRightObj", link->RightDatasource()->Caption());
  SetChecked(u"cbAllFromLeft", link->LeftType() == ltOuter);
  SetChecked(u"cbAllFromRight", link->RightType() == ltOuter);
  const bool sides = link->LinkPlace() == lpFrom || IsSupportOuterJoinsInWhereClause();
  SetEnabled(u"cbAllFromLeft", sides);
  SetEnabled(u"cbAllFromRight", sides);
  oldExpression_ = link->GetLinkExpressionString();
  SetText(u"eExpression", oldExpression_);
}

void TmvLinkPropsForm::Clicked(WideStringView name) {
  if (name != u"cbAllFromLeft" && name != u"cbAllFromRight") return;
  if (!Checked(name) || !Link()) return;
  TmvBaseSyntaxProvider* provider = ProviderOf(Target());
  const bool bothAllowed = Link()->LinkPlace() == lpFrom && provider && provider->IsSupportFullANSIJoin();
  if (!bothAllowed) SetChecked(name == u"cbAllFromLeft" ? u"cbAllFromRight" : u"cbAllFromLeft", false);
}

void TmvLinkPropsForm::CheckCanClose() {
  const WideString text = Text(u"eExpression");
  if (text == oldExpression_ || !Target().Context) return;
  if (!Target().Context->ParseLogicalExpression(text))
    throw EmvQueryBuilderError(text, MessageFormat(mvQBBadExpression, {text}));
}

void TmvLinkPropsForm::SaveProps() {
  TmvLink* link = Link();
  if (!link || !Target().Context) return;
  const WideString text = Text(u"eExpression");
  // The link parses the text itself (and refuses a bad one with the same message).
  if (text != oldExpression_) link->SetLinkExpressionString(text);
  const bool left = Checked(u"cbAllFromLeft"), right = Checked(u"cbAllFromRight");
  link->SetJoinKindClass(left && right ? &TSQLJoinKindFull::StaticClass()
                         : left        ? &TSQLJoinKindLeft::StaticClass()
                         : right       ? &TSQLJoinKindRight::StaticClass()
                                       : &TSQLJoinKindInner::StaticClass());
}

// --- Datasource ---

TmvDatasourcePropsForm::TmvDatasourcePropsForm(const TmvPropsFormTarget& target)
    : TmvQBPropertiesForm(u"TmvDatasourcePropsForm", target) {
  SetCaption(u"Datasource Properties");
  AddControls({
      {K::Edit, u"eObject", u"Object", {}, {}, {}, {}},
      {K::Edit, u"eAlias", u"Alias", {}, {}, {}, {}},
  });
  SetFocusControl(u"eAlias");
}

TmvDatasource* TmvDatasourcePropsForm::Datasource() const { return TmvCast<TmvDatasource>(Target().Object); }

namespace {

// The common table expression a datasource names, or null.
TmvSubQuery* CteOf(TmvDatasource* datasource) {
  auto* object = TmvCast<TmvDataSourceObject>(datasource);
  return object ? object->CteSubQuery() : nullptr;
}

}  // namespace

void TmvDatasourcePropsForm::LoadProps() {
  TmvDatasource* datasource = Datasource();
  if (!datasource) return;
  auto* query = TmvCast<TmvDatasourceQuery>(datasource);
  oldObject_ = query && query->SubQuery() ? query->SubQuery()->GetSql() : datasource->GetObjectNameInQuery();
  oldAlias_ = datasource->GetAlias();
  SetText(u"eObject", oldObject_);
  SetText(u"eAlias", oldAlias_);
  SetReadOnly(u"eObject", !CteOf(datasource));
}

void TmvDatasourcePropsForm::CheckCanClose() {
  TmvDatasource* datasource = Datasource();
  TmvBaseSQLContext* context = Target().Context;
  if (!datasource || !context) return;
  const WideString alias = WideTrim(Text(u"eAlias"));
  if (!alias.empty() && alias != oldAlias_) {
    TmvOwned<TastTokenIdentifier> name = context->ParseIdentifierQuoteIfNeed(alias);
    const bool same = name && datasource->GetAliasAST() && context->IsIdentifiersEqual(name.get(), datasource->GetAliasAST());
    if (!same && datasource->UnionSubQuery() && !datasource->UnionSubQuery()->IsUniqueAlias(alias))
      throw EmvQueryBuilderError(alias, MessageFormat(mvQBDuplicatedAlias, {alias}));
  }
  const WideString object = WideTrim(Text(u"eObject"));
  if (TmvSubQuery* cte = CteOf(datasource); cte && object != oldObject_) {
    TmvOwned<TastTokenIdentifier> name = context->ParseIdentifierQuoteIfNeed(object);
    if (!name || !cte->CanRenameCTETo(name.get()))
      throw EmvQueryBuilderError(object, MessageFormat(mvQBDuplicatedName, {object}));
  }
}

void TmvDatasourcePropsForm::SaveProps() {
  TmvDatasource* datasource = Datasource();
  if (!datasource || !Target().Context) return;
  const WideString alias = WideTrim(Text(u"eAlias"));
  if (alias != oldAlias_) {
    // A derived table needs a name: an emptied one gets a new "QueryN".
    if (alias.empty() && TmvCast<TmvDatasourceQuery>(datasource) && datasource->Host())
      datasource->SetAlias(datasource->Host()->CreateUniqueQueryNameStr());
    else
      datasource->SetAlias(alias);
  }
  const WideString object = WideTrim(Text(u"eObject"));
  if (TmvSubQuery* cte = CteOf(datasource); cte && object != oldObject_)
    if (TmvOwned<TastTokenIdentifier> name = Target().Context->ParseIdentifierQuoteIfNeed(object))
      cte->RenameCTE(name.get());
}

// --- Procedure parameters ---

TmvProcedureParamsForm::TmvProcedureParamsForm(WideString procedureName)
    : TmvQBPropertiesForm(u"TmvProcedureParams", {}), name_(std::move(procedureName)) {
  SetCaption(u"Edit Procedure Parameter Values");
  AddControls({
      {K::Label, u"lPrompt", u"Edit parameter values for selected procedure:", {}, {}, {}, {}},
      {K::Edit, u"eParams", name_ + u"(", {}, {}, {}, {}},
      {K::Label, u"lRight", u")", {}, {}, {}, {}},
  });
  SetFocusControl(u"eParams");
}

WideString TmvProcedureParamsForm::GetResultExpression() const { return name_ + u"(" + Text(u"eParams") + u")"; }

// --- Opening a form ---

namespace {

bool TargetOf(TmvQueryBuilderControlOwner* object, TmvPropsFormTarget& target, TmvEditPropsTarget& kind) {
  if (!object || !object->SQLContext()) return false;
  target.Context = object->SQLContext();
  target.Object = object;
  if (TmvCast<TmvLink>(object)) {
    kind = TmvEditPropsTarget::Link;
  } else if (TmvCast<TmvDatasource>(object)) {
    kind = TmvEditPropsTarget::Datasource;
  } else if (auto* member = TmvCast<TmvUnionSubQuery>(object)) {
    kind = TmvEditPropsTarget::UnionSubQuery;
    target.Select = member->SelectAST();
    target.Statement = member->RootQuery() ? member->RootQuery()->GetSubQueryAST() : nullptr;
    // Grouping options need a grouped row to stand on.
    if (TmvSelectList* rows = member->SelectList()) {
      bool grouped = false;
      for (int i = 0; i < rows->Count(); ++i) grouped |= rows->Items(i)->Grouping();
      if (grouped) target.GroupBy = rows->GroupByAST();
    }
  } else {
    return false;
  }
  return true;
}

}  // namespace

WideString EditPropsFormClass(TmvQueryBuilderControlOwner* object) {
  TmvPropsFormTarget target;
  TmvEditPropsTarget kind{};
  if (!TargetOf(object, target, kind) || !target.Context->SyntaxProvider()) return {};
  WideString name = target.Context->SyntaxProvider()->GetEditPropsFormClass(kind);
  return IsPropertiesFormClassRegistered(name) ? name : WideString();
}

bool CanEditProps(TmvQueryBuilderControlOwner* object) { return !EditPropsFormClass(object).empty(); }

std::unique_ptr<TmvQBPropertiesForm> CreateEditPropsForm(TmvQueryBuilderControlOwner* object) {
  TmvPropsFormTarget target;
  TmvEditPropsTarget kind{};
  const WideString name = EditPropsFormClass(object);
  if (name.empty() || !TargetOf(object, target, kind)) return nullptr;
  return CreatePropertiesForm(name, target);
}

bool EditProps(TmvQueryBuilderControlOwner* object) {
  ImvUserInteraction* interaction = object && object->Host() ? object->Host()->UserInteraction() : nullptr;
  if (!interaction) return false;
  std::unique_ptr<TmvQBPropertiesForm> form = CreateEditPropsForm(object);
  if (!form || !interaction->ShowPropertiesForm(*form)) return false;
  TmvUpdateScope update(object);
  form->SaveProps();
  object->NotifySQLUpdated();
  return true;
}

void RegisterModelPropertiesForms() {
  RegisterPropertiesFormClass(u"TmvLinkPropsForm", [](const TmvPropsFormTarget& target) {
    return std::unique_ptr<TmvQBPropertiesForm>(std::make_unique<TmvLinkPropsForm>(target));
  });
  RegisterPropertiesFormClass(u"TmvDatasourcePropsForm", [](const TmvPropsFormTarget& target) {
    return std::unique_ptr<TmvQBPropertiesForm>(std::make_unique<TmvDatasourcePropsForm>(target));
  });
}

}  // namespace mv
