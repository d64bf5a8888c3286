// Message keys of the query model. Texts are read through the message
// catalog, so a language can replace them; RegisterModelMessages gives the
// English defaults (the host calls it when it is made).
#pragma once

#include "support/MessageCatalog.h"

namespace mv {

// Unions the dialect refuses.
inline constexpr const char16_t* mvQBDialectDontSupportUnions = u"mvQBDialectDontSupportUnions";
inline constexpr const char16_t* mvQBDialectDontSupportUnionsInSubQueries =
    u"mvQBDialectDontSupportUnionsInSubQueries";
inline constexpr const char16_t* mvQBDialectDontSupportUnionsBrackets = u"mvQBDialectDontSupportUnionsBrackets";
inline constexpr const char16_t* mvQBDialectDontSupportUnionsBracketsInSubQuery =
    u"mvQBDialectDontSupportUnionsBracketsInSubQuery";
// Common table expressions.
inline constexpr const char16_t* mvQBCteRenameCaption = u"mvQBCteRenameCaption";
inline constexpr const char16_t* mvQBCteRenameEnterNewName = u"mvQBCteRenameEnterNewName";
inline constexpr const char16_t* mvQBCteRenameNewNameCannotBeEmpty = u"mvQBCteRenameNewNameCannotBeEmpty";
inline constexpr const char16_t* mvQBCteRenameNewNameConflict = u"mvQBCteRenameNewNameConflict";
inline constexpr const char16_t* mvQBCteRemoveConfirm = u"mvQBCteRemoveConfirm";
inline constexpr const char16_t* mvQBDeleteCTE = u"mvQBDeleteCTE";
inline constexpr const char16_t* mvQBRenameCTE = u"mvQBRenameCTE";
// Captions.
inline constexpr const char16_t* mvQBMainQuery = u"mvQBMainQuery";
inline constexpr const char16_t* mvQBNoLinkedObjects = u"mvQBNoLinkedObjects";
// Menu entries of datasources (the key spellings are part of the interface).
inline constexpr const char16_t* mvQBCheckAll = u"mvQBCheckAll";
inline constexpr const char16_t* mvQBUncheckAll = u"mvQBUncheckAll";
inline constexpr const char16_t* mvQBRemove = u"mvQBRemove";
inline constexpr const char16_t* mvQBSelectAllRowsFrom = u"mvQBSelectAllRowsFrom";
inline constexpr const char16_t* mvAddObject = u"mvAddObject";
inline constexpr const char16_t* mvAddSubQuery = u"mvAddSubQuery";
inline constexpr const char16_t* mvAddCTE = u"mvAddCTE";
inline constexpr const char16_t* mvAddNewCTE = u"mvAddNewCTE";
inline constexpr const char16_t* mvUnionSubMenu = u"mvUnionSubMenu";
inline constexpr const char16_t* mvMoveLeft = u"mvMoveLeft";
inline constexpr const char16_t* mvMoveRight = u"mvMoveRight";
inline constexpr const char16_t* mvQBNewUnionSubQuery = u"mvQBNewUnionSubQuery";
inline constexpr const char16_t* mvQBCopyToNewUnionSubQuery = u"mvQBCopyToNewUnionSubQuery";
inline constexpr const char16_t* mvQBEncloseInBrackets = u"mvQBEncloseInBrackets";
inline constexpr const char16_t* mvQBRemoveBrackets = u"mvQBRemoveBrackets";
inline constexpr const char16_t* mvQBEdit = u"mvQBEdit";
inline constexpr const char16_t* mvQBAftofitHeight = u"mvQBAftofitHeight";
inline constexpr const char16_t* mvQBAddLinkedObject = u"mvQBAddLinkedObject";
inline constexpr const char16_t* mvQBSwitchToDerivedTable = u"mvQBSwitchToDerivedTable";

// Links.
inline constexpr const char16_t* mvQBBadFieldName = u"mvQBBadFieldName";
inline constexpr const char16_t* mvQBBadExpression = u"mvQBBadExpression";
inline constexpr const char16_t* mvQBDuplicatedAlias = u"mvQBDuplicatedAlias";
inline constexpr const char16_t* mvQBDuplicatedName = u"mvQBDuplicatedName";
inline constexpr const char16_t* mvQBAllObjects = u"mvQBAllObjects";
inline constexpr const char16_t* mvQBLinksToFirstDatasource = u"mvQBLinksToFirstDatasource";
// Select list.
inline constexpr const char16_t* mvQBCantSelectExpression = u"mvQBCantSelectExpression";
inline constexpr const char16_t* mvQBColumnNameAlreadyUsed = u"mvQBColumnNameAlreadyUsed";
inline constexpr const char16_t* mvQBDeletingAliasCauseConflict = u"mvQBDeletingAliasCauseConflict";
inline constexpr const char16_t* mvQBSelectingExpressionCauseConflict = u"mvQBSelectingExpressionCauseConflict";
inline constexpr const char16_t* mvQBSortTypeAscending = u"mvQBSortTypeAscending";
inline constexpr const char16_t* mvQBSortTypeDescending = u"mvQBSortTypeDescending";
inline constexpr const char16_t* mvQBConditionsTypeWhere = u"mvQBConditionsTypeWhere";
inline constexpr const char16_t* mvQBConditionsTypeHaving = u"mvQBConditionsTypeHaving";
// Menu of a row of the select list (the key spellings are part of the interface).
inline constexpr const char16_t* mvQBMoveUp = u"mvQBMoveUp";
inline constexpr const char16_t* mvQBMoveDown = u"mvQBMoveDown";
inline constexpr const char16_t* mvQBRemoveItem = u"mvQBRemoveItem";
inline constexpr const char16_t* mvQBInsertEmtyItem = u"mvQBInsertEmtyItem";

// Registers the English defaults; runs once, whoever calls it.
void RegisterModelMessages();

}  // namespace mv
