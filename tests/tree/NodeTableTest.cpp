// The node table generator refuses a bad table with the file and line of the
// fault, and writes what the hand-written classes expand.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "RunTool.h"

using mvtest::RunTool;
using mvtest::TempFile;

namespace {

// Runs the generator on a table; outputs go next to it.
mvtest::ToolResult Generate(const TempFile& table) {
  return RunTool(MV_NODEGEN_PATH, {table.path(), table.path() + ".gen.h", table.path() + ".gen.cpp", "T"});
}

}  // namespace

TEST(NodeTable, FaultsNameTheFileAndLine) {
  struct Case {
    const char* table;
    const char* message;
  } cases[] = {
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode shiny\n", ":3: error: unknown class mark 'shiny'"},
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode\n    F child TastNode sorted\n",
       ":4: error: unknown field mark 'sorted'"},
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode\n    F owned TastNode\n", ":4: error: unknown field kind 'owned'"},
      {"include \"x.h\"\nnode A : TastNode\n", ":2: error: unknown parent 'TastNode'"},
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode\n    F child Missing\n", ":4: error: unknown node class 'Missing'"},
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode\n    F weak Missing\n", ":4: error: unknown type 'Missing'"},
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode\n    V value int\n    L list TastNode\n",
       ":5: error: a list must be the first field of its class"},
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode\nnode A : TastNode\n", ":4: error: class 'A' is defined twice"},
      {"uses TastNode\nnode A : TastNode\n", ":2: error: a node before any include line"},
      {"uses TastNode\ninclude \"x.h\"\n    F child TastNode\n", ":3: error: a field outside a node"},
      {"uses TastNode\ninclude \"x.h\"\nnode A : TastNode\n    L list TastNode\nnode B : A\n    M list TastNode\n",
       ":5: error: class 'B' would hold more than one list"},
  };
  for (const Case& c : cases) {
    TempFile table(c.table, ".def");
    mvtest::ToolResult result = Generate(table);
    EXPECT_EQ(result.exitCode, 1) << c.table;
    EXPECT_NE(result.err.find(table.path() + c.message), std::string::npos) << result.err;
  }
}

TEST(NodeTable, GeneratesFieldsAssignAndRegistration) {
  TempFile table(
      "uses TastNode\nextern Meta\ninclude \"x.h\"\n"
      "node A : TastNode abstract\n"
      "    Kid   child B        # the child\n"
      "    Count value int = 3\n"
      "    Ref   weak Meta  noassign\n"
      "node B : A hand-assign\n",
      ".def");
  mvtest::ToolResult result = Generate(table);
  ASSERT_EQ(result.exitCode, 0) << result.err;
  const std::string header = mvtest::ReadFileBytes(table.path() + ".gen.h");
  const std::string source = mvtest::ReadFileBytes(table.path() + ".gen.cpp");
  // Fields with their comments, defaults and kinds; forward declarations.
  EXPECT_NE(header.find("::mv::TastChild<B> Kid; /* the child */"), std::string::npos);
  EXPECT_NE(header.find("int Count = 3;"), std::string::npos);
  EXPECT_NE(header.find("Meta* Ref = nullptr;"), std::string::npos);
  EXPECT_NE(header.find("class Meta;"), std::string::npos);
  // An abstract class has a protected constructor and no factory.
  EXPECT_NE(header.find(" protected: \\\n  explicit A("), std::string::npos);
  EXPECT_NE(source.find("&TastNode::StaticClass(), nullptr);"), std::string::npos);
  EXPECT_NE(source.find("return new B(context);"), std::string::npos);
  // Assign copies plain fields and resets the noassign one; B's is by hand.
  EXPECT_NE(source.find("  Count = source.Count;\n"), std::string::npos);
  EXPECT_NE(source.find("  Ref = nullptr;\n"), std::string::npos);
  EXPECT_EQ(source.find("void B::Assign"), std::string::npos);
  EXPECT_NE(source.find("registry.Add(A::StaticClass());\n  registry.Add(B::StaticClass());"), std::string::npos);
  std::remove((table.path() + ".gen.h").c_str());
  std::remove((table.path() + ".gen.cpp").c_str());
}
