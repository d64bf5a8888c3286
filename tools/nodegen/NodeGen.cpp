// mvnodegen: generates the repetitive part of the syntax tree node classes
// from a node table, so that each class's field list is written once.
//
//   mvnodegen <table> <out.gen.h> <out.gen.cpp> <name>
//
// The table, one statement a line; '#' starts a comment:
//
//   uses <Class> ...              classes defined elsewhere that this table derives from
//                                 or names in child and list fields
//   extern <Type> ...             types named by weak fields, forward-declared here
//   include "<header>"            the hand-written header of the classes that follow
//   node <Class> : <Parent> [abstract] [hand-assign] [hand-ctor] [parts]
//     <Field> child <Class>                  an owned child node (the class may stand further down)
//     <Field> list <Class>                   an owned list of nodes of that class
//     <Field> weak <Type>                    a reference that is not owned
//     <Field> value <Type> [= <Default>]     a plain value
//     ... followed by field marks, then an optional '#' comment.
//
// Class marks: abstract (no factory; the constructor is protected),
// hand-assign (Assign is written by hand and calls the generated
// AssignOwnFields), hand-ctor (the constructor from a context is written by
// hand), parts (the class prints in parts: BuildSQLPart is written by hand,
// and the generated BuildSQLDirect, final, prints them).
// Field marks: noassign (Assign does not copy the field, it resets it).
// A list must be the first field of its class: list items come before the
// fields that the class and its descendants declare.
//
// Fields are listed base class first, in declaration (and printing) order.
// Generated, for each class: a macro MV_AST_NODE_<Class>() that the
// hand-written class body expands (class facility, constructor, fields),
// the class object with its factory, the field list, AssignOwnFields and
// Assign; and RegisterNodeClasses_<name>(), which lists every class.
// Output is deterministic: classes and fields keep the table's order.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Field {
  std::string name;
  std::string kind;  // child, list, weak, value
  std::string type;
  std::string defaultValue;
  std::string comment;
  bool noAssign = false;
  int line = 0;
};

struct NodeClass {
  std::string name;
  std::string parent;
  std::string header;
  bool isAbstract = false;
  bool handAssign = false;
  bool handCtor = false;
  bool parts = false;
  std::vector<Field> fields;
  int line = 0;
};

struct Table {
  std::string path;
  std::string name;  // the file name alone, for the banner of generated files
  std::vector<std::string> uses;
  std::vector<std::string> externs;
  std::vector<std::string> headers;
  std::vector<NodeClass> classes;
};

[[noreturn]] void Fail(const std::string& path, int line, const std::string& message) {
  std::cerr << path << ":" << line << ": error: " << message << "\n";
  std::exit(1);
}

bool IsIdentifier(const std::string& s) {
  if (s.empty() || !(std::isalpha(static_cast<unsigned char>(s[0])) || s[0] == '_')) return false;
  for (char c : s)
    if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_')) return false;
  return true;
}

// Splits a line into words; a double-quoted string is one word.
std::vector<std::string> SplitWords(const std::string& text) {
  std::vector<std::string> words;
  size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    if (i >= text.size()) break;
    size_t start = i;
    if (text[i] == '"') {
      ++i;
      while (i < text.size() && text[i] != '"') ++i;
      ++i;
    } else {
      while (i < text.size() && !std::isspace(static_cast<unsigned char>(text[i]))) {
        if (text[i] == '"') {  // a prefixed literal such as u"Union"
          ++i;
          while (i < text.size() && text[i] != '"') ++i;
        }
        ++i;
      }
    }
    words.push_back(text.substr(start, i - start));
  }
  return words;
}

// Removes a '#' comment that stands outside quotes; returns the comment text.
std::string CutComment(std::string& line) {
  bool quoted = false;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') quoted = !quoted;
    if (line[i] == '#' && !quoted) {
      std::string comment = line.substr(i + 1);
      line.erase(i);
      size_t b = comment.find_first_not_of(" \t");
      return b == std::string::npos ? std::string() : comment.substr(b);
    }
  }
  return {};
}

