// mvgrammargen run on small files: what it refuses (with file and line),
// how includes, overrides and deletions combine, and that its output is the
// same on every run.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "RunTool.h"

namespace {

namespace fs = std::filesystem;

const char* kTokens = R"(scanner TinyScanner;
set letter = [a-z];
set digit = [0-9];
token 2 blank = [ \t]+;
token number = digit+;
token name keywords = letter (letter | digit)*;
symbol comma ",";
symbol dot ".";
keywords select from;
)";

class Generator : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/mvgrammargen-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    Write("Tiny.tokens", kTokens);
  }
  void TearDown() override { fs::remove_all(dir_); }

  void Write(const std::string& name, const std::string& text) { std::ofstream(dir_ / name) << text; }
  std::string Path(const std::string& name) const { return (dir_ / name).string(); }
  std::string Read(const std::string& name) const { return mvtest::ReadFileBytes(Path(name)); }

  mvtest::ToolResult Run(const std::string& mode, const std::string& input) {
    return mvtest::RunTool(MV_GRAMMARGEN_PATH, {mode, Path(input), "--header", Path("out.h"), "--source",
                                                Path("out.cpp"), "--depfile", Path("out.d"), "--root",
                                                dir_.string()});
  }

  // Generates a grammar whose rules follow a standard head; the error text.
  std::string Refusal(const std::string& rules) {
    Write("G.grammar", "parser TinyParser;\nscanner \"Tiny.tokens\";\n" + rules);
    mvtest::ToolResult r = Run("parser", "G.grammar");
    EXPECT_EQ(r.exitCode, 1) << r.err;
    return r.err;
  }

  fs::path dir_;
};

TEST_F(Generator, RefusesAnUndefinedSymbolWithItsLine) {
  std::string err = Refusal("list ::= name { \",\" item } ;\n");
  EXPECT_NE(err.find("G.grammar:3: error: undefined symbol 'item'"), std::string::npos) << err;
  err = Refusal("list ::= name\n  WHERE ;\n");
  EXPECT_NE(err.find("G.grammar:4: error: undefined symbol 'WHERE'"), std::string::npos) << err;
  err = Refusal("list ::= name \"+\" ;\n");
  EXPECT_NE(err.find("G.grammar:3: error: no token \"+\""), std::string::npos) << err;
}

TEST_F(Generator, RefusesLeftRecursionWithItsLine) {
  std::string err = Refusal("a ::= [ \",\" ] b ;\n\nb ::= ( name | a \".\" name ) ;\n");
  EXPECT_NE(err.find("G.grammar:3: error: left recursion: a -> b -> a"), std::string::npos) << err;
  err = Refusal("expr ::= expr \",\" name | name ;\n");
  EXPECT_NE(err.find("G.grammar:3: error: left recursion: expr -> expr"), std::string::npos) << err;
}

TEST_F(Generator, RefusesARepetitionThatCanMatchNothing) {
  std::string err = Refusal("list ::= name\n  { [ \",\" ] } ;\n");
  EXPECT_NE(err.find("G.grammar:4: error: the body of this repetition can match nothing"), std::string::npos) << err;
  err = Refusal("list ::= { opt } name ;\nopt ::= [ name ] ;\n");
  EXPECT_NE(err.find("G.grammar:3: error: the body of this repetition can match nothing"), std::string::npos) << err;
}

