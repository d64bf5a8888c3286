// The base of the providers that take their capability answers, texts, case
// rule, fields-query template and name lists from the capability matrix
// (CapabilityMatrix.h). A provider names its class's row when it is made; a
// class derived from it without a row of its own keeps its parent's answers.
// Conditional answers read the provider's settings through CapabilitySetting
// and, for the universal provider, DescriptorCapability.
//
// It adds no run-time class: the providers built on it still descend from
// TmvBaseSyntaxProvider as far as class names and keyword resources go.
#pragma once

#include "dialects/matrix/CapabilityMatrix.h"

namespace mv {

class TmvMatrixSyntaxProvider : public TmvBaseSyntaxProvider {
 public:
#define MV_CAPABILITY_OVERRIDE(name) \
  bool name() const override { return Answer(TmvCapability::name); }
  MV_CAPABILITY_OPERATIONS(MV_CAPABILITY_OVERRIDE)
#undef MV_CAPABILITY_OVERRIDE

  TmvIdentCaseSensitivity GetIdentCaseSens() const override;
  WideString GetQuoteBegin() const override;
  WideString GetQuoteEnd() const override;
  WideString GetObjectNameSeparator() const override;
  WideString GetSimpleEmptyFromSubquery() const override { return row_.simpleEmptyFromSubquery; }
  WideString GetUpperCaseFunctionName() const override { return row_.upperCaseFunctionName; }
  WideString ServerName() const override { return row_.serverName; }

  void GetStarAggregateNames(TSQLQualifiedNamesList& list) const override;
  void Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const override;
  void GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const override;
  void GetMultiParamAggregateNames(TSQLQualifiedNamesList& list) const override;
  void GetComparisonOperators(std::vector<std::string>& list) const override;
  void GetUnionOperatorsList(std::vector<WideString>& list) const override;
  // The link and datasource forms, and the query form of the provider's row.
  WideString GetEditPropsFormClass(TmvEditPropsTarget target) const override;

  // The value of a setting that a conditional answer depends on; 0 unless
  // the dialect has the setting.
  virtual int CapabilitySetting(TmvCapabilitySetting) const { return 0; }
  // The answer of the server descriptor in use, for a provider that has one.
  virtual bool DescriptorCapability(TmvCapability) const { return false; }
  // The quotes and case of the server descriptor in use.
  virtual WideString DescriptorQuote(bool /*begin*/) const { return u"\""; }
  virtual TmvIdentCaseSensitivity DescriptorIdentCaseSens() const { return icsNonSensitive; }

  const TmvCapabilityRow& CapabilityRow() const { return row_; }
  // Whether the condition holds under the present settings.
  bool Holds(const TmvCapabilityAnswer& answer, TmvCapability capability) const;

 protected:
  // The row of `className` gives the case, the template and the answers;
  // a class without a row is a programming error and raises.
  explicit TmvMatrixSyntaxProvider(std::string_view className);

 private:
  bool Answer(TmvCapability capability) const { return Holds(CapabilityAnswer(row_, capability), capability); }

  const TmvCapabilityRow& row_;
};

}  // namespace mv
