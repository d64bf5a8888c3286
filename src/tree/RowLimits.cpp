#include "tree/RowLimits.h"

#include "sqlgen/SQLBuilder.h"
#include "tree/ExpressionBase.h"

namespace mv {

namespace {

void Words(TSQLBuilder& builder, std::initializer_list<const char16_t*> words) {
  bool first = true;
  for (const char16_t* word : words) {
    if (!first) builder.Space(3);
    first = false;
    builder.WriteKeyword(word);
  }
}

void WithSpace(TastNode* node, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (!node) return;
  builder.Space(3);
  node->BuildSQL(builder, format);
}

// A limit part: its own line (or a blank), the word, the numbers indented.
struct LimitPart {
  TSQLBuilder& builder;
  const TSQLBuilderSelectFormat& format;
  LimitPart(TSQLBuilder& b, const TSQLBuilderSelectFormat& f, const char16_t* word) : builder(b), format(f) {
    builder.NewLineOrSpace(format.MainPartsFromNewLine(), 1);
    builder.WriteKeyword(word);
    builder.Space(3);
    builder.AddIndent(format.IndentInPart());
  }
  ~LimitPart() { builder.EndIndent(); }
  void Number(int32_t value) { builder.WriteNumber(IntToWide(value)); }
};

}  // namespace

void TSQLSubQueryTopWithTies::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) {
  Words(builder, {u"With", u"Ties"});
}

void TSQLSubQueryTopStartingAt::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  Words(builder, {u"Starting", u"At"});
  WithSpace(Start.get(), builder, format);
}

void TSQLSubQueryTopRows::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Top");
  WithSpace(Count.get(), builder, format);
  if (StartAt) {
    builder.Space(3);
    Words(builder, {u"Start", u"At"});
    WithSpace(StartAt.get(), builder, format);
  }
  WithSpace(WithTies.get(), builder, format);
}

void TSQLSubQueryTopPercent::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Top");
  WithSpace(Count.get(), builder, format);
  builder.Space(3);
  builder.WriteKeyword(u"Percent");
  WithSpace(WithTies.get(), builder, format);
}

void TSQLSubQueryFirstSkipClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"First");
  WithSpace(First.get(), builder, format);
  if (Skip) {
    builder.Space(3);
    builder.WriteKeyword(u"Skip");
    WithSpace(Skip.get(), builder, format);
  }
}

void TSQLSubQueryRowsClause::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  builder.WriteKeyword(u"Rows");
  WithSpace(Low.get(), builder, format);
  if (High) {
    builder.Space(3);
    builder.WriteKeyword(Percent ? u"By" : u"To");
    WithSpace(High.get(), builder, format);
  }
  if (Percent) {
    builder.Space(3);
    builder.WriteKeyword(u"Percent");
  }
  if (WithTiesWords) {
    builder.Space(3);
    Words(builder, {u"With", u"Ties"});
  }
}

void TSQLLimit::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  LimitPart(builder, format, u"Limit").Number(Limit);
}

void TSQLOffset::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  LimitPart(builder, format, u"Offset").Number(Offset);
}

void TSQLOffsetLimit::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  LimitPart part(builder, format, u"Limit");
  part.Number(Offset);
  builder.WriteSymbol(u",");
  builder.Space(3);
  part.Number(Limit);
}

void TSQLLimitOffset::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  LimitPart part(builder, format, u"Limit");
  part.Number(Limit);
  builder.Space(3);
  builder.WriteKeyword(u"Offset");
  builder.Space(3);
  part.Number(Offset);
}

}  // namespace mv
