#include "dialects/matrix/MatrixSyntaxProvider.h"

#include "frontend/PropertiesForm.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

const TmvCapabilityRow& RowOf(std::string_view className) {
  if (const TmvCapabilityRow* row = FindCapabilityRow(className)) return *row;
  throw EmvQueryBuilderError(u"The capability matrix has no provider " + WideFromAscii(className));
}

// Calls `add` for each entry of a comma-separated list.
template <class Char, class Add>
void ForEachListEntry(const Char* list, Add add) {
  std::basic_string_view<Char> rest(list ? list : std::basic_string_view<Char>());
  while (!rest.empty()) {
    const size_t comma = rest.find(Char(','));
    add(rest.substr(0, comma));
    if (comma == rest.npos) break;
    rest.remove_prefix(comma + 1);
  }
}

void AddNames(TSQLQualifiedNamesList& list, const char16_t* names) {
  ForEachListEntry(names, [&](WideStringView name) { list.AddBuiltin(WideString(name)); });
}

// The form that edits a SELECT's properties, by provider row; a row not
// listed (SQL-89, Informix, Mimer SQL) has none.
constexpr std::pair<std::string_view, const char16_t*> kQueryPropsForms[] = {
    {"TmvSQL92SyntaxProvider", u"TmvQueryPropsForm"},
    {"TmvSQL2003SyntaxProvider", u"TmvQueryPropsForm"},
    {"TmvMSSQLSyntaxProvider", u"TmvQueryPropsMSForm"},
    {"TmvMSSQLCESyntaxProvider", u"TmvQueryPropsMSForm"},
    {"TmvOracleSyntaxProvider", u"TmvQueryPropsOracleForm"},
    {"TmvMYSQLSyntaxProvider", u"TmvQueryPropsMYForm"},
    {"TmvPGSQLSyntaxProvider", u"TmvQueryPropsPgForm"},
    {"TmvIBSyntaxProvider", u"TmvQueryPropsIbForm"},
    {"TmvFirebirdSyntaxProvider", u"TmvQueryPropsFbForm"},
    {"TmvDB2SyntaxProvider", u"TmvQueryPropsDB2Form"},
    {"TmvMSAccessSyntaxProvider", u"TmvQueryPropsAccessForm"},
    {"TmvSybaseSyntaxProvider", u"TmvQueryPropsSbForm"},
    {"TmvSQLiteSyntaxProvider", u"TmvQueryPropsSQLiteForm"},
    {"TmvTeradataSyntaxProvider", u"TmvQueryPropsTeradataForm"},
    {"TmvNetezzaSyntaxProvider", u"TmvQueryPropsNetezzaForm"},
    {"TmvAdvantageSyntaxProvider", u"TmvQueryPropsAdvantageForm"},
    {"TmvUniversalSyntaxProvider", u"TmvQueryPropsForm"},
};

}  // namespace

WideString TmvMatrixSyntaxProvider::GetEditPropsFormClass(TmvEditPropsTarget target) const {
  switch (target) {
    case TmvEditPropsTarget::Link:
      return u"TmvLinkPropsForm";
    case TmvEditPropsTarget::Datasource:
      return u"TmvDatasourcePropsForm";
    case TmvEditPropsTarget::UnionSubQuery:
      for (const auto& [className, form] : kQueryPropsForms)
        if (className == row_.className) return form;
      return {};
  }
  return {};
}

TmvMatrixSyntaxProvider::TmvMatrixSyntaxProvider(std::string_view className) : row_(RowOf(className)) {
  if (!row_.identCaseSensByDescriptor) SetIdentCaseSens(row_.identCaseSens);
  SetQueryToLoadFieldsTemplateDefault(row_.fieldsTemplate);
}

bool TmvMatrixSyntaxProvider::Holds(const TmvCapabilityAnswer& answer, TmvCapability capability) const {
  switch (answer.setting) {
    case TmvCapabilitySetting::Fixed:
      return answer.low != 0;
    case TmvCapabilitySetting::Descriptor:
      return DescriptorCapability(capability);
    default: {
      const int value = CapabilitySetting(answer.setting);
      return value >= answer.low && value <= answer.high;
    }
  }
}

TmvIdentCaseSensitivity TmvMatrixSyntaxProvider::GetIdentCaseSens() const {
  if (row_.identCaseSensByDescriptor) return DescriptorIdentCaseSens();
  return row_.identCaseSensFixed ? row_.identCaseSens : TmvBaseSyntaxProvider::GetIdentCaseSens();
}

WideString TmvMatrixSyntaxProvider::GetQuoteBegin() const {
  return row_.quoteBegin ? WideString(row_.quoteBegin) : DescriptorQuote(true);
}

WideString TmvMatrixSyntaxProvider::GetQuoteEnd() const {
  return row_.quoteEnd ? WideString(row_.quoteEnd) : DescriptorQuote(false);
}

WideString TmvMatrixSyntaxProvider::GetObjectNameSeparator() const {
  // The capability passed along only matters to descriptor answers, which no
  // separator has.
  if (row_.otherSeparator && Holds(row_.otherSeparatorWhen, TmvCapability::IsSupportSchemas))
    return row_.otherSeparator;
  return row_.separator;
}

void TmvMatrixSyntaxProvider::GetStarAggregateNames(TSQLQualifiedNamesList& list) const {
  AddNames(list, row_.starAggregates);
}

void TmvMatrixSyntaxProvider::Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  AddNames(list, row_.oneParamAggregates);
}

void TmvMatrixSyntaxProvider::GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const {
  AddNames(list, row_.prefixedAggregates);
}

void TmvMatrixSyntaxProvider::GetMultiParamAggregateNames(TSQLQualifiedNamesList& list) const {
  AddNames(list, row_.multiParamAggregates);
}

void TmvMatrixSyntaxProvider::GetComparisonOperators(std::vector<std::string>& list) const {
  ForEachListEntry(row_.comparisonOperators, [&](std::string_view op) { list.emplace_back(op); });
}

void TmvMatrixSyntaxProvider::GetUnionOperatorsList(std::vector<WideString>& list) const {
  ForEachListEntry(row_.unionOperators, [&](WideStringView op) { list.emplace_back(op); });
  if (row_.moreUnionOperators && Holds(row_.moreUnionOperatorsWhen, TmvCapability::IsSupportUnions))
    ForEachListEntry(row_.moreUnionOperators, [&](WideStringView op) { list.emplace_back(op); });
}

}  // namespace mv
