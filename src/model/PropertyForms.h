// The properties forms of the model's own objects, and the way any object of
// the model opens its form: a link (its expression and outer sides), a
// datasource (its alias, and the name of the common table expression it
// refers to), a SELECT (the dialect's query form, from the dialects).
//
// EditProps asks the dialect for the form class (GetEditPropsFormClass),
// makes the form, lets the host's user interaction show it, and on OK saves
// it in one update of the object, so the query's text follows once.
#pragma once

#include "frontend/PropertiesForm.h"

namespace mv {

class TmvQueryBuilderControlOwner;
class TmvLink;
class TmvDatasource;

class TmvLinkPropsForm : public TmvQBPropertiesForm {
 public:
  explicit TmvLinkPropsForm(const TmvPropsFormTarget& target);
  void LoadProps() override;
  void CheckCanClose() override;
  void SaveProps() override;
  // Outer sides of a where-link: Oracle's "(+)", or Transact-SQL's "*=" on
  // a comparison "=", "*=" or "=*".
  bool IsSupportOuterJoinsInWhereClause() const;

 protected:
  void Clicked(WideStringView name) override;

 private:
  TmvLink* Link() const;
  WideString oldExpression_;
};

class TmvDatasourcePropsForm : public TmvQBPropertiesForm {
 public:
  explicit TmvDatasourcePropsForm(const TmvPropsFormTarget& target);
  void LoadProps() override;
  void CheckCanClose() override;
  void SaveProps() override;

 private:
  TmvDatasource* Datasource() const;
  WideString oldObject_, oldAlias_;
};

// The values of a procedure's parameters, asked when a procedure becomes a
// datasource and the host does not answer for them: "name(" values ")".
class TmvProcedureParamsForm : public TmvQBPropertiesForm {
 public:
  explicit TmvProcedureParamsForm(WideString procedureName);
  void LoadProps() override {}
  void SaveProps() override {}
  WideString GetResultExpression() const;

 private:
  WideString name_;
};

// The form class the dialect gives for the object; empty for none or for an
// object that has no form.
WideString EditPropsFormClass(TmvQueryBuilderControlOwner* object);
bool CanEditProps(TmvQueryBuilderControlOwner* object);
// The object's form, loaded; null when it has none.
std::unique_ptr<TmvQBPropertiesForm> CreateEditPropsForm(TmvQueryBuilderControlOwner* object);
// Shows the object's form through the host's user interaction and saves it
// on OK; true when something was saved.
bool EditProps(TmvQueryBuilderControlOwner* object);

// The link and datasource forms join the registry of form classes.
void RegisterModelPropertiesForms();

}  // namespace mv
