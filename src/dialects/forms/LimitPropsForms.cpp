// The query forms of the dialects that limit rows after the query: LIMIT and
// OFFSET of PostgreSQL and Netezza (on the statement) and of SQLite and
// MySQL (one limit node), and DB2's FETCH FIRST n ROWS ONLY.
#include "dialects/db2/DB2Nodes.h"
#include "dialects/forms/DialectPropsForms.h"
#include "dialects/mysql/MYSQLNodes.h"
#include "dialects/netezza/NetezzaNodes.h"
#include "dialects/pgsql/PGSQLNodes.h"
#include "dialects/sqlite/SQLiteNodes.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "tree/Expressions.h"
#include "tree/QualifiedNames.h"
#include "tree/RowLimits.h"
#include "tree/SelectClauses.h"
#include "tree/Tokens.h"

namespace mv {

namespace {

using K = TmvFormControlKind;

const std::initializer_list<TmvFormControl> kLimitOffsetControls = {
    {K::CheckBox, u"cbLimit", u"LIMIT", {}, {}, {}, {}},
    {K::Edit, u"eLimit", u"", u"cbLimit", {}, u"0", {}},
    {K::CheckBox, u"cbOffset", u"OFFSET", {}, {}, {}, {}},
    {K::Edit, u"eOffset", u"", u"cbOffset", {}, u"0", {}},
};

// The limit and offset of one limit node (SQLite, MySQL) into the form.
void LoadLimitNode(TmvQBPropertiesForm& form, const TSQLLimit* limit) {
  form.SetChecked(u"cbLimit", limit && limit->Limit >= 0);
  if (limit && limit->Limit >= 0) form.SetText(u"eLimit", IntToWide(limit->Limit));
  auto* offset = TmvCast<TSQLOffsetLimit>(limit);
  form.SetChecked(u"cbOffset", offset != nullptr);
  if (offset) form.SetText(u"eOffset", IntToWide(offset->Offset));
}

// A limit node of the form's values: Limit n, or Limit n Offset m (with a
// count of -1, all rows, when only the offset is set); null for neither.
TmvOwned<TSQLLimit> MakeLimitNode(TmvBaseSQLContext* context, int count, bool hasCount, int offset, bool hasOffset) {
  if (!hasCount && !hasOffset) return nullptr;
  if (!hasOffset) {
    auto limit = TastCreate<TSQLLimit>(context);
    limit->Limit = count;
    return limit;
  }
  auto limit = TastCreate<TSQLLimitOffset>(context);
  limit->Limit = hasCount ? count : -1;
  limit->Offset = offset;
  return limit;
}

// The limit and offset of a statement extender with two nodes.
template <class Extender>
void LoadStatementLimits(TmvQBPropertiesForm& form, const Extender* extender) {
  const TSQLLimit* limit = extender ? extender->Limit.get() : nullptr;
  const TSQLOffset* offset = extender ? extender->Offset.get() : nullptr;
  form.SetChecked(u"cbLimit", limit != nullptr);
  if (limit) form.SetText(u"eLimit", IntToWide(limit->Limit));
  form.SetChecked(u"cbOffset", offset != nullptr);
  if (offset) form.SetText(u"eOffset", IntToWide(offset->Offset));
}

template <class Extender>
void SaveStatementLimits(TmvBaseSQLContext* context, const TmvQBPropertiesForm& form, int count, int offset,
                         Extender* extender) {
  if (!extender) return;
  extender->Limit.Reset();
  extender->Offset.Reset();
  if (form.Checked(u"cbLimit")) {
    auto node = TastCreate<TSQLLimit>(context);
    node->Limit = count;
    extender->Limit.Set(std::move(node));
  }
  if (form.Checked(u"cbOffset")) {
    auto node = TastCreate<TSQLOffset>(context);
    node->Offset = offset;
    extender->Offset.Set(std::move(node));
  }
}

// A string constant's text without its quotes, and back.
WideString Unquoted(const TastToken* token) {
  if (!token) return {};
  const WideString& text = token->Token;
  if (text.size() < 2 || text.front() != u'\'' || text.back() != u'\'') return text;
  return WideStringReplace(WideStringView(text).substr(1, text.size() - 2), u"''", u"'", rfReplaceAll);
}

TmvOwned<TastTokenString> QuotedString(TmvBaseSQLContext* context, WideStringView text) {
  auto token = TastCreate<TastTokenString>(context);
  token->Token = u"'" + WideStringReplace(text, u"'", u"''", rfReplaceAll) + u"'";
  return token;
}

}  // namespace

// --- PostgreSQL ---

TmvQueryPropsPgForm::TmvQueryPropsPgForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsPgForm") {
  AddControls(kLimitOffsetControls);
  AddControls({
      {K::CheckBox, u"checkIntoClause", u"INTO TABLE", {}, {}, {}, {}},
      {K::CheckBox, u"checkTemporary", u"TEMPORARY", u"checkIntoClause", {}, {}, {}},
      {K::Edit, u"editTableName", u"", u"checkIntoClause", {}, {}, {}},
  });
}

void TmvQueryPropsPgForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  LoadStatementLimits(*this, StatementExtender<TPgSQLSubSelectStatementExtender>());
  auto* extender = SelectExtender<TPgSQLSubQuerySelectExpressionExtender>();
  const TPgSQLSelectIntoClause* into = extender ? extender->Into.get() : nullptr;
  LoadOptional(u"checkIntoClause", u"editTableName", into ? into->Table.get() : nullptr);
  SetChecked(u"checkTemporary", into && into->Temporary);
}

void TmvQueryPropsPgForm::CheckCanClose() {
  CheckInteger(u"eLimit");
  CheckInteger(u"eOffset");
  if (!Enabled(u"editTableName")) return;
  try {
    ParsedQualifiedName(u"editTableName");
  } catch (const EmvQueryBuilderError&) {
    throw EmvQueryBuilderError(Text(u"editTableName"), u"INTO TABLE: " + MessageText(u"mvQBBadObjectName"));
  }
}

void TmvQueryPropsPgForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  SaveStatementLimits(Context(), *this, Checked(u"cbLimit") ? CheckedInteger(u"eLimit") : 0,
                      Checked(u"cbOffset") ? CheckedInteger(u"eOffset") : 0,
                      StatementExtender<TPgSQLSubSelectStatementExtender>());
  auto* extender = SelectExtender<TPgSQLSubQuerySelectExpressionExtender>();
  if (!extender) return;
  extender->Into.Reset();
  if (!Checked(u"checkIntoClause")) return;
  auto into = TastCreate<TPgSQLSelectIntoClause>(Context());
  into->Table.Set(ParsedQualifiedName(u"editTableName"));
  into->Temporary = Checked(u"checkTemporary");
  extender->Into.Set(std::move(into));
}

// --- Netezza ---

TmvQueryPropsNetezzaForm::TmvQueryPropsNetezzaForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsNetezzaForm") {
  AddControls(kLimitOffsetControls);
}

void TmvQueryPropsNetezzaForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  LoadStatementLimits(*this, StatementExtender<TmvNetezzaSubSelectStatementExtender>());
}

void TmvQueryPropsNetezzaForm::CheckCanClose() {
  CheckInteger(u"eLimit");
  CheckInteger(u"eOffset");
}

void TmvQueryPropsNetezzaForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  SaveStatementLimits(Context(), *this, Checked(u"cbLimit") ? CheckedInteger(u"eLimit") : 0,
                      Checked(u"cbOffset") ? CheckedInteger(u"eOffset") : 0,
                      StatementExtender<TmvNetezzaSubSelectStatementExtender>());
}

// --- SQLite ---

TmvQueryPropsSQLiteForm::TmvQueryPropsSQLiteForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsSQLiteForm") {
  AddControls(kLimitOffsetControls);
}

void TmvQueryPropsSQLiteForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = StatementExtender<TSQLtSubSelectStatementExtender>();
  LoadLimitNode(*this, extender ? extender->Limit.get() : nullptr);
}

void TmvQueryPropsSQLiteForm::CheckCanClose() {
  CheckInteger(u"eLimit");
  CheckInteger(u"eOffset");
}

void TmvQueryPropsSQLiteForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  auto* extender = StatementExtender<TSQLtSubSelectStatementExtender>();
  if (!extender) return;
  const bool hasCount = Checked(u"cbLimit"), hasOffset = Checked(u"cbOffset");
  extender->Limit.Reset();
  if (auto limit = MakeLimitNode(Context(), hasCount ? CheckedInteger(u"eLimit") : 0, hasCount,
                                 hasOffset ? CheckedInteger(u"eOffset") : 0, hasOffset))
    extender->Limit.Set(std::move(limit));
}

