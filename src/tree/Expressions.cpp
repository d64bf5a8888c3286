#include "tree/Expressions.h"

#include <algorithm>
#include <initializer_list>

#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/MetadataHooks.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

void Word(TSQLBuilder& builder, const char16_t* word) { builder.WriteKeyword(word); }
void Sym(TSQLBuilder& builder, const char16_t* symbol) { builder.WriteSymbol(symbol); }

// Keywords with a blank of priority 3 before, between and after them.
// Pending blanks merge, so a blank asked for next to these adds nothing.
void SpacedWords(TSQLBuilder& builder, std::initializer_list<WideStringView> words) {
  for (WideStringView word : words) {
    builder.Space(3);
    builder.WriteKeyword(word);
  }
  builder.Space(3);
}

// A child node in round brackets.
void InBrackets(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteSymbol(u"(");
  TastNode::BuildASTField(node, builder, format);
  builder.WriteSymbol(u")");
}

// Name parts from the outermost down, each as a built-in word, "." between.
void BuildBuiltinName(const TSQLQualifiedName& name, TSQLBuilder& builder) {
  for (int i = name.GetCount(); i-- > 0;) {
    if (const TastToken* token = name.Token(i)) builder.WriteBuiltin(token->Token);
    if (i > 0) builder.WriteSymbol(u".");
  }
}

}  // namespace

// --- Values ---

void TSQLExpressionConstant::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TastBuildList(Items, builder, format, nullptr);
}

void TSQLExpressionParameter::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Prefix.get(), builder, format);
  BuildASTField(Tail.get(), builder, format);
}

void TSQLExpressionVariable::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Sym(builder, u"@@");
  BuildASTField(Name.get(), builder, format);
}

void TSQLExpressionColumn::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Column.get(), builder, format);
}

void TSQLExpressionParameterlessFunction::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Name.get(), builder, format);
}

void TSQLExpressionFunction::BuildFunctionName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Name) return;
  // A name written in quotes is the user's own function, even where a
  // built-in one has the same letters ("substring"(a, 1) is not SubString).
  bool quoted = false;
  for (int i = 0; i < Name->GetCount(); ++i)
    if (auto* id = TmvCast<TastTokenIdentifier>(Name->GetItems(i))) quoted = quoted || id->Quoted;
  TmvBaseSQLContext* context = SQLContext();
  if (context && !quoted && context->IsNameOfBuiltinFunction(Name.get()))
    BuildBuiltinName(*Name, builder);
  else
    Name->BuildSQL(builder, format);
}

void TSQLExpressionFunction::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildFunctionName(builder, format);
  InBrackets(Params.get(), builder, format);
}

void TSQLExpressionFunctionSubString::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (Name)
    BuildFunctionName(builder, format);
  else
    builder.WriteBuiltin(u"SubString");
  Sym(builder, u"(");
  auto param = [this](int i) -> TastNode* { return Params && i < Params->GetCount() ? Params->GetItems(i) : nullptr; };
  BuildASTField(param(0), builder, format);
  SpacedWords(builder, {u"From"});
  BuildASTField(param(1), builder, format);
  if (TastNode* third = param(2)) {
    SpacedWords(builder, {u"For"});
    third->BuildSQL(builder, format);
    // The print order of SubString keeps a break point after the length.
    builder.Space(3);
  }
  Sym(builder, u")");
}

void TSQLExpressionSelect::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  InBrackets(SubQuery.get(), builder, builder.ExpressionsSubQueryFormat());
}

void TSQLCaseFunctionItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"When");
  builder.Space(3);
  BuildASTField(When.get(), builder, format);
  SpacedWords(builder, {u"Then"});
  BuildASTField(Then.get(), builder, format);
}

void TSQLExpressionCaseFunction::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"Case");
  builder.Space(3);
  builder.AddIndent(format.IndentInPart());
  BuildASTField(Subject.get(), builder, format);
  // Priority 0 before each branch: a Case breaks there first.
  for (int i = 0; i < Items.Count(); ++i) {
    builder.Space(0);
    Items.Item(i)->BuildSQL(builder, format);
    builder.GoodNewLinePos(0);
  }
  if (ElseValue) {
    builder.Space(0);
    Word(builder, u"Else");
    builder.Space(3);
    ElseValue->BuildSQL(builder, format);
    builder.GoodNewLinePos(0);
  }
  builder.Space(0);
  builder.EndIndent();
  Word(builder, u"End");
}

void TSQLExpressionIfExpression::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"If");
  builder.Space(3);
  BuildASTField(Condition.get(), builder, format);
  SpacedWords(builder, {u"Then"});
  BuildASTField(ThenValue.get(), builder, format);
  builder.Space(3);
  if (ElseValue) {
    Word(builder, u"Else");
    builder.Space(3);
    ElseValue->BuildSQL(builder, format);
    builder.Space(3);
  }
  Word(builder, u"EndIf");
}