Table ReadTable(const std::string& path) {
  std::ifstream in(path);
  if (!in) Fail(path, 0, "cannot open the node table");
  Table table;
  table.path = path;
  table.name = path.substr(path.find_last_of("/\\") == std::string::npos ? 0 : path.find_last_of("/\\") + 1);
  std::string currentHeader;
  std::set<std::string> known;  // classes usable as parents and field types
  std::set<std::string> externs;
  std::string raw;
  int lineNo = 0;
  NodeClass* current = nullptr;
  while (std::getline(in, raw)) {
    ++lineNo;
    std::string line = raw;
    std::string comment = CutComment(line);
    std::vector<std::string> w = SplitWords(line);
    if (w.empty()) continue;
    const bool indented = !raw.empty() && (raw[0] == ' ' || raw[0] == '\t');
    if (!indented) {
      current = nullptr;
      if (w[0] == "uses" || w[0] == "extern") {
        if (w.size() < 2) Fail(path, lineNo, "'" + w[0] + "' needs at least one name");
        for (size_t i = 1; i < w.size(); ++i) {
          if (!IsIdentifier(w[i])) Fail(path, lineNo, "not a class name: '" + w[i] + "'");
          if (w[0] == "uses") {
            table.uses.push_back(w[i]);
            known.insert(w[i]);
          } else {
            table.externs.push_back(w[i]);
            externs.insert(w[i]);
          }
        }
      } else if (w[0] == "include") {
        if (w.size() != 2 || w[1].size() < 2 || w[1].front() != '"' || w[1].back() != '"')
          Fail(path, lineNo, "expected: include \"<header>\"");
        currentHeader = w[1].substr(1, w[1].size() - 2);
        table.headers.push_back(currentHeader);
      } else if (w[0] == "node") {
        if (w.size() < 4 || w[2] != ":") Fail(path, lineNo, "expected: node <Class> : <Parent> [marks]");
        if (currentHeader.empty()) Fail(path, lineNo, "a node before any include line");
        NodeClass c;
        c.name = w[1];
        c.parent = w[3];
        c.header = currentHeader;
        c.line = lineNo;
        if (!IsIdentifier(c.name)) Fail(path, lineNo, "not a class name: '" + c.name + "'");
        if (known.count(c.name)) Fail(path, lineNo, "class '" + c.name + "' is defined twice");
        if (!known.count(c.parent))
          Fail(path, lineNo, "unknown parent '" + c.parent + "' (define it above or name it in 'uses')");
        for (size_t i = 4; i < w.size(); ++i) {
          if (w[i] == "abstract")
            c.isAbstract = true;
          else if (w[i] == "hand-assign")
            c.handAssign = true;
          else if (w[i] == "hand-ctor")
            c.handCtor = true;
          else if (w[i] == "parts")
            c.parts = true;
          else
            Fail(path, lineNo, "unknown class mark '" + w[i] + "'");
        }
        known.insert(c.name);
        table.classes.push_back(c);
        current = &table.classes.back();
      } else {
        Fail(path, lineNo, "unknown statement '" + w[0] + "'");
      }
      continue;
    }
    // A field line.
    if (!current) Fail(path, lineNo, "a field outside a node");
    if (w.size() < 3) Fail(path, lineNo, "expected: <Field> <kind> <Type> [= <Default>] [marks]");
    Field f;
    f.name = w[0];
    f.kind = w[1];
    f.type = w[2];
    f.comment = comment;
    f.line = lineNo;
    if (!IsIdentifier(f.name)) Fail(path, lineNo, "not a field name: '" + f.name + "'");
    for (const Field& other : current->fields)
      if (other.name == f.name) Fail(path, lineNo, "field '" + f.name + "' is declared twice");
    size_t i = 3;
    if (f.kind == "child" || f.kind == "list") {
      // Node classes of fields may be defined further down; checked at the end.
      if (f.kind == "list" && !current->fields.empty())
        Fail(path, lineNo, "a list must be the first field of its class");
    } else if (f.kind == "weak") {
      // Checked at the end, like node classes of fields.
    } else if (f.kind == "value") {
      if (i < w.size() && w[i] == "=") {
        if (i + 1 >= w.size()) Fail(path, lineNo, "'=' without a default value");
        f.defaultValue = w[i + 1];
        i += 2;
      }
    } else {
      Fail(path, lineNo, "unknown field kind '" + f.kind + "' (child, list, weak or value)");
    }
    for (; i < w.size(); ++i) {
      if (w[i] == "noassign")
        f.noAssign = true;
      else
        Fail(path, lineNo, "unknown field mark '" + w[i] + "'");
    }
    current->fields.push_back(f);
  }
  // Types of fields: node classes of the table or named in 'uses'; weak
  // fields may also name an 'extern' type.
  for (const NodeClass& c : table.classes)
    for (const Field& f : c.fields) {
      if ((f.kind == "child" || f.kind == "list") && !known.count(f.type))
        Fail(path, f.line, "unknown node class '" + f.type + "' (define it in the table or name it in 'uses')");
      if (f.kind == "weak" && !known.count(f.type) && !externs.count(f.type))
        Fail(path, f.line, "unknown type '" + f.type + "' of a weak field (name it in 'extern')");
    }
  // A class may hold one list along its chain within the table.
  std::map<std::string, const NodeClass*> byName;
  for (const NodeClass& c : table.classes) byName[c.name] = &c;
  for (const NodeClass& c : table.classes) {
    int lists = 0;
    for (const NodeClass* k = &c; k; k = byName.count(k->parent) ? byName[k->parent] : nullptr)
      for (const Field& f : k->fields) lists += f.kind == "list";
    if (lists > 1) Fail(path, c.line, "class '" + c.name + "' would hold more than one list");
  }
  return table;
}

