// The format options as a whole: every option of the builders and formats
// with its default, read from the objects and compared with the reference
// tables written out below; the keys of the builder's properties document;
// reading and writing options by name, with the errors for unknown names
// and bad values; Assign and the readable dump through the tables.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "Thrown.h"
#include "sqlgen/PropertyTable.h"
#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

// --- Reference data: the options of each class with their defaults, in the
// order in which the classes declare them. A nested object names its class.

struct RefProperty {
  const char16_t* name;
  const char16_t* value;  // the default, as text; null for a nested object
  const std::vector<RefProperty>* object = nullptr;
};
using RefClass = std::vector<RefProperty>;

const RefClass kItemsList = {
    {u"NewLineAfterItem", u"True"},
    {u"NewLineBeforeComma", u"False"},
};

const RefClass kCondition = {
    {u"NewLineBefore", u"nlNone"},
    {u"NewLineAfter", u"nlTopmostOr"},
    {u"IndentNestedConditions", u"2"},
};

const RefClass kFromClause = {
    {u"NewLineAfterDatasource", u"True"},
    {u"NewLineAfterJoin", u"False"},
    {u"NewLineBeforeComma", u"False"},
    {u"NewLineBeforeJoinExpression", u"False"},
    {u"JoinConditionFormat", nullptr, &kCondition},
};

const RefClass kSelect = {
    {u"IndentGlobal", u"0"},
    {u"MainPartsFromNewLine", u"True"},
    {u"IndentInPart", u"2"},
    {u"NewLineAfterPartKeywords", u"False"},
    {u"SelectListFormat", nullptr, &kItemsList},
    {u"FromClauseFormat", nullptr, &kFromClause},
    {u"WhereFormat", nullptr, &kCondition},
    {u"GroupByFormat", nullptr, &kItemsList},
    {u"HavingFormat", nullptr, &kCondition},
    {u"WindowFormat", nullptr, &kItemsList},
    {u"OrderByFormat", nullptr, &kItemsList},
};

const RefClass kBuilder = {
    {u"RightMargin", u"80"},
    {u"KeywordFormat", u"akfFirstUpper"},
    {u"QuoteIdentifiers", u"icIfNeed"},
    {u"MainQueryFormat", nullptr, &kSelect},
    {u"ExpressionsSubQueryFormat", nullptr, &kSelect},
    {u"FromSubQueryFormat", nullptr, &kSelect},
    {u"CTESubQueryFormat", nullptr, &kSelect},
    {u"ObjectPrefixSkipping", u"opsSkipAll"},
    {u"UseAltNames", u"True"},
    {u"ExpandVirtualFields", u"False"},
    {u"ExpandVirtualObjects", u"False"},
    {u"OuterKeywordInLinks", u"skDontCare"},
    {u"InnerKeywordInLinks", u"skDontCare"},
    {u"AsKeywordInExpressionAlias", u"skDontCare"},
    {u"AsKeywordInObjectAlias", u"skDontCare"},
    {u"ParenthesizeANDGroups", u"True"},
    {u"ParenthesizeSingleCriterion", u"False"},
};

const RefClass kPipedOwn = {
    {u"DynamicIndents", u"False"},
    {u"DynamicRightMargin", u"False"},
};

// The expression sub-query format differs from a new format in these.
const std::map<WideString, WideString> kExpressionsSubQueryExceptions = {
    {u"ExpressionsSubQueryFormat.MainPartsFromNewLine", u"False"},
    {u"ExpressionsSubQueryFormat.FromClauseFormat.NewLineAfterDatasource", u"False"},
    {u"ExpressionsSubQueryFormat.FromClauseFormat.NewLineAfterJoin", u"False"},
    {u"ExpressionsSubQueryFormat.FromClauseFormat.NewLineBeforeJoinExpression", u"False"},
    {u"ExpressionsSubQueryFormat.FromClauseFormat.NewLineBeforeComma", u"False"},
};

