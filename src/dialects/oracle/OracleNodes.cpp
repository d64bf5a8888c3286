#include "dialects/oracle/OracleNodes.h"

#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"

namespace mv {

namespace {

// Keywords with a blank of priority 3 between them.
void Words(TSQLBuilder& builder, std::initializer_list<const char16_t*> words) {
  bool first = true;
  for (const char16_t* word : words) {
    if (!first) builder.Space(3);
    builder.WriteKeyword(word);
    first = false;
  }
}

// A node, then a blank, when the node is there.
void PartThenSpace(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!node) return;
  node->BuildSQL(builder, format);
  builder.Space(3);
}

// A condition of a clause: indented, after a break or a blank, printed as a
// where condition is.
void Condition(TSQLExpressionItem* condition, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.AddIndent(format.IndentInPart());
  builder.NewLineOrSpace(format.NewLineAfterPartKeywords(), 1);
  condition->BuildSQLCosmetic(builder, format, false, 0, format.WhereFormat());
  builder.EndIndent();
}

void UpdateWord(TSQLBuilder& builder, ToraSQLModelUpdateType type) {
  switch (type) {
    case utUpdate: Words(builder, {u"Update"}); break;
    case utUpsert: Words(builder, {u"Upsert"}); break;
    case utUpsertAll: Words(builder, {u"Upsert", u"All"}); break;
    case utNone: return;
  }
  builder.Space(3);
}

// A query in brackets.
void BracketedQuery(TSQLSubSelectStatement* query, TSQLBuilder& builder) {
  TSQLBuilderSelectFormat& subFormat = builder.FromSubQueryFormat();
  builder.AddIndent(subFormat.IndentGlobal());
  builder.WriteSymbol(u"(");
  if (query) query->BuildSQL(builder, subFormat);
  builder.WriteSymbol(u")");
  builder.EndIndent();
}

}  // namespace

WideString OracleTypeWord(const WideString& text) {
  static const char16_t* const kWords[] = {
      u"Binary_Float", u"Binary_Double", u"Simple_Integer", u"Simple_Float", u"Simple_Double", u"Clob",
      u"NClob", u"Blob", u"BFile", u"Int", u"Integer", u"SmallInt", u"Real", u"Date", u"Decimal", u"Dec",
      u"Numeric", u"Time", u"TimeStamp", u"SysDate", u"Current_Date", u"SysTimestamp", u"Current_Timestamp",
      u"DbTimeZone", u"LocalTimestamp", u"SessionTimeZone", u"UId", u"User", u"RowId", u"Level", u"All",
      u"Distinct", u"Set", u"Unique", u"Extract", u"Asc", u"Desc", u"First", u"Last", u"Rows", u"Range",
      u"Both", u"Leading", u"Trailing", u"Preceding", u"Following"};
  for (const char16_t* word : kWords)
    if (WideSameText(text, word)) return word;
  return text;
}

void ToraSQLForUpdateClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Words(builder, {u"For", u"Update"});
  if (GetCount() > 0) {
    builder.Space(3);
    builder.WriteKeyword(u"Of");
    builder.Space(3);
    BuildSQLList(builder, format, u",", nullptr);
  }
  if (WaitMode == owmNoWait) {
    builder.Space(3);
    builder.WriteKeyword(u"NoWait");
  } else if (WaitMode == owmWait) {
    builder.Space(3);
    builder.WriteKeyword(u"Wait");
    builder.Space(3);
    builder.WriteNumber(WaitTime);
  }
}

void ToraSQLHierarchicalQueryClause::BuildStartWith(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!StartWith) return;
  Words(builder, {u"Start", u"With"});
  Condition(StartWith.get(), builder, format);
}

void ToraSQLHierarchicalQueryClause::BuildConnectBy(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Words(builder, {u"Connect", u"By"});
  if (NoCycle) {
    builder.Space(3);
    builder.WriteKeyword(u"NoCycle");
  }
  if (ConnectBy) Condition(ConnectBy.get(), builder, format);
}

void ToraSQLHierarchicalQueryClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildStartWith(builder, format);
  if (StartWith) builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
  BuildConnectBy(builder, format);
}

void ToraSQLHierarchicalQueryClause2::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildConnectBy(builder, format);
  if (StartWith) builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
  BuildStartWith(builder, format);
}

