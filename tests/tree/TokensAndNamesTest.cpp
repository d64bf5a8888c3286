// Tokens and qualified names: quoting under the three case rules, name order,
// comparison, binding to sources, XML.
#include <gtest/gtest.h>

#include <pugixml.hpp>
#include <sstream>

#include "TestProvider.h"
#include "TreeTestUtil.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;
using namespace mv::test;

namespace {

class NamesTest : public TreeTest {
 protected:
  // The identifier printed by a one-line builder in that quoting mode.
  WideString Quote(const char16_t* text, bool quoted, TmvIdentQuotation mode) {
    auto id = Id(&context, text, quoted);
    TSQLBuilderFast builder;
    builder.SetQuoteIdentifiers(mode);
    return Print(id, builder);
  }
};

}  // namespace

TEST_F(NamesTest, QuotingUnderTheThreeCaseRules) {
  const struct {
    TmvIdentCaseSensitivity rule;
    const char16_t* text;
    bool quoted;
    TmvIdentQuotation mode;
    const char16_t* printed;
  } cases[] = {
      // Folding to upper case: source quotes survive only where they keep the
      // case; added quotes fold a bare name first, so the server sees the same
      // name; an invalid name needs quotes.
      {icsSensitiveUpperCase, u"abc", true, icIfNeed, u"\"abc\""},
      {icsSensitiveUpperCase, u"ABC", true, icIfNeed, u"ABC"},
      {icsSensitiveUpperCase, u"abc", false, icIfNeed, u"abc"},
      {icsSensitiveUpperCase, u"abc", false, icAll, u"\"ABC\""},
      {icsSensitiveUpperCase, u"abc", true, icAll, u"\"abc\""},
      {icsSensitiveUpperCase, u"abc", true, icNone, u"abc"},
      {icsSensitiveUpperCase, u"select", false, icIfNeed, u"\"SELECT\""},
      {icsSensitiveUpperCase, u"my name", true, icIfNeed, u"\"my name\""},
      {icsSensitiveUpperCase, u"my name", true, icNone, u"my name"},
      {icsSensitiveLowerCase, u"abc", true, icIfNeed, u"abc"},
      {icsSensitiveLowerCase, u"ABC", true, icIfNeed, u"\"ABC\""},
      {icsSensitiveLowerCase, u"Abc", false, icAll, u"\"abc\""},
      {icsNonSensitive, u"abc", true, icIfNeed, u"abc"},
      {icsNonSensitive, u"Abc", false, icAll, u"\"Abc\""},
      {icsNonSensitive, u"order", false, icIfNeed, u"\"order\""},
  };
  for (const auto& c : cases) {
    provider.SetIdentCaseSens(c.rule);
    EXPECT_EQ(Quote(c.text, c.quoted, c.mode), c.printed)
        << int(c.rule) << " " << UTF8Encode(c.text) << " quoted " << c.quoted << " mode " << int(c.mode);
  }
}

TEST_F(NamesTest, ClosingQuoteInsideIsDoubled) {
  provider.quoteBegin = u"[";
  provider.quoteEnd = u"]";
  // An empty identifier is a pair of quotes in every mode.
  for (TmvIdentQuotation mode : {icNone, icIfNeed, icAll}) EXPECT_EQ(Quote(u"", false, mode), u"[]");
  EXPECT_EQ(Quote(u"a]b", true, icIfNeed), u"[a]]b]");
  EXPECT_EQ(Quote(u"a]b", true, icAll), u"[a]]b]");
  // A valid name is not scanned for the quote (it cannot hold one).
  provider.quoteEnd = u"]]";
  EXPECT_EQ(Quote(u"a]b", true, icIfNeed), u"[a]b]]");
  provider.quoteBegin = u"\"";
  provider.quoteEnd = u"\"";
  EXPECT_EQ(Quote(u"say \"hi\"", true, icIfNeed), u"\"say \"\"hi\"\"\"");
  // CreateQuotedIdentifier always doubles the closing quote.
  EXPECT_EQ(CreateQuotedIdentifier(u"a]b", u"[", u"]"), u"[a]]b]");
  EXPECT_EQ(CreateQuotedIdentifier(u"ab", u"`", u"`"), u"`ab`");
  EXPECT_EQ(CreateQuotedIdentifier(u"x\"\"y", u"\"", u"\""), u"\"x\"\"\"\"y\"");
  EXPECT_EQ(CreateQuotedIdentifier(u"", u"\"", u"\""), u"\"\"");
}

