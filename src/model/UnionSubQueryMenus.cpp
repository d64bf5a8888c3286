// The menus of the union navigator and of a SELECT's page: the work area,
// a SELECT's button, a group's brackets, the operator before a member.
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "sqlgen/SQLBuilder.h"
#include "support/WideString.h"
#include "tree/SelectClauses.h"

namespace mv {

namespace {

// New, copy, brackets and remove, as the dialect allows them here.
void AddUnionEntries(TmvMenu& menu, TmvUnionSubQuery* member, TmvBaseSyntaxProvider* provider) {
  TmvSubQuery* root = member->RootQuery();
  const bool main = root && root->GetIsMainQuery();
  const bool unions = provider && (main ? provider->IsSupportUnions() : provider->IsSupportSubQueryUnions());
  const bool brackets =
      provider && (main ? provider->IsSupportBracketsInUnions() : provider->IsSupportSubQueryBracketsInUnions());
  AddMenuItem(menu, mvQBNewUnionSubQuery, [member] { member->NewEvent(); }, unions);
  AddMenuItem(menu, mvQBCopyToNewUnionSubQuery, [member] { member->CopyToNewEvent(); }, unions);
  AddMenuItem(menu, mvQBEncloseInBrackets, [member] { member->BracketsEvent(); }, brackets);
  AddMenuItem(menu, mvQBRemove, [member] { member->RemoveEvent(); },
              root && root->UnionSubQueries().size() >= 2);
}

}  // namespace

TmvMenu TmvQueryBase::GetUnionOperatorMenu() {
  TmvMenu menu;
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  if (!provider) return menu;
  std::vector<WideString> operators;
  provider->GetUnionOperatorsList(operators);
  // An empty operator is a union.
  const WideString current = WideUpperCase(GetUnionOperatorFull().empty() ? WideString(u"UNION") : GetUnionOperatorFull());
  for (const WideString& op : operators) {
    TmvMenuItem& entry = AddMenuItem(menu, u"", [this, op] { SetUnionOperatorFull(op); });
    entry.Key = op;
    entry.Caption = op;
    entry.Checked = WideUpperCase(op) == current;
  }
  return menu;
}

TmvMenu TmvUnionGroup::GetPopupMenu(ImvControl* control) {
  if (control && control == GetControls(2)) return GetUnionOperatorMenu();
  TmvMenu menu;
  TmvUnionGroup* parent = ParentQuery();
  const int index = parent ? parent->IndexOf(this) : -1;
  if (control && control == GetControls(0)) {
    AddMenuItem(menu, mvMoveLeft, [this] { MoveLeftForwardEvent(); }, index > 0);
    AddMenuItem(menu, mvMoveRight, [this] { MoveLeftBackwardEvent(); }, Count() > 0);
    AddMenuItem(menu, u"-", nullptr);
  } else if (control && control == GetControls(1)) {
    AddMenuItem(menu, mvMoveLeft, [this] { MoveRightForwardEvent(); }, Count() > 0);
    AddMenuItem(menu, mvMoveRight, [this] { MoveRightBackwardEvent(); }, parent && index + 1 < parent->Count());
    AddMenuItem(menu, u"-", nullptr);
  }
  AddMenuItem(menu, mvQBRemoveBrackets, [this] { RemoveBracketsEvent(); }, parent != nullptr);
  return menu;
}

TmvMenu TmvUnionSubQuery::GetPopupMenu(ImvControl* control) {
  if (control && control == GetControls(2)) return GetUnionOperatorMenu();
  TmvMenu menu;
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  TmvSubQuery* root = RootQuery();
  if (control && control == GetControls(1)) {
    // The union button: moves within the union, then the union entries.
    TmvUnionGroup* parent = ParentQuery();
    const bool nested = parent && parent->ParentQuery();
    AddMenuItem(menu, mvMoveLeft, [this] { MoveLeftEvent(); }, parent && (IndexInParent() > 0 || nested));
    AddMenuItem(menu, mvMoveRight, [this] { MoveRightEvent(); },
                parent && (IndexInParent() < parent->Count() - 1 || nested));
    AddMenuItem(menu, u"-", nullptr);
    AddUnionEntries(menu, this, provider);
    return menu;
  }
  // The work area. The add-object window is the designer's: off without one.
  ImvUserInteraction* interaction = Host() ? Host()->UserInteraction() : nullptr;
  AddMenuItem(menu, mvAddObject, [this, interaction] { interaction->ShowAddObjectDialog(this); },
              interaction && interaction->CanShowAddObjectDialog());
  const bool main = root && root->GetIsMainQuery();
  AddMenuItem(menu, mvAddSubQuery, [this] { AddSubQueryEvent(); },
              provider && (main ? provider->IsSupportDerivedTables() : provider->IsSupportSubQueryDerivedTables()));
  if (provider && provider->IsSupportCTE()) {
    TmvMenuItem& cte = AddMenuItem(menu, mvAddCTE, nullptr);
    AddMenuItem(cte.SubItems, mvAddNewCTE, [this] { AddNewCTEEvent(); });
    for (TSQLWithClauseItem* item : GetUsableCTEs()) {
      if (!item->Name) continue;
      TmvMenuItem& entry = AddMenuItem(cte.SubItems, u"", [this, item] { AddExistingCTEEvent(item); });
      entry.Caption = item->Name->SimpleSQL(SQLContext()->SQLBuilderExpression());
    }
  }
  TmvMenuItem& unions = AddMenuItem(menu, mvUnionSubMenu, nullptr);
  AddUnionEntries(unions.SubItems, this, provider);
  AddEditPropsItem(menu, this).Default = true;
  return menu;
}

}  // namespace mv