void ToraSQLModelCellReferenceOptions::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  if (NavType == ntIgnore) Words(builder, {u"Ignore", u"Nav"});
  if (NavType == ntKeep) Words(builder, {u"Keep", u"Nav"});
  if (NavType != ntNone && UniqueType != uqtNone) builder.Space(3);
  if (UniqueType == uqtDimension) Words(builder, {u"Unique", u"Dimension"});
  if (UniqueType == uqtSingleReference) Words(builder, {u"Unique", u"Single", u"Reference"});
}

void ToraSQLModelReturnRowsClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  Words(builder, {u"Return", ReturnRows == rrUpdated ? u"Updated" : u"All", u"Rows"});
}

void ToraSQLModelColumn::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Expression.get(), builder, format);
  if (Alias) {
    builder.Space(3);
    Alias->BuildSQL(builder, format);
  }
}

void ToraSQLModelColumnsList::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildSQLList(builder, format, u",", nullptr);
}

void ToraSQLModelColumnClauses::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  PartThenSpace(QueryPartition.get(), builder, format);
  PartThenSpace(Alias.get(), builder, format);
  Words(builder, {u"Dimension", u"By"});
  builder.Space(3);
  builder.WriteSymbol(u"(");
  BuildASTField(Dimensions.get(), builder, format);
  builder.WriteSymbol(u")");
  builder.Space(3);
  builder.WriteKeyword(u"Measures");
  builder.Space(3);
  builder.WriteSymbol(u"(");
  BuildASTField(Measures.get(), builder, format);
  builder.WriteSymbol(u")");
}

void ToraSQLModelCellAssignment::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildASTField(Measure.get(), builder, format);
  builder.WriteSymbol(u"[");
  BuildSQLList(builder, format, u",", nullptr);
  builder.WriteSymbol(u"]");
}

void ToraSQLModelRuleItem::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  UpdateWord(builder, UpdateType);
  BuildASTField(Cell.get(), builder, format);
  if (OrderBy) {
    builder.Space(3);
    OrderBy->BuildOrderByKeywords(builder);
    builder.Space(3);
    OrderBy->BuildSQL(builder, format);
  }
  builder.Space(3);
  builder.WriteSymbol(u"=");
  builder.Space(2);
  BuildASTField(Expression.get(), builder, format);
}

void ToraSQLModelRulesClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Rules");
  builder.Space(3);
  UpdateWord(builder, UpdateType);
  if (OrderType != otNone) {
    Words(builder, {OrderType == otAutomatic ? u"Automatic" : u"Sequental", u"Order"});
    builder.Space(3);
  }
  if (!Iterate.empty()) {
    builder.WriteKeyword(u"Iterate");
    builder.WriteSymbol(u"(");
    builder.WriteNumber(Iterate);
    builder.WriteSymbol(u")");
    builder.Space(3);
    if (Until) {
      builder.WriteKeyword(u"Until");
      builder.Space(3);
      builder.WriteSymbol(u"(");
      Until->BuildSQLCosmetic(builder, format, false, 0, format.HavingFormat());
      builder.WriteSymbol(u")");
      builder.Space(3);
    }
  }
  builder.WriteSymbol(u"(");
  BuildSQLList(builder, format, u",", nullptr);
  builder.WriteSymbol(u")");
}

void ToraSQLModelReference::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Reference");
  builder.Space(3);
  BuildASTField(Name.get(), builder, format);
  builder.Space(3);
  builder.WriteKeyword(u"On");
  builder.Space(3);
  BracketedQuery(Query.get(), builder);
  builder.Space(3);
  BuildASTField(ColumnClauses.get(), builder, format);
  if (CellReferenceOptions) {
    builder.Space(3);
    CellReferenceOptions->BuildSQL(builder, format);
  }
}

void ToraSQLModelMain::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (Name) {
    builder.WriteKeyword(u"MAIN");
    builder.Space(3);
    Name->BuildSQL(builder, format);
    builder.Space(3);
  }
  BuildASTField(ColumnClauses.get(), builder, format);
  builder.Space(3);
  PartThenSpace(CellReferenceOptions.get(), builder, format);
  BuildASTField(Rules.get(), builder, format);
}

void ToraSQLModelClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Model");
  builder.Space(3);
  PartThenSpace(CellReferenceOptions.get(), builder, format);
  PartThenSpace(ReturnRows.get(), builder, format);
  for (int i = 0; i < GetCount(); ++i) PartThenSpace(GetItems(i), builder, format);
  BuildASTField(Main.get(), builder, format);
}

void ToraSQLFromObjectOnly::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Only");
  builder.WriteSymbol(u"(");
  TSQLFromObject::BuildExpression(builder, format);
  builder.WriteSymbol(u")");
}

void ToraSQLPartitionClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(PartitionType == opSubPartition ? u"SubPartition" : u"Partition");
  builder.WriteSymbol(u"(");
  BuildASTField(Name.get(), builder, format);
  builder.WriteSymbol(u")");
}

void ToraSQLSampleClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  builder.WriteKeyword(u"Sample");
  if (Block) {
    builder.Space(3);
    builder.WriteKeyword(u"Block");
  }
  builder.Space(3);
  builder.WriteSymbol(u"(");
  builder.WriteNumber(Percentage);
  builder.WriteSymbol(u")");
  if (!Seed.empty()) {
    builder.Space(3);
    builder.WriteKeyword(u"Seed");
    builder.Space(3);
    builder.WriteSymbol(u"(");
    builder.WriteNumber(Seed);
    builder.WriteSymbol(u")");
  }
}

void ToraSQLFromCollection::BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Table");
  builder.WriteSymbol(u"(");
  if (Object) Object->BuildSQL(builder, format);
  if (Call) {
    builder.WriteSymbol(u"(");
    if (Params) Params->BuildSQLList(builder, format, u",", nullptr);
    builder.WriteSymbol(u")");
  }
  builder.WriteSymbol(u")");
}

void ToraSQLSubQueryRestrictionClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (Restriction == osrWithReadOnly) {
    Words(builder, {u"With", u"Read", u"Only"});
    return;
  }
  Words(builder, {u"With", u"Check", u"Option"});
  if (Constraint) {
    builder.Space(3);
    builder.WriteKeyword(u"Constraint");
    builder.Space(3);
    Constraint->BuildSQL(builder, format);
  }
}

void ToraSQLFromQueryExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                               const TSQLBuilderSelectFormat& format) {
  auto* query = TmvCast<TSQLFromQuery>(node);
  if (!query) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  TSQLBuilderSelectFormat& subFormat = builder.FromSubQueryFormat();
  builder.AddIndent(subFormat.IndentGlobal());
  builder.WriteSymbol(u"(");
  if (query->SubQuery) query->SubQuery->BuildSQL(builder, subFormat);
  if (Restriction) {
    builder.Space(3);
    Restriction->BuildSQL(builder, format);
  }
  builder.WriteSymbol(u")");
  builder.EndIndent();
  query->BuildAlias(builder, format);
  query->BuildColumnNamesList(builder, format);
}

void ToraSQLFromSourceExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                const TSQLBuilderSelectFormat& format) {
  auto* source = TmvCast<TSQLFromSource>(node);
  if (!source || TmvCast<TSQLFromGroup>(node)) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  source->BuildExpression(builder, format);
  for (TastNode* part : {static_cast<TastNode*>(Partition.get()), static_cast<TastNode*>(Sample.get())}) {
    if (!part) continue;
    builder.Space(3);
    part->BuildSQL(builder, format);
  }
  source->BuildAlias(builder, format);
  source->BuildColumnNamesList(builder, format);
  if (QueryPartition) {
    builder.Space(3);
    QueryPartition->BuildSQL(builder, format);
  }
}

void ToraSQLSubQueryExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                              const TSQLBuilderSelectFormat& format) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(node);
  if (!select) {
    TastExtender::BuildSQLForNode(node, builder, format);
    return;
  }
  select->BuildSelectList(builder, format);
  select->BuildFromClause(builder, format);
  select->BuildWhereClause(builder, format);
  if (Hierarchical) {
    if (format.MainPartsFromNewLine())
      builder.NewLine();
    else
      builder.Space(1);
    Hierarchical->BuildSQL(builder, format);
  }
  select->BuildGroupByClause(builder, format);
  select->BuildHavingClause(builder, format);
  if (Model) {
    if (format.MainPartsFromNewLine())
      builder.NewLine();
    else
      builder.Space(1);
    Model->BuildSQL(builder, format);
  }
  select->BuildOrderByClause(builder, format);
}

void ToraSQLSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                     const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format, {ForUpdate.get(), Restriction.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void ToraWithClauseItemExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                 const TSQLBuilderSelectFormat& format) {
  TastExtender::BuildSQLForNode(node, builder, format);
  for (TastNode* part : {static_cast<TastNode*>(Search.get()), static_cast<TastNode*>(Cycle.get())}) {
    if (!part) continue;
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    part->BuildSQL(builder, format);
  }
}

}  // namespace mv