TEST_F(NamesTest, WithoutProviderTheTextStandsAsItIs) {
  TmvBaseSQLContext bare;
  auto id = Id(&bare, u"my name", true);
  EXPECT_FALSE(id->ValidIdentifier);
  TSQLBuilderFast builder;
  builder.SetQuoteIdentifiers(icAll);
  EXPECT_EQ(Print(id, builder), u"my name");
}

TEST_F(NamesTest, ValidityFollowsTheDialect) {
  auto id = Id(&context, u"price");
  EXPECT_TRUE(id->ValidIdentifier);
  // The word becomes reserved: the next change of dialect recomputes it.
  provider.reserved.push_back(u"price");
  provider.SendNotifications();
  EXPECT_FALSE(id->ValidIdentifier);
  EXPECT_EQ(Fast(id), u"\"PRICE\"");
  // Assign within a context copies it; from another context it is recomputed.
  TmvBaseSQLContext bare;
  auto elsewhere = Id(&bare, u"other");
  elsewhere->ValidIdentifier = true;
  auto copy = Id(&bare, u"x");
  copy->Assign(*id);
  EXPECT_FALSE(copy->ValidIdentifier);  // no dialect in `bare`
  auto same = Id(&context, u"y");
  same->Assign(*elsewhere);
  EXPECT_TRUE(same->ValidIdentifier);   // recomputed under `context`
  EXPECT_EQ(same->Token, u"other");
  id->SetToken(u"1abc");
  EXPECT_FALSE(id->ValidIdentifier);
  EXPECT_FALSE(context.IsValidIdent(u"\"abc"));  // begins with the opening quote
  EXPECT_FALSE(context.IsValidIdent(u""));
}

TEST_F(NamesTest, TokenClassesMapToTheirWrites) {
  TSQLBuilderFast builder;
  builder.SetKeywordFormat(akfUpperCase);
  auto list = TastCreate<TastNodeWithList>(&context);
  list->Keyword(u"Select").Space().Identifier(u"Col").Symbol(u",").Space(2).String_(u"'Str'").Space().Number(u"1e3");
  list->Space().Builtin(u"Upper");
  list->AddNode(TastCreate<TastToken>(&context, u"Plain"), true);
  EXPECT_EQ(Print(list, builder), u"SELECT Col, 'Str' 1e3 Upper Plain");
  auto unicode = TastCreate<TastTokenUnicodeString>(&context, u"U&'d!0061t'");
  EXPECT_EQ(Print(unicode, builder), u"U&'d!0061t'");
  unicode->UEscape.Set(TastCreate<TastTokenString>(&context, u"'!'"));
  EXPECT_EQ(Print(unicode, builder), u"U&'d!0061t' UESCAPE '!'");
}

TEST_F(NamesTest, PartsAreHeldInsideOut) {
  auto name = Name(&context, {u"db", u"dbo", u"t"});
  ASSERT_EQ(name->GetCount(), 3);
  EXPECT_EQ(name->Token(0)->Token, u"t");
  EXPECT_EQ(name->Token(2)->Token, u"db");
  EXPECT_EQ(name->GetQualifiedName(), u"db.dbo.t");
  // Other names keep their order whichever end they join.
  auto inner = Name(&context, {u"x", u"y"});
  auto outer = Name(&context, {u"p", u"q"});
  name->AddName(inner.get());
  name->AddPrefix(outer.get());
  EXPECT_EQ(name->GetQualifiedName(), u"p.q.db.dbo.t.x.y");
  EXPECT_EQ(name->ExtractName()->Token, u"y");
  EXPECT_EQ(name->ExtractPrefix()->Token, u"p");
  name->RemoveLastName();
  name->RemoveFirstPrefix();
  EXPECT_EQ(name->GetQualifiedName(), u"db.dbo.t");
  EXPECT_EQ(name->GetNameWithoutNames(1)->GetQualifiedName(), u"db.dbo");
  EXPECT_EQ(name->GetNameWithoutPrefixes(2)->GetQualifiedName(), u"t");
  EXPECT_EQ(name->GetQualifiedName(), u"db.dbo.t");  // the clones left it whole
}