std::string FieldDeclaration(const Field& f) {
  std::string decl;
  if (f.kind == "child")
    decl = "::mv::TastChild<" + f.type + "> " + f.name + ";";
  else if (f.kind == "list")
    decl = "::mv::TastList<" + f.type + "> " + f.name + ";";
  else if (f.kind == "weak")
    decl = f.type + "* " + f.name + " = nullptr;";
  else
    decl = f.type + " " + f.name + (f.defaultValue.empty() ? "{}" : " = " + f.defaultValue) + ";";
  if (!f.comment.empty()) decl += " /* " + f.comment + " */";
  return decl;
}

bool CopiesFields(const NodeClass& c) {
  for (const Field& f : c.fields)
    if (f.kind == "weak" || f.kind == "value") return true;
  return false;
}

// Whether the class overrides Assign at all.
bool HasAssign(const NodeClass& c) { return c.handAssign || CopiesFields(c); }

std::string ResetValue(const Field& f) {
  if (f.kind == "weak") return "nullptr";
  return f.defaultValue.empty() ? f.type + "{}" : f.defaultValue;
}

void WriteHeader(const Table& t, const std::string& path, const std::string& name) {
  std::ostringstream o;
  o << "// Generated by mvnodegen from " << t.name << ". Do not edit: edit the table.\n";
  o << "#pragma once\n\n";
  o << "namespace mv {\n\n";
  o << "class TastNodeClassRegistry;\n";
  for (const std::string& e : t.externs) o << "class " << e << ";\n";
  for (const NodeClass& c : t.classes) o << "class " << c.name << ";\n";
  o << "\n// Adds every class of this table to the registry, in table order.\n";
  o << "void RegisterNodeClasses_" << name << "(TastNodeClassRegistry& registry);\n\n";
  o << "}  // namespace mv\n\n";
  for (const NodeClass& c : t.classes) {
    o << "// " << c.name << " : " << c.parent << (c.isAbstract ? " (abstract)" : "") << "\n";
    o << "#define MV_AST_NODE_" << c.name << "() \\\n";
    o << " public: \\\n";
    o << "  using Inherited = " << c.parent << "; \\\n";
    o << "  static const ::mv::TastNodeClass& StaticClass(); \\\n";
    o << "  const ::mv::TmvClass& ClassType() const override { return StaticClass(); } \\\n";
    o << "  const ::mv::TastNodeClass& NodeClass() const override { return StaticClass(); } \\\n";
    o << "  static const ::mv::TastClassFields& StaticClassFields(); \\\n";
    o << "  const ::mv::TastClassFields& ClassFields() const override { return StaticClassFields(); } \\\n";
    o << "  using " << c.parent << "::" << c.parent << "; \\\n";
    if (c.isAbstract) o << " protected: \\\n";
    if (c.handCtor)
      o << "  explicit " << c.name << "(::mv::TmvBaseSQLContext* context); \\\n";
    else
      o << "  explicit " << c.name << "(::mv::TmvBaseSQLContext* context) : " << c.parent << "(context) {} \\\n";
    if (c.isAbstract) o << " public: \\\n";
    if (HasAssign(c)) o << "  void Assign(const ::mv::TastNodeBase& source) override; \\\n";
    if (CopiesFields(c)) o << "  void AssignOwnFields(const " << c.name << "& source); \\\n";
    if (c.parts) {
      o << "  bool PrintsInParts() const final { return true; } \\\n";
      o << "  void BuildSQLDirect(::mv::TSQLBuilder& builder, const ::mv::TSQLBuilderSelectFormat& format) final { \\\n";
      o << "    BuildSQLInParts(builder, format); \\\n";
      o << "  } \\\n";
      o << "  bool BuildSQLPart(int index, ::mv::TSQLBuilder& builder, const ::mv::TSQLBuilderSelectFormat& format, \\\n";
      o << "                    ::mv::TastNode*& child) override; \\\n";
    }
    for (const Field& f : c.fields) o << "  " << FieldDeclaration(f) << " \\\n";
    o << "  static_assert(true)\n\n";
  }
  std::ofstream out(path);
  out << o.str();
  if (!out) Fail(path, 0, "cannot write");
}