// --- MySQL ---

TmvQueryPropsMYForm::TmvQueryPropsMYForm(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsMYForm") {
  AddControls(kLimitOffsetControls);
  AddControls({
      {K::CheckBox, u"cbGroupByWithRollup", u"GROUP BY ... WITH ROLLUP", {}, {}, {}, {}},
      {K::CheckBox, u"cbLock", u"Lock", {}, {}, {}, {}},
      {K::Radio, u"rbLockInShareMode", u"LOCK IN SHARE MODE", u"cbLock", u"Lock", u"1", {}},
      {K::Radio, u"rbLockForUpdate", u"FOR UPDATE", u"cbLock", u"Lock", {}, {}},
      {K::CheckBox, u"cbInto", u"INTO", {}, {}, {}, {}},
      {K::Radio, u"rbOutFile", u"OUTFILE", u"cbInto", u"IntoFile", u"1", {}},
      {K::Radio, u"rbDumpFile", u"DUMPFILE", u"cbInto", u"IntoFile", {}, {}},
      {K::Edit, u"eFileName", u"File name", u"cbInto", {}, u"filename.dat", {}},
      {K::CheckBox, u"cbFTerminated", u"FIELDS TERMINATED BY", u"rbOutFile", {}, {}, {}},
      {K::Edit, u"eFTerminated", u"", u"cbFTerminated", {}, {}, {}},
      {K::CheckBox, u"cbFEnclosed", u"FIELDS ENCLOSED BY", u"rbOutFile", {}, {}, {}},
      {K::CheckBox, u"cbFEnclosedOpt", u"OPTIONALLY", u"cbFEnclosed", {}, {}, {}},
      {K::Edit, u"eFEnclosed", u"", u"cbFEnclosed", {}, {}, {}},
      {K::CheckBox, u"cbFEscaped", u"FIELDS ESCAPED BY", u"rbOutFile", {}, {}, {}},
      {K::Edit, u"eFEscaped", u"", u"cbFEscaped", {}, {}, {}},
      {K::CheckBox, u"cbRStarting", u"LINES STARTING BY", u"rbOutFile", {}, {}, {}},
      {K::Edit, u"eRStarting", u"", u"cbRStarting", {}, {}, {}},
      {K::CheckBox, u"cbRTerminated", u"LINES TERMINATED BY", u"rbOutFile", {}, {}, {}},
      {K::Edit, u"eRTerminated", u"", u"cbRTerminated", {}, {}, {}},
  });
}

namespace {

// The optional strings of INTO OUTFILE: check box, edit, node field.
template <class Apply>
void ForEachOutfileString(Apply apply) {
  apply(u"cbFTerminated", u"eFTerminated", &TMYSQLSelectIntoOutfile::FieldsTerminatedBy);
  apply(u"cbFEnclosed", u"eFEnclosed", &TMYSQLSelectIntoOutfile::FieldsEnclosedBy);
  apply(u"cbFEscaped", u"eFEscaped", &TMYSQLSelectIntoOutfile::FieldsEscapedBy);
  apply(u"cbRStarting", u"eRStarting", &TMYSQLSelectIntoOutfile::LinesStartingBy);
  apply(u"cbRTerminated", u"eRTerminated", &TMYSQLSelectIntoOutfile::LinesTerminatedBy);
}

}  // namespace

void TmvQueryPropsMYForm::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  auto* extender = SelectExtender<TMYSQLSubQuerySelectExpressionExtender>();
  LoadLimitNode(*this, extender ? extender->Limit.get() : nullptr);
  auto* grouping = Target().GroupBy ? TmvCast<TMYSQLGroupByListExtender>(Target().GroupBy->Extender.get()) : nullptr;
  SetEnabled(u"cbGroupByWithRollup", grouping != nullptr);
  SetChecked(u"cbGroupByWithRollup", grouping && grouping->WithRollup);
  if (!extender) return;
  SetChecked(u"cbLock", extender->LockMode != mylmNone);
  if (extender->LockMode == mylmForUpdate) SetChecked(u"rbLockForUpdate", true);
  const TMYSQLSelectIntoFile* file = extender->IntoFile.get();
  SetChecked(u"cbInto", file != nullptr);
  if (!file) return;
  SetText(u"eFileName", Unquoted(file->FileName.get()));
  auto* outfile = TmvCast<TMYSQLSelectIntoOutfile>(file);
  SetChecked(outfile ? u"rbOutFile" : u"rbDumpFile", true);
  if (!outfile) return;
  ForEachOutfileString([&](const char16_t* box, const char16_t* edit, auto field) {
    LoadOptional(box, edit, (outfile->*field).get());
    if ((outfile->*field).get()) SetText(edit, Unquoted((outfile->*field).get()));
  });
  SetChecked(u"cbFEnclosedOpt", outfile->Optionally);
}