void TSQLExpressionAggregate::BuildFunctionName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!Name) return;
  TmvBaseSQLContext* context = SQLContext();
  if (!context || !context->SyntaxProvider()) {
    Name->BuildSQL(builder, format);
    return;
  }
  const bool known = context->IsNameOfPrefixedAggregate(Name.get()) || context->IsNameOfAggregate(Name.get()) ||
                     context->IsNameOfStarAggregate(Name.get());
  if (known && IsQualifiedNameEmpty(Name->DatabaseLink.get())) {
    BuildBuiltinName(*Name, builder);
    return;
  }
  // A user aggregate prints as an object name, without the container's
  // default database unless the builder keeps every prefix.
  TmvOwned<TSQLQualifiedName> database = context->ExtractDatabaseFromFullName(Name.get());
  TmvOwned<TastToken> schema = context->ExtractSchemaFromFullName(Name.get());
  TmvOwned<TastToken> name = context->ExtractNameFromFullName(Name.get());
  const TSQLQualifiedName* defaultDatabase = MetadataDefaultDatabase(context->MetadataContainer());
  const bool databaseIsDefault = builder.ObjectPrefixSkipping() != opsSkipNone &&
                                 !IsQualifiedNameEmpty(defaultDatabase) &&
                                 context->IsQualifiedNamesEqual(database.get(), defaultDatabase);
  if (database && !IsQualifiedNameEmpty(database.get()) && !databaseIsDefault) {
    database->BuildSQL(builder, format);
    Sym(builder, u".");
  }
  if (schema) {
    schema->BuildSQL(builder, format);
    Sym(builder, u".");
  }
  if (name) name->BuildSQL(builder, format);
}

void TSQLExpressionAggregate::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildFunctionName(builder, format);
  Sym(builder, u"(");
  if (Argument) {
    if (Mode == 1 || Mode == 2) {
      Word(builder, Mode == 1 ? u"Distinct" : u"Unique");
      builder.Space(3);
    }
    Argument->BuildSQL(builder, format);
    if (OrderBy) {
      builder.Space(3);
      OrderBy->BuildOrderByKeywords(builder);
      builder.Space(3);
      OrderBy->BuildOrderByList(builder, format, nullptr);
    }
  } else {
    Sym(builder, u"*");
  }
  Sym(builder, u")");
}

// --- Casts ---

void TSQLExpressionCast::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"Cast");
  Sym(builder, u"(");
  BuildASTField(Expression.get(), builder, format);
  SpacedWords(builder, {u"As"});
  BuildASTField(TargetType.get(), builder, format);
  Sym(builder, u")");
}

bool TSQLExpressionCastOperator::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                              TastNode*& child) {
  switch (index) {
    case 0: child = Expression.get(); return true;
    case 1: Sym(builder, u"::"); child = TargetType.get(); return true;
    default: return false;
  }
}

void TSQLExpressionConvert::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"Convert");
  Sym(builder, u"(");
  BuildASTField(TargetType.get(), builder, format);
  Sym(builder, u",");
  BuildASTField(Expression.get(), builder, format);
  if (Style) {
    Sym(builder, u",");
    Style->BuildSQL(builder, format);
  }
  Sym(builder, u")");
}

void TSQLExpressionConvertReverse::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, u"Convert");
  Sym(builder, u"(");
  BuildASTField(Expression.get(), builder, format);
  Sym(builder, u",");
  builder.Space(3);
  BuildASTField(TargetType.get(), builder, format);
  Sym(builder, u")");
}

// --- Member access ---

bool TSQLExpressionFieldSelection::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                                TastNode*& child) {
  switch (index) {
    case 0: child = Expression.get(); return true;
    case 1: Sym(builder, Field ? u"." : u".*"); child = Field.get(); return true;
    default: return false;
  }
}

bool TSQLExpressionMethodCall::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                            TastNode*& child) {
  switch (index) {
    case 0: child = Expression.get(); return true;
    case 1: Sym(builder, u"."); child = Method.get(); return true;
    default: return false;
  }
}

// --- Operators ---

bool TSQLExpressionOperatorPrefix::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                                TastNode*& child) {
  switch (index) {
    case 0:
      if (Operator) builder.Space(3);
      child = Operator.get();
      return true;
    case 1: child = Expression.get(); return true;
    default: return false;
  }
}

bool TSQLExpressionOperatorPrefixWithSpace::BuildSQLPart(int index, TSQLBuilder& builder,
                                                         const TSQLBuilderSelectFormat&, TastNode*& child) {
  switch (index) {
    case 0:
      if (Operator) builder.Space(3);
      child = Operator.get();
      return true;
    case 1:
      if (Operator) builder.Space(3);
      child = Expression.get();
      return true;
    default: return false;
  }
}

bool TSQLExpressionOperatorPostfix::BuildSQLPart(int index, TSQLBuilder&, const TSQLBuilderSelectFormat&,
                                                 TastNode*& child) {
  switch (index) {
    case 0: child = Expression.get(); return true;
    case 1: child = Operator.get(); return true;
    default: return false;
  }
}

