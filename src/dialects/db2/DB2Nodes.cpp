#include "dialects/db2/DB2Nodes.h"

#include <algorithm>

#include "frontend/GrammarActions.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLFormat.h"
#include "support/TextHelpers.h"

namespace mv {

namespace {

// Words several of them at once: "A", Space(3), "B", ...
void WriteWords(TSQLBuilder& builder, std::initializer_list<const char16_t*> words) {
  bool first = true;
  for (const char16_t* word : words) {
    if (!first) builder.Space(3);
    builder.WriteKeyword(word);
    first = false;
  }
}

// One part of a system name: a quoted part loses its quotes, "" inside
// standing for one.
TmvOwned<TastToken> SystemNamePart(TmvBaseSQLContext* context, WideStringView part) {
  const bool quoted = part.size() >= 2 && part.front() == u'"' && part.back() == u'"';
  const WideString text = quoted ? ExtractQuotedIdentifier(WideString(part), u"\"", u"\"") : WideString(part);
  return TmvOwned<TastToken>(TastCreate<TastTokenIdentifier>(context, text, quoted).release());
}

}  // namespace

WideString DB2Word(const WideString& text) {
  static const char16_t* const kWords[] = {
      u"Lateral",  u"Table",      u"Date",      u"Time",      u"TimeStamp", u"Char",       u"Character",
      u"VarChar",  u"Clob",       u"Graphic",   u"VarGraphic", u"DbClob",   u"CCSID",      u"ASCII",
      u"EBCDIC",   u"Unicode",    u"SBCS",      u"Mixed",     u"Bit",       u"Decimal",    u"Dec",
      u"Numeric",  u"Num",        u"RR",        u"RS",        u"CS",        u"UR",         u"Share",
      u"Update",   u"Exclusive",  u"Bernoulli", u"System",    u"Only",      u"Outer",      u"Both",
      u"Leading",  u"Trailing",   u"CodeUnits16", u"CodeUnits32", u"Octets", u"Day",       u"Days",
      u"Hour",     u"Hours",      u"Minute",    u"Minutes",   u"Month",     u"Months",     u"Second",
      u"Seconds",  u"Year",       u"Years",     u"MicroSecond", u"MicroSeconds", u"Left",  u"Right",
      u"Current_Date", u"Current_Time", u"Current_TimeStamp", u"Current_Path", u"Current_Schema",
      u"Current_Server", u"Current_TimeZone", u"Current_User", u"Session_User", u"System_User", u"User",
      u"Client_AcctNg", u"Client_ApplName", u"Client_UserId", u"Client_WrkStnName", u"DbPartitionNum",
      u"Degree",   u"Isolation",  u"Path",      u"Schema",    u"Server",    u"TimeZone",   u"Mode",
      u"Snapshot", u"AcctNg",     u"ApplName",  u"UserId",    u"WrkStnName"};
  for (const char16_t* word : kWords)
    if (WideSameText(text, word)) return word;
  if (text.empty()) return text;
  return WideUpperCase(text.substr(0, 1)) + WideLowerCase(text.substr(1));
}

bool DB2IsSpecialRegister(WideStringView first, WideStringView second) {
  static const char16_t* const kAfterCurrent[] = {
      u"client_acctng", u"client_applname", u"client_userid", u"client_wrkstnname", u"date", u"dbpartitionnum",
      u"degree", u"isolation", u"path", u"schema", u"server", u"time", u"timestamp", u"timezone", u"user",
      u"default", u"explain", u"federated", u"implicit", u"lock", u"maintained", u"package", u"query", u"refresh"};
  static const char16_t* const kAfterClient[] = {u"acctng", u"applname", u"userid", u"wrkstnname"};
  if (WideSameText(first, u"current")) {
    for (const char16_t* word : kAfterCurrent)
      if (WideSameText(second, word)) return true;
  } else if (WideSameText(first, u"client")) {
    for (const char16_t* word : kAfterClient)
      if (WideSameText(second, word)) return true;
  }
  return false;
}

bool DB2IsDivision(WideStringView text) {
  if (text.empty() || text.front() == u'"') return false;
  size_t start = 0;
  for (size_t slash = text.find(u'/'); slash != WideStringView::npos; slash = text.find(u'/', start)) {
    if (slash == start) return false;
    start = slash + 1;
  }
  return start > 0 && start < text.size() && text.find(u'"') == WideStringView::npos;
}

TSQLExpressionItem* DB2SplitDivision(TmvBaseSQLContext* context, const WideString& text) {
  TSQLExpressionItem* item = nullptr;
  size_t start = 0;
  while (start <= text.size()) {
    const size_t slash = std::min(text.find(u'/', start), text.size());
    const WideString part = text.substr(start, slash - start);
    TSQLExpressionItem* operand;
    if (std::all_of(part.begin(), part.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; })) {
      auto constant = TastCreate<TSQLExpressionConstant>(context);
      constant->AddNumber(part);
      operand = constant.release();
    } else {
      auto column = TastCreate<TSQLExpressionColumn>(context);
      column->Column.Set(TastCreate<TSQLObjectColumn>(context));
      column->Column->Insert(0, TmvOwned<TastToken>(TastCreate<TastTokenIdentifier>(context, part, false).release()));
      operand = column.release();
    }
    if (!item) {
      item = operand;
    } else {
      TSQLExpressionOperatorBinary* binary = WrapBinary(context, item, u"/");
      binary->Right.Reset(operand);
    }
    start = slash + 1;
  }
  return item;
}

