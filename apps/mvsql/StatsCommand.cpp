// mvsql stats: what a query reads and returns, as the query builder's
// statistics see it. The input goes into a query builder (with the metadata
// of --metadata or --sqlite, which binds names to tables and columns) and
// the statistics of its result tree are printed:
//   --format json (default)  the objects used, their columns used and the
//                            output columns, with stable keys (README.md)
//   --format xml             the query's structure document
// A syntax error, or text that is no SELECT, prints the parser's message on
// standard error and exits with 1, as roundtrip does.
#include <ostream>
#include <string>
#include <vector>

#include "Arguments.h"
#include "BuilderSession.h"
#include "Command.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/QueryStatistics.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/FieldTypeNames.h"
#include "support/TextFile.h"
#include "tree/NodeStatistics.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/Tokens.h"

namespace mvsql {

namespace {

// A JSON text: quotes, backslashes and control characters escaped.
std::string JsonString(const std::string& text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c < 0x20) {
          static const char kHex[] = "0123456789abcdef";
          out += "\\u00";
          out += kHex[c >> 4];
          out += kHex[c & 15];
        } else {
          out += char(c);
        }
    }
  }
  return out + "\"";
}

std::string JsonString(const mv::WideString& text) { return JsonString(mv::UTF8Encode(text)); }

std::string JsonStrings(const std::vector<mv::WideString>& texts) {
  std::string out = "[";
  for (size_t i = 0; i < texts.size(); ++i) out += (i ? ", " : "") + JsonString(texts[i]);
  return out + "]";
}

// One object of a list: the members in the order given, on one line each.
class JsonObject {
 public:
  JsonObject& Add(const char* key, const std::string& json) {
    members_.emplace_back(key, json);
    return *this;
  }
  JsonObject& Add(const char* key, const mv::WideString& text) { return Add(key, JsonString(text)); }
  JsonObject& Add(const char* key, bool value) { return Add(key, std::string(value ? "true" : "false")); }
  std::string Text(const std::string& indent) const {
    std::string out = "{\n";
    for (size_t i = 0; i < members_.size(); ++i)
      out += indent + "  " + JsonString(members_[i].first) + ": " + members_[i].second +
             (i + 1 < members_.size() ? ",\n" : "\n");
    return out + indent + "}";
  }

 private:
  std::vector<std::pair<std::string, std::string>> members_;
};

std::string JsonList(const std::vector<JsonObject>& items, const std::string& indent) {
  if (items.empty()) return "[]";
  std::string out = "[\n";
  for (size_t i = 0; i < items.size(); ++i)
    out += indent + "  " + items[i].Text(indent + "  ") + (i + 1 < items.size() ? ",\n" : "\n");
  return out + indent + "]";
}

// The texts through the builder with which the server reads the query.
class Printer {
 public:
  explicit Printer(mv::TmvBaseSQLContext& context) : builder_(context.SQLBuilderExpressionForServer()) {}

  // Empty for no name (an empty token would print as empty quotes).
  mv::WideString Name(const mv::TastNode* node) {
    if (!node) return {};
    if (auto* token = mv::TmvCast<mv::TastToken>(node); token && token->IsEmpty()) return {};
    if (auto* name = mv::TmvCast<mv::TSQLQualifiedName>(node); name && mv::IsQualifiedNameEmpty(name)) return {};
    return const_cast<mv::TastNode*>(node)->SimpleSQL(builder_);
  }
  // Parts joined by "."; empty parts left out.
  static mv::WideString Join(std::initializer_list<mv::WideString> parts) {
    mv::WideString out;
    for (const mv::WideString& part : parts) {
      if (part.empty()) continue;
      if (!out.empty()) out += u'.';
      out += part;
    }
    return out;
  }
  // A column that a node's statistics hold: object (its full name when
  // known) and column (the field's name when known).
  mv::WideString SourceColumn(const mv::TmvStatsColumn& column) {
    const mv::TmvMetadataObject* object = column.MetadataObject();
    const mv::WideString objectName = object ? Name(object->FullName()) : Name(column.ObjectName());
    const mv::WideString columnName = column.Field() ? Name(column.Field()->Name()) : Name(column.ColumnName());
    return Join({objectName, columnName});
  }

 private:
  mv::TSQLBuilder& builder_;
};

mv::WideString TypeText(mv::TFieldType type, const mv::WideString& typeName) {
  if (!typeName.empty()) return typeName;
  return type == mv::TFieldType(0) ? mv::WideString() : mv::FieldTypeToString(type);
}

void AddSourceColumns(Printer& printer, const mv::TmvStatsColumns* columns, std::vector<mv::WideString>& out) {
  if (!columns) return;
  for (int i = 0; i < columns->GetCount(); ++i) {
    const mv::WideString text = printer.SourceColumn(*columns->GetItems(i));
    bool known = false;
    for (const mv::WideString& each : out) known = known || each == text;
    if (!known) out.push_back(text);
  }
}

