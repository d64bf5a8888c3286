// The query forms of the dialects that limit rows with TOP ahead of the
// select list: SQL Server (with GROUP BY ALL, WITH CUBE|ROLLUP and INTO),
// Access (with DISTINCTROW and INTO), Sybase (FIRST, or TOP with START AT),
// Advantage (TOP, TOP PERCENT, START AT) and Teradata (TOP with PERCENT and
// WITH TIES).
#include <algorithm>

#include "dialects/access/AccessNodes.h"
#include "dialects/advantage/AdvantageNodes.h"
#include "dialects/forms/DialectPropsForms.h"
#include "dialects/mssql/MSSQLNodes.h"
#include "dialects/sybase/SybaseNodes.h"
#include "dialects/teradata/TeradataNodes.h"
#include "tree/Expressions.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"

namespace mv {

namespace {

using K = TmvFormControlKind;

// A TOP of rows or percent with its count, start and ties.
TmvOwned<TSQLSubQueryTopPart> MakeTop(TmvBaseSQLContext* context, bool percent, TmvOwned<TSQLExpressionItem> count,
                                      TmvOwned<TSQLExpressionItem> startAt, bool withTies) {
  TmvOwned<TSQLSubQueryTopRows> top =
      percent ? TastCreate<TSQLSubQueryTopPercent>(context) : TastCreate<TSQLSubQueryTopRows>(context);
  top->Count.Set(std::move(count));
  if (startAt) top->StartAt.Set(std::move(startAt));
  if (withTies) top->WithTies.Set(TastCreate<TSQLSubQueryTopWithTies>(context));
  return top;
}

}  // namespace

// --- SQL Server ---

TmvQueryPropsMSForm::TmvQueryPropsMSForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsMSForm") {
  AddControls({
      {K::CheckBox, u"cbTop", u"TOP", {}, {}, {}, {}},
      {K::Edit, u"eTop", u"", u"cbTop", {}, u"0", {}},
      {K::CheckBox, u"cbTopPercent", u"PERCENT", u"cbTop", {}, {}, {}},
      {K::CheckBox, u"cbTopWithTies", u"WITH TIES", u"cbTop", {}, {}, {}},
      {K::CheckBox, u"cbGroupByAll", u"GROUP BY ALL", {}, {}, {}, {}},
      {K::Choice, u"cbGroupByWith", u"GROUP BY", {}, {}, u"0", {u"(none)", u"WITH CUBE", u"WITH ROLLUP"}},
      {K::CheckBox, u"cbInto", u"INTO", {}, {}, {}, {}},
      {K::Edit, u"eInto", u"", u"cbInto", {}, {}, {}},
  });
}

void TmvQueryPropsMSForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = SelectExtender<TMSSQLSubQuerySelectExpressionExtender>();
  auto* top = extender ? TmvCast<TSQLSubQueryTopRows>(extender->Top.get()) : nullptr;
  LoadOptional(u"cbTop", u"eTop", top ? top->Count.get() : nullptr);
  SetChecked(u"cbTopPercent", TmvCast<TSQLSubQueryTopPercent>(top) != nullptr);
  SetChecked(u"cbTopWithTies", top && top->WithTies);
  LoadOptional(u"cbInto", u"eInto", extender ? extender->IntoTable.get() : nullptr);
  auto* grouping = Target().GroupBy ? TmvCast<TMSSQLGroupByListExtender>(Target().GroupBy->Extender.get()) : nullptr;
  SetEnabled(u"cbGroupByAll", grouping != nullptr);
  SetEnabled(u"cbGroupByWith", grouping != nullptr);
  if (grouping) {
    SetChecked(u"cbGroupByAll", grouping->All);
    SetChoiceIndex(u"cbGroupByWith", grouping->WithKind);
  }
}

void TmvQueryPropsMSForm::CheckCanClose() {
  CheckExpression(u"eTop");
  CheckQualifiedName(u"eInto");
}

void TmvQueryPropsMSForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  if (auto* extender = SelectExtender<TMSSQLSubQuerySelectExpressionExtender>()) {
    extender->Top.Reset();
    if (Checked(u"cbTop"))
      extender->Top.Set(MakeTop(Context(), Checked(u"cbTopPercent"), ParsedExpression(u"eTop"), nullptr,
                                Checked(u"cbTopWithTies")));
    extender->IntoTable.Reset();
    if (Checked(u"cbInto")) extender->IntoTable.Set(ParsedQualifiedName(u"eInto"));
  }
  if (auto* grouping =
          Target().GroupBy ? TmvCast<TMSSQLGroupByListExtender>(Target().GroupBy->Extender.get()) : nullptr) {
    grouping->All = Checked(u"cbGroupByAll");
    grouping->WithKind = uint8_t(std::clamp(ChoiceIndex(u"cbGroupByWith"), 0, 2));
  }
}

// --- Teradata (TOP n [PERCENT] [WITH TIES]) ---

TmvQueryPropsTeradataForm::TmvQueryPropsTeradataForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsTeradataForm") {
  AddControls({
      {K::CheckBox, u"cbTop", u"TOP", {}, {}, {}, {}},
      {K::Edit, u"eTop", u"", u"cbTop", {}, u"1", {}},
      {K::CheckBox, u"cbTopPercent", u"PERCENT", u"cbTop", {}, {}, {}},
      {K::CheckBox, u"cbTopWithTies", u"WITH TIES", u"cbTop", {}, {}, {}},
  });
}

void TmvQueryPropsTeradataForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = SelectExtender<TmvTeradataSubQuerySelectExpressionExtender>();
  auto* top = extender ? TmvCast<TSQLSubQueryTopRows>(extender->Top.get()) : nullptr;
  LoadOptional(u"cbTop", u"eTop", top ? top->Count.get() : nullptr);
  SetChecked(u"cbTopPercent", TmvCast<TSQLSubQueryTopPercent>(top) != nullptr);
  SetChecked(u"cbTopWithTies", top && top->WithTies);
}

void TmvQueryPropsTeradataForm::CheckCanClose() { CheckExpression(u"eTop"); }

void TmvQueryPropsTeradataForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  auto* extender = SelectExtender<TmvTeradataSubQuerySelectExpressionExtender>();
  if (!extender) return;
  extender->Top.Reset();
  if (Checked(u"cbTop"))
    extender->Top.Set(MakeTop(Context(), Checked(u"cbTopPercent"), ParsedExpression(u"eTop"), nullptr,
                              Checked(u"cbTopWithTies")));
}

// --- Access ---

TmvQueryPropsAccessForm::TmvQueryPropsAccessForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsAccessForm") {
  AddSelectMode({u"rbDistinctRow", u"DISTINCTROW", &TSQLSubQuerySelectModeDistinctRow::StaticClass()});
  AddControls({
      {K::CheckBox, u"cbTop", u"TOP", {}, {}, {}, {}},
      {K::Edit, u"eTop", u"", u"cbTop", {}, u"0", {}},
      {K::CheckBox, u"cbTopPercent", u"PERCENT", u"cbTop", {}, {}, {}},
      {K::CheckBox, u"cbInto", u"INTO", {}, {}, {}, {}},
      {K::Edit, u"eInto", u"", u"cbInto", {}, {}, {}},
  });
}

void TmvQueryPropsAccessForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = SelectExtender<TAccessSubQuerySelectExpressionExtender>();
  auto* top = extender ? TmvCast<TSQLSubQueryTopRows>(extender->Top.get()) : nullptr;
  LoadOptional(u"cbTop", u"eTop", top ? top->Count.get() : nullptr);
  SetChecked(u"cbTopPercent", TmvCast<TSQLSubQueryTopPercent>(top) != nullptr);
  LoadOptional(u"cbInto", u"eInto", extender ? extender->IntoTable.get() : nullptr);
}

void TmvQueryPropsAccessForm::CheckCanClose() {
  CheckExpression(u"eTop");
  CheckQualifiedName(u"eInto");
}

void TmvQueryPropsAccessForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  auto* extender = SelectExtender<TAccessSubQuerySelectExpressionExtender>();
  if (!extender) return;
  extender->Top.Reset();
  if (Checked(u"cbTop"))
    extender->Top.Set(MakeTop(Context(), Checked(u"cbTopPercent"), ParsedExpression(u"eTop"), nullptr, false));
  extender->IntoTable.Reset();
  if (Checked(u"cbInto")) extender->IntoTable.Set(ParsedQualifiedName(u"eInto"));
}

// --- Sybase ---