// The keys of the builder component's properties document, by property.
const std::map<WideString, WideString> kBuilderXMLKeys = [] {
  std::map<WideString, WideString> keys = {
      {u"RightMargin", u"right-margin"},
      {u"KeywordFormat", u"keyword-format"},
      {u"ObjectPrefixSkipping", u"object-prefix-skipping"},
      {u"UseAltNames", u"use-alternative-object-names"},
      {u"OuterKeywordInLinks", u"outer-keyword-in-links"},
      {u"InnerKeywordInLinks", u"inner-keyword-in-links"},
  };
  const std::vector<std::pair<WideString, WideString>> selectKeys = {
      {u"IndentGlobal", u"indent-global"},
      {u"MainPartsFromNewLine", u"main-parts-from-new-line"},
      {u"IndentInPart", u"indent-in-part"},
      {u"NewLineAfterPartKeywords", u"new-line-after-part-keywords"},
      {u"SelectListFormat.NewLineAfterItem", u"select-list-format/new-line-after-item"},
      {u"GroupByFormat.NewLineAfterItem", u"group-by-format/new-line-after-item"},
      {u"OrderByFormat.NewLineAfterItem", u"order-by-format/new-line-after-item"},
      {u"WhereFormat.NewLineAfter", u"where-format/new-line-after"},
      {u"WhereFormat.IndentNestedConditions", u"where-format/indent-nested-conditions"},
      {u"HavingFormat.NewLineAfter", u"having-format/new-line-after"},
      {u"HavingFormat.IndentNestedConditions", u"having-format/indent-nested-conditions"},
      {u"FromClauseFormat.NewLineAfterDatasource", u"from-clause-format/new-line-after-datasource"},
      {u"FromClauseFormat.NewLineAfterJoin", u"from-clause-format/new-line-after-join"},
      {u"FromClauseFormat.JoinConditionFormat.NewLineAfter",
       u"from-clause-format/join-conditions-format/new-line-after"},
      {u"FromClauseFormat.JoinConditionFormat.IndentNestedConditions",
       u"from-clause-format/join-conditions-format/indent-nested-conditions"},
  };
  for (auto [format, key] : {std::pair<WideString, WideString>{u"MainQueryFormat", u"main-query-format/"},
                             {u"ExpressionsSubQueryFormat", u"expressions-subquery-format/"},
                             {u"FromSubQueryFormat", u"from-subquery-format/"}})
    for (const auto& [property, subKey] : selectKeys) keys[format + u"." + property] = key + subKey;
  return keys;
}();

// The reference class expanded to dotted paths with their default texts.
void Expand(const RefClass& cls, const WideString& prefix, std::vector<std::pair<WideString, WideString>>& out) {
  for (const RefProperty& p : cls) {
    const WideString path = prefix.empty() ? WideString(p.name) : prefix + u"." + p.name;
    if (p.object)
      Expand(*p.object, path, out);
    else
      out.emplace_back(path, p.value);
  }
}

std::vector<std::pair<WideString, WideString>> Reference(const RefClass& cls) {
  std::vector<std::pair<WideString, WideString>> out;
  Expand(cls, {}, out);
  return out;
}

std::vector<std::pair<WideString, WideString>> BuilderReference() {
  auto out = Reference(kBuilder);
  for (auto& [path, value] : out) {
    auto exception = kExpressionsSubQueryExceptions.find(path);
    if (exception != kExpressionsSubQueryExceptions.end()) value = exception->second;
  }
  return out;
}

std::vector<WideString> LeafPaths(const TmvPropertyTable& table) {
  std::vector<WideString> paths;
  for (const TmvPropertyLeaf& leaf : table.Leaves()) paths.push_back(leaf.Path);
  return paths;
}

std::vector<WideString> RefPaths(const std::vector<std::pair<WideString, WideString>>& reference) {
  std::vector<WideString> paths;
  for (const auto& entry : reference) paths.push_back(entry.first);
  return paths;
}

// Reads every option of `object` through its table and compares it with the
// reference; also checks that the table declares the same defaults.
void ExpectDefaults(const TmvPersistent& object, const TmvPropertyTable& table,
                    const std::vector<std::pair<WideString, WideString>>& reference) {
  ASSERT_EQ(LeafPaths(table), RefPaths(reference)) << table.ClassName();
  const std::vector<TmvPropertyLeaf> leaves = table.Leaves();
  for (size_t i = 0; i < reference.size(); ++i) {
    const auto& [path, value] = reference[i];
    EXPECT_EQ(table.GetText(object, path), value) << UTF8Encode(path);
    EXPECT_EQ(TmvPropertyTable::ValueText(*leaves[i].Entry, leaves[i].Default), value) << UTF8Encode(path);
  }
}

