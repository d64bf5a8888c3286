#include "dialects/forms/QueryPropsForm.h"

#include "dialects/forms/DialectPropsForms.h"

#include "frontend/SQLContext.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "tree/Expressions.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"

namespace mv {

TmvQueryPropsForm::TmvQueryPropsForm(const TmvPropsFormTarget& target, WideString className)
    : TmvQBPropertiesForm(std::move(className), target) {
  SetCaption(u"Query Properties");
  AddSelectMode({u"rbNone", u"Default", nullptr});
  AddSelectMode({u"rbDistinct", u"DISTINCT", &TSQLSubQuerySelectModeDistinct::StaticClass()});
  AddSelectMode({u"rbAll", u"ALL", &TSQLSubQuerySelectModeAll::StaticClass()});
}

void TmvQueryPropsForm::AddSelectMode(const SelectMode& mode) {
  modes_.push_back(mode);
  AddControl({TmvFormControlKind::Radio, mode.name, mode.caption, {}, u"SelectMode", {}, {}});
}

void TmvQueryPropsForm::LoadProps() {
  const TastNode* node = Select() ? Select()->SelectMode.get() : nullptr;
  for (const SelectMode& mode : modes_)
    if (node ? mode.nodeClass == &node->ClassType() : !mode.nodeClass) SetChecked(mode.name, true);
}

void TmvQueryPropsForm::SaveProps() {
  if (!Select()) return;
  Select()->SelectMode.Reset();
  for (const SelectMode& mode : modes_)
    if (mode.nodeClass && Checked(mode.name))
      Select()->SelectMode.Set(TastCreateOfClass<TSQLSubQuerySelectMode>(*mode.nodeClass, Context()));
}

WideString TmvQueryPropsForm::NodeText(const TastNode* node) const {
  if (!node || !Context()) return {};
  return const_cast<TastNode*>(node)->SimpleSQL(Context()->SQLBuilderExpression());
}

void TmvQueryPropsForm::LoadOptional(WideStringView checkBox, WideStringView edit, const TastNode* node) {
  SetChecked(checkBox, node != nullptr);
  if (node) SetText(edit, NodeText(node));
}

TmvOwned<TSQLExpressionItem> TmvQueryPropsForm::ParsedExpression(WideStringView edit) const {
  TmvErrorList errors;
  const WideString text = WideTrim(Text(edit));
  TmvOwned<TSQLExpressionItem> expression = Context()->ParseExpression(text, &errors);
  if (!expression)
    throw EmvQueryBuilderError(text, errors.empty() ? MessageFormat(u"mvQBBadExpression", {text}) : WideTrim(errors.front()));
  return expression;
}

TmvOwned<TSQLQualifiedName> TmvQueryPropsForm::ParsedQualifiedName(WideStringView edit) const {
  const WideString text = WideTrim(Text(edit));
  TmvOwned<TSQLQualifiedName> name = text.empty() ? nullptr : Context()->ParseQualifiedNameQuoteIfNeed(text);
  if (!name) throw EmvQueryBuilderError(text, MessageText(u"mvQBBadObjectName"));
  return name;
}

void TmvQueryPropsForm::CheckExpression(WideStringView edit) const {
  if (Enabled(edit)) ParsedExpression(edit);
}

void TmvQueryPropsForm::CheckInteger(WideStringView edit) const {
  if (Enabled(edit)) CheckedInteger(edit);
}

void TmvQueryPropsForm::CheckQualifiedName(WideStringView edit) const {
  if (Enabled(edit)) ParsedQualifiedName(edit);
}

namespace {

template <class Form>
void Register(const char16_t* className) {
  RegisterPropertiesFormClass(className, [](const TmvPropsFormTarget& target) -> std::unique_ptr<TmvQBPropertiesForm> {
    return std::make_unique<Form>(target);
  });
}

}  // namespace

void RegisterQueryPropsForms() {
  Register<TmvQueryPropsForm>(u"TmvQueryPropsForm");
  Register<TmvQueryPropsMSForm>(u"TmvQueryPropsMSForm");
  Register<TmvQueryPropsAccessForm>(u"TmvQueryPropsAccessForm");
  Register<TmvQueryPropsSbForm>(u"TmvQueryPropsSbForm");
  Register<TmvQueryPropsAdvantageForm>(u"TmvQueryPropsAdvantageForm");
  Register<TmvQueryPropsTeradataForm>(u"TmvQueryPropsTeradataForm");
  Register<TmvQueryPropsPgForm>(u"TmvQueryPropsPgForm");
  Register<TmvQueryPropsSQLiteForm>(u"TmvQueryPropsSQLiteForm");
  Register<TmvQueryPropsNetezzaForm>(u"TmvQueryPropsNetezzaForm");
  Register<TmvQueryPropsMYForm>(u"TmvQueryPropsMYForm");
  Register<TmvQueryPropsDB2Form>(u"TmvQueryPropsDB2Form");
  Register<TmvQueryPropsFbForm>(u"TmvQueryPropsFbForm");
  Register<TmvQueryPropsIbForm>(u"TmvQueryPropsIbForm");
  Register<TmvQueryPropsOracleForm>(u"TmvQueryPropsOracleForm");
}

}  // namespace mv
