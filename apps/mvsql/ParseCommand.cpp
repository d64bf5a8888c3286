// mvsql parse: parses the input through the SQL context of a dialect.
//
// One text (the default): on success the parsed tree is printed back as SQL
// through the one-line builder; --tree prints the tree instead, one node a
// line, and --way the decisions of the way the first pass chose. A syntax
// error prints the parser's message on standard error and exits with 1.
//
// --metadata FILE.xml or --sqlite FILE: the statement is bound to that
// metadata before it is printed; with --tree each name shows what it refers
// to (a field of an object, a column of a derived table, or nothing);
// --strict refuses a FROM object that the metadata does not know.
//
// --batch FILE...: each file is a list of statements separated by ";;" lines.
// For each file one summary line: entries, statements that parse, those
// whose print parses again to the same print (the round trip) and those whose
// formatted text formats again to the same text. --failures lists the entries
// that fail any of these, --reasons N the N largest groups of syntax errors
// (see FailureGroups.h) with an example each. --dump writes one line an entry instead: its way,
// a hash of its tree dump and its print, or its error message, so that two
// builds of the parser can be compared statement by statement.
#include <ostream>
#include <string>

#include "Arguments.h"
#include "Command.h"
#include "DialectNames.h"
#include "FailureGroups.h"
#include "MetadataSource.h"
#include "frontend/ParseTreeDump.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/Scanner.h"
#include "metadata/QueryFixup.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/StatementList.h"
#include "support/TextFile.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mvsql {