TEST_F(NamesTest, StartsWithComparesFromTheOutermostPart) {
  auto name = Name(&context, {u"db", u"dbo", u"t"});
  EXPECT_TRUE(name->StartsWith(Name(&context, {u"DB", u"dbo"}).get()));
  EXPECT_TRUE(name->StartsWith(Name(&context, {u"db", u"dbo", u"t"}).get()));
  EXPECT_FALSE(name->StartsWith(Name(&context, {u"dbo", u"t"}).get()));
  EXPECT_FALSE(name->StartsWith(Name(&context, {u"x", u"db", u"dbo", u"t"}).get()));  // longer
}

TEST_F(NamesTest, ComparisonUnderTheCaseRules) {
  auto quoted = Id(&context, u"a", true);
  auto bare = Id(&context, u"a", false);
  provider.SetIdentCaseSens(icsNonSensitive);
  EXPECT_TRUE(context.IsIdentifiersEqual(quoted.get(), bare.get()));
  provider.SetIdentCaseSens(icsSensitiveUpperCase);
  EXPECT_FALSE(context.IsIdentifiersEqual(quoted.get(), bare.get()));
  EXPECT_TRUE(context.IsIdentifiersEqual(Id(&context, u"A", true).get(), bare.get()));
  EXPECT_TRUE(context.IsIdentifiersEqual(bare.get(), Id(&context, u"A").get()));
  provider.SetIdentCaseSens(icsSensitiveLowerCase);
  EXPECT_TRUE(context.IsIdentifiersEqual(quoted.get(), Id(&context, u"A").get()));
  EXPECT_FALSE(context.IsIdentifiersEqual(Id(&context, u"A", true).get(), Id(&context, u"A").get()));
  // Other tokens compare without regard to case.
  auto keyword = TastCreate<TastTokenKeyword>(&context, u"COUNT");
  auto builtin = TastCreate<TastTokenBuiltin>(&context, u"Count");
  EXPECT_EQ(context.CompareTokens(keyword.get(), builtin.get()), 0);
  // Without a provider quoted names keep their case, bare ones fold up.
  TmvBaseSQLContext bare2;
  EXPECT_FALSE(bare2.IsIdentifiersEqual(Id(&bare2, u"a", true).get(), Id(&bare2, u"a").get()));
  EXPECT_TRUE(bare2.IsIdentifiersEqual(Id(&bare2, u"A", true).get(), Id(&bare2, u"a").get()));
}

TEST_F(NamesTest, ShorterNamesCompareByCountFirst) {
  auto shorter = Name(&context, {u"zzz"});
  auto longer = Name(&context, {u"a", u"a"});
  EXPECT_LT(context.CompareQualifiedNames(shorter.get(), longer.get()), 0);
  EXPECT_GT(context.CompareQualifiedNames(longer.get(), shorter.get()), 0);
  TSQLQualifiedNamesList list(&context, true);
  list.Add(Name(&context, {u"x", u"b"}));
  list.Add(Name(&context, {u"c"}));
  list.Add(Name(&context, {u"a", u"b"}));
  list.Add(Name(&context, {u"a"}));
  list.SortByNames();
  std::vector<WideString> sorted;
  for (int i = 0; i < list.Count(); ++i) sorted.push_back(list.Items(i)->GetQualifiedName());
  // By count, then from the object name outward.
  EXPECT_EQ(sorted, (std::vector<WideString>{u"a", u"c", u"a.b", u"x.b"}));
}

