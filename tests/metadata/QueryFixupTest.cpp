// Binding the names of parsed statements to their sources and to the
// metadata: which source a column comes from, what each source and select
// offers, what a parameter is compared with, and that unresolved names stay
// as written.
#include <gtest/gtest.h>

#include "MetadataTestSupport.h"
#include "frontend/ParseTreeDump.h"
#include "frontend/SQLError.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/QueryFixup.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

using namespace mv;
using namespace mv::test;

namespace {

class QueryFixupTest : public MetadataTest {
 protected:
  QueryFixupTest() {
    provider.databases = false;
    provider.schemas = false;
    container->SetWorkOffline(true);
    AddTable(u"t", {u"x", u"k"});
    AddTable(u"u", {u"x", u"y", u"k"});
    AddTable(u"v", {u"x"});
  }

  TmvMetadataTable* AddTable(const char16_t* name, std::initializer_list<const char16_t*> fields) {
    TmvMetadataTable* table = Table({name});
    for (const char16_t* field : fields) table->GetFields()->AddField(Name({field}).get());
    return table;
  }

  TmvOwned<TSQLSelectStatement> Bind(const WideString& sql) {
    TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(sql);
    statement->PrepareAndFixupRecursive();
    return statement;
  }

  static WideString Print(TastNode* node) {
    TSQLBuilderFast builder;
    return node->SimpleSQL(builder);
  }

