// mvsql transform: the input goes into a query builder, and a query
// transformer over it prints the statement a result grid would run: the
// query with the filters, sorts, aggregates and limits of the options. The
// builder's own query is left as it was.
//
//   --filter "COLUMN OP VALUE"   OP: = <> > >= < <= like "not like" in "not in"
//                                "is null" "is not null" between (VALUE: "A and B")
//   --sort COLUMN [asc|desc]     --aggregate FUNC(COLUMN)   --offset N   --limit N
//
// COLUMN is an output column's name (its alias, else its column name),
// matched without regard to case; a name that no column or two columns have,
// an unknown operator or function is an error with exit code 1.
#include <ostream>
#include <string>
#include <vector>

#include "Arguments.h"
#include "BuilderSession.h"
#include "Command.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"
#include "transform/QueryTransformer.h"
#include "tree/SelectStatement.h"

namespace mvsql {

namespace {

struct TransformError {
  std::string message;
};

std::string Trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  const size_t last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

mv::TmvOutputColumn* Column(mv::TmvQueryTransformer& transformer, const std::string& name) {
  mv::TmvOutputColumn* column = transformer.Columns().FindColumnByOriginalName(mv::UTF8Decode(Trim(name)));
  if (!column) {
    std::string names;
    for (int i = 0; i < transformer.Columns().Count(); ++i)
      names += (i ? ", " : "") + mv::UTF8Encode(transformer.Columns().Items(i)->OriginalName());
    throw TransformError{"no single output column named '" + Trim(name) + "' (the columns: " + names + ")"};
  }
  return column;
}

// The operators, longest first so that "not like" is not read as a column "x not".
struct Operator {
  const char* text;
  bool takesValue;
};
constexpr Operator kOperators[] = {
    {"is not null", false}, {"is null", false}, {"not between", true}, {"between", true}, {"not like", true},
    {"not in", true},       {"like", true},     {"in", true},          {"<>", true},      {">=", true},
    {"<=", true},           {"=", true},        {">", true},           {"<", true},
};

// Where `op` stands as a word (or a symbol) in `lower`; npos when it does not.
size_t FindOperator(const std::string& lower, const std::string& op) {
  const bool word = std::isalpha(static_cast<unsigned char>(op[0])) != 0;
  for (size_t at = lower.find(op); at != std::string::npos; at = lower.find(op, at + 1)) {
    if (!word) return at;
    const bool before = at == 0 || lower[at - 1] == ' ';
    const size_t end = at + op.size();
    const bool after = end == lower.size() || lower[end] == ' ';
    if (before && after) return at;
  }
  return std::string::npos;
}

mv::TmvOwned<mv::TmvFilterColumnCondition> Filter(mv::TmvQueryTransformer& transformer, const std::string& text) {
  const std::string lower = Lower(text);
  for (const Operator& op : kOperators) {
    const size_t at = FindOperator(lower, op.text);
    if (at == std::string::npos || at == 0) continue;
    mv::TmvOutputColumn* column = Column(transformer, text.substr(0, at));
    const std::string value = Trim(text.substr(at + std::string(op.text).size()));
    if (op.takesValue == value.empty())
      throw TransformError{"--filter \"" + text + "\": " + (op.takesValue ? "a value must follow '" : "nothing may follow '") +
                           op.text + "'"};
    const mv::WideString v = mv::UTF8Decode(value);
    const std::string name = op.text;
    if (name == "between" || name == "not between") {
      const size_t sep = FindOperator(Lower(value), "and");
      if (sep == std::string::npos) throw TransformError{"--filter \"" + text + "\": between needs 'A and B'"};
      const mv::WideString a = mv::UTF8Decode(Trim(value.substr(0, sep)));
      const mv::WideString b = mv::UTF8Decode(Trim(value.substr(sep + 3)));
      return name == "between" ? column->Between(a, b) : column->Not_Between(a, b);
    }
    if (name == "is null") return column->IsNull();
    if (name == "is not null") return column->IsNotNull();
    if (name == "like") return column->Like(v);
    if (name == "not like") return column->Not_Like(v);
    if (name == "in") return column->In_(v);
    if (name == "not in") return column->Not_In(v);
    if (name == "<>") return column->Not_Equal(v);
    if (name == ">=") return column->GreaterEqual(v);
    if (name == "<=") return column->LessEqual(v);
    if (name == "=") return column->Equal(v);
    if (name == ">") return column->Greater(v);
    return column->Less(v);
  }
  throw TransformError{"--filter \"" + text +
                       "\": no operator (one of = <> > >= < <= like, not like, in, not in, is null, is not null, "
                       "between, not between after a column name)"};
}

void Sort(mv::TmvQueryTransformer& transformer, const std::string& text) {
  std::string name = Trim(text);
  bool ascending = true;
  const std::string lower = Lower(name);
  for (const char* suffix : {" asc", " desc"}) {
    const std::string s = suffix;
    if (lower.size() > s.size() && lower.compare(lower.size() - s.size(), s.size(), s) == 0) {
      ascending = s == " asc";
      name = Trim(name.substr(0, name.size() - s.size()));
    }
  }
  transformer.OrderBy(Column(transformer, name), ascending);
}

void Aggregate(mv::TmvQueryTransformer& transformer, const std::string& text) {
  const std::string trimmed = Trim(text);
  const size_t open = trimmed.find('(');
  if (open == std::string::npos || trimmed.back() != ')')
    throw TransformError{"--aggregate \"" + text + "\": write FUNC(COLUMN), FUNC one of avg count max min sum"};
  const std::string function = Lower(Trim(trimmed.substr(0, open)));
  const std::string argument = Trim(trimmed.substr(open + 1, trimmed.size() - open - 2));
  if (function == "count" && argument == "*") {
    transformer.SelectRecordsCount();
    return;
  }
  mv::TmvOutputColumn* column = Column(transformer, argument);
  if (function == "avg") return void(transformer.Select(column->Avg()));
  if (function == "count") return void(transformer.Select(column->Count()));
  if (function == "max") return void(transformer.Select(column->Max()));
  if (function == "min") return void(transformer.Select(column->Min()));
  if (function == "sum") return void(transformer.Select(column->Sum()));
  throw TransformError{"--aggregate \"" + text + "\": unknown function '" + function +
                       "' (one of avg count max min sum)"};
}

std::string Number(const Arguments& arguments, const char* name) {
  const std::string value = Trim(arguments.Value(name));
  if (value.empty() || value.find_first_not_of("0123456789") != std::string::npos)
    throw UsageError{std::string("--") + name + " takes a whole number, not '" + value + "'"};
  return value;
}

}  // namespace

int RunTransform(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"dialect", "metadata", "sqlite", "filter", "sort", "aggregate", "offset", "limit"},
                      {"one-line", "and", "distinct", "wrap", "expand", "rename-duplicates"});
  const std::string offset = arguments.Has("offset") ? Number(arguments, "offset") : std::string();
  const std::string limit = arguments.Has("limit") ? Number(arguments, "limit") : std::string();
  const mv::WideString text = mv::ReadTextFile(arguments.InputPath());
  BuilderSession session(arguments);
  if (!session.LoadSql(text, err)) return kExitFailure;
  mv::TmvOwned<mv::TmvQueryTransformer> transformer = mv::TmvCreate<mv::TmvQueryTransformer>();
  transformer->SetQueryBuilder(&session.Builder());
  try {
    transformer->BeginUpdate();
    if (arguments.Has("and")) transformer->Filters().SetOperator(mv::jtAnd);
    if (arguments.Has("distinct")) transformer->SetSelectMode(mv::smDistinct);
    transformer->SetAlwaysWrapInSubQuery(arguments.Has("wrap"));
    transformer->SetAlwaysExpandColumnsInQuery(arguments.Has("expand"));
    transformer->SetRenameDuplicatedColumns(arguments.Has("rename-duplicates"));
    for (const std::string& filter : arguments.Values("filter")) transformer->Where(Filter(*transformer, filter));
    for (const std::string& sort : arguments.Values("sort")) Sort(*transformer, sort);
    for (const std::string& aggregate : arguments.Values("aggregate")) Aggregate(*transformer, aggregate);
    transformer->Skip(mv::UTF8Decode(offset)).Take(mv::UTF8Decode(limit));
    transformer->EndUpdate();
    // A dialect without counts writes no limit at all; one without offsets
    // (Access, Sybase) still writes the count.
    if (!limit.empty() && !transformer->GetIsSupportLimitCount())
      err << "note: the dialect writes no limit; the limits are left out\n";
    else if (!offset.empty() && !transformer->GetIsSupportLimitOffset())
      err << "note: the dialect writes no offset; the offset is left out\n";
    mv::WideString sql = transformer->GetSql();
    if (!arguments.Has("one-line") && !sql.empty() && transformer->GetResultAst()) {
      mv::TSQLBuilderPiped piped;
      sql = transformer->GetResultAst()->SimpleSQL(piped);
    }
    out << mv::UTF8Encode(sql) << "\r\n";
  } catch (const TransformError& e) {
    err << e.message << "\n";
    return kExitFailure;
  } catch (const mv::Exception& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
    return kExitFailure;
  }
  return kExitSuccess;
}

}  // namespace mvsql
