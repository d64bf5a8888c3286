#include "dialects/sql2003/SQL2003SyntaxProvider.h"

#include "SQL2003Pars.h"
#include "SQL2003Scan.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/KeywordResources.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/fetchers/InformationSchemaCatalog.h"
#include "tree/QualifiedNames.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvSQL2003SyntaxProvider, TmvBaseSyntaxProvider)

const char* const kSQL2003Keywords =
    "abs all allocate alter and any are array as asensitive asymmetric at atomic authorization avg begin "
    "between bigint binary blob boolean both by call called cardinality cascaded case cast ceil ceiling "
    "char char_length character character_length check clob close coalesce collate collect column commit "
    "condition connect constraint convert corr corresponding count covar_pop covar_samp create cross cube "
    "cume_dist current current_date current_default_transform_group current_path current_role "
    "current_time current_timestamp current_transform_group_for_type current_user cursor cycle date day "
    "deallocate dec decimal declare default delete dense_rank deref describe deterministic disconnect "
    "distinct double drop dynamic each element else end escape every except exec execute exists exp "
    "external extract false fetch filter float floor for foreign free from full function fusion get "
    "global grant group grouping having hold hour identity in indicator inner inout insensitive insert "
    "int integer intersect intersection interval into is join language large lateral leading left like ln "
    "local localtime localtimestamp lower match max member merge method min minute mod modifies module "
    "month multiset national natural nchar nclob new no none normalize not null nullif numeric "
    "octet_length of old on only open or order out outer over overlaps overlay parameter partition "
    "percent_rank percentile_cont percentile_disc position power precision prepare primary procedure "
    "range rank reads real recursive ref references referencing regr_avgx regr_avgy regr_count "
    "regr_intercept regr_r2 regr_slope regr_sxx regr_sxy regr_syy release result return returns revoke "
    "right rollback rollup row row_number rows savepoint scope scroll search second select sensitive "
    "session_user set similar smallint some specific specifictype sql sqlexception sqlstate sqlwarning "
    "sqrt start static stddev_pop stddev_samp submultiset substring sum symmetric system system_user "
    "table tablesample then time timestamp timezone_hour timezone_minute to trailing translate "
    "translation treat trigger trim true uescape union unique unknown unnest update upper user using "
    "value values var_pop var_samp varchar varying when whenever where width_bucket window with within "
    "without year asc desc nulls first last object k m g characters octets zone wthout";

TmvSQL2003SyntaxProvider::TmvSQL2003SyntaxProvider() : TmvInformationSchemaSyntaxProvider("TmvSQL2003SyntaxProvider") {}

void TmvSQL2003SyntaxProvider::RegisterDialect() {
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kSQL2003Keywords);
}

const TmvScannerClass& TmvSQL2003SyntaxProvider::GetScannerClass() const { return SQL2003Scanner::ScannerClass(); }

const TmvParserClass& TmvSQL2003SyntaxProvider::GetParserClass() const { return SQL2003Parser::ParserClass(); }

std::vector<int32_t> TmvSQL2003SyntaxProvider::GetStringTokenIds() const {
  return {SQL2003Scanner::tkStringToken, SQL2003Scanner::tkNationalStringToken, SQL2003Scanner::tkHexStringToken,
          SQL2003Scanner::tkUnicodeStringToken};
}

void TmvSQL2003SyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name :
       {u"Position", u"Char_Length", u"Character_Length", u"Octet_Length", u"Extract", u"Cardinality", u"Abs", u"Mod",
        u"Ln", u"Exp", u"Power", u"SqRt", u"Floor", u"Ceil", u"Ceiling", u"Width_Bucket", u"SubString", u"Upper",
        u"Lower", u"Convert", u"Translate", u"Trim", u"Overlay", u"Normalize", u"Current_Time", u"LocalTime",
        u"Current_Timestamp", u"LocalTimestamp", u"NullIf", u"Coalesce", u"Set"})
    list.AddBuiltin(name);
}

bool TmvSQL2003SyntaxProvider::IsValidIdent(WideStringView text) const {
  return !WideSameText(text, u"true") && !WideSameText(text, u"false");
}

bool TmvSQL2003SyntaxProvider::IsFixedSizeType(WideStringView typeName) const { return !IsAnsiSizedType(typeName); }

WideString TmvSQL2003SyntaxProvider::CreateWrapperForStoredProc(WideStringView call) const {
  return u"TABLE(" + WideString(call) + u")";
}

void TmvSQL2003SyntaxProvider::BeginBuildWrapperForStoredProc(TSQLBuilder& builder,
                                                              const TSQLBuilderSelectFormat&) const {
  builder.WriteKeyword(u"Table");
  builder.WriteSymbol(u"(");
}

void TmvSQL2003SyntaxProvider::EndBuildWrapperForStoredProc(TSQLBuilder& builder,
                                                            const TSQLBuilderSelectFormat&) const {
  builder.WriteSymbol(u")");
}

}  // namespace mv