bool TSQLExpressionOperatorBinary::IsLogical() const {
  TmvBaseSQLContext* context = SQLContext();
  if (!Operator || !context) return false;
  const std::vector<std::string>& operators = context->GetComparisonOperators();
  return std::find(operators.begin(), operators.end(), WideToAnsi(Operator->Text)) != operators.end();
}

void TSQLExpressionOperatorBinary::RestoreLExpression(const TSQLExpressionItem* expression) {
  TSQLExpressionOperator::RestoreLExpression(expression);
  PassRestoreLExpression(Right.get(), expression);
}

bool TSQLExpressionOperatorBinary::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                                TastNode*& child) {
  switch (index) {
    case 0: child = Expression.get(); return true;
    case 1: builder.Space(3); child = Operator.get(); return true;
    case 2: builder.Space(2); child = Right.get(); return true;
    default: return false;
  }
}

// --- Predicates ---

void TSQLExpressionIsOfType::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TSQLExpressionIs::BuildSQLDirect(builder, format);
  SpacedWords(builder, {u"Of"});
  if (WithTypeWord) SpacedWords(builder, {u"Type"});
  Sym(builder, u"(");
  if (Types) TastBuildCommaList(Types->Items, builder, format);
  Sym(builder, u")");
}

void TSQLExpressionIsValue::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TSQLExpressionIs::BuildSQLDirect(builder, format);
  if (!Value) return;
  builder.Space(3);
  Value->BuildSQL(builder, format);
}

bool TSQLExpressionIsNullOp::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                          TastNode*& child) {
  switch (index) {
    case 0: child = Expression.get(); return true;
    case 1: builder.Space(3); Word(builder, u"IsNull"); return true;
    default: return false;
  }
}

bool TSQLExpressionNotNull::BuildSQLPart(int index, TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                         TastNode*& child) {
  switch (index) {
    case 0: child = Expression.get(); return true;
    case 1: builder.Space(3); Word(builder, u"NotNull"); return true;
    default: return false;
  }
}

void TSQLExpressionInSet::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildInPrefix(builder, format);
  InBrackets(Values.get(), builder, format);
}

void TSQLExpressionInSubQuery::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildInPrefix(builder, format);
  InBrackets(SubQuery.get(), builder, builder.ExpressionsSubQueryFormat());
}

void TSQLExpressionExists::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  BuildWithWord(builder, u"Exists");
}

void TSQLExpressionSingular::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  BuildWithWord(builder, u"Singular");
}

void TSQLExpressionCompWithSubQuery::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, QuantifierWord());
  InBrackets(SubQuery.get(), builder, format);
}

void TSQLExpressionCompWithSetExpression::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Word(builder, QuantifierWord());
  InBrackets(Value.get(), builder, format);
}

void TSQLExpressionCompWithSetSetOfExpressions::BuildSQLDirect(TSQLBuilder& builder,
                                                               const TSQLBuilderSelectFormat& format) {
  Word(builder, QuantifierWord());
  InBrackets(Values.get(), builder, format);
}

void TSQLExpressionBetween::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Negated) SpacedWords(builder, {u"Not"});
  SpacedWords(builder, {u"Between"});
  BuildASTField(Low.get(), builder, format);
  SpacedWords(builder, {u"And"});
  BuildASTField(High.get(), builder, format);
}

void TSQLExpressionOverlaps::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Sym(builder, u"(");
  BuildASTField(Expression.get(), builder, format);
  Sym(builder, u",");
  BuildASTField(Second.get(), builder, format);
  Sym(builder, u")");
  SpacedWords(builder, {u"Overlaps"});
  Sym(builder, u"(");
  BuildASTField(Third.get(), builder, format);
  Sym(builder, u",");
  BuildASTField(Fourth.get(), builder, format);
  Sym(builder, u")");
}

void TSQLExpressionOverlapsSimple::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  SpacedWords(builder, {u"Overlaps"});
  BuildASTField(Right.get(), builder, format);
}

void TSQLExpressionLikeTemplate::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Negated) SpacedWords(builder, {u"Not"});
  SpacedWords(builder, {Keyword});
  BuildASTField(Template.get(), builder, format);
  if (Escape) {
    SpacedWords(builder, {u"Escape"});
    Escape->BuildSQL(builder, format);
  }
}

void TSQLExpressionIsDistinctFrom::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  SpacedWords(builder, {u"Is"});
  if (Negated) SpacedWords(builder, {u"Not"});
  SpacedWords(builder, {u"Distinct", u"From"});
  BuildASTField(Right.get(), builder, format);
}

// --- Lists as expressions ---

void TSQLExpressionExpressionsList::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  InBrackets(List.get(), builder, format);
}

void TSQLExpressionNodesList::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(List.get(), builder, format);
}

void TSQLExpressionFulltextSearchItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Name.get(), builder, format);
  Sym(builder, u"(");
  if (Columns)
    Columns->BuildSQL(builder, format);
  else
    Sym(builder, u"*");
  Sym(builder, u",");
  BuildASTField(Text.get(), builder, format);
  Sym(builder, u")");
}

}  // namespace mv