// A value other than the current one, as text.
WideString OtherValue(const TmvPropertyEntry& entry, const WideString& current) {
  switch (entry.Type) {
    case ptBoolean: return current == u"True" ? u"False" : u"True";
    case ptInteger: return current == u"7" ? u"9" : u"7";
    case ptEnumeration: {
      const int64_t ordinal = entry.Enum->Find(current);
      return entry.Enum->Members[(ordinal + 1) % int64_t(entry.Enum->Members.size())];
    }
    case ptObject:
    case ptColor:
    case ptSet:
    case ptString: break;  // none among the format options
  }
  return {};
}

std::map<WideString, WideString> AllValues(const TmvPersistent& object, const TmvPropertyTable& table) {
  std::map<WideString, WideString> values;
  for (const TmvPropertyLeaf& leaf : table.Leaves()) values[leaf.Path] = table.GetText(object, leaf.Path);
  return values;
}

}  // namespace

// --- Defaults ---

TEST(FormatOptions, FormatsHaveTheirDefaults) {
  TSQLBuilderItemsListFormat list;
  ExpectDefaults(list, list.PropertyTable(), Reference(kItemsList));
  TSQLBuilderConditionFormat condition;
  ExpectDefaults(condition, condition.PropertyTable(), Reference(kCondition));
  TSQLBuilderFromClauseFormat from;
  ExpectDefaults(from, from.PropertyTable(), Reference(kFromClause));
  TSQLBuilderSelectFormat select;
  ExpectDefaults(select, select.PropertyTable(), Reference(kSelect));
}

TEST(FormatOptions, BuildersHaveTheirDefaults) {
  const auto reference = BuilderReference();
  ASSERT_EQ(reference.size(), 13u + 4u * 25u);
  // The table's leaves carry the expression sub-query's own defaults too.
  TSQLBuilder base;
  ExpectDefaults(base, base.PropertyTable(), reference);
  TSQLBuilderFast fast;
  ExpectDefaults(fast, fast.PropertyTable(), reference);
  TSQLBuilderPiped piped;
  auto pipedReference = reference;
  for (const auto& entry : Reference(kPipedOwn)) pipedReference.push_back(entry);
  ExpectDefaults(piped, piped.PropertyTable(), pipedReference);
  // The margin a new builder wraps at follows the default.
  EXPECT_EQ(piped.RightMargin(), 80);
}

TEST(FormatOptions, PropertiesDocumentKeys) {
  TSQLBuilderPiped builder;
  std::map<WideString, WideString> keys;
  for (const TmvPropertyLeaf& leaf : builder.PropertyTable().Leaves())
    if (!leaf.XMLPath.empty()) keys[leaf.Path] = leaf.XMLPath;
  EXPECT_EQ(keys, kBuilderXMLKeys);
  EXPECT_EQ(keys.size(), 6u + 3u * 15u);
  // Nested objects give their keys as folders.
  EXPECT_EQ(WideString(TSQLBuilderSelectFormat::Properties().Find(u"FromClauseFormat")->XMLPath),
            u"from-clause-format/");
}

TEST(FormatOptions, EnumerationsNameTheirMembersInOrder) {
  using V = std::vector<WideString>;
  for (auto [type, members] : {std::pair<const TmvEnumType*, V>{&TmvEnumTypeOf(skDontCare), {u"skDontCare", u"skSkipIfPossible", u"skPrintAlways"}},
                               {&TmvEnumTypeOf(opsSkipAll), {u"opsSkipAll", u"opsSkipDatabase", u"opsSkipNone"}},
                               {&TmvEnumTypeOf(mvqpQuery), {u"mvqpQuery", u"mvqpSubQuery", u"mvqpUnionSubQuery"}}})
    EXPECT_EQ(V(type->Members.begin(), type->Members.end()), members);
  const TmvEnumType& nl = TmvEnumTypeOf(nlNone);
  EXPECT_EQ(nl.Find(u"NLALLLOGICAL"), nlAllLogical);
  EXPECT_EQ(nl.Find(u"nlSometimes"), -1);
  EXPECT_EQ(nl.NameOf(nlTopmostLogical), u"nlTopmostLogical");
  EXPECT_EQ(nl.NameOf(9), u"9");
}

// --- Reading and writing by name ---