TEST_F(NamesTest, DatabaseLinkTakesPartInComparison) {
  auto linked = Name(&context, {u"dbo", u"t"});
  linked->DatabaseLink.Set(Name(&context, {u"remote"}));
  EXPECT_EQ(linked->GetQualifiedName(), u"dbo.t@remote");
  TastTokenRefs tokens;
  linked->GetTokensToCompare(tokens);
  ASSERT_EQ(tokens.size(), 3u);
  EXPECT_EQ(tokens[0]->Token, u"remote");  // the link first, the object name last
  EXPECT_EQ(tokens[2]->Token, u"t");

  TSQLQualifiedNamesList list(&context, true);
  list.Add(Name(&context, {u"dbo", u"t"}));
  auto other = Name(&context, {u"dbo", u"t"});
  other->DatabaseLink.Set(Name(&context, {u"elsewhere"}));
  list.Add(std::move(other));
  list.Add(linked->CloneAs<TSQLQualifiedName>());
  EXPECT_EQ(list.FindByName(linked.get()), 2);
  auto plain = Name(&context, {u"dbo", u"t"});
  EXPECT_EQ(list.FindByName(plain.get()), 0);
  // An empty link counts as none.
  plain->DatabaseLink.Set(TastCreate<TSQLQualifiedName>(&context));
  EXPECT_TRUE(context.IsQualifiedNamesEqual(plain.get(), list.Items(0)));
  EXPECT_EQ(plain->GetQualifiedName(), u"dbo.t");
  EXPECT_TRUE(IsQualifiedNameEmpty(nullptr));
  EXPECT_TRUE(IsQualifiedNameEmpty(plain->DatabaseLink.get()));
  EXPECT_TRUE(context.IsQualifiedNamesEqual(nullptr, TastCreate<TSQLQualifiedName>(&context).get()));
}

TEST_F(NamesTest, ObjectNameSeparatorStandsBeforeTheObjectName) {
  provider.objectNameSeparator = u"/";
  auto object = Name<TSQLDatabaseObject>(&context, {u"db", u"lib", u"t"});
  EXPECT_EQ(object->GetQualifiedName(), u"db.lib/t");
  // With no metadata container, every prefix prints whatever the skipping setting.
  TSQLBuilderFast builder;
  for (TmvObjectPrefixSkipping skipping : {opsSkipAll, opsSkipDatabase, opsSkipNone}) {
    builder.SetObjectPrefixSkipping(skipping);
    EXPECT_EQ(Print(object, builder), u"db.lib/t");
  }
  // A plain qualified name knows no separator of the dialect.
  EXPECT_EQ(Name(&context, {u"db", u"lib", u"t"})->GetQualifiedName(), u"db.lib.t");
}

TEST_F(NamesTest, QualifiedNameTextInEachQuotingMode) {
  provider.SetIdentCaseSens(icsSensitiveUpperCase);
  auto name = TastCreate<TSQLQualifiedName>(&context);
  name->AddName(u"Mixed", true);
  name->AddPrefix(u"dbo", false);
  EXPECT_EQ(name->GetQualifiedName(), u"dbo.\"Mixed\"");
  EXPECT_EQ(name->GetQualifiedNameWithQuotes(), u"\"DBO\".\"Mixed\"");
  EXPECT_EQ(name->GetQualifiedNameWithoutQuotes(), u"dbo.Mixed");
  EXPECT_EQ(name->GetQualifiedNameForServer(), u"dbo.\"Mixed\"");
  EXPECT_EQ(name->GetNonQualifiedNameNames(), u"dbo.\"Mixed\"");
}

TEST_F(NamesTest, BoundColumnsPrintThroughTheirSource) {
  auto aliased = FromObject(&context, {u"dbo", u"orders"}, u"o");
  auto plain = FromObject(&context, {u"dbo", u"orders"});
  auto derived = TastCreate<TSQLFromQuery>(&context);
  auto column = Name<TSQLObjectColumn>(&context, {u"id"});
  column->FromSource = aliased.get();
  EXPECT_EQ(Fast(column), u"o.id");
  column->FromSource = plain.get();
  EXPECT_EQ(Fast(column), u"dbo.orders.id");
  provider.objectNamesAsAliases = true;
  EXPECT_EQ(Fast(column), u"orders.id");
  provider.objectNamesAsAliases = false;
  // A derived table without alias cannot be named: no prefix, no dot.
  column->FromSource = derived.get();
  EXPECT_EQ(Fast(column), u"id");
  // The link of an object follows the column; the Oracle mark follows all.
  plain->Object->DatabaseLink.Set(Name(&context, {u"remote"}));
  column->FromSource = plain.get();
  column->OuterJoinMark = true;
  EXPECT_EQ(Fast(column), u"dbo.orders.id@remote(+)");
  // A database object bound to a source prints as the source's prefix.
  auto object = Name<TSQLDatabaseObject>(&context, {u"ignored"});
  object->FromSource = aliased.get();
  EXPECT_EQ(Fast(object), u"o");
}