// The columns of the queried objects that make one output column: what its
// select item reads, or, for a column of a "*", the field behind it (and
// what that field reads when it belongs to a derived table).
std::vector<mv::WideString> SourceColumns(Printer& printer, mv::TmvStatisticsOutputColumn& column) {
  std::vector<mv::WideString> out;
  mv::TSQLSelectItem* item = column.SelectItemNode();
  if (item && mv::TmvCast<mv::TSQLSelectItemExpression>(item)) {
    AddSourceColumns(printer, item->StatsColumns(), out);
  } else if (mv::TmvMetadataField* field = column.Field()) {
    if (field->UsedDatabaseObjectColumns() && field->UsedDatabaseObjectColumns()->GetCount() > 0)
      AddSourceColumns(printer, field->UsedDatabaseObjectColumns(), out);
    else if (column.MetadataObject())
      out.push_back(Printer::Join({printer.Name(column.MetadataObject()->FullName()), printer.Name(field->Name())}));
  }
  return out;
}

std::string StatisticsJson(mv::TmvQueryBuilder& builder) {
  mv::TmvQueryStatistics* statistics = builder.GetQueryStatistics();
  Printer printer(*builder.SQLContext());

  std::vector<JsonObject> objects;
  mv::TmvStatisticsDatabaseObjectsList* usedObjects = statistics->UsedDatabaseObjects();
  for (int i = 0; i < usedObjects->GetCount(); ++i) {
    mv::TmvStatisticsDatabaseObject* object = usedObjects->GetItems(i);
    std::vector<mv::WideString> aliases;
    const mv::TastIdentifiersList* list = object->Aliases();
    for (int a = 0; a < list->Items.Count(); ++a) aliases.push_back(printer.Name(list->Token(a)));
    objects.push_back(JsonObject()
                          .Add("schema", printer.Name(object->Schema()))
                          .Add("name", printer.Name(object->ObjectName()))
                          .Add("database", printer.Name(object->Database()))
                          .Add("full_name", printer.Name(object->FullName()))
                          .Add("aliases", JsonStrings(aliases))
                          .Add("known", object->MetadataObject() != nullptr));
  }

  std::vector<JsonObject> columns;
  mv::TmvStatisticsColumnsList* usedColumns = statistics->UsedColumns();
  for (int i = 0; i < usedColumns->GetCount(); ++i) {
    mv::TmvStatisticsColumn* column = usedColumns->GetItems(i);
    const mv::WideString object = Printer::Join(
        {printer.Name(column->Database()), printer.Name(column->Schema()), printer.Name(column->ObjectName())});
    columns.push_back(JsonObject()
                          .Add("object", object)
                          .Add("column", printer.Name(column->ColumnName()))
                          .Add("full_name", printer.Name(column->FullName()))
                          .Add("selected", column->Selected())
                          .Add("type", TypeText(column->GetFieldType(), column->GetFieldTypeName())));
  }

  std::vector<JsonObject> outputs;
  mv::TmvStatisticsOutputColumnsList* outputColumns = statistics->OutputColumns();
  for (int i = 0; i < outputColumns->GetCount(); ++i) {
    mv::TmvStatisticsOutputColumn* column = outputColumns->GetItems(i);
    outputs.push_back(JsonObject()
                          .Add("expression", column->Expression())
                          .Add("alias", column->Alias())
                          .Add("column_name", column->ColumnName())
                          .Add("object_alias", column->ObjectAlias())
                          .Add("object_name", column->ObjectName())
                          .Add("object_name_in_query", column->ObjectNameInQuery())
                          .Add("column_name_in_query", column->ColumnNameInQuery())
                          .Add("type", TypeText(column->GetFieldType(), column->GetFieldTypeName()))
                          .Add("source_columns", JsonStrings(SourceColumns(printer, *column))));
  }

  return "{\n  \"used_objects\": " + JsonList(objects, "  ") + ",\n  \"used_columns\": " + JsonList(columns, "  ") +
         ",\n  \"output_columns\": " + JsonList(outputs, "  ") + "\n}\n";
}

}  // namespace

int RunStats(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"dialect", "metadata", "sqlite", "format"}, {});
  const std::string format = arguments.Value("format", "json");
  if (format != "json" && format != "xml") throw UsageError{"--format takes json or xml, not '" + format + "'"};
  const mv::WideString text = mv::ReadTextFile(arguments.InputPath());
  BuilderSession session(arguments);
  if (!session.LoadSql(text, err)) return kExitFailure;
  if (format == "xml")
    out << mv::UTF8Encode(session.Builder().GetQueryStatistics()->GetQueryStructureXML());
  else
    out << StatisticsJson(session.Builder());
  return kExitSuccess;
}

}  // namespace mvsql
