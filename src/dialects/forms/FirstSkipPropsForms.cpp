// The query forms of Firebird (FIRST n SKIP m ahead of the select list) and
// InterBase (ROWS n [TO m] or ROWS n [BY m] PERCENT [WITH TIES] after the
// query), and Oracle's, which only adds the mode UNIQUE.
#include "dialects/firebird/FirebirdNodes.h"
#include "dialects/forms/DialectPropsForms.h"
#include "dialects/interbase/IBNodes.h"
#include "tree/Expressions.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"

namespace mv {

using K = TmvFormControlKind;

// --- Firebird ---

TmvQueryPropsFbForm::TmvQueryPropsFbForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsFbForm") {
  AddControls({
      {K::CheckBox, u"cbFirst", u"FIRST", {}, {}, {}, {}},
      {K::Edit, u"eFirst", u"", u"cbFirst", {}, u"0", {}},
      {K::CheckBox, u"cbSkip", u"SKIP", {}, {}, {}, {}},
      {K::Edit, u"eSkip", u"", u"cbSkip", {}, u"0", {}},
  });
}

void TmvQueryPropsFbForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = SelectExtender<TFirebirdSQLSubQuerySelectExpressionExtender>();
  const TSQLSubQueryFirstSkipClause* clause = extender ? extender->FirstSkip.get() : nullptr;
  LoadOptional(u"cbFirst", u"eFirst", clause ? clause->First.get() : nullptr);
  LoadOptional(u"cbSkip", u"eSkip", clause ? clause->Skip.get() : nullptr);
}

void TmvQueryPropsFbForm::CheckCanClose() {
  CheckExpression(u"eFirst");
  CheckExpression(u"eSkip");
}

void TmvQueryPropsFbForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  auto* extender = SelectExtender<TFirebirdSQLSubQuerySelectExpressionExtender>();
  if (!extender) return;
  extender->FirstSkip.Reset();
  if (!Checked(u"cbFirst") && !Checked(u"cbSkip")) return;
  auto clause = TastCreate<TSQLSubQueryFirstSkipClause>(Context());
  if (Checked(u"cbFirst")) clause->First.Set(ParsedExpression(u"eFirst"));
  if (Checked(u"cbSkip")) clause->Skip.Set(ParsedExpression(u"eSkip"));
  extender->FirstSkip.Set(std::move(clause));
}

// --- InterBase ---

TmvQueryPropsIbForm::TmvQueryPropsIbForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsIbForm") {
  AddControls({
      {K::CheckBox, u"checkRows", u"ROWS", {}, {}, {}, {}},
      {K::Radio, u"radioRows", u"Rows", u"checkRows", u"RowsKind", u"1", {}},
      {K::Edit, u"editRows", u"", u"radioRows", {}, u"0", {}},
      {K::CheckBox, u"checkTo", u"TO", u"radioRows", {}, {}, {}},
      {K::Edit, u"editTo", u"", u"checkTo", {}, u"0", {}},
      {K::Radio, u"radioPercent", u"Percent", u"checkRows", u"RowsKind", {}, {}},
      {K::Edit, u"editPercent", u"", u"radioPercent", {}, u"0", {}},
      {K::CheckBox, u"checkBy", u"BY", u"radioPercent", {}, {}, {}},
      {K::Edit, u"editBy", u"", u"checkBy", {}, u"0", {}},
      {K::CheckBox, u"checkWithTies", u"WITH TIES", u"checkRows", {}, {}, {}},
  });
}

void TmvQueryPropsIbForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = StatementExtender<TIBSQLSelectStatementExtender>();
  const TSQLSubQueryRowsClause* rows = extender ? extender->Rows.get() : nullptr;
  SetChecked(u"checkRows", rows != nullptr);
  if (!rows) return;
  SetChecked(rows->Percent ? u"radioPercent" : u"radioRows", true);
  SetText(rows->Percent ? u"editPercent" : u"editRows", NodeText(rows->Low.get()));
  LoadOptional(rows->Percent ? u"checkBy" : u"checkTo", rows->Percent ? u"editBy" : u"editTo", rows->High.get());
  SetChecked(u"checkWithTies", rows->WithTiesWords);
}

void TmvQueryPropsIbForm::CheckCanClose() {
  for (const char16_t* edit : {u"editRows", u"editTo", u"editPercent", u"editBy"}) CheckExpression(edit);
}

void TmvQueryPropsIbForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  auto* extender = StatementExtender<TIBSQLSelectStatementExtender>();
  if (!extender) return;
  extender->Rows.Reset();
  if (!Checked(u"checkRows")) return;
  const bool percent = Checked(u"radioPercent");
  auto rows = TastCreate<TSQLSubQueryRowsClause>(Context());
  rows->Percent = percent;
  rows->Low.Set(ParsedExpression(percent ? u"editPercent" : u"editRows"));
  if (Checked(percent ? u"checkBy" : u"checkTo")) rows->High.Set(ParsedExpression(percent ? u"editBy" : u"editTo"));
  rows->WithTiesWords = Checked(u"checkWithTies");
  extender->Rows.Set(std::move(rows));
}

// --- Oracle ---

TmvQueryPropsOracleForm::TmvQueryPropsOracleForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsOracleForm") {
  AddSelectMode({u"rbUnique", u"UNIQUE", &TSQLSubQuerySelectModeUnique::StaticClass()});
}

}  // namespace mv
