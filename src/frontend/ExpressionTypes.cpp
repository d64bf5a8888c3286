// The syntax provider's reading of an expression's result type: what the
// fix-up gives the columns of a select that are no bare column, and what the
// aggregate chooser shows.
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/MetadataHooks.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

bool SetType(TSQLExpressionItem* expression, TFieldType type, WideStringView name) {
  expression->ExpressionType = uint8_t(type);
  expression->ExpressionTypeName = WideString(name);
  return true;
}

bool CopyType(TSQLExpressionItem* to, const TSQLExpressionItem* from) {
  to->ExpressionType = from->ExpressionType;
  to->ExpressionTypeName = from->ExpressionTypeName;
  return to->ExpressionType != 0 || !to->ExpressionTypeName.empty();
}

// A constant of one token: numbers with a point or an exponent are
// fractional, other numbers whole; strings are text; True and False are truth
// values. Null and longer constants (typed literals) tell nothing.
bool ConstantType(TSQLExpressionConstant* constant) {
  if (constant->Items.Count() != 1) return false;
  TastNode* token = constant->Items.Item(0);
  if (auto* number = TmvCast<TastTokenNumber>(token)) {
    const bool fractional = number->Token.find_first_of(u".eE") != WideString::npos;
    return fractional ? SetType(constant, ftFloat, u"Number") : SetType(constant, ftInteger, u"Integer");
  }
  if (TmvCast<TastTokenString>(token)) return SetType(constant, ftString, u"Varchar");
  if (auto* keyword = TmvCast<TastTokenKeyword>(token)) {
    const WideString word = WideUpperCase(keyword->Token);
    if (word == u"TRUE" || word == u"FALSE") return SetType(constant, ftBoolean, u"BOOLEAN");
  }
  return false;
}

bool ColumnType(TSQLExpressionColumn* column) {
  const TmvMetadataField* field = column->Column ? column->Column->GetMetadataField() : nullptr;
  if (!field) return false;
  TFieldType type = ftUnknown;
  WideString name;
  MetadataFieldType(field, type, name);
  if (type == ftUnknown && name.empty()) return false;
  return SetType(column, type, name);
}

}  // namespace

bool TmvBaseSyntaxProvider::CalcExpressionType(TSQLExpressionItem* expression) const {
  if (!expression) return false;
  TSQLExpressionItem* inner = ExpressionRemoveBrackets(expression);
  if (inner != expression) return CalcExpressionType(inner) && CopyType(expression, inner);
  if (expression->IsLogical()) return SetType(expression, ftBoolean, u"BOOLEAN");
  if (auto* constant = TmvCast<TSQLExpressionConstant>(expression)) return ConstantType(constant);
  if (auto* column = TmvCast<TSQLExpressionColumn>(expression)) return ColumnType(column);
  if (auto* aggregate = TmvCast<TSQLExpressionAggregate>(expression)) return CalcAggregateCallType(aggregate);
  if (auto* function = TmvCast<TSQLExpressionFunction>(expression)) return CalcFunctionCallType(function);
  // A sub-query that selects exactly one expression has that expression's type.
  if (auto* subQuery = TmvCast<TSQLExpressionSelect>(expression)) {
    TSQLSubQuerySelectExpression* select = subQuery->SubQuery ? subQuery->SubQuery->FirstUnionSubQuery() : nullptr;
    if (!select || !select->SelectItems || select->SelectItems->GetCount() != 1) return false;
    auto* item = TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(0));
    if (!item || !item->Expression || !CalcExpressionType(item->Expression.get())) return false;
    return CopyType(expression, item->Expression.get());
  }
  return false;
}

bool TmvBaseSyntaxProvider::CalcAggregateCallType(TSQLExpressionAggregate* aggregate) const {
  if (!aggregate->Name || aggregate->Name->GetCount() != 1) return false;
  const WideString name = WideUpperCase(aggregate->Name->Token(0)->Token);
  if (name == u"COUNT") return SetType(aggregate, ftInteger, u"Integer");
  if (name == u"AVG") return SetType(aggregate, ftFloat, u"Number");
  if (name != u"MAX" && name != u"MIN" && name != u"SUM") return false;
  auto* argument = TmvCast<TSQLExpressionItem>(aggregate->Argument.get());
  return argument && CalcExpressionType(argument) && CopyType(aggregate, argument);
}

}  // namespace mv