TEST(FormatOptions, EveryOptionCanBeSetByNameAndReadBack) {
  TSQLBuilderPiped builder;
  const TmvPropertyTable& table = builder.PropertyTable();
  int updates = 0;
  builder.GetOnUpdated().AddHandler(TmvHandlerId::Unique(), [&updates](TmvObject*) { ++updates; });
  for (const TmvPropertyLeaf& leaf : table.Leaves()) {
    const std::map<WideString, WideString> before = AllValues(builder, table);
    const WideString value = OtherValue(*leaf.Entry, before.at(leaf.Path));
    const int updatesBefore = updates;
    table.SetText(builder, leaf.Path, value);
    EXPECT_EQ(table.GetText(builder, leaf.Path), value) << UTF8Encode(leaf.Path);
    EXPECT_EQ(updates, updatesBefore + 1) << UTF8Encode(leaf.Path);
    // Exactly this option changed: no two names share a field.
    std::map<WideString, WideString> expected = before;
    expected[leaf.Path] = value;
    EXPECT_EQ(AllValues(builder, table), expected) << UTF8Encode(leaf.Path);
    // The same value again changes nothing and reports nothing.
    table.SetText(builder, leaf.Path, value);
    EXPECT_EQ(updates, updatesBefore + 1) << UTF8Encode(leaf.Path);
  }
}

TEST(FormatOptions, NamesReachTheTypedProperties) {
  TSQLBuilderPiped b;
  const TmvPropertyTable& t = b.PropertyTable();
  // Names compare case-blind; enumerations take names in any case or
  // ordinals; booleans take 0/1 and blanks around.
  for (auto [name, value] : {std::pair{u"RightMargin", u"-5"}, {u"keywordformat", u"akfUpperCase"},
                             {u"QuoteIdentifiers", u"ICALL"}, {u"ObjectPrefixSkipping", u"2"},
                             {u"UseAltNames", u"0"}, {u"ExpandVirtualFields", u"true"},
                             {u"ExpandVirtualObjects", u"1"}, {u"OuterKeywordInLinks", u"skSkipIfPossible"},
                             {u"InnerKeywordInLinks", u"skPrintAlways"}, {u"AsKeywordInExpressionAlias", u"skPrintAlways"},
                             {u"AsKeywordInObjectAlias", u"skSkipIfPossible"}, {u"ParenthesizeANDGroups", u"False"},
                             {u"ParenthesizeSingleCriterion", u" True "}, {u"DynamicIndents", u"True"},
                             {u"DynamicRightMargin", u"True"}})
    t.SetText(b, name, value);
  EXPECT_EQ(b.RightMargin(), -5);
  EXPECT_EQ(b.KeywordFormat(), akfUpperCase);
  EXPECT_EQ(b.QuoteIdentifiers(), icAll);
  EXPECT_EQ(b.ObjectPrefixSkipping(), opsSkipNone);
  EXPECT_FALSE(b.UseAltNames());
  EXPECT_TRUE(b.ExpandVirtualFields() && b.ExpandVirtualObjects());
  EXPECT_EQ(b.OuterKeywordInLinks(), skSkipIfPossible);
  EXPECT_EQ(b.InnerKeywordInLinks(), skPrintAlways);
  EXPECT_EQ(b.AsKeywordInExpressionAlias(), skPrintAlways);
  EXPECT_EQ(b.AsKeywordInObjectAlias(), skSkipIfPossible);
  EXPECT_FALSE(b.ParenthesizeANDGroups());
  EXPECT_TRUE(b.ParenthesizeSingleCriterion() && b.DynamicIndents() && b.DynamicRightMargin());

  // Each select format answers to its own prefix; the nested formats of one
  // are reached through it (all four share the select format's table).
  struct Format {
    const char16_t* name;
    TSQLBuilderSelectFormat& format;
  };
  for (Format f : {Format{u"MainQueryFormat", b.MainQueryFormat()},
                   Format{u"ExpressionsSubQueryFormat", b.ExpressionsSubQueryFormat()},
                   Format{u"FromSubQueryFormat", b.FromSubQueryFormat()},
                   Format{u"CTESubQueryFormat", b.CTESubQueryFormat()}}) {
    t.SetText(b, WideString(f.name) + u".IndentGlobal", u"3");
    EXPECT_EQ(f.format.IndentGlobal(), 3) << UTF8Encode(f.name);
  }
  const TSQLBuilderSelectFormat& m = b.MainQueryFormat();
  for (auto [name, value] : {std::pair{u"MainPartsFromNewLine", u"False"}, {u"IndentInPart", u"4"},
                             {u"NewLineAfterPartKeywords", u"True"}, {u"SelectListFormat.NewLineAfterItem", u"False"},
                             {u"SelectListFormat.NewLineBeforeComma", u"True"}, {u"GroupByFormat.NewLineAfterItem", u"False"},
                             {u"WindowFormat.NewLineBeforeComma", u"True"}, {u"OrderByFormat.NewLineAfterItem", u"False"},
                             {u"WhereFormat.NewLineBefore", u"nlAllLogical"}, {u"HavingFormat.NewLineAfter", u"nlTopmostLogical"},
                             {u"HavingFormat.IndentNestedConditions", u"0"},
                             {u"FromClauseFormat.NewLineAfterDatasource", u"False"},
                             {u"FromClauseFormat.NewLineAfterJoin", u"True"}, {u"FromClauseFormat.NewLineBeforeComma", u"True"},
                             {u"FromClauseFormat.NewLineBeforeJoinExpression", u"True"},
                             {u"FromClauseFormat.JoinConditionFormat.NewLineAfter", u"nlNone"}})
    t.SetText(b, WideString(u"MainQueryFormat.") + name, value);
  EXPECT_FALSE(m.MainPartsFromNewLine());
  EXPECT_EQ(m.IndentInPart(), 4);
  EXPECT_TRUE(m.NewLineAfterPartKeywords());
  EXPECT_FALSE(m.SelectListFormat().NewLineAfterItem());
  EXPECT_TRUE(m.SelectListFormat().NewLineBeforeComma());
  EXPECT_FALSE(m.GroupByFormat().NewLineAfterItem());
  EXPECT_TRUE(m.WindowFormat().NewLineBeforeComma());
  EXPECT_FALSE(m.OrderByFormat().NewLineAfterItem());
  EXPECT_EQ(m.WhereFormat().NewLineBefore(), nlAllLogical);
  EXPECT_EQ(m.HavingFormat().NewLineAfter(), nlTopmostLogical);
  EXPECT_EQ(m.HavingFormat().IndentNestedConditions(), 0);
  EXPECT_FALSE(m.FromClauseFormat().NewLineAfterDatasource());
  EXPECT_TRUE(m.FromClauseFormat().NewLineAfterJoin() && m.FromClauseFormat().NewLineBeforeComma() &&
              m.FromClauseFormat().NewLineBeforeJoinExpression());
  EXPECT_EQ(m.FromClauseFormat().JoinConditionFormat().NewLineAfter(), nlNone);
  // A format's own table works on the format alone.
  TSQLBuilderConditionFormat condition;
  condition.PropertyTable().SetAssignment(condition, u"IndentNestedConditions = 6");
  EXPECT_EQ(condition.IndentNestedConditions(), 6);
}

