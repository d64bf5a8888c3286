// Names given as SQL text: identifiers and dotted names read through the
// context's name entries, so that the dialect's quotes are understood.
#include <gtest/gtest.h>

#include "SQL92Context.h"
#include "Thrown.h"
#include "frontend/SQLContext.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"
#include "tree/Tokens.h"

using namespace mv;

using NameTextTest = mvtest::SQL92ContextTest;

TEST_F(NameTextTest, AnIdentifierFromSQLText) {
  auto plain = TastCreate<TastTokenIdentifier>(&context, WideStringView(u"abc"));
  EXPECT_EQ(plain->Token, u"abc");
  EXPECT_FALSE(plain->Quoted);
  EXPECT_TRUE(plain->ValidIdentifier);
  auto quoted = TastCreate<TastTokenIdentifier>(&context, WideStringView(u"\"My Col\""));
  EXPECT_EQ(quoted->Token, u"My Col");
  EXPECT_TRUE(quoted->Quoted);
  // Text that is no bare name is taken quoted.
  auto spaced = TastCreate<TastTokenIdentifier>(&context, WideStringView(u"My Col"));
  EXPECT_EQ(spaced->Token, u"My Col");
  EXPECT_TRUE(spaced->Quoted);
  spaced->SetTokenStr(u"");
  EXPECT_EQ(spaced->Token, u"");
  EXPECT_FALSE(spaced->Quoted);
  spaced->SetTokenStr(u"select");
  EXPECT_EQ(spaced->Token, u"select");
  EXPECT_TRUE(spaced->Quoted);
  EXPECT_FALSE(spaced->ValidIdentifier);
  // Without a context the text stands as it is.
  auto loose = TastCreate<TastTokenIdentifier>(nullptr, WideStringView(u"\"x\""));
  EXPECT_EQ(loose->Token, u"\"x\"");
}

TEST_F(NameTextTest, PartsFromSQLText) {
  auto name = TastCreate<TSQLQualifiedName>(&context);
  name->AddName(WideStringView(u"t"));
  name->AddPrefix(WideStringView(u"\"My Schema\""));
  name->AddName(WideStringView(u"c"));
  ASSERT_EQ(name->GetCount(), 3);
  EXPECT_EQ(name->GetQualifiedName(), u"\"My Schema\".t.c");
  EXPECT_TRUE(TmvCast<TastTokenIdentifier>(name->Token(2))->Quoted);
}

TEST_F(NameTextTest, SetQualifiedName) {
  auto name = TastCreate<TSQLDatabaseObject>(&context);
  name->SetQualifiedName(u"db.s.t");
  ASSERT_EQ(name->GetCount(), 3);
  EXPECT_EQ(name->Token(0)->Token, u"t");
  name->SetQualifiedName(u"Order Details");  // taken quoted
  ASSERT_EQ(name->GetCount(), 1);
  EXPECT_EQ(name->GetQualifiedName(), u"\"Order Details\"");
  // Not even in quotes a name.
  EXPECT_EQ(mvtest::ThrownMessage([&] { name->SetQualifiedName(u"a\"b"); }), u"Invalid object name");
  EXPECT_EQ(name->GetQualifiedName(), u"\"Order Details\"");  // unchanged after a failure
  name->SetQualifiedName(u"");
  EXPECT_EQ(name->GetCount(), 0);
}

TEST_F(NameTextTest, NamesListsReadSQLText) {
  TSQLQualifiedNamesList list(&context, true);
  list.Add(WideStringView(u"s.t"));
  list.Add(WideStringView(u"\"T 2\""));
  EXPECT_EQ(list.FindByName(WideStringView(u"S.T")), 0);
  EXPECT_EQ(list.FindByName(WideStringView(u"T 2")), 1);
  EXPECT_EQ(list.FindByName(WideStringView(u"t")), -1);
  EXPECT_EQ(list.FindByName(WideStringView(u"")), -1);
  EXPECT_THROW(list.Add(WideStringView(u"a\"b")), Exception);
  EXPECT_EQ(list.Count(), 2);
}

TEST_F(NameTextTest, ACollectionFindsAnIdentifierGivenAsText) {
  auto collection = TastCreate<TSQLIdentifiersCollection>(&context);
  collection->AddIdentifier(u"Alpha");
  EXPECT_TRUE(collection->ContainsSameIdStr(u"ALPHA"));
  EXPECT_TRUE(collection->ContainsSameIdStr(u"\"alpha\""));  // case-insensitive dialect
  EXPECT_FALSE(collection->ContainsSameIdStr(u"beta"));
}
