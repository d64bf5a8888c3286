#include "model/ModelMessages.h"

#include <mutex>

namespace mv {

void RegisterModelMessages() {
  static std::once_flag once;
  std::call_once(once, [] {
    MessageCatalog().Register({
        {mvQBDialectDontSupportUnions, u"The server doesn't support unions."},
        {mvQBDialectDontSupportUnionsInSubQueries, u"The server doesn't support unions in sub-queries."},
        {mvQBDialectDontSupportUnionsBrackets, u"The server doesn't support brackets in unions."},
        {mvQBDialectDontSupportUnionsBracketsInSubQuery,
         u"The server doesn't support brackets in unions in sub-queries."},
        {mvQBCteRenameCaption, u"Rename CTE"},
        {mvQBCteRenameEnterNewName, u"Enter new common table expression (CTE) name:"},
        {mvQBCteRenameNewNameCannotBeEmpty, u"New common table expression name cannot be empty"},
        {mvQBCteRenameNewNameConflict, u"Name %s conflicts with names already used in the query"},
        {mvQBCteRemoveConfirm, u"Are you sure you want to delete this common table expression?"},
        {mvQBDeleteCTE, u"Delete CTE"},
        {mvQBRenameCTE, u"Rename CTE..."},
        {mvQBMainQuery, u"Main"},
        {mvQBNoLinkedObjects, u"No linked objects"},
        {mvQBCheckAll, u"Check All"},
        {mvQBUncheckAll, u"Uncheck All"},
        {mvQBRemove, u"Remove"},
        {mvQBSelectAllRowsFrom, u"Select all rows from %s"},
        {mvAddObject, u"Add Object..."},
        {mvAddSubQuery, u"Add Derived Table"},
        {mvAddCTE, u"Add CTE"},
        {mvAddNewCTE, u"Add New CTE"},
        {mvUnionSubMenu, u"Union"},
        {mvMoveLeft, u"Move Left"},
        {mvMoveRight, u"Move Right"},
        {mvQBNewUnionSubQuery, u"New Union Sub-Query"},
        {mvQBCopyToNewUnionSubQuery, u"Copy to New Union Sub-Query"},
        {mvQBEncloseInBrackets, u"Enclose in Brackets"},
        {mvQBRemoveBrackets, u"Remove Brackets"},
        {mvQBEdit, u"Properties..."},
        {mvQBAftofitHeight, u"Autofit Height"},
        {mvQBAddLinkedObject, u"Add Linked Object"},
        {mvQBSwitchToDerivedTable, u"Switch to Derived Table"},
        {mvQBBadFieldName, u"Invalid field name: %s"},
        {mvQBBadExpression, u"\"%s\" is not valid expression"},
        {mvQBDuplicatedAlias, u"Alias \"%s\" already exists"},
        {mvQBDuplicatedName, u"Name \"%s\" already exists"},
        {mvQBAllObjects, u"(All objects)"},
        {mvQBLinksToFirstDatasource, u"Links cannot be added to the first datasource of the group"},
        {mvQBCantSelectExpression, u"This expression is not selectable"},
        {mvQBColumnNameAlreadyUsed, u"The column with same name already exists in the current sub-query."},
        {mvQBDeletingAliasCauseConflict,
         u"Deleting an alias has led to duplicated column names in the current sub-query."},
        {mvQBSelectingExpressionCauseConflict,
         u"Adding this expression has led to duplicated column names in the current sub-query."},
        {mvQBSortTypeAscending, u"Ascending"},
        {mvQBSortTypeDescending, u"Descending"},
        {mvQBConditionsTypeWhere, u"Where"},
        {mvQBConditionsTypeHaving, u"Having"},
        {mvQBMoveUp, u"Move Up"},
        {mvQBMoveDown, u"Move Down"},
        {mvQBRemoveItem, u"Remove Item"},
        {mvQBInsertEmtyItem, u"Insert Empty Item"},
    });
  });
}

}  // namespace mv