TEST(FormatOptions, AssignmentsAsACommandLineGivesThem) {
  TSQLBuilderPiped b;
  const TmvPropertyTable& t = b.PropertyTable();
  t.SetAssignment(b, u"MainQueryFormat.WhereFormat.NewLineAfter=nlAllLogical");
  EXPECT_EQ(b.MainQueryFormat().WhereFormat().NewLineAfter(), nlAllLogical);
  t.SetAssignment(b, u" RightMargin = 40 ");
  EXPECT_EQ(b.RightMargin(), 40);
  // Only the first "=" separates.
  EXPECT_EQ(mvtest::ThrownMessage<EConvertError>([&] { t.SetAssignment(b, u"RightMargin==4"); }),
            u"Property \"RightMargin\": \"=4\" is not an integer");
  EXPECT_EQ(mvtest::ThrownMessage<EmvQueryBuilderError>([&] { t.SetAssignment(b, u"RightMargin"); }),
            u"\"RightMargin\" gives no value; write NAME=VALUE");
  EXPECT_EQ(b.RightMargin(), 40);
}

TEST(FormatOptions, UnknownNamesAreRefusedWithTheirPath) {
  TSQLBuilderPiped b;
  const TmvPropertyTable& t = b.PropertyTable();
  auto message = [&](WideStringView path) {
    EXPECT_THROW(t.GetText(b, path), EmvQueryBuilderError);  // reading fails the same way
    const auto e = mvtest::Thrown<EmvQueryBuilderError>([&] { t.SetText(b, path, u"1"); });
    EXPECT_TRUE(e && e->Text() == path);
    return e ? e->Message() : WideString();
  };
  EXPECT_EQ(message(u"LeftMargin"), u"Unknown property \"LeftMargin\": TSQLBuilderPiped has no property \"LeftMargin\"");
  EXPECT_EQ(message(u"MainQueryFormat.WhereFormat.NewLineAround"),
            u"Unknown property \"MainQueryFormat.WhereFormat.NewLineAround\": TSQLBuilderConditionFormat has no "
            u"property \"NewLineAround\"");
  EXPECT_EQ(message(u"MainQueryFormat"),
            u"Property \"MainQueryFormat\" is an object of class TSQLBuilderSelectFormat; name one of its properties");
  EXPECT_EQ(message(u"RightMargin.Value"),
            u"Unknown property \"RightMargin.Value\": RightMargin is of type integer and has no properties");
  EXPECT_EQ(message(u"MainQueryFormat..IndentGlobal"),
            u"Property name \"MainQueryFormat..IndentGlobal\" has an empty part");
  EXPECT_EQ(message(u""), u"Property name \"\" has an empty part");
  // The piped flags are not options of the plain builder.
  TSQLBuilder plain;
  EXPECT_THROW(plain.PropertyTable().SetText(plain, u"DynamicIndents", u"True"), EmvQueryBuilderError);
}

