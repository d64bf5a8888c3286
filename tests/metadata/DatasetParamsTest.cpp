// Finding `:name` placeholders, rewriting them for each driver, and the
// parameter list of a dataset.
#include <gtest/gtest.h>

#include "Thrown.h"
#include "metadata/dataset/Params.h"
#include "metadata/dataset/SQLParamScanner.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

std::vector<WideString> Names(WideStringView sql, const TmvSQLParamScanOptions& options = {}) {
  std::vector<WideString> names;
  for (const TmvSQLParamRef& ref : FindSQLParams(sql, options)) names.push_back(ref.Name);
  return names;
}

using TNames = std::vector<WideString>;

TEST(DatasetParamScanner, FindsPlaceholdersOutsideLiteralsCommentsAndQuotes) {
  struct TCase {
    const char16_t* Sql;
    TNames Expected;
  };
  const TCase cases[] = {
      {u"select * from t where a = :a and b = :B_2", {u"a", u"B_2"}},
      {u"where c.relname = :ObjectName and n.nspname = :ObjectSchema", {u"ObjectName", u"ObjectSchema"}},
      {u"a = :x or b = :x", {u"x", u"x"}},
      {u"select ':x', 'it''s :y', :z", {u"z"}},
      {u"select E'a\\' :no', :yes", {u"yes"}},
      {u"select e'\\\\', :after", {u"after"}},
      {u"select typE':x\\', :p", {u"p"}},  // not E'..': the backslash is a plain character
      {u"select $$ :in $$, $body$ :in $x$ :still $body$, :out", {u"out"}},
      {u"select $1, a$b, :p", {u"p"}},
      {u"select x::int, y::text[], :p::varchar", {u"p"}},
      {u"begin v := 1; end; :p", {u"p"}},
      {u"select 1 -- :no\n, :yes /* :no\n :no */ , :also", {u"yes", u"also"}},
      {u"select \"col:x\", `col:y`, [col:z], :p", {u"p"}},
      {u"select :\"my param\", :\"say \"\"hi\"\"\"", {u"my param", u"say \"hi\""}},
      {u"select :1, a[1:2], :_u, :\u00E4rger9", {u"_u", u"\u00E4rger9"}},
      {u"select ':open", {}},
      {u"select :\"open", {}},
      {u"select 'a' :p", {u"p"}},
  };
  for (const TCase& c : cases) EXPECT_EQ(Names(c.Sql), c.Expected) << UTF8Encode(c.Sql);
}

TEST(DatasetParamScanner, OptionsForOtherServers) {
  TmvSQLParamScanOptions mysql;
  mysql.BackslashEscapes = true;
  mysql.HashComments = true;
  EXPECT_EQ(Names(u"select 'a\\' :no', :yes # :no\n, :last", mysql), (TNames{u"yes", u"last"}));
  EXPECT_EQ(Names(u"select 'a\\', :yes # :also"), (TNames{u"yes", u"also"}));

  TmvSQLParamScanOptions postgres;
  postgres.BracketIdentifiers = false;
  EXPECT_EQ(Names(u"select arr[:i], ARRAY[:a, :b]", postgres), (TNames{u"i", u"a", u"b"}));
  EXPECT_EQ(Names(u"select arr[:i], ARRAY[:a, :b]"), TNames{});

  TmvSQLParamScanOptions noDollar;
  noDollar.DollarQuotes = false;
  EXPECT_EQ(Names(u"select $$ :p $$", noDollar), (TNames{u"p"}));
}

TEST(DatasetParamScanner, ReportsWhereEachPlaceholderStands) {
  const WideString sql = u"x = :ab and y = :\"c d\"";
  const auto refs = FindSQLParams(sql);
  ASSERT_EQ(refs.size(), 2u);
  EXPECT_EQ(sql.substr(refs[0].Pos, refs[0].Length), u":ab");
  EXPECT_EQ(sql.substr(refs[1].Pos, refs[1].Length), u":\"c d\"");
}

TEST(DatasetParamScanner, TranslatesForEachDriver) {
  const WideString sql = u"select ':a' from t where a = :a and b = :b or A = :A::int";
  const TmvTranslatedSQL question = TranslateSQLParams(sql, TmvParamMarker::pmQuestion);
  EXPECT_EQ(question.Text, u"select ':a' from t where a = ? and b = ? or A = ?::int");
  EXPECT_EQ(question.Names, (TNames{u"a", u"b", u"A"}));

  const TmvTranslatedSQL dollar = TranslateSQLParams(sql, TmvParamMarker::pmDollar);
  EXPECT_EQ(dollar.Text, u"select ':a' from t where a = $1 and b = $2 or A = $1::int");
  EXPECT_EQ(dollar.Names, (TNames{u"a", u"b"}));

  const TmvTranslatedSQL numbered = TranslateSQLParams(sql, TmvParamMarker::pmQuestionNumbered);
  EXPECT_EQ(numbered.Text, u"select ':a' from t where a = ?1 and b = ?2 or A = ?1::int");

  const TmvTranslatedSQL none = TranslateSQLParams(u"select 1", TmvParamMarker::pmDollar);
  EXPECT_EQ(none.Text, u"select 1");
  EXPECT_TRUE(none.Names.empty());
}