TEST_F(NamesTest, BoundNamesCompareByWhatTheyReferTo) {
  auto aliased = FromObject(&context, {u"dbo", u"orders"}, u"o");
  auto plain = FromObject(&context, {u"dbo", u"orders"});
  auto a = Name<TSQLObjectColumn>(&context, {u"id"});
  a->FromSource = aliased.get();
  auto b = Name<TSQLObjectColumn>(&context, {u"o", u"id"});
  EXPECT_TRUE(context.IsQualifiedNamesFullEqual(a.get(), b.get()));
  EXPECT_FALSE(context.IsQualifiedNamesEqual(a.get(), b.get()));  // by their own tokens
  auto c = Name<TSQLObjectColumn>(&context, {u"id"});
  c->FromSource = plain.get();
  EXPECT_TRUE(context.IsQualifiedNamesFullEqual(c.get(), Name<TSQLObjectColumn>(&context, {u"dbo", u"orders", u"id"}).get()));
  // The source's own name compares by its own tokens.
  EXPECT_TRUE(plain->Object->IsOwnNameOfSource());
  EXPECT_TRUE(context.IsQualifiedNamesFullEqual(plain->Object.get(), Name(&context, {u"dbo", u"orders"}).get()));
  // A reference to another object's source compares by that source.
  auto reference = Name<TSQLDatabaseObject>(&context, {u"x"});
  reference->FromSource = aliased.get();
  EXPECT_TRUE(context.IsQualifiedNamesFullEqual(reference.get(), Name(&context, {u"o"}).get()));
}

TEST_F(NamesTest, RestoringPrefixesUnbindsNames) {
  auto aliased = FromObject(&context, {u"dbo", u"orders"}, u"o");
  auto linked = FromObject(&context, {u"dbo", u"orders"});
  linked->Object->DatabaseLink.Set(Name(&context, {u"remote"}));
  auto a = Name<TSQLObjectColumn>(&context, {u"id"});
  a->FromSource = aliased.get();
  auto b = Name<TSQLObjectColumn>(&context, {u"id"});
  b->FromSource = linked.get();
  a->RestoreColumnPrefix();
  b->RestoreColumnPrefix();
  aliased.reset();
  linked.reset();
  EXPECT_EQ(a->FromSource, nullptr);
  EXPECT_EQ(Fast(a), u"o.id");
  EXPECT_EQ(Fast(b), u"dbo.orders.id@remote");
  // The own name of a source keeps its parts through the recursive walk.
  auto source = FromObject(&context, {u"t"}, u"x");
  source->RestoreColumnPrefixRecursive(true);
  ASSERT_EQ(source->Object->GetCount(), 1);
  EXPECT_EQ(source->Object->Token(0)->Token, u"t");
  EXPECT_EQ(source->Object->FromSource, source.get());
  EXPECT_EQ(Fast(source), u"t x");
}

TEST_F(NamesTest, ExtractingNamePartsFollowsTheDialect) {
  auto full = Name(&context, {u"db", u"dbo", u"t"});
  EXPECT_EQ(context.ExtractNameFromFullName(full.get())->Token, u"t");
  EXPECT_EQ(context.ExtractSchemaFromFullName(full.get())->Token, u"dbo");
  EXPECT_EQ(context.ExtractDatabaseFromFullName(full.get())->GetQualifiedName(), u"db");
  provider.schemas = false;
  EXPECT_EQ(context.ExtractSchemaFromFullName(full.get()), nullptr);
  EXPECT_EQ(context.ExtractDatabaseFromFullName(full.get())->GetQualifiedName(), u"db.dbo");
  EXPECT_EQ(context.ExtractDatabaseFromFullName(Name(&context, {u"t"}).get()), nullptr);
  TmvBaseSQLContext bare;
  EXPECT_EQ(bare.ExtractNameFromFullName(full.get())->Token, u"t");
  EXPECT_THROW(bare.ExtractSchemaFromFullName(full.get()), Exception);
}