TEST(FormatOptions, BadValuesAreRefusedAndChangeNothing) {
  TSQLBuilderPiped b;
  const TmvPropertyTable& t = b.PropertyTable();
  int updates = 0;
  b.GetOnUpdated().AddHandler(TmvHandlerId::Unique(), [&updates](TmvObject*) { ++updates; });
  const auto before = AllValues(b, t);
  auto message = [&](WideStringView path, WideStringView value) {
    return mvtest::ThrownMessage<EConvertError>([&] { t.SetText(b, path, value); });
  };
  EXPECT_EQ(message(u"UseAltNames", u"yes"), u"Property \"UseAltNames\": \"yes\" is not a boolean; give True or False");
  EXPECT_EQ(message(u"UseAltNames", u"2"), u"Property \"UseAltNames\": \"2\" is not a boolean; give True or False");
  EXPECT_EQ(message(u"RightMargin", u"eighty"), u"Property \"RightMargin\": \"eighty\" is not an integer");
  EXPECT_EQ(message(u"RightMargin", u"2147483648"), u"Property \"RightMargin\": \"2147483648\" is not an integer");
  EXPECT_EQ(message(u"RightMargin", u""), u"Property \"RightMargin\": \"\" is not an integer");
  EXPECT_EQ(message(u"MainQueryFormat.WhereFormat.NewLineAfter", u"nlSometimes"),
            u"Property \"MainQueryFormat.WhereFormat.NewLineAfter\": \"nlSometimes\" is not a value of "
            u"TSQLBuilderConditionFormatNL; give one of nlNone, nlTopmostOr, nlTopmostLogical, nlAllLogical");
  EXPECT_EQ(message(u"KeywordFormat", u"3"),
            u"Property \"KeywordFormat\": \"3\" is not a value of TmvKeywordFormat; give one of akfFirstUpper, "
            u"akfUpperCase, akfLowerCase");
  EXPECT_EQ(message(u"KeywordFormat", u"-1"),
            u"Property \"KeywordFormat\": \"-1\" is not a value of TmvKeywordFormat; give one of akfFirstUpper, "
            u"akfUpperCase, akfLowerCase");
  EXPECT_EQ(AllValues(b, t), before);
  EXPECT_EQ(updates, 0);
  // The extremes of a 32-bit integer are values.
  t.SetText(b, u"RightMargin", u"-2147483648");
  EXPECT_EQ(b.RightMargin(), -2147483647 - 1);
}

// --- Assign and the readable dump ---

