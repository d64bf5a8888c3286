// The base of the query property forms: the select mode of a SELECT (none,
// Distinct, All, and where a dialect has them DistinctRow or Unique), with
// the helpers the dialects' forms share for reading and writing their
// clauses: the printed text of a node, counts parsed as expressions or
// integers, names parsed as qualified names.
#pragma once

#include "frontend/PropertiesForm.h"
#include "tree/AstNode.h"
#include "tree/SelectStatement.h"
#include "tree/NodeClass.h"

namespace mv {

class TSQLExpressionItem;
class TSQLQualifiedName;

class TmvQueryPropsForm : public TmvQBPropertiesForm {
 public:
  explicit TmvQueryPropsForm(const TmvPropsFormTarget& target, WideString className = u"TmvQueryPropsForm");

  void LoadProps() override;
  void SaveProps() override;

 protected:
  struct SelectMode {
    const char16_t* name;
    const char16_t* caption;
    TastNodeClassRef nodeClass;  // null for the default mode
  };
  // Adds the radio buttons of another mode (after Default, DISTINCT, ALL).
  void AddSelectMode(const SelectMode& mode);

  TmvBaseSQLContext* Context() const { return Target().Context; }
  TSQLSubQuerySelectExpression* Select() const { return Target().Select; }
  // The extender of the SELECT or of the statement as a dialect's class.
  template <class T>
  T* SelectExtender() const {
    return Select() ? TmvCast<T>(Select()->Extender.get()) : nullptr;
  }
  template <class T>
  T* StatementExtender() const;

  // The node printed as an expression; empty for none.
  WideString NodeText(const TastNode* node) const;
  // Sets a check box and its edit from an optional node.
  void LoadOptional(WideStringView checkBox, WideStringView edit, const TastNode* node);
  // The text of an enabled edit, checked at OK: an expression (the parser's
  // own error otherwise), a whole number, a qualified name.
  void CheckExpression(WideStringView edit) const;
  void CheckInteger(WideStringView edit) const;
  void CheckQualifiedName(WideStringView edit) const;
  TmvOwned<TSQLExpressionItem> ParsedExpression(WideStringView edit) const;
  TmvOwned<TSQLQualifiedName> ParsedQualifiedName(WideStringView edit) const;

 private:
  std::vector<SelectMode> modes_;
};

template <class T>
T* TmvQueryPropsForm::StatementExtender() const {
  return Target().Statement ? TmvCast<T>(Target().Statement->Extender.get()) : nullptr;
}

// The query forms of every dialect join the registry of form classes.
void RegisterQueryPropsForms();

}  // namespace mv
