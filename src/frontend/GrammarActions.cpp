#include "frontend/GrammarActions.h"

namespace mv {

TSQLExpressionOperatorBinary* WrapBinary(TmvBaseSQLContext* context, TSQLExpressionItem*& item, WideStringView op) {
  TmvOwned<TSQLExpressionOperatorBinary> binary = TastCreate<TSQLExpressionOperatorBinary>(context);
  binary->Expression.Reset(item);
  binary->Operator.Set(TastCreate<TSQLOperator>(context, op));
  item = binary.get();
  return binary.release();
}

TSQLExpressionOperator* MakePrefix(TmvBaseSQLContext* context, WideStringView op) {
  // Characters from the tilde up are name characters to the scanner: "~a"
  // is one name, so such an operator keeps a blank before its operand.
  TmvOwned<TSQLExpressionOperator> prefix;
  if (!op.empty() && op.back() >= u'~')
    prefix = TastCreate<TSQLExpressionOperatorPrefixWithSpace>(context);
  else
    prefix = TastCreate<TSQLExpressionOperatorPrefix>(context);
  prefix->Operator.Set(TastCreate<TSQLOperator>(context, op));
  return prefix.release();
}

TSQLExpressionOperatorBinary* MakeTruthComparison(TmvBaseSQLContext* context, TSQLExpressionItem* left,
                                                  WideStringView keyword) {
  TmvOwned<TSQLExpressionOperatorBinary> comparison = TastCreate<TSQLExpressionOperatorBinary>(context);
  comparison->Expression.Reset(left);
  comparison->Operator.Set(TastCreate<TSQLOperator>(context, u"="));
  TmvOwned<TSQLExpressionConstant> constant = TastCreate<TSQLExpressionConstant>(context);
  constant->AddKeyword(WideSameText(keyword, u"true") ? u"True" : u"False");
  comparison->Right.Set(std::move(constant));
  return comparison.release();
}

TSQLExpressionParameter* MakeParameter(TmvBaseSQLContext* context, WideStringView prefix) {
  TmvOwned<TSQLExpressionParameter> parameter = TastCreate<TSQLExpressionParameter>(context);
  parameter->Prefix.Set(TastCreate<TastTokenSymbol>(context, prefix));
  return parameter.release();
}

TSQLExpressionItem* MakeFunctionCall(TmvBaseSQLContext* context, TSQLQualifiedName* name, uint8_t mode,
                                     TSQLExpressionsList* params) {
  TmvOwned<TSQLQualifiedName> ownedName(name);
  TmvOwned<TSQLExpressionsList> ownedParams(params);
  if (context->IsNameOfPrefixedAggregate(name) || context->IsNameOfAggregate(name) ||
      context->IsNameOfCustomAggregate(name)) {
    TmvOwned<TSQLExpressionAggregate> aggregate = TastCreate<TSQLExpressionAggregate>(context);
    context->AggregateNormalize(name);
    aggregate->Name.Set(std::move(ownedName));
    aggregate->Mode = mode;
    aggregate->Argument.Set(std::move(ownedParams));
    return aggregate.release();
  }
  TmvOwned<TSQLExpressionFunction> function = TastCreate<TSQLExpressionFunction>(context);
  function->Name.Set(std::move(ownedName));
  function->Params.Set(std::move(ownedParams));
  return function.release();
}

TSQLExpressionAggregate* MakeStarAggregate(TmvBaseSQLContext* context, TSQLQualifiedName* name) {
  TmvOwned<TSQLExpressionAggregate> aggregate = TastCreate<TSQLExpressionAggregate>(context);
  aggregate->Name.Reset(name);
  return aggregate.release();
}

TSQLFromGroup* NestJoins(TmvBaseSQLContext* context, TSQLFromSource*& source) {
  TmvOwned<TSQLFromGroup> group = TastCreate<TSQLFromGroup>(context);
  group->Add(Own(source));
  source = group.get();
  return group.release();
}

TSQLExpressionNodesList* MakeNodesList(TmvBaseSQLContext* context) {
  TmvOwned<TSQLExpressionNodesList> list = TastCreate<TSQLExpressionNodesList>(context);
  list->List.Set(TastCreate<TastNodeWithList>(context));
  return list.release();
}

}  // namespace mv