TEST_F(Generator, RefusesOtherMistakes) {
  EXPECT_NE(Refusal("a ::= name ;\na ::= number ;\n").find("G.grammar:4: error: the rule 'a' is already defined at"),
            std::string::npos);
  EXPECT_NE(Refusal("a ::= \",\" a \".\" ;\n").find("G.grammar:3: error: the rule 'a' can never be completed"),
            std::string::npos);
  EXPECT_NE(Refusal("a ::= name @notNext(name) ;\n").find("G.grammar:3: error: a guard stands at the start"),
            std::string::npos);
  EXPECT_NE(Refusal("a ::= ( @version(11) name | number ) ;\n").find("@version takes a comparison"),
            std::string::npos);
  EXPECT_NE(Refusal("entry ParseSelect = a;\na(int x) ::= name ;\n").find("takes one parameter 'Node*& name'"),
            std::string::npos);
  EXPECT_NE(Refusal("a ::= name ;\ndelete b;\n").find("no rule 'b' to delete"), std::string::npos);
  EXPECT_NE(Refusal("a ::= name %{ x = 1;\n").find("G.grammar:3: error: code block is not closed"),
            std::string::npos);
  EXPECT_NE(Refusal("a ::= ( @starts(b) name | number ) ;\n").find("G.grammar:3: error: @starts names no rule 'b'"),
            std::string::npos);
  EXPECT_NE(Refusal("a ::= ( @starts(b) name | number ) ;\nb ::= [ name ] ;\n")
                .find("@starts needs a rule that cannot match nothing: 'b' can"),
            std::string::npos);
  EXPECT_NE(Refusal("a ::= ( @starts(a before \",\") name | number ) ;\n").find("@starts takes a rule and"),
            std::string::npos);
}

TEST_F(Generator, RefusesBadTokenDescriptions) {
  Write("Bad.tokens", "scanner S;\ntoken 3 a = \"x\";\nsymbol 3 b \"y\";\n");
  mvtest::ToolResult r = Run("scanner", "Bad.tokens");
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_NE(r.err.find("Bad.tokens:3: error: kind 3 is already taken by 'a'"), std::string::npos) << r.err;
  Write("Bad.tokens", "scanner S;\nset l = [a-z];\ntoken name = l*;\n");
  r = Run("scanner", "Bad.tokens");
  EXPECT_NE(r.err.find("Bad.tokens:3: error: the pattern of 'name' matches the empty text"), std::string::npos)
      << r.err;
  Write("Bad.tokens", "scanner S;\nset l = [a-z];\ntoken name = l+;\nkeywords select;\n");
  r = Run("scanner", "Bad.tokens");
  EXPECT_NE(r.err.find("Bad.tokens:4: error: the keyword 'select' does not scan as a token that goes through"),
            std::string::npos)
      << r.err;
  Write("Bad.tokens", "scanner S;\ntoken a = \"x\";\nnosym 9;\n");
  r = Run("scanner", "Bad.tokens");
  EXPECT_NE(r.err.find("Bad.tokens:3: error: noSym comes out as 4, not 9"), std::string::npos) << r.err;
}

TEST_F(Generator, IncludesOverridesAddsAndDeletes) {
  Write("Base.grammar",
        "parser BaseParser;\nscanner \"Tiny.tokens\";\n"
        "start ::= item { \",\" item } ;\nitem ::= name ;\nextra ::= number ;\n");
  Write("Derived.grammar",
        "include \"Base.grammar\";\nparser DerivedParser;\n"
        "override item ::= ( name | number ) ;\ndelete extra;\nmore ::= name \".\" name ;\n");
  mvtest::ToolResult r = Run("parser", "Derived.grammar");
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const std::string header = Read("out.h");
  EXPECT_NE(header.find("class DerivedParser : public TmvBaseParser"), std::string::npos);
  EXPECT_NE(header.find("void itemWayCalc("), std::string::npos);
  EXPECT_NE(header.find("void moreWayCalc("), std::string::npos);
  EXPECT_EQ(header.find("extra"), std::string::npos);
  const std::string source = Read("out.cpp");
  EXPECT_NE(source.find("// item ::= ( name | number )"), std::string::npos) << "the override replaced the rule";
  // The overriding rule keeps the place of the one it replaces.
  EXPECT_LT(source.find("::itemWayCalc("), source.find("::moreWayCalc("));
  EXPECT_LT(source.find("::startWayCalc("), source.find("::itemWayCalc("));
  // Every file read is a dependency of the output.
  const std::string depfile = Read("out.d");
  for (const char* name : {"Derived.grammar", "Base.grammar", "Tiny.tokens"}) {
    EXPECT_NE(depfile.find(Path(name)), std::string::npos) << name;
  }
  EXPECT_EQ(header.rfind("// Generated by mvgrammargen from Derived.grammar.", 0), 0u) << "the banner names the source";
}

