// Rows added to the select list by name or by text: a field of a datasource
// (the check box of the field in the design pane), an expression typed or
// given as a node; finding and taking out the rows of a field.
#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "tree/Expressions.h"
#include "tree/SelectClauses.h"

namespace mv {

namespace {

// The name of text; empty text is none (the datasource's "t.*").
TmvOwned<TSQLQualifiedName> FieldNameOfText(TmvBaseSQLContext* context, const WideString& text) {
  const WideString name = WideTrim(text);
  if (name.empty()) return nullptr;
  TmvOwned<TSQLQualifiedName> parsed = context->ParseQualifiedName(name);
  if (!parsed) throw EmvQueryBuilderError(MessageFormat(mvQBBadFieldName, {text}));
  return parsed;
}

// Whether the row shows the field of the datasource (a null name: its "t.*").
bool IsRowOfField(const TmvSelectItem* row, const TmvDatasource* datasource, const TSQLQualifiedName* fieldName) {
  if (!row->Expression() || !datasource->FromSource() || row->ExpressionFromSource() != datasource->FromSource())
    return false;
  if (IsQualifiedNameEmpty(fieldName)) return TmvCast<TSQLSelectItemAllTableColumns>(row->Expression()) != nullptr;
  const TSQLQualifiedName* name = row->ExpressionFieldName();
  return name && row->SQLContext()->IsQualifiedNamesEqual(name, fieldName);
}

// A new output column in `row`: the field's expression, selected.
TmvSelectItem* FillFieldRow(TmvSelectItem* row, TmvDatasource* datasource, const TSQLQualifiedName* fieldName) {
  row->SetFieldExpression(datasource, fieldName);
  if (row->IsCanSelect()) row->SetSelectUI(true);
  return row;
}

TmvSelectItem* FillExpressionRow(TmvSelectItem* row) {
  if (row->IsCanSelect()) row->SetSelect(true);
  return row;
}

}  // namespace

// The blank row stays last: the last row is reused while empty.
TmvSelectItem* TmvSelectList::AddField(TmvDatasource* datasource, const TSQLQualifiedName* fieldName) {
  TmvUpdateScope update(this);
  TmvSelectItem* row = Count() > 0 && Items(Count() - 1)->GetExpressionString().empty() ? Items(Count() - 1)
                                                                                         : AddEmptyRow();
  return FillFieldRow(row, datasource, fieldName);
}

TmvSelectItem* TmvSelectList::AddField(TmvDatasource* datasource, const WideString& fieldName) {
  TmvOwned<TSQLQualifiedName> name = FieldNameOfText(SQLContext(), fieldName);
  return AddField(datasource, name.get());
}

TmvSelectItem* TmvSelectList::InsertField(int index, TmvDatasource* datasource, const TSQLQualifiedName* fieldName) {
  TmvUpdateScope update(this);
  return FillFieldRow(InsertEmptyRow(index), datasource, fieldName);
}

TmvSelectItem* TmvSelectList::InsertField(int index, TmvDatasource* datasource, const WideString& fieldName) {
  TmvOwned<TSQLQualifiedName> name = FieldNameOfText(SQLContext(), fieldName);
  return InsertField(index, datasource, name.get());
}

TmvSelectItem* TmvSelectList::FindField(TmvDatasource* datasource, const TSQLQualifiedName* fieldName) const {
  if (!datasource) return nullptr;
  for (TmvSelectItem* row : items_)
    if (IsRowOfField(row, datasource, fieldName)) return row;
  return nullptr;
}

TmvSelectItem* TmvSelectList::FindField(TmvDatasource* datasource, const WideString& fieldName) const {
  TmvOwned<TSQLQualifiedName> name = FieldNameOfText(SQLContext(), fieldName);
  return FindField(datasource, name.get());
}

void TmvSelectList::RemoveFields(TmvDatasource* datasource, const TSQLQualifiedName* fieldName) {
  if (!datasource) return;
  TmvUpdateScope update(this);
  std::vector<TmvSelectItem*> rows;
  for (TmvSelectItem* row : items_)
    if (IsRowOfField(row, datasource, fieldName)) rows.push_back(row);
  for (TmvSelectItem* row : rows) {
    row->SetSelect(false);
    if (!row->IsExpressionOnly()) continue;
    // A row left with nothing goes behind the last row with an expression,
    // so that no hole stays among the rows.
    row->Clear();
    int last = Count() - 1;
    while (last >= 0 && !Items(last)->Expression()) --last;
    const int from = IndexOf(row);
    if (last > from) Move(from, last);
  }
}

void TmvSelectList::RemoveFields(TmvDatasource* datasource, const WideString& fieldName) {
  TmvOwned<TSQLQualifiedName> name = FieldNameOfText(SQLContext(), fieldName);
  RemoveFields(datasource, name.get());
}

TmvSelectItem* TmvSelectList::AddExpression(const WideString& text) {
  TmvUpdateScope update(this);
  TmvSelectItem* row = Count() > 0 && Items(Count() - 1)->GetExpressionString().empty() ? Items(Count() - 1)
                                                                                         : AddEmptyRow();
  row->SetExpressionString(text);
  return FillExpressionRow(row);
}

TmvSelectItem* TmvSelectList::InsertExpression(int index, const WideString& text) {
  TmvUpdateScope update(this);
  TmvSelectItem* row = InsertEmptyRow(index);
  row->SetExpressionString(text);
  return FillExpressionRow(row);
}

TmvSelectItem* TmvSelectList::AddASTExpression(TmvOwned<TastNode> expression) {
  TmvUpdateScope update(this);
  TmvSelectItem* row = Count() > 0 && Items(Count() - 1)->GetExpressionString().empty() ? Items(Count() - 1)
                                                                                         : AddEmptyRow();
  row->LoadFromAST(std::move(expression));
  return FillExpressionRow(row);
}

TmvSelectItem* TmvSelectList::InsertASTExpression(int index, TmvOwned<TastNode> expression) {
  TmvUpdateScope update(this);
  TmvSelectItem* row = InsertEmptyRow(index);
  row->LoadFromAST(std::move(expression));
  return FillExpressionRow(row);
}

}  // namespace mv
