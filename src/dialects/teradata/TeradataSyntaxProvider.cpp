#include "dialects/teradata/TeradataSyntaxProvider.h"

#include "TeradataPars.h"
#include "TeradataScan.h"
#include "dialects/teradata/TeradataCatalog.h"
#include "dialects/teradata/TeradataNodes.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvTeradataSyntaxProvider, TmvMatrixSyntaxProvider)

namespace {

// The built-in function names, as spelled, separated by blanks.
const char* const kTeradataBuiltinNames =
    "Abs Case_N Ceiling Exp Floor Ln Log NullIfZero Random Range_N Sqrt Width_Bucket ZeroIfNull Degrees Radians "
    "Cos Sin Tan ACos ASin ATan ATan2 CosH SinH TanH ACosH ASinH ATanH BitAnd BitNot BitOr BitXor CountSet "
    "GetBit RotateLeft RotateRight SetBit ShiftLeft ShiftRight SubBitStr To_Byte Last_Day Next_Day "
    "Months_Between Add_Months OAdd_Months Trunc Round Extract GetTimeZoneDisplacement TD_Day_Of_Week "
    "TD_Day_Of_Month TD_Day_Of_Year TD_Day_Of_Calendar TD_Weekday_Of_Month TD_Week_Of_Month TD_Week_Of_Year "
    "TD_Week_Of_Calendar TD_Month_Of_Quarter TD_Month_Of_Year TD_Month_Of_Calendar TD_Quarter_Of_Year "
    "TD_Quarter_Of_Calendar TD_Year_Of_Calendar DayNumber_Of_Week DayNumber_Of_Month DayNumber_Of_Year "
    "DayNumber_Of_Calendar WeekNumber_Of_Month WeekNumber_Of_Quarter WeekNumber_Of_Year WeekNumber_Of_Calendar "
    "DayOccurence_Of_Month MonthNumber_Of_Quarter MonthNumber_Of_Year MonthNumber_Of_Calendar "
    "QuarterNumber_Of_Year QuarterNumber_Of_Calendar YearNumber_Of_Calendar Period Begin Contains End Last Next "
    "Prior TD_Normalize_Overlap TD_Normalize_Meet TD_Normalize_Overlap_Meet TD_Sum_Normalize_Overlap "
    "TD_Sum_Normalize_Meet TD_Sum_Normalize_Overlap_Meet TD_Sequenced_Sum TD_Sequenced_Avg Unnest Cardinality "
    "Array_Concat Array_GT Array_GE Array_LT Array_LE Array_EQ Array_NE Array_Add Array_Sub Array_Mul Array_Div "
    "Array_Mod Array_Sum Array_Avg Array_Max Array_Min Array_Count_Distinct Array_Get Array_Compare "
    "Array_Update Array_Update_Stride OExists OCount OLimit OFirst OLast OPrior ONext OExtend OTrim ODelete "
    "Ascii Char2HexInt Chr EditDistance Index InitCap InStr Length Lower LPad LTrim NGram NVP OReplace "
    "OTranslate Position RPad RTrim SoundEx String_Cs StrTok Substring Substr Translate Translate_Chk Trim "
    "Upper VarGraphic Regexp_Substr Regexp_Replace Regexp_InStr Regexp_Similar Empty_Blob Empty_Clob Nvl Nvl2 "
    "Byte Bytes Character_Length Char_Length Characters Chars Char Default Format Octet_Length Title Type "
    "HashAmp HashBackAmp HashBucket HashRow Camset Camset_L Decamset Decamset_L LzComp LzComp_L LzDecomp "
    "LzDecomp_L TD_Lz_Compress TD_Lz_Decompress TransUnicodeToUtf8 TransUtf8ToUnicode CSV CSVDL Decode Greatest "
    "Least To_Bytes From_Bytes To_Number To_Char To_Date To_Timestamp To_Timestamp_TZ To_YMInterval "
    "To_DSInterval NumToYMInterval NumToDSInterval CSum MAvg MDiff MLinReg MSum Percent_Rank Quantile Rank "
    "Row_Number";

}  // namespace

TmvTeradataSyntaxProvider::TmvTeradataSyntaxProvider() : TmvMatrixSyntaxProvider("TmvTeradataSyntaxProvider") {
  RegisterExtender(TastTokenString::StaticClass(), TmvTeradataStringLiteralExtender::StaticClass());
  RegisterExtender(TastTokenIdentifier::StaticClass(), TmvTeradataIdentifierExtender::StaticClass());
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(),
                   TmvTeradataSubQuerySelectExpressionExtender::StaticClass());
}

void TmvTeradataSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_TeradataNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
}

const TmvScannerClass& TmvTeradataSyntaxProvider::GetScannerClass() const { return TeradataScanner::ScannerClass(); }

const TmvParserClass& TmvTeradataSyntaxProvider::GetParserClass() const { return TeradataParser::ParserClass(); }

std::vector<int32_t> TmvTeradataSyntaxProvider::GetStringTokenIds() const {
  return {TeradataScanner::tkStringToken, TeradataScanner::tkUnicodeStringToken};
}

bool TmvTeradataSyntaxProvider::IsValidIdent(WideStringView text) const {
  return !WideSameText(text, u"true") && !WideSameText(text, u"false");
}

void TmvTeradataSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  const WideString names = UTF8Decode(kTeradataBuiltinNames);
  for (size_t start = 0; start < names.size();) {
    const size_t blank = std::min(names.find(u' ', start), names.size());
    list.AddBuiltin(names.substr(start, blank - start));
    start = blank + 1;
  }
}

bool TmvTeradataSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"varchar", u"varying", u"binary", u"varbinary"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

TmvSyntaxSupportConectedServer TmvTeradataSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  if (!metadataProvider || !metadataProvider->GetCanExecSQL())
    return TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner);
  return IsConnectedServerIsTeradata(metadataProvider, metadataProvider->Connection());
}

void TmvTeradataSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                               std::vector<WideString>& list, const TSQLQualifiedName* database) {
  if (!GetSchemasListTeradata(context, connection, list))
    TmvMatrixSyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvTeradataSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                    const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsTeradata(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvTeradataSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                      TmvMetadataContainer* container,
                                                      const TmvMetadataFilter* filter,
                                                      const TSQLQualifiedName* database) {
  if (!LoadMetadataRelationsTeradata(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvTeradataSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                      TSQLIdentifiersCollection& names) {
  GetDefaultSchemaNamesTeradata(context, connection, names);
}

void TmvTeradataSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                              TmvMetadataObject* object) {
  LoadFieldsForObjectTeradata(context, connection, object);
}

}  // namespace mv