TEST_F(Generator, OverridingAMissingRuleOrRedefiningOneIsRefused) {
  Write("Base.grammar", "parser BaseParser;\nscanner \"Tiny.tokens\";\nitem ::= name ;\n");
  Write("Derived.grammar", "include \"Base.grammar\";\noverride other ::= name ;\n");
  mvtest::ToolResult r = Run("parser", "Derived.grammar");
  EXPECT_NE(r.err.find("Derived.grammar:2: error: 'other' overrides no rule"), std::string::npos) << r.err;
  Write("Derived.grammar", "include \"Base.grammar\";\nitem ::= number ;\n");
  r = Run("parser", "Derived.grammar");
  EXPECT_NE(r.err.find("Derived.grammar:2: error: the rule 'item' is already defined at"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("write 'override'"), std::string::npos);
}

TEST_F(Generator, HelpersAreNumberedInTheOrderOfTheText) {
  Write("G.grammar",
        "parser TinyParser;\nscanner \"Tiny.tokens\";\n"
        "a ::= [ name ] { \",\" name } ( name | number ) ;\n"
        "b ::= [ ( SELECT | FROM ) ] ( name | [ number ] dotted ) ;\n"
        "dotted ::= \".\" name ;\n");
  ASSERT_EQ(Run("parser", "G.grammar").exitCode, 0);
  const std::string header = Read("out.h");
  for (const char* helper : {"Opt1(", "Opt2(", "Opt3(", "Iter1(", "Alt1(", "Alt2(", "Alt3("}) {
    EXPECT_NE(header.find(helper), std::string::npos) << helper;
  }
  EXPECT_EQ(header.find("Opt4("), std::string::npos);
  EXPECT_EQ(header.find("Alt4("), std::string::npos);
  const std::string source = Read("out.cpp");
  // In b, the option comes before the choice inside it.
  EXPECT_NE(source.find("// [ ( \"select\" | \"from\" ) ]"), std::string::npos);
  EXPECT_NE(source.find("void TinyParser::Opt2(TmvWayPointsList& list) {\n  if (list.IsEmpty()) return;"),
            std::string::npos);
  EXPECT_NE(source.find("void TinyParser::Alt2("), std::string::npos);
}

TEST_F(Generator, OutputIsTheSameOnEveryRun) {
  const std::string sql92 = std::string(MV_SOURCE_DIR) + "/src/dialects/sql92/SQL92.tokens";
  auto once = [&](const std::string& folder) {
    fs::create_directory(dir_ / folder);
    mvtest::ToolResult r = mvtest::RunTool(
        MV_GRAMMARGEN_PATH, {"scanner", sql92, "--header", Path(folder + "/SQL92Scan.h"), "--source",
                             Path(folder + "/SQL92Scan.cpp"), "--root", MV_SOURCE_DIR});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return Read(folder + "/SQL92Scan.h") + Read(folder + "/SQL92Scan.cpp");
  };
  const std::string first = once("one");
  EXPECT_EQ(first, once("two"));
  EXPECT_EQ(first.rfind("// Generated by mvgrammargen from src/dialects/sql92/SQL92.tokens.\n// Do not edit", 0), 0u);
}

TEST_F(Generator, UnchangedOutputIsNotRewritten) {
  Write("G.grammar", "parser TinyParser;\nscanner \"Tiny.tokens\";\na ::= name ;\n");
  ASSERT_EQ(Run("parser", "G.grammar").exitCode, 0);
  const auto stamp = fs::last_write_time(Path("out.cpp"));
  fs::last_write_time(Path("out.cpp"), stamp - std::chrono::hours(1));
  Write("G.grammar", "parser TinyParser;\nscanner \"Tiny.tokens\";\n// a comment only\na ::= name ;\n");
  ASSERT_EQ(Run("parser", "G.grammar").exitCode, 0);
  EXPECT_EQ(fs::last_write_time(Path("out.cpp")), stamp - std::chrono::hours(1));
}

TEST_F(Generator, UsageErrors) {
  EXPECT_EQ(mvtest::RunTool(MV_GRAMMARGEN_PATH, {}).exitCode, 2);
  EXPECT_EQ(mvtest::RunTool(MV_GRAMMARGEN_PATH, {"parser", Path("x")}).exitCode, 2);
  mvtest::ToolResult missing = Run("parser", "Missing.grammar");
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.err.find("cannot read"), std::string::npos);
}

}  // namespace
