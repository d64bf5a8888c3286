#include "metadata/fetchers/FilterMacros.h"

#include "metadata/MetadataFilter.h"

namespace mv {

namespace {

struct TFilterMacro {
  const char16_t* Text;
  TmvMetadataFilterApplyFor Kind;
};

constexpr TFilterMacro kFilterMacros[] = {
    {mvQBTableFilterMacro, mfTables},
    {mvQBViewFilterMacro, mfViews},
    {mvQBProcedureFilterMacro, mfProcedures},
    {mvQBSynonymFilterMacro, mfSynonyms},
};

WideString ReplaceAll(WideStringView text, WideStringView what, WideStringView with) {
  WideString result;
  size_t from = 0;
  for (size_t at = text.find(what); at != WideStringView::npos; at = text.find(what, from)) {
    result.append(text.substr(from, at - from));
    result.append(with);
    from = at + what.size();
  }
  result.append(text.substr(from));
  return result;
}

}  // namespace

WideString ReplaceFilterMacros(WideStringView sql, const TmvBaseSQLContext* context, const TmvMetadataFilter* filter,
                               WideStringView schemaExpression, WideStringView nameExpression) {
  WideString text(sql);
  for (const TFilterMacro& macro : kFilterMacros) {
    if (text.find(macro.Text) == WideString::npos) continue;
    WideString condition;
    if (filter) condition = filter->CreatePrefilterCondition(context, schemaExpression, nameExpression, macro.Kind);
    text = ReplaceAll(text, macro.Text, condition.empty() ? WideStringView(mvQBSQLTrue) : WideStringView(condition));
  }
  return text;
}

}  // namespace mv