namespace {

struct EntryName {
  const char* name;
  mv::TmvParserEntry entry;
};

constexpr EntryName kEntries[] = {
    {"select", mv::TmvParserEntry::peSelect},
    {"subquery", mv::TmvParserEntry::peSubQuery},
    {"object", mv::TmvParserEntry::peObjectName},
    {"expression", mv::TmvParserEntry::peExpression},
    {"selectitem", mv::TmvParserEntry::peSelectItem},
    {"logical", mv::TmvParserEntry::peLogicalExpression},
    {"fromsource", mv::TmvParserEntry::peFromSource},
    {"identifier", mv::TmvParserEntry::peIdentifier},
};

mv::TmvParserEntry FindEntry(const std::string& name) {
  std::string known;
  for (const EntryName& e : kEntries) {
    if (mv::AnsiSameText(name, e.name)) return e.entry;
    known += std::string(known.empty() ? "" : "|") + e.name;
  }
  throw UsageError{"unknown entry '" + name + "' (" + known + ")"};
}

// Raised for a fragment that does not parse: the line naming the token.
struct FragmentError {
  mv::WideString message;
};

// The first pass of an entry on its own, as the context runs it; the way's
// decisions, or a FragmentError naming the token no way could read.
std::string FindWayString(mv::TmvBaseSQLContext& context, mv::TmvParserEntry entry, const mv::WideString& text) {
  mv::TmvOwned<mv::TmvBaseScanner> scanner = context.SyntaxProvider()->CreateScanner();
  if (entry == mv::TmvParserEntry::peIdentifier) {
    scanner->SkipComments = false;
    scanner->SkipSpaces = false;
  }
  scanner->Init(text);
  mv::TmvOwned<mv::TmvBaseParser> parser = context.SyntaxProvider()->CreateParser(scanner.get(), &context);
  if (!parser->FindWay(entry)) {
    const mv::TmvToken& bad = scanner->GetToken(parser->GetBadToken());
    throw FragmentError{parser->TooComplex() ? mv::TooComplexMessage(bad) : mv::UnexpectedTokenMessage(bad)};
  }
  return parser->WayStr();
}

// Parses through the context's entry; statements raise EmvSQLError,
// fragments that come back null raise FragmentError.
mv::TmvOwned<mv::TastNode> ParseEntry(mv::TmvBaseSQLContext& context, mv::TmvParserEntry entry,
                                      const mv::WideString& text) {
  mv::TmvOwned<mv::TastNode> node;
  mv::TmvErrorList errors;
  switch (entry) {
    case mv::TmvParserEntry::peSelect: node = context.ParseSelect(text); break;
    case mv::TmvParserEntry::peSubQuery: node = context.ParseSubQuery(text); break;
    case mv::TmvParserEntry::peFromSource: node = context.ParseDatasource(text); break;
    case mv::TmvParserEntry::peObjectName: node = context.ParseObjectName(text); break;
    case mv::TmvParserEntry::peExpression: node = context.ParseExpression(text, &errors); break;
    case mv::TmvParserEntry::peSelectItem: node = context.ParseSelectItem(text); break;
    case mv::TmvParserEntry::peLogicalExpression:
      node = context.ParseLogicalExpression(text, true, false, &errors);
      break;
    case mv::TmvParserEntry::peIdentifier: node = context.ParseIdentifier(text); break;
  }
  if (!node) {
    if (!errors.empty()) throw FragmentError{errors.front()};
    FindWayString(context, entry, text);  // raises with the token to blame
    throw FragmentError{u"no tree"};
  }
  return node;
}

mv::WideString PrintFast(mv::TastNode* node) {
  mv::TSQLBuilderFast builder;
  return node->SimpleSQL(builder);
}

mv::WideString PrintFormatted(mv::TastNode* node) {
  mv::TSQLBuilderPiped builder;
  return node->SimpleSQL(builder);
}

int RunOne(mv::TmvBaseSQLContext& context, const Arguments& arguments, std::ostream& out, std::ostream& err) {
  const mv::TmvParserEntry entry = FindEntry(arguments.Value("entry", "select"));
  const mv::WideString text = mv::ReadTextFile(arguments.InputPath());
  const bool bind = arguments.Has("metadata") || arguments.Has("sqlite");
  try {
    std::unique_ptr<MetadataSource> metadata;
    if (bind) {
      metadata = std::make_unique<MetadataSource>(context);
      if (arguments.Has("metadata"))
        metadata->LoadXml(arguments.Value("metadata"));
      else
        metadata->LoadSQLite(arguments.Value("sqlite"));
    }
    mv::TmvOwned<mv::TastNode> node = ParseEntry(context, entry, text);
    if (bind) node->PrepareAndFixupRecursive();
    if (bind && arguments.Has("strict")) mv::CheckUnknownObjects(node.get());
    const bool way = arguments.Has("way");
    const bool tree = arguments.Has("tree");
    if (way) out << FindWayString(context, entry, text) << "\n";
    if (tree) out << mv::DumpParseTree(node.get(), bind ? mv::TastDumpAnnotation(mv::DescribeBinding) : nullptr);
    if (!way && !tree) out << mv::UTF8Encode(PrintFast(node.get())) << "\n";
    return kExitSuccess;
  } catch (const mv::EmvSQLError& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
  } catch (const FragmentError& e) {
    err << mv::UTF8Encode(e.message) << "\n";
  } catch (const mv::Exception& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
  }
  return kExitFailure;
}

// --- Batches ---

struct BatchCounts {
  explicit BatchCounts(const mv::TmvBaseSyntaxProvider& provider) : failures(provider) {}
  int entries = 0;
  int parsed = 0;
  int roundTrip = 0;
  int formatted = 0;
  FailureGroups failures;
};

// A message of several lines on one, for one-line failure reports: the
// lines trimmed and joined by a blank.
std::string OneLine(const mv::WideString& text) {
  std::string out, line;
  auto flush = [&] {
    const size_t first = line.find_first_not_of(' ');
    if (first != std::string::npos) out += (out.empty() ? "" : " ") + line.substr(first);
    line.clear();
  };
  for (char c : mv::UTF8Encode(text)) {
    if (c == '\r' || c == '\n') {
      flush();
    } else {
      line += c;
    }
  }
  flush();
  return out;
}

// 64-bit FNV-1a of a text: tree dumps are long, their hashes compare as well.
uint64_t TextHash(const std::string& text) {
  uint64_t hash = 14695981039346656037ull;
  for (unsigned char c : text) hash = (hash ^ c) * 1099511628211ull;
  return hash;
}

// The print of `text` parsed again; a text in brackets when it does not parse.
mv::WideString Reprint(mv::TmvBaseSQLContext& context, const mv::WideString& text,
                       mv::WideString (*print)(mv::TastNode*)) {
  try {
    mv::TmvOwned<mv::TSQLSelectStatement> again = context.ParseSelect(text);
    return print(again.get());
  } catch (const std::exception& e) {
    return u"(does not parse: " + mv::UTF8Decode(e.what()) + u")";
  }
}

void RunBatchFile(mv::TmvBaseSQLContext& context, const std::string& path, bool failures, bool dump,
                  BatchCounts& counts, std::ostream& out) {
  for (const mv::TmvStatementEntry& statement : mv::ReadStatementList(path)) {
    ++counts.entries;
    const std::string where = "  #" + std::to_string(statement.Index) + " line " + std::to_string(statement.Line);
    mv::WideString first, laidOut;
    try {
      mv::TmvOwned<mv::TSQLSelectStatement> tree = context.ParseSelect(statement.Text);
      first = PrintFast(tree.get());
      laidOut = PrintFormatted(tree.get());
      if (dump) {
        const std::string way = FindWayString(context, mv::TmvParserEntry::peSelect, statement.Text);
        out << "#" << statement.Index << "\tok\t" << way << "\t" << std::hex << TextHash(mv::DumpParseTree(tree.get()))
            << std::dec << "\t" << OneLine(first) << "\n";
      }
    } catch (const mv::EmvSQLError& e) {
      counts.failures.Add(statement, e);
      if (dump) out << "#" << statement.Index << "\terror\t" << OneLine(e.Message()) << "\n";
      if (failures) out << where << ": " << OneLine(e.Message()) << "\n";
      continue;
    } catch (const std::exception& e) {
      counts.failures.AddOther(statement, e.what());
      if (dump) out << "#" << statement.Index << "\terror\t" << e.what() << "\n";
      if (failures) out << where << ": " << e.what() << "\n";
      continue;
    }
    ++counts.parsed;
    const mv::WideString second = Reprint(context, first, PrintFast);
    if (second == first) {
      ++counts.roundTrip;
    } else if (failures) {
      out << where << ": round trip differs\n    " << mv::UTF8Encode(first) << "\n    " << mv::UTF8Encode(second)
          << "\n";
    }
    if (Reprint(context, laidOut, PrintFormatted) == laidOut) {
      ++counts.formatted;
    } else if (failures) {
      out << where << ": the formatted text formats differently\n";
    }
  }
}

int RunBatch(mv::TmvBaseSQLContext& context, const Arguments& arguments, std::ostream& out) {
  if (arguments.Positional().empty()) throw UsageError{"--batch needs at least one file"};
  const bool failures = arguments.Has("failures");
  const bool dump = arguments.Has("dump");
  int reasons = 0;
  if (arguments.Has("reasons")) {
    try {
      reasons = std::stoi(arguments.Value("reasons"));
    } catch (const std::exception&) {
      throw UsageError{"--reasons takes a number"};
    }
  }
  for (const std::string& path : arguments.Positional()) {
    BatchCounts counts(*context.SyntaxProvider());
    RunBatchFile(context, path, failures, dump, counts, out);
    out << path << "\tentries=" << counts.entries << "\tparsed=" << counts.parsed
        << "\troundtrip=" << counts.roundTrip << "\tformat=" << counts.formatted << "\n";
    counts.failures.Print(out, reasons);
  }
  return kExitSuccess;
}

}  // namespace

int RunParse(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"dialect", "entry", "reasons", "metadata", "sqlite"},
                      {"way", "tree", "batch", "failures", "dump", "strict"});
  if (arguments.Has("metadata") && arguments.Has("sqlite"))
    throw UsageError{"give at most one of --metadata FILE.xml and --sqlite FILE"};
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = CreateDialect(arguments.Value("dialect", "sql92"));
  mv::TmvBaseSQLContext context;
  context.SetSyntaxProvider(provider.get());
  const int code = arguments.Has("batch") ? RunBatch(context, arguments, out) : RunOne(context, arguments, out, err);
  context.SetSyntaxProvider(nullptr);
  return code;
}

}  // namespace mvsql
