// The language manager, the localizers and the built-in languages.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "localization/LanguageManager.h"
#include "support/MessageCatalog.h"

namespace mv {
namespace {

TEST(LanguageManager, CurrentDefaultAddAndDelete) {
  TmvQBLanguageManager manager;
  EXPECT_EQ(manager.CurrentLanguageIndex(), -1);
  EXPECT_EQ(manager.CurrentLanguage(), nullptr);
  EXPECT_EQ(manager.AddLanguageFromString(u"A", u"[S]\nk=a\n"), 0);
  EXPECT_EQ(manager.AddLanguageFromString(u"B", u"[S]\nk=b\n", true), 1);
  EXPECT_EQ(manager.AddLanguageFromResource(u"English", u"ENGLISH.LNG"), 2);
  EXPECT_EQ(manager.DefaultLanguage(), manager.Language(1));
  TmvQBLocalizerStandalone localizer(u"S", manager);
  int localized = 0;
  localizer.OnLocalize = [&](TmvQBLocalizerBase*) { ++localized; };
  EXPECT_EQ(localizer.ReadWideString(u"k", u"default"), u"default");
  manager.SetCurrentLanguageIndex(1);
  EXPECT_EQ(localizer.ReadWideString(u"k", u"default"), u"b");
  EXPECT_EQ(localized, 1);
  manager.SetCurrentLanguageIndex(1);  // no change, no localizing
  EXPECT_EQ(localized, 1);
  manager.DeleteLanguage(0);
  EXPECT_EQ(manager.CurrentLanguageIndex(), 0);
  manager.DeleteLanguage(0);  // the current and default one
  EXPECT_EQ(manager.CurrentLanguageIndex(), -1);
  EXPECT_EQ(manager.DefaultLanguage(), nullptr);
  EXPECT_EQ(localized, 2);
  EXPECT_EQ(localizer.ReadWideString(u"k", u"default"), u"default");
  localizer.WriteWideString(u"k", u"ignored");  // no language: nothing happens
  manager.SetCurrentLanguage(manager.Language(0));
  EXPECT_EQ(localizer.ReadWideString(u"Morvane", u"mvQBMainQuery", u""), u"Main");
  EXPECT_EQ(localizer.ReadWideString(u"Morvane", u"mvQBErrorExecQuery", u""),
            u"Error executing query:\r\n%0:s\r\nMessage:\r\n%1:s");
}

TEST(LanguageManager, NotificationsRunInOrderAndUnregisterTheLastOfAnOwner) {
  TmvQBLanguageManager manager;
  TmvQBLocalizerStandalone localizer(u"S", manager);
  std::string trace;
  int a = 0, b = 0;
  localizer.RegisterLocalizeNotification(&a, [&](TmvQBLocalizerBase*) { trace += "a1"; });
  localizer.RegisterLocalizeNotification(&b, [&](TmvQBLocalizerBase*) { trace += "b"; });
  localizer.RegisterLocalizeNotification(&a, [&](TmvQBLocalizerBase*) { trace += "a2"; });
  localizer.OnLocalize = [&](TmvQBLocalizerBase*) { trace += "!"; };
  localizer.Localize();
  localizer.UnregisterLocalizeNotification(&a);
  localizer.Localize();
  EXPECT_EQ(trace, "a1ba2!a1b!");
}

TEST(LanguageManager, DefaultTablesCompareNamesWithoutCase) {
  TmvQBLocalizerStandalone localizer(u"S", mvQBLanguageManager());
  localizer.SetWStrDefValue(u"pDatasource.lAlias.Caption", u"Alias");
  localizer.SetStringsDefValue(u"cb.Items", {u"a", u"b"});
  EXPECT_TRUE(localizer.IsWStrHaveDefValue(u"PDATASOURCE.LALIAS.CAPTION"));
  EXPECT_EQ(localizer.GetWStrDefValue(u"pdatasource.lalias.caption"), u"Alias");
  EXPECT_FALSE(localizer.IsStrHaveDefValue(u"pDatasource.lAlias.Caption"));
  EXPECT_EQ(localizer.GetStringsDefValue(u"CB.ITEMS").size(), 2u);
}

TEST(LanguageManager, TheMessageCatalogAsksTheCurrentLanguageFirst) {
  TmvQBLanguageManager& manager = mvQBLanguageManager();
  MessageCatalog().Register(u"mvQBUnexpectedTokenAt", u" Unexpected token \"%0:s\" at line %1:d, pos %2:d");
  MessageCatalog().Register(u"mvQBLanguageTestOnly", u"English default");
  manager.SetCurrentLanguageIndex(-1);
  EXPECT_EQ(MessageFormat(u"mvQBUnexpectedTokenAt", {u"x", 1, 2}), u" Unexpected token \"x\" at line 1, pos 2");
  SelectLanguage(manager, "german");
  EXPECT_EQ(MessageFormat(u"mvQBUnexpectedTokenAt", {u"x", 1, 2}), u"Unerwartetes Symbol \"x\" in Zeile 1, Position 2");
  EXPECT_EQ(QueryBuilderLocalizer().ReadWideString(u"mvQBMainQuery", u""), u"Haupt");
  EXPECT_EQ(MessageText(u"mvQBLanguageTestOnly"), u"English default");  // missing key: the default
  manager.SetCurrentLanguageIndex(-1);
  EXPECT_EQ(MessageText(u"mvQBMainQuery"), u"mvQBMainQuery");
  EXPECT_ANY_THROW(SelectLanguage(manager, "no such language"));
}

// The `%` templates of a text, sorted: a translation may reorder indexed ones.
std::vector<std::string> Templates(const WideString& text) {
  static const std::regex pattern("%(\\d+:)?-?\\d*(\\.\\d+)?[sdfegnmpux%]");
  std::string s = UTF8Encode(text);
  std::vector<std::string> found;
  for (auto it = std::sregex_iterator(s.begin(), s.end(), pattern); it != std::sregex_iterator(); ++it)
    found.push_back(it->str());
  std::sort(found.begin(), found.end());
  return found;
}

const char16_t* const kMorvaneKeys[] = {
    u"mvQBBadObjectName", u"mvQBBadFieldName", u"mvQBBadSelectStatement", u"mvQBNotSelectStatement",
    u"mvQBBadSelectItem", u"mvQBBadFromObjectExpression", u"mvQBUnexpectedToken", u"mvQBUnexpectedTokenAt",
    u"mvQBUnknownObjectName", u"mvQBCantSelectExpression", u"mvQBNoSyntaxProvider", u"mvQBNoMetadataProvider",
    u"mvQBNoConnectionObject", u"mvQBNoTransactionObject", u"mvQBDialectDontSupportDatabases",
    u"mvQBDialectDontSupportSchemas", u"mvQBDialectDontSupportUnions", u"mvQBDialectDontSupportUnionsBrackets",
    u"mvQBDialectDontSupportUnionsBracketsInSubQuery", u"mvQBDialectDontSupportUnionsInSubQueries",
    u"mvQBBadExpression", u"mvQBMetadataProviderCantExecSQL", u"mvQBMetaProviderCantLoadMetadata",
    u"mvQBMetaProviderCantLoadMetadataForDatabase", u"mvQBUnionButtonCaption", u"mvQBMetadataTreeCurrentDatabase",
    u"mvQBMetadataTreeLoading", u"mvQBCheckAll", u"mvQBUncheckAll", u"mvQBRemove", u"mvQBEdit",
    u"mvQBSwitchToDerivedTable", u"mvQBAftofitHeight", u"mvQBAbout", u"mvQBMainQuery", u"mvQBInsertSubQuery",
    u"mvMoveLeft", u"mvMoveRight", u"mvAddObject", u"mvAddSubQuery", u"mvAddCTE", u"mvAddNewCTE", u"mvUnionSubMenu",
    u"mvQBNewUnionSubQuery", u"mvQBCopyToNewUnionSubQuery", u"mvQBEncloseInBrackets", u"mvQBRemoveBrackets",
    u"mvQBSelectAllRowsFrom", u"mvQBGCSelect", u"mvQBGCExpression", u"mvQBGCAlias", u"mvQBGCSortType",
    u"mvQBGCSortOrder", u"mvQBGCGrouping", u"mvQBGCGroupBy", u"mvQBGCAggregate", u"mvQBGCCriteriaType",
    u"mvQBGCCriteria", u"mvQBGCOr", u"mvQBSortTypeAscending", u"mvQBSortTypeDescending", u"mvQBConditionsTypeWhere",
    u"mvQBConditionsTypeHaving", u"mvQBMoveUp", u"mvQBMoveDown", u"mvQBRemoveItem", u"mvQBInsertEmtyItem",
    u"mvQBEditSubMenu", u"mvQBCut", u"mvQBCopy", u"mvQBPaste", u"mvQBSelectAll", u"mvQBAllObjects",
    u"mvQBErrorUnknownError", u"mvQBErrorExecQuery.0", u"mvQBErrorExecQuery.1", u"mvQBErrorExecQuery.2",
    u"mvQBErrorExecQuery.3", u"mvQBErrorBadXML", u"mvQBErrorBadXMLTagNotFound", u"mvQBClearMetadataContainer",
    u"mvQBObjectTypeTable", u"mvQBObjectTypeView", u"mvQBObjectTypeProcedure", u"mvQBObjectTypeSynonym",
    u"mvQBObjectTypeUnknown", u"mvQBFields", u"mvQBRelations", u"mvQBCteRemoveConfirm", u"mvQBCteRenameCaption",
    u"mvQBCteRenameEnterNewName", u"mvQBCteRenameNewNameCannotBeEmpty", u"mvQBCteRenameNewNameConflict",
    u"mvQBName", u"mvQBDescription", u"mvQBColumnNameAlreadyUsed", u"mvQBDeletingAliasCauseConflict",
    u"mvQBSelectingExpressionCauseConflict", u"mvQBDeleteCTE", u"mvQBRenameCTE", u"mvQBAddLinkedObject",
    u"mvQBExpressionBuilder"};
const char16_t* const kTextEditorCommands[] = {u"Undo",   u"Redo",        u"Cut",     u"Copy",      u"Paste",
                                               u"SelectAll", u"Find",     u"Replace", u"SearchAgain", u"Indent",
                                               u"Unindent", u"Comment",   u"Uncomment", u"MakeUpper", u"MakeLower"};

TEST(BuiltinLanguages, EveryKeyHasATextWithTheTemplatesOfEnglish) {
  TmvQBLanguageManager manager;
  manager.AddBuiltinLanguages();
  ASSERT_GE(manager.LanguagesCount(), 1);
  TmvQBLanguageSourceIniFile* english = dynamic_cast<TmvQBLanguageSourceIniFile*>(manager.Language(0));
  ASSERT_EQ(english->Name(), u"English");
  std::vector<WideString> keys(std::begin(kMorvaneKeys), std::end(kMorvaneKeys));
  for (const char16_t* command : kTextEditorCommands) {
    keys.push_back(WideString(u"mvQBTextEditor") + command + u"Caption");
    keys.push_back(WideString(u"mvQBTextEditor") + command + u"Hint");
  }
  EXPECT_EQ(keys.size(), 132u);
  // Every entry English has beyond the list is a message of the engine: the others must keep its templates too.
  std::vector<WideString> names;
  english->IniFile().ReadSection(u"Morvane", names);
  for (const WideString& name : names)
    if (!name.empty() && std::find(keys.begin(), keys.end(), name) == keys.end()) keys.push_back(name);
  for (int i = 0; i < manager.LanguagesCount(); ++i) {
    auto* language = dynamic_cast<TmvQBLanguageSourceIniFile*>(manager.Language(i));
    SCOPED_TRACE(UTF8Encode(language->Name()));
    EXPECT_EQ(language->Name(), BuiltinLanguages()[size_t(i)].name);  // the order of the list
    EXPECT_TRUE(language->Problems().empty());
    for (const WideString& key : keys) {
      WideString text;
      const TmvWideStringMemIniFile& ini = language->IniFile();
      EXPECT_TRUE(ini.TryReadString(u"Morvane", key, text) && !text.empty()) << UTF8Encode(key);
      EXPECT_EQ(Templates(text), Templates(english->IniFile().ReadString(u"Morvane", key, u""))) << UTF8Encode(key);
      if (key.ends_with(u"Hint")) {
        EXPECT_NE(text.find(u'|'), WideString::npos) << UTF8Encode(key);
      }
    }
  }
}

TEST(BuiltinLanguages, AllSixteenWithTheirCharsetsAndReadingOrder) {
  TmvQBLanguageManager manager;
  manager.AddBuiltinLanguages();
  ASSERT_EQ(manager.LanguagesCount(), 16);
  EXPECT_EQ(manager.DefaultLanguage(), nullptr);
  const uint8_t charSets[16] = {0, 0, 0, 0, 134, 238, 0, 162, 128, 204, 0, 0, 204, 161, 178, 0};
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(manager.Language(i)->CharSet(), charSets[i]) << i;
    EXPECT_EQ(manager.Language(i)->BiDiMode(), i == 14 ? bdRightToLeft : bdLeftToRight) << i;
  }
  // The Greek file has no byte order mark and reads the same.
  EXPECT_NE(FindBuiltinLanguageFile(u"GREEK.LNG")->data[0], 0xEF);
  EXPECT_EQ(QueryBuilderLocalizer().ReadWideStringFromLanguage(manager.Language(13), u"Morvane", u"mvQBFields", u""),
            u"Πεδία");
}

TEST(BuiltinLanguages, EnglishCarriesTheTextsOfTheLanguageFileFormat) {
  TmvQBLanguageSourceResource english(u"English", u"ENGLISH.LNG");
  const std::pair<const char16_t*, const char16_t*> texts[] = {
      {u"mvQBBadFieldName", u"Invalid field name: %s"},
      {u"mvQBUnexpectedToken", u"Unexpected token \"%s\""},
      {u"mvQBUnexpectedTokenAt", u"Unexpected token \"%0:s\" at line %1:d, pos %2:d"},
      {u"mvQBBadExpression", u"\"%s\" is not valid expression"},
      {u"mvQBErrorBadXMLTagNotFound", u"Bad XML file: tag \"%s\" not found."},
      {u"mvQBUnionButtonCaption", u"Q"},
      {u"mvQBAllObjects", u"(All objects)"},
      {u"mvQBTextEditorUndoHint", u"Undo|Perform undo if available"},
  };
  for (const auto& [key, text] : texts) EXPECT_EQ(english.IniFile().ReadString(u"Morvane", key, u""), text);
  EXPECT_EQ(english.CharSet(), 0);
  for (const char16_t* defaultOnly : {u"mvQBDuplicatedAlias", u"mvQBDuplicatedName", u"mvQBNoLinkedObjects",
                                      u"mvQBSqlMustBeSimpleSelect", u"mvQBSqlMustBeSimpleSelectErrorId"})
    EXPECT_FALSE(english.IniFile().IsStringStartsExists(u"Morvane", defaultOnly));
}

}  // namespace
}  // namespace mv