TEST(FormatOptions, AssignCopiesEveryFormatOptionIntoTheSameObjects) {
  TSQLBuilderSelectFormat source;
  const TmvPropertyTable& t = source.PropertyTable();
  for (const TmvPropertyLeaf& leaf : t.Leaves())
    t.SetText(source, leaf.Path, OtherValue(*leaf.Entry, t.GetText(source, leaf.Path)));
  TSQLBuilderSelectFormat target;
  const TSQLBuilderConditionFormat* where = &target.WhereFormat();
  const TSQLBuilderConditionFormat* join = &target.FromClauseFormat().JoinConditionFormat();
  int updates = 0;
  target.GetOnUpdated().AddHandler(TmvHandlerId::Unique(), [&updates](TmvObject*) { ++updates; });
  target.Assign(source);
  EXPECT_EQ(AllValues(target, t), AllValues(source, t));
  EXPECT_EQ(updates, 1);  // one batch
  EXPECT_EQ(&target.WhereFormat(), where);
  EXPECT_EQ(&target.FromClauseFormat().JoinConditionFormat(), join);
  // Through the nested setters as well.
  TSQLBuilderFromClauseFormat from;
  target.SetFromClauseFormat(from);
  EXPECT_EQ(AllValues(target.FromClauseFormat(), from.PropertyTable()), AllValues(from, from.PropertyTable()));
  EXPECT_EQ(&target.FromClauseFormat().JoinConditionFormat(), join);
  // A format of another class is refused.
  EXPECT_THROW(target.Assign(&from), EConvertError);
}

TEST(FormatOptions, BuilderAssignCopiesAllButTheKeywordModesAndEvents) {
  TSQLBuilderPiped source;
  const TmvPropertyTable& t = source.PropertyTable();
  for (const TmvPropertyLeaf& leaf : t.Leaves())
    t.SetText(source, leaf.Path, OtherValue(*leaf.Entry, t.GetText(source, leaf.Path)));
  source.OnBeginBuildSQLForNode = [](TSQLBuilder*, TastNode*) {};
  TSQLBuilderPiped target;
  const TSQLBuilderSelectFormat* mainFormat = &target.MainQueryFormat();
  int updates = 0;
  target.GetOnUpdated().AddHandler(TmvHandlerId::Unique(), [&updates](TmvObject*) { ++updates; });
  std::map<WideString, WideString> expected = AllValues(source, t);
  const std::map<WideString, WideString> defaults = AllValues(target, t);
  for (const char16_t* mode :
       {u"OuterKeywordInLinks", u"InnerKeywordInLinks", u"AsKeywordInExpressionAlias", u"AsKeywordInObjectAlias"})
    expected[mode] = defaults.at(mode);
  target.Assign(source);
  EXPECT_EQ(AllValues(target, t), expected);
  EXPECT_EQ(updates, 1);  // one batch
  // The owned format stays the same object; its values were copied into it.
  EXPECT_EQ(&target.MainQueryFormat(), mainFormat);
  EXPECT_FALSE(target.OnBeginBuildSQLForNode);

  // A base builder takes the common settings, not the piped flags.
  TSQLBuilder base;
  base.Assign(source);
  EXPECT_EQ(base.RightMargin(), source.RightMargin());
  TSQLBuilderPiped fromBase;
  fromBase.Assign(base);
  EXPECT_FALSE(fromBase.DynamicIndents());
  // Any other class falls to the inherited Assign, which refuses.
  TSQLBuilderSelectFormat format;
  EXPECT_THROW(base.Assign(&format), EConvertError);
  EXPECT_THROW(format.Assign(&base), EConvertError);
}

TEST(FormatOptions, DescribeWritesEveryOptionByName) {
  TSQLBuilderFromClauseFormat from;
  from.JoinConditionFormat().SetNewLineBefore(nlAllLogical);
  EXPECT_EQ(TmvPropertyWriter::Describe(from), (std::vector<WideString>{
                                                   u"object TSQLBuilderFromClauseFormat",
                                                   u"  NewLineAfterDatasource = True",
                                                   u"  NewLineAfterJoin = False",
                                                   u"  NewLineBeforeComma = False",
                                                   u"  NewLineBeforeJoinExpression = False",
                                                   u"  object JoinConditionFormat: TSQLBuilderConditionFormat",
                                                   u"    NewLineBefore = nlAllLogical",
                                                   u"    NewLineAfter = nlTopmostOr",
                                                   u"    IndentNestedConditions = 2",
                                                   u"  end",
                                                   u"end",
                                               }));
  // A builder writes its own options first, then those of its class.
  TSQLBuilderPiped piped;
  const std::vector<WideString> lines = TmvPropertyWriter::Describe(piped);
  ASSERT_GT(lines.size(), 3u);
  EXPECT_EQ(lines[0], u"object TSQLBuilderPiped");
  EXPECT_EQ(lines[1], u"  RightMargin = 80");
  EXPECT_EQ(lines[2], u"  KeywordFormat = akfFirstUpper");
  EXPECT_EQ(lines[lines.size() - 3], u"  DynamicIndents = False");
}