  // Every name of the tree with what it refers to, one a line: the name as
  // it prints, then the binding.
  static std::string Bindings(TastNodeBase* root) {
    std::string out;
    auto add = [&out](TastNodeBase* node) {
      const std::string binding = DescribeBinding(node);
      if (binding.empty()) return;
      out += UTF8Encode(Print(static_cast<TastNode*>(node))) + binding + "\n";
    };
    add(root);
    root->TraverseASTTreeDepthFirst(add);
    return out;
  }
};

struct BindingCase {
  const char16_t* sql;
  const char* print;     // the statement printed after binding
  const char* bindings;  // Bindings() of the bound tree
};

// A column's prefix comes from its source once bound; what does not resolve
// prints as written.
const BindingCase kBindingCases[] = {
    {u"SELECT a.x FROM t a", "Select a.x From t a",
     "a.x -> field \"x\" of \"t\" (source \"a\")\n"
     "a -> object \"t\"\n"},
    // The alias hides the name, but the second search finds the source by it.
    {u"SELECT t.x FROM t a", "Select a.x From t a",
     "a.x -> field \"x\" of \"t\" (source \"a\")\n"
     "a -> object \"t\"\n"},
    // The last source in sight that has the column.
    {u"SELECT x FROM t, u", "Select u.x From t, u",
     "u.x -> field \"x\" of \"u\" (source \"u\")\n"
     "t -> object \"t\"\n"
     "u -> object \"u\"\n"},
    {u"SELECT y FROM t, u", "Select u.y From t, u",
     "u.y -> field \"y\" of \"u\" (source \"u\")\n"
     "t -> object \"t\"\n"
     "u -> object \"u\"\n"},
    // An ON condition sees its source and those before it, nothing after.
    {u"SELECT 1 FROM t JOIN u ON t.x = u.x JOIN v ON v.x = w.x",
     "Select 1 From t Inner Join u On t.x = u.x Inner Join v On v.x = w.x",
     "t -> object \"t\"\n"
     "t.x -> field \"x\" of \"t\" (source \"t\")\n"
     "u.x -> field \"x\" of \"u\" (source \"u\")\n"
     "u -> object \"u\"\n"
     "v.x -> field \"x\" of \"v\" (source \"v\")\n"
     "w.x -> not bound\n"
     "v -> object \"v\"\n"},
    {u"SELECT u.k FROM t JOIN u ON t.x = v.x JOIN v ON 1 = 1",
     "Select u.k From t Inner Join u On t.x = v.x Inner Join v On 1 = 1",
     "u.k -> field \"k\" of \"u\" (source \"u\")\n"
     "t -> object \"t\"\n"
     "t.x -> field \"x\" of \"t\" (source \"t\")\n"
     "v.x -> not bound\n"
     "u -> object \"u\"\n"
     "v -> object \"v\"\n"},
    // A derived table offers the columns of its select; its alias binds even
  // a column it does not offer.
    {u"SELECT q.x, q.z FROM (SELECT x FROM t) q", "Select q.x, q.z From (Select t.x From t) q",
     "q.x -> column \"x\" of \"q\"\n"
     "q.z -> source \"q\", no such column known\n"
     "t.x -> field \"x\" of \"t\" (source \"t\")\n"
     "t -> object \"t\"\n"},
    // A correlated sub-query sees the enclosing sources; leaving it takes its own out of sight.
    {u"SELECT u.y FROM t WHERE EXISTS (SELECT y FROM u WHERE u.k = t.k)",
     "Select u.y From t Where Exists(Select u.y From u Where u.k = t.k)",
     "u.y -> not bound\n"
     "t -> object \"t\"\n"
     "u.y -> field \"y\" of \"u\" (source \"u\")\n"
     "u -> object \"u\"\n"
     "u.k -> field \"k\" of \"u\" (source \"u\")\n"
     "t.k -> field \"k\" of \"t\" (source \"t\")\n"},
    // A name that refers to a source prints through it.
    {u"SELECT a.* FROM t a", "Select a.* From t a",
     "a -> source \"a\"\n"
     "a -> object \"t\"\n"},
    // A function source without an alias cannot be named: a name bound to
    // it prints its own parts.
    {u"SELECT w.* FROM w(1)", "Select w.* From w(1)",
     "w -> source \"w\"\n"
     "w -> not bound\n"},
    // Unknown objects and columns keep every part as written; the object's
  // own name still reaches a source behind its alias.
    {u"SELECT z.q, zz.r, s.zz.r FROM zz z", "Select z.q, z.r, s.zz.r From zz z",
     "z.q -> source \"z\", no such column known\n"
     "z.r -> source \"z\", no such column known\n"
     "s.zz.r -> not bound\n"
     "z -> not bound\n"},
    // With one name and a source of unknown columns the search stops there.
    {u"SELECT x FROM t, zz", "Select x From t, zz",
     "x -> not bound\n"
     "t -> object \"t\"\n"
     "zz -> not bound\n"},
};

class FixupBindingTest : public QueryFixupTest, public ::testing::WithParamInterface<BindingCase> {};

TEST_P(FixupBindingTest, BindsAndPrints) {
  const BindingCase& c = GetParam();
  TmvOwned<TSQLSelectStatement> statement = Bind(c.sql);
  EXPECT_EQ(UTF8Encode(Print(statement.get())), c.print);
  EXPECT_EQ(Bindings(statement.get()), c.bindings);
  // A second pass reads the names as written again and comes to the same.
  statement->PrepareAndFixupRecursive();
  EXPECT_EQ(Bindings(statement.get()), c.bindings);
}

INSTANTIATE_TEST_SUITE_P(Cases, FixupBindingTest, ::testing::ValuesIn(kBindingCases));

// Restoring the prefixes makes a bound tree stand alone again, as written
// through its aliases.
TEST_F(QueryFixupTest, RestoringPrefixesUnbindsAndKeepsTheText) {
  TmvOwned<TSQLSelectStatement> statement = Bind(u"SELECT t.x, a.k FROM t a, u WHERE u.y = a.x");
  const WideString bound = Print(statement.get());
  statement->RestoreColumnPrefixRecursive(true);
  EXPECT_EQ(Print(statement.get()), bound);
  EXPECT_EQ(Bindings(statement.get()),
            "a.x -> not bound\na.k -> not bound\na -> object \"t\"\nu -> object \"u\"\nu.y -> not bound\n"
            "a.x -> not bound\n");
}

TEST_F(QueryFixupTest, SelectsAndSourcesOfferTheirColumns) {
  Table({u"w"})->GetFields()->AddField(Name({u"n"}).get())->SetFieldType(ftInteger);
  TmvOwned<TSQLSelectStatement> statement =
      Bind(u"SELECT q.*, 1 AS one, 'a', q.n AS m, 2 AS 'no name', 3 '''' FROM (SELECT w.*, t.x FROM w, t) q");
  auto* outer = statement->FirstUnionSubQuery();
  auto names = [](const TmvMetadataFieldsList* fields) {
    std::string out;
    for (int i = 0; i < fields->Count(); ++i) {
      const TSQLQualifiedName* name = fields->Items(i)->Name();
      out += (i ? "," : "") + (name && name->GetCount() ? UTF8Encode(name->Token(0)->Token) : std::string()) + ":" +
             std::to_string(fields->Items(i)->FieldType());
    }
    return out;
  };
  // String aliases name a column by their value, whatever it holds.
  EXPECT_EQ(names(outer->ResultFields()), "n:3,x:0,one:3,:1,m:3,no name:3,':3");
  auto* derived = TmvCast<TSQLFromQuery>(outer->FromClause->GetItems(0));
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(names(derived->FieldsList()), "n:3,x:0");
}

// Recursive common table expressions: the first member alone, then the
// others, which see the item and its columns.
TEST_F(QueryFixupTest, RecursiveWithItemSeesItsOwnColumns) {
  TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(u"SELECT n FROM c");
  auto with = TastCreate<TSQLWithClause>(&context);
  auto item = TastCreate<TSQLWithClauseItem>(&context);
  item->Name.Set(Id(u"c"));
  item->Query.Set(context.ParseSubQuery(u"SELECT 1 AS n UNION ALL SELECT n + 1 FROM c WHERE n < 5"));
  TSQLWithClauseItem* cte = item.get();
  with->Add(std::move(item));
  statement->With.Set(std::move(with));
  statement->PrepareAndFixupRecursive();
  ASSERT_EQ(cte->FieldsList()->Count(), 1);
  EXPECT_EQ(cte->FieldsList()->Items(0)->NameStrNotQuoted(), u"n");
  EXPECT_EQ(Bindings(statement.get()),
            "c.n -> column \"n\" of \"c\"\n"  // the outer select
            "c -> with item \"c\"\n"
            "c.n -> column \"n\" of \"c\"\n"  // n + 1 of the recursive member
            "c -> with item \"c\"\n"
            "c.n -> column \"n\" of \"c\"\n");
}

// Where the dialect lets GROUP BY and ORDER BY name a select alias, such a
// name is the alias, not a column of the sources (t has a column x too).
TEST_F(QueryFixupTest, SelectAliasesInGroupByAndOrderBy) {
  auto print = [this](bool aliases) {
    provider.groupByAlias = provider.orderByAlias = aliases;
    TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(u"SELECT k AS x FROM t GROUP BY x ORDER BY x");
    TSQLSubQuerySelectExpression* select = statement->FirstUnionSubQuery();
    select->OrderBy.Set(statement->OrderBy.Release());
    statement->PrepareAndFixupRecursive();
    return UTF8Encode(Print(statement.get()));
  };
  EXPECT_EQ(print(true), "Select t.k As x From t Group By x Order By x");
  EXPECT_EQ(print(false), "Select t.k As x From t Group By t.x Order By t.x");
}

struct ParameterCase {
  const char16_t* condition;
  const char* name;    // what the parameter is named after
  const char* column;  // the column it is compared with
};

const ParameterCase kParameterCases[] = {
    {u"a.x = :p", "=", "x"},           {u":p < a.x", ">", "x"},        {u":p >= a.x", "<=", "x"},
    {u":p <> a.x", "<>", "x"},         {u"a.k BETWEEN :p AND 3", ">=", "k"},
    {u"a.k NOT BETWEEN 1 AND :p", ">", "k"},                           {u"a.x LIKE :p", "Like", "x"},
    {u"a.x NOT LIKE :p", "Not Like", "x"},                             {u"a.x IN (1, :p)", "In", "x"},
    {u"a.x NOT IN (:p)", "Not In", "x"}, {u"zz = :p", "=", "zz"},       {u"5 < :p", "", ""},
};

class FixupParameterTest : public QueryFixupTest, public ::testing::WithParamInterface<ParameterCase> {};

TEST_P(FixupParameterTest, ParameterLearnsItsColumn) {
  const ParameterCase& c = GetParam();
  TmvOwned<TSQLSelectStatement> statement = Bind(u"SELECT 1 FROM t a WHERE " + WideString(c.condition));
  TSQLExpressionParameter* parameter = nullptr;
  statement->TraverseASTTreeDepthFirst([&parameter](TastNodeBase* node) {
    if (auto* found = TmvCast<TSQLExpressionParameter>(node)) parameter = found;
  });
  ASSERT_NE(parameter, nullptr);
  EXPECT_EQ(UTF8Encode(parameter->Name), c.name);
  EXPECT_EQ(UTF8Encode(parameter->ColumnName), c.column);
  const bool bound = std::string(c.column) == "x" || std::string(c.column) == "k";
  EXPECT_EQ(UTF8Encode(parameter->ObjectName), bound ? "a" : "");
  EXPECT_EQ(parameter->MetadataObject != nullptr, bound);
  EXPECT_EQ(parameter->Field != nullptr, bound);
}

INSTANTIATE_TEST_SUITE_P(Cases, FixupParameterTest, ::testing::ValuesIn(kParameterCases));

// Parameters of one operand of an And or Or share a group; operands differ.
TEST_F(QueryFixupTest, OperandsOfLogicalCollectionsNumberTheirParameters) {
  TmvOwned<TSQLSelectStatement> statement =
      Bind(u"SELECT 1 FROM t WHERE (t.x = :a AND t.k BETWEEN :b AND :c) OR t.x = :d");
  std::vector<int32_t> groups;
  statement->TraverseASTTreeDepthFirst([&groups](TastNodeBase* node) {
    if (auto* parameter = TmvCast<TSQLExpressionParameter>(node)) groups.push_back(parameter->Index);
  });
  ASSERT_EQ(groups.size(), 4u);
  EXPECT_NE(groups[0], groups[1]);
  EXPECT_EQ(groups[1], groups[2]);
  EXPECT_NE(groups[2], groups[3]);
}

// Names qualified by schema and database reach an object written without
// them when those are the container's defaults.
TEST_F(QueryFixupTest, DefaultSchemaAndDatabasePrefixesAreTakenOff) {
  provider.databases = true;
  provider.schemas = true;
  SetDefaults({u"db"}, {u"dbo"});
  TmvOwned<TSQLSelectStatement> statement = Bind(u"SELECT dbo.t.x, db.dbo.t.k, other.t.x FROM t");
  EXPECT_EQ(UTF8Encode(Print(statement.get())), "Select t.x, t.k, other.t.x From t");
}

// A host that refuses unknown objects: binding leaves them, the check names the first.
TEST_F(QueryFixupTest, UnknownObjectsCanBeRefused) {
  TmvOwned<TSQLSelectStatement> known = Bind(u"SELECT 1 FROM t, (SELECT 2 FROM u) q");
  EXPECT_NO_THROW(CheckUnknownObjects(known.get()));
  TmvOwned<TSQLSelectStatement> unknown = Bind(u"SELECT 1 FROM t WHERE EXISTS (SELECT 1 FROM s.\"No where\")");
  try {
    CheckUnknownObjects(unknown.get());
    FAIL() << "no error";
  } catch (const EmvSQLError& e) {
    EXPECT_EQ(e.Message(), u"Unknown object name: \"s.\"No where\"\"");
  }
}

}  // namespace