TEST(DatasetParams, ParsedFromTextOncePerName) {
  TmvParams params;
  params.ParseSQL(u"where a = :Name or b = :NAME or c = :other or d = ':lit'");
  ASSERT_EQ(params.Count(), 2);
  EXPECT_EQ(params[0].Name(), u"Name");
  EXPECT_EQ(params[1].Name(), u"other");
  EXPECT_EQ(params[0].ParamType(), ptInput);
  EXPECT_EQ(params[0].DataType(), ftUnknown);
  EXPECT_FALSE(params[0].Bound());
  EXPECT_EQ(&params.ParamByName(u"name"), &params[0]);
  EXPECT_EQ(params.FindParam(u"missing"), nullptr);
  EXPECT_EQ(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { params.ParamByName(u"missing"); }),
            u"Parameter 'missing' not found");
  EXPECT_THROW(params[2], EmvQueryBuilderError);
}

TEST(DatasetParams, ValuesSetTheTypeWhenNoneIsSet) {
  TmvParams params;
  params.CreateParam(ftUnknown, u"s").SetAsWideString(u"x");
  params.CreateParam(ftUnknown, u"i").SetAsInteger(1);
  params.CreateParam(ftUnknown, u"f").SetAsFloat(1.5);
  params.CreateParam(ftUnknown, u"b").SetAsBoolean(true);
  params.CreateParam(ftUnknown, u"d").SetAsDateTime(TmvDateTime{1});
  params.CreateParam(ftUnknown, u"n").SetNull();
  params.CreateParam(ftSmallint, u"kept", ptOutput).SetAsInteger(3);
  EXPECT_EQ(params.ParamByName(u"s").DataType(), ftWideString);
  EXPECT_EQ(params.ParamByName(u"i").DataType(), ftLargeint);
  EXPECT_EQ(params.ParamByName(u"f").DataType(), ftFloat);
  EXPECT_EQ(params.ParamByName(u"b").DataType(), ftBoolean);
  EXPECT_EQ(params.ParamByName(u"d").DataType(), ftDateTime);
  EXPECT_EQ(params.ParamByName(u"n").DataType(), ftUnknown);
  EXPECT_TRUE(params.ParamByName(u"n").IsNull());
  EXPECT_TRUE(params.ParamByName(u"n").Bound());
  EXPECT_EQ(params.ParamByName(u"n").AsWideString(), u"");
  EXPECT_EQ(params.ParamByName(u"kept").DataType(), ftSmallint);
  EXPECT_EQ(params.ParamByName(u"kept").ParamType(), ptOutput);
}

TEST(DatasetParams, CopiesAreIndependentAndValuesMoveByName) {
  TmvParams source;
  source.CreateParam(ftInteger, u"a").SetAsInteger(1);
  source.CreateParam(ftWideString, u"b").SetAsWideString(u"x");
  TmvParams copy(source);
  copy.ParamByName(u"a").SetAsInteger(2);
  EXPECT_EQ(source.ParamByName(u"a").Value(), TmvVariant(1));
  EXPECT_EQ(copy.Count(), 2);

  TmvParams target;
  target.ParseSQL(u":B and :c");
  target.AssignValues(source);
  EXPECT_EQ(target.Count(), 2);
  EXPECT_EQ(target.ParamByName(u"b").Value(), TmvVariant(u"x"));
  EXPECT_EQ(target.ParamByName(u"b").Name(), u"B");
  EXPECT_EQ(target.ParamByName(u"b").DataType(), ftWideString);
  EXPECT_FALSE(target.ParamByName(u"c").Bound());

  target = source;
  EXPECT_EQ(target.Count(), 2);
  EXPECT_EQ(target[0].Name(), u"a");
  target.AssignValues(target);
  EXPECT_EQ(target[0].Value(), TmvVariant(1));
}

TEST(DatasetParams, DateTimeText) {
  EXPECT_EQ(DateTimeToSQLText(TmvDateTime{0}), u"1899-12-30 00:00:00.000");
  EXPECT_EQ(DateTimeToSQLText(TmvDateTime{45351 + 49530.25 / 86400}), u"2024-02-29 13:45:30.250");
  EXPECT_EQ(DateTimeToSQLText(TmvDateTime{-1.25}), u"1899-12-29 06:00:00.000");
  EXPECT_EQ(DateTimeToSQLText(TmvDateTime{2.0 - 0.0000000001}), u"1900-01-01 00:00:00.000");
  EXPECT_EQ(DateTimeToSQLText(TmvDateTime{-693593}), u"0001-01-01 00:00:00.000");
}

}  // namespace