TmvQueryPropsSbForm::TmvQueryPropsSbForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsSbForm") {
  AddControls({
      {K::Radio, u"rbAllRecords", u"All records", {}, u"Fetch", u"1", {}},
      {K::Radio, u"rbFirst", u"FIRST", {}, u"Fetch", {}, {}},
      {K::Radio, u"rbTop", u"TOP", {}, u"Fetch", {}, {}},
      {K::Edit, u"eTop", u"", u"rbTop", {}, u"0", {}},
      {K::CheckBox, u"cbStartingAt", u"START AT", u"rbTop", {}, {}, {}},
      {K::Edit, u"eStartingAt", u"", u"cbStartingAt", {}, u"0", {}},
  });
}

void TmvQueryPropsSbForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = SelectExtender<TSybaseSubQuerySelectExpressionExtender>();
  TastNode* part = extender ? extender->Top.get() : nullptr;
  auto* top = TmvCast<TSQLSubQueryTopRows>(part);
  SetChecked(top ? u"rbTop" : TmvCast<TSQLSubQueryFirstSkipClause>(part) ? u"rbFirst" : u"rbAllRecords", true);
  if (top) SetText(u"eTop", NodeText(top->Count.get()));
  LoadOptional(u"cbStartingAt", u"eStartingAt", top ? top->StartAt.get() : nullptr);
}

void TmvQueryPropsSbForm::CheckCanClose() {
  CheckInteger(u"eTop");
  CheckInteger(u"eStartingAt");
}

void TmvQueryPropsSbForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  auto* extender = SelectExtender<TSybaseSubQuerySelectExpressionExtender>();
  if (!extender) return;
  extender->Top.Reset();
  if (Checked(u"rbFirst")) extender->Top.Set(TastCreate<TSQLSubQueryFirstSkipClause>(Context()));
  if (Checked(u"rbTop"))
    extender->Top.Set(MakeTop(Context(), false, ParsedExpression(u"eTop"),
                              Checked(u"cbStartingAt") ? ParsedExpression(u"eStartingAt") : nullptr, false));
}

// --- Advantage ---

TmvQueryPropsAdvantageForm::TmvQueryPropsAdvantageForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsAdvantageForm") {
  AddControls({
      {K::Radio, u"rbAllRecords", u"All records", {}, u"Fetch", u"1", {}},
      {K::Radio, u"rbTop", u"TOP", {}, u"Fetch", {}, {}},
      {K::Edit, u"eTop", u"", u"rbTop", {}, u"0", {}},
      {K::Radio, u"rbTopPercent", u"TOP PERCENT", {}, u"Fetch", {}, {}},
      {K::Edit, u"eTopPercent", u"", u"rbTopPercent", {}, u"0", {}},
      {K::CheckBox, u"cbStartingAt", u"START AT", {}, {}, {}, {}},
      {K::Edit, u"eStartingAt", u"", u"cbStartingAt", {}, u"0", {}},
  });
}

void TmvQueryPropsAdvantageForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = SelectExtender<TAdvantageSubQuerySelectExpressionExtender>();
  auto* top = extender ? TmvCast<TSQLSubQueryTopRows>(extender->Top.get()) : nullptr;
  const bool percent = TmvCast<TSQLSubQueryTopPercent>(top) != nullptr;
  SetChecked(!top ? u"rbAllRecords" : percent ? u"rbTopPercent" : u"rbTop", true);
  if (top) SetText(percent ? u"eTopPercent" : u"eTop", NodeText(top->Count.get()));
  LoadOptional(u"cbStartingAt", u"eStartingAt", top ? top->StartAt.get() : nullptr);
}

void TmvQueryPropsAdvantageForm::CheckCanClose() {
  CheckInteger(u"eTop");
  CheckInteger(u"eTopPercent");
  if (!Checked(u"rbAllRecords")) CheckInteger(u"eStartingAt");
}

void TmvQueryPropsAdvantageForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  auto* extender = SelectExtender<TAdvantageSubQuerySelectExpressionExtender>();
  if (!extender) return;
  extender->Top.Reset();
  if (Checked(u"rbAllRecords")) return;
  const bool percent = Checked(u"rbTopPercent");
  extender->Top.Set(MakeTop(Context(), percent, ParsedExpression(percent ? u"eTopPercent" : u"eTop"),
                            Checked(u"cbStartingAt") ? ParsedExpression(u"eStartingAt") : nullptr, false));
}

}  // namespace mv