void DB2PrependSystemName(TmvBaseSQLContext* context, TSQLQualifiedName* name, const WideString& text) {
  // The slash that parts library and file is the first one outside quotes.
  size_t slash = WideString::npos;
  bool inQuotes = false;
  for (size_t i = 0; i < text.size() && slash == WideString::npos; ++i) {
    if (text[i] == u'"') inQuotes = !inQuotes;
    else if (text[i] == u'/' && !inQuotes) slash = i;
  }
  const WideStringView all(text);
  name->Insert(0, SystemNamePart(context, all.substr(0, slash)));
  name->Insert(0, SystemNamePart(context, all.substr(slash + 1)));
}

void TDB2SQLForUpdateClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  WriteWords(builder, {u"For", u"Update"});
  if (GetCount() == 0) return;
  builder.Space(3);
  builder.WriteKeyword(u"Of");
  builder.Space(3);
  for (int i = 0; i < GetCount(); ++i) {
    if (i > 0) {
      builder.WriteSymbol(u",");
      builder.Space(3);
    }
    GetItems(i)->BuildSQL(builder, format);
  }
}

void TDB2SQLForReadOnlyClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  WriteWords(builder, {u"For", u"Read", u"Only"});
}

void TDB2SQLForFetchOnlyClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  WriteWords(builder, {u"For", u"Fetch", u"Only"});
}

void TDB2SQLOptimizeForClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  WriteWords(builder, {u"Optimize", u"For"});
  builder.Space(3);
  if (Count.empty()) {
    builder.WriteKeyword(u"Rows");
    return;
  }
  builder.WriteNumber(Count);
  builder.Space(3);
  builder.WriteKeyword(Count == u"1" ? u"Row" : u"Rows");
}

void TDB2SQLIsolationClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  builder.WriteKeyword(u"With");
  builder.Space(3);
  builder.WriteKeyword(Level);
  if (Lock.empty()) return;
  builder.Space(3);
  WriteWords(builder, {u"Use", u"And", u"Keep"});
  builder.Space(3);
  builder.WriteKeyword(Lock);
  builder.Space(3);
  builder.WriteKeyword(u"Locks");
}

void TDB2SQLSelectStatementExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                     const TSQLBuilderSelectFormat& format) {
  if (auto* statement = TmvCast<TSQLSubSelectStatement>(node))
    BuildStatementWithClauses(*statement, builder, format,
                              {ForClause.get(), OptimizeClause.get(), IsolationClause.get()}, true);
  else
    TastExtender::BuildSQLForNode(node, builder, format);
}

void TDB2SQLFromObjectExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                                const TSQLBuilderSelectFormat& format) {
  TastExtender::BuildSQLForNode(node, builder, format);
  if (TableSample) {
    builder.Space(3);
    TableSample->BuildSQL(builder, format);
  }
}

void TDB2SQLFromQueryExtender::BuildSQLForNode(TastNode* node, TSQLBuilder& builder,
                                               const TSQLBuilderSelectFormat& format) {
  if (Prefix) {
    Prefix->BuildSQL(builder, format);
    builder.Space(3);
  }
  if (ContinueHandler) {
    ContinueHandler->BuildSQL(builder, format);
    builder.Space(3);
  }
  TastExtender::BuildSQLForNode(node, builder, format);
}

}  // namespace mv