TEST_F(NamesTest, NamesGoToXMLAndBack) {
  provider.SetIdentCaseSens(icsSensitiveUpperCase);
  auto name = TastCreate<TSQLQualifiedName>(&context);
  name->AddName(u"My Table", true);
  name->AddPrefix(u"dbo", false);
  name->DatabaseLink.Set(Name(&context, {u"remote"}));
  pugi::xml_document document;
  name->GetXMLNode(document, "object", "item");
  std::ostringstream text;
  document.save(text, "", pugi::format_raw | pugi::format_no_declaration);
  EXPECT_EQ(text.str(),
            "<object><dblink><item name=\"remote\" case_sens=\"0\"/></dblink>"
            "<item name=\"My Table\" case_sens=\"1\"/><item name=\"dbo\" case_sens=\"0\"/></object>");
  auto loaded = TastCreate<TSQLQualifiedName>(&context);
  loaded->LoadFromXMLNode(document.child("object"), "item");
  EXPECT_TRUE(context.IsQualifiedNamesEqual(loaded.get(), name.get()));
  EXPECT_EQ(loaded->GetQualifiedName(), u"dbo.\"My Table\"@remote");
  EXPECT_FALSE(static_cast<TastTokenIdentifier*>(loaded->Token(0))->ValidIdentifier);

  // A token element without a name is dropped; booleans read in any spelling.
  pugi::xml_document odd;
  odd.load_string("<n><item case_sens=\"True\"/><item name=\"a\" case_sens=\"true\"/><item name=\"b\" case_sens=\"-1\"/>"
                  "<other name=\"c\"/></n>");
  loaded->LoadFromXMLNode(odd.child("n"), "item");
  ASSERT_EQ(loaded->GetCount(), 2);
  EXPECT_TRUE(static_cast<TastTokenIdentifier*>(loaded->Token(0))->Quoted);
  EXPECT_EQ(loaded->GetQualifiedName(), u"\"b\".\"a\"");  // both quoted, in small letters

  // A list of names as a document of its own.
  TSQLQualifiedNamesList list(&context, true);
  list.Add(name->CloneAs<TSQLQualifiedName>());
  list.AddIdentifier(u"x", false);
  TSQLQualifiedNamesList copy(&context, true);
  ASSERT_TRUE(copy.SetXML(list.GetXML()));
  ASSERT_EQ(copy.Count(), 2);
  EXPECT_TRUE(context.IsQualifiedNamesEqual(copy.Items(0), name.get()));
  EXPECT_FALSE(copy.SetXML("<names><item"));
  EXPECT_EQ(copy.Count(), 2);

  // An identifiers collection keeps its items.
  auto ids = TastCreate<TSQLIdentifiersCollection>(&context);
  ids->AddIdentifier(u"a");
  ids->AddIdentifier(u"b");
  pugi::xml_document idsDocument;
  ids->GetXMLNode(idsDocument, "columns");
  auto idsLoaded = TastCreate<TSQLIdentifiersCollection>(&context);
  idsLoaded->LoadFromXMLNode(idsDocument.child("columns"));
  ASSERT_EQ(idsLoaded->GetCount(), 2);
  EXPECT_TRUE(idsLoaded->ContainsSameId(Id(&context, u"B").get()));
  EXPECT_EQ(idsLoaded->IndexOf(Id(&context, u"c").get()), -1);
}

TEST_F(NamesTest, TokenListsFindTokens) {
  auto list = TastCreate<TastIdentifiersList>(&context);
  list->Add(Id(&context, u"Alpha"));
  list->Add(Id(&context, u"beta", true));
  EXPECT_EQ(list->FindByString(u"ALPHA"), 0);
  EXPECT_EQ(list->FindByString(u"gamma"), -1);
  EXPECT_EQ(list->FindByToken(Id(&context, u"BETA", true).get()), -1);  // quoted names keep their case
  EXPECT_EQ(list->FindByIdToken(Id(&context, u"alpha").get()), 0);
  TmvOwned<TastToken> taken = list->ExtractToken(0);
  EXPECT_EQ(taken->Token, u"Alpha");
  EXPECT_EQ(list->GetCount(), 1);
  TmvFieldsList fields(&context, true);
  fields.AddField(u"Amount", false);
  fields.AddFieldId(Id(&context, u"Total", true).get());
  EXPECT_EQ(fields.FindFieldByName(u"AMOUNT"), 0);
  EXPECT_EQ(fields.FindFieldByName(u"total"), -1);
}
