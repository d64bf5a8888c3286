#include "QueryRows.h"

#include <cstdio>
#include <memory>

namespace mvtest {

namespace {

std::string ValueText(const mv::TmvField& field, const char* realFormat) {
  if (field.IsNull()) return "NULL";
  const mv::TmvVariant value = field.AsVariant();
  if (value.VarType() == mv::TmvVarType::vtFloat) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, realFormat, value.AsFloat());
    return buffer;
  }
  return field.AsString();
}

}  // namespace

TextRows QueryRows(mv::TmvConnection& connection, const mv::WideString& sql, const char* realFormat) {
  std::unique_ptr<mv::TmvDataSet> query = connection.CreateQuery();
  query->SetParamCheck(false);
  query->SetCommandText(sql);
  TextRows rows;
  for (query->Open(); !query->Eof(); query->Next()) {
    std::vector<std::string> row;
    for (int i = 0; i < query->FieldCount(); ++i) row.push_back(ValueText(query->Fields()[i], realFormat));
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace mvtest