void WriteSource(const Table& t, const std::string& path, const std::string& name) {
  std::ostringstream o;
  o << "// Generated by mvnodegen from " << t.name << ". Do not edit: edit the table.\n";
  o << "#include \"tree/NodeRegistry.h\"\n";
  for (const std::string& h : t.headers) o << "#include \"" << h << "\"\n";
  o << "\nnamespace mv {\n";
  for (const NodeClass& c : t.classes) {
    o << "\n// --- " << c.name << "\n\n";
    o << "const TastNodeClass& " << c.name << "::StaticClass() {\n";
    o << "  static const TastNodeClass info(\"" << c.name << "\", &" << c.parent << "::StaticClass(), ";
    if (c.isAbstract)
      o << "nullptr);\n";
    else
      o << "[](TmvBaseSQLContext* context) -> TastNodeBase* { return new " << c.name << "(context); });\n";
    o << "  return info;\n}\n\n";
    o << "const TastClassFields& " << c.name << "::StaticClassFields() {\n";
    o << "  static const TastClassFields fields(&" << c.parent << "::StaticClassFields(), {";
    bool any = false;
    for (const Field& f : c.fields) {
      if (f.kind != "child" && f.kind != "list") continue;
      o << (any ? "," : "") << "\n      "
        << (f.kind == "child" ? "TastChildFieldInfo<" : "TastListFieldInfo<") << c.name << ", &" << c.name
        << "::" << f.name << ">(\"" << f.name << "\")";
      any = true;
    }
    o << (any ? "\n  " : "") << "});\n  return fields;\n}\n";
    if (CopiesFields(c)) {
      o << "\nvoid " << c.name << "::AssignOwnFields(const " << c.name << "& source) {\n";
      for (const Field& f : c.fields)
        if ((f.kind == "weak" || f.kind == "value") && !f.noAssign)
          o << "  " << f.name << " = source." << f.name << ";\n";
      bool copies = false;
      for (const Field& f : c.fields) copies |= (f.kind == "weak" || f.kind == "value") && !f.noAssign;
      if (!copies) o << "  (void)source;\n";
      o << "}\n";
    }
    if (HasAssign(c) && !c.handAssign) {
      o << "\nvoid " << c.name << "::Assign(const TastNodeBase& source) {\n";
      o << "  " << c.parent << "::Assign(source);\n";
      o << "  if (const auto* typed = TmvCast<" << c.name << ">(&source)) AssignOwnFields(*typed);\n";
      for (const Field& f : c.fields)
        if (f.noAssign) o << "  " << f.name << " = " << ResetValue(f) << ";\n";
      o << "}\n";
    }
  }
  o << "\nvoid RegisterNodeClasses_" << name << "(TastNodeClassRegistry& registry) {\n";
  for (const NodeClass& c : t.classes) o << "  registry.Add(" << c.name << "::StaticClass());\n";
  o << "}\n\n}  // namespace mv\n";
  std::ofstream out(path);
  out << o.str();
  if (!out) Fail(path, 0, "cannot write");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: mvnodegen <table> <out.gen.h> <out.gen.cpp> <name>\n";
    return 2;
  }
  Table table = ReadTable(argv[1]);
  if (table.classes.empty()) Fail(argv[1], 0, "the table defines no node class");
  WriteHeader(table, argv[2], argv[4]);
  WriteSource(table, argv[3], argv[4]);
  return 0;
}