void TmvQueryPropsMYForm::CheckCanClose() {
  CheckInteger(u"eLimit");
  CheckInteger(u"eOffset");
}

void TmvQueryPropsMYForm::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  if (auto* grouping =
          Target().GroupBy ? TmvCast<TMYSQLGroupByListExtender>(Target().GroupBy->Extender.get()) : nullptr)
    grouping->WithRollup = Checked(u"cbGroupByWithRollup");
  auto* extender = SelectExtender<TMYSQLSubQuerySelectExpressionExtender>();
  if (!extender) return;
  const bool hasCount = Checked(u"cbLimit"), hasOffset = Checked(u"cbOffset");
  extender->Limit.Reset();
  if (auto limit = MakeLimitNode(Context(), hasCount ? CheckedInteger(u"eLimit") : 0, hasCount,
                                 hasOffset ? CheckedInteger(u"eOffset") : 0, hasOffset))
    extender->Limit.Set(std::move(limit));
  extender->LockMode = !Checked(u"cbLock")                ? mylmNone
                       : Checked(u"rbLockForUpdate")       ? mylmForUpdate
                                                           : mylmLockInShare;
  extender->IntoFile.Reset();
  if (!Checked(u"cbInto")) return;
  if (Checked(u"rbDumpFile")) {
    auto file = TastCreate<TMYSQLSelectIntoDumpFile>(Context());
    file->FileName.Set(QuotedString(Context(), Text(u"eFileName")));
    extender->IntoFile.Set(std::move(file));
    return;
  }
  auto file = TastCreate<TMYSQLSelectIntoOutfile>(Context());
  file->FileName.Set(QuotedString(Context(), Text(u"eFileName")));
  ForEachOutfileString([&](const char16_t* box, const char16_t* edit, auto field) {
    if (Checked(box)) (file.get()->*field).Set(QuotedString(Context(), Text(edit)));
  });
  file->Optionally = Checked(u"cbFEnclosed") && Checked(u"cbFEnclosedOpt");
  extender->IntoFile.Set(std::move(file));
}

// --- DB2 ---

TmvQueryPropsDB2Form::TmvQueryPropsDB2Form(const TmvPropsFormTarget& target)
    : TmvQueryPropsForm(target, u"TmvQueryPropsDB2Form") {
  AddControls({
      {K::CheckBox, u"cbFirst", u"FETCH FIRST", {}, {}, {}, {}},
      {K::Edit, u"eFirst", u"", u"cbFirst", {}, u"0", {}},
  });
}

void TmvQueryPropsDB2Form::LoadProps() {
  TmvQueryPropsForm::LoadProps();
  const TSQLFetchFirstClause* fetch = Select() ? Select()->FetchFirst.get() : nullptr;
  SetChecked(u"cbFirst", fetch != nullptr);
  // FETCH FIRST ROW ONLY has no count: one row.
  if (fetch) SetText(u"eFirst", fetch->Count ? NodeText(fetch->Count.get()) : u"1");
}

void TmvQueryPropsDB2Form::CheckCanClose() { CheckInteger(u"eFirst"); }

void TmvQueryPropsDB2Form::SaveProps() {
  TmvQueryPropsForm::SaveProps();
  if (!Select()) return;
  Select()->FetchFirst.Reset();
  if (!Checked(u"cbFirst")) return;
  auto fetch = TastCreate<TSQLFetchFirstClause>(Context());
  fetch->Count.Set(ParsedExpression(u"eFirst"));
  Select()->FetchFirst.Set(std::move(fetch));
}

}  // namespace mv
